// Where samples are in the data and what is shown of them: masks, tags of bands, depths, packed blocks and palettes.
// Expected pixels are worked out by hand, or by a model that reads the bytes one by one.
#include "decoded.h"
#include "headers/mask_table.h"
#include "images/band_choice.h"

#include <array>
#include <string>

#include <gtest/gtest.h>

using namespace ksntfx;

namespace {

/** A sample that differs from its neighbours in every direction and band. */
std::uint32_t Sample8(std::uint32_t band, std::uint32_t row, std::uint32_t column) {
  return (band * 85 + row * 13 + column * 3) & 0xFF;
}

std::uint32_t Gray(std::uint32_t level) {
  return level * 0x010101;
}

// ---- masks --------------------------------------------------------------------------------------------------------

/** 3 x 2 blocks of 3 x 2 pixels in three bands, at the places that the tables tell. */
struct MaskCase {
  const char *name;
  char mode;
  std::vector<std::uint32_t> blocks; /**< BMR, with `kNone` for an absent block */
  std::vector<std::uint32_t> pads;   /**< TMR */
  std::uint32_t bandBytes = 6;       /**< from one band of a block to the next */
};

constexpr std::uint32_t kNone = kNotRecorded;
constexpr std::size_t kDataBytes = 400;

class Masks : public testing::TestWithParam<MaskCase> {};

TEST_P(Masks, TellWhereBlocksAre) {
  const MaskCase &given = GetParam();
  ImageSpec image{.rows = 4, .columns = 9, .representation = "RGB", .compression = "NM", .mode = given.mode};
  image.bands = {{"R", 0, {}}, {"G", 0, {}}, {"B", 0, {}}};
  image.blockWidth = 3;
  image.blockHeight = 2;
  image.mask = MaskSpec{given.blocks, given.pads, {}};
  // Each band has entries of its own, of which those of the first are in use.
  for (auto *table : {&image.mask->blockOffsets, &image.mask->padOffsets}) {
    table->resize(table->empty() ? 0 : 18, 7);
  }
  for (std::size_t at = 0; at < kDataBytes; ++at) image.data.push_back(static_cast<std::uint8_t>(at * at * 29 >> 3));
  const Composition picture = Compose(NitfBuilder().Image(image));
  ASSERT_EQ(picture.status, SUCCESS);
  const bool isPixels = given.mode == 'P';
  for (std::uint32_t row = 0; row < 4; ++row) {
    for (std::uint32_t column = 0; column < 9; ++column) {
      const std::uint32_t block = row / 2 * 3 + column / 3;
      std::uint32_t start = block * (given.mode == 'S' ? 6 : 18);
      if (!given.pads.empty() && given.pads[block] != kNone) start = given.pads[block];
      if (!given.blocks.empty()) start = given.blocks[block];
      // In mode P the last row of a block repeats the one before it.
      const std::uint32_t pixel = (isPixels ? 0 : row % 2) * 3 + column % 3;
      std::uint32_t color = 0;
      for (std::uint32_t band = 0; band < 3 && start != kNone; ++band) {
        const std::uint32_t at = start + (isPixels ? pixel * 3 + band : band * given.bandBytes + pixel);
        color = color << 8 | image.data[at];
      }
      ASSERT_EQ(picture.At(row, column), color) << row << ", " << column;
    }
  }
}

// In mode S the bands are as far apart as the rounds of two blocks that hold the first and the last recorded one, cut
// to their places within a round.
INSTANTIATE_TEST_SUITE_P(
    ImageModes, Masks,
    testing::Values(MaskCase{"B", 'B', {18, 0, kNone, 40, 60, 300}, {}},
                    MaskCase{"BByPads", 'B', {}, {5, kNone, 100, kNone, 0, 200}},
                    MaskCase{"BByBoth", 'B', {18, 0, kNone, 40, 60, 300}, {90, 91, 92, 93, kNone, 95}},
                    MaskCase{"P", 'P', {18, 0, kNone, 40, 60, 300}, {}},
                    MaskCase{"PByPads", 'P', {}, {5, kNone, 100, kNone, 0, 200}},
                    MaskCase{"SOfAll", 'S', {6, 0, 12, 30, 24, 18}, {}, 6 * 6},
                    MaskCase{"SWithAHole", 'S', {6, 0, kNone, 30, 24, 18}, {}, 6 * 6},
                    MaskCase{"SWithoutTheFirst", 'S', {kNone, 0, 12, 30, 24, 18}, {}, 3 * 6},
                    MaskCase{"SWithoutTheFirstRound", 'S', {kNone, kNone, 12, 30, 24, 18}, {}, 4 * 6},
                    MaskCase{"SWithoutTheLast", 'S', {6, 0, 12, 30, 24, kNone}, {}, 3 * 6},
                    MaskCase{"SOfOneBlock", 'S', {kNone, kNone, kNone, 30, kNone, kNone}, {}, 6},
                    MaskCase{"SByPads", 'S', {}, {5, kNone, 100, kNone, 0, 200}, 6 * 6}),
    [](const auto &given) { return std::string(given.param.name); });

TEST(Masks, OfOneBandDecidePresenceAndTheBlocksFollowEachOther) {
  ImageSpec image{.rows = 2, .columns = 8, .compression = "NM", .blockWidth = 2};
  // Block 1 isn't recorded, and block 2 lies behind the data: both are absent. Block 3's offset is of no use.
  image.mask = MaskSpec{{0, kNotRecorded, 60000, 4000}, {}, {}};
  image.data = LayOut(image, Sample8, [](std::uint32_t block) { return block == 0 || block == 3; });
  image.data.resize(5000);
  const Composition picture = Compose(NitfBuilder().Image(image));
  ASSERT_EQ(picture.status, SUCCESS);
  EXPECT_EQ(picture.At(1, 1), Gray(Sample8(0, 1, 1)));
  EXPECT_EQ(picture.At(1, 3), 0U);
  EXPECT_EQ(picture.At(1, 5), 0U);
  EXPECT_EQ(picture.At(1, 7), Gray(Sample8(0, 1, 7)));
}

// ---- band order ---------------------------------------------------------------------------------------------------

struct OrderCase {
  std::vector<const char *> tags;
  char mode;
  std::array<std::uint32_t, 3> expected;
};

class BandOrders : public testing::TestWithParam<OrderCase> {};

TEST_P(BandOrders, FollowTheTags) {
  ImageSpec image{.rows = 2, .columns = 3, .bands = {}, .representation = "MULTI", .mode = GetParam().mode};
  for (const char *tag : GetParam().tags) image.bands.push_back({tag, 0, {}});
  image.data = LayOut(image, Sample8);
  const Composition picture = Compose(NitfBuilder().Image(image));
  ASSERT_EQ(picture.status, SUCCESS);
  std::uint32_t color = 0;
  for (const std::uint32_t band : GetParam().expected) color = color << 8 | Sample8(band, 0, 1);
  EXPECT_EQ(picture.At(0, 1), color);
}

INSTANTIATE_TEST_SUITE_P(
    ImageModes, BandOrders,
    testing::Values(OrderCase{{"B", "G", "R"}, 'B', {2, 1, 0}}, OrderCase{{"B", "G", "R"}, 'S', {2, 1, 0}},
                    OrderCase{{"", "G", ""}, 'B', {0, 1, 0}}, OrderCase{{"", "G", ""}, 'P', {0, 1, 2}},
                    OrderCase{{"", "", "", "R"}, 'R', {3, 1, 2}}, OrderCase{{"Cr", "Cb", "Y"}, 'B', {2, 1, 0}},
                    OrderCase{{"Y", "", ""}, 'B', {0, 2, 2}}, OrderCase{{"", "LU", ""}, 'B', {1, 1, 1}},
                    OrderCase{{"M", "M", "M", "M"}, 'B', {0, 0, 0}}, OrderCase{{"", "", "", ""}, 'B', {0, 1, 2}},
                    OrderCase{{"R", "G", "B", "M"}, 'P', {0, 1, 2}}, OrderCase{{"", "M"}, 'B', {1, 1, 1}},
                    OrderCase{{"", "M"}, 'P', {1, 1, 1}}, OrderCase{{"", "M"}, 'R', {1, 1, 1}},
                    OrderCase{{"", "M"}, 'S', {1, 1, 1}}));

// ---- depths -------------------------------------------------------------------------------------------------------

struct SampleCase {
  std::uint32_t bits;
  std::uint32_t actualBits;
  const char *representation;
  std::uint32_t blockWidth; /**< 0 for one block; blocks are converted one by one */
  Bytes data;               /**< of a row */
  Bytes row;                /**< of the bitmap */
};

class Samples : public testing::TestWithParam<SampleCase> {};

TEST_P(Samples, AreConvertedByTheirDepthAndActualBits) {
  const SampleCase &given = GetParam();
  ImageSpec image{.rows = 1, .representation = given.representation, .bits = given.bits, .data = given.data};
  image.columns = static_cast<std::uint32_t>(given.data.size()) * 8 / given.bits;
  image.actualBits = given.actualBits;
  image.blockWidth = given.blockWidth;
  const Decoded decoded(image);
  ASSERT_EQ(decoded.status, SUCCESS);
  EXPECT_EQ(+decoded.bitmap->bitsPerPixel, given.bits == 32 ? 8 : given.bits);
  EXPECT_EQ(decoded.Row(0, given.row.size()), given.row);
  const bool isGray = image.representation == "MONO";
  const bool isIndexed = decoded.bitmap->bitsPerPixel == 8;
  EXPECT_EQ(+decoded.bitmap->order, isIndexed ? KS_ORDER_PALETTE : isGray ? KS_ORDER_GRAY : KS_ORDER_BGR);
}

INSTANTIATE_TEST_SUITE_P(
    ImageModes, Samples,
    testing::Values(
        SampleCase{8, 8, "MULTI", 2, {1, 2, 200, 9}, {1, 2, 200, 9}}, SampleCase{8, 6, "MONO", 0, {60, 7}, {60, 7}},
        SampleCase{16, 16, "MULTI", 0, {0x12, 0x34, 1, 2, 3, 4, 5, 6, 7, 8}, {0x34, 0x12, 2, 1, 4, 3, 6, 5, 8, 7}},
        SampleCase{16, 12, "MONO", 0, {0x0F, 0xFF, 0, 0}, {0xFF, 0xFF, 0, 0}},
        // 1000 * 65535 / 2047 = 32015, and 1 * 65535 / 2047 = 32
        SampleCase{16, 11, "MONO", 1, {0x03, 0xE8, 0, 1}, {0x0F, 0x7D, 32, 0}},
        SampleCase{16, 9, "MONO", 0, {0x01, 0xFF, 0, 0}, {0xFF, 0xFF, 0, 0}},
        SampleCase{16, 8, "MONO", 0, {0, 0xAB}, {0, 0xAB}},
        SampleCase{12, 12, "MULTI", 0, {0xAB, 0xC1, 0x23, 0x45, 0x60}, {0xBC, 0x3A, 0x12, 0x56, 0x04}},
        SampleCase{12, 12, "MONO", 2, {0x00, 0xC8, 0x56, 0x12, 0x34, 0x56}, {0x0C, 0x60, 0x85, 0x23, 0x61, 0x45}},
        // pairs of bytes: 200 * 4095 / 1023 = 800, 0x1234 * 4095 / 1023 = 18653
        SampleCase{12, 10, "MONO", 2, {0x00, 0xC8, 0x56, 0x12, 0x34, 0x56}, {0x20, 0x03, 0x56, 0xDD, 0x48, 0x56}},
        SampleCase{12, 8, "MONO", 2, {0x00, 0xC8, 0x56, 0x12, 0x34, 0x56}, {0x00, 0xC8, 0x56, 0x12, 0x34, 0x56}},
        // a single block: samples * 4095 / 1023, of which 12 bits stay: 48, 350, 1164, 347
        SampleCase{12, 10, "MONO", 4, {0x00, 0xC8, 0x56, 0x12, 0x34, 0x56}, {0x30, 0xE0, 0x15, 0x8C, 0xB4, 0x15}},
        // 32 bits are spread over their own range, here 100 to 200
        SampleCase{32, 24, "MONO", 0, {0, 0, 0, 100, 0, 0, 0, 150, 0, 0, 0, 200, 0, 0, 0, 199}, {0, 127, 255, 252}},
        SampleCase{32, 32, "MONO", 0, {0, 0, 1, 44, 0, 0, 2, 88}, {0, 255}},
        SampleCase{32, 32, "MONO", 0, {0, 0, 1, 0, 0, 0, 1, 0}, {0, 0}}));

// ---- palettes -----------------------------------------------------------------------------------------------------

TEST(Palettes, AnIndexShowsItsColourAndOneBehindTheTableIsBlack) {
  ImageSpec image{.rows = 1, .columns = 3, .representation = "RGB/LUT", .data = {0, 1, 2}};
  image.bands = {{"LU", 3, {10, 20, 30, 40, 50, 60}}};
  const Composition picture = Compose(NitfBuilder().Image(image));
  EXPECT_EQ(picture.At(0, 0), 0x0A1E32U);
  EXPECT_EQ(picture.At(0, 1), 0x14283CU);
  EXPECT_EQ(picture.At(0, 2), 0U);
  image.pixelValueType = "B";
  image.bits = 1;
  image.data = {0b01000000};
  EXPECT_EQ(Compose(NitfBuilder().Image(image)).At(0, 0), 0x0A1E32U);
  EXPECT_EQ(Compose(NitfBuilder().Image(image)).At(0, 1), 0x14283CU);
}

TEST(ImageData, EveryTruncationIsAShortRead) {
  for (const char mode : {'B', 'R', 'S'}) {
    ImageSpec image{.rows = 4, .columns = 6, .bands = std::vector<BandSpec>(3), .representation = "RGB", .mode = mode};
    image.blockWidth = 3;
    image.blockHeight = 2;
    image.data = LayOut(image, Sample8);
    for (std::size_t bytes = image.data.size(); bytes-- > 0;) {
      image.data.resize(bytes);
      ASSERT_EQ(Compose(NitfBuilder().Image(image)).status, ERROR_FILE_READ) << mode << ' ' << bytes;
    }
  }
}

// ---- packed and bi-level blocks -------------------------------------------------------------------------------------

TEST(Bilevel, ABlockWithoutEnoughDataIsBadData) {
  ImageSpec image{.rows = 4, .columns = 9, .pixelValueType = "B", .bits = 1, .data = Bytes(4, 0xFF)};
  EXPECT_EQ(Compose(NitfBuilder().Image(image)).status, ERROR_FILE_FORMAT);
  image.data.push_back(0xF0);
  EXPECT_EQ(Compose(NitfBuilder().Image(image)).status, SUCCESS);
}

TEST(Bilevel, MaskedBlocksAreFoundByTheirOffsets) {
  ImageSpec image{.rows = 1, .columns = 32, .pixelValueType = "B", .compression = "NM", .bits = 1, .blockWidth = 8};
  image.mask = MaskSpec{{1, kNotRecorded, 0, 2}, {}, {}};
  image.data = {0xF0, 0x0F, 0xFF};
  Composition picture = Compose(NitfBuilder().Image(image));
  ASSERT_EQ(picture.status, SUCCESS);
  EXPECT_EQ(picture.At(0, 3), 0U);
  EXPECT_EQ(picture.At(0, 4), Gray(255));
  EXPECT_EQ(picture.At(0, 15), 0U);
  EXPECT_EQ(picture.At(0, 16), Gray(255));
  EXPECT_EQ(picture.At(0, 31), Gray(255));
  // Without an offset of its own a block lies as far from the start as the one before it is long.
  image.mask = MaskSpec{{}, {2, kNotRecorded, 0, kNotRecorded}, {}};
  picture = Compose(NitfBuilder().Image(image));
  ASSERT_EQ(picture.status, SUCCESS);
  EXPECT_EQ(picture.At(0, 0), Gray(255));
  EXPECT_EQ(picture.At(0, 8), 0U);
  EXPECT_EQ(picture.At(0, 15), Gray(255));
}

/** A row of packed blocks in a bitmap of more bits. */
TEST(PackedBlocks, FillWholeRowsOfDeepBitmaps) {
  ImageSpec image{.rows = 1, .columns = 16, .representation = "RGB", .pixelValueType = "B", .bits = 24};
  image.data = {0x12, 0x34};
  Composition picture = Compose(NitfBuilder().Field("FBKGC", "\xFF\xFF\xFF").Image(image));
  ASSERT_EQ(picture.status, SUCCESS);
  EXPECT_EQ(picture.At(0, 0), 0x003412U);
  for (std::uint32_t column = 1; column < 16; ++column) EXPECT_EQ(picture.At(0, column), 0U) << column;
  // Three bands are one plane of bits, block by block.
  image.bands = std::vector<BandSpec>(3);
  image.bits = 8;
  image.blockWidth = 8;
  image.data = {0xA5, 0x5A};
  picture = Compose(NitfBuilder().Field("FBKGC", "\xFF\xFF\xFF").Image(image));
  ASSERT_EQ(picture.status, SUCCESS);
  EXPECT_EQ(picture.At(0, 0), 0x0000A5U);
  EXPECT_EQ(picture.At(0, 8), 0x00005AU);
  EXPECT_EQ(picture.At(0, 7), 0U);
}

/** IMDATOFF and no tables, and the bytes behind them. */
Bytes MaskedData(std::uint8_t offsetHigh, std::uint8_t offset, const Bytes &bits) {
  Bytes data = {0, 0, offsetHigh, offset, 0, 0, 0, 0, 0, 0};
  data.insert(data.end(), bits.begin(), bits.end());
  return data;
}

TEST(PackedBlocks, MayBeShorterThanTheirDataLength) {
  ImageSpec image{.rows = 2, .columns = 8, .pixelValueType = "B", .compression = "NM", .bits = 1};
  image.data = MaskedData(0, 10, {0xF0});
  const Decoded decoded(image);
  ASSERT_EQ(decoded.status, SUCCESS) << "two bytes are within the eleven of the data";
  EXPECT_EQ(decoded.Row(0, 1), Bytes{0xF0});
  EXPECT_EQ(decoded.Row(1, 1), Bytes{0});
  image.rows = 12;
  EXPECT_EQ(Decoded(image).status, ERROR_FILE_FORMAT);
  image.rows = 1;
  image.data = MaskedData(1, 0, {0xF0});
  EXPECT_EQ(Decoded(image).status, ERROR_FILE_READ) << "IMDATOFF is behind the data";
}

TEST(BilevelImage, OfOneBlockHasTheRowsOfItsBitmap) {
  ImageSpec image{.rows = 2, .columns = 40, .bits = 1};
  image.data = {0xFF, 1, 2, 3, 4, 9, 9, 9, 0x0F, 5, 6, 7, 8, 9, 9, 9};
  const Decoded decoded(image);
  ASSERT_EQ(decoded.status, SUCCESS);
  EXPECT_EQ(decoded.Row(0, 5), (Bytes{0xFF, 1, 2, 3, 4}));
  EXPECT_EQ(decoded.Row(1, 5), (Bytes{0x0F, 5, 6, 7, 8}));
  image.data.pop_back();
  EXPECT_EQ(Decoded(image).status, ERROR_FILE_READ);
  // Less than four bytes where the block is narrower.
  const ImageSpec narrow{.rows = 2, .columns = 3, .bits = 1, .data = {0xE0, 9, 9, 0xA0, 9, 9}};
  EXPECT_EQ(Decoded(narrow).Row(1, 1), Bytes{0xA0});
}

TEST(RowInterleaved, NothingIsAskedForThatIsNotShown) {
  ImageSpec image{
      .rows = 2, .columns = 2, .bands = std::vector<BandSpec>(3, {"M", 0, {}}), .representation = "MULTI", .mode = 'R'};
  image.data = {1, 2, 0, 0, 0, 0, 3, 4};
  const Decoded decoded(image);
  ASSERT_EQ(decoded.status, SUCCESS);
  EXPECT_EQ(decoded.Row(1, 6), (Bytes{3, 3, 3, 4, 4, 4}));
  image.data.pop_back();
  EXPECT_EQ(Decoded(image).status, ERROR_FILE_READ);
}

}  // namespace
