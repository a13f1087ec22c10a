// Images whose layout is unusual, and what is shown of them: expected pixels are worked out by hand.
#include "harness.h"
#include "images/handlimg.h"
#include "internal/ksclasses_.h"
#include "vq_builder.h"

#include <array>
#include <string>

#include <gtest/gtest.h>

namespace {

/** Decodes image 0 of a file. */
struct Decoded {
  explicit Decoded(const ImageSpec &image) : file(NitfBuilder().Image(image)) {
    EXPECT_EQ(file.status, SUCCESS);
    status = DecodeImageSegment(nullptr, file.Get(), 0, bitmap.Get()).Code();
  }
  /** The first `count` bytes of a row. */
  Bytes Row(std::uint32_t row, std::size_t count) const {
    const std::uint8_t *const first = bitmap->pixels + std::size_t{row} * bitmap->bytesPerLine;
    return {first, first + count};
  }

  LoadedFile file;
  KsLocalBitmap bitmap;
  std::int32_t status;
};

// ---- streams of tiles, by a codec that paints their number ----------------------------------------------------------

constexpr std::uint32_t kSide = 4;
constexpr std::uint32_t kAbsent = 0xFFFFFFFF;

Bytes Stream(std::uint8_t number, std::size_t bytes, std::uint8_t side = kSide) {
  Bytes stream = {0xFF, 0xD8, 0xFF, 0xC0, 0, 17,   8,    0, side, 0, side, 3, 1, 0x11, 0, 2,
                  0x11, 0,    3,    0x11, 0, 0xFF, 0xDA, 0, 8,    1, 1,    0, 0, 63,   0, number};
  stream.resize(bytes, 0x11);
  return stream;
}

std::vector<std::uint64_t> sizes;
KsLoadOptions lastOptions;

std::int32_t PaintNumber(const void *buffer, KsBitmap *bitmap, std::uint32_t bitmapSize, std::int32_t, std::int32_t,
                         std::uint64_t size, const KsLoadOptions *options, void *) {
  const auto *stream = static_cast<const std::uint8_t *>(buffer);
  sizes.push_back(size);
  lastOptions = *options;
  const std::int32_t status = KsBitmapCreate(bitmap, bitmapSize, KS_BITMAP_OWN, stream[10], stream[8], 8,
                                             KS_ORDER_PALETTE, nullptr, 1, nullptr, 0);
  if (status == SUCCESS) KsBitmapFill(bitmap, stream[31] * 0x010101U);
  return status;
}

/** An image of 2 x 2 blocks; the streams follow each other. */
ImageSpec Tiled(const std::vector<Bytes> &streams, const char *compression = "C3") {
  ImageSpec image{.rows = 2 * kSide, .columns = 2 * kSide, .compression = compression, .blockWidth = kSide};
  image.blockHeight = kSide;
  for (const Bytes &stream : streams) image.data.insert(image.data.end(), stream.begin(), stream.end());
  return image;
}

ImageSpec InBands(ImageSpec image) {
  image.mode = 'S';
  image.representation = "RGB";
  image.bands = std::vector<BandSpec>(3);
  return image;
}

std::uint32_t BlockColor(const Composition &picture, std::uint32_t block) {
  return picture.At(block / 2 * kSide, block % 2 * kSide);
}

TEST(SeparateBands, EachTileThatIsMissingIsTheLastOne) {
  std::vector<Bytes> streams;
  for (std::uint8_t tile = 1; tile <= 10; ++tile) streams.push_back(Stream(tile, 1050));
  const Composition picture = Compose(NitfBuilder().Image(InBands(Tiled(streams))), {.load = PaintNumber});
  ASSERT_EQ(picture.status, SUCCESS);
  constexpr std::uint32_t kColors[] = {0x010509, 0x02060A, 0x03070A, 0x04080A};
  for (std::uint32_t block = 0; block < 4; ++block) EXPECT_EQ(BlockColor(picture, block), kColors[block]) << block;
}

TEST(SeparateBands, TheLastRecordedTileEndsWithTheData) {
  ImageSpec image = InBands(Tiled({Stream(1, 1050), Stream(2, 1050), Stream(3, 1050)}, "M3"));
  image.mask = MaskSpec{std::vector<std::uint32_t>(12, kAbsent), {}, {}};
  for (const std::uint32_t block : {0U, 1U, 3U}) {
    image.mask->blockOffsets[block] = 1050 * (block == 3 ? 2 : block);
  }
  sizes.clear();
  // Bytes behind the image: a read beyond its data would succeed.
  const Composition picture =
      Compose(NitfBuilder().Image(image).Text({std::string(500, 'x'), {}}), {.load = PaintNumber});
  ASSERT_EQ(picture.status, SUCCESS);
  EXPECT_EQ(sizes, std::vector<std::uint64_t>(9, 1050));
  EXPECT_EQ(BlockColor(picture, 3), 0x030303U);
}

TEST(SeparateBands, WithoutAnyMarkAreOfNoKnownKind) {
  EXPECT_EQ(Compose(NitfBuilder().Image(InBands(Tiled({Bytes(2000, 7)})))).status, NITF_UNSUPPORTED_TILE);
  EXPECT_EQ(Compose(NitfBuilder().Image(InBands(Tiled({Bytes(20, 7)})))).status, NITF_UNSUPPORTED_TILE);
}

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
  ImageSpec image = Tiled({Stream(30, 1100, 6), Stream(40, 1100)}, "M3");
  image.mask = MaskSpec{{0, kAbsent, 1100, kAbsent}, {}, {}};
  const Composition inStrips = Compose(NitfBuilder().Image(image), {.load = PaintNumber});
  const DrawnByCaller whole(image);
  const DrawnByCaller checked(image, 1);
  ASSERT_EQ(inStrips.status, SUCCESS);
  ASSERT_EQ(whole.status, SUCCESS);
  for (std::uint32_t row = 0; row < 8; ++row) {
    for (std::uint32_t column = 0; column < 8; ++column) {
      const bool below = row >= 4 && column < 4;
      const std::uint32_t expected = below ? 40 : row < 6 && column < 6 ? 30 : 0;
      EXPECT_EQ(inStrips.At(row, column) & 0xFF, expected) << row << ", " << column;
      EXPECT_EQ(whole.Gray(row, column), expected) << row << ", " << column;
      EXPECT_EQ(checked.Gray(row, column), expected) << row << ", " << column;
    }
  }
}

