#include "service_test.h"

#include <map>

namespace {

using ToneTest = ServiceTest;
using Pixels = std::vector<uint64_t>;

/** A bitmap one row high with the given pixels. */
void MakeRow(KsLocalBitmap &bitmap, uint32_t bits, const Pixels &pixels, const KsPaletteEntry *palette = nullptr) {
  ASSERT_EQ(Create(bitmap, static_cast<uint32_t>(pixels.size()), 1, bits, palette), SUCCESS);
  Bytes storage(bitmap->bytesPerLine, 0xFF);  // what lies behind the last pixel must not count
  for (uint64_t x = 0; x < pixels.size(); ++x) SetPixel(*bitmap.Get(), storage, x, 0, pixels[x]);
  SetStorage(*bitmap.Get(), storage);
}

Pixels PixelsOf(const KsBitmap &bitmap) {
  Pixels pixels(bitmap.width);
  for (uint64_t x = 0; x < pixels.size(); ++x) pixels[x] = PixelOf(bitmap, StorageOf(bitmap), x, 0);
  return pixels;
}

Palette SmallPalette() {
  Palette palette(256);
  palette[0] = {0, 0, 255, 0};   // red: brightness 76
  palette[1] = {20, 30, 40, 0};  // (77 * 40 + 151 * 30 + 28 * 20) / 256 = 31
  palette[2] = {60, 50, 45, 0};
  return palette;
}

struct HistogramCase {
  uint32_t bits;
  bool palette;
  Pixels pixels;
  std::map<uint32_t, uint64_t> counts;
};

class HistogramTest : public ServiceTestWith<HistogramCase> {};

TEST_P(HistogramTest, CountsWhatPixelsShow) {
  const HistogramCase &histogram = GetParam();
  const Palette palette = SmallPalette();
  KsLocalBitmap bitmap;
  MakeRow(bitmap, histogram.bits, histogram.pixels, histogram.palette ? palette.data() : nullptr);
  std::vector<uint64_t> counters(256, 1);
  ASSERT_EQ(KsHistogram(bitmap.Get(), counters.data(), 256, 0), SUCCESS);
  std::vector<uint64_t> expected(256, 1);
  for (const auto &[level, count] : histogram.counts) expected[level] += count;
  EXPECT_EQ(counters, expected);
}

INSTANTIATE_TEST_SUITE_P(
    Depths, HistogramTest,
    testing::Values(HistogramCase{1, false, {1, 0, 1, 1, 0, 1, 1, 1, 0}, {{0, 3}, {255, 6}}},
                    HistogramCase{1, true, {1, 0, 1}, {{31, 2}, {76, 1}}},
                    HistogramCase{8, false, {19, 19, 20, 0, 19}, {{19, 3}, {20, 1}, {0, 1}}},
                    HistogramCase{8, true, {0, 1, 1, 200}, {{76, 1}, {31, 2}, {0, 1}}},
                    HistogramCase{12, false, {0x13F, 0x140, 0xFFF}, {{0x13, 1}, {0x14, 1}, {255, 1}}},
                    HistogramCase{16, false, {0x13FF, 0x1400, 5}, {{0x13, 1}, {0x14, 1}, {0, 1}}},
                    HistogramCase{24, false, {0xFF0000, 0xFF00, 0xFF}, {{76, 1}, {150, 1}, {27, 1}}},
                    HistogramCase{32, false, {0x99FFFFFF, 0x010A0A0A}, {{255, 1}, {10, 1}}}));

struct ToneCase {
  uint32_t bits;
  Pixels before;
  Pixels after;
};

class SpreadTest : public ServiceTestWith<ToneCase> {};

TEST_P(SpreadTest, SpreadsTheOccupiedRange) {
  KsLocalBitmap bitmap;
  MakeRow(bitmap, GetParam().bits, GetParam().before);
  ASSERT_EQ(KsToneAdjust(bitmap.Get(), 350, 0), SUCCESS);
  EXPECT_EQ(PixelsOf(*bitmap.Get()), GetParam().after);
}

INSTANTIATE_TEST_SUITE_P(
    Depths, SpreadTest,
    testing::Values(ToneCase{1, {0, 1, 0}, {0, 1, 0}}, ToneCase{8, {3, 8, 19, 3, 4}, {0, 79, 255, 0, 15}},
                    ToneCase{8, {7, 7, 7}, {7, 7, 7}}, ToneCase{12, {100, 150, 300}, {0, 1023, 4095}},
                    ToneCase{16, {0, 1, 3, 2}, {0, 21845, 65535, 43690}}, ToneCase{16, {0, 65535, 9}, {0, 65535, 9}},
                    ToneCase{24, {0x0A0B0C, 0x141009}, {0x172E45, 0xFFA200}},
                    ToneCase{32, {0x770A0B0C, 0x88141009}, {0x77172E45, 0x88FFA200}}));

TEST_F(ToneTest, SpreadingAPaletteChangesTheColorsInUseAlone) {
  const Palette palette = SmallPalette();
  KsLocalBitmap bitmap;
  MakeRow(bitmap, 8, {1, 2, 1}, palette.data());
  ASSERT_EQ(KsToneAdjust(bitmap.Get(), 350, 0), SUCCESS);
  EXPECT_EQ(PixelsOf(*bitmap.Get()), (Pixels{1, 2, 1}));
  const Bytes expected = {0, 0, 255, 0, 0, 63, 127, 0, 255, 191, 159, 0, 0};
  EXPECT_EQ(std::memcmp(bitmap->palette, expected.data(), expected.size()), 0);
}

TEST_F(ToneTest, RefusesOtherDepthsAndEmptyBitmaps) {
  uint64_t counters[256] = {};
  KsLocalBitmap bitmap;
  EXPECT_EQ(KsHistogram(bitmap.Get(), counters, 256, 0), ERROR_NO_STORAGE);
  EXPECT_EQ(KsToneAdjust(bitmap.Get(), 350, 0), ERROR_NO_STORAGE);
  ASSERT_EQ(Create(bitmap, 3, 3, 48), SUCCESS);
  EXPECT_EQ(KsHistogram(bitmap.Get(), counters, 256, 0), ERROR_BITS_PER_PIXEL);
  EXPECT_EQ(KsToneAdjust(bitmap.Get(), 350, 0), ERROR_BITS_PER_PIXEL);
  EXPECT_EQ(KsHistogram(bitmap.Get(), counters, 255, 0), ERROR_INVALID_VALUE);
}

class BandsTest : public ServiceTestWith<std::tuple<uint32_t, Bytes>> {};

TEST_P(BandsTest, LastEntryIsRed) {
  const auto &[count, pixel] = GetParam();
  std::vector<KsLocalBitmap> bands(4);
  KsBitmap *array[5] = {};
  for (uint32_t i = 0; i < count; ++i) {
    MakeRow(bands[i], 8, {10 + i, 20 + i, 30 + i});
    array[i] = bands[i].Get();
  }
  KsLocalBitmap target;
  ASSERT_EQ(KsBandsMerge(target.Get(), array, sizeof(KsBitmap), 0), SUCCESS);
  EXPECT_EQ(target->bitsPerPixel, 24u);
  EXPECT_EQ(target->order, uint32_t{KS_ORDER_BGR});
  for (uint32_t x = 0; x < 3; ++x) {
    for (uint32_t channel = 0; channel < 3; ++channel) {
      EXPECT_EQ(target->pixels[x * 3 + channel], pixel[channel] + 10 * x) << x;
    }
  }
}

INSTANTIATE_TEST_SUITE_P(Counts, BandsTest,
                         testing::Values(std::tuple{1u, Bytes{10, 10, 10}}, std::tuple{2u, Bytes{11, 11, 11}},
                                         std::tuple{3u, Bytes{10, 11, 12}}, std::tuple{4u, Bytes{11, 12, 13}}));

TEST_F(ToneTest, MergingRefusesUnequalBandsAndKeepsTheTarget) {
  KsLocalBitmap target;
  KsLocalBitmap band;
  KsLocalBitmap wider;
  KsLocalBitmap deeper;
  ASSERT_TRUE(Create(target, 2, 2, 8) == SUCCESS && Create(band, 4, 3, 8) == SUCCESS);
  ASSERT_TRUE(Create(wider, 5, 3, 8) == SUCCESS && Create(deeper, 4, 3, 16) == SUCCESS);
  KsLocalBitmap empty;
  const auto merge = [&](KsBitmap *second) {
    KsBitmap *bands[] = {band.Get(), second, nullptr};
    return KsBandsMerge(target.Get(), bands, sizeof(KsBitmap), 0);
  };
  EXPECT_EQ(merge(wider.Get()), ERROR_INVALID_VALUE);
  EXPECT_EQ(merge(deeper.Get()), ERROR_BITS_PER_PIXEL);
  EXPECT_EQ(merge(empty.Get()), ERROR_NO_STORAGE);
  EXPECT_EQ(target->width, 2u);
  EXPECT_EQ(merge(nullptr), SUCCESS);
  EXPECT_EQ(target->width, 4u) << "an older bitmap is released";
  KsBitmap *none[] = {nullptr};
  EXPECT_EQ(KsBandsMerge(target.Get(), none, sizeof(KsBitmap), 0), ERROR_INVALID_VALUE);
}

}  // namespace
