#include "compose/compose.h"

#include "compose/display_list.h"
#include "compose/place_image.h"
#include "drawings/handlgfx.h"
#include "drawings/handllbl.h"
#include "images/block_grid.h"

#include <algorithm>

namespace ksntfx {

namespace {

constexpr std::uint32_t kDefaultCanvas = 2048;
constexpr std::uint32_t kTextOnlyCanvas = 2;
constexpr std::uint32_t kLabelOnlyCanvas = 1;
constexpr std::uint32_t kLabelMargin = 10;

struct Edges {
  std::uint32_t right;
  std::uint32_t bottom;
};

/** An edge in the format's unsigned 32 bits. A picture too large for them stays at their limit, as no canvas does. */
std::uint32_t Edge(std::uint64_t size, std::int32_t location, std::int32_t offset) {
  if (size > UINT32_MAX) return UINT32_MAX;
  const std::int64_t edge = static_cast<std::int64_t>(size) + Add(location, offset);
  return edge > UINT32_MAX ? UINT32_MAX : static_cast<std::uint32_t>(edge);
}

Status MeasureObject(NitfFile *file, const DisplayObject &object, const DisplayOffset &offset, Edges *edges) {
  if (object.kind == kDisplayGraphic) {
    return MeasureGraphic(file, object.index, offset, &edges->right, &edges->bottom);
  }
  if (object.kind == kDisplayImage) {
    const ImageSubheader &image = *FindImage(file, object.index);
    *edges = {Edge(PaddedWidth(image), image.locationColumn, offset.column),
              Edge(PaddedHeight(image), image.locationRow, offset.row)};
  }
  return SUCCESS;
}

/** The canvas of a file that shows nothing, or nothing but labels and graphics; 0 for all others. */
std::uint32_t CanvasWithoutImages(const DisplayList &list, std::uint32_t texts) {
  if (list.Objects().empty()) return texts != 0 ? kTextOnlyCanvas : kDefaultCanvas;
  return list.images == 0 && list.labels != 0 ? kLabelOnlyCanvas : 0;
}

}  // namespace

Status MeasureCanvas(NitfFile *file, std::uint32_t *width, std::uint32_t *height) {
  *width = *height = kDefaultCanvas;
  if (file->fixedCanvas != 0) return SUCCESS;
  DisplayList list;
  const Status built = list.Build(file);
  if (built != SUCCESS) return built;
  if (const std::uint32_t side = CanvasWithoutImages(list, file->textCount); side != 0) {
    *width = *height = side;
    return SUCCESS;
  }
  Edges canvas{0, 0};
  for (const DisplayObject &object : list.Objects()) {
    Edges edges{0, 0};
    const Status status = MeasureObject(file, object, list.OffsetOf(object), &edges);
    if (status != SUCCESS) return status;
    canvas = {std::max(canvas.right, edges.right), std::max(canvas.bottom, edges.bottom)};
  }
  const std::uint32_t margin = list.labels == 0 ? 0 : kLabelMargin;
  canvas = {canvas.right + margin, canvas.bottom + margin};
  if (canvas.right == 0 && canvas.bottom == 0) return SUCCESS;
  *width = canvas.right;
  *height = canvas.bottom;
  return SUCCESS;
}

Status DrawObjects(FilterLoadRecord *loadContext, const Canvas &canvas, NitfFile *file) {
  DisplayList list;
  Status status = list.Build(file);
  if (status != SUCCESS) return status;
  if (canvas.context == nullptr && list.graphics + list.labels != 0) return ERROR_INVALID_VALUE;
  for (const DisplayObject &object : list.Objects()) {
    const DisplayOffset offset = list.OffsetOf(object);
    if (object.kind == kDisplayImage) {
      status = DrawImage(loadContext, canvas, file, object.index, offset);
    } else if (object.kind == kDisplayGraphic) {
      status = DrawGraphic(canvas.context, file, object.index, offset);
    } else {
      status = DrawLabel(canvas.context, file, object.index, offset);
    }
    if (status != SUCCESS) return status;
  }
  return SUCCESS;
}

}  // namespace ksntfx
