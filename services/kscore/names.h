// File names: UTF-16 in every interface, UTF-8 where the operating system wants it.
#pragma once

#include "kscore/allocation.h"

namespace kscore {

using NarrowName = Block<char, KS_MEMORY_FILE>;

/**
 * A zero-terminated UTF-16 name in UTF-8; an empty block for a lone surrogate, or where memory runs out. Surrogates
 * U+DC80 to U+DCFF that stand alone are the bytes 80 to FF, for names of files that are not UTF-8.
 */
NarrowName NarrowFromWide(const char16_t *name);

}  // namespace kscore
