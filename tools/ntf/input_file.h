// The file that a command is about, before the library sees it.
#pragma once

#include "problem.h"

#include <string>

namespace ntf {

/** What keeps `name` from being read as a file: it isn't there, is a folder, may not be opened. */
Outcome CheckInput(const std::string &name);

/** A file name as the library accepts it. Bytes that are not UTF-8 become lone surrogates, which stand for them. */
std::u16string Widen(const std::string &name);

}  // namespace ntf
