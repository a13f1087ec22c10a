// Counts of live blocks by kind, and allocations that fail on purpose. Nothing of it is left in a build without
// tracing.
#pragma once

#include <cstdint>

namespace kscore::trace {

#ifdef KS_TRACE_MEMORY

void Taken(std::uint32_t kind);
void GivenBack(std::uint32_t kind);
/** False where KsFailAllocationsAfter wants this allocation to fail. */
bool MayAllocate();

#else

inline void Taken(std::uint32_t) {}
inline void GivenBack(std::uint32_t) {}
inline bool MayAllocate() {
  return true;
}

#endif

}  // namespace kscore::trace
