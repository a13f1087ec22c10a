// How many bytes an open file has, and has left.
#pragma once

#include "kskernel.h"

#include <algorithm>
#include <cstdint>

namespace ksntfx {

/** The size of a file, 0 where there is none. The position stays. */
inline std::uint64_t FileSize(KsHandle file) {
  const std::int64_t position = KsSeek(file, 0, KS_SEEK_CURRENT);
  const std::int64_t end = KsSeek(file, 0, KS_SEEK_END);
  KsSeek(file, position, KS_SEEK_START);
  return static_cast<std::uint64_t>(std::max<std::int64_t>(end, 0));
}

/** The bytes from a file's position to its end. */
inline std::uint64_t BytesLeft(KsHandle file) {
  const auto position = static_cast<std::uint64_t>(std::max<std::int64_t>(KsSeek(file, 0, KS_SEEK_CURRENT), 0));
  const std::uint64_t size = FileSize(file);
  return size > position ? size - position : 0;
}

/** Moves over `count` items of `size` bytes that the file must hold. Their product may pass 64 bits. */
inline bool SkipBytes(KsHandle file, std::uint64_t count, std::uint64_t size) {
  if (count == 0 || size == 0) return true;
  return count <= BytesLeft(file) / size && KsSeek(file, static_cast<std::int64_t>(count * size), KS_SEEK_CURRENT) >= 0;
}

}  // namespace ksntfx
