#include "kscore/bitmap.h"
#include "kscore/palette.h"

#include <algorithm>

namespace kscore {
namespace {

std::uint32_t SquareDistance(Bgr a, Bgr b) {
  const auto square = [](std::uint32_t p, std::uint32_t q) { return (p - q) * (p - q); };
  return square(BlueOf(a), BlueOf(b)) + square(GreenOf(a), GreenOf(b)) + square(RedOf(a), RedOf(b));
}

}  // namespace

void FillShownColors(const KsBitmap &bitmap, ShownColors &colors) {
  if (bitmap.bitsPerPixel <= kDeepestPalette && HasPalette(bitmap)) {
    const std::uint32_t count = SelectableColors(bitmap);
    for (std::uint32_t i = 0; i < count; ++i) colors[i] = BgrOfEntry(bitmap.palette[i]);
    std::fill(colors + count, colors + kLevelCount, 0);
    return;
  }
  const std::uint32_t last = bitmap.bitsPerPixel == 1 ? 1 : kLevelCount - 1;
  for (std::uint32_t i = 0; i < kLevelCount; ++i) colors[i] = BgrOfGray(std::min(i, last) * 255 / last);
}

std::uint8_t NearestIndex(const Bgr *colors, std::uint32_t count, Bgr color) {
  const Bgr *const nearest = std::min_element(
      colors, colors + count, [color](Bgr a, Bgr b) { return SquareDistance(a, color) < SquareDistance(b, color); });
  return static_cast<std::uint8_t>(nearest - colors);
}

}  // namespace kscore
