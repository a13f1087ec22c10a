// ntf copy: a copy of a file, byte for byte.
#pragma once

#include "core.h"
#include "problem.h"

#include <string>

namespace ntf {

struct CopyOptions {
  std::string input;
  std::string output;
  Door door = Door::Wide;
  bool force = false; /* overwrites a file */
};

/** Copies a file that can be opened, and compares the copy with it before it appears. */
Outcome Copy(const CopyOptions &options);

}  // namespace ntf
