// ntf copy: a file through the library's writer.
#pragma once

#include "problem.h"

#include <string>

namespace ntf {

struct CopyOptions {
  std::string input;
  std::string output;
  bool force = false; /* overwrites a file */
};

/** Opens and saves a file, and holds what was saved against the original before it takes its place. */
Outcome Copy(const CopyOptions &options);

}  // namespace ntf
