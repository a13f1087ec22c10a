// The bits of a scan (ITU-T T.81, annex F.2.2): codes of Huffman tables, and the numbers that follow them.
#pragma once

#include "kscodec/codec.h"
#include "kscodec/jpeg/huffman.h"

#include <array>
#include <cstdint>

namespace kscodec::jpeg {

/**
 * The bits between two markers. Zeros follow the last one, so that a decoder need not test each symbol, but only now
 * and then whether it read too far.
 */
class BitReader {
 public:
  explicit BitReader(Stream entropy) : at(entropy.data()), end(entropy.data() + entropy.size()) {}

  /** Makes sure of at least 32 bits: a code and the number after it. */
  void Fill() {
    if (count < kSure) FillMore();
  }

  /** The next bits, of which Fill must have made sure; 1 to 32. */
  std::uint32_t Peek(std::uint32_t bits) const { return static_cast<std::uint32_t>(window >> (kWindow - bits)); }

  void Skip(std::uint32_t bits) {
    window <<= bits;
    count -= bits;
  }

  /** A number of `bits` bits, 0 to 16, whose first bit is 0 for negative ones. */
  std::int32_t Number(std::uint32_t bits) {
    if (bits == 0) return 0;
    const auto value = static_cast<std::int32_t>(Peek(bits));
    Skip(bits);
    return value >= 1 << (bits - 1) ? value : value - (1 << bits) + 1;
  }

  /** Whether more bits were read than there are. */
  bool IsBeyondEnd() const { return count < padding; }

  /** Continues after the next restart marker. False where there is none. */
  bool Restart();

  /** What follows the bits: a marker, or nothing. */
  Stream Rest() const { return {at, end}; }

 private:
  static constexpr std::uint32_t kWindow = 64;
  static constexpr std::uint32_t kSure = 32;

  void FillMore();

  const std::uint8_t *at;
  const std::uint8_t *end;
  std::uint64_t window = 0;  /**< the next bit is the top one */
  std::uint32_t count = 0;   /**< bits in the window */
  std::uint64_t padding = 0; /**< zeros that were added at the end */
};

/** A Huffman table made ready for decoding. */
class HuffmanDecoder {
 public:
  /** False where the numbers of codes make no prefix code. */
  bool Build(const HuffmanTable &table);

  /** Reads a symbol, after a Fill; -1, with nothing read, for bits that are no code. */
  int Decode(BitReader &bits) const {
    const Entry entry = lookup[bits.Peek(kLookahead)];
    if (entry.length == 0) return DecodeLong(bits);
    bits.Skip(entry.length);
    return entry.symbol;
  }

 private:
  static constexpr std::uint32_t kLookahead = 9;
  static constexpr std::uint32_t kLongest = 16;

  struct Entry {
    std::uint8_t length = 0; /**< 0: longer than the lookahead, or no code */
    std::uint8_t symbol = 0;
  };

  int DecodeLong(BitReader &bits) const;

  std::array<Entry, 1U << kLookahead> lookup = {};
  std::array<std::uint32_t, kLongest + 1> ends = {};        /**< after the last code of a length, as 16 bits */
  std::array<std::int32_t, kLongest + 1> firstSymbols = {}; /**< place of a length's symbols, less its first code */
  std::array<std::uint8_t, 256> symbols = {};
};

}  // namespace kscodec::jpeg
