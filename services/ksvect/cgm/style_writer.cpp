#include "ksvect/cgm/style_writer.h"

#include <algorithm>
#include <variant>

namespace ksvect::cgm {
namespace {

enum Uses : std::uint32_t {
  kUsesControls = 1,
  kUsesClip = 1 << 1,
  kUsesAuxiliary = 1 << 2,
  kUsesLine = 1 << 3,
  kUsesMarker = 1 << 4,
  kUsesText = 1 << 5,
  kUsesFill = 1 << 6,
  kUsesFillColor = 1 << 7,
  kUsesHatch = 1 << 8,
  kUsesPattern = 1 << 9,
  kUsesEdge = 1 << 10
};

/** Upright, oblique, bold and both. */
constexpr Face kFacesOfFamily = 4;
/** As the profile spells them. */
constexpr const char *kFontNames[] = {"TIMES_ROMAN", "TIMES_ITALIC",      "TIMES_BOLD",     "TIMES_BOLD_ITALIC",
                                      "HELVETICA",   "HELVETICA_OBLIQUE", "HELVETICA_BOLD", "HELVETICA_BOLD_OBLIQUE",
                                      "COURIER",     "COURIER_ITALIC",    "COURIER_BOLD",   "COURIER_BOLD_ITALIC"};

/**
 * The text precision that makes height, orientation and the like exact. The profile has no other one, and no element
 * for it.
 */
constexpr unsigned kStroke = 2;

/** Numbers of patterns are indices of 16 bits. */
constexpr int kMostPatterns = 0x7FFF;

/** Which metafiles have an attribute in front of the first object that shows it. */
enum class Written : std::uint8_t {
  Always,        /**< also where its value is the standard's default: readers of the profile need not know defaults */
  WhereNotUsual, /**< where its value isn't the one that a new style and a metafile begin with */
  BeyondProfile  /**< always in general metafiles, never in those of the profile */
};

struct Attribute {
  ElementCode code;
  std::uint32_t uses; /**< who needs it */
  Written written;
  void (*write)(StyleWriter &, const Style &);
};

template <typename T>
unsigned Number(T value) {
  return static_cast<unsigned>(value);
}

void WriteAlignment(StyleWriter &to, const Style &style) {
  const TextStyle &text = style.text;
  to.encoder.Enumeration(Number(text.across));
  to.encoder.Enumeration(Number(text.upwards));
  to.encoder.Real(text.across == AlignAcross::Continuous ? text.acrossPart : 0);
  to.encoder.Real(text.upwards == AlignUp::Continuous ? text.upwardsPart : 0);
}

void WriteClip(StyleWriter &to, const Style &style) {
  to.encoder.Place(style.clip.low);
  to.encoder.Place(style.clip.high);
}

// Parameters by their types: `part` is a part of the style, and `value` the value in that.
template <auto part, auto value>
void WriteColor(StyleWriter &to, const Style &style) {
  to.encoder.DirectColor(style.*part.*value);
}
template <auto part, auto value>
void WriteIndex(StyleWriter &to, const Style &style) {
  to.encoder.Index(static_cast<int>(style.*part.*value));
}
template <auto part, auto value>
void WriteEnumeration(StyleWriter &to, const Style &style) {
  to.encoder.Enumeration(Number(style.*part.*value));
}
template <auto part, auto value>
void WriteReal(StyleWriter &to, const Style &style) {
  to.encoder.Real(style.*part.*value);
}
template <bool Style::*flag>
void WriteFlag(StyleWriter &to, const Style &style) {
  to.encoder.Enumeration(style.*flag ? 1 : 0);
}

using enum Written;
constexpr Attribute kAttributeTable[] = {
    {{kControls, kClipRectangle}, kUsesClip, Always, WriteClip},
    {{kControls, kClipIndicator}, kUsesControls, BeyondProfile, WriteFlag<&Style::clipped>},
    {{kControls, kTransparency}, kUsesControls, WhereNotUsual, WriteFlag<&Style::transparent>},
    {{kControls, kAuxiliaryColor},
     kUsesAuxiliary,
     Always,
     [](StyleWriter &to, const Style &style) { to.encoder.DirectColor(style.auxiliary); }},
    {{kAttributes, kLineType}, kUsesLine, Always, WriteIndex<&Style::line, &LineStyle::dash>},
    {{kAttributes, kLineColor}, kUsesLine, Always, WriteColor<&Style::line, &LineStyle::color>},
    {{kAttributes, kMarkerType}, kUsesMarker, Always, WriteIndex<&Style::marker, &MarkerStyle::type>},
    {{kAttributes, kMarkerColor}, kUsesMarker, Always, WriteColor<&Style::marker, &MarkerStyle::color>},
    {{kAttributes, kInteriorStyle}, kUsesFill, Always, WriteEnumeration<&Style::fill, &FillStyle::interior>},
    {{kAttributes, kFillColor}, kUsesFillColor, Always, WriteColor<&Style::fill, &FillStyle::color>},
    {{kAttributes, kHatchIndex}, kUsesHatch, Always, WriteIndex<&Style::fill, &FillStyle::hatch>},
    {{kAttributes, kPatternIndex},
     kUsesPattern,
     Always,
     [](StyleWriter &to, const Style &style) { to.PatternIndex(style.fill); }},
    {{kAttributes, kFillReferencePoint},
     kUsesPattern,
     Always,
     [](StyleWriter &to, const Style &style) { to.encoder.Place(style.fill.patternOrigin); }},
    {{kAttributes, kPatternSize},
     kUsesPattern,
     Always,
     [](StyleWriter &to, const Style &style) { to.PatternVectors(style.fill); }},
    {{kAttributes, kEdgeVisibility}, kUsesFill, Always, WriteFlag<&Style::edgeVisible>},
    {{kAttributes, kEdgeType}, kUsesEdge, Always, WriteIndex<&Style::edge, &LineStyle::dash>},
    {{kAttributes, kEdgeColor}, kUsesEdge, Always, WriteColor<&Style::edge, &LineStyle::color>},
    {{kAttributes, kTextFontIndex},
     kUsesText,
     Always,
     [](StyleWriter &to, const Style &style) { to.FontIndex(style.text); }},
    {{kAttributes, kTextPrecision},
     kUsesText,
     BeyondProfile,
     [](StyleWriter &to, const Style &) { to.encoder.Enumeration(kStroke); }},
    {{kAttributes, kCharacterExpansionFactor},
     kUsesText,
     WhereNotUsual,
     WriteReal<&Style::text, &TextStyle::expansion>},
    {{kAttributes, kCharacterSpacing}, kUsesText, WhereNotUsual, WriteReal<&Style::text, &TextStyle::spacing>},
    {{kAttributes, kTextColor}, kUsesText, Always, WriteColor<&Style::text, &TextStyle::color>},
    {{kAttributes, kCharacterHeight},
     kUsesText,
     Always,
     [](StyleWriter &to, const Style &style) { to.encoder.Vdc(style.text.height); }},
    {{kAttributes, kCharacterOrientation},
     kUsesText,
     Always,
     [](StyleWriter &to, const Style &style) {
       to.encoder.Directions({style.text.up, style.text.along});
     }},
    {{kAttributes, kTextPath}, kUsesText, WhereNotUsual, WriteEnumeration<&Style::text, &TextStyle::path>},
    {{kAttributes, kTextAlignment}, kUsesText, WhereNotUsual, WriteAlignment},
};

/** An attribute that is absolute or scaled, as its mode has it. */
struct MeasuredAttribute {
  ElementCode mode;
  ElementCode code;
  std::uint32_t uses;
  const Measure &(*of)(const Style &);
};

constexpr MeasuredAttribute kMeasuredTable[kMeasuredThings] = {
    {{kPictureDescriptors, kLineWidthMode},
     {kAttributes, kLineWidth},
     kUsesLine,
     [](const Style &style) -> const Measure & { return style.line.width; }},
    {{kPictureDescriptors, kEdgeWidthMode},
     {kAttributes, kEdgeWidth},
     kUsesEdge,
     [](const Style &style) -> const Measure & { return style.edge.width; }},
    {{kPictureDescriptors, kMarkerSizeMode},
     {kAttributes, kMarkerSize},
     kUsesMarker,
     [](const Style &style) -> const Measure & { return style.marker.size; }},
};

/** What an area shows of its interior, by its style. */
constexpr std::uint32_t kUsesOfInterior[] = {kUsesFillColor, kUsesFillColor, kUsesPattern, kUsesFillColor | kUsesHatch,
                                             0};

std::uint32_t UsesOfArea(const Style &style) {
  return kUsesFill | kUsesOfInterior[Number(style.fill.interior)] | (style.edgeVisible ? kUsesEdge : 0U);
}

/** Whether the cells of a pattern make rows, of which readers don't agree whether an odd one is filled up. */
bool HasOddRows(const Pattern &pattern) {
  return pattern.columns % 2 != 0 && pattern.rows > 1;
}

}  // namespace

std::uint32_t UsesOf(const Shape &shape, const Style &style) {
  const bool line = std::holds_alternative<Polyline>(shape) || std::holds_alternative<DisjointPolyline>(shape);
  const auto *ellipse = std::get_if<Ellipse>(&shape);
  const std::uint32_t controls =
      kUsesControls | (style.clipped ? kUsesClip : 0U) | (style.transparent ? 0U : kUsesAuxiliary);
  if (line || (ellipse != nullptr && ellipse->closure == Closure::Open)) return controls | kUsesLine;
  if (std::holds_alternative<Text>(shape)) return controls | kUsesText;
  if (std::holds_alternative<Markers>(shape)) return controls | kUsesMarker;
  if (std::holds_alternative<CellArray>(shape)) return controls;
  return controls | UsesOfArea(style);
}

const char *NameOf(Face face) {
  return kFontNames[face];
}

void WriteMode(Encoder &encoder, std::size_t thing, bool scaled) {
  const std::size_t parameters = encoder.Begin(kMeasuredTable[thing].mode);
  encoder.Enumeration(scaled ? 1 : 0);
  encoder.End(parameters);
}

StyleWriter::StyleWriter(Encoder &target, const Drawing &source, const Modes &known)
    : encoder(target),
      drawing(source),
      modes(known),
      modesInForce(known),
      patternNumbers(source.patterns.size()),
      attributes(std::size(kAttributeTable)) {
  const Style style;
  for (std::size_t i = 0; i < attributes.size(); ++i) {
    const Attribute &attribute = kAttributeTable[i];
    if (attribute.written != WhereNotUsual) continue;
    const std::size_t parameters = encoder.Begin(attribute.code);
    attribute.write(*this, style);
    attributes[i].Changes(encoder.Parameters(parameters));
    encoder.Drop(parameters);
  }
}

bool StyleWriter::InForce::Changes(std::span<const std::uint8_t> given) {
  if (known && std::ranges::equal(given, std::span(parameters).first(size))) return false;
  std::ranges::copy(given, parameters.begin());
  size = given.size();
  known = true;
  return true;
}

void StyleWriter::EndIfChanged(std::size_t parameters, InForce &held) {
  if (held.Changes(encoder.Parameters(parameters))) {
    encoder.End(parameters);
  } else {
    encoder.Drop(parameters);
  }
}

void StyleWriter::Write(std::uint32_t number, std::uint32_t uses) {
  if (number != settledStyle) settledUses = 0;
  settledStyle = number;
  const std::uint32_t unsettled = uses & ~settledUses;
  settledUses |= uses;
  if (unsettled == 0) return;
  const Style &style = drawing.styles[number];
  if ((unsettled & kUsesPattern) != 0 && !DefinePattern(style.fill.pattern)) return encoder.Refuse();
  for (std::size_t i = 0; i < attributes.size(); ++i) {
    const Attribute &attribute = kAttributeTable[i];
    if ((unsettled & attribute.uses) == 0) continue;
    if (attribute.written == BeyondProfile && encoder.InForce().profile) continue;
    const std::size_t parameters = encoder.Begin(attribute.code);
    attribute.write(*this, style);
    EndIfChanged(parameters, attributes[i]);
  }
  for (std::size_t i = 0; i < kMeasuredThings; ++i) {
    if ((unsettled & kMeasuredTable[i].uses) != 0) WriteMeasure(i, kMeasuredTable[i].of(style));
  }
}

void StyleWriter::WriteMeasure(std::size_t thing, const Measure &measure) {
  if (modesInForce[thing] != measure.nominal) {
    changesModes = changesModes || modes[thing].has_value();
    if (!modes[thing]) modes[thing] = measure.nominal;
    modesInForce[thing] = measure.nominal;
    WriteMode(encoder, thing, measure.nominal);
    measures[thing].known = false;
  }
  const std::size_t parameters = encoder.Begin(kMeasuredTable[thing].code);
  measure.nominal ? encoder.Real(measure.value) : encoder.Vdc(measure.value);
  EndIfChanged(parameters, measures[thing]);
}

void StyleWriter::FontIndex(const TextStyle &text) {
  const Face face = kFacesOfFamily * Number(text.family) + (text.bold ? 2U : 0U) + (text.oblique ? 1U : 0U);
  auto found = std::ranges::find(faces, face);
  if (found == faces.end()) found = faces.insert(found, face);
  encoder.Index(1 + static_cast<int>(found - faces.begin()));
}

void StyleWriter::PatternVectors(const FillStyle &fill) {
  encoder.Place(fill.patternUp);
  encoder.Place(fill.patternAlong * (HasOddRows(drawing.patterns[fill.pattern]) ? 2 : 1));
}

bool StyleWriter::DefinePattern(std::uint32_t number) {
  if (number >= drawing.patterns.size()) return false;
  if (patternNumbers[number] != 0) return true;
  const Pattern &pattern = drawing.patterns[number];
  if (patternsDefined == kMostPatterns || !HasAllCells(pattern)) return false;
  patternNumbers[number] = ++patternsDefined;
  const std::uint32_t times = HasOddRows(pattern) ? 2 : 1;
  const std::size_t parameters = encoder.Begin({kAttributes, kPatternTable});
  encoder.Index(patternsDefined);
  encoder.Integer(times * pattern.columns);
  encoder.Integer(pattern.rows);
  encoder.Integer(kLocalPrecision);
  for (std::size_t row = 0; row < pattern.rows; ++row) {
    const auto cells = std::span(pattern.colors).subspan(row * pattern.columns, pattern.columns);
    for (std::uint32_t time = 0; time < times; ++time) {
      for (const Color color : cells) encoder.DirectColor(color);
    }
  }
  encoder.End(parameters);
  return true;
}

}  // namespace ksvect::cgm
