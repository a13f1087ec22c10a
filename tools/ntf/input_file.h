// The file that a command is about, before the library sees it.
#pragma once

#include "kskernel.h"
#include "problem.h"

#include <memory>
#include <string>

namespace ntf {

/** A name as the library takes it. */
using WideName = std::unique_ptr<char16_t, decltype(&KsToWideFree)>;

/** What keeps `name` from being read as a file: it isn't there, is a folder, may not be opened. */
Outcome CheckInput(const std::string &name);

/** A file name in UTF-16; null if `name` isn't UTF-8, which CheckInput reports. */
WideName Widen(const std::string &name);

}  // namespace ntf
