#include "images/sample_unpack.h"

#include <bit>
#include <cstring>

namespace ksntfx {

namespace {

template <class Word>
Word ToMachine(Word word) {
  if constexpr (sizeof(Word) == 1 || std::endian::native == std::endian::big) {
    return word;
  } else if constexpr (sizeof(Word) == 2) {
    return __builtin_bswap16(word);
  } else if constexpr (sizeof(Word) == 4) {
    return __builtin_bswap32(word);
  } else {
    return __builtin_bswap64(word);
  }
}

template <class Word>
void UnpackWord(const std::uint8_t *from, std::uint8_t *to) {
  Word word;
  std::memcpy(&word, from, sizeof word);
  word = ToMachine(word);
  std::memcpy(to, &word, sizeof word);
}

/** Whole bytes. `pieces` words make a sample, in their order: those of a complex number are two. */
template <class Word, int pieces>
void UnpackWords(const PackedSamples &packed, std::uint8_t *to, std::int64_t step) {
  constexpr std::uint64_t kBytes = sizeof(Word) * pieces;
  const std::uint8_t *from = packed.bytes + packed.firstBit / 8;
  const std::uint64_t distance = packed.bitStep / 8;
  if (distance == kBytes && step == static_cast<std::int64_t>(kBytes)) {
    if constexpr (sizeof(Word) == 1) {
      std::memcpy(to, from, packed.count);
    } else {
      for (std::uint64_t at = 0; at < packed.count * kBytes; at += sizeof(Word)) UnpackWord<Word>(from + at, to + at);
    }
    return;
  }
  for (std::uint64_t sample = 0; sample < packed.count; ++sample, from += distance, to += step) {
    for (std::uint64_t at = 0; at < kBytes; at += sizeof(Word)) UnpackWord<Word>(from + at, to + at);
  }
}

std::uint64_t TakeBits(const std::uint8_t *bytes, std::uint64_t firstBit, std::uint32_t bits) {
  const std::uint8_t *byte = bytes + firstBit / 8;
  auto left = static_cast<std::uint32_t>(8 - firstBit % 8);
  std::uint64_t value = *byte & (0xFFU >> (8 - left));
  if (bits <= left) return value >> (left - bits);
  for (bits -= left; bits >= 8; bits -= 8) value = value << 8 | *++byte;
  return bits == 0 ? value : value << bits | *++byte >> (8 - bits);
}

/** Any number of bits, which may begin within a byte. The sign of a signed type is that of its first bit. */
template <class Value, bool isSigned>
void UnpackBitwise(const PackedSamples &packed, std::uint8_t *to, std::int64_t step) {
  const std::uint32_t unused = 64 - packed.bits;
  std::uint64_t bit = packed.firstBit;
  for (std::uint64_t sample = 0; sample < packed.count; ++sample, bit += packed.bitStep, to += step) {
    std::uint64_t value = TakeBits(packed.bytes, bit, packed.bits);
    if constexpr (isSigned) value = static_cast<std::uint64_t>(static_cast<std::int64_t>(value << unused) >> unused);
    const auto stored = static_cast<Value>(value);
    std::memcpy(to, &stored, sizeof stored);
  }
}

template <bool isSigned>
UnpackSamples ChooseBitwise(std::uint32_t bytes) {
  switch (bytes) {
    case 1:
      return UnpackBitwise<std::uint8_t, isSigned>;
    case 2:
      return UnpackBitwise<std::uint16_t, isSigned>;
    case 4:
      return UnpackBitwise<std::uint32_t, isSigned>;
    default:
      return UnpackBitwise<std::uint64_t, isSigned>;
  }
}

}  // namespace

UnpackSamples ChooseUnpacking(std::uint32_t bits, SampleType type) {
  const std::uint32_t bytes = BytesOf(type);
  if (bits != bytes * 8) return IsSigned(type) ? ChooseBitwise<true>(bytes) : ChooseBitwise<false>(bytes);
  if (type == SampleType::Complex64) return UnpackWords<std::uint32_t, 2>;
  switch (bytes) {
    case 1:
      return UnpackWords<std::uint8_t, 1>;
    case 2:
      return UnpackWords<std::uint16_t, 1>;
    case 4:
      return UnpackWords<std::uint32_t, 1>;
    default:
      return UnpackWords<std::uint64_t, 1>;
  }
}

}  // namespace ksntfx
