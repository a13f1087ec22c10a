// Where the characters of a text lie.
#pragma once

#include "ksvect/fonts.h"
#include "ksvect/painter.h"
#include "ksvect/tiles.h"

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

/** Adds the marks of a text. */
void AddText(const Text &text, const TextStyle &style, const Affine &toCanvas, const KsRect &clip, Tiles &tiles);
void AddGlyphs(const Layout &layout, const Affine &toCanvas, Color color, const KsRect &clip, Tiles &tiles);

}  // namespace ksvect
