// What the tests of the services share: a fixture that finds leaks, and bitmaps that are read and written pixel by
// pixel in a way of their own.
#pragma once

#include "files.h"
#include "internal/ksclasses_.h"
#include "live_blocks.h"

#include <array>
#include <cstdint>
#include <cstring>
#include <random>
#include <string>
#include <vector>

#include <gtest/gtest.h>

/** Every test has to give back what it took; counted when the fixture's own members are gone, too. */
template <class Base>
class LeakChecked : public Base {
 protected:
  ~LeakChecked() override {
    KsFailAllocationsAfter(-1);
    EXPECT_EQ(LiveBlocks(), liveAtStart) << "live blocks by kind";
  }

 private:
  const std::array<int64_t, KS_MEMORY_KINDS> liveAtStart = LiveBlocks();
};

using ServiceTest = LeakChecked<testing::Test>;
template <class Parameter>
using ServiceTestWith = LeakChecked<testing::TestWithParam<Parameter>>;

using Palette = std::vector<KsPaletteEntry>;

inline int32_t Create(KsLocalBitmap &bitmap, uint32_t width, uint32_t height, uint32_t bits,
                      const KsPaletteEntry *palette = nullptr) {
  return KsBitmapCreate(bitmap.Get(), sizeof(KsBitmap), KS_BITMAP_OWN, width, height, bits, KS_ORDER_BGR, palette, 1,
                        nullptr, 0);
}

inline Bytes RandomBytes(uint64_t count, uint32_t seed) {
  std::mt19937 random(seed);
  Bytes bytes(count);
  for (uint8_t &byte : bytes) byte = static_cast<uint8_t>(random());
  return bytes;
}

inline Palette RandomPalette(uint32_t entries, uint32_t seed) {
  Palette palette(entries);
  const Bytes bytes = RandomBytes(entries * sizeof(KsPaletteEntry), seed);
  std::memcpy(palette.data(), bytes.data(), bytes.size());
  return palette;
}

/** The bytes of a bitmap's storage, padding included. */
inline Bytes StorageOf(const KsBitmap &bitmap) {
  return Bytes(bitmap.pixels, bitmap.pixels + uint64_t{bitmap.bytesPerLine} * bitmap.height);
}

inline void SetStorage(KsBitmap &bitmap, const Bytes &bytes) {
  for (uint32_t row = 0; row < bitmap.height; ++row) {
    KsBitmapPutRow(&bitmap, bytes.data() + uint64_t{row} * bitmap.bytesPerLine, row, bitmap.bytesPerLine);
  }
}

/** Where bit `bit` of pixel `x` lies, the lowest bit being 0: 1-bit pixels run down from the top bit of a byte. */
inline uint64_t BitPosition(uint32_t bits, uint64_t x, uint32_t bit) {
  return bits == 1 ? (x & ~uint64_t{7}) + 7 - (x & 7) : x * bits + bit;
}

/** Reads and writes single pixels of up to 64 bits, bit by bit, in rows laid out like those of `shape`. */
inline uint64_t PixelOf(const KsBitmap &shape, const Bytes &storage, uint64_t x, uint64_t y) {
  uint64_t value = 0;
  for (uint32_t bit = 0; bit < shape.bitsPerPixel; ++bit) {
    const uint64_t place = y * shape.bytesPerLine * 8 + BitPosition(shape.bitsPerPixel, x, bit);
    value |= uint64_t{(storage[place / 8] >> (place % 8)) & 1u} << bit;
  }
  return value;
}

inline void SetPixel(const KsBitmap &shape, Bytes &storage, uint64_t x, uint64_t y, uint64_t value) {
  for (uint32_t bit = 0; bit < shape.bitsPerPixel; ++bit) {
    const uint64_t place = y * shape.bytesPerLine * 8 + BitPosition(shape.bitsPerPixel, x, bit);
    const auto mask = static_cast<uint8_t>(1u << (place % 8));
    const bool set = (value >> bit & 1) != 0;
    storage[place / 8] = static_cast<uint8_t>(set ? storage[place / 8] | mask : storage[place / 8] & ~mask);
  }
}
