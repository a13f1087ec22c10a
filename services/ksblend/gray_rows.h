// Rows of grays that become colours of three equal bytes, sixteen at a time.
#pragma once

#include <cstdint>

namespace ksblend {

/**
 * Writes grays of 1 or 2 bytes, whose last byte is what is shown, as pixels of three bytes: as many of `count` as are
 * full sixteens, or none where the processor lacks the instructions. Returns how many it wrote.
 */
template <unsigned bytes>
std::uint64_t PutGrays(std::uint8_t *pixels, const std::uint8_t *grays, std::uint64_t count);

}  // namespace ksblend
