// How compressed images are cut into streams. The streams are JPEG headers with a number in their scan, and the codec
// is one of the test's own that paints the number: what it is handed is what counts here.
#include "decoded.h"

#include <array>
#include <string>

namespace {

constexpr std::uint32_t kSide = 4;
constexpr std::size_t kHeaderBytes = 2 + 19 + 10;
constexpr std::uint32_t kAbsent = 0xFFFFFFFF;

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
ImageSpec Tiled(const std::vector<Bytes> &streams, const char *compression = "C3") {
  ImageSpec image{.rows = 2 * kSide, .columns = 2 * kSide, .compression = compression, .blockWidth = kSide};
  image.blockHeight = kSide;
  for (const Bytes &stream : streams) image.data.insert(image.data.end(), stream.begin(), stream.end());
  return image;
}

ImageSpec InBands(ImageSpec image, std::size_t bands = 3) {
  image.mode = 'S';
  image.representation = bands == 3 ? "RGB" : "MULTI";
  image.bands = std::vector<BandSpec>(bands);
  return image;
}

Composition Draw(const ImageSpec &image) {
  calls.clear();
  // Bytes behind the image: a read beyond its data would succeed.
  return Compose(NitfBuilder().Image(image).Text({std::string(500, 'x'), {}}), {.load = PaintNumber});
}

std::uint32_t BlockColor(const Composition &picture, std::uint32_t block) {
  return picture.At(block / 2 * kSide, block % 2 * kSide);
}

void ExpectBlocks(const Composition &picture, const std::array<std::uint32_t, 4> &levels) {
  ASSERT_EQ(picture.status, SUCCESS);
  for (std::uint32_t block = 0; block < 4; ++block)
    EXPECT_EQ(BlockColor(picture, block) & 0xFF, levels[block]) << block;
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
}

TEST(SingleStream, HoldsAllBlocksOfJpeg2000) {
  for (const char *compression : {"C8", "M8"}) {
    ExpectBlocks(Draw(Tiled({Stream(9, 2000, 2 * kSide)}, compression)), {9, 9, 9, 9});
    EXPECT_EQ(calls.size(), 1U);
  }
}

struct ToldBands {
  const char *compression;
  const char *representation;
  std::vector<const char *> tags;
  std::uint32_t flags;
  std::array<std::uint32_t, 3> bands;
};

class ToldCodecs : public testing::TestWithParam<ToldBands> {};

TEST_P(ToldCodecs, KnowColoursAndBands) {
  const ToldBands &given = GetParam();
  ImageSpec image{.rows = kSide, .columns = kSide, .bands = {}, .compression = given.compression};
  image.representation = given.representation;
  image.data = Stream(1, 100);
  for (const char *tag : given.tags) image.bands.push_back({tag, 0, {}});
  ASSERT_EQ(Draw(image).status, SUCCESS);
  EXPECT_EQ(calls.at(0).flags, given.flags);
  EXPECT_EQ(calls.at(0).bands, given.bands);
}

constexpr std::uint32_t kNamed = KS_LOAD_BANDS | KS_LOAD_NAMED_BANDS;

INSTANTIATE_TEST_SUITE_P(
    Tiles, ToldCodecs,
    testing::Values(ToldBands{"C8", "YCbCr601", {"Cr", "Cb", "Y "}, kNamed | KS_LOAD_YCBCR, {2, 1, 0}},
                    ToldBands{"C8", "RGB", {"B ", "R ", "G "}, KS_LOAD_COLOR | kNamed, {1, 2, 0}},
                    ToldBands{"C8", "RGB", {"Y ", "Cb", "Cr"}, KS_LOAD_COLOR, {0, 0, 0}},
                    ToldBands{"C8", "YCbCr601", {"Y ", "Cb", "  "}, 0, {0, 0, 0}},
                    ToldBands{"C8", "MULTI", {"B ", "R ", "G "}, KS_LOAD_BANDS, {1, 2, 0}},
                    ToldBands{"C3", "YCbCr601", {"Cr", "Cb", "Y "}, 0, {0, 0, 0}},
                    ToldBands{"C3", "RGB", {"", "", ""}, KS_LOAD_COLOR, {0, 0, 0}},
                    ToldBands{"C3", "MULTI", {"", "B", "G", "R"}, KS_LOAD_BANDS, {3, 2, 1}},
                    ToldBands{"C3", "MONO", {"M"}, 0, {0, 0, 0}}));

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

TEST(SeparateBands, LieBandAfterBandAndTheLastOnesWhereTilesAreMissing) {
  constexpr std::array<std::array<std::uint32_t, 4>, 2> kColors = {
      {{0x010509, 0x02060A, 0x03070B, 0x04080C}, {0x010509, 0x02060A, 0x03070A, 0x04080A}}};
  for (const std::uint8_t tiles : {12, 10}) {
    std::vector<Bytes> streams;
    for (std::uint8_t tile = 1; tile <= tiles; ++tile) streams.push_back(Stream(tile, 1050));
    const Composition picture = Draw(InBands(Tiled(streams)));
    ASSERT_EQ(picture.status, SUCCESS);
    for (std::uint32_t block = 0; block < 4; ++block) {
      EXPECT_EQ(BlockColor(picture, block), kColors[tiles == 12 ? 0 : 1][block]) << block;
    }
    EXPECT_EQ(calls.at(0).flags, KS_LOAD_COLOR);
  }
}

TEST(SeparateBands, TheLastRecordedTileEndsWithTheData) {
  ImageSpec image = InBands(Tiled({Stream(1, 1050), Stream(2, 1050), Stream(3, 1050)}, "M3"));
  image.mask = MaskSpec{std::vector<std::uint32_t>(12, kAbsent), {}, {}};
  image.mask->blockOffsets[0] = 0;
  image.mask->blockOffsets[1] = 1050;
  image.mask->blockOffsets[3] = 2100;
  ExpectBlocks(Draw(image), {1, 2, 0, 3});
  EXPECT_EQ(calls.size(), 9U);
  for (const Call &call : calls) EXPECT_EQ(call.size, 1050U);
}

TEST(SeparateBands, WithoutAnyMarkOrOfMoreThanFourAreRefused) {
  EXPECT_EQ(Draw(InBands(Tiled({Bytes(2000, 7)}))).status, NITF_UNSUPPORTED_TILE);
  EXPECT_EQ(Draw(InBands(Tiled({Bytes(20, 7)}))).status, NITF_UNSUPPORTED_TILE);
  EXPECT_EQ(Draw(InBands(Tiled({Stream(1, 1300), Stream(2, 1300)}), 5)).status, ERROR_NOT_SUPPORTED);
}

// ---- on the canvas of a caller --------------------------------------------------------------------------------------

/** The picture of a file on a white canvas of the caller. */
struct DrawnByCaller {
  explicit DrawnByCaller(const ImageSpec &image, std::uint32_t toneCheck = 0) : file(NitfBuilder().Image(image)) {
    file->toneCheck = toneCheck;
    EXPECT_EQ(
        KsBitmapCreate(canvas.Get(), sizeof(KsBitmap), KS_BITMAP_OWN, 8, 8, 24, KS_ORDER_BGR, nullptr, 1, nullptr, 0),
        SUCCESS);
    KsBitmapFill(canvas.Get(), 0xFFFFFF);
    FilterLoadRecord context{};
    context.loadFromMemory = PaintNumber;
    context.setRedirect = KsSetRedirect;
    status = K_NitfDrawObjects(&context, nullptr, canvas.Get(), file.Get());
  }
  std::uint32_t Gray(std::uint32_t row, std::uint32_t column) const {
    return canvas->pixels[std::size_t{row} * canvas->bytesPerLine + column * std::size_t{3}];
  }

