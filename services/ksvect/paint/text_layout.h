// Where the characters of a text lie.
#pragma once

#include "ksvect/paint/fonts.h"
#include "ksvect/paint/tiles.h"

#include <array>
#include <vector>

namespace ksvect {

/** Characters in a frame of their own: x along the base line, y upwards, a unit the height of the text. */
struct Layout {
  struct Placed {
    char32_t character;
    Point origin; /**< on the base line, at its left */
  };
  std::vector<Placed> characters;
  Point size = {1, 1}; /**< of a character's em square, as it is drawn */
  Box box;
  Font *font = nullptr;
  Affine toDrawing;
};

Layout LayoutOf(const Text &text, const TextStyle &style);

/**
 * The box around a text in the units of its drawing: from its lower left corner on, counterclockwise as seen along the
 * text. Its width is estimated where no font is found.
 */
std::array<Point, 4> CornersOf(const Layout &layout);

/** Adds the marks of its characters. */
void AddGlyphs(const Layout &layout, const Affine &toCanvas, Color color, const KsRect &clip, Tiles &tiles);

}  // namespace ksvect
