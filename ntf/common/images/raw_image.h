// The raw road: one image from its data to samples in memory, as they are stored.
#pragma once

#include "images/sample_reader.h"

namespace ksntfx {

/** Where a window of samples isn't recorded in the file. */
class AbsentPixels {
 public:
  virtual ~AbsentPixels() = default;
  /** A rectangle of the window, counted from its corner. */
  virtual void Add(const PixelWindow &part) = 0;
};

class RawImage {
 public:
  /** `imageData` is copied; what it refers to must outlive the image. */
  explicit RawImage(const ImageData &imageData) : data(imageData) {}
  RawImage(const RawImage &) = delete;
  RawImage &operator=(const RawImage &) = delete;

  /** See SampleReader::Open. ERROR_NOT_SUPPORTED also for a compression without a reader. */
  Status Open();

  const SampleShape &Shape() const { return reader->Shape(); }
  const ImageSubheader &Header() const { return *data.image; }

  /**
   * Reads a window that lies in the image, of the bands in `bands`. Where blocks aren't recorded, samples are those of
   * the pad value of the mask table, or 0, and `absent`, which may be null, gets the places that none of the bands has.
   * See SampleReader::Read.
   */
  Status Read(const PixelWindow &window, std::span<const std::uint32_t> bands, const SampleTarget &target,
              AbsentPixels *absent = nullptr);

 private:
  Status MakeReader();
  Status ReadBlock(const BlockPart &part, std::span<const std::uint32_t> bands, const SampleTarget &target,
                   bool *recorded);
  void Fill(const SampleTarget &target, std::size_t bands, const BlockPart &part) const;

  ImageData data;
  std::unique_ptr<SampleReader> reader;
};

}  // namespace ksntfx
