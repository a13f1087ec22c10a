// What the format allows in a header field.
#pragma once

#include "core.h"

#include <optional>
#include <string>

namespace ntf {

/** What is wrong with the text of a field: "is not a date: '...'"; none if it is well-formed. */
std::optional<std::string> FaultOf(const Field &field);

}  // namespace ntf
