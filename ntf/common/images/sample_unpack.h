// Samples out of the bits of a file, where they stand in the order of the bits and, of whole bytes, of the bytes.
#pragma once

#include "images/sample_types.h"

#include <cstdint>

namespace ksntfx {

/** Samples that stand at equal distances in bytes of a file. */
struct PackedSamples {
  const std::uint8_t *bytes;
  std::uint64_t firstBit; /**< of the first sample, counted from `bytes` */
  std::uint64_t bitStep;  /**< from one sample to the next */
  std::uint64_t count;
  std::uint32_t bits; /**< of a sample */
};

/** Writes each sample as a value of the machine, `step` bytes apart. */
using UnpackSamples = void (*)(const PackedSamples &packed, std::uint8_t *to, std::int64_t step);

/** The function for samples of `bits` bits, 1 to 64, that become values of `type`. */
UnpackSamples ChooseUnpacking(std::uint32_t bits, SampleType type);

}  // namespace ksntfx
