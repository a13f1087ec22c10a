// ntf check: inconsistencies in files.
#pragma once

#include "core.h"

#include <string>
#include <vector>

namespace ntf {

struct CheckOptions {
  std::vector<std::string> files;
  bool json = false;
  Door door = Door::Wide;
};

/** Reports the inconsistencies of each file, one per line. Returns true if there are none. */
bool Check(const CheckOptions &options);

}  // namespace ntf
