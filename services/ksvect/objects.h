// The object descriptions that clients hand over, as objects of a drawing.
#pragma once

#include "internal/status.h"
#include "kskernel.h"
#include "ksvect/model/drawing.h"

namespace ksvect {

/** Adds the object that `description`, a record of `kind`, describes. SUCCESS, or ERROR_INVALID_VALUE. */
Status AddDescribed(Drawing &drawing, std::uint32_t kind, const void *description);

}  // namespace ksvect
