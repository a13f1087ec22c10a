// What a command prints.
#pragma once

#include "problem.h"

#include <string_view>

namespace ntf {

/** Prints a text. It may stay in memory until FlushOutput. */
Outcome PrintOutput(std::string_view text);

/** Writes what was printed. */
Outcome FlushOutput();

}  // namespace ntf