// ---- bands of JPEG 2000 ---------------------------------------------------------------------------------------------

struct NamedBands {
  const char *compression;
  const char *representation;
  std::array<const char *, 3> tags;
  std::uint32_t flags;
  std::array<std::uint32_t, 3> bands;
};

class NamedBandsOfStreams : public testing::TestWithParam<NamedBands> {};

TEST_P(NamedBandsOfStreams, AreToldToTheCodec) {
  const NamedBands &given = GetParam();
  ImageSpec image{.rows = kSide, .columns = kSide, .bands = {}, .compression = given.compression};
  image.representation = given.representation;
  image.data = Stream(1, 100);
  for (const char *tag : given.tags) image.bands.push_back({tag, 0, {}});
  ASSERT_EQ(Compose(NitfBuilder().Image(image), {.load = PaintNumber}).status, SUCCESS);
  EXPECT_EQ(lastOptions.loadFlags, given.flags);
  EXPECT_EQ((std::array<std::uint32_t, 3>{lastOptions.bands[0], lastOptions.bands[1], lastOptions.bands[2]}),
            given.bands);
}

constexpr std::uint32_t kNamed = KS_LOAD_BANDS | KS_LOAD_NAMED_BANDS;

INSTANTIATE_TEST_SUITE_P(
    Tiles, NamedBandsOfStreams,
    testing::Values(NamedBands{"C8", "YCbCr601", {"Cr", "Cb", "Y "}, kNamed | KS_LOAD_YCBCR, {2, 1, 0}},
                    NamedBands{"C8", "RGB", {"B ", "R ", "G "}, KS_LOAD_COLOR | kNamed, {1, 2, 0}},
                    NamedBands{"C8", "RGB", {"Y ", "Cb", "Cr"}, KS_LOAD_COLOR, {0, 0, 0}},
                    NamedBands{"C8", "YCbCr601", {"Y ", "Cb", "  "}, 0, {0, 0, 0}},
                    NamedBands{"C8", "MULTI", {"B ", "R ", "G "}, KS_LOAD_BANDS, {1, 2, 0}},
                    NamedBands{"C3", "YCbCr601", {"Cr", "Cb", "Y "}, 0, {0, 0, 0}}));

// ---- samples of 12 bits ---------------------------------------------------------------------------------------------

struct DeepCase {
  std::uint32_t actualBits;
  std::uint32_t blockWidth;
  Bytes row;
};

class TwelveBits : public testing::TestWithParam<DeepCase> {};

/** Two pixels a block: of two blocks, each is converted for itself. */
TEST_P(TwelveBits, AreConvertedByTheirBlocksAndActualBits) {
  ImageSpec image{.rows = 1, .columns = 4, .bits = 12, .actualBits = GetParam().actualBits};
  image.blockWidth = GetParam().blockWidth;
  image.data = {0x00, 0xC8, 0x56, 0x12, 0x34, 0x56};
  const Decoded decoded(image);
  ASSERT_EQ(decoded.status, SUCCESS);
  EXPECT_EQ(decoded.Row(0, 6), GetParam().row);
}

INSTANTIATE_TEST_SUITE_P(Images, TwelveBits,
                         testing::Values(
                             // 0x00C * 1 and 0x856; 0x123 and 0x456
                             DeepCase{12, 2, {0x0C, 0x60, 0x85, 0x23, 0x61, 0x45}},
                             // pairs of bytes: 200 * 4095 / 1023 = 800, 0x1234 * 4095 / 1023 = 18653
                             DeepCase{10, 2, {0x20, 0x03, 0x56, 0xDD, 0x48, 0x56}},
                             DeepCase{8, 2, {0x00, 0xC8, 0x56, 0x12, 0x34, 0x56}},
                             // a single block: samples * 4095 / 1023, of which 12 bits stay: 48, 350, 1164, 347
                             DeepCase{10, 4, {0x30, 0xE0, 0x15, 0x8C, 0xB4, 0x15}}));

// ---- vector quantisation ----------------------------------------------------------------------------------------

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

// ---- packed and bi-level blocks -------------------------------------------------------------------------------------

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
