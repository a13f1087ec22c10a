// ntf extract: the data of segments as files.
#pragma once

#include "core.h"
#include "problem.h"

#include <cstdint>
#include <string>
#include <vector>

namespace ntf {

struct ExtractOptions {
  std::string file;
  std::string folder; /* created if it doesn't exist */
  bool force = false; /* overwrites files */
  Door door = Door::Wide;
  // The chosen segments, from 0; all segments if none is chosen.
  std::vector<std::uint32_t> images;
  std::vector<std::uint32_t> graphics;
  std::vector<std::uint32_t> texts;
  std::vector<std::uint32_t> dataExtensions;
};

/**
 * Writes the data of each segment to a file named after its kind and number, and a manifest.json that describes them.
 * Entries of an older manifest of the same source are kept as long as their files exist.
 */
Outcome Extract(const ExtractOptions &options);

}  // namespace ntf
