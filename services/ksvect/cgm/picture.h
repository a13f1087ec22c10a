// The picture that is being read: the drawing so far, and all that its next object depends on.
#pragma once

#include "ksvect/cgm/attributes.h"
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
  bool outOfMemory = false; /**< the metafile asks for more than the bounds allow */

  /** What the extent's corners say: the directions of the axes, and the part that is shown. */
  void SetExtent(Point first, Point second);

  /** A place or a vector of the metafile in the model's directions. */
  Point Turned(Point point) const { return {point.x * axes.x + 0.0, point.y * axes.y + 0.0}; }

  /** The styles made so far don't hold for what follows. */
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

  /** Takes cells off those that the metafile may have; false, and out of memory, where there are too many. */
  bool TakeCells(std::uint64_t cells);

  std::string ToUtf8(std::string_view text) const;
  bool HasObjects() const { return !drawing.layers.front().objects.empty(); }

 private:
  Style CurrentStyle();
  FillStyle CurrentFill();
  TextStyle CurrentText() const;
  Measure MeasureOf(const Size &size, SizeMode mode, double part, double millimeters) const;
  std::optional<std::uint32_t> PatternNumber();
  double LongerSide() const;
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
