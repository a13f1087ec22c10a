// What is put onto a canvas: lines and areas in its own pixels.
#pragma once

#include "ksvect/paint/path.h"
#include "ksvect/paint/surface.h"

#include <cstdint>
#include <span>

namespace ksvect {

/** Cells of colours under an area. */
struct CellGrid {
  Affine toCells; /**< from the canvas to columns and rows */
  std::uint32_t columns = 0;
  std::uint32_t rows = 0;
  bool repeats = false;          /**< otherwise the outermost cells go on */
  std::span<const Color> colors; /**< row by row, of the drawing; cells behind its end show what is below */
};

enum class MarkKind : std::uint8_t { Stroke, Fill, Hatch, Cells };

struct Mark {
  MarkKind kind = MarkKind::Fill;
  Path path;
  Color color = 0;
  double width = 1; /**< of a stroke: pixels, 1 to kWidestLine */
  Join join = Join::Round;
  bool byParity = true;            /**< of an area: inside is what an odd number of crossings leads to */
  Hatch hatch = Hatch::Horizontal; /**< of MarkKind::Hatch */
  CellGrid cells;                  /**< of MarkKind::Cells */
  KsRect clip = {};                /**< pixels that it stays within */
};

constexpr double kWidestLine = 65536;

/** How far a mark reaches beyond the points of its path. */
inline double ReachOf(const Mark &mark) {
  if (mark.kind != MarkKind::Stroke) return 1;
  return mark.width / 2 * (mark.join == Join::Miter ? kMiterLimit : 1) + 1;
}

}  // namespace ksvect
