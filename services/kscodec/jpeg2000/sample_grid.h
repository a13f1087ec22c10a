// Where samples and tiles are along one axis of a picture, at its levels.
//
// Level n has the coordinates of the reference grid divided by 2^n, rounded up. Samples of a component are at the
// multiples of their distance, and those of a level at the multiples of 2^n times that.
#pragma once

#include "kscodec/jpeg2000/header.h"

#include <algorithm>
#include <cstdint>

namespace kscodec::jpeg2000 {

/** The samples of one component at a level. */
class SampleAxis {
 public:
  SampleAxis(const Axis &axis, std::uint32_t distance, std::uint32_t wantedLevel)
      : step(distance), level(wantedLevel), first(OfLevel(axis.start)), end(OfLevel(axis.end)) {}

  static std::uint64_t AtLevel(std::uint64_t position, std::uint32_t level) {
    return (position + (std::uint64_t{1} << level) - 1) >> level;
  }

  bool IsEmpty() const { return first >= end; }

  /** The first sample at a position of the reference grid, or behind it. */
  std::uint64_t OfLevel(std::uint64_t position) const { return AtLevel((position + step - 1) / step, level); }

  /**
   * The sample that is repeated at a position of the level: the last one before it. Positions before the first sample
   * have that one; those behind the last row or column, which rounding up adds to some pictures, the last one.
   */
  std::uint64_t SampleAt(std::uint64_t position) const { return std::clamp(position / step, first, end - 1); }

  /** Whether each position up to `before` has a sample of its own. */
  bool IsPlain(std::uint64_t before) const { return step == 1 && before <= end; }

  /** The place of a sample on the reference grid. */
  std::uint64_t OnGrid(std::uint64_t sample) const { return (sample << level) * step; }

 private:
  std::uint64_t step;
  std::uint32_t level;
  std::uint64_t first;
  std::uint64_t end;
};

/** The tile of a position on the reference grid. */
inline std::uint64_t TileAt(const Axis &axis, std::uint64_t position) {
  return (position - axis.tileStart) / axis.tileStep;
}

/** Where the tile ends that has a position of a level. The last tile has all positions behind it. */
inline std::uint64_t EndOfTile(const Axis &axis, std::uint64_t position, std::uint32_t level) {
  const std::uint64_t onGrid = position << level;
  if (onGrid >= axis.end) return UINT64_MAX;
  const std::uint64_t tile = TileAt(axis, onGrid);
  if (tile + 1 >= axis.tiles) return UINT64_MAX;
  return SampleAxis::AtLevel(axis.tileStart + (tile + 1) * axis.tileStep, level);
}

}  // namespace kscodec::jpeg2000
