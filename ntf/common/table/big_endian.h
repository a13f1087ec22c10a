// Binary numbers of the format, whose first byte is the highest.
#pragma once

#include <cstdint>

namespace ksntfx {

/** The number of two bytes. */
inline std::uint16_t BigEndian16(const std::uint8_t *bytes) {
  return static_cast<std::uint16_t>(bytes[0] << 8 | bytes[1]);
}

/** The number of four bytes. */
inline std::uint32_t BigEndian32(const std::uint8_t *bytes) {
  return std::uint32_t{bytes[0]} << 24 | std::uint32_t{bytes[1]} << 16 | std::uint32_t{bytes[2]} << 8 | bytes[3];
}

/** Stores the low `count` bytes of a number. */
inline void PutBigEndian(std::uint8_t *bytes, std::uint32_t value, std::uint32_t count) {
  for (std::uint32_t at = 0; at < count; ++at) bytes[at] = static_cast<std::uint8_t>(value >> 8 * (count - 1 - at));
}

}  // namespace ksntfx
