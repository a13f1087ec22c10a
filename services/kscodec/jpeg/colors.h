// How a JPEG picture is decoded: which components become which colours, and with which tables.
#pragma once

#include "kscodec/jpeg/markers.h"
#include "kscodec/jpeg/quantisation.h"

#include <array>
#include <cstdint>

namespace kscodec::jpeg {

/** From the components of a stream to those of the bitmap. */
enum class Route { kGray, kColorFromYCbCr, kColorFromRgb, kPicked };

/** What to do with a stream. Plain data, since a library may jump out of functions that hold it. */
struct Plan {
  Route route;
  std::array<std::uint32_t, 3> picked;             /**< the components for blue, green, red; of YCbCr for Cr, Cb, Y */
  const QuantisationTable *quantisation = nullptr; /**< in the place of tables that the stream lacks; null for none */
};

Plan PlanOf(const Header &header, const KsLoadOptions &options);

}  // namespace kscodec::jpeg
