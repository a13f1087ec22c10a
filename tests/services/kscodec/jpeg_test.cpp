// JPEG of 8 bits: what a stream says, and its pixels. Streams are encoded from known components, so that the expected
// picture needs no decoder.
#include "codec_test.h"
#include "jpeg_encoder.h"

#include <algorithm>
#include <cmath>
#include <string_view>

namespace {

constexpr uint32_t kWidth = JpegEncoding{}.width;
constexpr uint32_t kHeight = JpegEncoding{}.height;

/** The value of a component at a pixel: smooth, and different for each component. */
int Sample(int component, uint32_t x, uint32_t y) {
  const double wave = std::sin(0.09 * x + component) * 30 + std::cos(0.07 * y + 2 * component) * 20;
  return static_cast<int>(std::lround(128 + wave - 12 * (component % 3)));
}

Bytes Encode(const JpegEncoding &encoding) {
  return EncodeByLibrary(encoding, [](uint32_t component, uint32_t x, uint32_t y) {
    return static_cast<uint32_t>(Sample(static_cast<int>(component), x, y));
  });
}

/** Where the first segment of a marker begins, and its length with the marker. */
struct Place {
  size_t position;
  size_t length;
};

Place Find(const Bytes &stream, uint8_t marker) {
  for (size_t at = 2; at + 4 <= stream.size();) {
    const size_t length = 2 + static_cast<size_t>(stream[at + 2] << 8 | stream[at + 3]);
    if (stream[at + 1] == marker) return {at, length};
    at += length;
  }
  ADD_FAILURE() << "no marker " << int{marker};
  return {2, 0};
}

Bytes WithoutSegments(Bytes stream, uint8_t marker, int count) {
  for (int i = 0; i < count; ++i) {
    const Place place = Find(stream, marker);
    const auto begin = stream.begin() + static_cast<std::ptrdiff_t>(place.position);
    stream.erase(begin, begin + static_cast<std::ptrdiff_t>(place.length));
  }
  return stream;
}

/** What the bytes of a pixel are expected to be. */
enum class Route { kGray, kYCbCr, kBands };

std::array<double, 3> ExpectedPixel(Route route, const std::array<int, 3> &bands, uint32_t x, uint32_t y) {
  if (route != Route::kYCbCr) {
    return {double(Sample(bands[2], x, y)), double(Sample(bands[1], x, y)), double(Sample(bands[0], x, y))};
  }
  const double luma = Sample(0, x, y);
  const double cb = Sample(1, x, y) - 128;
  const double cr = Sample(2, x, y) - 128;
  return {luma + 1.772 * cb, luma - 0.344136 * cb - 0.714136 * cr, luma + 1.402 * cr};
}

void ExpectPicture(const KsBitmap &bitmap, Route route, const std::array<int, 3> &bands, double tolerance) {
  const uint32_t bytes = route == Route::kGray ? 1 : 3;
  ASSERT_EQ(bitmap.width, kWidth);
  ASSERT_EQ(bitmap.height, kHeight);
  ASSERT_EQ(bitmap.bitsPerPixel, bytes * 8);
  EXPECT_EQ(bitmap.order, route == Route::kGray ? KS_ORDER_PALETTE : KS_ORDER_BGR);
  EXPECT_EQ(bitmap.colorCount, 0u);
  for (uint32_t y = 0; y < kHeight; ++y) {
    for (uint32_t x = 0; x < kWidth; ++x) {
      const std::array<double, 3> expected = ExpectedPixel(route, bands, x, y);
      for (uint32_t i = 0; i < bytes; ++i) {
        const double value = std::clamp(expected[i], 0.0, 255.0);
        const int found = bitmap.pixels[uint64_t{y} * bitmap.bytesPerLine + uint64_t{x} * bytes + i];
        ASSERT_NEAR(found, value, tolerance) << x << ", " << y << " byte " << i;
      }
    }
  }
}

constexpr std::array<int, 3> kFirstThree = {0, 1, 2};

// ---- kinds ----------------------------------------------------------------------------------------------------------

struct KindCase {
  const char *name;
  JpegEncoding encoding;
  uint32_t format;
  Route route = Route::kYCbCr;
  double tolerance = 4;
  std::array<int, 3> bands = kFirstThree;
  uint32_t flags = 0;
  std::array<uint32_t, 3> asked = {};
};

using JpegKind = ServiceTestWith<KindCase>;

TEST_P(JpegKind, IsRecognisedAndDecoded) {
  const KindCase &kind = GetParam();
  const Bytes stream = Encode(kind.encoding);
  KsFileInfo info;
  ASSERT_EQ(Inform(stream, &info), SUCCESS);
  EXPECT_EQ(info.formatId, kind.format);
  EXPECT_EQ(info.width, kWidth);
  EXPECT_EQ(info.height, kHeight);
  EXPECT_EQ(info.bitsPerPixel, static_cast<uint32_t>(kind.encoding.components * 8));
  const KsLoadOptions options = Options(kind.flags, kind.asked);
  KsLocalBitmap bitmap;
  ASSERT_EQ(LoadStream(stream, bitmap, &options), SUCCESS);
  ExpectPicture(*bitmap.Get(), kind.route, kind.bands, kind.tolerance);
}

INSTANTIATE_TEST_SUITE_P(
    Kinds, JpegKind,
    testing::Values(
        KindCase{"gray", {.components = 1}, KS_FORMAT_JPEG, Route::kGray, 2, {0, 0, 0}},
        KindCase{"grayWithRestarts", {.components = 1, .restart = 3}, KS_FORMAT_JPEG, Route::kGray, 2, {0, 0, 0}},
        KindCase{"grayOfOddSampling", {1, {{2, 2}}}, KS_FORMAT_JPEG, Route::kGray, 2, {0, 0, 0}},
        KindCase{"grayProgressive", {1, {}, true}, KS_FORMAT_JPEG_PROGRESSIVE, Route::kGray, 2, {0, 0, 0}},
        KindCase{"color", {}, KS_FORMAT_JPEG},
        KindCase{"colorOfEqualSampling", {3, {{2, 1}, {2, 1}, {2, 1}}}, KS_FORMAT_JPEG},
        KindCase{"colorInThreeScans", {.eachAlone = true, .restart = 4}, KS_FORMAT_JPEG},
        KindCase{"halvedAcross", {.sampling = {{2, 1}}, .restart = 2}, KS_FORMAT_JPEG_422, Route::kYCbCr, 8},
        KindCase{"halvedAcrossOfTwoRows", {3, {{2, 2}, {1, 2}, {1, 2}}}, KS_FORMAT_JPEG_422, Route::kYCbCr, 8},
        KindCase{"halvedBothWays", {3, {{2, 2}}}, KS_FORMAT_JPEG_420, Route::kYCbCr, 12},
        KindCase{"halvedDown", {3, {{1, 2}}}, KS_FORMAT_JPEG_420, Route::kYCbCr, 8},
        KindCase{"unlikeChroma", {3, {{2, 1}, {2, 1}, {1, 1}}}, KS_FORMAT_JPEG_420, Route::kYCbCr, 8},
        KindCase{"progressive", {3, {{2, 2}}, true}, KS_FORMAT_JPEG_PROGRESSIVE, Route::kYCbCr, 12},
        KindCase{"twoComponents", {.components = 2}, KS_FORMAT_JPEG_MANY, Route::kBands, 2, {0, 0, 0}},
        KindCase{"fourComponents", {.components = 4}, KS_FORMAT_JPEG_MANY, Route::kBands, 2},
        KindCase{"fourComponentsInScans", {.components = 4, .eachAlone = true}, KS_FORMAT_JPEG_MANY, Route::kBands, 2}),
    [](const auto &kind) { return kind.param.name; });

// ---- colours and bands ----------------------------------------------------------------------------------------------

/** A gray, or one of several components without subsampling. */
KindCase Colors(const char *name, const JpegEncoding &encoding, uint32_t flags, Route route,
                std::array<uint32_t, 3> asked = {}, std::array<int, 3> bands = kFirstThree) {
  const bool isUsual = encoding.components == 1 || encoding.components == 3;
  return {name, encoding, isUsual ? KS_FORMAT_JPEG : KS_FORMAT_JPEG_MANY, route, 4, bands, flags, asked};
}

INSTANTIATE_TEST_SUITE_P(
    Colors, JpegKind,
    testing::Values(
        Colors("plain", {}, 0, Route::kYCbCr), Colors("wanted", {}, KS_LOAD_COLOR, Route::kBands),
        Colors("nitfRgb", {.nitf = {{0, 1}}}, 0, Route::kBands),
        Colors("nitfRgbBesideJfif", {.jfif = true, .nitf = {{0, 1}}}, 0, Route::kBands),
        Colors("nitfYCbCrWithLetters", {.nitf = {{0, 2}}, .ids = "RGB"}, KS_LOAD_COLOR, Route::kYCbCr),
        Colors("nitfOther", {.nitf = {{0, 3}}}, 0, Route::kYCbCr), Colors("jfif", {.jfif = true}, 0, Route::kYCbCr),
        Colors("jfifWithLetters", {.jfif = true, .ids = "RGB"}, KS_LOAD_COLOR, Route::kYCbCr),
        Colors("adobeYCbCrWithLetters", {.adobe = uint8_t{1}, .ids = "RGB"}, 0, Route::kYCbCr),
        Colors("adobeRgb", {.adobe = uint8_t{0}}, 0, Route::kBands),
        Colors("adobeRgbBesideJfif", {.jfif = true, .adobe = uint8_t{0}}, 0, Route::kBands),
        Colors("adobeUnknownWithLetters", {.adobe = uint8_t{7}, .ids = "RGB"}, 0, Route::kBands),
        Colors("letters", {.ids = "RGB"}, 0, Route::kBands), Colors("someLetters", {.ids = "RGC"}, 0, Route::kYCbCr),
        Colors("bandsOfThree", {.jfif = true}, KS_LOAD_BANDS, Route::kBands, {2, 0, 1}, {2, 0, 1}),
        Colors("bandsOfFour", {.components = 4}, KS_LOAD_BANDS, Route::kBands, {3, 1, 3}, {3, 1, 3}),
        Colors("bandsBehindTheLast", {.components = 4}, KS_LOAD_BANDS, Route::kBands, {9, UINT32_MAX, 0}, {3, 3, 0}),
        Colors("bandsOfTwo", {.components = 2}, KS_LOAD_BANDS, Route::kBands, {1, 0, 1}, {1, 0, 1}),
        Colors("bandsOfOne", {.components = 1}, KS_LOAD_BANDS, Route::kGray, {2, 1, 0}, {0, 0, 0})),
    [](const auto &kind) { return kind.param.name; });

// ---- other forms of the same stream ---------------------------------------------------------------------------------

constexpr uint8_t kMultiBandPrefix[27] = {0xFF, 0xD8, 0xFF, 0xE6, 0, 25, 'N', 'I', 'T', 'F', 0, 2, 0, 0x42,
                                          0,    2,    0,    2,    3, 8,  0,   1,   0,   3,   8, 1, 1};

class JpegTest : public ServiceTest {
 protected:
  void ExpectSamePicture(const Bytes &stream, const Bytes &other) {
    KsLocalBitmap bitmap;
    KsLocalBitmap otherBitmap;
    ASSERT_EQ(LoadStream(stream, bitmap), SUCCESS);
    ASSERT_EQ(LoadStream(other, otherBitmap), SUCCESS);
    EXPECT_EQ(StorageOf(*bitmap.Get()), StorageOf(*otherBitmap.Get()));
  }
};

TEST_F(JpegTest, StreamsWithoutHuffmanTablesMeanTheStandardOnes) {
  const Bytes gray = Encode({.components = 1});
  ExpectSamePicture(gray, WithoutSegments(gray, 0xC4, 2));
  const Bytes color = Encode({.sampling = {{2, 1}}});
  ExpectSamePicture(color, WithoutSegments(color, 0xC4, 4));
}

TEST_F(JpegTest, FillBytesMayStandInFrontOfTheStream) {
  const Bytes stream = Encode({.components = 1});
  Bytes padded(7, 0xFF);
  padded.insert(padded.end(), stream.begin(), stream.end());
  ExpectSamePicture(stream, padded);
}

TEST_F(JpegTest, StreamsWithoutQuantisationAreDamaged) {
  KsLocalBitmap bitmap;
  EXPECT_EQ(LoadStream(WithoutSegments(Encode({.components = 1}), 0xDB, 1), bitmap), ERROR_FILE_FORMAT);
}

TEST_F(JpegTest, StreamsWithoutQuantisationHaveTheTablesOfTheirNitfSegment) {
  // Level 3, in zigzag order.
  const Bytes numbers = {8,  10, 10, 10, 10, 10, 10, 10, 10, 10, 11, 10, 11, 10, 11, 13, 11, 12, 12, 11, 13, 15,
                         13, 13, 14, 13, 13, 15, 18, 16, 15, 16, 16, 15, 16, 18, 19, 18, 19, 21, 19, 18, 19, 22,
                         23, 25, 25, 23, 22, 27, 30, 32, 30, 27, 36, 40, 40, 36, 50, 53, 50, 68, 68, 91};
  Bytes whole = Encode({.components = 1, .nitf = {{3, 0}}});
  const Place table = Find(whole, 0xDB);
  std::copy(numbers.begin(), numbers.end(), whole.begin() + static_cast<std::ptrdiff_t>(table.position) + 5);
  ExpectSamePicture(whole, WithoutSegments(whole, 0xDB, 1));
  // Our own decoder, for five components.
  Bytes many = EncodeJpeg({.width = 9,
                           .height = 9,
                           .sample = [](uint32_t component, uint32_t x, uint32_t) { return 90 + component + 9 * x; },
                           .lossless = false,
                           .components = 5});
  const Place ones = Find(many, 0xDB);
  std::copy(numbers.begin(), numbers.end(), many.begin() + static_cast<std::ptrdiff_t>(ones.position) + 5);
  const Bytes nitf(whole.begin(), whole.begin() + 29);
  const Bytes bare = WithoutSegments(many, 0xDB, 1);
  ExpectSamePicture(many, Joined(nitf, {bare.begin() + 2, bare.end()}));
  KsLocalBitmap bitmap;
  EXPECT_EQ(LoadStream(WithoutSegments(Encode({.components = 1, .nitf = {{6, 0}}}), 0xDB, 1), bitmap),
            ERROR_FILE_FORMAT);
}

TEST_F(JpegTest, APrefixTakesTheTilesOwnStartIntoItsSegment) {
  const Bytes prefix(std::begin(kMultiBandPrefix), std::end(kMultiBandPrefix));
  for (const JpegEncoding &encoding :
       {JpegEncoding{.components = 4}, JpegEncoding{.jfif = true}, JpegEncoding{.components = 1}}) {
    const Bytes tile = Encode(encoding);
    const Bytes prefixed = Joined(prefix, tile);
    ExpectSamePicture(tile, prefixed);
    KsFileInfo info;
    KsFileInfo plain;
    ASSERT_EQ(Inform(prefixed, &info), SUCCESS);
    ASSERT_EQ(Inform(tile, &plain), SUCCESS);
    EXPECT_EQ(std::memcmp(&info, &plain, sizeof info), 0);
  }
}

// ---- damage ---------------------------------------------------------------------------------------------------------

struct DamageCase {
  const char *name;
  JpegEncoding encoding;
};

JpegEncoding Small(JpegEncoding encoding) {
  encoding.width = 19;
  encoding.height = 11;
  return encoding;
}

class JpegDamage : public ServiceTestWith<DamageCase> {
 protected:
  Bytes stream = Encode(Small(GetParam().encoding));
};

TEST_P(JpegDamage, AStreamThatBreaksOffGivesWhatItHas) {
  const Place scan = Find(stream, 0xDA);
  for (size_t size = 1; size < stream.size(); ++size) {
    const bool headerIsWhole = size >= scan.position + scan.length;
    const int32_t damaged = size < 3 ? ERROR_NOT_SUPPORTED : ERROR_FILE_FORMAT;
    EXPECT_EQ(LoadDamaged(Bytes(stream.begin(), stream.begin() + static_cast<std::ptrdiff_t>(size))),
              headerIsWhole ? SUCCESS : damaged)
        << size;
  }
}

TEST_P(JpegDamage, AChangedByteGivesAStatusOrAPicture) {
  LoadWithChangedBytes(stream);
}

INSTANTIATE_TEST_SUITE_P(Streams, JpegDamage,
                         testing::Values(DamageCase{"gray", {.components = 1, .jfif = true}},
                                         DamageCase{"color", {.sampling = {{2, 2}}, .restart = 1, .adobe = uint8_t{1}}},
                                         DamageCase{"progressive", {3, {{2, 1}}, true}},
                                         DamageCase{"fourInScans", {.components = 4, .eachAlone = true}}),
                         [](const auto &damage) { return damage.param.name; });

TEST_F(JpegTest, RowsInFrontOfABreakAreWhole) {
  const Bytes stream = Encode({.components = 1});
  const Bytes half(stream.begin(), stream.begin() + static_cast<std::ptrdiff_t>(stream.size() * 3 / 4));
  KsLocalBitmap whole;
  KsLocalBitmap broken;
  ASSERT_EQ(LoadStream(stream, whole), SUCCESS);
  ASSERT_EQ(LoadStream(half, broken), SUCCESS);
  constexpr std::ptrdiff_t kWholeRows = 16 * std::ptrdiff_t{kWidth};
  EXPECT_TRUE(std::equal(whole->pixels, whole->pixels + kWholeRows, broken->pixels));
  EXPECT_NE(StorageOf(*whole.Get()), StorageOf(*broken.Get()));
}

TEST_F(JpegTest, EndlessScansAreRefused) {
  const Bytes stream = Encode({1, {}, true});
  constexpr uint8_t kScanMarker[] = {0xFF, 0xDA};
  const auto lastScan = std::find_end(stream.begin(), stream.end(), std::begin(kScanMarker), std::end(kScanMarker));
  const Bytes scan(lastScan, stream.end() - 2);
  const auto repeated = [&](int times) {
    Bytes many(stream.begin(), stream.end() - 2);
    for (int i = 0; i < times; ++i) many.insert(many.end(), scan.begin(), scan.end());
    many.insert(many.end(), {0xFF, 0xD9});
    KsLocalBitmap bitmap;
    return LoadStream(many, bitmap);
  };
  EXPECT_EQ(repeated(300), SUCCESS);
  EXPECT_EQ(repeated(600), ERROR_FILE_FORMAT);
}

TEST_F(JpegTest, AShortStreamHoldsNoHugePicture) {
  const auto load = [](Bytes stream, uint8_t frame, uint16_t side) {
    const size_t height = Find(stream, frame).position + 5;
    for (const size_t at : {height, height + 2}) {
      stream[at] = static_cast<uint8_t>(side >> 8);
      stream[at + 1] = static_cast<uint8_t>(side);
    }
    KsLocalBitmap bitmap;
    return LoadStream(stream, bitmap);
  };
  const Bytes sequential = Encode({.components = 1});
  EXPECT_EQ(load(sequential, 0xC0, 8192), SUCCESS);
  EXPECT_EQ(load(sequential, 0xC0, 65000), ERROR_FILE_FORMAT);
  EXPECT_EQ(load(Encode({.components = 1, .progressive = true}), 0xC2, 8192), ERROR_FILE_FORMAT);
  JpegSpec lossless{.width = 9, .height = 9, .bits = 8, .components = 1, .predictor = 1};
  lossless.sample = [](uint32_t, uint32_t, uint32_t) { return 0U; };
  EXPECT_EQ(load(EncodeJpeg(lossless), 0xC3, 65000), ERROR_FILE_FORMAT);
  // The shortest codes that there are: one bit for the level of a block, one for its end.
  const JpegEncoding blank = {.components = 1, .isFitted = true, .width = 9000, .height = 9000};
  KsLocalBitmap black;
  EXPECT_EQ(LoadStream(EncodeByLibrary(blank, [](uint32_t, uint32_t, uint32_t) { return 0U; }), black), SUCCESS);
}

// ---- headers --------------------------------------------------------------------------------------------------------

Bytes FrameOf(uint8_t marker, uint8_t bits, uint16_t width, uint16_t height, uint8_t components) {
  Bytes frame = {0xFF,
                 marker,
                 0,
                 static_cast<uint8_t>(8 + 3 * components),
                 bits,
                 static_cast<uint8_t>(height >> 8),
                 static_cast<uint8_t>(height),
                 static_cast<uint8_t>(width >> 8),
                 static_cast<uint8_t>(width),
                 components};
  for (uint8_t i = 0; i < components; ++i) frame.insert(frame.end(), {i, 0x11, 0});
  return frame;
}

const Bytes kStart = {0xFF, 0xD8};
const Bytes kScan = {0xFF, 0xDA, 0, 8, 1, 0, 0, 0, 63, 0};

struct HeaderCase {
  const char *name;
  Bytes stream;
  int32_t status;
  uint32_t format;
  uint32_t bitsPerPixel;
  int32_t loaded;
};

using JpegHeader = ServiceTestWith<HeaderCase>;

TEST_P(JpegHeader, IsReadOrRefused) {
  const HeaderCase &header = GetParam();
  const Bytes exact(header.stream.begin(), header.stream.end());  // the sanitizer sees the first byte behind it
  KsFileInfo info;
  EXPECT_EQ(Inform(exact, &info), header.status);
  EXPECT_EQ(info.formatId, header.format);
  EXPECT_EQ(info.bitsPerPixel, header.bitsPerPixel);
  KsLocalBitmap bitmap;
  EXPECT_EQ(LoadStream(exact, bitmap), header.loaded);
  EXPECT_EQ(bitmap->pixels, nullptr);
}

HeaderCase Read(const char *name, const Bytes &frame, uint32_t format, uint32_t bitsPerPixel, int32_t loaded) {
  return {name, Joined(Joined(kStart, frame), kScan), SUCCESS, format, bitsPerPixel, loaded};
}

HeaderCase Refused(const char *name, const Bytes &markers, int32_t status = ERROR_FILE_FORMAT) {
  return {name, Joined(Joined(kStart, markers), kScan), status, 0, 0, status};
}

INSTANTIATE_TEST_SUITE_P(
    Headers, JpegHeader,
    testing::Values(
        Read("twelveBits", FrameOf(0xC1, 12, 9, 9, 1), KS_FORMAT_JPEG_12, 12, ERROR_FILE_FORMAT),
        Read("lossless", FrameOf(0xC3, 16, 9, 9, 1), KS_FORMAT_JPEG_LOSSLESS, 16, ERROR_FILE_FORMAT),
        Read("extendedWithoutQuantisation", FrameOf(0xC1, 8, 9, 9, 3), KS_FORMAT_JPEG, 24, ERROR_FILE_FORMAT),
        Read("aboveTheLimit", FrameOf(0xC0, 8, 65000, 65000, 3), KS_FORMAT_JPEG, 24, ERROR_NO_MEMORY),
        Read("manyProgressive", FrameOf(0xC2, 8, 9, 9, 5), KS_FORMAT_JPEG_PROGRESSIVE, 40, ERROR_NOT_SUPPORTED),
        Refused("losslessOfSeventeenBits", FrameOf(0xC3, 17, 9, 9, 1), ERROR_NOT_SUPPORTED),
        Refused("arithmetic", FrameOf(0xC9, 8, 9, 9, 1), ERROR_NOT_SUPPORTED),
        Refused("hierarchical", FrameOf(0xC5, 8, 9, 9, 1), ERROR_NOT_SUPPORTED),
        Refused("progressiveOfTwelveBits", FrameOf(0xC2, 12, 9, 9, 1), ERROR_NOT_SUPPORTED),
        Refused("noWidth", FrameOf(0xC0, 8, 0, 9, 1)), Refused("noHeight", FrameOf(0xC0, 8, 9, 0, 1)),
        Refused("noComponents", FrameOf(0xC0, 8, 9, 9, 0)),
        Refused("twoFrames", Joined(FrameOf(0xC0, 8, 9, 9, 1), FrameOf(0xC0, 8, 9, 9, 1))),
        Refused("noFrame", {0xFF, 0xFE, 0, 2}), Refused("lengthOfOne", {0xFF, 0xFE, 0, 1}),
        Refused("endInFrontOfTheScan", Joined({0xFF, 0xD9}, FrameOf(0xC0, 8, 9, 9, 1))),
        Refused("componentsBehindTheSegment", {0xFF, 0xC0, 0, 8, 8, 0, 9, 0, 9, 1}),
        Refused("samplingOfNothing", {0xFF, 0xC0, 0, 11, 8, 0, 9, 0, 9, 1, 1, 0x01, 0}),
        Refused("segmentBehindTheEnd", {0xFF, 0xFE, 0xFF, 0xFF})),
    [](const auto &header) { return header.param.name; });

}  // namespace
