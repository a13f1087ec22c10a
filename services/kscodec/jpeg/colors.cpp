#include "kscodec/jpeg/colors.h"

#include <algorithm>

namespace kscodec::jpeg {

Plan PlanOf(const Header &header, const KsLoadOptions &options) {
  const std::uint32_t components = header.frame.components;
  if (components == 1) return {Route::kGray, {0, 0, 0}};
  if ((options.loadFlags & KS_LOAD_BANDS) != 0) {
    const std::uint32_t last = components - 1;
    const auto band = [&](std::size_t channel) { return std::min<std::uint32_t>(options.bands[channel], last); };
    return {Route::kPicked, {band(2), band(1), band(0)}};
  }
  if (components == 2) return {Route::kPicked, {0, 0, 0}};
  if (components > 3) return {Route::kPicked, {2, 1, 0}};
  return {IsRgb(header) ? Route::kColorFromRgb : Route::kColorFromYCbCr, {2, 1, 0}};
}

}  // namespace kscodec::jpeg
