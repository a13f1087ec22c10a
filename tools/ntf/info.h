// ntf info: a summary of files, or their headers as JSON.
#pragma once

#include "core.h"

#include <string>
#include <vector>

namespace ntf {

struct InfoOptions {
  std::vector<std::string> files;
  bool json = false;
  Door door = Door::Wide;
};

/** Prints all files that can be read, and reports errors for the others. Returns true if there were none. */
bool Info(const InfoOptions &options);

}  // namespace ntf
