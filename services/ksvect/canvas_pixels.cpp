#include "ksvect/canvas_pixels.h"

#include "kscore/bitmap.h"
#include "kscore/pixel_forms.h"

namespace ksvect {
namespace {

using kscore::Bgr;
using kscore::Bgr24;
using kscore::Bgr32;
using kscore::Index8;

constexpr std::size_t kFoundCells = 4096;
constexpr Bgr kColorBits = 0xFFFFFF;

}  // namespace

CanvasPixels::CanvasPixels(KsBitmap &bitmap) : canvas(bitmap) {
  if (bitmap.bitsPerPixel != Index8::bits) return;
  kscore::FillShownColors(bitmap, shown);
  // No colour has a top byte, so that cells begin with what nobody asks for.
  found.assign(kFoundCells, Found{~kColorBits, 0});
}

bool CanvasPixels::IsKnown(const KsBitmap &bitmap) {
  return bitmap.bitsPerPixel == Index8::bits || bitmap.bitsPerPixel == Bgr24::bits ||
         bitmap.bitsPerPixel == Bgr32::bits;
}

void CanvasPixels::Load(const KsRect &part, std::uint32_t *pixels, std::int32_t stride) const {
  for (std::int32_t y = part.top; y < part.bottom; ++y, pixels += stride) {
    LoadRow(kscore::RowOf(canvas, static_cast<std::uint32_t>(y)), part.left, part.right - part.left, pixels);
  }
}

void CanvasPixels::Store(const KsRect &part, const std::uint32_t *pixels, std::int32_t stride) {
  kscore::MarkWritten(canvas);
  for (std::int32_t y = part.top; y < part.bottom; ++y, pixels += stride) {
    StoreRow(kscore::RowOf(canvas, static_cast<std::uint32_t>(y)), part.left, part.right - part.left, pixels);
  }
}

void CanvasPixels::LoadRow(const std::uint8_t *row, std::int32_t left, std::int32_t count,
                           std::uint32_t *pixels) const {
  const auto first = static_cast<std::uint32_t>(left);
  const auto end = first + static_cast<std::uint32_t>(count);
  switch (canvas.bitsPerPixel) {
    case Index8::bits:
      for (std::uint32_t x = first; x < end; ++x) *pixels++ = shown[row[x]];
      break;
    case Bgr24::bits:
      for (std::uint32_t x = first; x < end; ++x) *pixels++ = Bgr24::Value(row, x);
      break;
    default:
      for (std::uint32_t x = first; x < end; ++x) *pixels++ = Bgr32::Value(row, x);
      break;
  }
}

void CanvasPixels::StoreRow(std::uint8_t *row, std::int32_t left, std::int32_t count, const std::uint32_t *pixels) {
  const auto first = static_cast<std::uint32_t>(left);
  const auto end = first + static_cast<std::uint32_t>(count);
  switch (canvas.bitsPerPixel) {
    case Index8::bits:
      for (std::uint32_t x = first; x < end; ++x, ++pixels) {
        const Bgr color = *pixels & kColorBits;
        if (color != shown[row[x]]) row[x] = LevelOf(color);
      }
      break;
    case Bgr24::bits:
      for (std::uint32_t x = first; x < end; ++x, ++pixels) {
        std::memcpy(row + std::uint64_t{x} * 3, pixels, 3);
      }
      break;
    default:
      for (std::uint32_t x = first; x < end; ++x, ++pixels) {
        std::memcpy(row + std::uint64_t{x} * 4, pixels, 3);
      }
      break;
  }
}

std::uint8_t CanvasPixels::LevelOf(Bgr color) {
  if (!kscore::HasPalette(canvas)) return static_cast<std::uint8_t>(kscore::BrightnessOf(color));
  Found &cell = found[(color * 2654435761u) >> 20];
  if (cell.color != color) cell = {color, kscore::NearestIndex(shown, kscore::SelectableColors(canvas), color)};
  return cell.level;
}

}  // namespace ksvect