  LoadedFile file;
  KsLocalBitmap canvas;
  std::int32_t status;
};

TEST(Tiles, ThatFailLeaveNothingOnTheCanvasOfACaller) {
  // The end of the third tile isn't found.
  const DrawnByCaller drawn(Tiled({Stream(1, 1500), Stream(2, 1500), Stream(3, 1500)}));
  EXPECT_EQ(drawn.status, ERROR_FILE_READ);
  for (std::uint32_t pixel = 0; pixel < 64; ++pixel) ASSERT_EQ(drawn.Gray(pixel / 8, pixel % 8), 0xFFU) << pixel;
}

TEST(Tiles, LargerThanTheirBlockStayOverAbsentNeighbours) {
  for (const auto &[width, height] : {std::pair{6, 6}, {6, 4}, {4, 6}, {3, 6}}) {
    Bytes large = Stream(30, 1100);
    large[8] = static_cast<std::uint8_t>(height);
    large[10] = static_cast<std::uint8_t>(width);
    // The block below the large one is there, or the one beside it.
    for (const bool isBelow : {true, false}) {
      ImageSpec image = Tiled({large, Stream(40, 1100)}, "M3");
      image.mask = MaskSpec{{0, isBelow ? kAbsent : 1100, isBelow ? 1100 : kAbsent, kAbsent}, {}, {}};
      const Composition inStrips = Draw(image);
      const DrawnByCaller whole(image);
      const DrawnByCaller checked(image, 1);
      ASSERT_EQ(inStrips.status, SUCCESS);
      ASSERT_EQ(whole.status, SUCCESS);
      for (int pixel = 0; pixel < 64; ++pixel) {
        const int row = pixel / 8;
        const int column = pixel % 8;
        const bool isOther = isBelow ? row >= 4 && column < 4 : row < 4 && column >= 4;
        const std::uint32_t expected = isOther ? 40 : row < height && column < width ? 30 : 0;
        const auto y = static_cast<std::uint32_t>(row);
        const auto x = static_cast<std::uint32_t>(column);
        EXPECT_EQ(inStrips.At(y, x) & 0xFF, expected) << row << ", " << column;
        EXPECT_EQ(whole.Gray(y, x), expected) << row << ", " << column;
        EXPECT_EQ(checked.Gray(y, x), expected) << row << ", " << column;
      }
    }
  }
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
  EXPECT_EQ(described.bits, 1U);
  EXPECT_EQ(described.pages, 1U);
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
  for (const std::uint8_t pad : {0, 1}) {
    image.mask->padCode = Bytes{pad};
    const Composition picture = Compose(NitfBuilder().Field("FBKGC", "\x01\x02\x03").Image(image),
                                        {.load = PaintBits, .setRedirect = KeepRedirect});
    ASSERT_EQ(picture.status, SUCCESS);
    EXPECT_EQ(picture.At(0, 0), pad == 0 ? 0x14283CU : 0x010203U);
    EXPECT_EQ(picture.At(0, 7), pad == 0 ? 0x010203U : 0x0A1E32U);
  }
}

}  // namespace
