// Rows of grays that become colours of three equal bytes, sixteen at a time.
#pragma once

#include <cstdint>

namespace ksblend {

/**
 * Writes `count` grays of `bytes` bytes, of which the last is what is shown, as pixels of three bytes: how many were
 * written, from the first on, which is none where the processor lacks the instructions. `bytes` is 1 or 2.
 */
template <unsigned bytes>
std::uint64_t PutGrays(std::uint8_t *pixels, const std::uint8_t *grays, std::uint64_t count);

}  // namespace ksblend
