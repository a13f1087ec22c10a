// Where the segments of a file are, in 64 bits.
#pragma once

#include "table/segment_kind.h"

#include <array>
#include <cstdint>
#include <vector>

namespace ksntfx {

/** One segment: positions and lengths in bytes, as the file header declares them. */
struct SegmentSpan {
  std::uint64_t subheader;
  std::uint64_t subheaderBytes;
  std::uint64_t data;
  std::uint64_t dataBytes;
  bool hasSubheader = false; /**< it was read to its end */

  std::uint64_t End() const { return data + dataBytes; }
};

/** All segments of a file but the reserved ones. */
struct SegmentSpans {
  std::array<std::vector<SegmentSpan>, std::size(kSegmentKinds)> kinds;

  std::vector<SegmentSpan> &Of(SegmentKind kind) { return kinds[static_cast<std::size_t>(kind)]; }
  const std::vector<SegmentSpan> &Of(SegmentKind kind) const { return kinds[static_cast<std::size_t>(kind)]; }
};

}  // namespace ksntfx
