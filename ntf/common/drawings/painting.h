// Bitmaps painted on a device context.
#pragma once

#include "internal/status.h"
#include "kskernel.h"
#include "platform.h"

namespace ksntfx {

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

/** Paints a bitmap into a rectangle of the canvas. */
inline Status PaintWhole(KsDeviceContext *context, const KsBitmap *bitmap, const KsRect &place) {
  return KsPaintBitmap(context, bitmap, nullptr, nullptr, &place, nullptr, KS_ROP_COPY);
}

/** The same without the pixels of one colour. */
inline Status PaintTransparent(KsDeviceContext *context, const KsBitmap *bitmap, const KsRect &place,
                               const KsPaletteEntry &transparent) {
  const std::uint32_t color =
      std::uint32_t{transparent.blue} << 16 | std::uint32_t{transparent.green} << 8 | transparent.red;
  return KsPaintTransparent(context, bitmap, nullptr, nullptr, &place, nullptr, 1000, 1, 1, 1, 1, 1, 1, 1, color, 0, 0,
                            KS_ROP_COPY);
}

}  // namespace ksntfx
