// How compressed images are cut into streams. The streams are JPEG headers with a number in their scan, and the codec
// is one of the test's own that paints the number: what it is handed is what counts here.
#include "harness.h"

#include <cstring>
#include <numeric>
#include <string>

#include <gtest/gtest.h>

namespace {

constexpr std::uint32_t kSide = 4;
constexpr std::size_t kHeaderBytes = 2 + 19 + 10;

/** A stream of one gray component that shows `number`, `bytes` bytes long. */
Bytes Stream(std::uint8_t number, std::size_t bytes, std::uint32_t side = kSide) {
  const auto size = static_cast<std::uint8_t>(side);
  Bytes stream = {0xFF, 0xD8, 0xFF, 0xC0, 0, 17,   8,    0, size, 0, size, 3, 1, 0x11, 0, 2,
                  0x11, 0,    3,    0x11, 0, 0xFF, 0xDA, 0, 8,    1, 1,    0, 0, 63,   0};
  stream.push_back(number);
  stream.resize(bytes - 2, 0x11);
  stream.insert(stream.end(), {0xFF, 0xD9});
  return stream;
}

/** A stream of something else. */
Bytes OtherStream(std::size_t bytes) {
  Bytes stream = {0xFF, 0xD8, 0xFF, 0x00};
  stream.resize(bytes, 0x22);
  return stream;
}

/** One call of the codec. */
struct Call {
  std::uint8_t number;
  std::uint64_t size;
  bool prefixed;
  std::uint32_t flags;
  std::array<std::uint32_t, 3> bands;
};

std::vector<Call> calls;

constexpr std::size_t kPrefixBytes = 27;

std::int32_t PaintNumber(const void *buffer, KsBitmap *bitmap, std::uint32_t bitmapSize, std::int32_t, std::int32_t,
                         std::uint64_t size, const KsLoadOptions *options, void *) {
  const auto *bytes = static_cast<const std::uint8_t *>(buffer);
  const bool prefixed = bytes[3] == 0xE6;
  const std::uint8_t *stream = prefixed ? bytes + kPrefixBytes : bytes;
  calls.push_back({stream[kHeaderBytes],
                   size,
                   prefixed,
                   options->loadFlags,
                   {options->bands[0], options->bands[1], options->bands[2]}});
  const std::int32_t status = KsBitmapCreate(bitmap, bitmapSize, KS_BITMAP_OWN, stream[10], stream[8], 8,
                                             KS_ORDER_PALETTE, nullptr, 1, nullptr, 0);
  if (status == SUCCESS) KsBitmapFill(bitmap, stream[kHeaderBytes] * 0x010101U);
  return status;
}

/** An image of 2 x 2 blocks; the streams follow each other. */
ImageSpec Tiled(const std::vector<Bytes> &streams) {
  ImageSpec image{.rows = 2 * kSide, .columns = 2 * kSide, .compression = "C3", .blockWidth = kSide};
  image.blockHeight = kSide;
  for (const Bytes &stream : streams) image.data.insert(image.data.end(), stream.begin(), stream.end());
  return image;
}

Composition Draw(const ImageSpec &image) {
  calls.clear();
  return Compose(NitfBuilder().Image(image), {.load = PaintNumber});
}

std::uint32_t BlockLevel(const Composition &picture, std::uint32_t block) {
  return picture.At(block / 2 * kSide, block % 2 * kSide) & 0xFF;
}

void ExpectBlocks(const Composition &picture, const std::array<std::uint32_t, 4> &levels) {
  ASSERT_EQ(picture.status, SUCCESS);
  for (std::uint32_t block = 0; block < 4; ++block) EXPECT_EQ(BlockLevel(picture, block), levels[block]) << block;
}

// ---- one stream ---------------------------------------------------------------------------------------------------

TEST(SingleStream, IsHandedToTheCodecWholeAndPlacedAsItIs) {
  const Composition picture = Draw({.rows = 6, .columns = 6, .compression = "C3", .data = Stream(9, 100)});
  ASSERT_EQ(picture.status, SUCCESS);
  EXPECT_EQ(picture.width, 6U);
  EXPECT_EQ(picture.At(3, 3), 0x090909U);
  EXPECT_EQ(picture.At(4, 4), 0U);
  ASSERT_EQ(calls.size(), 1U);
  EXPECT_EQ(calls[0].size, 100U);
  EXPECT_EQ(calls[0].flags, 0U);
}

TEST(SingleStream, HoldsAllBlocksOfJpeg2000) {
  ImageSpec image = Tiled({Stream(9, 2000, 2 * kSide)});
  for (const char *compression : {"C8", "M8"}) {
    image.compression = compression;
    ExpectBlocks(Draw(image), {9, 9, 9, 9});
    EXPECT_EQ(calls.size(), 1U);
  }
}

TEST(SingleStream, TellsTheCodecOfColours) {
  ImageSpec image{.rows = kSide, .columns = kSide, .representation = "RGB", .compression = "C3"};
  image.bands = std::vector<BandSpec>(3);
  image.data = Stream(9, 100);
  Draw(image);
  EXPECT_EQ(calls.at(0).flags, KS_LOAD_COLOR);
  image.representation = "MULTI";
  image.bands = {{"", 0, {}}, {"B", 0, {}}, {"G", 0, {}}, {"R", 0, {}}};
  Draw(image);
  EXPECT_EQ(calls.at(0).flags, KS_LOAD_BANDS);
  EXPECT_EQ(calls.at(0).bands, (std::array<std::uint32_t, 3>{3, 2, 1}));
}

// ---- tiles without a table ----------------------------------------------------------------------------------------

/** The first tile's length puts the mark of the second one anywhere around the seams of the search. */
class TileSeams : public testing::TestWithParam<std::size_t> {};

TEST_P(TileSeams, HideNoMark) {
  for (std::size_t length = GetParam(); length < GetParam() + 8; ++length) {
    const Composition picture = Draw(Tiled({Stream(1, length), Stream(2, 1500), Stream(3, 100), Stream(4, 1200)}));
    ASSERT_NO_FATAL_FAILURE(ExpectBlocks(picture, {1, 2, 3, 4})) << length;
    ASSERT_EQ(calls[0].size, length);
    ASSERT_EQ(calls[3].size, 1200U);
  }
}

INSTANTIATE_TEST_SUITE_P(Tiles, TileSeams, testing::Values(50, 1016, 1024, 2038, 2046, 3060));

TEST(Tiles, BytesThatAreNoMarkDoNotEndATile) {
  Bytes stream = Stream(1, 1300);
  stream[600] = 0xFF;
  stream[601] = 0xD8;
  ExpectBlocks(Draw(Tiled({stream, Stream(2, 1500), Stream(3, 700), Stream(4, 1200)})), {1, 2, 3, 4});
}

TEST(Tiles, EndOfTheDataWithoutAMarkIsAShortRead) {
  EXPECT_EQ(Draw(Tiled({Stream(1, 1500), Stream(2, 1500)})).status, ERROR_FILE_READ);
}

TEST(Tiles, OfAnotherKindAreForgivenInsideARound) {
  const Composition forgiven = Draw(Tiled({OtherStream(1300), Stream(2, 1500), Stream(3, 1100), Stream(4, 1200)}));
  ExpectBlocks(forgiven, {0, 2, 3, 4});
  const Composition refused = Draw(Tiled({Stream(1, 1300), OtherStream(1500), Stream(3, 1100), Stream(4, 1200)}));
  EXPECT_EQ(refused.status, NITF_UNSUPPORTED_TILE);
}

TEST(Tiles, OfSeveralBandsStandBehindThePrefixButTheFirst) {
  ImageSpec image = Tiled({Stream(1, 1300), Stream(2, 1500), Stream(3, 1100), Stream(4, 1200)});
  image.representation = "MULTI";
  image.bands = std::vector<BandSpec>(4);
  Draw(image);
  ASSERT_EQ(calls.size(), 4U);
  for (std::size_t tile = 0; tile < 4; ++tile) {
    EXPECT_EQ(calls[tile].prefixed, tile != 0);
    EXPECT_EQ(calls[tile].flags, KS_LOAD_BANDS);
    EXPECT_EQ(calls[tile].number, tile + 1);
  }
  EXPECT_EQ(calls[1].size, 1500U + kPrefixBytes);
}

// ---- tiles with a table -------------------------------------------------------------------------------------------

struct MaskCase {
  std::vector<int> recorded; /**< the blocks that are there */
  std::array<std::uint32_t, 4> levels;
  std::uint32_t tileBytes = 1100;
};

class MaskedTiles : public testing::TestWithParam<MaskCase> {};

TEST_P(MaskedTiles, EndWhereTheNextOneBegins) {
  ImageSpec image = Tiled({});
  image.compression = "M3";
  image.mask = MaskSpec{std::vector<std::uint32_t>(4, 0xFFFFFFFF), {}, {}};
  for (const int block : GetParam().recorded) {
    image.mask->blockOffsets[static_cast<std::size_t>(block)] = static_cast<std::uint32_t>(image.data.size());
    const Bytes stream = Stream(static_cast<std::uint8_t>(block + 1), GetParam().tileBytes);
    image.data.insert(image.data.end(), stream.begin(), stream.end());
  }
  ExpectBlocks(Draw(image), GetParam().levels);
  for (const Call &call : calls) EXPECT_EQ(call.size, GetParam().tileBytes);
}

INSTANTIATE_TEST_SUITE_P(Tiles, MaskedTiles,
                         testing::Values(MaskCase{{0, 1, 2, 3}, {1, 2, 3, 4}}, MaskCase{{1, 2, 3}, {0, 2, 3, 4}},
                                         MaskCase{{0, 1, 3}, {1, 2, 0, 4}}, MaskCase{{0, 1, 2}, {1, 2, 3, 0}},
                                         MaskCase{{2}, {0, 0, 3, 0}, 1005}));

TEST(MaskedTiles, WithOffsetsThatGoBackAreAShortRead) {
  ImageSpec image = Tiled({Stream(1, 1300), Stream(2, 1500), Stream(3, 1100), Stream(4, 1200)});
  image.compression = "M3";
  image.mask = MaskSpec{{1300, 0, 2800, 3900}, {}, {}};
  EXPECT_EQ(Draw(image).status, ERROR_FILE_READ);
}

// ---- a stream a band ----------------------------------------------------------------------------------------------

TEST(SeparateBands, LieBandAfterBand) {
  ImageSpec image = Tiled({});
  for (std::uint8_t tile = 0; tile < 12; ++tile) {
    const Bytes stream = Stream(static_cast<std::uint8_t>(tile + 1), 1050);
    image.data.insert(image.data.end(), stream.begin(), stream.end());
  }
  image.mode = 'S';
  image.representation = "RGB";
  image.bands = std::vector<BandSpec>(3);
  const Composition picture = Draw(image);
  ASSERT_EQ(picture.status, SUCCESS);
  for (std::uint32_t block = 0; block < 4; ++block) {
    const std::uint32_t expected = (block + 1) << 16 | (block + 5) << 8 | (block + 9);
    EXPECT_EQ(picture.At(block / 2 * kSide, block % 2 * kSide), expected) << block;
  }
  EXPECT_EQ(calls.at(0).flags, KS_LOAD_COLOR);
}

TEST(SeparateBands, OfMoreThanFourAreNotSupported) {
  ImageSpec image = Tiled({Stream(1, 1300), Stream(2, 1300)});
  image.mode = 'S';
  image.representation = "MULTI";
  image.bands = std::vector<BandSpec>(5);
  EXPECT_EQ(Draw(image).status, ERROR_NOT_SUPPORTED);
}

// ---- bi-level -----------------------------------------------------------------------------------------------------

KsRedirectCallback redirected;
void *redirectedData;
KsRawFormatInfo described;

KsRedirectCallback KeepRedirect(KsRedirectCallback callback, void *userData) {
  const KsRedirectCallback before = redirected;
  redirected = callback;
  redirectedData = userData;
  return before;
}

/** Sets the bits of the first row from the stream's first byte. */
std::int32_t PaintBits(const void *buffer, KsBitmap *bitmap, std::uint32_t, std::int32_t bits, std::int32_t,
                       std::uint64_t size, const KsLoadOptions *options, void *) {
  described = {};
  EXPECT_EQ(redirected(&described, redirectedData), SUCCESS);
  EXPECT_EQ(bits, 1);
  EXPECT_EQ(size, 1U);
  EXPECT_EQ(options, nullptr);
  return KsBitmapPutRow(bitmap, buffer, 0, 1) == 1 ? SUCCESS : ERROR_NO_STORAGE;
}

struct RateCase {
  const char *rate;
  std::uint32_t format;
};

class BilevelStreams : public testing::TestWithParam<RateCase> {};

TEST_P(BilevelStreams, AreDescribedByTheSubheader) {
  ImageSpec image{.rows = 1, .columns = 8, .pixelValueType = "B", .compression = "C1", .bits = 1, .data = {0x0F}};
  image.fields = {{"COMRAT", GetParam().rate}};
  const Composition picture = Compose(NitfBuilder().Image(image), {.load = PaintBits, .setRedirect = KeepRedirect});
  ASSERT_EQ(picture.status, SUCCESS);
  EXPECT_EQ(described.format, GetParam().format);
  EXPECT_EQ(described.width, 8U);
  EXPECT_EQ(described.height, 1U);
  EXPECT_EQ(redirected, nullptr);
}

INSTANTIATE_TEST_SUITE_P(Tiles, BilevelStreams,
                         testing::Values(RateCase{"1D", KS_FORMAT_T4_1D}, RateCase{"2DS", KS_FORMAT_T4_2D},
                                         RateCase{"2DH", KS_FORMAT_T4_2D}, RateCase{"01.0", KS_FORMAT_T4_1D},
                                         RateCase{"2D", KS_FORMAT_T4_1D}));

TEST(BilevelStreams, ChangeTheColoursOfTheirTable) {
  ImageSpec image{.rows = 1, .columns = 8, .representation = "RGB/LUT", .pixelValueType = "B", .compression = "M1"};
  image.bits = 1;
  image.bands = {{"LU", 3, {10, 20, 30, 40, 50, 60}}};
  image.mask = MaskSpec{{}, {}, Bytes{0}};
  image.data = {0x0F};
  // The pad value 0 stands for what is 1 after the change, and with it for the same colour.
  const Composition picture = Compose(NitfBuilder().Field("FBKGC", "\x01\x02\x03").Image(image),
                                      {.load = PaintBits, .setRedirect = KeepRedirect});
  ASSERT_EQ(picture.status, SUCCESS);
  EXPECT_EQ(picture.At(0, 0), 0x14283CU);
  EXPECT_EQ(picture.At(0, 7), 0x010203U);
}

}  // namespace
