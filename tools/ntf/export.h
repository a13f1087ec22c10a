// ntf export: the raw samples of an image as TIFF.
#pragma once

#include "problem.h"

#include <cstdint>
#include <string>
#include <vector>

namespace ntf {

struct ExportOptions {
  std::string file;
  std::string output;               /* ends in .tif or .tiff */
  bool force = false;               /* overwrites a file */
  std::uint32_t image = 0;          /* from 0 */
  std::vector<std::uint32_t> bands; /* numbers from 0, in the order of the output; empty: all */
  std::string compression = "none"; /* or "deflate" */
};

/** Whether `name` ends in .tif or .tiff. */
bool IsTiffName(const std::string &name);

Outcome Export(const ExportOptions &options);

}  // namespace ntf
