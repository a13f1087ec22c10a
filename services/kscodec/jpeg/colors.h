// Which components of a JPEG picture become which colours of its bitmap.
#pragma once

#include "kscodec/jpeg/markers.h"

#include <array>
#include <cstdint>

namespace kscodec::jpeg {

/** From the components of a stream to those of the bitmap. */
enum class Route { kGray, kColorFromYCbCr, kColorFromRgb, kPicked };

/** What to do with a stream. Plain data, since a library may jump out of functions that hold it. */
struct Plan {
  Route route;
  std::array<std::uint32_t, 3> picked; /**< the components for blue, green, red; of YCbCr for Cr, Cb, Y */
};

Plan PlanOf(const Header &header, const KsLoadOptions &options);

}  // namespace kscodec::jpeg
