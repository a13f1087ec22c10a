// Names of fonts, and the characters of strings.
#pragma once

#include "ksvect/model/drawing.h"

#include <string>
#include <string_view>

namespace ksvect::cgm {

/** The alphabet of a face: faces of other alphabets have their letters at the codes of the Latin ones. */
enum class Alphabet : std::uint8_t { Latin, Greek, Cyrillic };

struct Font {
  Family family = Family::Serif;
  bool bold = false;
  bool oblique = false;
  Alphabet alphabet = Alphabet::Latin;
};

/** The font for a name, by the words in it. */
Font FontOfName(std::string_view name);

/** Replaces the ASCII letters of a text, in UTF-8, by those of an alphabet. */
std::string InAlphabet(std::string_view text, Alphabet alphabet);

/** Whether the designation of a character set means UTF-8, at any of its levels. */
bool DesignatesUtf8(std::string_view designation);

/**
 * A string as UTF-8. It is Latin 1, or UTF-8 where `utf8` says so, or behind an escape sequence in the string itself;
 * invalid UTF-8 is read as Latin 1. Control characters and escape sequences are left out.
 */
std::string ToUtf8(std::string_view text, bool utf8);

}  // namespace ksvect::cgm
