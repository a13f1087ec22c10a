#include "compose/place_image.h"

#include "drawings/painting.h"
#include "images/block_grid.h"
#include "images/handlimg.h"
#include "internal/ksclasses_.h"
#include "platform.h"

#include <algorithm>

namespace ksntfx {

namespace {

/**
 * The colour that TPXCD means: its palette entry, or black in an image without a palette. For an index beyond
 * the palette, the image is painted whole.
 */
Status PadColor(const KsBitmap *bitmap, const ImageSubheader &image, KsPaletteEntry *color, bool *transparent) {
  *color = {};
  *transparent = true;
  if (bitmap->colorCount == 0) return SUCCESS;
  KsArray<KsPaletteEntry> entries;
  if (!entries.Allocate(bitmap->colorCount)) return ERROR_NO_MEMORY;
  KsBitmapGetPalette(bitmap, 0, bitmap->colorCount, entries.Get());
  const std::uint32_t index = image.padCode[0];
  *transparent = index < bitmap->colorCount;
  if (*transparent) *color = entries[index];
  return SUCCESS;
}

Status PaintImage(KsDeviceContext *context, const KsBitmap *bitmap, const ImageSubheader &image, const KsRect &place) {
  if (image.padCode == nullptr) return PaintWhole(context, bitmap, place);
  KsPaletteEntry color;
  bool transparent = false;
  const Status status = PadColor(bitmap, image, &color, &transparent);
  if (status != SUCCESS) return status;
  return transparent ? PaintTransparent(context, bitmap, place, color) : PaintWhole(context, bitmap, place);
}

/** Puts the parts of one image on the canvas. */
class ImagePlacer final : public ImageSink {
 public:
  ImagePlacer(KsDeviceContext *deviceContext, KsBitmap *canvasBitmap, const ImageSubheader &header,
              const DisplayOffset &offset)
      : context(deviceContext),
        canvas(canvasBitmap),
        image(header),
        quantised(KindOf(image).layout == ImageLayout::VectorQuantised),
        left(Add(image.locationColumn, offset.column)),
        top(Add(image.locationRow, offset.row)) {}

  ~ImagePlacer() override {
    if (canvasOpen) KsBitmapRelease(canvas, 1, 1);
  }

  /**
   * Places the first `rows` rows of `part` at row `partTop` of the image, within its padded size; vector-quantised data
   * have that of their recorded blocks.
   */
  Status Place(KsBitmap *part, std::uint32_t partTop, std::uint32_t rows) override {
    // Transparent pixels can only be painted.
    if (image.padCode != nullptr && context == nullptr) return ERROR_INVALID_VALUE;
    const std::int32_t placeTop = Add(top, static_cast<std::int32_t>(partTop));
    const bool isEnlarged = (part->flags & KS_BITMAP_ENLARGED) != 0;
    const std::uint64_t rowsLeft = PaddedHeight(image) - partTop;
    const auto width = static_cast<std::int32_t>(quantised ? part->width : PaddedWidth(image));
    const auto height = static_cast<std::int32_t>(quantised    ? rows
                                                  : isEnlarged ? rowsLeft
                                                               : std::min<std::uint64_t>(rows, rowsLeft));
    if (context == nullptr) return KsCombine(canvas, left, placeTop, width, height, part, 0, 0, KS_COMBINE_COPY, 0);
    KsRect place;
    platform::SetRect(&place, left, placeTop, Add(left, width), Add(placeTop, height));
    const SelectedPalette palette(context, part);
    return PaintImage(context, part, image, place);
  }

  /** Where full colour meets a full-colour canvas and nothing is clipped or painted, the canvas is the place. */
  bool Lend(KsBitmap *view, std::uint32_t partTop, std::uint32_t rows, std::uint32_t depth) override {
    if (depth != kFullColour || context != nullptr || image.padCode != nullptr || canvas->bitsPerPixel != kFullColour)
      return false;
    const std::int32_t placeTop = Add(top, static_cast<std::int32_t>(partTop));
    if (left < 0 || placeTop < 0) return false;
    const auto width = static_cast<std::uint32_t>(PaddedWidth(image));
    return KsBitmapView(view, sizeof *view, canvas, static_cast<std::uint32_t>(left),
                        static_cast<std::uint32_t>(placeTop), width, rows) == SUCCESS &&
           OpenCanvas();
  }

 private:
  static constexpr std::uint32_t kFullColour = 24;

  bool OpenCanvas() {
    if (!canvasOpen) canvasOpen = KsBitmapAccess(canvas, 0) == SUCCESS;
    return canvasOpen;
  }

  KsDeviceContext *context;
  KsBitmap *canvas;
  bool canvasOpen = false;
  const ImageSubheader &image;
  bool quantised;
  std::int32_t left;
  std::int32_t top;
};

/** Spreads an image all of whose levels lie below 20 over the full range. */
Status CheckTone(KsBitmap *bitmap) {
  constexpr std::uint32_t kLevels = 256;
  constexpr std::uint32_t kLowLevels = 20;
  constexpr std::uint32_t kSpreadFully = 350;
  std::uint64_t counters[kLevels] = {};
  const Status status = KsHistogram(bitmap, counters, kLevels, 0);
  if (status != SUCCESS) return status;
  const auto occupied = [](std::uint64_t count) { return count != 0; };
  if (std::any_of(counters + kLowLevels, counters + kLevels, occupied)) return SUCCESS;
  if (std::none_of(counters, counters + kLowLevels, occupied)) return SUCCESS;
  return KsToneAdjust(bitmap, kSpreadFully, 0);
}

/** Whether an image can turn out to be damaged when a part of it is on the canvas already. */
bool MayFailHalfway(const ImageSubheader &image) {
  return KindOf(image).layout == ImageLayout::Tiles && !BlockGrid(image).IsSingle();
}

}  // namespace

Status DrawImage(FilterLoadRecord *loadContext, const Canvas &canvas, NitfFile *file, std::uint32_t index,
                 const DisplayOffset &offset) {
  const ImageSubheader &image = *FindImage(file, index);
  ImagePlacer placer(canvas.context, canvas.bitmap, image, offset);
  const bool inStrips = file->toneCheck == 0 && (canvas.isDiscarded || !MayFailHalfway(image));
  if (inStrips) return DecodeImageInStrips(loadContext, file, index, placer);
  KsLocalBitmap bitmap;
  Status status = DecodeImageSegment(loadContext, file, index, bitmap.Get());
  if (status == SUCCESS && file->toneCheck != 0) status = CheckTone(bitmap.Get());
  return status == SUCCESS ? placer.Place(bitmap.Get(), 0, bitmap->height) : status;
}

}  // namespace ksntfx
