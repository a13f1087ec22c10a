#include "drawings/symbols.h"

#include "drawings/painting.h"
#include "internal/ksclasses_.h"
#include "platform.h"
#include "table/bits.h"
#include "table/fields.h"

#include <algorithm>
#include <cmath>
#include <iterator>

namespace ksntfx {

namespace {

// ---- colours --------------------------------------------------------------------------------------------------------

/** What a letter of SCOLOR stands for. */
struct SymbolColor {
  char letter;
  std::uint32_t object;
  KsPaletteEntry clear;
  KsPaletteEntry set;
  bool opaque;
};

constexpr KsPaletteEntry kBlackEntry = {0, 0, 0, 0};
constexpr KsPaletteEntry kWhiteEntry = {255, 255, 255, 0};

constexpr SymbolColor kSymbolColors[] = {
    {'B', 0xFF0000, kBlackEntry, {255, 0, 0, 0}, false},   {'K', 0x000000, kWhiteEntry, kBlackEntry, false},
    {'N', 0xFFFFFF, kBlackEntry, kWhiteEntry, true},       {'O', 0x0096FF, kBlackEntry, {0, 150, 255, 0}, false},
    {'R', 0x0000FF, kBlackEntry, {0, 0, 255, 0}, false},   {'W', 0xFFFFFF, kBlackEntry, kWhiteEntry, false},
    {'Y', 0x00FFFF, kBlackEntry, {0, 255, 255, 0}, false},
};

constexpr SymbolColor kOtherColor = {' ', 0x000000, kBlackEntry, kBlackEntry, false};

const SymbolColor &ColorOf(const GraphicSubheader &graphic) {
  const auto *const found = std::find_if(std::begin(kSymbolColors), std::end(kSymbolColors),
                                         [&](const SymbolColor &color) { return color.letter == graphic.SCOLOR[0]; });
  return found != std::end(kSymbolColors) ? *found : kOtherColor;
}

// ---- bitmap symbols -----------------------------------------------------------------------------------------------

/** The rows of the data follow each other without fill bits; there are enough of them. */
Status FillOneBit(KsBitmap *bitmap, std::span<const char> data) {
  KsArray<std::uint8_t> row;
  if (!row.Allocate(bitmap->bytesPerLine)) return ERROR_NO_MEMORY;
  const auto *const bytes = reinterpret_cast<const std::uint8_t *>(data.data());
  for (std::uint32_t y = 0; y < bitmap->height; ++y) {
    UnpackBits(bytes, std::uint64_t{y} * bitmap->width, bitmap->width, row.Get());
    if (KsBitmapPutRow(bitmap, row.Get(), y, bitmap->bytesPerLine) < 1) return ERROR_FILE_FORMAT;
  }
  return SUCCESS;
}

/** More bits: each row begins on a byte of its own, where those of a bitmap begin on every fourth. */
Status CreateDeepSymbol(KsBitmap *bitmap, const GraphicSubheader &graphic, std::span<const char> data,
                        std::uint32_t width, std::uint32_t height) {
  const std::uint64_t rowBytes = RowBytes(graphic.bitsPerPixel, width);
  if (height != 0 && rowBytes > data.size() / height) return ERROR_INVALID_VALUE;
  const Status status = KsBitmapCreate(bitmap, sizeof *bitmap, KS_BITMAP_OWN, width, height, graphic.bitsPerPixel,
                                       KS_ORDER_PALETTE, nullptr, 1, nullptr, 0);
  if (status != SUCCESS) return status;
  KsArray<char> row;
  if (!row.Allocate(bitmap->bytesPerLine)) return ERROR_NO_MEMORY;
  for (std::uint32_t y = 0; y < height; ++y) {
    std::copy_n(data.data() + y * rowBytes, rowBytes, row.Get());
    if (KsBitmapPutRow(bitmap, row.Get(), y, bitmap->bytesPerLine) < 1) return ERROR_FILE_FORMAT;
  }
  return SUCCESS;
}

Status CreateSymbol(KsBitmap *bitmap, const GraphicSubheader &graphic, std::span<char> data) {
  const auto width = static_cast<std::uint32_t>(ParseNumber(graphic.NPIXPL));
  const auto height = static_cast<std::uint32_t>(ParseNumber(graphic.NLIPS));
  if (graphic.bitsPerPixel != 1) return CreateDeepSymbol(bitmap, graphic, data, width, height);
  if (std::uint64_t{width} * height > data.size() * 8) return ERROR_FILE_FORMAT;
  const SymbolColor &color = ColorOf(graphic);
  const KsPaletteEntry palette[] = {color.clear, color.set};
  const Status status =
      KsBitmapCreate(bitmap, sizeof *bitmap, KS_BITMAP_OWN, width, height, 1, KS_ORDER_PALETTE, palette, 1, nullptr, 0);
  return status == SUCCESS ? FillOneBit(bitmap, data) : status;
}

Status SetSymbolLut(KsBitmap *bitmap, const GraphicSubheader &graphic) {
  KsArray<KsPaletteEntry> entries;
  if (!entries.Allocate(graphic.lutEntries)) return ERROR_NO_MEMORY;
  for (std::uint32_t i = 0; i < graphic.lutEntries; ++i) {
    const std::uint32_t color = graphic.lut[i];
    entries[i] = {static_cast<std::uint8_t>(color), static_cast<std::uint8_t>(color >> 8),
                  static_cast<std::uint8_t>(color >> 16), 0};
  }
  return KsBitmapSetPalette(bitmap, 0, graphic.lutEntries, entries.Get());
}

// ---- object symbols -----------------------------------------------------------------------------------------------

/** The numbers that an object symbol is built from; places and sizes in pixels. */
struct Symbol {
  std::int32_t type;
  std::uint32_t penWidth;
  double width;
  double height;
  double x;
  double y;
  double farX;
  double farY;
  std::uint32_t color;

