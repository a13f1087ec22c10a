#include "drawings/handlgfx.h"

#include "drawings/symbols.h"
#include "headers/segment_data.h"
#include "internal/ksclasses_.h"
#include "platform.h"

#include <algorithm>

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

KsRect BoundsOf(const GraphicSubheader &graphic) {
  return {graphic.firstBound[0], graphic.firstBound[1], graphic.secondBound[0], graphic.secondBound[1]};
}

Status PaintDrawing(KsDeviceContext *context, NitfFile *file, GraphicSubheader &graphic, const DisplayOffset &offset) {
  const KsRect bounds = BoundsOf(graphic);
  const KsRect placed = Moved(bounds, Add(graphic.locationColumn, offset.column), Add(graphic.locationRow, offset.row));
  KsRect rectangle;
  platform::SetRect(&rectangle, placed.left, placed.top, placed.right, placed.bottom);
  KsVectorSetMode(&graphic.vector, KS_VECTOR_UPWARDS);
  KsVectorSetBackground(&graphic.vector, file->backgroundColor);
  return KsVectorPaintOnBounds(context, &graphic.vector, &bounds, &rectangle);
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
  KsRect box = BoundsOf(graphic);
  KsVectorPoint low;
  KsVectorPoint high;
  // What is scaled has its bounds; what is in pixels may lie anywhere.
  const bool isScaled = KsVectorWindowOnBounds(&graphic.vector, &box, &low, &high) == SUCCESS &&
                        (low.x != std::min(box.left, box.right) || high.x != std::max(box.left, box.right) ||
                         -high.y != std::min(box.top, box.bottom) || -low.y != std::max(box.top, box.bottom));
  if (!isScaled) {
    box = {};
    KsVectorBounds(&graphic.vector, 0, &box, 0);
  }
  *place = Moved(box, graphic.locationColumn, graphic.locationRow);
  return SUCCESS;
}

}  // namespace ksntfx
