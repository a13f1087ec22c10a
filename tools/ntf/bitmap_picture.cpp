#include "bitmap_picture.h"

#include <algorithm>
#include <cstring>

namespace ntf {
namespace {

bool IsGray(const KsPaletteEntry &entry, unsigned value) {
  return entry.red == value && entry.green == value && entry.blue == value;
}

bool IsGrayRamp(const std::vector<KsPaletteEntry> &palette) {
  for (std::size_t index = 0; index < palette.size(); ++index) {
    const std::size_t gray = index * 255 / (palette.size() - 1);
    if (!IsGray(palette[index], static_cast<unsigned>(gray))) return false;
  }
  return true;
}

/** The colours of all possible indices of the bitmap; those beyond its palette are black. */
std::vector<KsPaletteEntry> FullPalette(const KsBitmap &bitmap) {
  std::vector<KsPaletteEntry> palette(std::size_t{1} << bitmap.bitsPerPixel);
  const auto entries = static_cast<std::uint32_t>(palette.size());
  KsBitmapGetPalette(&bitmap, 0, std::min(bitmap.colorCount, entries), palette.data());
  return palette;
}

void PutWide(std::uint32_t value, std::uint8_t *bytes) {
  bytes[0] = static_cast<std::uint8_t>(value >> 8);
  bytes[1] = static_cast<std::uint8_t>(value);
}

std::uint32_t Spread12Bits(std::uint32_t value) {
  return (value * 65535 + 2047) / 4095;
}

void ConvertPacked12Bits(const std::uint8_t *row, std::uint32_t width, std::uint8_t *picture) {
  for (std::uint32_t x = 0; x < width; ++x, picture += 2) {
    const std::uint8_t *pair = row + x / 2 * 3;
    const std::uint32_t value = x % 2 == 0 ? pair[0] | (pair[1] & 0x0Fu) << 8 : pair[1] >> 4 | pair[2] << 4;
    PutWide(Spread12Bits(value), picture);
  }
}

void Convert16Bits(const std::uint8_t *row, std::uint32_t width, std::uint8_t *picture) {
  for (std::uint32_t x = 0; x < width; ++x, row += 2, picture += 2) {
    std::uint16_t value = 0;
    std::memcpy(&value, row, sizeof value);
    PutWide(value, picture);
  }
}

void ConvertColors(const std::uint8_t *row, std::uint32_t width, unsigned pixelBytes, std::uint8_t *picture) {
  for (std::uint32_t x = 0; x < width; ++x, row += pixelBytes, picture += 3) {
    picture[0] = row[2];
    picture[1] = row[1];
    picture[2] = row[0];
  }
}

}  // namespace

std::optional<PictureShape> ShapeOfBitmap(const KsBitmap &bitmap, std::uint32_t width, std::uint32_t height) {
  PictureShape shape;
  shape.width = width;
  shape.height = height;
  switch (bitmap.bitsPerPixel) {
    case 1:
    case 8:
      shape.bits = bitmap.bitsPerPixel;
      if (bitmap.palette == nullptr) return shape;
      shape.palette = FullPalette(bitmap);
      shape.kind = IsGrayRamp(shape.palette) ? PixelKind::Gray : PixelKind::Palette;
      return shape;
    case 12:
    case 16:
      shape.bits = 16;
      return shape;
    case 24:
    case 32:
      shape.kind = PixelKind::Color;
      return shape;
    default:
      return {};
  }
}

void ConvertRow(const KsBitmap &bitmap, const std::uint8_t *row, const PictureShape &shape, std::uint8_t *picture) {
  switch (bitmap.bitsPerPixel) {
    case 12:
      ConvertPacked12Bits(row, shape.width, picture);
      break;
    case 16:
      Convert16Bits(row, shape.width, picture);
      break;
    case 24:
    case 32:
      ConvertColors(row, shape.width, bitmap.bitsPerPixel / 8, picture);
      break;
    default:
      std::memcpy(picture, row, shape.RowBytes());
      break;
  }
}

}  // namespace ntf
