#include "kscodec/jpeg/colors.h"

#include <algorithm>

namespace kscodec::jpeg {

namespace {

Plan ColorsOf(const Header &header, const KsLoadOptions &options) {
  const std::uint32_t components = header.frame.components;
  if (components == 1) return {Route::kGray, {0, 0, 0}};
  if ((options.loadFlags & KS_LOAD_BANDS) != 0) {
    const std::uint32_t last = components - 1;
    const auto band = [&](std::size_t channel) { return std::min<std::uint32_t>(options.bands[channel], last); };
    return {Route::kPicked, {band(2), band(1), band(0)}};
  }
  if (components == 2) return {Route::kPicked, {0, 0, 0}};
  if (components > 3) return {Route::kPicked, {2, 1, 0}};
  const bool isRgb = IsRgb(header, (options.loadFlags & KS_LOAD_COLOR) != 0);
  return {isRgb ? Route::kColorFromRgb : Route::kColorFromYCbCr, {2, 1, 0}};
}

}  // namespace

Plan PlanOf(const Header &header, const KsLoadOptions &options) {
  Plan plan = ColorsOf(header, options);
  const bool hasDefaults = header.nitfQuality >= 1 && header.nitfQuality <= kDefaultQuantisation.size();
  // The tables are those of 8 bits.
  if (hasDefaults && header.frame.bits == 8) plan.quantisation = &kDefaultQuantisation[header.nitfQuality - 1U];
  return plan;
}

}  // namespace kscodec::jpeg
