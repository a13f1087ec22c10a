// Quantisation tables: the order of their numbers, and those of streams without any.
#pragma once

#include <array>
#include <cstdint>

namespace kscodec::jpeg {

/** Columns and rows of a block. */
constexpr std::uint32_t kSide = 8;
constexpr std::uint32_t kCoefficients = kSide * kSide;

/** In zigzag order, as in a stream. */
using QuantisationTable = std::array<std::uint8_t, kCoefficients>;

/** The tables of 8 bits for the quality levels 1 to 5 of the NITF segment (MIL-STD-188-198A). */
extern const std::array<QuantisationTable, 5> kDefaultQuantisation;

/** Where the coefficients of a block lie in its rows, in the order of the stream. */
constexpr std::array<std::uint8_t, kCoefficients> kZigzag = [] {
  std::array<std::uint8_t, kCoefficients> places = {};
  std::uint32_t index = 0;
  for (std::uint32_t diagonal = 0; diagonal < 2 * kSide - 1; ++diagonal) {
    const std::uint32_t first = diagonal < kSide ? 0 : diagonal - kSide + 1;
    for (std::uint32_t step = first; step <= diagonal - first; ++step) {
      const std::uint32_t row = diagonal % 2 == 0 ? diagonal - step : step;
      places[index++] = static_cast<std::uint8_t>(row * kSide + diagonal - row);
    }
  }
  return places;
}();

}  // namespace kscodec::jpeg
