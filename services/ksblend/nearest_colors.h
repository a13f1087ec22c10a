// The nearest colours of a palette, remembered as they are asked for.
#pragma once

#include "kscore/allocation.h"
#include "kscore/palette.h"

namespace ksblend {

/**
 * A cube of 32 by 32 by 32 cells over the colours. Each cell remembers the last colour asked for in it with its index:
 * neighbouring pixels are often of one colour, and the result stays exact.
 */
class NearestColors {
 public:
  /** Makes the cube for a palette, which must outlive it. False without memory. */
  [[nodiscard]] bool Prepare(const kscore::Bgr *paletteColors, std::uint32_t count);

  std::uint8_t IndexOf(kscore::Bgr color) {
    std::uint32_t &cell = cells[CellOf(color)];
    if (cell >> 8 != color) cell = color << 8 | kscore::NearestIndex(colors, colorCount, color);
    return static_cast<std::uint8_t>(cell);
  }

 private:
  static std::uint32_t CellOf(kscore::Bgr color) {
    return kscore::BlueOf(color) >> 3 | kscore::GreenOf(color) >> 3 << 5 | kscore::RedOf(color) >> 3 << 10;
  }

  static constexpr std::uint32_t kCellCount = 32 * 32 * 32;

  const kscore::Bgr *colors = nullptr;
  std::uint32_t colorCount = 0;
  kscore::Block<std::uint32_t, KS_MEMORY_BLOCK> cells;  // the colour, and its index in the low byte
};

}  // namespace ksblend
