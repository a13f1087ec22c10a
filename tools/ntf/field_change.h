// Changing header fields by their names.
#pragma once

#include "core.h"
#include "problem.h"

#include <string>

namespace ntf {

/**
 * Stores a value, in UTF-8, in a field of a file in memory. Fails for an unknown field, for a value that the field
 * can't hold, and for fields that describe the data or its length. `fileName` is for the error message.
 */
Outcome ChangeField(const std::string &fileName, const FileView &file, const HeaderChoice &header,
                    const std::string &name, const std::string &value);

/** Fails if a changed display level or attachment attaches an image or a graphic to its own level. */
Outcome CheckAttachment(const std::string &fileName, const FileView &file, const HeaderChoice &header,
                        const std::string &changedField);

}  // namespace ntf
