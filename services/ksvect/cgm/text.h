// Names of fonts, and the characters of strings.
#pragma once

#include "ksvect/model/drawing.h"

#include <string>
#include <string_view>

namespace ksvect::cgm {

struct Font {
  Family family = Family::Serif;
  bool bold = false;
  bool oblique = false;
};

/** What the words of a font's name say of it. */
Font FontOfName(std::string_view name);

/** Whether the designation of a character set stands for UTF-8, in any of its levels. */
bool DesignatesUtf8(std::string_view designation);

/**
 * A string as UTF-8. It is Latin 1, or UTF-8 where `utf8` says so, or behind an escape sequence in the string itself;
 * what is no UTF-8 is taken as Latin 1. Control characters and escape sequences are left out.
 */
std::string ToUtf8(std::string_view text, bool utf8);

}  // namespace ksvect::cgm
