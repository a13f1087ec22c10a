// The display levels that a file has in use.
#pragma once

#include "headers/nitffile.h"

namespace ksntfx {

struct DisplayLevels {
  bool any; /**< there is an image, graphic or label */
  std::uint32_t lowest;
  std::uint32_t highest;
};
DisplayLevels LevelsOf(const NitfFile *file);

}  // namespace ksntfx
