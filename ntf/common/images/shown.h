// What is shown of an image's samples: byte order, scaling, the choice of channels, and which rows. It is chosen once
// for an image, and works on whole rows.
#pragma once

#include "images/image_reader.h"
#include "images/image_source.h"
#include "images/imgmodes.h"
#include "images/overhang.h"
#include "images/samples.h"

namespace ksntfx {

/** How the rows of an image are shown. Those that a codec makes need no choice. */
struct ShownRows {
  std::uint32_t depth = 0;            /**< bits of a pixel of the rows; another than the strip's is converted */
  BandSelection bands{};              /**< that are read */
  SampleConversion convert = nullptr; /**< of a row of one band */
  bool spreads = false;               /**< the range of all samples is spread over 8 bits */
  bool repeatsLastRow = false;        /**< the last row of a block repeats the one before it */
};

/**
 * Chooses how an uncompressed image is shown: SUCCESS, or ERROR_NOT_SUPPORTED for samples that make no picture. The
 * choice of bands may be stored in the record.
 */
Status ChooseShown(ImageSubheader &image, ShownRows *shown);

/** Fills strips of an image's bitmap from its reader. */
class ShownImage {
 public:
  /** `source` and `reader`, which is open, must outlive it. */
  ShownImage(const ImageSource &source, ImageReader &imageReader, const ShownRows &shownRows);

  /**
   * Fills `strip`, which has the image's width, with `rows` rows from row `first` of the row of blocks `blockRow`.
   * Pixels without a value become 0.
   */
  Status FillStrip(KsBitmap *strip, std::uint32_t blockRow, std::uint32_t first, std::uint32_t rows);

 private:
  Status FillBlock(const BlockRows &which);
  Status BeginPlace(std::uint32_t rows);
  Status EndPlace(std::uint32_t rows);
  Status Blank(const BlockRows &which);
  void ShowSamples(const BlockRows &which, const BlockRows &read, const StoredRows &stored);
  void ShowRow(const StoredRows &stored, std::uint64_t offset, std::uint8_t *row) const;
  Status ShowBitmap(const BlockRows &which, KsBitmap *bitmap);
  ImagePart PartOf(const BlockRows &which) const;

  ImageReader &reader;
  const ImageShape &shape;
  const ImageSubheader &image;
  ShownRows shown;
  SampleRange range{};
  StripPlace place{};
  KsLocalBitmap own{}; /**< the rows of a block of another depth than the strip, or whose pixels share bytes */
  Overhang overhang;
};

}  // namespace ksntfx
