// Comparing a saved file with its source.
#pragma once

#include "problem.h"
#include "saving.h"

#include <string>

namespace ntf {

/**
 * Saves the file of a handle as `name`. The output appears only if it can be opened, has all segments, and the same
 * data in those that the opened file has.
 */
Outcome SaveCompared(const LocalHandle &handle, const std::string &name);

}  // namespace ntf
