// The model of a drawing, which the reader of metafiles makes, the writer writes, and the painter paints.
#pragma once

#include <cmath>
#include <cstdint>
#include <numbers>
#include <string>
#include <variant>
#include <vector>

namespace ksvect {

/** Metafiles have no greater numbers. Products of some of them are still finite. */
constexpr double kGreatestNumber = 1e60;

/**
 * A place or a vector of the drawing, in its own units. x runs to the right and y upwards, whatever the axes of the
 * metafile: its reader turns them, so that the first corner of the extent is the lower left one.
 */
struct Point {
  double x = 0;
  double y = 0;

  bool operator==(const Point &) const = default;
};

constexpr Point operator+(Point a, Point b) {
  return {a.x + b.x, a.y + b.y};
}
constexpr Point operator-(Point a, Point b) {
  return {a.x - b.x, a.y - b.y};
}
constexpr Point operator*(Point a, double factor) {
  return {a.x * factor, a.y * factor};
}

inline double LengthOf(Point vector) {
  return std::hypot(vector.x, vector.y);
}

constexpr double CrossOf(Point a, Point b) {
  return a.x * b.y - a.y * b.x;
}

/** `low` is the lower left corner, `high` the upper right one. */
struct Box {
  Point low;
  Point high;

  bool operator==(const Box &) const = default;
};

/** 0x00BBGGRR, as everywhere in the framework. */
using Color = std::uint32_t;

/** A width or a size: in units of the drawing, or as a multiple of the nominal one, which is a matter of the device. */
struct Measure {
  double value = 1;
  bool nominal = true;

  bool operator==(const Measure &) const = default;
};

/** Line and edge types, by their numbers in a metafile. */
enum class Dash : std::uint8_t { Solid = 1, Dash, Dot, DashDot, DashDotDot };

struct LineStyle {
  Measure width;
  Dash dash = Dash::Solid;
  Color color = 0;

  bool operator==(const LineStyle &) const = default;
};

/** Interior styles, by their numbers in a metafile. */
enum class Interior : std::uint8_t { Hollow, Solid, Pattern, Hatch, Empty };

/** Hatch styles, by their numbers in a metafile: lines at 0, 90, 45 and 135 degrees, and both of two directions. */
enum class Hatch : std::uint8_t { Horizontal = 1, Vertical, Rising, Falling, Cross, DiagonalCross };

struct FillStyle {
  Interior interior = Interior::Hollow;
  Hatch hatch = Hatch::Horizontal;
  Color color = 0;
  std::uint32_t pattern = 0;   /**< index into Drawing::patterns, for Interior::Pattern */
  Point patternOrigin;         /**< the fill reference point: a lower left corner of the pattern */
  Point patternUp = {0, 1};    /**< from there along the height of one pattern */
  Point patternAlong = {1, 0}; /**< from there along its width */

  bool operator==(const FillStyle &) const = default;
};

/** Marker types, by their numbers in a metafile. */
enum class Marker : std::uint8_t { Dot = 1, Plus, Asterisk, Circle, Cross };

struct MarkerStyle {
  Marker type = Marker::Asterisk;
  Measure size;
  Color color = 0;

  bool operator==(const MarkerStyle &) const = default;
};

enum class Family : std::uint8_t { Serif, Sans, Fixed };

/** Text paths and alignments, by their numbers in a metafile. */
enum class TextPath : std::uint8_t { Right, Left, Up, Down };
enum class AlignAcross : std::uint8_t { Normal, Left, Center, Right, Continuous };
enum class AlignUp : std::uint8_t { Normal, Top, Cap, Half, Base, Bottom, Continuous };

struct TextStyle {
  Family family = Family::Serif;
  bool bold = false;
  bool oblique = false;
  Color color = 0;
  double height = 1;    /**< the size of the font: that of its em square */
  Point up = {0, 1};    /**< which way is up for a character; its length has no meaning */
  Point along = {1, 0}; /**< which way the base line runs; its length, against that of `up`, widens characters */
  double expansion = 1; /**< the width of characters against the font's own */
  double spacing = 0;   /**< added between characters, in parts of `height` */
  TextPath path = TextPath::Right;
  AlignAcross across = AlignAcross::Normal;
  AlignUp upwards = AlignUp::Normal;
  double acrossPart = 0;  /**< for AlignAcross::Continuous: 0 the left edge, 1 the right one */
  double upwardsPart = 0; /**< for AlignUp::Continuous: 0 the bottom, 1 the top */

  bool operator==(const TextStyle &) const = default;
};

/** Everything that an object looks like. Objects share styles. */
struct Style {
  LineStyle line;
  LineStyle edge;
  bool edgeVisible = false;
  FillStyle fill;
  MarkerStyle marker;
  TextStyle text;
  bool clipped = false;
  Box clip;                /**< where `clipped` */
  bool transparent = true; /**< gaps of dashes and hatches show what is behind; otherwise they have `auxiliary` */
  Color auxiliary = 0xFFFFFF;

