#include "kscore/pages.h"

#if defined(__linux__)
#include <sys/mman.h>
#endif

namespace kscore {

#if defined(__linux__)

void ExpectWholeUse(void *storage, std::uint64_t bytes) {
  constexpr std::uintptr_t kLargePage = 2 * 1024 * 1024;
  const auto start = reinterpret_cast<std::uintptr_t>(storage);
  const std::uintptr_t aligned = (start + kLargePage - 1) & ~(kLargePage - 1);
  const std::uintptr_t end = (start + bytes) & ~(kLargePage - 1);
  // A hint only: nothing depends on its success.
  if (aligned < end) madvise(static_cast<char *>(storage) + (aligned - start), end - aligned, MADV_HUGEPAGE);
}

#else

void ExpectWholeUse(void *, std::uint64_t) {}

#endif

}  // namespace kscore
