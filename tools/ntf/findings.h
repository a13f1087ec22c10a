// Inconsistencies in the headers of a file.
#pragma once

#include "core.h"

#include <cstdint>
#include <string>
#include <vector>

namespace ntf {

/** An inconsistency. */
struct Finding {
  std::string field;    /* the standard's name, after the name of the segment if it belongs to one */
  std::uint64_t offset; /* of the field in the file */
  std::string words;
};

/** The inconsistencies of a loaded file, in the order of the file, without those of the segments in `unread`. */
std::vector<Finding> FindFaults(const FileView &file, const std::vector<HeaderChoice> &unread);

}  // namespace ntf
