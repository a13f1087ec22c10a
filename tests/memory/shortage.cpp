#include "shortage.h"

#include "kskernel.h"

#include <cstdlib>
#include <new>

namespace {

constexpr std::int64_t kEndless = -1;
std::int64_t left = kEndless;

void *Take(std::size_t bytes) {
  if (left == 0) return nullptr;
  if (left > 0) --left;
  return std::malloc(bytes == 0 ? 1 : bytes);
}

}  // namespace

// These stand in the place of the language's own for the whole program and the libraries in it.
void *operator new(std::size_t bytes) {
  void *const block = Take(bytes);
  if (block == nullptr) throw std::bad_alloc();
  return block;
}

void *operator new[](std::size_t bytes) {
  return operator new(bytes);
}

void *operator new(std::size_t bytes, const std::nothrow_t &) noexcept {
  return Take(bytes);
}

void *operator new[](std::size_t bytes, const std::nothrow_t &) noexcept {
  return Take(bytes);
}

void operator delete(void *block) noexcept {
  std::free(block);
}

void operator delete(void *block, std::size_t) noexcept {
  std::free(block);
}

void operator delete[](void *block) noexcept {
  std::free(block);
}

void operator delete[](void *block, std::size_t) noexcept {
  std::free(block);
}

void BeginShortage(MemorySource source, std::int64_t allowed) {
  if (source == MemorySource::Language) {
    left = allowed;
  } else {
    KsFailAllocationsAfter(allowed);
  }
}

bool EndShortage(MemorySource source) {
  if (source == MemorySource::Language) {
    const bool ranOut = left == 0;
    left = kEndless;
    return ranOut;
  }
  void *const probe = KsCalloc(1, 1, __LINE__, __FILE__);
  KsFailAllocationsAfter(kEndless);
  KsFree(probe, __LINE__, __FILE__);
  return probe == nullptr;
}
