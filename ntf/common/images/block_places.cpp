#include "images/block_places.h"

namespace ksntfx {

namespace {

/**
 * The distance between two bands of mode S. With a BMR only the blocks of the smallest stretch of rounds and places
 * that holds the first and the last recorded block count.
 */
std::int64_t BandDistance(const BlockGrid &grid, const BlockMask &mask, std::int64_t blockBytes) {
  if (!mask.HasBlockMask() || grid.count == 0) return blockBytes * static_cast<std::int64_t>(grid.count);
  std::optional<std::uint64_t> first;
  std::uint64_t last = 0;
  for (std::uint64_t block = 0; block < mask.Visited(grid.count); ++block) {
    if (mask.BlockWord(block) == kNotRecorded) continue;
    if (!first) first = block;
    last = block;
  }
  const auto round = [&](std::uint64_t block) { return static_cast<std::int64_t>(block / grid.down); };
  const auto place = [&](std::uint64_t block) { return static_cast<std::int64_t>(block % grid.down); };
  const std::uint64_t begin = first.value_or(0);
  return blockBytes * (place(last) - place(begin) + 1) * (round(last) - round(begin) + 1);
}

}  // namespace

ModeLayout LayoutOf(const ImageSubheader &image, const BlockGrid &grid, const BlockMask &mask, std::uint64_t rowBytes) {
  const auto row = static_cast<std::int64_t>(rowBytes);
  const std::int64_t plane = row * grid.height;
  const std::int64_t bands = image.bandCount;
  if (bands < 2) return {plane, 0, row, 1, true};
  switch (image.mode) {
    case kPixelInterleaved:
      return {plane * bands, 1, row * bands, image.bandCount, true};
    case kRowInterleaved:
      return {plane * bands, row, row * bands, 1, false};
    case kBandSequential:
      return {plane, BandDistance(grid, mask, plane), row, 1, true};
    default: {
      // More than three bands of a MULTI image without a pad mask lie one block after the other. All others are counted
      // as if they had the three bands of a pixel.
      const bool allBands = bands < 3 || (image.representation == kMulti && !mask.HasPadMask());
      return {plane * (allBands ? bands : 3), plane, row, 1, true};
    }
  }
}

}  // namespace ksntfx
