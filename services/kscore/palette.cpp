#include "kscore/palette.h"

#include "kscore/allocation.h"
#include "kscore/bitmap.h"

#include <algorithm>
#include <cstring>

namespace kscore {
namespace {

constexpr std::uint32_t kMostLutEntries = 65536;

KsPaletteEntry GrayEntry(std::uint32_t level) {
  const auto gray = static_cast<std::uint8_t>(level);
  return {gray, gray, gray, 0};
}

/** Fills `entries` with the gray ramp of `bits` bits. */
void FillGrayRamp(KsPaletteEntry *entries, std::uint32_t bits) {
  const std::uint32_t last = EntriesOfDepth(bits) - 1;
  for (std::uint32_t i = 0; i <= last; ++i) entries[i] = GrayEntry(i * 255 / last);
}

KsPaletteEntry *EntriesOf(KsPalette *palette) {
  return reinterpret_cast<KsPaletteEntry *>(palette + 1);
}

const KsPaletteEntry *EntriesOf(const KsPalette *palette) {
  return reinterpret_cast<const KsPaletteEntry *>(palette + 1);
}

/** Puts a palette in the place of the one that the bitmap has. */
void ReplacePalette(KsBitmap &bitmap, KsPaletteEntry *palette, std::uint32_t count, std::uint32_t capacity) {
  Release(KS_MEMORY_PIXELS, bitmap.palette);
  bitmap.palette = palette;
  bitmap.colorCount = count;
  bitmap.paletteCapacity = capacity;
}

/** Sets the gray ramp of its depth on a bitmap without a palette. */
bool EnsurePalette(KsBitmap &bitmap) {
  if (HasPalette(bitmap)) return true;
  KsPaletteEntry *const ramp = KsDefaultPalette(bitmap.bitsPerPixel);
  if (ramp == nullptr) return false;
  const std::uint32_t entries = EntriesOfDepth(bitmap.bitsPerPixel);
  ReplacePalette(bitmap, ramp, entries, entries);
  return true;
}

}  // namespace

KsPaletteEntry *AllocatePalette(std::uint32_t entries) {
  return static_cast<KsPaletteEntry *>(AllocateZeroed(KS_MEMORY_PIXELS, entries, sizeof(KsPaletteEntry)));
}

KsPalette *MakePalette(const KsPaletteEntry *entries, std::uint32_t count) {
  const std::uint64_t bytes = sizeof(KsPalette) + std::uint64_t{count} * sizeof(KsPaletteEntry);
  auto *const palette = static_cast<KsPalette *>(Allocate(KS_MEMORY_OBJECT, 1, bytes));
  if (palette == nullptr) return nullptr;
  *palette = {count, false};
  std::memcpy(EntriesOf(palette), entries, count * sizeof(KsPaletteEntry));
  return palette;
}

}  // namespace kscore

using kscore::EntriesOf;
using kscore::EntriesOfDepth;

KsPaletteEntry *KsDefaultPalette(uint32_t bits) {
  if (bits < 1 || bits > kscore::kDeepestPalette) return nullptr;
  KsPaletteEntry *const palette = kscore::AllocatePalette(EntriesOfDepth(bits));
  if (palette != nullptr) kscore::FillGrayRamp(palette, bits);
  return palette;
}

void KsPaletteFree(KsPaletteEntry *palette) {
  kscore::Release(KS_MEMORY_PIXELS, palette);
}

KsPalette *KsPaletteFromLut(const uint32_t *table, uint32_t count) {
  if (table == nullptr || count == 0 || count > kscore::kMostLutEntries) return nullptr;
  // A colour 0x00RRGGBB is an entry, byte for byte, but for what the table has in its top byte.
  KsPalette *const palette = kscore::MakePalette(reinterpret_cast<const KsPaletteEntry *>(table), count);
  if (palette == nullptr) return nullptr;
  for (uint32_t i = 0; i < count; ++i) EntriesOf(palette)[i].reserved = 0;
  return palette;
}

void KsObjectFree(void *object, int32_t, const char *) {
  const auto *const palette = static_cast<const KsPalette *>(object);
  if (palette != nullptr && !palette->stock) kscore::Release(KS_MEMORY_OBJECT, object);
}

int32_t KsBitmapSetLut(KsBitmap *bitmap, const KsPalette *palette) {
  if (!kscore::IsBitmap(bitmap) || bitmap->bitsPerPixel == 0 || palette == nullptr) return ERROR_INVALID_VALUE;
  const uint32_t bits = bitmap->bitsPerPixel;
  if (bits > kscore::kDeepestLut) return ERROR_BITS_PER_PIXEL;
  const uint32_t count = std::min(palette->count, EntriesOfDepth(bits));
  const uint32_t capacity = bits <= kscore::kDeepestPalette ? EntriesOfDepth(bits) : count;
  KsPaletteEntry *const entries = kscore::AllocatePalette(capacity);
  if (entries == nullptr) return ERROR_NO_MEMORY;
  std::memcpy(entries, EntriesOf(palette), count * sizeof(KsPaletteEntry));
  kscore::ReplacePalette(*bitmap, entries, count, capacity);
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
  if (!kscore::EnsurePalette(*bitmap)) return ERROR_NO_MEMORY;
  const uint32_t entriesOfDepth = EntriesOfDepth(bitmap->bitsPerPixel);
  if (first >= entriesOfDepth) return SUCCESS;
  const uint32_t end = first + std::min(count, entriesOfDepth - first);
  std::memcpy(bitmap->palette + first, entries, (end - first) * sizeof(KsPaletteEntry));
  if (bitmap->colorCount < end) bitmap->colorCount = end;
  return SUCCESS;
}
