// Hints to the operating system about large storage.
#pragma once

#include <cstdint>

namespace kscore {

/** Says that the untouched storage of `bytes` bytes will be used as a whole, so that it may come in large pages. */
void ExpectWholeUse(void *storage, std::uint64_t bytes);

}  // namespace kscore
