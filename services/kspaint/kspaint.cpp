#include "ksview/paint.h"

int32_t KsPaintTransparent(KsDeviceContext *context, const KsBitmap *bitmap, const KsRect *source, const KsRect *clip,
                           const KsRect *rectangle, const void *, uint32_t, uint32_t, uint32_t, uint32_t, uint32_t,
                           uint32_t, uint32_t, uint32_t, uint32_t color, uint32_t, uint32_t, uint32_t rasterOperation) {
  return ksview::PaintOn(context, bitmap, {source, clip, rectangle, &color, rasterOperation}).Code();
}
