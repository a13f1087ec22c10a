// Copying of runs of bits, for pixels that don't begin at a byte.
#pragma once

#include <cstdint>

namespace ksblend {

/** Copies `count` bits from bit `sourceBit` to bit `targetBit`. Bit 0 of a byte is its top bit. */
void CopyBitsTopFirst(const std::uint8_t *source, std::uint64_t sourceBit, std::uint8_t *target,
                      std::uint64_t targetBit, std::uint64_t count);

/** The same where bit 0 of a byte is its lowest bit, as 12-bit samples lie. */
void CopyBitsLowFirst(const std::uint8_t *source, std::uint64_t sourceBit, std::uint8_t *target,
                      std::uint64_t targetBit, std::uint64_t count);

}  // namespace ksblend
