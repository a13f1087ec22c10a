// File names: UTF-16 in every interface, UTF-8 where the operating system wants it.
#pragma once

#include "kscore/allocation.h"

namespace kscore {

using NarrowName = Block<char, KS_MEMORY_FILE>;

/** A zero-terminated UTF-16 name in UTF-8; an empty block for a lone surrogate, or where memory runs out. */
NarrowName NarrowFromWide(const char16_t *name);

}  // namespace kscore
