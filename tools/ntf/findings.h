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

/** The inconsistencies of a loaded file, in the order of the file. */
std::vector<Finding> FindFaults(const FileView &file);

/** Reasons why a file could not be loaded: a wrong classification, segments that don't start where they should. */
std::vector<Finding> FindLoadFaults(const FileView &file);

}  // namespace ntf
