// Which components of a JPEG picture become which colours of its bitmap.
#pragma once

#include "kscodec/jpeg_markers.h"

#include <array>
#include <cstdint>

namespace kscodec::jpeg {

/** From the components of a stream to those of the bitmap. */
enum class Route { kGray, kColorFromYCbCr, kColorFromRgb, kPicked };

/** What is to be done with a stream; plain data, as it lives where a library may jump out of a function. */
struct Plan {
  Route route;
  std::array<std::uint32_t, 3> picked; /**< the components for blue, green, red; of YCbCr for Cr, Cb, Y */
};

Plan PlanOf(const Header &header, const KsLoadOptions &options);

}  // namespace kscodec::jpeg
