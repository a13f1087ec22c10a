// The boxes of a JP2 file (ISO/IEC 15444-1, annex I).
#pragma once

#include "kscodec/source.h"

#include <algorithm>
#include <cstdint>
#include <optional>

namespace kscodec::jpeg2000 {

/** Where the contents of a box are. */
struct Box {
  std::uint64_t at = 0;
  std::uint64_t bytes = 0;
};

constexpr std::uint32_t BoxType(const char (&name)[5]) {
  std::uint32_t type = 0;
  for (int i = 0; i < 4; ++i) type = type << 8 | static_cast<std::uint8_t>(name[i]);
  return type;
}

inline std::uint32_t U16(Stream bytes, std::uint64_t at) {
  return std::uint32_t{bytes[at]} << 8 | bytes[at + 1];
}

inline std::uint32_t U32(Stream bytes, std::uint64_t at) {
  return U16(bytes, at) << 16 | U16(bytes, at + 2);
}

/** The first box of a type among those in `boxes`, cut at their end; nothing where there is none. */
inline std::optional<Box> FindBox(PieceReader &pieces, const Box &boxes, std::uint32_t type) {
  std::uint64_t at = 0;
  const auto has = [&](std::uint64_t count) { return count <= boxes.bytes - at; };
  while (has(8)) {
    std::uint64_t head = 8;
    const Stream start = pieces.At(boxes.at + at, head);
    const std::uint32_t found = U32(start, 4);
    std::uint64_t length = U32(start, 0);
    if (length == 1) {
      // The length follows the type, in 64 bits.
      head = 16;
      if (!has(head)) return std::nullopt;
      const Stream extended = pieces.At(boxes.at + at, head);
      length = std::uint64_t{U32(extended, 8)} << 32 | U32(extended, 12);
    }
    const std::uint64_t left = boxes.bytes - at;
    if (length == 0) length = left;
    if (length < head) return std::nullopt;
    length = std::min(length, left);
    if (found == type) return Box{boxes.at + at + head, length - head};
    at += length;
  }
  return std::nullopt;
}

}  // namespace kscodec::jpeg2000
