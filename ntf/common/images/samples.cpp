#include "images/samples.h"

#include "table/big_endian.h"

#include <cstring>

namespace ksntfx {

namespace {

/** The greatest number of `bits` bits, 0 to 32. */
constexpr std::uint32_t FullScale(std::uint32_t bits) {
  return static_cast<std::uint32_t>((std::uint64_t{1} << bits) - 1);
}

bool IsScaled(std::uint32_t bits, std::uint32_t actualBits) {
  return actualBits != bits && actualBits >= 9 && actualBits <= 16;
}

void PutLittleEndian16(std::uint8_t *bytes, std::uint32_t value) {
  bytes[0] = static_cast<std::uint8_t>(value);
  bytes[1] = static_cast<std::uint8_t>(value >> 8);
}

/**
 * Two big-endian samples of 12 bits in three bytes become two little-endian ones. A last single one fills two bytes.
 */
void Repack12(const std::uint8_t *samples, std::uint8_t *row, std::uint64_t bytes, std::uint32_t bits,
              std::uint32_t actualBits, const SampleRange &) {
  const bool scaled = IsScaled(bits, actualBits);
  const std::uint32_t divisor = scaled ? FullScale(actualBits) : 1;
  const std::uint32_t factor = scaled ? FullScale(bits) : 1;
  std::uint64_t at = 0;
  for (; at + 1 < bytes; at += 3) {
    const bool pair = at + 2 < bytes;
    std::uint32_t first = std::uint32_t{BigEndian16(samples + at)} >> 4;
    std::uint32_t second = (samples[at + 1] & 0x0FU) << 8 | (pair ? samples[at + 2] : 0U);
    first = first * factor / divisor & 0xFFF;
    second = second * factor / divisor & 0xFFF;
    row[at] = static_cast<std::uint8_t>(first);
    row[at + 1] = static_cast<std::uint8_t>(first >> 8 | (second & 0x0F) << 4);
    if (pair) row[at + 2] = static_cast<std::uint8_t>(second >> 4);
  }
  if (at < bytes) row[at] = samples[at];
}

void Swap16(const std::uint8_t *samples, std::uint8_t *row, std::uint64_t bytes, std::uint32_t, std::uint32_t,
            const SampleRange &) {
  constexpr std::uint64_t kLowBytes = 0x00FF00FF00FF00FF;
  std::uint64_t at = 0;
  for (; at + sizeof(std::uint64_t) <= bytes; at += sizeof(std::uint64_t)) {
    std::uint64_t four = 0;
    std::memcpy(&four, samples + at, sizeof four);
    four = (four & kLowBytes) << 8 | (four >> 8 & kLowBytes);
    std::memcpy(row + at, &four, sizeof four);
  }
  for (; at + 1 < bytes; at += 2) PutLittleEndian16(row + at, BigEndian16(samples + at));
  if (at < bytes) row[at] = samples[at];
}

void Scale16(const std::uint8_t *samples, std::uint8_t *row, std::uint64_t bytes, std::uint32_t bits,
             std::uint32_t actualBits, const SampleRange &) {
  const auto factor = static_cast<std::int32_t>(FullScale(bits) & 0xFFFF);
  const auto divisor = static_cast<std::int32_t>(FullScale(actualBits) & 0xFFFF);
  std::uint64_t at = 0;
  for (; at + 1 < bytes; at += 2) {
    // Signed 32-bit arithmetic that wraps: a sample above its own scale must not stop the picture.
    const std::uint32_t product = std::uint32_t{BigEndian16(samples + at)} * static_cast<std::uint32_t>(factor);
    PutLittleEndian16(row + at, static_cast<std::uint32_t>(static_cast<std::int32_t>(product) / divisor));
  }
  if (at < bytes) row[at] = samples[at];
}

void Spread32(const std::uint8_t *samples, std::uint8_t *row, std::uint64_t bytes, std::uint32_t, std::uint32_t,
              const SampleRange &range) {
  const double minimum = range.minimum;
  const auto extent =
      static_cast<std::int32_t>(static_cast<std::uint32_t>(range.maximum) - static_cast<std::uint32_t>(range.minimum));
  for (std::uint64_t at = 0; at < bytes; ++at) {
    const double value = BigEndian32(samples + 4 * at);
    const double level = extent == 0 ? 0 : (value * 255.0 - minimum * 255.0) / extent;
    row[at] = static_cast<std::uint8_t>(static_cast<std::int64_t>(level));
  }
}

}  // namespace

SampleConversion ChooseConversion(std::uint32_t bits, std::uint32_t actualBits, bool isSingleBlock) {
  if (bits == 12 && (isSingleBlock || actualBits == bits)) return Repack12;
  if (bits >= 17 && bits <= 32) return Spread32;
  if (bits == 16 && actualBits == 16) return Swap16;
  return IsScaled(bits, actualBits) ? Scale16 : nullptr;
}

}  // namespace ksntfx
