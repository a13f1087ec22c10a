// Sums of the locations of segments.
#pragma once

#include <cstdint>

namespace ksntfx {

/** Sums of locations, in pixels; they wrap like the format's 32 bits. */
struct DisplayOffset {
  std::int32_t row;
  std::int32_t column;
};

/** A sum of two of them. */
inline std::int32_t Add(std::int32_t a, std::int32_t b) {
  return static_cast<std::int32_t>(static_cast<std::uint32_t>(a) + static_cast<std::uint32_t>(b));
}

}  // namespace ksntfx
