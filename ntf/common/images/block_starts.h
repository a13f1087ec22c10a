// What readers of blocks share: the starts of a row of blocks, and a buffer that grows.
#pragma once

#include "images/block_grid.h"
#include "internal/ksclasses_.h"
#include "internal/status.h"

namespace ksntfx {

/**
 * The bytes that are best read at once: little enough to stay in a processor's cache while they are converted and
 * placed, and enough for the rows of a block to be read past the windows of small reads.
 */
constexpr std::uint64_t kStripBytes = 512 * 1024;

/** The starts of the blocks of one row of blocks, which are found in the order of the blocks. */
class BlockStarts {
 public:
  explicit BlockStarts(const BlockGrid &grid) : across(grid.across) {}

  /** Finds those of the row of `block`. SUCCESS or ERROR_NO_MEMORY. */
  template <class Places>
  Status Locate(Places &places, std::uint64_t block) {
    const std::uint64_t row = block / across;
    if (row == located) return SUCCESS;
    if (!starts && !starts.Allocate(across)) return ERROR_NO_MEMORY;
    for (std::uint32_t column = 0; column < across; ++column) starts[column] = places.StartOf(row * across + column);
    located = row;
    return SUCCESS;
  }

  /** The start of a block of that row. */
  std::int64_t Of(std::uint64_t block) const { return starts[block % across]; }

 private:
  std::uint32_t across;
  std::uint64_t located = UINT64_MAX;
  KsArray<std::int64_t> starts;
};

/** A buffer that is as large as what was last asked for, or larger. */
class RowBuffer {
 public:
  /** Null without memory. */
  std::uint8_t *AtLeast(std::uint64_t count) {
    if (count > held) held = bytes.Allocate(count) ? count : 0;
    return bytes.Get();
  }

 private:
  KsArray<std::uint8_t> bytes;
  std::uint64_t held = 0;
};

}  // namespace ksntfx
