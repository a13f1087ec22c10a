#include "harness.h"
#include "headers/mask_table.h"
#include "images/band_choice.h"
#include "images/handlimg.h"
#include "internal/ksclasses_.h"

#include <algorithm>
#include <string>

#include <gtest/gtest.h>

using namespace ksntfx;

namespace {

/** A sample that differs from its neighbours in every direction and band. */
std::uint32_t Sample8(std::uint32_t band, std::uint32_t row, std::uint32_t column) {
  return (band * 85 + row * 13 + column * 3) & 0xFF;
}

std::uint32_t Rgb(std::uint32_t red, std::uint32_t green, std::uint32_t blue) {
  return red << 16 | green << 8 | blue;
}

std::uint32_t Gray(std::uint32_t level) {
  return Rgb(level, level, level);
}

std::vector<BandSpec> Bands(std::initializer_list<const char *> tags) {
  std::vector<BandSpec> bands;
  for (const char *tag : tags) bands.push_back({tag, 0, {}});
  return bands;
}

/** Composes an image, all of whose pixels have to be what `expected` gives for row and column. */
template <class Expected>
void ExpectPicture(const ImageSpec &image, const Expected &expected) {
  const Composition picture = Compose(NitfBuilder().Image(image));
  ASSERT_EQ(picture.status, SUCCESS);
  ASSERT_EQ(picture.width, image.BlocksPerRow() * image.BlockWidth());
  ASSERT_EQ(picture.height, image.BlocksPerColumn() * image.BlockHeight());
  for (std::uint32_t row = 0; row < picture.height; ++row) {
    for (std::uint32_t column = 0; column < picture.width; ++column) {
      ASSERT_EQ(picture.At(row, column), expected(row, column)) << row << ", " << column;
    }
  }
}

/** The first three bands. */
std::uint32_t Color8(std::uint32_t row, std::uint32_t column) {
  return Rgb(Sample8(0, row, column), Sample8(1, row, column), Sample8(2, row, column));
}

/** Decodes image 0 of a file as the composition does, and gives what its bitmap holds. */
struct Decoded {
  explicit Decoded(const NitfBuilder &builder) : file(builder) {
    EXPECT_EQ(file.status, SUCCESS);
    status = DecodeImageSegment(nullptr, file.Get(), 0, bitmap.Get()).Code();
  }
  std::uint8_t Byte(std::uint32_t row, std::uint32_t at) { return bitmap->pixels[row * bitmap->bytesPerLine + at]; }
  std::uint32_t Word(std::uint32_t row, std::uint32_t at) { return Byte(row, 2 * at) | Byte(row, 2 * at + 1) << 8; }

