#include "ksvect/paint/painter.h"

#include "kscore/bitmap.h"
#include "ksvect/paint/bounds.h"
#include "ksvect/paint/shapes.h"
#include "ksvect/paint/text_layout.h"

namespace ksvect {
namespace {

/** The stock font of device contexts: pixels from the top of a character's cell to the bottom and the base line. */
constexpr std::int32_t kStockHeight = 16;
constexpr double kStockBase = 13;
/** The em square that fills such a cell with the sans font. */
constexpr double kStockEm = 14;

Status CheckCanvas(const KsBitmap &bitmap) {
  const Status status = kscore::CheckPixels(&bitmap);
  if (status != SUCCESS) return status;
  return CanvasPixels::IsKnown(bitmap) ? SUCCESS : ERROR_NOT_SUPPORTED;
}

void AddBox(const Box &box, Color color, Tiles &tiles) {
  Mark mark;
  mark.color = color;
  mark.clip = tiles.Canvas();
  mark.path.Begin(true);
  for (const Point corner : {box.low, {box.high.x, box.low.y}, box.high, {box.low.x, box.high.y}}) {
    mark.path.Add(corner);
  }
  tiles.Add(std::move(mark));
}

std::string Utf8Of(std::string_view latin1) {
  std::string text;
  for (const char character : latin1) {
    const auto byte = static_cast<unsigned char>(character);
    if (byte >= 0x80) text += static_cast<char>(0xC0 | byte >> 6);
    text += byte >= 0x80 ? static_cast<char>(0x80 | (byte & 0x3F)) : character;
  }
  return text;
}

}  // namespace

Status PaintDrawing(const Drawing &drawing, const Placement &placement, KsBitmap &bitmap) {
  const Status status = CheckCanvas(bitmap);
  if (status != SUCCESS) return status;
  Box window;
  if (placement.window != nullptr) {
    window = *placement.window;
  } else if (!ExtentOf(drawing, window)) {
    return SUCCESS;
  }
  Mapping mapping = MappingOf(window, placement);
  mapping.linesAbove = placement.upwards != drawing.downwards;
  Tiles tiles(bitmap);
  AddMarks(drawing, mapping, tiles);
  tiles.Finish();
  return SUCCESS;
}

Status PaintScreenText(const ScreenText &text, KsBitmap &bitmap) {
  const Status status = CheckCanvas(bitmap);
  if (status != SUCCESS) return status;
  TextStyle style;
  style.family = Family::Sans;
  style.height = kStockEm;
  const Layout layout = LayoutOf({{}, Utf8Of(text.text), false, {}}, style);
  const Point corner = {double(text.x), double(text.y)};

  Tiles tiles(bitmap);
  const double width = std::ceil(layout.toDrawing.Vector(layout.box.high).x);
  if (text.opaque && width > 0) AddBox({corner, corner + Point{width, kStockHeight}}, text.background, tiles);
  AddGlyphs(layout, {corner + Point{0, kStockBase}, {1, 0}, {0, -1}}, text.color, tiles.Canvas(), tiles);
  tiles.Finish();
  return SUCCESS;
}

}  // namespace ksvect
