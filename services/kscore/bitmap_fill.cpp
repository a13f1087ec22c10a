#include "kscore/bitmap.h"
#include "kscore/palette.h"
#include "kscore/pixel_forms.h"

#include <array>
#include <cstring>

namespace {

using kscore::Bgr;

/** The bytes that repeat along a row of one colour: a pixel, or the two that share three bytes. */
struct Pattern {
  std::array<uint8_t, 4> bytes;
  uint32_t length;  // 0: no such pattern

  bool IsOneByte() const {
    for (uint32_t i = 1; i < length; ++i) {
      if (bytes[i] != bytes[0]) return false;
    }
    return length != 0;
  }
};

Pattern PatternOf(uint32_t value, uint32_t length) {
  Pattern pattern{{}, length};
  std::memcpy(pattern.bytes.data(), &value, length);
  return pattern;
}

uint32_t IndexOf(const KsBitmap &bitmap, Bgr color) {
  kscore::ShownColors colors;
  kscore::FillShownColors(bitmap, colors);
  const uint32_t count =
      kscore::HasPalette(bitmap) ? kscore::SelectableColors(bitmap) : kscore::EntriesOfDepth(bitmap.bitsPerPixel);
  return kscore::NearestIndex(colors, count, color);
}

Pattern PatternFor(const KsBitmap &bitmap, Bgr color) {
  const uint32_t gray = kscore::BrightnessOf(color);
  switch (bitmap.bitsPerPixel) {
    case 1:
      return PatternOf(IndexOf(bitmap, kscore::HasPalette(bitmap) ? color : kscore::BgrOfGray(gray)) * 0xFF, 1);
    case 8:
      return PatternOf(kscore::HasPalette(bitmap) ? IndexOf(bitmap, color) : gray, 1);
    case 12:
      return PatternOf(kscore::Gray12Of(gray) | kscore::Gray12Of(gray) << 12, 3);
    case 16:
      return PatternOf(kscore::Gray16Of(gray), 2);
    case 24:
      return PatternOf(color, 3);
    case 32:
      return PatternOf(color, 4);
    default:
      return {};
  }
}

void Fill(KsBitmap &bitmap, uint8_t byte) {
  if (byte == 0 && (bitmap.flags & kscore::kBitmapUntouched) != 0) return;
  std::memset(bitmap.pixels, byte, uint64_t{bitmap.bytesPerLine} * bitmap.height);
  kscore::MarkWritten(bitmap);
}

/** Fills the first row, and the others from it. */
void Fill(KsBitmap &bitmap, const Pattern &pattern) {
  kscore::MarkWritten(bitmap);
  uint8_t *const first = bitmap.pixels;
  for (uint32_t i = 0; i < bitmap.bytesPerLine; ++i) first[i] = pattern.bytes[i % pattern.length];
  for (uint32_t row = 1; row < bitmap.height; ++row) {
    std::memcpy(kscore::RowOf(bitmap, row), first, bitmap.bytesPerLine);
  }
}

}  // namespace

void KsBitmapClear(KsBitmap *bitmap) {
  if (kscore::CheckPixels(bitmap) == SUCCESS) Fill(*bitmap, 0);
}

int32_t KsBitmapFill(KsBitmap *bitmap, uint32_t color) {
  const Status status = kscore::CheckPixels(bitmap);
  if (status != SUCCESS) return status.Code();
  const Pattern pattern = PatternFor(*bitmap, kscore::BgrOfColor(color));
  if (pattern.length == 0) return ERROR_BITS_PER_PIXEL;
  if (pattern.IsOneByte()) {
    Fill(*bitmap, pattern.bytes[0]);
  } else {
    Fill(*bitmap, pattern);
  }
  return SUCCESS;
}
