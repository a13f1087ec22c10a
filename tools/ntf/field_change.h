// Header fields that a command changes by their names.
#pragma once

#include "core.h"
#include "problem.h"

#include <string>

namespace ntf {

/**
 * Stores a value in a field, named as in the standard, of a file in memory. Fields that tell what the data are or how
 * long they are can't be changed. `fileName` is for the problem: an unknown field, or a value that the field can't
 * hold.
 */
Outcome ChangeField(const std::string &fileName, const FileView &file, const HeaderChoice &header,
                    const std::string &name, const std::string &value);

}  // namespace ntf
