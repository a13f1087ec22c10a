// What the format allows in a header field.
#pragma once

#include "core.h"

#include <optional>
#include <string>

namespace ntf {

/** Whether a field has a location: a row and a column. */
bool IsLocation(const std::string &name);

/**
 * What is wrong with the text of a field: "is not a date: '...'"; none if it is well-formed. Dates of NITF 02.00 have a
 * form of their own.
 */
std::optional<std::string> FaultOf(const Field &field, bool isNitf20);

}  // namespace ntf
