// From luma and two colour differences to blue, green, red.
#pragma once

#include <algorithm>
#include <cstdint>

namespace kscodec {

/** Factors times 65536. */
constexpr int kBlueOfBlueness = 116130;
constexpr int kGreenOfBlueness = 22554;
constexpr int kGreenOfRedness = 46802;
constexpr int kRedOfRedness = 91881;

/** Turns levels of `bits` bits, up to 16, to red, green, blue. */
inline void ConvertYcc(std::uint32_t y, std::uint32_t cb, std::uint32_t cr, std::uint32_t bits, std::uint16_t *rgb) {
  const std::int64_t middle = std::int64_t{1} << (bits - 1);
  const std::int64_t greatest = 2 * middle - 1;
  const std::int64_t luma = (std::int64_t{y} << 16) + (1 << 15);
  const std::int64_t blueness = cb - middle;
  const std::int64_t redness = cr - middle;
  const auto level = [&](std::int64_t value) {
    return static_cast<std::uint16_t>(std::clamp<std::int64_t>(value >> 16, 0, greatest));
  };
  rgb[0] = level(luma + kRedOfRedness * redness);
  rgb[1] = level(luma - kGreenOfBlueness * blueness - kGreenOfRedness * redness);
  rgb[2] = level(luma + kBlueOfBlueness * blueness);
}

/** Turns pixels of three bytes from Cr, Cb, Y to blue, green, red, by the factors of ITU-R BT.601. */
inline void ConvertYccRow(std::uint8_t *row, std::uint32_t width) {
  constexpr int kHalf = 1 << 15;
  const auto level = [](int value) { return static_cast<std::uint8_t>(std::clamp(value >> 16, 0, 255)); };
  for (std::uint8_t *pixel = row; pixel != row + std::uint64_t{width} * 3; pixel += 3) {
    const int luma = (pixel[2] << 16) + kHalf;
    const int blueness = pixel[1] - 128;
    const int redness = pixel[0] - 128;
    pixel[0] = level(luma + kBlueOfBlueness * blueness);
    pixel[1] = level(luma - kGreenOfBlueness * blueness - kGreenOfRedness * redness);
    pixel[2] = level(luma + kRedOfRedness * redness);
  }
}

}  // namespace kscodec
