// The picture that is being read: the drawing so far, and all that its next object depends on.
#pragma once

#include "ksvect/cgm/attributes.h"
#include "ksvect/cgm/cells.h"
#include "ksvect/cgm/figure.h"

#include <map>

namespace ksvect::cgm {

class Picture {
 public:
  explicit Picture(std::size_t metafileBytes);

  Coding coding;
  Attributes attributes;
  ColorTable colors;
  std::map<std::int32_t, PatternDefinition> patterns;
  std::vector<Font> fonts;
  std::vector<bool> utf8Sets; /**< of each character set, whether it is UTF-8 */
  Drawing drawing;
  bool isMetric = false; /**< units have a length on paper */

  /** Sets the extent, whose corners define the directions of the axes. */
  void SetExtent(Point first, Point second);

  /** A place or a vector of the metafile in the model's directions. */
  Point Turned(Point point) const { return {point.x * axes.x + 0.0, point.y * axes.y + 0.0}; }

  /** The next object needs a new style. */
  void Restyle() { styleStale = true; }

  /** Adds an object with the looks that hold now; within a figure, a part of the figure. */
  void Add(Shape shape);

  void BeginFigure() { figure.emplace(); }
  void EndFigure();
  /** Null outside a figure. */
  Figure *OpenFigure() { return figure ? &*figure : nullptr; }

  /** Text that is not final goes on with what is appended to it. */
  void AddText(Text text, bool final);
  void AppendText(std::string_view text, bool final);

  /** Nothing is appended to the last text any more. */
  void CloseText() { textOpen = false; }

  /** The cells of an array or a pattern, which fail the parameters where the metafile has too many or too few. */
  std::vector<std::uint32_t> ReadCells(Parameters &parameters, const CellLayout &layout);

  /** The characters of a string in the font that is set. */
  std::string ToUtf8(std::string_view text) const;
  bool HasObjects() const { return !drawing.layers.front().objects.empty(); }
  /** The drawing, when all elements are read. */
  Drawing Take();

 private:
  Style CurrentStyle();
  FillStyle CurrentFill();
  TextStyle CurrentText() const;
  Font CurrentFont() const;
  Measure MeasureOf(const Size &size, SizeMode mode, double part, double millimeters) const;
  std::optional<std::uint32_t> PatternNumber();
  double LongerSide() const;
  /** Counts cells against the bound of the metafile; false where there are too many. */
  bool TakeCells(std::uint64_t cells);
  void SetClip(Style &style) const;

  Point axes = {1, 1};
  std::optional<Box> extent; /**< its corners as the metafile has them */
  std::uint64_t cellsLeft;
  bool styleStale = true;
  std::uint32_t style = 0;
  std::optional<Figure> figure;
  bool textOpen = false; /**< the last object is a text that may be appended to */
};

}  // namespace ksvect::cgm
