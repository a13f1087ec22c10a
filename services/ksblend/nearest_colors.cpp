#include "ksblend/nearest_colors.h"

namespace ksblend {

bool NearestColors::Prepare(const kscore::Bgr *paletteColors, std::uint32_t count) {
  colors = paletteColors;
  colorCount = count;
  cells = kscore::Block<std::uint32_t, KS_MEMORY_BLOCK>(kCellCount);
  if (!cells) return false;
  // A cell of zeros claims to know black, and does so wrongly in black's own cell: that one starts with a colour of
  // another cell.
  cells[0] = 0xFFFFFF00;
  return true;
}

}  // namespace ksblend
