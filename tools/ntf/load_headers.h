// A file that is opened for its headers.
#pragma once

#include "core.h"
#include "problem.h"

#include <string>

namespace ntf {

/** Reads all headers of a file into `file`, which is empty. */
Outcome LoadHeaders(const std::string &fileName, LoadedFile &file, Door door);

}  // namespace ntf
