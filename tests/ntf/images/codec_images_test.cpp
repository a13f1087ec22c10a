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

std::uint32_t Level(std::uint32_t x, std::uint32_t y) {
  return (x * 2654435761U ^ y * 2246822519U) * 3266489917U >> 24;
}

TEST(LosslessTiles, OfAnyDepthAreExact) {
  for (const auto &[bits, headerBits] : {std::pair{12U, 12U}, {12U, 16U}, {16U, 16U}}) {
    ImageSpec image{.rows = kTile, .columns = 7 * kTile, .compression = "C5", .bits = headerBits};
    image.blockWidth = kTile;
    image.actualBits = bits;
    for (std::uint32_t tile = 0; tile < 7; ++tile) {
      JpegSpec spec{.width = kTile, .height = kTile, .bits = bits, .predictor = tile + 1};
      spec.sample = [bits = bits, tile](std::uint32_t, std::uint32_t x, std::uint32_t y) {
        // The high bits are what a canvas of 8 bits shows.
        const std::uint32_t level = Level(x + tile * kTile, y);
        return level << (bits - 8) | level >> (16 - bits);
      };
      const Bytes stream = EncodeJpeg(spec);
      image.data.insert(image.data.end(), stream.begin(), stream.end());
    }
    const Composition picture = Compose(NitfBuilder().Image(image), {.bits = 8});
    ASSERT_EQ(picture.status, SUCCESS);
    for (std::uint32_t y = 0; y < kTile; ++y) {
      for (std::uint32_t x = 0; x < 7 * kTile; ++x) ASSERT_EQ(picture.At(y, x), Level(x, y)) << x << ", " << y;
    }
  }
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
