// Runs of bits, the top bit of a byte first.
#pragma once

#include <cstdint>

namespace ksntfx {

/** Moves `count` bits from bit `from` of `source` to the front of `row`, the top bit of a byte first. */
void UnpackBits(const std::uint8_t *source, std::uint64_t from, std::uint32_t count, std::uint8_t *row);

}  // namespace ksntfx
