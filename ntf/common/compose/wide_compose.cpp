#include "compose/wide_compose.h"

#include "drawings/handlgfx.h"
#include "drawings/handllbl.h"
#include "headers/segment_data.h"
#include "images/wide_image.h"
#include "table/fields.h"

#include <algorithm>
#include <vector>

namespace ksntfx {

namespace {

SegmentKind KindOfObject(const DisplayObject &object) {
  switch (object.kind) {
    case kDisplayImage:
      return SegmentKind::Image;
    case kDisplayGraphic:
      return SegmentKind::Graphic;
    default:
      return SegmentKind::Label;
  }
}

/** Puts rows of pixels with opacity on a canvas of blue, green and red. */
class Placer {
 public:
  Placer(KsBitmap *bitmap, std::int64_t imageTop, std::int64_t imageLeft)
      : canvas(bitmap), top(imageTop), left(imageLeft) {}

  /** The part of an image that is on the canvas; empty where none is. */
  PixelWindow Visible(const SampleShape &shape) const {
    const std::int64_t firstRow = std::max<std::int64_t>(-top, 0);
    const std::int64_t firstColumn = std::max<std::int64_t>(-left, 0);
    const std::int64_t endRow = std::min<std::int64_t>(static_cast<std::int64_t>(shape.rows), canvas->height - top);
    const std::int64_t endColumn =
        std::min<std::int64_t>(static_cast<std::int64_t>(shape.columns), canvas->width - left);
    if (endRow <= firstRow || endColumn <= firstColumn) return {0, 0, 0, 0};
    return {static_cast<std::uint64_t>(firstRow), static_cast<std::uint64_t>(firstColumn),
            static_cast<std::uint64_t>(endRow - firstRow), static_cast<std::uint64_t>(endColumn - firstColumn)};
  }

  void Place(const PixelWindow &window, const std::uint8_t *pixels) const {
    const auto firstColumn = static_cast<std::uint64_t>(left + static_cast<std::int64_t>(window.firstColumn));
    for (std::uint64_t row = 0; row < window.rows; ++row) {
      const auto line = static_cast<std::uint64_t>(top + static_cast<std::int64_t>(window.firstRow + row));
      std::uint8_t *to = canvas->pixels + line * canvas->bytesPerLine + firstColumn * 3;
      for (std::uint64_t column = 0; column < window.columns; ++column, pixels += kShownBytes, to += 3) {
        if (pixels[3] == 0) continue;
        to[0] = pixels[2];
        to[1] = pixels[1];
        to[2] = pixels[0];
      }
    }
  }

