// Palettes as the framework's libraries use them.
#pragma once

#include "kscore/color.h"

/** A palette object: the entries follow the record. */
struct KsPalette {
  std::uint32_t count;
  bool stock;  // part of a context, and not to be released on its own
};

namespace kscore {

/** What the levels of a bitmap show. */
using ShownColors = Bgr[kLevelCount];

constexpr std::uint32_t kDeepestPalette = 8;
constexpr std::uint32_t kDeepestLut = 16;

/** Entries of a full palette of `bits` bits, up to 16. */
constexpr std::uint32_t EntriesOfDepth(std::uint32_t bits) {
  return 1u << bits;
}

/** The colours that pixels of up to 8 bits can select. */
inline std::uint32_t SelectableColors(const KsBitmap &bitmap) {
  return bitmap.colorCount < kLevelCount ? bitmap.colorCount : kLevelCount;
}

inline bool HasPalette(const KsBitmap &bitmap) {
  return bitmap.palette != nullptr && bitmap.colorCount != 0;
}

/** Storage for a palette with all entries black, or null. */
KsPaletteEntry *AllocatePalette(std::uint32_t entries);

/** What each level of a bitmap of up to 16 bits shows: palette, gray ramp, or the high byte of a gray. */
void FillShownColors(const KsBitmap &bitmap, ShownColors &colors);

/** The index of the colour that is nearest to `color`, the first of several. */
std::uint8_t NearestIndex(const Bgr *colors, std::uint32_t count, Bgr color);

inline KsPaletteEntry *EntriesOf(KsPalette *palette) {
  return reinterpret_cast<KsPaletteEntry *>(palette + 1);
}
inline const KsPaletteEntry *EntriesOf(const KsPalette *palette) {
  return reinterpret_cast<const KsPaletteEntry *>(palette + 1);
}

/** A palette object with a copy of `count` entries, or null. */
KsPalette *MakePalette(const KsPaletteEntry *entries, std::uint32_t count);

}  // namespace kscore
