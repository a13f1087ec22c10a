#include "kscore/allocation.h"
#include "kscore/bitmap.h"
#include "kscore/palette.h"
#include "kscore/pixel_forms.h"

#include <algorithm>
#include <array>
#include <limits>

namespace {

/** The occupied range of values, and how it is spread over the full one. */
struct Range {
  uint32_t low = std::numeric_limits<uint32_t>::max();
  uint32_t high = 0;

  void Add(uint32_t value) {
    low = std::min(low, value);
    high = std::max(high, value);
  }
  bool CanSpread() const { return low < high; }
  uint32_t Spread(uint32_t value, uint32_t full) const { return (value - low) * full / (high - low); }
};

/** Grays of 12 and 16 bits are samples of their own; the other forms have byte samples, of which the fourth is none. */
template <class Form>
constexpr bool kIsDeepGray = Form::bits == kscore::Gray12::bits || Form::bits == kscore::Gray16::bits;
template <class Form>
constexpr uint32_t kFullValue = kIsDeepGray<Form> ? (1u << Form::bits) - 1 : 255;
template <class Form>
constexpr uint64_t kPixelBytes = Form::bits / 8;
template <class Form>
constexpr uint64_t kChannels = std::min<uint64_t>(kPixelBytes<Form>, 3);

template <class Form>
Range RangeOf(const KsBitmap &bitmap) {
  Range range;
  for (uint32_t y = 0; y < bitmap.height; ++y) {
    const uint8_t *const row = kscore::RowOf(bitmap, y);
    for (uint64_t x = 0; x < bitmap.width; ++x) {
      if constexpr (kIsDeepGray<Form>) {
        range.Add(Form::Value(row, x));
      } else {
        for (uint64_t channel = 0; channel < kChannels<Form>; ++channel)
          range.Add(row[x * kPixelBytes<Form> + channel]);
      }
    }
  }
  return range;
}

template <class Form>
void Replace(KsBitmap &bitmap, const uint16_t *replacement) {
  for (uint32_t y = 0; y < bitmap.height; ++y) {
    uint8_t *const row = kscore::RowOf(bitmap, y);
    for (uint64_t x = 0; x < bitmap.width; ++x) {
      if constexpr (kIsDeepGray<Form>) {
        Form::Put(row, x, replacement[Form::Value(row, x)]);
      } else {
        for (uint64_t channel = 0; channel < kChannels<Form>; ++channel) {
          uint8_t &sample = row[x * kPixelBytes<Form> + channel];
          sample = static_cast<uint8_t>(replacement[sample]);
        }
      }
    }
  }
}

template <class Form>
Status SpreadPixels(KsBitmap &bitmap) {
  // Black and white are the whole range already.
  if constexpr (Form::bits == kscore::Index1::bits) return SUCCESS;
  const Range range = RangeOf<Form>(bitmap);
  if (!range.CanSpread()) return SUCCESS;
  const kscore::Block<uint16_t, KS_MEMORY_BLOCK> replacement(kFullValue<Form> + 1);
  if (!replacement) return ERROR_NO_MEMORY;
  for (uint32_t value = range.low; value <= range.high; ++value) {
    replacement[value] = static_cast<uint16_t>(range.Spread(value, kFullValue<Form>));
  }
  kscore::MarkWritten(bitmap);
  Replace<Form>(bitmap, replacement.Get());
  return SUCCESS;
}

using UsedLevels = std::array<bool, kscore::kLevelCount>;

template <class Form>
UsedLevels LevelsOf(const KsBitmap &bitmap) {
  UsedLevels used = {};
  for (uint32_t y = 0; y < bitmap.height; ++y) {
    const uint8_t *const row = kscore::RowOf(bitmap, y);
    for (uint64_t x = 0; x < bitmap.width; ++x) used[Form::Level(row, x)] = true;
  }
  return used;
}

/** Spreads the colours that pixels use. An index beyond the palette shows black, and counts as that. */
template <class Form>
Status SpreadPalette(KsBitmap &bitmap) {
  const UsedLevels used = LevelsOf<Form>(bitmap);
  Range range;
  for (uint32_t level = 0; level < kscore::EntriesOfDepth(Form::bits); ++level) {
    if (!used[level]) continue;
    const KsPaletteEntry entry = level < bitmap.colorCount ? bitmap.palette[level] : KsPaletteEntry{};
    for (const uint8_t value : {entry.blue, entry.green, entry.red}) range.Add(value);
  }
  if (!range.CanSpread()) return SUCCESS;
  for (uint32_t level = 0; level < bitmap.colorCount; ++level) {
    if (!used[level]) continue;
    KsPaletteEntry &entry = bitmap.palette[level];
    for (uint8_t *const value : {&entry.blue, &entry.green, &entry.red}) {
      *value = static_cast<uint8_t>(range.Spread(*value, 255));
    }
  }
  return SUCCESS;
}

template <class Form>
Status Spread(KsBitmap &bitmap) {
  if constexpr (Form::bits <= kscore::kDeepestPalette) {
    if (kscore::HasPalette(bitmap)) return SpreadPalette<Form>(bitmap);
  }
  return SpreadPixels<Form>(bitmap);
}

}  // namespace

int32_t KsToneAdjust(KsBitmap *bitmap, uint32_t, uint32_t) {
  const Status status = kscore::CheckPixels(bitmap);
  if (status != SUCCESS) return status.Code();
  const auto spread = [&](auto form) { return Spread<decltype(form)>(*bitmap); };
  return kscore::WithForm<decltype(spread), Status>(bitmap->bitsPerPixel, spread, ERROR_BITS_PER_PIXEL).Code();
}
