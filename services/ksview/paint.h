// Painting on a context, with and without a transparent colour.
#pragma once

#include "internal/status.h"
#include "kskernel.h"

#include <cstdint>

namespace ksview {

/** What a painting call passes about place and manner. */
struct Paint {
  const KsRect *source;     // the part of the bitmap; null: all of it
  const KsRect *clip;       // of the canvas; null: all of it
  const KsRect *rectangle;  // of the canvas
  const std::uint32_t *transparentColor;
  std::uint32_t rasterOperation;
};

Status PaintOn(KsDeviceContext *context, const KsBitmap *bitmap, const Paint &paint);

}  // namespace ksview
