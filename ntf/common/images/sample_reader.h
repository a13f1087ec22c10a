// Samples of an image as they are stored: all bands, any part of any block. One reader for each layout of the data;
// what is shown of the samples is a later step.
#pragma once

#include "images/image_data.h"
#include "images/sample_types.h"
#include "internal/status.h"

#include <memory>
#include <span>

namespace ksntfx {

/** What is known of an image once its reader is open. */
struct SampleShape {
  std::uint64_t rows;
  std::uint64_t columns;
  std::uint32_t bands;
  SampleType type;
  std::uint32_t bits;       /**< of a sample that may be set; those of its type, or fewer */
  std::uint32_t blockWidth; /**< in pixels */
  std::uint32_t blockHeight;
  bool readsWholeBlocks = false; /**< any part of a block costs as much as all of it */
  bool isRgb = false;            /**< by the stream, the first three bands are red, green and blue */
  bool isYcc = false;            /**< by the stream, they are Y, Cb and Cr */

  std::uint64_t Across() const { return (columns + blockWidth - 1) / blockWidth; }
  std::uint64_t Down() const { return (rows + blockHeight - 1) / blockHeight; }
};

/** A rectangle of pixels. */
struct PixelWindow {
  std::uint64_t firstRow;
  std::uint64_t firstColumn;
  std::uint64_t rows;
  std::uint64_t columns;
};

/** A rectangle of pixels in one block. */
struct BlockPart {
  std::uint64_t block; /**< counted from the left to the right and from the top down */
  std::uint32_t firstRow;
  std::uint32_t firstColumn;
  std::uint32_t rows;
  std::uint32_t columns;
};

/** Where samples are written, each in the size and byte order of the machine's type. Steps are in bytes. */
struct SampleTarget {
  std::uint8_t *samples; /**< of the first band, row and column */
  std::int64_t columnStep;
  std::int64_t rowStep;
  std::int64_t bandStep;

  SampleTarget At(std::uint64_t row, std::uint64_t column) const {
    SampleTarget moved = *this;
    moved.samples += static_cast<std::int64_t>(row) * rowStep + static_cast<std::int64_t>(column) * columnStep;
    return moved;
  }
  std::uint8_t *Row(std::size_t band, std::uint64_t row) const {
    return samples + static_cast<std::int64_t>(band) * bandStep + static_cast<std::int64_t>(row) * rowStep;
  }
};

/** Fills `rows` x `columns` samples of `bands` bands with 0. */
void ClearSamples(const SampleTarget &target, std::size_t bands, std::uint64_t rows, std::uint64_t columns,
                  SampleType type);

class SampleReader {
 public:
  SampleReader() = default;
  SampleReader(const SampleReader &) = delete;
  SampleReader &operator=(const SampleReader &) = delete;
  virtual ~SampleReader() = default;

  /**
   * Finds the shape: SUCCESS, ERROR_NOT_SUPPORTED for a compression or samples that can't be read, ERROR_FILE_FORMAT,
   * ERROR_FILE_READ, ERROR_NO_MEMORY.
   */
  virtual Status Open() = 0;

  /** After Open. */
  const SampleShape &Shape() const { return shape; }

  /**
   * Reads a part of a block that lies in the image, of the bands whose numbers are in `bands`, in that order. Of a
   * block that isn't recorded nothing is written, and `*recorded` becomes false. SUCCESS, ERROR_FILE_READ,
   * ERROR_FILE_FORMAT, ERROR_NO_MEMORY, or the status of a codec.
   */
  virtual Status Read(const BlockPart &part, std::span<const std::uint32_t> bands, const SampleTarget &target,
                      bool *recorded) = 0;

 protected:
  SampleShape shape{};
};

}  // namespace ksntfx
