// The grid of an image's blocks, and the sizes that follow from it.
#pragma once

#include "headers/image_record.h"

namespace ksntfx {

/** Block width and height in pixels. */
inline std::uint32_t BlockWidth(const ImageSubheader &image) {
  return image.blockWidth != 0 ? image.blockWidth : image.columns;
}
inline std::uint32_t BlockHeight(const ImageSubheader &image) {
  return image.blockHeight != 0 ? image.blockHeight : image.rows;
}

/** Size of the image with the pad pixels of its last blocks, which is that of its place on the canvas. */
inline std::uint64_t PaddedWidth(const ImageSubheader &image) {
  return std::uint64_t{image.blocksPerRow} * BlockWidth(image);
}
inline std::uint64_t PaddedHeight(const ImageSubheader &image) {
  return std::uint64_t{image.blocksPerColumn} * BlockHeight(image);
}

/** The blocks of an image, across and down. */
struct BlockGrid {
  explicit BlockGrid(const ImageSubheader &image)
      : width(BlockWidth(image)),
        height(BlockHeight(image)),
        across(image.blocksPerRow),
        down(image.blocksPerColumn),
        count(std::uint64_t{across} * down) {}

  bool IsSingle() const { return across <= 1 && down <= 1; }

  std::uint32_t width; /**< pixels of a block */
  std::uint32_t height;
  std::uint32_t across;
  std::uint32_t down;
  std::uint64_t count;
};

}  // namespace ksntfx
