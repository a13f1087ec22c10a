// Vector-quantised images: kernels, codes, codebooks, masks, and data that are none.
#include "images/vq.h"

#include "decoded.h"
#include "headers/mask_table.h"
#include "vq_builder.h"

#include <algorithm>
#include <set>
#include <string>

#include <gtest/gtest.h>

using namespace ksntfx;

namespace {

/** An image of blocks of kernels, whose codes and values are functions of their place. */
struct VqCase {
  const char *name;
  std::uint32_t kernelWidth;
  std::uint32_t kernelHeight;
  std::uint32_t codesPerRow;
  std::uint32_t codeRows;
  std::uint32_t across; /**< blocks */
  std::uint32_t down;
  std::uint32_t codeBits;
  std::uint32_t entries;
  std::uint32_t tables;
  std::set<std::uint32_t> absent = {};

  std::uint32_t BlockWidth() const { return kernelWidth * codesPerRow; }
  std::uint32_t BlockHeight() const { return kernelHeight * codeRows; }

  std::uint32_t Code(std::uint32_t block, std::uint32_t row, std::uint32_t column) const {
    return ((block * 131 + row * 17 + column) * 2654435761U >> 7) % entries;
  }
  static std::uint32_t Value(std::uint32_t code, std::uint32_t place) {
    return ((code * 977 + place) * 2246822519U >> 11) % 255 + 1;
  }

  /** The pixel that the picture has to show. */
  std::uint32_t Pixel(std::uint32_t y, std::uint32_t x) const {
    const std::uint32_t block = y / BlockHeight() * across + x / BlockWidth();
    if (absent.contains(block)) return 0;
    const std::uint32_t row = y % BlockHeight();
    const std::uint32_t column = x % BlockWidth();
    const std::uint32_t place = row % kernelHeight * kernelWidth + column % kernelWidth;
    // What no table gives a value to is 0.
    if (place >= tables * kernelHeight) return 0;
    return Value(Code(block, row / kernelHeight, column / kernelWidth), place);
  }

  VqSpec Data() const {
    VqSpec data{codeRows, codesPerRow, codeBits, kernelHeight, tables};
    for (std::uint32_t entry = 0; entry < entries; ++entry) {
      Bytes &values = data.kernels.emplace_back();
      for (std::uint32_t place = 0; place < tables * kernelHeight; ++place) {
        values.push_back(static_cast<std::uint8_t>(Value(entry, place)));
      }
    }
    for (std::uint32_t block = 0; block < across * down; ++block) {
      if (!absent.contains(block)) PutCodes(data.codes, block);
    }
    return data;
  }

  ImageSpec Image() const {
    ImageSpec image{.rows = BlockHeight() * down, .columns = BlockWidth() * across, .compression = "C4"};
    image.blockWidth = BlockWidth();
    image.blockHeight = BlockHeight();
    image.data = EncodeVq(Data());
    if (absent.empty()) return image;
    image.compression = "M4";
    image.mask = MaskSpec{};
    // Where a block's codes begin can't be told in bytes, so what its word says is of no use, large or small.
    for (std::uint32_t block = 0; block < across * down; ++block) {
      image.mask->blockOffsets.push_back(absent.contains(block) ? kNotRecorded : 0xFFFF0000 * (block % 2));
    }
    return image;
  }

