// The attributes in force, in the terms of the metafile.
#pragma once

#include "ksvect/cgm/text.h"
#include "ksvect/cgm/values.h"

#include <optional>

namespace ksvect::cgm {

/** The units of the widths of lines and edges and of the sizes of markers. */
enum class SizeMode : std::uint8_t { Absolute, Scaled, Fractional, Millimeters };

struct Size {
  bool isSet = false;
  SizeMode mode = SizeMode::Scaled;
  double value = 0;
};

/** Colours by index: those that a metafile sets, the background, and a few defaults for the rest. */
class ColorTable {
 public:
  ColorTable();
  /** Ignores indices beyond the bound. */
  void Set(std::uint32_t index, Color color);
  Color Of(std::uint32_t index) const;
  Color Of(ColorValue color) const { return color.direct ? color.value : Of(color.value); }
  /** Counts the changes. */
  unsigned Version() const { return version; }

 private:
  std::vector<Color> colors;
  unsigned version = 0;
};

/** A pattern as it was defined, and its index in the drawing once it is used. */
struct PatternDefinition {
  std::uint32_t columns = 0;
  std::uint32_t rows = 0;
  bool direct = false;
  std::vector<std::uint32_t> cells;
  std::optional<std::uint32_t> inDrawing;
  unsigned tableVersion = 0;
};

/** Initialised with the defaults; places and vectors are those of the metafile, unturned. */
struct Attributes {
  ColorValue lineColor = {false, 1};
  ColorValue edgeColor = {false, 1};
  ColorValue fillColor = {false, 1};
  ColorValue markerColor = {false, 1};
  ColorValue textColor = {false, 1};
  ColorValue auxiliary = {false, 0};
  SizeMode lineWidthMode = SizeMode::Scaled;
  SizeMode edgeWidthMode = SizeMode::Scaled;
  SizeMode markerSizeMode = SizeMode::Scaled;
  Size lineWidth;
  Size edgeWidth;
  Size markerSize;
  Dash lineDash = Dash::Solid;
  Dash edgeDash = Dash::Solid;
  Marker marker = Marker::Asterisk;
  Interior interior = Interior::Hollow;
  Hatch hatch = Hatch::Horizontal;
  std::int32_t pattern = 1;
  std::optional<Point> fillReference;
  std::optional<Point> patternHeight;
  std::optional<Point> patternWidth;
  bool edgeVisible = false;
  std::int32_t font = 1;
  std::int32_t characterSet = 1;
  std::int32_t alternateCharacterSet = 1;
  double expansion = 1;
  double spacing = 0;
  std::optional<double> height;
  Point up = {0, 1};
  Point along = {1, 0};
  TextPath path = TextPath::Right;
  AlignAcross across = AlignAcross::Normal;
  AlignUp upwards = AlignUp::Normal;
  double acrossPart = 0;
  double upwardsPart = 0;
  bool transparent = true;
  bool clip = true;
  std::optional<Box> clipRectangle;
};

}  // namespace ksvect::cgm
