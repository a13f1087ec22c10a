#include "ksview/paint.h"

#include "ksblend/blend.h"
#include "ksblend/enlarge.h"
#include "kscore/context.h"

namespace ksview {

Status PaintOn(KsDeviceContext *context, const KsBitmap *bitmap, const Paint &paint) {
  if (context == nullptr || paint.rectangle == nullptr) return ERROR_INVALID_VALUE;
  if (paint.rasterOperation != KS_ROP_COPY) return ERROR_NOT_SUPPORTED;
  const KsRect &rectangle = *paint.rectangle;
  ksblend::Placement placement = {rectangle.left,
                                  rectangle.top,
                                  std::int64_t{rectangle.right} - rectangle.left,
                                  std::int64_t{rectangle.bottom} - rectangle.top,
                                  paint.source != nullptr ? paint.source->left : 0,
                                  paint.source != nullptr ? paint.source->top : 0};
  if (ksblend::IsEnlarged(bitmap, placement)) {
    return ksblend::BlendEnlarged(context->bitmap, bitmap, placement, paint.clip, paint.transparentColor);
  }
  if (paint.source != nullptr) ksblend::ClipToSource(placement, *paint.source);
  if (paint.clip != nullptr) ksblend::ClipToTarget(placement, *paint.clip);
  return ksblend::Blend(context->bitmap, bitmap, placement, paint.transparentColor);
}

}  // namespace ksview
