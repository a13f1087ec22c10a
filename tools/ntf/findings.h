// What does not agree in the headers of a file.
#pragma once

#include "core.h"

#include <cstdint>
#include <string>
#include <vector>

namespace ntf {

/** One thing that does not agree. */
struct Finding {
  std::string field;    /* the standard's name; with the segment in front of it where there is one */
  std::uint64_t offset; /* of the field in the file */
  std::string words;
};

/** Looks through a loaded file. */
std::vector<Finding> FindFaults(const FileView &file);

/** Why a file could not be loaded: markers that are not where the header's lengths say. */
std::vector<Finding> FindWrongMarkers(const FileView &file);

}  // namespace ntf
