// ntf info: what is in a file.
#pragma once

#include <string>
#include <vector>

namespace ntf {

struct InfoOptions {
  std::vector<std::string> files;
  bool json = false;
};

/** Prints all files that can be read and reports the others. True where all could. */
bool Info(const InfoOptions &options);

}  // namespace ntf
