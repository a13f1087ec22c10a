// Fonts: the outlines and measures of characters.
#pragma once

#include "ksvect/paint/path.h"

namespace ksvect {

/** In parts of the font's em square, y upwards. */
struct Glyph {
  double advance = 0;
  Path outline;
};

class Font {
 public:
  Font() = default;
  Font(const Font &) = delete;
  Font &operator=(const Font &) = delete;
  virtual ~Font() = default;

  /** The glyph of a character, or the font's glyph for missing ones. It lives as long as the font. */
  virtual const Glyph &GlyphOf(char32_t character) = 0;

  // Heights over the base line, in parts of the em square.
  double cap = 0;
  double top = 0;
  double bottom = 0;
};

/** The font of a style, which lives as long as the process; null where the system has none. Safe on all threads. */
Font *FindFont(Family family, bool bold, bool oblique);

}  // namespace ksvect
