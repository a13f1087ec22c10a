#include "kscore/allocation.h"
#include "kscore/memory_trace.h"

// Every call passes its source line and file, for an allocator that traces them; this one only counts.

void *KsCalloc(uint64_t count, uint64_t size, int32_t, const char *) {
  return kscore::AllocateZeroed(KS_MEMORY_BLOCK, count, size);
}

void *KsAllocBlock(uint64_t count, uint64_t size, int32_t, const char *) {
  return kscore::Allocate(KS_MEMORY_BLOCK, count, size);
}

void *KsRealloc(void *block, uint64_t bytes, int32_t, const char *) {
  return kscore::Reallocate(KS_MEMORY_BLOCK, block, bytes);
}

void KsFree(void *block, int32_t, const char *) {
  kscore::Release(KS_MEMORY_BLOCK, block);
}

void KsFreeGlobal(void *handle, int32_t, const char *) {
  kscore::Release(KS_MEMORY_GLOBAL, handle);
}

void KsTrackAlloc(uint32_t kind, const void *block, int32_t, const char *) {
  if (block != nullptr) kscore::trace::Taken(kind);
}

void KsTrackFree(uint32_t kind, const void *block, int32_t, const char *) {
  if (block != nullptr) kscore::trace::GivenBack(kind);
}