  bool operator==(const Style &) const = default;
};

/** Lines through the points, in the line style. */
struct Polyline {
  std::vector<Point> points;

  bool operator==(const Polyline &) const = default;
};

/** A line from each even point to the next one. */
struct DisjointPolyline {
  std::vector<Point> points;

  bool operator==(const DisjointPolyline &) const = default;
};

/** A closed area, in the fill style, with its edge. */
struct Polygon {
  std::vector<Point> points;

  bool operator==(const Polygon &) const = default;
};

/** What the edge from a point of a set to the next one is; the closing kinds lead back to where the polygon began. */
enum class EdgeFlag : std::uint8_t { Invisible, Visible, CloseInvisible, CloseVisible };

/** Several polygons that are one area, with the even-odd rule. */
struct PolygonSet {
  std::vector<Point> points;
  std::vector<EdgeFlag> flags; /**< one a point */

  bool operator==(const PolygonSet &) const = default;
};

/** An area with its sides along the axes, from one corner to the opposite one. */
struct Rectangle {
  Point first;
  Point second;

  bool operator==(const Rectangle &) const = default;
};

enum class Closure : std::uint8_t {
  Full,  /**< the whole ellipse: an area */
  Open,  /**< the arc alone: a line */
  Pie,   /**< the arc and the center: an area */
  Chord, /**< the arc and the line between its ends: an area */
};

/** Once round, in radians. */
constexpr double kTurn = 2 * std::numbers::pi;

/**
 * A circle, an ellipse, or an arc of one: center + cos(t) * first + sin(t) * second, with t from `start` to `end`
 * (radians, end >= start), where `first` and `second` lead from the center to the ends of conjugate diameters.
 */
struct Ellipse {
  Point center;
  Point first;
  Point second;
  Closure closure = Closure::Full;
  double start = 0;
  double end = 0;

  bool operator==(const Ellipse &) const = default;
};

/** A run of text at a place, or within a box as wide and high as `extent` along its directions. */
struct Text {
  Point position;
  std::string text; /**< UTF-8, one line */
  bool restricted = false;
  Point extent; /**< where `restricted`: width along the base line and height, units */

  bool operator==(const Text &) const = default;
};

/** A marker at each point. */
struct Markers {
  std::vector<Point> points;

  bool operator==(const Markers &) const = default;
};

/**
 * A picture of `columns` by `rows` cells in a parallelogram. The first cell of the first row lies at `origin`; rows run
 * from there to `alongEnd`, and the last row ends at `opposite`.
 */
struct CellArray {
  Point origin;
  Point opposite;
  Point alongEnd;
  std::uint32_t columns = 0;
  std::uint32_t rows = 0;
  std::vector<Color> colors; /**< row by row */

  bool operator==(const CellArray &) const = default;
};

using Shape =
    std::variant<Polyline, DisjointPolyline, Polygon, PolygonSet, Rectangle, Ellipse, Text, Markers, CellArray>;

struct Object {
  Shape shape;
  std::uint32_t style = 0; /**< index into Drawing::styles */

  bool operator==(const Object &) const = default;
};

struct Layer {
  std::u16string name;
  std::vector<Object> objects; /**< from the back to the front */

  bool operator==(const Layer &) const = default;
};

/** Cells of a fill that repeats, row by row from the top. */
struct Pattern {
  std::uint32_t columns = 0;
  std::uint32_t rows = 0;
  std::vector<Color> colors;

  bool operator==(const Pattern &) const = default;
};

struct Drawing {
  bool hasExtent = false;   /**< otherwise the bounds of the objects take its place */
  Box extent;               /**< the part of the drawing's space that a picture shows */
  bool downwards = false;   /**< y ran down in the metafile: a level line lies below its place, otherwise above it */
  bool inPixels = false;    /**< the metafile's units are meant as pixels, as its descriptors show */
  bool mayBePixels = false; /**< so they are if the bounds of the drawing are within its extent */
  bool hasBackground = false;
  Color background = 0xFFFFFF;
  std::vector<Style> styles;
  std::vector<Pattern> patterns;
  std::vector<Layer> layers; /**< from the back to the front */
  std::uint32_t currentLayer = 0;

  bool operator==(const Drawing &) const = default;
};

/** Adds a style, or finds it where it is the last one added. */
std::uint32_t StyleNumber(Drawing &drawing, const Style &style);

/** The layer that objects go to; made where there is none. */
Layer &CurrentLayer(Drawing &drawing);

/** Moves everything, the extent too. */
void Move(Drawing &drawing, Point offset);

/** Scales and moves everything so that `part` of the drawing's space, which becomes its extent, lies on `target`. */
void LayOnto(Drawing &drawing, const Box &part, const Box &target);

}  // namespace ksvect
