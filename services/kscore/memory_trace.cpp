#include "kscore/memory_trace.h"

#include "kskernel.h"

#ifdef KS_TRACE_MEMORY

#include <array>
#include <atomic>

namespace kscore::trace {
namespace {

constexpr std::int64_t kNeverFail = -1;

std::array<std::atomic<std::int64_t>, KS_MEMORY_KINDS> liveBlocks{};
std::atomic<std::int64_t> successesLeft{kNeverFail};

}  // namespace

void Taken(std::uint32_t kind) {
  if (kind < KS_MEMORY_KINDS) liveBlocks[kind].fetch_add(1, std::memory_order_relaxed);
}

void GivenBack(std::uint32_t kind) {
  if (kind < KS_MEMORY_KINDS) liveBlocks[kind].fetch_sub(1, std::memory_order_relaxed);
}

bool MayAllocate() {
  std::int64_t left = successesLeft.load(std::memory_order_relaxed);
  while (left > 0 && !successesLeft.compare_exchange_weak(left, left - 1, std::memory_order_relaxed)) {
  }
  return left != 0;
}

}  // namespace kscore::trace

int64_t KsLiveBlocks(uint32_t kind) {
  return kind < KS_MEMORY_KINDS ? kscore::trace::liveBlocks[kind].load(std::memory_order_relaxed) : 0;
}

void KsFailAllocationsAfter(int64_t successes) {
  kscore::trace::successesLeft.store(successes < 0 ? kscore::trace::kNeverFail : successes, std::memory_order_relaxed);
}

#else

int64_t KsLiveBlocks(uint32_t) {
  return 0;
}

void KsFailAllocationsAfter(int64_t) {}

#endif
