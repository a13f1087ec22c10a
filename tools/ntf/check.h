// ntf check: what does not agree in a file.
#pragma once

#include <string>
#include <vector>

namespace ntf {

struct CheckOptions {
  std::vector<std::string> files;
  bool json = false;
};

/** Prints what is found in each file, a line a finding. True where nothing is. */
bool Check(const CheckOptions &options);

}  // namespace ntf
