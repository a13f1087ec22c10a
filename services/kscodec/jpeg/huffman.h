// The Huffman tables of streams without any: those of ITU-T T.81, annex K.3.
#pragma once

#include <array>
#include <cstdint>
#include <span>

namespace kscodec::jpeg {

struct HuffmanTable {
  std::array<std::uint8_t, 16> counts; /**< codes of 1 to 16 bits */
  std::span<const std::uint8_t> symbols;
};

/** For differences of DC coefficients: luminance, chrominance. */
extern const std::array<HuffmanTable, 2> kStandardDc;
/** For AC coefficients, likewise. */
extern const std::array<HuffmanTable, 2> kStandardAc;

}  // namespace kscodec::jpeg