  LoadedFile file;
  KsLocalBitmap bitmap;
  std::int32_t status;
};

struct ColorCase {
  char mode;
  std::uint32_t bands;
  std::uint32_t rows;
  std::uint32_t columns;
  std::uint32_t blockWidth;
  std::uint32_t blockHeight;
};

ImageSpec ColorImage(const ColorCase &given) {
  ImageSpec image{.rows = given.rows, .columns = given.columns};
  image.bands = Bands({"R", "G", "B"});
  image.bands.resize(given.bands);
  image.representation = given.bands == 3 ? "RGB" : "MULTI";
  image.mode = given.mode;
  image.blockWidth = given.blockWidth;
  image.blockHeight = given.blockHeight;
  return image;
}

// ---- masks --------------------------------------------------------------------------------------------------------

constexpr std::uint32_t kAbsentBlock = 2;

/** A 2 x 3 block image of which one block isn't recorded. */
ImageSpec MaskedImage(char mode, bool throughPadMask) {
  ImageSpec image = ColorImage({mode, 3, 4, 9, 3, 2});
  image.compression = "NM";
  const std::uint32_t blockBytes = 3 * 2 * (mode == 'S' ? 1 : 3);
  MaskSpec mask;
  std::uint32_t offset = 0;
  for (std::uint32_t block = 0; block < 6; ++block) {
    const bool absent = block == kAbsentBlock && !throughPadMask;
    mask.blockOffsets.push_back(absent ? kNotRecorded : offset);
    offset += absent ? 0 : blockBytes;
  }
  if (throughPadMask) std::swap(mask.blockOffsets, mask.padOffsets);
  // Each band has entries of its own in mode S; only the first band's are in use.
  for (std::vector<std::uint32_t> *table : {&mask.blockOffsets, &mask.padOffsets}) {
    table->resize(table->empty() ? 0 : 18, kNotRecorded);
  }
  image.mask = mask;
  return image;
}

class Masks : public testing::TestWithParam<std::tuple<char, bool>> {};

TEST_P(Masks, LeaveAnAbsentBlockBlackAndFindTheOthers) {
  const auto [mode, throughPadMask] = GetParam();
  ImageSpec image = MaskedImage(mode, throughPadMask);
  const bool left = !throughPadMask;
  image.data = LayOut(image, Sample8, [&](std::uint32_t block) { return !left || block != kAbsentBlock; });
  if (mode == 'S' && left) {
    // The bands stand as far apart as the stretch of recorded blocks says: rounds of two entries, all of which hold
    // some.
    Bytes apart;
    for (std::size_t band = 0; band < 3; ++band) {
      apart.insert(apart.end(), image.data.begin() + static_cast<std::ptrdiff_t>(band) * 30,
                   image.data.begin() + static_cast<std::ptrdiff_t>(band + 1) * 30);
      apart.insert(apart.end(), 6, 0xEE);
    }
    image.data = apart;
  }
  const bool repeats = mode == 'P';
  ExpectPicture(image, [&](std::uint32_t row, std::uint32_t column) {
    const bool black = left && row / 2 * 3 + column / 3 == kAbsentBlock;
    return black ? 0U : Color8(repeats ? row & ~1U : row, column);
  });
}

INSTANTIATE_TEST_SUITE_P(ImageModes, Masks, testing::Combine(testing::Values('B', 'P', 'S'), testing::Bool()));

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

TEST(Masks, ABlankPadEntryStandsForTheBlocksOwnPlace) {
  ImageSpec image = ColorImage({'B', 3, 2, 6, 3, 2});
  image.compression = "NM";
  image.mask = MaskSpec{{}, {kNotRecorded, kNotRecorded, 0, 0, 0, 0}, {}};
  image.data = LayOut(image, Sample8);
  ExpectPicture(image, Color8);
}

// ---- band order ---------------------------------------------------------------------------------------------------

struct OrderCase {
  std::vector<const char *> tags;
  char mode;
  BandOrder expected;
};

class BandOrders : public testing::TestWithParam<OrderCase> {};

TEST_P(BandOrders, FollowTheTags) {
  const OrderCase &given = GetParam();
  ImageSpec image = ColorImage({given.mode, static_cast<std::uint32_t>(given.tags.size()), 2, 3, 3, 2});
  image.bands.clear();
  for (const char *tag : given.tags) image.bands.push_back({tag, 0, {}});
  image.data = LayOut(image, Sample8);
  const Composition picture = Compose(NitfBuilder().Image(image));
  ASSERT_EQ(picture.status, SUCCESS);
  const BandOrder &order = given.expected;
  EXPECT_EQ(picture.At(0, 1), Rgb(Sample8(order.first, 0, 1), Sample8(order.second, 0, 1), Sample8(order.third, 0, 1)));
}

INSTANTIATE_TEST_SUITE_P(
    ImageModes, BandOrders,
    testing::Values(OrderCase{{"B", "G", "R"}, 'B', {2, 1, 0}}, OrderCase{{"B", "G", "R"}, 'S', {2, 1, 0}},
                    OrderCase{{"", "G", ""}, 'B', {0, 1, 0}}, OrderCase{{"", "G", ""}, 'P', {0, 1, 2}},
                    OrderCase{{"", "", "", "R"}, 'R', {3, 1, 2}}, OrderCase{{"Cr", "Cb", "Y"}, 'B', {2, 1, 0}},
                    OrderCase{{"Y", "", ""}, 'B', {0, 2, 2}}, OrderCase{{"", "LU", ""}, 'B', {1, 1, 1}},
                    OrderCase{{"M", "M", "M", "M"}, 'B', {0, 0, 0}}, OrderCase{{"", "", "", ""}, 'B', {0, 1, 2}},
                    OrderCase{{"R", "G", "B", "M"}, 'P', {0, 1, 2}}));

// ---- one band -----------------------------------------------------------------------------------------------------

struct DepthCase {
  std::uint32_t bits;
  std::uint32_t actualBits;
  const char *representation;
  std::uint32_t blockWidth;
  std::uint32_t sample;
  std::uint32_t expected;
};

void PrintTo(const DepthCase &given, std::ostream *out) {
  *out << given.bits << " bits, " << given.actualBits << " in use, " << given.representation << ", blocks "
       << given.blockWidth << " wide, sample " << given.sample;
}

class Depths : public testing::TestWithParam<DepthCase> {};

/** The sample stands in the last pixel of an odd row, so that nothing but its own place gives the right answer. */
TEST_P(Depths, KeepTheirSamples) {
  const DepthCase &given = GetParam();
  ImageSpec image{.rows = 3, .columns = 5, .representation = given.representation, .bits = given.bits};
  image.actualBits = given.actualBits;
  image.blockWidth = given.blockWidth;
  image.data = LayOut(image, [&](std::uint32_t, std::uint32_t row, std::uint32_t column) {
    return row == 1 && column == 4 ? given.sample : 0U;
  });
  Decoded decoded(NitfBuilder().Image(image));
  ASSERT_EQ(decoded.status, SUCCESS);
  ASSERT_EQ(decoded.bitmap->bitsPerPixel, given.bits);
  if (given.bits == 16) {
    EXPECT_EQ(decoded.Word(1, 4), given.expected);
    EXPECT_EQ(decoded.Word(1, 3), 0U);
  } else if (given.bits == 12) {
    EXPECT_EQ(decoded.Byte(1, 6) | (decoded.Byte(1, 7) & 0x0F) << 8, static_cast<int>(given.expected));
    EXPECT_EQ(decoded.Byte(1, 5), 0);
  } else {
    EXPECT_EQ(decoded.Byte(1, 4), given.expected);
  }
}

INSTANTIATE_TEST_SUITE_P(
    ImageModes, Depths,
    testing::Values(DepthCase{8, 8, "MULTI", 2, 200, 200}, DepthCase{8, 6, "MONO", 0, 60, 60},
                    DepthCase{16, 16, "MULTI", 0, 0x1234, 0x1234}, DepthCase{16, 12, "MONO", 0, 4095, 65535},
                    DepthCase{16, 12, "MONO", 3, 4095, 65535}, DepthCase{16, 11, "MONO", 3, 1000, 1000 * 65535 / 2047},
                    DepthCase{16, 8, "MONO", 0, 0x00AB, 0xAB00}, DepthCase{12, 12, "MULTI", 0, 0xABC, 0xABC},
                    DepthCase{12, 11, "MONO", 0, 2047, 4095}));

TEST(Samples, ThirtyTwoBitsSpreadOverTheirOwnRange) {
  for (const std::uint32_t actualBits : {24U, 32U}) {
    ImageSpec image{.rows = 2, .columns = 3, .bits = 32, .actualBits = actualBits};
    const std::uint32_t samples[] = {100, 150, 200, 125, 199, 101};
    image.data = LayOut(
        image, [&](std::uint32_t, std::uint32_t row, std::uint32_t column) { return samples[row * 3 + column]; });
    Decoded decoded(NitfBuilder().Image(image));
    ASSERT_EQ(decoded.status, SUCCESS);
    EXPECT_EQ(decoded.bitmap->bitsPerPixel, 8U);
    EXPECT_EQ(Bytes({decoded.Byte(0, 0), decoded.Byte(0, 1), decoded.Byte(0, 2), decoded.Byte(1, 0), decoded.Byte(1, 1),
                     decoded.Byte(1, 2)}),
              (Bytes{0, 127, 255, 63, 252, 2}));
  }
}

TEST(Samples, ThirtyTwoBitsOfOneValueAreBlack) {
  ImageSpec image{.rows = 1, .columns = 2, .bits = 32, .data = {0, 0, 1, 0, 0, 0, 1, 0}};
  EXPECT_EQ(Compose(NitfBuilder().Image(image)).At(0, 1), 0U);
}

struct RefusedCase {
  std::uint32_t bits;
  std::uint32_t bands;
  const char *representation;
  std::uint32_t columns;
};

class RefusedDepths : public testing::TestWithParam<RefusedCase> {};

TEST_P(RefusedDepths, AreNotShownAsNoise) {
  const RefusedCase &given = GetParam();
  ImageSpec image{.rows = 1, .columns = given.columns, .representation = given.representation, .bits = given.bits};
  image.bands.resize(given.bands);
  image.blockWidth = 2;
  image.data = Bytes(1024, 1);
  EXPECT_EQ(Compose(NitfBuilder().Image(image)).status, ERROR_NOT_SUPPORTED);
}

INSTANTIATE_TEST_SUITE_P(ImageModes, RefusedDepths,
                         testing::Values(RefusedCase{32, 1, "MONO", 4}, RefusedCase{32, 1, "MULTI", 2},
                                         RefusedCase{64, 1, "MONO", 2}, RefusedCase{24, 1, "MONO", 2},
                                         RefusedCase{12, 3, "MULTI", 2}, RefusedCase{1, 3, "MULTI", 2},
                                         RefusedCase{32, 2, "MULTI", 2}));

// ---- two bands ----------------------------------------------------------------------------------------------------

TEST(TwoBands, ShowTheTaggedOne) {
  for (const char mode : {'B', 'P', 'R', 'S'}) {
    ImageSpec image{.rows = 3, .columns = 4, .representation = "MULTI", .mode = mode};
    image.bands = Bands({"", "M"});
    image.data = LayOut(image, Sample8);
    ExpectPicture(image, [&](std::uint32_t row, std::uint32_t column) { return Gray(Sample8(1, row, column)); });
  }
}

// ---- bi-level -----------------------------------------------------------------------------------------------------

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

// ---- palettes -----------------------------------------------------------------------------------------------------

TEST(Palettes, AnIndexShowsItsColourAndOneBehindTheTableIsBlack) {
  ImageSpec image{.rows = 1, .columns = 3, .representation = "RGB/LUT", .data = {0, 1, 2}};
  image.bands = {{"LU", 3, {10, 20, 30, 40, 50, 60}}};
  const Composition picture = Compose(NitfBuilder().Image(image));
  EXPECT_EQ(picture.At(0, 0), Rgb(10, 30, 50));
  EXPECT_EQ(picture.At(0, 1), Rgb(20, 40, 60));
  EXPECT_EQ(picture.At(0, 2), 0U);
  image.pixelValueType = "B";
  image.bits = 1;
  image.data = {0b01000000};
  EXPECT_EQ(Compose(NitfBuilder().Image(image)).At(0, 0), Rgb(10, 30, 50));
  EXPECT_EQ(Compose(NitfBuilder().Image(image)).At(0, 1), Rgb(20, 40, 60));
}

TEST(ImageData, EveryTruncationIsAShortRead) {
  for (const char mode : {'B', 'R', 'S'}) {
    ImageSpec image = ColorImage({mode, 3, 4, 6, 3, 2});
    image.data = LayOut(image, Sample8);
    const Bytes whole = NitfBuilder().Image(image).Build();
    const TemporaryFolder folder;
    for (std::size_t missing = 1; missing <= image.data.size(); ++missing) {
      WriteFile(folder.Path("cut"), Bytes(whole.begin(), whole.end() - static_cast<std::ptrdiff_t>(missing)));
      ASSERT_EQ(Compose(folder.Path("cut")).status, ERROR_FILE_READ) << mode << ' ' << missing;
    }
  }
}

}  // namespace
