// The palettes of bitmaps.
#include "kscore/allocation.h"
#include "kscore/bitmap.h"
#include "kscore/palette.h"

#include <algorithm>
#include <cstring>

namespace {

using kscore::EntriesOfDepth;

/** Replaces the palette of a bitmap. */
void ReplacePalette(KsBitmap &bitmap, KsPaletteEntry *palette, std::uint32_t count, std::uint32_t capacity) {
  kscore::Release(KS_MEMORY_PIXELS, bitmap.palette);
  bitmap.palette = palette;
  bitmap.colorCount = count;
  bitmap.paletteCapacity = capacity;
}

/** Sets the gray ramp of its depth on a bitmap without a palette. */
bool EnsurePalette(KsBitmap &bitmap) {
  if (kscore::HasPalette(bitmap)) return true;
  KsPaletteEntry *const ramp = KsDefaultPalette(bitmap.bitsPerPixel);
  if (ramp == nullptr) return false;
  const std::uint32_t entries = EntriesOfDepth(bitmap.bitsPerPixel);
  ReplacePalette(bitmap, ramp, entries, entries);
  return true;
}

}  // namespace

int32_t KsBitmapSetLut(KsBitmap *bitmap, const KsPalette *palette) {
  if (!kscore::IsBitmap(bitmap) || bitmap->bitsPerPixel == 0 || palette == nullptr) return ERROR_INVALID_VALUE;
  const uint32_t bits = bitmap->bitsPerPixel;
  if (bits > kscore::kDeepestLut) return ERROR_BITS_PER_PIXEL;
  const uint32_t count = std::min(palette->count, EntriesOfDepth(bits));
  const uint32_t capacity = bits <= kscore::kDeepestPalette ? EntriesOfDepth(bits) : count;
  KsPaletteEntry *const entries = kscore::AllocatePalette(capacity);
  if (entries == nullptr) return ERROR_NO_MEMORY;
  std::memcpy(entries, kscore::EntriesOf(palette), count * sizeof(KsPaletteEntry));
  ReplacePalette(*bitmap, entries, count, capacity);
  return SUCCESS;
}

int32_t KsBitmapGetPalette(const KsBitmap *bitmap, uint32_t first, uint32_t count, KsPaletteEntry *entries) {
  if (!kscore::IsBitmap(bitmap) || !kscore::HasPalette(*bitmap) || entries == nullptr) return ERROR_INVALID_VALUE;
  if (first >= bitmap->colorCount) return SUCCESS;
  const uint32_t available = std::min(count, bitmap->colorCount - first);
  std::memcpy(entries, bitmap->palette + first, available * sizeof(KsPaletteEntry));
  return SUCCESS;
}

int32_t KsBitmapSetPalette(KsBitmap *bitmap, uint32_t first, uint32_t count, const KsPaletteEntry *entries) {
  if (!kscore::IsBitmap(bitmap) || bitmap->bitsPerPixel == 0 || entries == nullptr) return ERROR_INVALID_VALUE;
  if (bitmap->bitsPerPixel > kscore::kDeepestPalette) return ERROR_BITS_PER_PIXEL;
  if (!EnsurePalette(*bitmap)) return ERROR_NO_MEMORY;
  const uint32_t entriesOfDepth = EntriesOfDepth(bitmap->bitsPerPixel);
  if (first >= entriesOfDepth) return SUCCESS;
  const uint32_t end = first + std::min(count, entriesOfDepth - first);
  std::memcpy(bitmap->palette + first, entries, (end - first) * sizeof(KsPaletteEntry));
  if (bitmap->colorCount < end) bitmap->colorCount = end;
  return SUCCESS;
}
