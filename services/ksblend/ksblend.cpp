#include "ksblend/blend.h"

int32_t KsCombine(KsBitmap *target, int32_t left, int32_t top, int32_t width, int32_t height, const KsBitmap *source,
                  int32_t sourceLeft, int32_t sourceTop, uint32_t operation, uint32_t) {
  constexpr uint32_t kCopy = 288;
  if (operation != kCopy) return ERROR_NOT_SUPPORTED;
  return ksblend::Blend(target, source, {left, top, width, height, sourceLeft, sourceTop}, nullptr);
}
