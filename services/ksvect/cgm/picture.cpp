#include "ksvect/cgm/picture.h"

#include <algorithm>
#include <cmath>

namespace ksvect::cgm {
namespace {

/** Indices beyond are of no use to anyone, and would only cost memory. */
constexpr std::uint32_t kMostColors = 65536;

/** Defaults of the colour table: background, foreground, and the colours that differ most. */
constexpr Color kFirstColors[] = {0xFFFFFF, 0x000000, 0x0000FF, 0x00FF00, 0xFF0000, 0x00FFFF, 0xFF00FF, 0xFFFF00};

/** Bounds for cells of arrays and patterns, of which runs make many out of few bytes: a blank row of 4,096 has four. */
constexpr std::uint64_t kMostCells = 64 << 20;
constexpr std::uint64_t kMostCellsPerByte = 1024;
constexpr std::uint64_t kCellsOfAnyMetafile = 1 << 16;

/** Default sizes, in parts of the longer side of the extent. */
constexpr double kPartOfWidth = 0.001;
constexpr double kPartOfMarker = 0.01;
constexpr double kPartOfHeight = 0.01;

/** A nominal line is as wide as a pixel at 72 to the inch, and a nominal marker ten times as big. */
constexpr double kMillimetersOfWidth = 25.4 / 72;
constexpr double kMillimetersOfMarker = 10 * kMillimetersOfWidth;

/** The sides of the default extents. */
constexpr double kLongerSideInteger = 32767;
constexpr double kLongerSideReal = 1;

Box Ordered(Point a, Point b) {
  return {{std::min(a.x, b.x), std::min(a.y, b.y)}, {std::max(a.x, b.x), std::max(a.y, b.y)}};
}

}  // namespace

ColorTable::ColorTable() : colors(std::begin(kFirstColors), std::end(kFirstColors)) {}

void ColorTable::Set(std::uint32_t index, Color color) {
  if (index >= kMostColors) return;
  if (index >= colors.size()) colors.resize(index + 1, kFirstColors[1]);
  colors[index] = color;
  ++version;
}

Color ColorTable::Of(std::uint32_t index) const {
  return index < colors.size() ? colors[index] : kFirstColors[1];
}

Picture::Picture(std::size_t metafileBytes)
    : cellsLeft(std::min(kMostCells, kCellsOfAnyMetafile + kMostCellsPerByte * metafileBytes)) {
  CurrentLayer(drawing);
}

void Picture::SetExtent(Point first, Point second) {
  extent = {first, second};
  axes = {second.x < first.x ? -1.0 : 1.0, second.y < first.y ? -1.0 : 1.0};
  drawing.hasExtent = true;
  drawing.extent = {Turned(first), Turned(second)};
}

Drawing Picture::Take() {
  drawing.downwards = axes.y < 0;
  drawing.mayBePixels = extent && !coding.vdcIsReal && !isMetric && axes.x > 0;
  drawing.inPixels = drawing.mayBePixels && axes.y < 0;
  return std::move(drawing);
}

void Picture::Add(Shape shape) {
  textOpen = false;
  if (figure && figure->Add(shape)) return;
  if (styleStale) style = StyleNumber(drawing, CurrentStyle());
  styleStale = false;
  drawing.layers.front().objects.push_back({std::move(shape), style});
}

void Picture::EndFigure() {
  if (!figure) return;
  PolygonSet area = figure->Finish();
  figure.reset();
  if (!area.points.empty()) Add(std::move(area));
}

void Picture::AddText(Text text, bool final) {
  if (final && text.text.empty()) return;
  Add(std::move(text));
  textOpen = !final;
}

void Picture::AppendText(std::string_view text, bool final) {
  if (!textOpen) return;
  std::get<Text>(drawing.layers.front().objects.back().shape).text += text;
  textOpen = !final;
}

bool Picture::TakeCells(std::uint64_t cells) {
  if (cells > cellsLeft) return false;
  cellsLeft -= cells;
  return true;
}

std::vector<std::uint32_t> Picture::ReadCells(Parameters &parameters, const CellLayout &layout) {
  // Cells that are plainly missing take none away from other elements.
  if (!layout.runs && EndOfCells(layout, coding, parameters.Position()) > parameters.All().size()) {
    parameters.Fail(SkipReason::TooShort);
  } else if (!TakeCells(layout.Cells())) {
    parameters.Fail(SkipReason::TooLarge);
  }
  return parameters.Good() ? cgm::ReadCells(parameters, layout, coding) : std::vector<std::uint32_t>{};
}

std::string Picture::ToUtf8(std::string_view text) const {
  const auto isUtf8 = [this](std::int32_t set) {
    return set >= 1 && static_cast<std::size_t>(set) <= utf8Sets.size() && utf8Sets[static_cast<std::size_t>(set) - 1];
  };
  const bool utf8 = isUtf8(attributes.characterSet) || isUtf8(attributes.alternateCharacterSet);
  return InAlphabet(cgm::ToUtf8(text, utf8), CurrentFont().alphabet);
}

double Picture::LongerSide() const {
  if (!extent) return coding.vdcIsReal ? kLongerSideReal : kLongerSideInteger;
  const Point diagonal = extent->high - extent->low;
  return std::max(std::fabs(diagonal.x), std::fabs(diagonal.y));
}

Measure Picture::MeasureOf(const Size &size, SizeMode mode, double part, double millimeters) const {
  if (!size.isSet)
    return mode == SizeMode::Absolute || mode == SizeMode::Fractional ? Measure{part * LongerSide(), false} : Measure{};
  switch (size.mode) {
    case SizeMode::Absolute:
      return {size.value, false};
    case SizeMode::Fractional:
      return {size.value * LongerSide(), false};
    case SizeMode::Millimeters:
      return {size.value / millimeters, true};
    case SizeMode::Scaled:
      break;
  }
  return {size.value, true};
}

Style Picture::CurrentStyle() {
  const Attributes &a = attributes;
  Style made;
  made.line = {MeasureOf(a.lineWidth, a.lineWidthMode, kPartOfWidth, kMillimetersOfWidth), a.lineDash,
               colors.Of(a.lineColor)};
  made.edge = {MeasureOf(a.edgeWidth, a.edgeWidthMode, kPartOfWidth, kMillimetersOfWidth), a.edgeDash,
               colors.Of(a.edgeColor)};
  made.edgeVisible = a.edgeVisible;
  made.fill = CurrentFill();
  made.marker = {a.marker, MeasureOf(a.markerSize, a.markerSizeMode, kPartOfMarker, kMillimetersOfMarker),
                 colors.Of(a.markerColor)};
  made.text = CurrentText();
  SetClip(made);
  made.transparent = a.transparent;
  made.auxiliary = colors.Of(a.auxiliary);
  return made;
}

void Picture::SetClip(Style &made) const {
  const std::optional<Box> &clip = attributes.clipRectangle;
  made.clipped = attributes.clip && clip;
  if (made.clipped) made.clip = Ordered(Turned(clip->low), Turned(clip->high));
}

FillStyle Picture::CurrentFill() {
  FillStyle fill;
  fill.interior = attributes.interior;
  fill.hatch = attributes.hatch;
  fill.color = colors.Of(attributes.fillColor);
  if (fill.interior != Interior::Pattern) return fill;
  const Box whole = extent.value_or(Box{{}, {LongerSide(), LongerSide()}});
  const Point diagonal = whole.high - whole.low;
  fill.patternOrigin = Turned(attributes.fillReference.value_or(whole.low));
  fill.patternUp = Turned(attributes.patternHeight.value_or(Point{0, diagonal.y}));
  fill.patternAlong = Turned(attributes.patternWidth.value_or(Point{diagonal.x, 0}));
  const std::optional<std::uint32_t> number = PatternNumber();
  // A pattern that nobody defined still is an area.
  if (!number) fill.interior = Interior::Solid;
  fill.pattern = number.value_or(0);
  return fill;
}

std::optional<std::uint32_t> Picture::PatternNumber() {
  const auto found = patterns.find(attributes.pattern);
  if (found == patterns.end()) return std::nullopt;
  PatternDefinition &defined = found->second;
  const bool holds = defined.inDrawing && (defined.direct || defined.tableVersion == colors.Version());
  if (holds) return defined.inDrawing;
  if (!TakeCells(defined.cells.size())) return std::nullopt;
  Pattern pattern{defined.columns, defined.rows, {}};
  pattern.colors.reserve(defined.cells.size());
  for (const std::uint32_t cell : defined.cells) pattern.colors.push_back(colors.Of(ColorValue{defined.direct, cell}));
  defined.inDrawing = static_cast<std::uint32_t>(drawing.patterns.size());
  defined.tableVersion = colors.Version();
  drawing.patterns.push_back(std::move(pattern));
  return defined.inDrawing;
}

Font Picture::CurrentFont() const {
  const bool listed = attributes.font >= 1 && static_cast<std::size_t>(attributes.font) <= fonts.size();
  return listed ? fonts[static_cast<std::size_t>(attributes.font) - 1] : Font{};
}

TextStyle Picture::CurrentText() const {
  const Attributes &a = attributes;
  const Font font = CurrentFont();
  TextStyle text;
  text.family = font.family;
  text.bold = font.bold;
  text.oblique = font.oblique;
  text.color = colors.Of(a.textColor);
  text.height = a.height.value_or(kPartOfHeight * LongerSide());
  text.up = Turned(a.up);
  text.along = Turned(a.along);
  text.expansion = a.expansion;
  text.spacing = a.spacing;
  text.path = a.path;
  text.across = a.across;
  text.upwards = a.upwards;
  text.acrossPart = a.acrossPart;
  text.upwardsPart = a.upwardsPart;
  return text;
}

}  // namespace ksvect::cgm
