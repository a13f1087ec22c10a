// ntf extract: the bodies of segments as files.
#pragma once

#include "problem.h"

#include <cstdint>
#include <string>
#include <vector>

namespace ntf {

struct ExtractOptions {
  std::string file;
  std::string folder; /* made where it isn't there */
  bool force = false; /* overwrites files */
  // Which segments, from 0; all of them where no kind names any.
  std::vector<std::uint32_t> images;
  std::vector<std::uint32_t> graphics;
  std::vector<std::uint32_t> texts;
  std::vector<std::uint32_t> dataExtensions;
};

/** Writes each body as it is, under a name made of its kind and number, and a manifest.json that tells of all. */
Outcome Extract(const ExtractOptions &options);

}  // namespace ntf
