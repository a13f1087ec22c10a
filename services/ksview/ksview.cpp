#include "kscore/bitmap.h"
#include "kscore/palette.h"
#include "ksview/paint.h"

KsPalette *KsPaintPalette(KsDeviceContext *context, const KsBitmap *bitmap) {
  if (context == nullptr || !kscore::IsBitmap(bitmap) || !kscore::HasPalette(*bitmap)) return nullptr;
  return kscore::MakePalette(bitmap->palette, bitmap->colorCount);
}

int32_t KsPaintBitmap(KsDeviceContext *context, const KsBitmap *bitmap, const KsRect *source, const KsRect *clip,
                      const KsRect *rectangle, const void *, uint32_t rasterOperation) {
  return ksview::PaintOn(context, bitmap, {source, clip, rectangle, nullptr, rasterOperation}).Code();
}
