// One image segment into one bitmap: the bitmap's depth, colours and palette, and the decoder that IC calls for.
#pragma once

#include "nitffile.h"

/** Block width and height in pixels. */
inline std::uint32_t BlockWidth(const ImageSubheader &image) {
  return image.blockWidth != 0 ? image.blockWidth : image.columns;
}
inline std::uint32_t BlockHeight(const ImageSubheader &image) {
  return image.blockHeight != 0 ? image.blockHeight : image.rows;
}

/** Size of the image with the pad pixels of its last blocks. */
inline std::uint64_t PaddedWidth(const ImageSubheader &image) {
  return std::uint64_t{image.blocksPerRow} * BlockWidth(image);
}
inline std::uint64_t PaddedHeight(const ImageSubheader &image) {
  return std::uint64_t{image.blocksPerColumn} * BlockHeight(image);
}

/**
 * Size of an image's place on the canvas: the padded one, and that of the picture itself where the stream holds it made
 * smaller.
 */
inline std::uint64_t PlaceWidth(const ImageSubheader &image) {
  return image.compression == kI1 ? image.columns : PaddedWidth(image);
}
inline std::uint64_t PlaceHeight(const ImageSubheader &image) {
  return image.compression == kI1 ? image.rows : PaddedHeight(image);
}

/** The bands that feed the red, green and blue channel. */
struct BandOrder {
  std::uint32_t first;
  std::uint32_t second;
  std::uint32_t third;
};

/**
 * Chooses the bands for display by their IREPBAND. `order` comes with the numbers that stand where only some of the
 * bands R, G and B are tagged. A choice that is not three different bands is also stored in the record's
 * `displayBands`.
 */
void ChooseBands(ImageSubheader &image, BandOrder *order);

/** How an image is decoded: what its headers say, before anything is read. */
struct ImageSource {
  const NitfFile *file;
  ImageSubheader *image;
  std::uint32_t dataLength; /**< LI */
  std::int64_t dataStart;   /**< position of the image data, the mask table included */
  std::uint64_t fileSize;

  /** Reads `bytes` bytes at `offset` behind the image data's start: SUCCESS or ERROR_FILE_READ. */
  std::int32_t Read(std::int64_t offset, void *buffer, std::uint64_t bytes) const;
  /** Whether the file holds the image data up to `end` bytes behind their start. */
  bool Holds(std::int64_t end) const;
};

/**
 * Bits per pixel of the bitmap that an image is decoded into. Two bands are shown as one through its palette, in full
 * colour; so are three or more, of which three are shown. Samples of 32 and 64 bits of a gray image come down to 8.
 */
std::uint32_t TargetDepth(const ImageSubheader &image);

/** Creates a bitmap for `width` columns and `rows` rows of an image, with its palette and colour order. */
std::int32_t CreateTarget(KsBitmap *target, const ImageSubheader &image, std::uint64_t width, std::uint64_t rows);

/** Whether the padded size of an image makes a bitmap: SUCCESS, or what its creation would fail with. */
std::int32_t CheckTargetSize(const ImageSubheader &image);

/** Gives a bitmap the image's lookup table as palette, or the gray ramp of its bit depth. */
void SetImagePalette(KsBitmap *bitmap, const ImageSubheader &image);

/**
 * Decodes image segment `index` into `target`, an empty bitmap. `loadContext` may be null; its load functions decode
 * compressed streams where it is given. On failure `target` is empty: ERROR_NOT_SUPPORTED for an IC without decoder or
 * samples that make no picture, ERROR_FILE_READ, ERROR_FILE_FORMAT, ERROR_NO_MEMORY.
 */
std::int32_t DecodeImageSegment(FilterLoadRecord *loadContext, const NitfFile *file, std::uint32_t index,
                                KsBitmap *target);

/** Takes a decoded image part by part, from the top down. */
class ImagePartSink {
 public:
  ImagePartSink() = default;
  ImagePartSink(const ImagePartSink &) = delete;
  ImagePartSink &operator=(const ImagePartSink &) = delete;
  virtual ~ImagePartSink() = default;

  /**
   * Takes the first `rows` rows of `part`, which belong at row `top` of the image. The bitmap is used again afterwards.
   * A result other than SUCCESS ends the decoding.
   */
  virtual std::int32_t Place(KsBitmap *part, std::uint32_t top, std::uint32_t rows) = 0;

  /**
   * Lends the place itself, where full-colour pixels of it are the image's own pixels: a view on `rows` rows from row
   * `top` of the image, every pixel of which is then written. False where the rows have to go through Place.
   */
  virtual bool Lend(KsBitmap *view, std::uint32_t top, std::uint32_t rows) = 0;
};

/**
 * Decodes the image part by part, from the top down, and without ever holding all of it where its IC allows that. The
 * results are those of DecodeImageSegment; what is wrong with the headers, or cut off, shows before the first part.
 */
std::int32_t DecodeImageInParts(FilterLoadRecord *loadContext, const NitfFile *file, std::uint32_t index,
                                ImagePartSink &sink);