 private:
  void PutCodes(std::vector<std::uint32_t> &codes, std::uint32_t block) const {
    for (std::uint32_t row = 0; row < codeRows; ++row) {
      for (std::uint32_t column = 0; column < codesPerRow; ++column) codes.push_back(Code(block, row, column));
    }
  }
};

/** The picture of a case, in a bitmap of `width` x `height`. */
void ExpectPicture(const VqCase &given, const Decoded &picture, std::uint32_t width, std::uint32_t height) {
  ASSERT_EQ(picture.status, SUCCESS);
  ASSERT_EQ(picture.bitmap->width, width);
  ASSERT_EQ(picture.bitmap->height, height);
  for (std::uint32_t row = 0; row < height; ++row) {
    for (std::uint32_t column = 0; column < width; ++column) {
      ASSERT_EQ(picture.At(row, column), given.Pixel(row, column)) << row << ", " << column;
    }
  }
}

// ---- kernels and codes --------------------------------------------------------------------------------------------

TEST(VectorQuantised, ReadsAnImageWrittenByHand) {
  // Two blocks of 4 x 3 pixels, each two kernels 2 wide and 3 high, two tables of two entries, codes of 5 bits.
  ImageSpec image{.rows = 3, .columns = 8, .compression = "C4", .blockWidth = 4, .blockHeight = 3};
  const Bytes header = {0, 0, 0, 1, 0, 0, 0, 2, 5, 0, 1, 0, 2, 0, 0, 0, 0, 0, 6, 0, 14};  // one row of two codes
  const Bytes tableOne = {0, 1, 0, 0, 0, 2, 0, 3, 0, 8, 0, 0, 0, 0};
  const Bytes tableTwo = {0, 2, 0, 0, 0, 9, 0, 3, 0, 8, 0, 0, 0, 6};
  const Bytes halves = {11, 12, 21, 31, 32, 41, 22, 51, 52, 42, 61, 62};  // of the kernels, table by table
  const Bytes codes = {0b00001'000, 0b00'00001'0, 0b0001'0000};           // 1, 0, 1, 1
  for (const Bytes &part : {header, tableOne, tableTwo, halves, codes}) {
    image.data.insert(image.data.end(), part.begin(), part.end());
  }
  const Decoded picture(image);
  ASSERT_EQ(picture.status, SUCCESS);
  const Bytes rows[] = {
      {31, 32, 11, 12, 31, 32, 31, 32}, {41, 42, 21, 22, 41, 42, 41, 42}, {61, 62, 51, 52, 61, 62, 61, 62}};
  for (std::uint32_t row = 0; row < 3; ++row) {
    EXPECT_TRUE(std::equal(rows[row].begin(), rows[row].end(), picture.bitmap->pixels + row * 8)) << row;
  }
}

class VqKernels : public testing::TestWithParam<VqCase> {};

TEST_P(VqKernels, GiveThePictureWholeAndComposed) {
  const VqCase &given = GetParam();
  ExpectPicture(given, Decoded(given.Image()), given.BlockWidth() * given.across, given.BlockHeight() * given.down);
  const Composition picture = Compose(NitfBuilder().Image(given.Image()));
  ASSERT_EQ(picture.status, SUCCESS);
  for (std::uint32_t row = 0; row < picture.height; ++row) {
    for (std::uint32_t column = 0; column < picture.width; ++column) {
      ASSERT_EQ(picture.At(row, column), given.Pixel(row, column) * 0x010101) << row << ", " << column;
    }
  }
}

// Kernel, codes of a block, blocks, code bits, entries, tables.
const VqCase kKernels[] = {
    {"UsualFrame", 4, 4, 256, 256, 1, 1, 12, 4096, 4},  // the codes are more than are read at a time
    {"UsualFrames", 4, 4, 8, 6, 3, 2, 12, 4096, 4},
    {"AbsentBehindAPresentOne", 4, 4, 64, 64, 2, 2, 12, 4096, 4, {3}},  // what was read above must not show again
    {"UsualKernelsInOddNumber", 4, 4, 5, 3, 3, 3, 12, 300, 4},
    {"OneBit", 4, 4, 5, 3, 2, 2, 1, 2, 4},
    {"FiveBits", 4, 4, 5, 3, 2, 2, 5, 32, 4},
    {"ElevenBits", 4, 4, 7, 3, 1, 3, 11, 2048, 4},
    {"ThirteenBitsInManyPieces", 1, 1, 251, 351, 2, 1, 13, 8192, 1},
    {"SixteenBits", 2, 2, 9, 9, 2, 2, 16, 65536, 2},
    {"WideKernels", 6, 2, 5, 4, 2, 2, 9, 400, 6},
    {"HighKernels", 2, 5, 3, 4, 2, 2, 9, 400, 2},
    {"LongRows", 1, 2, 5001, 2, 1, 1, 12, 4096, 1},
    {"BlockAsKernel", 9, 7, 1, 1, 3, 2, 3, 6, 9},
    {"TablesThatFillWholeRows", 4, 4, 5, 3, 2, 2, 12, 50, 3},
    {"TablesThatFillPartOfARow", 6, 4, 5, 3, 2, 2, 12, 50, 4},
    {"MoreEntriesThanCodesCanName", 4, 4, 5, 3, 2, 2, 4, 16, 4},
};

INSTANTIATE_TEST_SUITE_P(VectorQuantised, VqKernels, testing::ValuesIn(kKernels),
                         [](const auto &given) { return std::string(given.param.name); });

TEST(VectorQuantised, PassesOverEntriesThatNoCodeCanName) {
  const VqCase given{"", 4, 4, 5, 3, 2, 2, 4, 16, 4};
  VqSpec data = given.Data();
  for (std::uint8_t more = 0; more < 5; ++more) data.kernels.push_back(Bytes(16, more));
  ImageSpec image = given.Image();
  image.data = EncodeVq(data);
  ExpectPicture(given, Decoded(image), 40, 24);
}

ImageSpec Quantised(std::uint32_t columns, std::uint32_t rows, const VqSpec &spec) {
  ImageSpec image{.rows = rows, .columns = columns, .compression = "C4"};
  image.data = EncodeVq(spec);
  return image;
}

TEST(VectorQuantised, KernelsNeedNotDivideTheBlock) {
  VqSpec spec{.codeRows = 2, .codesPerRow = 2, .codeBits = 8, .kernelHeight = 2, .tables = 2};
  spec.kernels = {{1, 2, 3, 4}, {5, 6, 7, 8}};
  // A third row of kernels reaches below the block, and nothing reaches its last column.
  spec.codes = {0, 1, 1, 0, 0, 0};
  const Decoded decoded(Quantised(5, 5, spec));
  ASSERT_EQ(decoded.status, SUCCESS);
  const Bytes rows[] = {{1, 2, 5, 6, 0}, {3, 4, 7, 8, 0}, {5, 6, 1, 2, 0}, {7, 8, 3, 4, 0}, {1, 2, 1, 2, 0}};
  for (std::uint32_t row = 0; row < 5; ++row) EXPECT_EQ(decoded.Row(row, 5), rows[row]) << row;
  spec.codes.pop_back();
  EXPECT_EQ(Decoded(Quantised(5, 5, spec)).status, ERROR_FILE_READ);
}

TEST(VectorQuantised, CodesOfNoBitsAreZero) {
  VqSpec spec{.codeRows = 1, .codesPerRow = 2, .codeBits = 0, .kernelHeight = 1, .tables = 2};
  spec.kernels = {{7, 9}, {1, 1}};
  const Decoded decoded(Quantised(4, 1, spec));
  ASSERT_EQ(decoded.status, SUCCESS);
  EXPECT_EQ(decoded.Row(0, 4), (Bytes{7, 9, 7, 9}));
}

TEST(VectorQuantised, TablesBeyondAKernelFallToTheNextOne) {
  VqSpec spec{.codeRows = 1, .codesPerRow = 2, .codeBits = 4, .kernelHeight = 2, .tables = 3};
  spec.kernels = {{1, 2, 3, 4, 50, 60}, {5, 6, 7, 8, 70, 80}};
  spec.codes = {0, 1};
  const Decoded decoded(Quantised(4, 2, spec));
  ASSERT_EQ(decoded.status, SUCCESS);
  EXPECT_EQ(decoded.Row(0, 4), (Bytes{1, 2, 50, 60}));
  EXPECT_EQ(decoded.Row(1, 4), (Bytes{3, 4, 7, 8}));
}

// ---- masks --------------------------------------------------------------------------------------------------------

struct MaskCase {
  const char *name;
  std::set<std::uint32_t> absent;
  std::uint32_t blocksWide; /**< of the bitmap */
  std::uint32_t blocksHigh;
};

class VqMasks : public testing::TestWithParam<MaskCase> {};

/** 3 x 2 blocks, of a number of code bits that ends within a byte. */
TEST_P(VqMasks, GiveAndCoverTheExtentOfTheRecordedBlocks) {
  const VqCase given{"", 4, 4, 3, 3, 3, 2, 11, 900, 4, GetParam().absent};
  const std::uint32_t width = GetParam().blocksWide * 12;
  const std::uint32_t height = GetParam().blocksHigh * 12;
  ImageSpec image = given.Image();
  image.locationRow = 2;
  image.locationColumn = 3;
  ExpectPicture(given, Decoded(image), width, height);
  const Composition picture = Compose(NitfBuilder().Field("FBKGC", "\xFF\xFF\xFF").Image(image));
  ASSERT_EQ(picture.status, SUCCESS);
  ASSERT_EQ(picture.width, 3 * 12U + 3);
  ASSERT_EQ(picture.height, 2 * 12U + 2);
  for (std::uint32_t row = 0; row < picture.height; ++row) {
    for (std::uint32_t column = 0; column < picture.width; ++column) {
      const bool covered = row - 2 < height && column - 3 < width;
      const std::uint32_t level = covered ? given.Pixel(row - 2, column - 3) : 0xFF;
      ASSERT_EQ(picture.At(row, column), level * 0x010101) << row << ", " << column;
    }
  }
}

const MaskCase kMasks[] = {
    {"FirstAbsent", {0}, 3, 2},
    {"MiddleAbsent", {1, 4}, 3, 2},
    {"LastAbsent", {5}, 3, 2},
    {"RightColumnAbsent", {2, 5}, 2, 2},
    {"LowerRowAbsent", {3, 4, 5}, 3, 1},
    {"OnlyTheFirst", {1, 2, 3, 4, 5}, 1, 1},
    {"OnlyTheLast", {0, 1, 2, 3, 4}, 3, 2},
    {"NoneAtAll", {0, 1, 2, 3, 4, 5}, 1, 1},
};

INSTANTIATE_TEST_SUITE_P(VectorQuantised, VqMasks, testing::ValuesIn(kMasks),
                         [](const auto &given) { return std::string(given.param.name); });

TEST(VectorQuantised, ReadsBehindAMaskTableOfAnyKind) {
  VqCase given{"", 4, 4, 3, 3, 2, 2, 12, 90, 4, {}};
  ImageSpec image = given.Image();
  image.compression = "M4";
  image.mask = MaskSpec{{}, {0, 1, 2, kNotRecorded}, Bytes(9, 200)};
  ExpectPicture(given, Decoded(image), 24, 24);
  image.mask = MaskSpec{};
  ExpectPicture(given, Decoded(image), 24, 24);
}

// ---- colours ------------------------------------------------------------------------------------------------------

TEST(VectorQuantised, ShowsTheColoursOfItsLookupTable) {
  const VqCase given{"", 4, 4, 3, 2, 2, 2, 12, 90, 4};
  ImageSpec image = given.Image();
  image.representation = "RGB/LUT";
  Bytes lut;
  for (const unsigned factor : {3U, 5U, 7U}) {
    for (unsigned level = 0; level < 256; ++level) lut.push_back(static_cast<std::uint8_t>(level * factor));
  }
  image.bands = {{"LU", 3, lut}};
  const Decoded decoded(image);
  EXPECT_EQ(decoded.bitmap->order, KS_ORDER_PALETTE);
  const Composition picture = Compose(NitfBuilder().Image(image));
  ASSERT_EQ(picture.status, SUCCESS);
  for (std::uint32_t row = 0; row < picture.height; ++row) {
    for (std::uint32_t column = 0; column < picture.width; ++column) {
      const std::uint32_t level = given.Pixel(row, column);
      const std::uint32_t color = (level * 3 & 0xFF) << 16 | (level * 5 & 0xFF) << 8 | (level * 7 & 0xFF);
      ASSERT_EQ(picture.At(row, column), color) << row << ", " << column;
    }
  }
}

// ---- data that are none -------------------------------------------------------------------------------------------

struct BadCase {
  const char *name;
  std::int32_t status;
  void (*spoil)(VqSpec &data, ImageSpec &image);
};

class VqFaults : public testing::TestWithParam<BadCase> {};

TEST_P(VqFaults, AreToldAndLeaveNothing) {
  const auto before = LiveBlocks();
  {
    const VqCase sound{"", 4, 4, 6, 5, 2, 2, 12, 90, 4};
    ImageSpec image = sound.Image();
    VqSpec data = sound.Data();
    GetParam().spoil(data, image);
    image.data = EncodeVq(data);
    const Decoded decoded(image);
    EXPECT_EQ(decoded.status, GetParam().status);
    EXPECT_EQ(decoded.bitmap->flags & KS_BITMAP_ALLOCATED, 0U);
    EXPECT_EQ(Compose(NitfBuilder().Image(image)).status, GetParam().status);
  }
  EXPECT_EQ(LiveBlocks(), before);
}

const BadCase kFaults[] = {
    {"NoCodeRows", ERROR_FILE_FORMAT, [](VqSpec &data, ImageSpec &) { data.codeRows = 0; }},
    {"NoCodesPerRow", ERROR_FILE_FORMAT, [](VqSpec &data, ImageSpec &) { data.codesPerRow = 0; }},
    {"MoreCodeRowsThanRows", ERROR_FILE_FORMAT, [](VqSpec &data, ImageSpec &) { data.codeRows = 0xFFFFFFFF; }},
    {"CodesOfMoreBitsThanAllowed", ERROR_FILE_FORMAT, [](VqSpec &data, ImageSpec &) { data.codeBits = 17; }},
    {"NoTables", ERROR_FILE_FORMAT, [](VqSpec &data, ImageSpec &) { data.tables = 0; }},
    {"FirstCodeWithoutEntry", ERROR_FILE_FORMAT, [](VqSpec &data, ImageSpec &) { data.codes.front() = 90; }},
    {"LastCodeWithoutEntry", ERROR_FILE_FORMAT, [](VqSpec &data, ImageSpec &) { data.codes.back() = 4095; }},
    {"NoEntries", ERROR_FILE_FORMAT, [](VqSpec &data, ImageSpec &) { data.kernels.clear(); }},
    {"MoreEntriesThanTheFile", ERROR_FILE_READ, [](VqSpec &data, ImageSpec &) { data.entries = 0xFFFFFFFF; }},
    {"OneCodeTooFew", ERROR_FILE_READ, [](VqSpec &data, ImageSpec &) { data.codes.pop_back(); }},
    {"MoreBlocksThanTheFile", ERROR_FILE_READ,
     [](VqSpec &, ImageSpec &image) {
       image.fields = {{"NBPR", "0200"}, {"NBPC", "0100"}};
     }},
    {"OneBit", ERROR_NOT_SUPPORTED, [](VqSpec &, ImageSpec &image) { image.bits = 1; }},
    {"TwelveBits", ERROR_NOT_SUPPORTED, [](VqSpec &, ImageSpec &image) { image.bits = 12; }},
    {"ThirtyTwoBits", ERROR_NOT_SUPPORTED, [](VqSpec &, ImageSpec &image) { image.bits = 32; }},
    {"ThreeBands", ERROR_NOT_SUPPORTED, [](VqSpec &, ImageSpec &image) { image.bands.resize(3); }},
};

INSTANTIATE_TEST_SUITE_P(VectorQuantised, VqFaults, testing::ValuesIn(kFaults),
                         [](const auto &given) { return std::string(given.param.name); });

}  // namespace
