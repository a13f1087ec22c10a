// All memory of the framework is allocated here, so that counting and fault injection see every block.
#pragma once

#include "kskernel.h"

#include <cstdint>
#include <utility>

namespace kscore {

/** A block of `count` times `size` bytes, one at least; null where that overflows or memory runs out. */
void *Allocate(std::uint32_t kind, std::uint64_t count, std::uint64_t size);
/** The same, zeroed. */
void *AllocateZeroed(std::uint32_t kind, std::uint64_t count, std::uint64_t size);
/** Resizes `block`, or makes one where it is null. Null leaves `block` as it was. */
void *Reallocate(std::uint32_t kind, void *block, std::uint64_t bytes);
/** A global block, which is counted once its receiver reports it; released by KsFreeGlobal. */
void *AllocateGlobal(std::uint64_t bytes);
/** Releases a block of the functions above. Null is ignored. */
void Release(std::uint32_t kind, void *block);

/** A block for plain records, released at the end of its scope. */
template <class T, std::uint32_t kind>
class Block {
 public:
  Block() = default;
  explicit Block(std::uint64_t count) : items(static_cast<T *>(AllocateZeroed(kind, count, sizeof(T)))) {}
  Block(const Block &) = delete;
  Block &operator=(const Block &) = delete;
  Block(Block &&other) noexcept : items(other.Release()) {}
  Block &operator=(Block &&other) noexcept {
    std::swap(items, other.items);
    return *this;
  }
  ~Block() { kscore::Release(kind, items); }

  T *Get() const { return items; }
  T &operator[](std::uint64_t index) const { return items[index]; }
  explicit operator bool() const { return items != nullptr; }
  T *Release() { return std::exchange(items, nullptr); }

 private:
  T *items = nullptr;
};

}  // namespace kscore
