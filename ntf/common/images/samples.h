// Samples as they stand in the file, turned into samples as bitmaps hold them.
#pragma once

#include <cstdint>

namespace ksntfx {

/** Least and greatest sample of an image of 17 to 32 bits, as signed 32-bit words. */
struct SampleRange {
  std::int32_t minimum = 0;
  std::int32_t maximum = 0;
};

/** What is done to each row of samples. Chosen once for an image. */
using SampleConversion = void (*)(const std::uint8_t *samples, std::uint8_t *row, std::uint64_t bytes,
                                  std::uint32_t bits, std::uint32_t actualBits, const SampleRange &range);

/**
 * The conversion, which may be in place, for samples of `bits` (NBPP) of which `actualBits` (ABPP) count, or null where
 * they stay as they are:
 *   - 12 bits in a single block, or with an ABPP of 12: repacked from big-endian pairs to the bitmap's order, scaled to
 *     12 bits where ABPP is another of 9 to 16
 *   - 16 bits: to the machine's order where ABPP is 16 too, scaled to 16 bits where it is 9 to 15
 *   - 17 to 32 bits: four bytes each, spread between minimum and maximum to one byte; `bytes` counts those produced
 *   - others with an ABPP of 9 to 16: as pairs of bytes, scaled from ABPP to NBPP bits
 */
SampleConversion ChooseConversion(std::uint32_t bits, std::uint32_t actualBits, bool isSingleBlock);

}  // namespace ksntfx
