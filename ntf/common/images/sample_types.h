// The types of samples in memory, and which of them the samples of a file need.
#pragma once

#include <cstdint>

namespace ksntfx {

/** In the order of NitfSampleType. */
enum class SampleType : std::uint8_t {
  Uint8,
  Uint16,
  Uint32,
  Uint64,
  Int8,
  Int16,
  Int32,
  Int64,
  Float32,
  Float64,
  Complex64 /**< two 32-bit numbers: the real part, then the imaginary one */
};

/** Bytes of one sample. */
constexpr std::uint32_t BytesOf(SampleType type) {
  constexpr std::uint8_t kBytes[] = {1, 2, 4, 8, 1, 2, 4, 8, 4, 8, 8};
  return kBytes[static_cast<std::uint8_t>(type)];
}

constexpr bool IsSigned(SampleType type) {
  return type >= SampleType::Int8 && type <= SampleType::Int64;
}

/** The smallest integer type for samples of 1 to 64 bits. */
constexpr SampleType IntegerType(std::uint32_t bits, bool isSigned) {
  const std::uint8_t size = bits <= 8 ? 0 : bits <= 16 ? 1 : bits <= 32 ? 2 : 3;
  return static_cast<SampleType>(size + (isSigned ? 4 : 0));
}

}  // namespace ksntfx
