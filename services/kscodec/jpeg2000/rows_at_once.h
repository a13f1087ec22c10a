// What a decoder may hold at a time.
#pragma once

#include "kscodec/codec.h"
#include "kscore/pixel_forms.h"

#include <cstdint>

namespace kscodec::jpeg2000 {

/**
 * Rows that are decoded at a time, of a picture with `decoded` components, so that a short stream costs little memory:
 * what the decoder holds is within the limit for a bitmap, and within a 1024th of that or 64 samples for each byte of
 * the stream. A long stream has few parts, each of which has to read it from its start.
 */
inline std::uint32_t RowsAtOnce(std::uint64_t streamBytes, std::uint32_t width, std::uint32_t height,
                                std::uint64_t decoded) {
  constexpr std::uint64_t kHeldOfAByte = 64;
  constexpr std::uint64_t kShareOfAny = 1024;
  const std::uint64_t rowsOfBytes = kHeldOfAByte * streamBytes / (width * decoded);
  const auto isBounded = [&](std::uint64_t rows) {
    const std::uint64_t held = rows <= rowsOfBytes ? rows * decoded : rows * decoded * kShareOfAny;
    return CheckBitmapLimit(width, held, kscore::Bgr32::bits) == SUCCESS;
  };
  std::uint32_t rows = height;
  while (rows > 1 && !isBounded(rows)) rows = rows / 2;
  return rows;
}

}  // namespace kscodec::jpeg2000
