#include "ksblend/blend.h"
#include "ksblend/enlarge.h"

int32_t KsCombine(KsBitmap *target, int32_t left, int32_t top, int32_t width, int32_t height, const KsBitmap *source,
                  int32_t sourceLeft, int32_t sourceTop, uint32_t operation, uint32_t) {
  if (operation != KS_COMBINE_COPY) return ERROR_NOT_SUPPORTED;
  const ksblend::Placement placement = {left, top, width, height, sourceLeft, sourceTop};
  if (ksblend::IsEnlarged(source, placement)) {
    return ksblend::BlendEnlarged(target, source, placement, nullptr, nullptr).Code();
  }
  return ksblend::Blend(target, source, placement, nullptr).Code();
}
