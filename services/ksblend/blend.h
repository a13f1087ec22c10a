// One bitmap onto another: the engine under combining and painting. It clips, chooses how a row is converted, and goes
// through the rows.
#pragma once

#include "internal/status.h"
#include "kskernel.h"

#include <cstdint>

namespace ksblend {

/** Where a piece of the source comes to lie, in 64 bits so that no sum of 32-bit positions overflows. */
struct Placement {
  std::int64_t left;
  std::int64_t top;
  std::int64_t width;
  std::int64_t height;
  std::int64_t sourceLeft;
  std::int64_t sourceTop;
};

/** Cuts the placement to a rectangle of the target. */
void ClipToTarget(Placement &placement, const KsRect &rectangle);
/** Cuts the placement to a rectangle of the source. */
void ClipToSource(Placement &placement, const KsRect &rectangle);

/**
 * Copies the piece, clipped to both bitmaps, with its pixels converted to the target's depth. Where
 * `transparentColor` isn't null (red in the low byte), pixels of exactly that colour are left out. SUCCESS, -1, -2,
 * -13, or -16 where there is no conversion between the depths, or no colour of a pixel to compare.
 */
Status Blend(KsBitmap *target, const KsBitmap *source, const Placement &placement,
             const std::uint32_t *transparentColor);

}  // namespace ksblend
