#include "ksblend/bit_copy.h"

#include <algorithm>
#include <cstring>

namespace ksblend {
namespace {

// An order says how `count` (1 to 8) bits are found in two bytes from bit `bit` (0 to 7) of the first on, and where
// they lie in one byte.

struct TopFirst {
  static std::uint32_t Take(std::uint32_t first, std::uint32_t second, std::uint32_t bit, std::uint32_t count) {
    return (first << 8 | second) >> (16 - bit - count);
  }
  static std::uint32_t ShiftIn(std::uint32_t bit, std::uint32_t count) { return 8 - bit - count; }
};

struct LowFirst {
  static std::uint32_t Take(std::uint32_t first, std::uint32_t second, std::uint32_t bit, std::uint32_t) {
    return (first | second << 8) >> bit;
  }
  static std::uint32_t ShiftIn(std::uint32_t bit, std::uint32_t) { return bit; }
};

/** Copies up to 8 bits that lie in one byte of the target. The source's second byte is read only if bits lie in it. */
template <class Order>
void CopyWithinByte(const std::uint8_t *source, std::uint64_t sourceBit, std::uint8_t *target, std::uint64_t targetBit,
                    std::uint32_t count) {
  const std::uint8_t *const from = source + sourceBit / 8;
  const auto bit = static_cast<std::uint32_t>(sourceBit % 8);
  const std::uint32_t second = bit + count > 8 ? from[1] : 0;
  const std::uint32_t shift = Order::ShiftIn(static_cast<std::uint32_t>(targetBit % 8), count);
  const std::uint32_t mask = ((1u << count) - 1) << shift;
  std::uint8_t &to = target[targetBit / 8];
  to = static_cast<std::uint8_t>((to & ~mask) | (Order::Take(from[0], second, bit, count) << shift & mask));
}

template <class Order>
void CopyWholeBytes(const std::uint8_t *from, std::uint32_t bit, std::uint8_t *to, std::uint64_t bytes) {
  if (bit == 0) {
    std::memmove(to, from, bytes);
    return;
  }
  for (std::uint64_t i = 0; i < bytes; ++i) {
    to[i] = static_cast<std::uint8_t>(Order::Take(from[i], from[i + 1], bit, 8));
  }
}

template <class Order>
void CopyBits(const std::uint8_t *source, std::uint64_t sourceBit, std::uint8_t *target, std::uint64_t targetBit,
              std::uint64_t count) {
  const auto head = static_cast<std::uint32_t>(std::min(count, (8 - targetBit % 8) % 8));
  if (head != 0) CopyWithinByte<Order>(source, sourceBit, target, targetBit, head);
  sourceBit += head;
  targetBit += head;
  const std::uint64_t bytes = (count - head) / 8;
  CopyWholeBytes<Order>(source + sourceBit / 8, static_cast<std::uint32_t>(sourceBit % 8), target + targetBit / 8,
                        bytes);
  const auto tail = static_cast<std::uint32_t>((count - head) % 8);
  if (tail != 0) CopyWithinByte<Order>(source, sourceBit + bytes * 8, target, targetBit + bytes * 8, tail);
}

}  // namespace

void CopyBitsTopFirst(const std::uint8_t *source, std::uint64_t sourceBit, std::uint8_t *target,
                      std::uint64_t targetBit, std::uint64_t count) {
  CopyBits<TopFirst>(source, sourceBit, target, targetBit, count);
}

void CopyBitsLowFirst(const std::uint8_t *source, std::uint64_t sourceBit, std::uint8_t *target,
                      std::uint64_t targetBit, std::uint64_t count) {
  CopyBits<LowFirst>(source, sourceBit, target, targetBit, count);
}

}  // namespace ksblend
