#include "ksvect/paint/canvas_pixels.h"

#include "kscore/bitmap.h"
#include "kscore/pixel_forms.h"

#include <array>

namespace ksvect {
namespace {

using kscore::Bgr;
using kscore::Bgr24;
using kscore::Bgr32;
using kscore::Index8;

constexpr std::size_t kFoundCells = 4096;
constexpr Bgr kColorBits = 0xFFFFFF;

using Four = std::array<std::uint32_t, 4>;
using Packed = std::array<std::uint32_t, 3>;  // four pixels of 24 bits

void LoadBgr24(const std::uint8_t *row, std::uint32_t count, std::uint32_t *pixels) {
  for (; count >= 4; count -= 4, row += sizeof(Packed), pixels += 4) {
    Packed packed;
    std::memcpy(packed.data(), row, sizeof packed);
    const Four four = {packed[0] & kColorBits, (packed[0] >> 24 | packed[1] << 8) & kColorBits,
                       (packed[1] >> 16 | packed[2] << 16) & kColorBits, packed[2] >> 8};
    std::memcpy(pixels, four.data(), sizeof four);
  }
  for (std::uint32_t x = 0; x < count; ++x) pixels[x] = Bgr24::Value(row, x);
}

void StoreBgr24(std::uint8_t *row, std::uint32_t count, const std::uint32_t *pixels) {
  for (; count >= 4; count -= 4, row += sizeof(Packed), pixels += 4) {
    const Packed packed = {(pixels[0] & kColorBits) | pixels[1] << 24, (pixels[1] >> 8 & 0xFFFF) | pixels[2] << 16,
                           (pixels[2] >> 16 & 0xFF) | pixels[3] << 8};
    std::memcpy(row, packed.data(), sizeof packed);
  }
  for (std::uint32_t x = 0; x < count; ++x) std::memcpy(row + x * 3, pixels + x, 3);
}

/** The unused byte stays as it is. */
void StoreBgr32(std::uint8_t *row, std::uint32_t count, const std::uint32_t *pixels) {
  for (std::uint32_t x = 0; x < count; ++x) {
    std::uint32_t pixel = 0;
    std::memcpy(&pixel, row + std::uint64_t{x} * 4, sizeof pixel);
    pixel = (pixel & ~kColorBits) | (pixels[x] & kColorBits);
    std::memcpy(row + std::uint64_t{x} * 4, &pixel, sizeof pixel);
  }
}

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
      LoadBgr24(row + std::uint64_t{first} * 3, end - first, pixels);
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
      StoreBgr24(row + std::uint64_t{first} * 3, end - first, pixels);
      break;
    default:
      StoreBgr32(row + std::uint64_t{first} * 4, end - first, pixels);
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
