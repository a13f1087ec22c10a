// Images of real streams, through the codecs: lossless ones in all arrangements of their tiles, deep ones, and pictures
// that were made smaller.
#include "harness.h"
#include "jpeg_builder.h"

#include <algorithm>
#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace {

constexpr std::uint32_t kTile = 40;
constexpr std::uint32_t kAbsent = 0xFFFFFFFF;

std::uint32_t Level(std::uint32_t x, std::uint32_t y) {
  return (x * 2654435761U ^ y * 2246822519U) * 3266489917U >> 24;
}

/** Tile `number` of two across, at `bits` bits. */
Bytes LosslessTile(std::uint32_t number, std::uint32_t bits) {
  JpegSpec spec{.width = kTile, .height = kTile, .bits = bits, .predictor = number % 7 + 1};
  spec.sample = [=](std::uint32_t, std::uint32_t x, std::uint32_t y) {
    const std::uint32_t level = Level(x + number % 2 * kTile, y + number / 2 * kTile);
    // The high bits are what a canvas of 8 bits shows.
    return level << (bits - 8) | level >> (16 - bits);
  };
  return EncodeJpeg(spec);
}

struct Arrangement {
  const char *name;
  std::vector<bool> recorded; /**< empty: no mask table */
  std::uint32_t bits = 8;
  std::uint32_t headerBits = 8;
};

class LosslessTiles : public testing::TestWithParam<Arrangement> {};

TEST_P(LosslessTiles, AreExact) {
  const Arrangement &arrangement = GetParam();
  ImageSpec image{.rows = 2 * kTile, .columns = 2 * kTile, .compression = "C5", .bits = arrangement.headerBits};
  image.blockWidth = image.blockHeight = kTile;
  image.actualBits = arrangement.bits;
  const auto isThere = [&](std::uint32_t tile) { return arrangement.recorded.empty() || arrangement.recorded[tile]; };
  std::vector<std::uint32_t> offsets(4, kAbsent);
  for (std::uint32_t tile = 0; tile < 4; ++tile) {
    if (!isThere(tile)) continue;
    offsets[tile] = static_cast<std::uint32_t>(image.data.size());
    const Bytes stream = LosslessTile(tile, arrangement.bits);
    image.data.insert(image.data.end(), stream.begin(), stream.end());
  }
  if (!arrangement.recorded.empty()) {
    image.compression = "M5";
    image.mask = MaskSpec{offsets, {}, {}};
  }
  const Composition picture = Compose(NitfBuilder().Image(image), {.bits = 8});
  ASSERT_EQ(picture.status, SUCCESS);
  for (std::uint32_t y = 0; y < 2 * kTile; ++y) {
    for (std::uint32_t x = 0; x < 2 * kTile; ++x) {
      ASSERT_EQ(picture.At(y, x), isThere(y / kTile * 2 + x / kTile) ? Level(x, y) : 0) << x << ", " << y;
    }
  }
}

INSTANTIATE_TEST_SUITE_P(Images, LosslessTiles,
                         testing::Values(Arrangement{"searched", {}}, Arrangement{"all", {true, true, true, true}},
                                         Arrangement{"firstAbsent", {false, true, true, true}},
                                         Arrangement{"lastAbsent", {true, false, true, false}},
                                         Arrangement{"deep", {}, 12, 12}, Arrangement{"lessDeepThanTold", {}, 12, 16},
                                         Arrangement{"deepest", {}, 16, 16}),
                         [](const auto &given) { return std::string(given.param.name); });

TEST(LosslessImage, OfOneBlockIsTheStreamItself) {
  ImageSpec image{.rows = kTile, .columns = kTile, .compression = "C5", .data = LosslessTile(0, 8)};
  const Composition picture = Compose(NitfBuilder().Image(image));
  ASSERT_EQ(picture.status, SUCCESS);
  EXPECT_EQ(picture.At(7, 9), Level(9, 7) * 0x010101U);
}

TEST(SmallerImage, CoversTheBlockOfItsHeader) {
  constexpr std::uint32_t kSmall = 8;
  JpegSpec spec{.width = kSmall, .height = kSmall};
  spec.sample = [](std::uint32_t, std::uint32_t x, std::uint32_t y) { return 16 * x + 8 * y; };
  ImageSpec image{.rows = 16, .columns = 32, .compression = "I1", .data = EncodeJpeg(spec)};
  image.blockWidth = 40;
  image.blockHeight = 24;
  image.fields = {{"NBPR", "0001"}, {"NBPC", "0001"}};
  image.locationRow = image.locationColumn = 3;
  const Composition picture = Compose(NitfBuilder().Image(image));
  ASSERT_EQ(picture.status, SUCCESS);
  EXPECT_EQ(picture.width, 43U);
  EXPECT_EQ(picture.height, 27U);
  for (std::uint32_t y = 0; y < 24; ++y) {
    for (std::uint32_t x = 0; x < 40; ++x) {
      // Pixel centres: the outermost ones reach to the edges.
      const double column = std::clamp((x + 0.5) / 5 - 0.5, 0.0, 7.0);
      const double row = std::clamp((y + 0.5) / 3 - 0.5, 0.0, 7.0);
      ASSERT_NEAR(picture.At(y + 3, x + 3) & 0xFF, 16 * column + 8 * row, 0.51) << x << ", " << y;
    }
  }
  // Painted on a part of a canvas, it is enlarged as if it were seen whole.
  image.locationRow = image.locationColumn = -5;
  const Composition cut = Compose(NitfBuilder().Image(image));
  ASSERT_EQ(cut.status, SUCCESS);
  EXPECT_EQ(cut.At(10, 26), picture.At(18, 34));
  EXPECT_EQ(cut.At(0, 0), picture.At(8, 8));
}

}  // namespace
