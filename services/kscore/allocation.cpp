#include "kscore/allocation.h"

#include "kscore/memory_trace.h"

#include <cstdlib>
#include <limits>

namespace kscore {
namespace {

constexpr std::uint64_t kLargestBlock = std::numeric_limits<std::ptrdiff_t>::max();

bool Overflows(std::uint64_t count, std::uint64_t size) {
  return size != 0 && count > kLargestBlock / size;
}

/** An empty block has an address of its own too, so that null always means that memory ran out. */
std::size_t AtLeastOne(std::uint64_t bytes) {
  return static_cast<std::size_t>(bytes == 0 ? 1 : bytes);
}

void *Traced(std::uint32_t kind, void *block) {
  if (block != nullptr) trace::Taken(kind);
  return block;
}

}  // namespace

void *Allocate(std::uint32_t kind, std::uint64_t count, std::uint64_t size) {
  if (Overflows(count, size) || !trace::MayAllocate()) return nullptr;
  return Traced(kind, std::malloc(AtLeastOne(count * size)));
}

void *AllocateZeroed(std::uint32_t kind, std::uint64_t count, std::uint64_t size) {
  if (Overflows(count, size) || !trace::MayAllocate()) return nullptr;
  return Traced(kind, std::calloc(1, AtLeastOne(count * size)));
}

void *Reallocate(std::uint32_t kind, void *block, std::uint64_t bytes) {
  if (block == nullptr) return Allocate(kind, 1, bytes);
  if (Overflows(1, bytes) || !trace::MayAllocate()) return nullptr;
  return std::realloc(block, AtLeastOne(bytes));
}

void *AllocateGlobal(std::uint64_t bytes) {
  if (Overflows(1, bytes) || !trace::MayAllocate()) return nullptr;
  return std::malloc(AtLeastOne(bytes));
}

void Release(std::uint32_t kind, void *block) {
  if (block != nullptr) trace::GivenBack(kind);
  std::free(block);
}

}  // namespace kscore
