#include "images/tile_search.h"

#include <array>
#include <cstring>

namespace ksntfx {

namespace {

constexpr std::uint32_t kWindow = 1024;

/** Windows overlap by the length of a mark. */
constexpr std::uint32_t kStep = kWindow - 3;

using Window = std::array<std::uint8_t, kWindow>;

bool IsMark(const Window &window, std::uint32_t at) {
  return window[at] == 0xFF && window[at + 1] == 0xD8 && window[at + 2] == 0xFF;
}

}  // namespace

Status TileCursor::Next(bool isLast, bool endIsLast, std::int64_t *offset, std::uint32_t *size) {
  if (isLast) {
    TakeLast(offset, size);
    return SUCCESS;
  }
  // Many tiles may be missing: what the search for one has found counts for all of them.
  const Status status = failedAt == position ? Status(ERROR_FILE_READ) : FindEnd(size);
  if (status != SUCCESS) {
    failedAt = position;
    if (!endIsLast) return status;
    TakeLast(offset, size);
    return SUCCESS;
  }
  *offset = std::int64_t{source.image->maskDataOffset} + position;
  remaining -= *size;
  position += *size;
  return SUCCESS;
}

/** A search that finds nothing leaves a tile of no bytes, which is then no stream of any kind. */
void TileCursor::TakeLast(std::int64_t *offset, std::uint32_t *size) {
  if (!lastSize) lastSize = FindLastTile(source);
  *size = *lastSize;
  *offset = std::int64_t{source.dataLength} - *size;
  position = source.dataLength;
}

/** The number of bytes up to the next tile's mark. A window must be whole: a mark stands where more data follow. */
Status TileCursor::FindEnd(std::uint32_t *size) {
  Window window;
  const std::int64_t start = std::int64_t{source.image->maskDataOffset} + position;
  for (std::uint64_t passed = 0;; passed += kStep) {
    if (source.Read(start + static_cast<std::int64_t>(passed), window.data(), window.size()) != SUCCESS)
      return ERROR_FILE_READ;
    // The tile's own mark is its first byte.
    for (std::uint32_t at = 1; at <= kStep; ++at) {
      const void *const prefix = std::memchr(window.data() + at, 0xFF, kStep + 1 - at);
      if (prefix == nullptr) break;
      at = static_cast<std::uint32_t>(static_cast<const std::uint8_t *>(prefix) - window.data());
      if (!IsMark(window, at) || at + 1 >= remaining) continue;
      // No tile is longer than the 32 bits of its image's length.
      if (passed + at > UINT32_MAX) return ERROR_FILE_READ;
      *size = static_cast<std::uint32_t>(passed + at);
      return SUCCESS;
    }
  }
}

std::uint32_t FindLastTile(const ImageSource &source) {
  Window window;
  for (std::uint64_t passed = 0; source.dataLength > passed + kWindow; passed += kWindow) {
    const auto start = static_cast<std::int64_t>(source.dataLength - passed - kWindow);
    if (source.Read(start, window.data(), window.size()) != SUCCESS) return 0;
    for (std::uint32_t at = kStep; at >= 1; --at) {
      if (IsMark(window, at)) return static_cast<std::uint32_t>(passed + kWindow - at);
    }
  }
  return 0;
}

}  // namespace ksntfx
