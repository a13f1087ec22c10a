// Elements that set the looks of what follows.
#include "ksvect/cgm/cells.h"
#include "ksvect/cgm/handlers.h"

#include <algorithm>
#include <cmath>

namespace ksvect::cgm {
namespace {

template <ColorValue Attributes::*color>
void SetColor(Picture &picture, Parameters &parameters) {
  const ColorValue value = parameters.AnyColor();
  if (parameters.Good()) picture.attributes.*color = value;
}

template <std::int32_t Attributes::*index>
void SetIndex(Picture &picture, Parameters &parameters) {
  const std::int32_t value = parameters.Index();
  if (parameters.Good()) picture.attributes.*index = value;
}

template <double Attributes::*number>
void SetReal(Picture &picture, Parameters &parameters) {
  const double value = parameters.Real();
  if (parameters.Good()) picture.attributes.*number = value;
}

template <bool Attributes::*flag>
void SetFlag(Picture &picture, Parameters &parameters) {
  const std::int32_t value = parameters.Enumeration();
  if (parameters.Good()) picture.attributes.*flag = value != 0;
}

/** Types beyond the standard's own are `other`. */
template <class Value>
Value Known(std::int32_t number, Value first, Value last, Value other) {
  const bool known = number >= static_cast<std::int32_t>(first) && number <= static_cast<std::int32_t>(last);
  return known ? static_cast<Value>(number) : other;
}

template <auto member, auto first, auto last, auto other>
void SetType(Picture &picture, Parameters &parameters) {
  const std::int32_t number = parameters.Index();
  if (parameters.Good()) picture.attributes.*member = Known(number, first, last, other);
}

template <auto member, auto first, auto last, auto other>
void SetEnumeration(Picture &picture, Parameters &parameters) {
  const std::int32_t number = parameters.Enumeration();
  if (parameters.Good()) picture.attributes.*member = Known(number, first, last, other);
}

template <Size Attributes::*size, SizeMode Attributes::*mode>
void SetSize(Picture &picture, Parameters &parameters) {
  const SizeMode current = picture.attributes.*mode;
  const double value = current == SizeMode::Absolute ? parameters.Vdc() : parameters.Real();
  if (parameters.Good()) picture.attributes.*size = {true, current, std::fabs(value)};
}

void SetHeight(Picture &picture, Parameters &parameters) {
  const double height = parameters.Vdc();
  if (parameters.Good()) picture.attributes.height = std::fabs(height);
}

template <auto first, auto second>
void SetVectors(Picture &picture, Parameters &parameters) {
  const Point one = parameters.Point();
  const Point other = parameters.Point();
  if (!parameters.Good()) return;
  picture.attributes.*first = one;
  picture.attributes.*second = other;
}

void SetAlignment(Picture &picture, Parameters &parameters) {
  const std::int32_t across = parameters.Enumeration();
  const std::int32_t upwards = parameters.Enumeration();
  const double acrossPart = parameters.Real();
  const double upwardsPart = parameters.Real();
  if (!parameters.Good()) return;
  Attributes &attributes = picture.attributes;
  attributes.across = Known(across, AlignAcross::Normal, AlignAcross::Continuous, AlignAcross::Normal);
  attributes.upwards = Known(upwards, AlignUp::Normal, AlignUp::Continuous, AlignUp::Normal);
  attributes.acrossPart = acrossPart;
  attributes.upwardsPart = upwardsPart;
}

void SetFillReference(Picture &picture, Parameters &parameters) {
  const Point point = parameters.Point();
  if (parameters.Good()) picture.attributes.fillReference = point;
}

void SetPattern(Picture &picture, Parameters &parameters) {
  const std::int32_t index = parameters.Index();
  CellLayout layout;
  if (!ReadLayout(parameters, picture.coding, layout)) return;
  // Some write the rows of a pattern without padding.
  layout.alignedRows = EndOfCells(layout, picture.coding, parameters.Position()) <= parameters.All().size();
  std::vector<std::uint32_t> cells = picture.ReadCells(parameters, layout);
  if (!parameters.Good()) return;
  picture.patterns[index] = {layout.columns, layout.rows, picture.coding.directColor, std::move(cells), {}, 0};
}

void SetColors(Picture &picture, Parameters &parameters) {
  std::uint32_t index = parameters.ColorIndex();
  while (parameters.BytesLeft() >= picture.coding.DirectColorBytes()) {
    picture.colors.Set(index++, parameters.DirectColor());
  }
}

void SetClip(Picture &picture, Parameters &parameters) {
  const Point first = parameters.Point();
  const Point second = parameters.Point();
  if (parameters.Good()) picture.attributes.clipRectangle = {first, second};
}

constexpr Handler kSetLineType = SetType<&Attributes::lineDash, Dash::Solid, Dash::DashDotDot, Dash::Solid>;
constexpr Handler kSetEdgeType = SetType<&Attributes::edgeDash, Dash::Solid, Dash::DashDotDot, Dash::Solid>;
constexpr Handler kSetMarker = SetType<&Attributes::marker, Marker::Dot, Marker::Cross, Marker::Asterisk>;
constexpr Handler kSetHatch = SetType<&Attributes::hatch, Hatch::Horizontal, Hatch::DiagonalCross, Hatch::Horizontal>;
/** Geometric patterns and colours that run into each other are areas of one colour here. */
constexpr Handler kSetInterior =
    SetEnumeration<&Attributes::interior, Interior::Hollow, Interior::Empty, Interior::Solid>;
constexpr Handler kSetTextPath = SetEnumeration<&Attributes::path, TextPath::Right, TextPath::Down, TextPath::Right>;

constexpr HandlerRow kRows[] = {
    {kControls, kAuxiliaryColor, SetColor<&Attributes::auxiliary>},
    {kControls, kTransparency, SetFlag<&Attributes::transparent>},
    {kControls, kClipRectangle, SetClip},
    {kControls, kClipIndicator, SetFlag<&Attributes::clip>},
    {kAttributes, kLineType, kSetLineType},
    {kAttributes, kLineWidth, SetSize<&Attributes::lineWidth, &Attributes::lineWidthMode>},
    {kAttributes, kLineColor, SetColor<&Attributes::lineColor>},
    {kAttributes, kMarkerType, kSetMarker},
    {kAttributes, kMarkerSize, SetSize<&Attributes::markerSize, &Attributes::markerSizeMode>},
    {kAttributes, kMarkerColor, SetColor<&Attributes::markerColor>},
    {kAttributes, kTextFontIndex, SetIndex<&Attributes::font>},
    {kAttributes, kCharacterExpansionFactor, SetReal<&Attributes::expansion>},
    {kAttributes, kCharacterSpacing, SetReal<&Attributes::spacing>},
    {kAttributes, kTextColor, SetColor<&Attributes::textColor>},
    {kAttributes, kCharacterHeight, SetHeight},
    {kAttributes, kCharacterOrientation, SetVectors<&Attributes::up, &Attributes::along>},
    {kAttributes, kTextPath, kSetTextPath},
    {kAttributes, kTextAlignment, SetAlignment},
    {kAttributes, kCharacterSetIndex, SetIndex<&Attributes::characterSet>},
    {kAttributes, kAlternateCharacterSetIndex, SetIndex<&Attributes::alternateCharacterSet>},
    {kAttributes, kInteriorStyle, kSetInterior},
    {kAttributes, kFillColor, SetColor<&Attributes::fillColor>},
    {kAttributes, kHatchIndex, kSetHatch},
    {kAttributes, kPatternIndex, SetIndex<&Attributes::pattern>},
    {kAttributes, kEdgeType, kSetEdgeType},
    {kAttributes, kEdgeWidth, SetSize<&Attributes::edgeWidth, &Attributes::edgeWidthMode>},
    {kAttributes, kEdgeColor, SetColor<&Attributes::edgeColor>},
    {kAttributes, kEdgeVisibility, SetFlag<&Attributes::edgeVisible>},
    {kAttributes, kFillReferencePoint, SetFillReference},
    {kAttributes, kPatternTable, SetPattern},
    {kAttributes, kPatternSize, SetVectors<&Attributes::patternHeight, &Attributes::patternWidth>},
    {kAttributes, kColorTable, SetColors},
};

}  // namespace

std::span<const HandlerRow> AttributeHandlers() {
  return kRows;
}

}  // namespace ksvect::cgm
