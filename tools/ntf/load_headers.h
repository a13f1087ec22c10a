// A file read by the library's core, for what the exports don't tell.
#pragma once

#include "nitffile.h"
#include "problem.h"

#include <string>

namespace ntf {

/** Reads all headers of a file into `file`, which is empty. */
Outcome LoadHeaders(const std::string &fileName, NitfFile &file);

}  // namespace ntf
