// What was saved, held against what it came from.
#pragma once

#include "problem.h"
#include "saving.h"

#include <string>

namespace ntf {

/**
 * Saves the file of a handle as `name`, where it appears if it opens, has all segments, and those that the handle was
 * opened with have the same data.
 */
Outcome SaveCompared(const LocalHandle &handle, const std::string &name);

}  // namespace ntf