  double HalfWidth() const { return std::trunc(width / 2); }
  double HalfHeight() const { return std::trunc(height / 2); }
};

KsVectorPen PenOf(const Symbol &symbol, std::uint32_t style) {
  KsVectorPen pen = {};
  pen.structureSize = sizeof pen;
  pen.style = style;
  pen.width = symbol.penWidth;
  pen.color = symbol.color;
  return pen;
}

/** Starts the description of an object, `record` being its member for `kind`. */
template <class Record>
void Describe(KsVectorObject *object, Record KsVectorObject::*record, std::uint32_t kind, const KsVectorPen &pen) {
  KsVectorObjectInit(object);
  Record &description = object->*record;
  description.structureSize = sizeof description;
  description.kind = kind;
  description.pen = pen;
  if constexpr (requires { description.brush; }) description.brush.structureSize = sizeof description.brush;
}

/** Whether the description of a polygon says how long that of its brush is. */
enum class Brush : bool { Unset, Set };

Status AddLine(KsVector *vector, const Symbol &symbol, std::uint32_t style) {
  KsVectorObject object;
  Describe(&object, &KsVectorObject::line, KS_VECTOR_LINE, PenOf(symbol, style));
  object.line.first = {symbol.x, symbol.y, 0, 0};
  object.line.second = {symbol.farX, symbol.farY, 0, 0};
  return KsVectorAddObject(vector, 0, KS_VECTOR_LINE, &object, 0);
}

Status AddOval(KsVector *vector, const Symbol &symbol) {
  KsVectorObject object;
  Describe(&object, &KsVectorObject::oval, KS_VECTOR_OVAL, PenOf(symbol, KS_PEN_SOLID));
  object.oval.first = {symbol.x - symbol.HalfWidth(), symbol.y - symbol.HalfHeight(), 0, 0};
  object.oval.second = {symbol.x + symbol.HalfWidth(), symbol.y + symbol.HalfHeight(), 0, 0};
  return KsVectorAddObject(vector, 0, KS_VECTOR_OVAL, &object, 0);
}

Status AddBox(KsVector *vector, const Symbol &symbol) {
  KsVectorObject object;
  Describe(&object, &KsVectorObject::box, KS_VECTOR_BOX, PenOf(symbol, KS_PEN_SOLID));
  object.box.corner = {symbol.x, symbol.y, 0, 0};
  object.box.width = symbol.width;
  object.box.height = symbol.height;
  return KsVectorAddObject(vector, 0, KS_VECTOR_BOX, &object, 0);
}

Status AddPolygon(KsVector *vector, const Symbol &symbol, std::initializer_list<KsVectorPoint> corners,
                  Brush brush = Brush::Set) {
  KsArray<KsVectorVertex> points;
  if (!points.Allocate(corners.size())) return ERROR_NO_MEMORY;
  std::uint32_t count = 0;
  for (const KsVectorPoint &corner : corners) points[count++] = {corner.x, corner.y, 0, 0};
  KsVectorObject object;
  Describe(&object, &KsVectorObject::polygon, KS_VECTOR_POLYGON, PenOf(symbol, KS_PEN_SOLID));
  if (brush == Brush::Unset) object.polygon.brush.structureSize = 0;
  object.polygon.points = points.Get();
  object.polygon.count = count;
  return KsVectorAddObject(vector, 0, KS_VECTOR_POLYGON, &object, 0);
}

// The corners that the polygons of types 10, 15, 16 and 17 have always had; some lie outside their rectangle.

Status AddTriangle(KsVector *vector, const Symbol &symbol) {
  const double x = symbol.x;
  const double y = symbol.y;
  return AddPolygon(vector, symbol, {{x, y}, {x + symbol.HalfWidth(), y - symbol.height}, {x, y + symbol.width}},
                    Brush::Unset);
}

Status AddFourCorners(KsVector *vector, const Symbol &symbol) {
  const double x = symbol.x;
  const double y = symbol.y;
  const double half = symbol.HalfHeight();
  return AddPolygon(vector, symbol,
                    {{x + symbol.width, y - half}, {x, y - half}, {x, y + half}, {x + symbol.width, y + symbol.width}});
}

Status AddDiamond(KsVector *vector, const Symbol &symbol) {
  const double x = symbol.x;
  const double y = symbol.y;
  const double across = symbol.HalfHeight();
  const double up = symbol.HalfWidth();
  return AddPolygon(vector, symbol, {{x, y - up}, {x - across, y}, {x, y + up}, {x + across, y}});
}

Status AddHexagon(KsVector *vector, const Symbol &symbol) {
  const double x = symbol.x;
  const double y = symbol.y;
  constexpr double kAngle = 30.0;  // radians
  const double half = symbol.HalfHeight();
  const double part = half / std::tan(kAngle);
  return AddPolygon(vector, symbol,
                    {{x + part, y - half},
                     {x - part, y - half},
                     {x - 2 * part, y},
                     {x - part, y + half},
                     {x + part, y + half},
                     {x + 2 * part, y}});
}

enum class Outline : std::uint8_t { None, Line, DashedLine, Triangle, Oval, Box, FourCorners, Diamond, Hexagon };

/** The form of each type, from 0 to 18. */
constexpr Outline kOutlines[] = {
    Outline::None,        Outline::Line,       Outline::DashedLine, Outline::DashedLine, Outline::DashedLine,
    Outline::DashedLine,  Outline::DashedLine, Outline::None,       Outline::None,       Outline::None,
    Outline::Triangle,    Outline::Oval,       Outline::Oval,       Outline::Box,        Outline::Box,
    Outline::FourCorners, Outline::Diamond,    Outline::Hexagon,    Outline::Line,
};

Outline OutlineOf(std::int32_t type) {
  const bool known = type >= 0 && type < static_cast<std::int32_t>(std::size(kOutlines));
  return known ? kOutlines[type] : Outline::None;
}

Status AddOutline(KsVector *vector, const Symbol &symbol, Outline outline) {
  switch (outline) {
    case Outline::Line:
      return AddLine(vector, symbol, KS_PEN_SOLID);
    case Outline::DashedLine:
      return AddLine(vector, symbol, KS_PEN_DASH);
    case Outline::Triangle:
      return AddTriangle(vector, symbol);
    case Outline::Oval:
      return AddOval(vector, symbol);
    case Outline::Box:
      return AddBox(vector, symbol);
    case Outline::FourCorners:
      return AddFourCorners(vector, symbol);
    case Outline::Diamond:
      return AddDiamond(vector, symbol);
    case Outline::Hexagon:
      return AddHexagon(vector, symbol);
    case Outline::None:
      break;
  }
  return SUCCESS;
}

Status AddSymbolLayer(KsVector *vector) {
  constexpr std::u16string_view kLayerName = u"Object Layer";
  KsVectorLayer description = {};
  description.structureSize = sizeof description;
  std::copy(kLayerName.begin(), kLayerName.end(), std::begin(description.name));
  description.visible = 1;
  std::uint32_t layer = 0;
  const Status status = KsVectorAddLayer(vector, &description, &layer, sizeof layer);
  if (status != SUCCESS) return status;
  KsVectorSetLayer(vector, layer);
  return SUCCESS;
}

Status PaintSymbol(KsDeviceContext *context, KsVector *vector, const KsRect &rectangle) {
  constexpr std::int32_t kWindow = 1000;
  KsVectorViewA(vector, 0);
  KsVectorViewB(vector, 0);
  KsVectorViewC(vector, 0, 0);
  return KsVectorPaint(context, vector, kWindow, kWindow, 0, 0, &rectangle, nullptr, 0);
}

}  // namespace

Status DrawBitmapSymbol(const GraphicSubheader &graphic, std::span<char> data, KsDeviceContext *context,
                        const DisplayOffset &offset) {
  KsLocalBitmap bitmap;
  Status status = CreateSymbol(bitmap.Get(), graphic, data);
  if (status == SUCCESS && graphic.lut != nullptr) status = SetSymbolLut(bitmap.Get(), graphic);
  if (status != SUCCESS || context == nullptr) return status;
  const std::int32_t left = Add(graphic.locationColumn, offset.column);
  const std::int32_t top = Add(graphic.locationRow, offset.row);
  KsRect rectangle;
  platform::SetRect(&rectangle, left, top, Add(left, static_cast<std::int32_t>(bitmap->width)),
                    Add(top, static_cast<std::int32_t>(bitmap->height)));
  const SelectedPalette selected(context, bitmap.Get());
  const SymbolColor &color = ColorOf(graphic);
  if (color.opaque || graphic.bitsPerPixel != 1) {
    return PaintWhole(context, bitmap.Get(), rectangle);
  }
  return PaintTransparent(context, bitmap.Get(), rectangle, color.clear);
}

Status BuildObjectSymbol(GraphicSubheader &graphic, KsDeviceContext *context, const DisplayOffset &offset,
                         bool render) {
  const Status status = AddSymbolLayer(&graphic.vector);
  if (status != SUCCESS) return status;
  const std::int32_t column = Add(graphic.locationColumn, offset.column);
  const std::int32_t row = Add(graphic.locationRow, offset.row);
  const std::int32_t farRow = Add(graphic.secondBound[0], offset.row);
  const std::int32_t farColumn = Add(graphic.secondBound[1], offset.column);
  const std::int32_t width = ParseNumber(graphic.NPIXPL);
  const std::int32_t height = ParseNumber(graphic.NLIPS);
  const Symbol symbol = {ParseNumber(graphic.SNUM),      static_cast<std::uint32_t>(ParseNumber(graphic.NWDTH)),
                         static_cast<double>(width),     static_cast<double>(height),
                         static_cast<double>(column),    static_cast<double>(row),
                         static_cast<double>(farColumn), static_cast<double>(farRow),
                         ColorOf(graphic).object};
  const Outline outline = OutlineOf(symbol.type);
  const Status added = AddOutline(&graphic.vector, symbol, outline);
  if (added != SUCCESS || !render || outline == Outline::None || context == nullptr) return added;
  KsRect rectangle;
  if (outline == Outline::Line || outline == Outline::DashedLine) {
    platform::SetRect(&rectangle, column, row, farColumn, farRow);
  } else {
    platform::SetRect(&rectangle, column, row, Add(column, width), Add(row, height));
  }
  return PaintSymbol(context, &graphic.vector, rectangle);
}

}  // namespace ksntfx
