#include "kskernel.h"

#include <atomic>

namespace {

intptr_t AcceptAll(void *, ...) {
  return 1;
}

}  // namespace

/** What KsFilterEntry jumps to; read by filter_entry.S as a plain pointer. */
extern "C" std::atomic<KsFilterHandler> ksFilterHandler;
std::atomic<KsFilterHandler> ksFilterHandler{AcceptAll};

static_assert(sizeof ksFilterHandler == sizeof(void *) && std::atomic<KsFilterHandler>::is_always_lock_free);

void KsSetFilterHandler(KsFilterHandler handler) {
  ksFilterHandler.store(handler != nullptr ? handler : AcceptAll);
}
