// What the framework has given out.
#pragma once

#include "kskernel.h"

#include <array>
#include <cstdint>

/** Live blocks of all kinds, to compare before and after. */
inline std::array<std::int64_t, KS_MEMORY_KINDS> LiveBlocks() {
  std::array<std::int64_t, KS_MEMORY_KINDS> counts{};
  for (std::uint32_t kind = 0; kind < KS_MEMORY_KINDS; ++kind) counts[kind] = KsLiveBlocks(kind);
  return counts;
}
