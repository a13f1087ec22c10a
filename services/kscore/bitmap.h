// Bitmaps within the framework's own libraries.
#pragma once

#include "internal/status.h"
#include "kskernel.h"

#include <cstdint>

namespace kscore {

/** Bit of KsBitmap::flags: nobody has written to the bitmap's own pixels yet, and clearing them needs no pass. */
constexpr std::uint32_t kBitmapUntouched = 2;

inline bool IsBitmap(const KsBitmap *bitmap) {
  return bitmap != nullptr && bitmap->structureSize == sizeof(KsBitmap);
}

inline bool HasStorage(const KsBitmap &bitmap) {
  return (bitmap.flags & KS_BITMAP_ALLOCATED) != 0 && bitmap.pixels != nullptr;
}

/** SUCCESS, or why a pixel operation must not touch the bitmap. */
inline Status CheckPixels(const KsBitmap *bitmap) {
  if (!IsBitmap(bitmap)) return ERROR_INVALID_VALUE;
  return HasStorage(*bitmap) ? SUCCESS : ERROR_NO_STORAGE;
}

/** Bytes from one row to the next: rows are padded to four bytes. */
constexpr std::uint64_t BytesPerLine(std::uint64_t bitsPerPixel, std::uint32_t width) {
  return (bitsPerPixel * width + 31) / 32 * 4;
}

inline std::uint8_t *RowOf(const KsBitmap &bitmap, std::uint64_t row) {
  return bitmap.pixels + row * bitmap.bytesPerLine;
}

/** To be called before pixels are written. */
inline void MarkWritten(KsBitmap &bitmap) {
  bitmap.flags &= ~kBitmapUntouched;
}

}  // namespace kscore
