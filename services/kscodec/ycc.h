// From luma and two colour differences to blue, green, red.
#pragma once

#include <algorithm>
#include <cstdint>

namespace kscodec {

/** Turns pixels of three bytes from Cr, Cb, Y to blue, green, red, by the factors of ITU-R BT.601. */
inline void ConvertYccRow(std::uint8_t *row, std::uint32_t width) {
  constexpr int kHalf = 1 << 15;
  const auto level = [](int value) { return static_cast<std::uint8_t>(std::clamp(value >> 16, 0, 255)); };
  for (std::uint8_t *pixel = row; pixel != row + std::uint64_t{width} * 3; pixel += 3) {
    const int luma = (pixel[2] << 16) + kHalf;
    const int blueness = pixel[1] - 128;
    const int redness = pixel[0] - 128;
    // The factors times 65536.
    pixel[0] = level(luma + 116130 * blueness);
    pixel[1] = level(luma - 22554 * blueness - 46802 * redness);
    pixel[2] = level(luma + 91881 * redness);
  }
}

}  // namespace kscodec
