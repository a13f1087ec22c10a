// Texts of a file, converted for display.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace ntf {

/** The number of bytes of the first character of a UTF-8 text, which isn't empty; 1 if there is none. */
std::size_t CharacterBytes(std::string_view text);

/** Removes blanks and zero bytes from both ends. */
std::string_view Trim(std::string_view text);

/** Converts Latin-1 to UTF-8. */
std::string Latin1ToUtf8(std::string_view text);

/** The other way; none if the text isn't UTF-8, or has a character that Latin-1 doesn't have. */
std::optional<std::string> Utf8ToLatin1(std::string_view text);

/** Whether the format's character set has a byte: printable ASCII, and the upper half of Latin-1. */
bool IsHeaderCharacter(char byte);

/** The first character of a UTF-8 text that header fields can't hold, in words: "'\u20ac'", "the byte 0x07". */
std::optional<std::string> StrangeCharacter(std::string_view text);

/** Whether a text, UTF-8 or Latin-1, has bytes that change the state of a terminal, other than line ends and tabs. */
bool HasControls(std::string_view text);

/** Replaces each control character by a question mark. */
std::string WithoutControls(std::string_view text);

/** Trims a Latin-1 text and converts it to UTF-8 without control characters. */
std::string Printable(std::string_view text);

}  // namespace ntf
