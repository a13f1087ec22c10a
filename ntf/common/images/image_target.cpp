#include "images/image_target.h"

#include "images/block_grid.h"
#include "internal/ksclasses_.h"

#include <algorithm>

namespace ksntfx {

namespace {

std::uint32_t TargetOrder(const ImageSubheader &image, std::uint32_t depth) {
  if (depth == 1 || depth == 8) return KS_ORDER_PALETTE;
  return image.representation == kMono ? KS_ORDER_GRAY : KS_ORDER_BGR;
}

/** The entries of the lookup table that a palette is made of: the first band's count, as far as the table goes. */
std::uint32_t LutEntries(const ImageSubheader &image) {
  if (image.bandsHeld == 0 || image.bandLutEntries == nullptr) return 0;
  return std::min(image.bandLutEntries[0], image.lutCount);
}

}  // namespace

std::uint32_t TargetDepth(const ImageSubheader &image) {
  if (image.bandCount == 2) return 24;
  const std::uint32_t depth = image.bandCount > 1 ? 3 * image.bitsPerPixel : image.bitsPerPixel;
  return image.representation == kMono && (depth == 32 || depth == 64) ? 8 : depth;
}

Status CreateTarget(KsBitmap *target, const ImageSubheader &image, std::uint64_t width, std::uint64_t rows) {
  if (width > UINT32_MAX || rows > UINT32_MAX) return ERROR_NO_MEMORY;
  const std::uint32_t depth = TargetDepth(image);
  const Status status = KsBitmapCreate(target, sizeof *target, KS_BITMAP_OWN, static_cast<std::uint32_t>(width),
                                       static_cast<std::uint32_t>(rows), depth, KS_ORDER_BGR, nullptr, 1, nullptr, 0);
  if (status != SUCCESS) return status;
  target->order = TargetOrder(image, depth);
  SetImagePalette(target, image);
  return SUCCESS;
}

Status CheckTargetSize(const ImageSubheader &image) {
  KsLocalBitmap whole;
  const std::uint64_t width = PaddedWidth(image);
  const std::uint64_t height = PaddedHeight(image);
  if (width > UINT32_MAX || height > UINT32_MAX) return ERROR_NO_MEMORY;
  return KsBitmapCreate(whole.Get(), sizeof(KsBitmap), KS_BITMAP_CALLER, static_cast<std::uint32_t>(width),
                        static_cast<std::uint32_t>(height), TargetDepth(image), KS_ORDER_BGR, nullptr, 1, nullptr, 0);
}

void SetImagePalette(KsBitmap *bitmap, const ImageSubheader &image) {
  // A palette that can't be made leaves the bitmap without one, and the image is still shown.
  if (image.lut != nullptr && bitmap->bitsPerPixel <= 16) {
    KsPalette *palette = KsPaletteFromLut(image.lut, LutEntries(image));
    if (palette == nullptr) return;
    KsBitmapSetLut(bitmap, palette);
    KsObjectFree(palette, __LINE__, __FILE__);
    return;
  }
  const bool reduced = image.bitsPerPixel == 32 || image.bitsPerPixel == 64;
  if (image.bitsPerPixel > 8 && !reduced) return;
  KsPaletteEntry *ramp = KsDefaultPalette(reduced ? 8 : image.bitsPerPixel);
  if (ramp == nullptr) return;
  KsBitmapSetPalette(bitmap, 0, std::min(255U, 1U << (reduced ? 8 : image.bitsPerPixel)), ramp);
  KsPaletteFree(ramp);
}

}  // namespace ksntfx
