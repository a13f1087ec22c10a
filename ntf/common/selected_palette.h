// A bitmap's palette on a device context.
#pragma once

#include "kskernel.h"
#include "platform.h"

/** A palette that is selected into a context for as long as a bitmap is painted. */
class SelectedPalette {
 public:
  SelectedPalette(KsDeviceContext *deviceContext, const KsBitmap *bitmap) : context(deviceContext) {
    if (context == nullptr) return;
    palette = KsPaintPalette(context, bitmap);
    if (palette != nullptr) previous = platform::SelectPalette(context, palette, false);
    platform::RealizePalette(context);
  }
  SelectedPalette(const SelectedPalette &) = delete;
  SelectedPalette &operator=(const SelectedPalette &) = delete;
  ~SelectedPalette() {
    if (palette == nullptr) return;
    platform::SelectPalette(context, previous, false);
    KsObjectFree(palette, __LINE__, __FILE__);
  }

 private:
  KsDeviceContext *context;
  KsPalette *palette = nullptr;
  KsPalette *previous = nullptr;
};
