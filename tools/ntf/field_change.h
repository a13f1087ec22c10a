// Header fields that a command changes by their names.
#pragma once

#include "nitffile.h"
#include "problem.h"

#include <optional>
#include <string>

namespace ntf {

/** A header of a file: that of a segment, or, without a kind, the file's own. */
struct HeaderChoice {
  std::optional<SegmentKind> kind;
  std::uint32_t index = 0; /* of a segment that is there */
};

/**
 * Stores a value in a field, named as in the standard, of a file in memory. Fields that tell what the data are or how
 * long they are can't be changed. `fileName` is for the problem: an unknown field, or a value that the field can't
 * hold.
 */
Outcome ChangeField(const std::string &fileName, NitfFile &file, const HeaderChoice &header, const std::string &name,
                    const std::string &value);

}  // namespace ntf
