#include "drawings/handlgfx.h"

#include "drawings/symbols.h"
#include "headers/segment_data.h"
#include "internal/ksclasses_.h"
#include "platform.h"

#include <algorithm>
#include <cstdlib>

namespace ksntfx {

namespace {

constexpr std::uint32_t kVectorLoadFlags = 0x80000001;

Status LoadDrawing(const SegmentData &data, KsVector *vector) {
  KsLoadOptions options;
  KsLoadOptionsInit(&options, sizeof options);
  options.loadFlags |= kVectorLoadFlags;
  return KsVectorLoadMemory(data.bytes.Get(), vector, data.length, &options, nullptr);
}

KsRect Moved(const KsRect &box, std::int32_t right, std::int32_t down) {
  return {Add(box.left, right), Add(box.top, down), Add(box.right, right), Add(box.bottom, down)};
}

/** How far the edges of two boxes are apart, all in all. */
double Distance(const KsRect &a, const KsRect &b) {
  const auto apart = [](std::int32_t one, std::int32_t other) { return std::abs(static_cast<double>(one) - other); };
  return apart(a.left, b.left) + apart(a.top, b.top) + apart(a.right, b.right) + apart(a.bottom, b.bottom);
}

/** Where the objects come to lie when the window is laid onto `frame`; false without a window of any size. */
bool LayOnto(const KsVector &vector, const KsRect &frame, KsRect *box) {
  KsVectorPoint low;
  KsVectorPoint high;
  if (KsVectorWindow(&vector, &low, &high) != SUCCESS || high.x <= low.x || high.y <= low.y) return false;
  const double across = (static_cast<double>(frame.right) - frame.left) / (high.x - low.x);
  const double down = (static_cast<double>(frame.bottom) - frame.top) / (high.y - low.y);
  const auto column = [&](std::int32_t x) { return static_cast<std::int32_t>(frame.left + (x - low.x) * across); };
  const auto row = [&](std::int32_t y) { return static_cast<std::int32_t>(frame.top + (y + high.y) * down); };
  *box = {column(box->left), row(box->top), column(box->right), row(box->bottom)};
  return true;
}

/**
 * Whether the units of a drawing are pixels, counted from the graphic's location. That is what the profile of CGM for
 * this format says, and the bounds show it: they fit the objects as they are better than the objects with their window
 * laid onto the bounds. Writers of files have put the bounds there as row and column or as x and y, from the location
 * or from what the graphic is attached to. Bounds without area say nothing.
 */
bool IsInPixels(const GraphicSubheader &graphic) {
  KsRect box;
  const std::int32_t *const low = graphic.firstBound;
  const std::int32_t *const high = graphic.secondBound;
  const KsRect frame = {low[0], low[1], high[0], high[1]};
  const KsRect turned = {low[1], low[0], high[1], high[0]};
  if (KsVectorBounds(&graphic.vector, 0, &box, 0) != SUCCESS || frame.right <= frame.left ||
      frame.bottom <= frame.top) {
    return true;
  }
  const KsRect placed = Moved(box, graphic.locationColumn, graphic.locationRow);
  const double asItIs =
      std::min({Distance(box, frame), Distance(box, turned), Distance(placed, frame), Distance(placed, turned)});
  KsRect laid = box;
  return !LayOnto(graphic.vector, frame, &laid) || asItIs <= Distance(laid, frame);
}

Status PaintDrawing(KsDeviceContext *context, NitfFile *file, GraphicSubheader &graphic, const DisplayOffset &offset) {
  const std::int32_t row = Add(graphic.locationRow, offset.row);
  const std::int32_t column = Add(graphic.locationColumn, offset.column);
  const KsRect window = {graphic.firstBound[0], graphic.firstBound[1], graphic.secondBound[0], graphic.secondBound[1]};
  if (IsInPixels(graphic)) {
    const KsVectorPoint low = {static_cast<double>(std::min(window.left, window.right)),
                               -static_cast<double>(std::max(window.top, window.bottom))};
    const KsVectorPoint high = {static_cast<double>(std::max(window.left, window.right)),
                                -static_cast<double>(std::min(window.top, window.bottom))};
    KsVectorSetWindow(&graphic.vector, &low, &high);
  }
  KsRect rectangle;
  const KsRect placed = Moved(window, column, row);
  platform::SetRect(&rectangle, placed.left, placed.top, placed.right, placed.bottom);
  KsVectorSetMode(&graphic.vector, KS_VECTOR_UPWARDS);
  KsVectorSetBackground(&graphic.vector, file->backgroundColor);
  const std::int64_t height = std::abs(std::int64_t{rectangle.bottom} - rectangle.top);
  return KsVectorPaint(context, &graphic.vector,
                       static_cast<std::int32_t>(rectangle.right - std::int64_t{rectangle.left}),
                       static_cast<std::int32_t>(height), 0, 0, &rectangle, nullptr, 0);
}

Status LoadForm(KsDeviceContext *context, const NitfFile *file, GraphicSubheader &graphic, const SegmentData &data,
                const DisplayOffset &offset) {
  switch (graphic.SFMT[0]) {
    case 'C':
      return LoadDrawing(data, &graphic.vector);
    case 'B':
      return DrawBitmapSymbol(graphic, {data.bytes.Get(), data.length}, context, offset);
    default:
      return BuildObjectSymbol(graphic, context, offset, file->vectorRender != 0);
  }
}

std::uint32_t Magnitude(std::int32_t number) {
  return static_cast<std::uint32_t>(std::abs(std::int64_t{number}));
}

}  // namespace

Status MeasureGraphic(NitfFile *file, std::uint32_t index, const DisplayOffset &offset, std::uint32_t *right,
                      std::uint32_t *bottom) {
  const GraphicSubheader &graphic = *FindGraphic(file, index);
  SegmentData data;
  const Status status = ReadSegmentData(file, SegmentKind::Graphic, index, &data);
  if (status != SUCCESS) return status;
  if (graphic.SFMT[0] != 'C') {
    *right = static_cast<std::uint32_t>(Add(offset.column, graphic.secondBound[1]));
    *bottom = static_cast<std::uint32_t>(Add(offset.row, graphic.secondBound[0]));
    return SUCCESS;
  }
  KsLocalVector scratch;
  PrepareVector(scratch.Get());
  const Status loaded = LoadDrawing(data, scratch.Get());
  if (loaded != SUCCESS) return loaded;
  *right = Magnitude(Add(graphic.secondBound[0], Add(offset.column, graphic.locationColumn)));
  *bottom = Magnitude(Add(graphic.secondBound[1], Add(offset.row, graphic.locationRow)));
  return SUCCESS;
}

Status DrawGraphic(KsDeviceContext *context, NitfFile *file, std::uint32_t index, const DisplayOffset &offset) {
  GraphicSubheader &graphic = *FindGraphic(file, index);
  if (KsVectorIsEmpty(&graphic.vector) == 0) KsVectorFree(&graphic.vector);
  PrepareVector(&graphic.vector);
  SegmentData data;
  Status status = ReadSegmentData(file, SegmentKind::Graphic, index, &data);
  if (status == SUCCESS) status = LoadForm(context, file, graphic, data, offset);
  if (status == SUCCESS && graphic.SFMT[0] == 'C' && context != nullptr) {
    return PaintDrawing(context, file, graphic, offset);
  }
  if (status != SUCCESS) KsVectorFree(&graphic.vector);
  return status;
}

Status PlaceGraphic(NitfFile *file, std::uint32_t index, KsRect *place) {
  const Status status = DrawGraphic(nullptr, file, index, {0, 0});
  if (status != SUCCESS) return status;
  const GraphicSubheader &graphic = *FindGraphic(file, index);
  KsRect box = {};
  if (IsInPixels(graphic)) {
    KsVectorBounds(&graphic.vector, 0, &box, 0);
  } else {
    box = {graphic.firstBound[0], graphic.firstBound[1], graphic.secondBound[0], graphic.secondBound[1]};
  }
  *place = Moved(box, graphic.locationColumn, graphic.locationRow);
  return SUCCESS;
}

}  // namespace ksntfx
