#include "kscore/palette.h"

#include "kscore/allocation.h"

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
