// The object descriptions that clients hand over, as objects of a drawing.
#pragma once

#include "kskernel.h"
#include "ksvect/drawing.h"

namespace ksvect {

/** Adds the object that `description`, a record of `kind`, describes. SUCCESS, or ERROR_INVALID_VALUE. */
std::int32_t AddDescribed(Drawing &drawing, std::uint32_t kind, const void *description);

}  // namespace ksvect
