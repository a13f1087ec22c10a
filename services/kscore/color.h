// Colours as numbers.
#pragma once

#include "kskernel.h"

#include <cstdint>

namespace kscore {

/** A colour with blue in the low byte, then green, then red, and 0 on top: a 24-bit pixel as it lies in memory. */
using Bgr = std::uint32_t;

constexpr std::uint32_t kLevelCount = 256;

constexpr std::uint32_t BlueOf(Bgr color) {
  return color & 0xFF;
}
constexpr std::uint32_t GreenOf(Bgr color) {
  return (color >> 8) & 0xFF;
}
constexpr std::uint32_t RedOf(Bgr color) {
  return (color >> 16) & 0xFF;
}

constexpr Bgr MakeBgr(std::uint32_t blue, std::uint32_t green, std::uint32_t red) {
  return blue | green << 8 | red << 16;
}

/** From the form that the interfaces use, with red in the low byte. */
constexpr Bgr BgrOfColor(std::uint32_t color) {
  return MakeBgr(RedOf(color), GreenOf(color), BlueOf(color));
}

constexpr Bgr BgrOfEntry(const KsPaletteEntry &entry) {
  return MakeBgr(entry.blue, entry.green, entry.red);
}

constexpr Bgr BgrOfGray(std::uint32_t level) {
  return level * 0x010101;
}

/** The gray of a colour by the eye's weights, in 256ths so that no division is needed. */
constexpr std::uint32_t BrightnessOf(Bgr color) {
  return (77 * RedOf(color) + 151 * GreenOf(color) + 28 * BlueOf(color)) >> 8;
}

/** An 8-bit level at 12 and 16 bits: its bits repeated, so that 0 and 255 become the ends of the range. */
constexpr std::uint32_t Gray12Of(std::uint32_t level) {
  return level << 4 | level >> 4;
}
constexpr std::uint32_t Gray16Of(std::uint32_t level) {
  return level * 257;
}

}  // namespace kscore
