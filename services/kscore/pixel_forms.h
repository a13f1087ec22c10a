// The forms of pixels that conversions know, and how a pixel is read from a row of each.
#pragma once

#include "kscore/color.h"

#include <bit>
#include <cstring>

namespace kscore {

static_assert(std::endian::native == std::endian::little, "16-bit grays and 3-byte pixels are read low byte first");

// Each form has `Value`, the pixel with all its bits, and those of up to 256 shown levels have `Level`, which selects
// what the pixel shows.

struct Index1 {
  static constexpr std::uint32_t bits = 1;
  static std::uint32_t Value(const std::uint8_t *row, std::uint64_t x) { return (row[x >> 3] >> (~x & 7)) & 1; }
  static std::uint32_t Level(const std::uint8_t *row, std::uint64_t x) { return Value(row, x); }
};

struct Index8 {
  static constexpr std::uint32_t bits = 8;
  static std::uint32_t Value(const std::uint8_t *row, std::uint64_t x) { return row[x]; }
  static std::uint32_t Level(const std::uint8_t *row, std::uint64_t x) { return Value(row, x); }
};

struct Gray12 {
  static constexpr std::uint32_t bits = 12;
  static std::uint32_t Value(const std::uint8_t *row, std::uint64_t x) {
    const std::uint8_t *const pair = row + (x >> 1) * 3;
    return (x & 1) == 0 ? pair[0] | (pair[1] & 0x0Fu) << 8 : pair[1] >> 4 | std::uint32_t{pair[2]} << 4;
  }
  static std::uint32_t Level(const std::uint8_t *row, std::uint64_t x) { return Value(row, x) >> 4; }
  static void Put(std::uint8_t *row, std::uint64_t x, std::uint32_t value) {
    std::uint8_t *const pair = row + (x >> 1) * 3;
    if ((x & 1) == 0) {
      pair[0] = static_cast<std::uint8_t>(value);
      pair[1] = static_cast<std::uint8_t>((pair[1] & 0xF0u) | value >> 8);
    } else {
      pair[1] = static_cast<std::uint8_t>((pair[1] & 0x0Fu) | (value & 0x0F) << 4);
      pair[2] = static_cast<std::uint8_t>(value >> 4);
    }
  }
};

struct Gray16 {
  static constexpr std::uint32_t bits = 16;
  static std::uint32_t Value(const std::uint8_t *row, std::uint64_t x) {
    std::uint16_t value = 0;
    std::memcpy(&value, row + x * 2, sizeof value);
    return value;
  }
  static std::uint32_t Level(const std::uint8_t *row, std::uint64_t x) { return row[x * 2 + 1]; }
  static void Put(std::uint8_t *row, std::uint64_t x, std::uint32_t value) {
    const auto sample = static_cast<std::uint16_t>(value);
    std::memcpy(row + x * 2, &sample, sizeof sample);
  }
};

struct Bgr24 {
  static constexpr std::uint32_t bits = 24;
  static Bgr Value(const std::uint8_t *row, std::uint64_t x) {
    const std::uint8_t *const pixel = row + x * 3;
    return MakeBgr(pixel[0], pixel[1], pixel[2]);
  }
};

struct Bgr32 {
  static constexpr std::uint32_t bits = 32;
  static Bgr Value(const std::uint8_t *row, std::uint64_t x) {
    Bgr value = 0;
    std::memcpy(&value, row + x * 4, sizeof value);
    return value & 0xFFFFFF;
  }
};

/** Whether a form shows its pixels through a table of up to 256 levels. */
template <class Form>
constexpr bool kHasLevels = requires(const std::uint8_t *row) {
  Form::Level(row, 0);
};

/**
 * Calls `operation` with the form of `bits` bits per pixel and returns its result, or `otherwise` where there is none.
 */
template <class Operation, class Result>
Result WithForm(std::uint32_t bits, const Operation &operation, Result otherwise) {
  switch (bits) {
    case Index1::bits:
      return operation(Index1{});
    case Index8::bits:
      return operation(Index8{});
    case Gray12::bits:
      return operation(Gray12{});
    case Gray16::bits:
      return operation(Gray16{});
    case Bgr24::bits:
      return operation(Bgr24{});
    case Bgr32::bits:
      return operation(Bgr32{});
    default:
      return otherwise;
  }
}

}  // namespace kscore
