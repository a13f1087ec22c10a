#include "kscore/bitmap.h"
#include "kscore/palette.h"
#include "kscore/pixel_forms.h"

#include <array>

namespace {

using Counts = std::array<uint64_t, kscore::kLevelCount>;

// Neighbouring pixels are often equal, and counting them in one place would make each wait for the one before.
constexpr uint64_t kLanes = 4;

/** Counts the levels of a form that has them, and the brightness of the others. */
template <class Form>
void CountPixels(const KsBitmap &bitmap, Counts &total) {
  std::array<Counts, kLanes> counts = {};
  for (uint32_t y = 0; y < bitmap.height; ++y) {
    const uint8_t *const row = kscore::RowOf(bitmap, y);
    for (uint64_t x = 0; x < bitmap.width; ++x) {
      if constexpr (kscore::kHasLevels<Form>) {
        ++counts[x % kLanes][Form::Level(row, x)];
      } else {
        ++counts[x % kLanes][kscore::BrightnessOf(Form::Value(row, x))];
      }
    }
  }
  for (uint32_t level = 0; level < kscore::kLevelCount; ++level) {
    for (const Counts &lane : counts) total[level] += lane[level];
  }
}

/** Adds the counts of levels to the counters of the brightness that each level shows. */
template <class Form>
void AddToCounters(const KsBitmap &bitmap, uint64_t *counters) {
  Counts counts = {};
  CountPixels<Form>(bitmap, counts);
  kscore::ShownColors shown;
  for (uint32_t level = 0; level < kscore::kLevelCount; ++level) shown[level] = kscore::BgrOfGray(level);
  if constexpr (kscore::kHasLevels<Form>) kscore::FillShownColors(bitmap, shown);
  for (uint32_t level = 0; level < kscore::kLevelCount; ++level) {
    counters[kscore::BrightnessOf(shown[level])] += counts[level];
  }
}

}  // namespace

int32_t KsHistogram(const KsBitmap *bitmap, uint64_t *counters, uint32_t count, uint32_t) {
  if (counters == nullptr || count != kscore::kLevelCount) return ERROR_INVALID_VALUE;
  const Status status = kscore::CheckPixels(bitmap);
  if (status != SUCCESS) return status.Code();
  const auto add = [&](auto form) -> int32_t {
    AddToCounters<decltype(form)>(*bitmap, counters);
    return SUCCESS;
  };
  return kscore::WithForm<decltype(add), int32_t>(bitmap->bitsPerPixel, add, ERROR_BITS_PER_PIXEL);
}
