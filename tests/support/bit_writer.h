// Binary numbers as the format writes them.
#pragma once

#include <cstdint>
#include <vector>

/** Appends a big-endian number of `width` bytes. */
inline void PutBigEndian(std::vector<std::uint8_t> &bytes, std::uint64_t value, int width) {
  for (int shift = 8 * (width - 1); shift >= 0; shift -= 8) bytes.push_back(static_cast<std::uint8_t>(value >> shift));
}

/** A run of bits, the first one in the top bit of the first byte. */
class BitWriter {
 public:
  explicit BitWriter(std::vector<std::uint8_t> &out) : bytes(out) {}
  void Put(std::uint32_t value, std::uint32_t bits) {
    for (std::uint32_t bit = bits; bit-- > 0;) {
      if (used == 0) bytes.push_back(0);
      bytes.back() = static_cast<std::uint8_t>(bytes.back() | ((value >> bit & 1U) << (7 - used)));
      used = (used + 1) % 8;
    }
  }
  void FillByte() { used = 0; }

 private:
  std::vector<std::uint8_t> &bytes;
  unsigned used = 0;
};