 private:
  KsBitmap *canvas;
  std::int64_t top;
  std::int64_t left;
};

}  // namespace

bool WideComposition::IsReadable(const DisplayObject &object) const {
  return file.Spans().Of(KindOfObject(object))[object.index].hasSubheader;
}

Status WideComposition::Skip(const DisplayObject &object, Status status) {
  if (status == SUCCESS) return SUCCESS;
  leftOut.insert({KindOfObject(object), object.index});
  return undrawn({KindOfObject(object), object.index, status}) ? SUCCESS : status;
}

Status WideComposition::Measure() {
  const Status built = list.Build(file.Get());
  if (built != SUCCESS) return built;
  right = bottom = 0;
  leftOut.clear();
  for (const DisplayObject &object : list.Objects()) {
    KsRect place = {};
    const Status measured =
        IsReadable(object) ? MeasureObject(object, list.OffsetOf(object), &place) : Status(ERROR_FILE_READ);
    const Status status = Skip(object, measured);
    if (status != SUCCESS) return status;
    right = std::max<std::int64_t>(right, place.right);
    bottom = std::max<std::int64_t>(bottom, place.bottom);
  }
  return SUCCESS;
}

Status WideComposition::MeasureObject(const DisplayObject &object, const DisplayOffset &offset, KsRect *place) {
  if (object.kind == kDisplayGraphic) return MeasureGraphicObject(object.index, offset, place);
  if (object.kind == kDisplayLabel) return MeasureLabel(object.index, offset, place);
  const ImageSubheader &image = *FindImage(file.Get(), object.index);
  const std::int64_t edges[] = {std::int64_t{image.columns} + Add(image.locationColumn, offset.column),
                                std::int64_t{image.rows} + Add(image.locationRow, offset.row)};
  place->right = static_cast<std::int32_t>(std::clamp<std::int64_t>(edges[0], INT32_MIN, INT32_MAX));
  place->bottom = static_cast<std::int32_t>(std::clamp<std::int64_t>(edges[1], INT32_MIN, INT32_MAX));
  return SUCCESS;
}

/** A drawing has the bounds that it declares, or those of its objects; a symbol of bits its size. */
Status WideComposition::MeasureGraphicObject(std::uint32_t index, const DisplayOffset &offset, KsRect *place) {
  const GraphicSubheader &graphic = *FindGraphic(file.Get(), index);
  const std::int32_t column = Add(graphic.locationColumn, offset.column);
  const std::int32_t row = Add(graphic.locationRow, offset.row);
  if (graphic.SFMT[0] == 'B') {
    *place = {column, row, Add(column, ParseNumber(graphic.NPIXPL)), Add(row, ParseNumber(graphic.NLIPS))};
    return SUCCESS;
  }
  const bool isDeclared =
      graphic.secondBound[0] > graphic.firstBound[0] && graphic.secondBound[1] > graphic.firstBound[1];
  if (graphic.SFMT[0] == 'C' && isDeclared) {
    *place = {column, row, Add(column, graphic.secondBound[0]), Add(row, graphic.secondBound[1])};
    return SUCCESS;
  }
  const Status status = PlaceGraphic(file.Get(), index, place);
  if (status != SUCCESS) return status;
  place->right = Add(place->right, Add(offset.column, 1));
  place->bottom = Add(place->bottom, Add(offset.row, 1));
  return SUCCESS;
}

/** Lines are as high as DrawLabel draws them, and about as wide. */
Status WideComposition::MeasureLabel(std::uint32_t index, const DisplayOffset &offset, KsRect *place) {
  constexpr std::int32_t kLineHeight = 20;
  constexpr std::int32_t kCharacterWidth = 12;
  const LabelSubheader &label = *FindLabel(file.Get(), index);
  SegmentData data;
  const Status status = ReadSegmentData(file.Get(), SegmentKind::Label, index, &data);
  if (status != SUCCESS) return status;
  const std::string_view text(data.bytes.Get(), data.length);
  const auto lines = static_cast<std::int32_t>(std::count(text.begin(), text.end(), '\n')) + 1;
  const auto characters = static_cast<std::int32_t>(std::min<std::size_t>(text.find_first_of("\r\n"), text.size()));
  place->right = Add(Add(label.locationColumn, offset.column), characters * kCharacterWidth);
  place->bottom = Add(Add(label.locationRow, offset.row), lines * kLineHeight);
  return SUCCESS;
}

Status WideComposition::Draw(std::uint32_t background, KsBitmap *canvas) {
  if (right > INT32_MAX || bottom > INT32_MAX) return ERROR_NO_MEMORY;
  Status status = KsBitmapCreate(canvas, sizeof *canvas, KS_BITMAP_OWN, static_cast<std::uint32_t>(right),
                                 static_cast<std::uint32_t>(bottom), 24, KS_ORDER_BGR, nullptr, 1, nullptr, 0);
  // The framework's colors have red in the lowest byte.
  const std::uint32_t color = background >> 16 | (background & 0xFF00U) | (background & 0xFFU) << 16;
  if (status == SUCCESS && color != 0) status = KsBitmapFill(canvas, color);
  if (status == SUCCESS) status = KsBitmapAccess(canvas, 0);
  if (status != SUCCESS) return status;
  const KsLocalContext context(canvas);
  if (context.Get() == nullptr) status = ERROR_NO_MEMORY;
  for (const DisplayObject &object : list.Objects()) {
    const bool isLeftOut = leftOut.contains({KindOfObject(object), object.index});
    if (status == SUCCESS && !isLeftOut) status = Skip(object, DrawObject(object, context.Get(), canvas));
  }
  KsBitmapRelease(canvas, 1, 1);
  return status;
}

Status WideComposition::DrawObject(const DisplayObject &object, KsDeviceContext *context, KsBitmap *canvas) {
  const DisplayOffset offset = list.OffsetOf(object);
  if (object.kind == kDisplayImage) return DrawWideImage(object.index, offset, canvas);
  if (object.kind == kDisplayGraphic) return DrawGraphic(context, file.Get(), object.index, offset);
  return DrawLabel(context, file.Get(), object.index, offset);
}

Status WideComposition::DrawWideImage(std::uint32_t index, const DisplayOffset &offset, KsBitmap *canvas) {
  RawImage image(DataOfImage(file, index, fillsMissing));
  Status status = image.Open();
  WideShown shown(image, choice);
  if (status == SUCCESS) status = shown.Open();
  if (status != SUCCESS) return status;
  const ImageSubheader &header = image.Header();
  const Placer placer(canvas, Add(header.locationRow, offset.row), Add(header.locationColumn, offset.column));
  const PixelWindow visible = placer.Visible(image.Shape());
  const std::uint64_t step = shown.RowsOfStrip();
  const std::uint64_t rowStep = visible.columns * kShownBytes;
  std::vector<std::uint8_t> pixels;
  for (std::uint64_t row = visible.firstRow; row < visible.firstRow + visible.rows;) {
    // Strips begin where blocks do.
    const std::uint64_t end = std::min((row / step + 1) * step, visible.firstRow + visible.rows);
    const PixelWindow window = {row, visible.firstColumn, end - row, visible.columns};
    pixels.resize(window.rows * rowStep);
    status = shown.Draw(window, pixels.data(), rowStep);
    if (status != SUCCESS) return status;
    placer.Place(window, pixels.data());
    row = end;
  }
  return SUCCESS;
}

}  // namespace ksntfx
