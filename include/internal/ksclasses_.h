// Scoped owners of the framework's objects, so that functions can return early.
#pragma once

#include "kskernel.h"

#include <cstdint>
#include <utility>

/** Frees a block of the framework and sets its pointer to null. Null is ignored. */
template <class T>
void KsFreeAndClear(T *&block) {
  if (block != nullptr) KsFree(block, __LINE__, __FILE__);
  block = nullptr;
}

/** An array of zeroed items from KsCalloc. All bytes 0 must be a valid `T`. */
template <class T>
class KsArray {
 public:
  KsArray() = default;
  KsArray(const KsArray &) = delete;
  KsArray &operator=(const KsArray &) = delete;
  KsArray(KsArray &&other) noexcept : items(std::exchange(other.items, nullptr)) {}
  KsArray &operator=(KsArray &&other) noexcept {
    if (this != &other) {
      Free();
      items = std::exchange(other.items, nullptr);
    }
    return *this;
  }
  ~KsArray() { Free(); }

  /** Replaces the array by `count` zeroed items. Returns false if out of memory. */
  [[nodiscard]] bool Allocate(std::uint64_t count) {
    Free();
    items = static_cast<T *>(KsCalloc(count, sizeof(T), __LINE__, __FILE__));
    return items != nullptr;
  }
  /** Passes ownership of the block to the caller, who frees it with KsFree. */
  T *Release() { return std::exchange(items, nullptr); }

  T *Get() const { return items; }
  T &operator[](std::uint64_t index) const { return items[index]; }
  explicit operator bool() const { return items != nullptr; }

 private:
  void Free() { KsFreeAndClear(items); }

  T *items = nullptr;
};

/** A bitmap that is initially empty and freed at the end of its scope. */
class KsLocalBitmap {
 public:
  KsLocalBitmap() { KsBitmapInit(&bitmap, sizeof bitmap, 0, 0, 0); }
  KsLocalBitmap(const KsLocalBitmap &) = delete;
  KsLocalBitmap &operator=(const KsLocalBitmap &) = delete;
  ~KsLocalBitmap() { KsBitmapFree(&bitmap); }

  KsBitmap *Get() { return &bitmap; }
  KsBitmap *operator->() { return &bitmap; }
  const KsBitmap *operator->() const { return &bitmap; }

 private:
  KsBitmap bitmap;
};

/** A drawing that is initially empty and freed at the end of its scope. */
class KsLocalVector {
 public:
  KsLocalVector() { KsVectorInit(&vector); }
  KsLocalVector(const KsLocalVector &) = delete;
  KsLocalVector &operator=(const KsLocalVector &) = delete;
  ~KsLocalVector() { KsVectorFree(&vector); }

  KsVector *Get() { return &vector; }

 private:
  KsVector vector = {};
};

/** A device context on a bitmap; null if it could not be created. */
class KsLocalContext {
 public:
  KsLocalContext() = default;
  explicit KsLocalContext(KsBitmap *bitmap) : context(KsBitmapDC(bitmap)) {}
  KsLocalContext(const KsLocalContext &) = delete;
  KsLocalContext &operator=(const KsLocalContext &) = delete;
  ~KsLocalContext() {
    if (context != nullptr) KsBitmapDCFree(context);
  }

  KsDeviceContext *Get() const { return context; }

 private:
  KsDeviceContext *context = nullptr;
};
