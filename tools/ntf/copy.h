// ntf copy: saving a file under another name.
#pragma once

#include "problem.h"

#include <string>

namespace ntf {

struct CopyOptions {
  std::string input;
  std::string output;
  bool force = false; /* overwrites a file */
};

/** Opens and saves a file, and compares the result with the original before it appears. */
Outcome Copy(const CopyOptions &options);

}  // namespace ntf
