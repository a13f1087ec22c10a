// A bitmap spread over a rectangle that is not of its size, row by row.
#pragma once

#include "ksblend/blend.h"

namespace ksblend {

/** Whether the bitmap is one that covers the rectangle it is put into, and isn't of that size by itself. */
bool IsEnlarged(const KsBitmap *source, const Placement &placement);

/**
 * Blend for such a bitmap: from (`sourceLeft`, `sourceTop`) on it is spread over the whole rectangle, and `clip`,
 * unless null, cuts the rectangle afterwards. Colours are interpolated between the four pixels around each place, with
 * pixels at their centres, in 24 bits; those beyond the outermost centres are the outermost pixels.
 */
Status BlendEnlarged(KsBitmap *target, const KsBitmap *source, const Placement &placement, const KsRect *clip,
                     const std::uint32_t *transparentColor);

}  // namespace ksblend
