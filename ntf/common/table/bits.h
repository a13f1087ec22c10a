// Runs of bits, the top bit of a byte first.
#pragma once

#include <cstdint>

namespace ksntfx {

/** Bytes of a row of samples of one band, which begins on a byte of its own. */
inline std::uint64_t RowBytes(std::uint32_t bits, std::uint32_t width) {
  return (std::uint64_t{bits} * width + 7) / 8;
}

/** Moves `count` bits from bit `from` of `source` to the front of `row`, the top bit of a byte first. */
void UnpackBits(const std::uint8_t *source, std::uint64_t from, std::uint32_t count, std::uint8_t *row);

}  // namespace ksntfx
