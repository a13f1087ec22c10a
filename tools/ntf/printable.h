// Texts of a file, made fit to be shown.
#pragma once

#include <string>
#include <string_view>

namespace ntf {

/** Without the blanks and zero bytes around it. */
std::string_view Trim(std::string_view text);

/** As UTF-8; bytes above 127 are taken as Latin-1. */
std::string Latin1ToUtf8(std::string_view text);

/** Whether a text, UTF-8 or Latin-1, has bytes that change the state of a terminal; ends of lines and tabs don't. */
bool HasControls(std::string_view text);

/** With a question mark for each control character. */
std::string WithoutControls(std::string_view text);

/** Trimmed, as UTF-8, without controls. */
std::string Printable(std::string_view text);

}  // namespace ntf
