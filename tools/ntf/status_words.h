// The status values of the library in words.
#pragma once

#include <cstdint>

namespace ntf {

/** What a status means, for an error line. Never null: a value that nobody knows is called an unknown failure. */
const char *StatusWords(std::int32_t status);

}  // namespace ntf
