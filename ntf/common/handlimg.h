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
 * Decodes image segment `index` into `target`, an empty bitmap. `loadContext` may be null; its load functions decode
 * compressed streams where it is given. On failure `target` is empty: ERROR_NOT_SUPPORTED for an IC without decoder or
 * samples that make no picture, ERROR_FILE_READ, ERROR_FILE_FORMAT, ERROR_NO_MEMORY.
 */
std::int32_t DecodeImageSegment(FilterLoadRecord *loadContext, const NitfFile *file, std::uint32_t index,
                                KsBitmap *target);
