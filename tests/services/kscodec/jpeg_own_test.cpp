// JPEG of the kinds that are decoded without a library: lossless, 12 bits, more than four components. What comes out
// must be the samples that went in.
#include "codec_test.h"
#include "jpeg_builder.h"

#include <algorithm>
#include <cmath>
#include <tuple>

namespace {

constexpr uint32_t kWidth = 21;
constexpr uint32_t kHeight = 19;

/** Noise, with the greatest steps that there are in the first row. */
uint32_t Noise(uint32_t bits, uint32_t component, uint32_t x, uint32_t y) {
  if (y == 0) return (x & 1) << (bits - 1);
  const uint32_t hash = (x * 2654435761U ^ (y + 7 * component) * 2246822519U) * 3266489917U;
  return hash >> (32 - bits);
}

/** Smooth, as a transform likes it, and over nearly all of the range. */
uint32_t Wave(uint32_t bits, uint32_t component, uint32_t x, uint32_t y) {
  const double wave = std::sin(0.11 * x + component) * 0.3 + std::cos(0.13 * y - component) * 0.18;
  return static_cast<uint32_t>((0.5 + wave) * ((1U << bits) - 1));
}

uint32_t Scaled(uint32_t value, uint32_t bits, uint32_t to) {
  const uint64_t greatest = (1U << bits) - 1;
  return static_cast<uint32_t>((uint64_t{value} * ((1U << to) - 1) + greatest / 2) / greatest);
}

uint32_t DepthOfGray(uint32_t bits) {
  if (bits <= 8) return 8;
  return bits <= 12 ? 12 : 16;
}

/** The sample of a component that shows at a pixel. */
uint32_t Shown(const JpegSpec &spec, uint32_t component, uint32_t x, uint32_t y) {
  const JpegSampling size = JpegSizeOf(spec, component);
  const uint32_t across = (spec.width + size.across - 1) / size.across;
  const uint32_t down = (spec.height + size.down - 1) / size.down;
  return spec.sample(component, x / across, y / down) >> spec.pointTransform << spec.pointTransform;
}

/** The levels of a pixel: a gray in its bitmap's depth, or blue, green and red of the components given. */
void ExpectSamples(const JpegSpec &spec, const KsBitmap &bitmap, const std::array<uint32_t, 3> &bands,
                   double tolerance) {
  const bool isGray = spec.components == 1;
  ASSERT_EQ(bitmap.width, spec.width);
  ASSERT_EQ(bitmap.height, spec.height);
  ASSERT_EQ(bitmap.bitsPerPixel, isGray ? DepthOfGray(spec.bits) : 24);
  const Bytes storage = StorageOf(bitmap);
  for (uint32_t y = 0; y < spec.height; ++y) {
    for (uint32_t x = 0; x < spec.width; ++x) {
      const uint64_t pixel = PixelOf(bitmap, storage, x, y);
      if (isGray) {
        // Up to 8 bits may be indices.
        const uint32_t to = spec.bits <= 8 ? spec.bits : DepthOfGray(spec.bits);
        ASSERT_NEAR(double(pixel), Scaled(Shown(spec, 0, x, y), spec.bits, to), tolerance) << x << ", " << y;
        continue;
      }
      for (uint32_t channel = 0; channel < 3; ++channel) {
        const uint32_t level = Scaled(Shown(spec, bands[2 - channel], x, y), spec.bits, 8);
        ASSERT_NEAR(double(pixel >> (8 * channel) & 0xFF), level, tolerance) << x << ", " << y;
      }
    }
  }
}

constexpr std::array<uint32_t, 3> kFirstThree = {0, 1, 2};

JpegSpec Lossless(uint32_t bits, uint32_t components, uint32_t predictor) {
  JpegSpec spec{.width = kWidth, .height = kHeight, .bits = bits, .components = components, .predictor = predictor};
  spec.sample = [bits](uint32_t component, uint32_t x, uint32_t y) { return Noise(bits, component, x, y); };
  return spec;
}

JpegSpec Sequential(uint32_t bits, uint32_t components) {
  JpegSpec spec{.width = kWidth, .height = kHeight, .bits = bits, .lossless = false, .components = components};
  spec.sample = [bits](uint32_t component, uint32_t x, uint32_t y) { return Wave(bits, component, x, y); };
  return spec;
}

// ---- lossless -------------------------------------------------------------------------------------------------------

class LosslessJpeg : public ServiceTestWith<std::tuple<uint32_t, uint32_t>> {};

TEST_P(LosslessJpeg, GivesTheSamplesThatWentIn) {
  const auto [predictor, components] = GetParam();
  // Two components show the first as a gray.
  const std::array<uint32_t, 3> bands = components == 2 ? std::array<uint32_t, 3>{} : kFirstThree;
  for (const uint32_t bits : {2U, 7U, 8U, 10U, 12U, 13U, 16U}) {
    for (const uint32_t restartRows : {0U, 3U}) {
      for (const uint32_t pointTransform : {0U, bits > 2 ? 2U : 1U}) {
        JpegSpec spec = Lossless(bits, components, predictor);
        spec.restartRows = restartRows;
        spec.pointTransform = pointTransform;
        KsLocalBitmap bitmap;
        ASSERT_EQ(LoadStream(EncodeJpeg(spec), bitmap), SUCCESS);
        ASSERT_NO_FATAL_FAILURE(ExpectSamples(spec, *bitmap.Get(), bands, 0)) << bits << " bits";
      }
    }
  }
}

INSTANTIATE_TEST_SUITE_P(PredictorsAndComponents, LosslessJpeg,
                         testing::Combine(testing::Range(1U, 8U), testing::Range(1U, 5U)));

// ---- forms that all share -------------------------------------------------------------------------------------------

struct FormCase {
  const char *name;
  JpegSpec spec;
  double tolerance;
};

FormCase Form(const char *name, JpegSpec spec, std::vector<JpegSampling> sampling, bool eachAlone = false,
              uint32_t restartRows = 0) {
  spec.sampling = std::move(sampling);
  spec.eachAlone = eachAlone;
  spec.restartRows = restartRows;
  return {name, spec, spec.lossless ? 0.0 : 1.5};
}

FormCase Wide(FormCase form) {
  form.spec.wideQuantisation = true;
  return form;
}

using OwnJpeg = ServiceTestWith<FormCase>;

TEST_P(OwnJpeg, GivesTheBandsThatAreAskedFor) {
  const auto &[name, spec, tolerance] = GetParam();
  const uint32_t last = spec.components - 1;
  const Bytes stream = EncodeJpeg(spec);
  for (const std::array<uint32_t, 3> bands : {kFirstThree, std::array<uint32_t, 3>{last, 0, last / 2}}) {
    KsLocalBitmap bitmap;
    const KsLoadOptions options = Options(KS_LOAD_BANDS, bands);
    ASSERT_EQ(LoadStream(stream, bitmap, &options), SUCCESS);
    ExpectSamples(spec, *bitmap.Get(), bands, tolerance);
  }
}

/** Decodes over other pixels, which must leave no trace. */
void ExpectSameInPlace(const Bytes &stream, const KsBitmap &expected) {
  KsLocalBitmap place;
  ASSERT_EQ(Create(place, expected.width, expected.height, expected.bitsPerPixel), SUCCESS);
  SetStorage(*place.Get(), Bytes(uint64_t{expected.bytesPerLine} * expected.height, 0x5A));
  ASSERT_EQ(KsLoadMemoryInPlace(stream.data(), place.Get(), sizeof(KsBitmap), stream.size(), nullptr), SUCCESS);
  const Bytes storage = StorageOf(*place.Get());
  const Bytes wanted = StorageOf(expected);
  for (uint32_t y = 0; y < expected.height; ++y) {
    for (uint32_t x = 0; x < expected.width; ++x) {
      ASSERT_EQ(PixelOf(expected, storage, x, y), PixelOf(expected, wanted, x, y)) << x << ", " << y;
    }
  }
}

/** Whatever is cut off or changed, there is a status, or a picture; rows in front of a break are whole. */
TEST_P(OwnJpeg, BreaksOffWithTheRowsThatItHas) {
  const Bytes stream = EncodeJpeg(GetParam().spec);
  KsLocalBitmap whole;
  ASSERT_EQ(LoadStream(stream, whole), SUCCESS);
  uint32_t before = 0;
  for (size_t size = 3; size < stream.size(); ++size) {
    KsLocalBitmap bitmap;
    const Bytes cut(stream.begin(), stream.begin() + static_cast<std::ptrdiff_t>(size));
    const int32_t status = LoadStream(cut, bitmap);
    ASSERT_TRUE(status == ERROR_FILE_FORMAT || status == SUCCESS) << size << ": " << status;
    if (status != SUCCESS) continue;
    ASSERT_NO_FATAL_FAILURE(ExpectSameInPlace(cut, *bitmap.Get()));
    uint32_t rows = 0;
    const auto isSame = [&](uint32_t row) {
      const uint64_t at = uint64_t{row} * whole->bytesPerLine;
      return std::equal(whole->pixels + at, whole->pixels + at + whole->bytesPerLine, bitmap->pixels + at);
    };
    while (rows < kHeight && isSame(rows)) ++rows;
    ASSERT_GE(rows, before) << size;
    before = rows;
  }
  EXPECT_EQ(before, kHeight);
}

TEST_P(OwnJpeg, GivesAStatusOrAPictureForAnyChangedByte) {
  LoadWithChangedBytes(EncodeJpeg(GetParam().spec));
}

const std::vector<JpegSampling> kHalved = {{2, 2}, {1, 1}, {2, 1}};

INSTANTIATE_TEST_SUITE_P(Forms, OwnJpeg,
                         testing::Values(Form("losslessGray", Lossless(16, 1, 7), {}),
                                         Form("losslessGrayOfOddSampling", Lossless(12, 1, 4), {{2, 2}}, false, 2),
                                         Form("losslessHalved", Lossless(8, 3, 5), kHalved, false, 2),
                                         Form("losslessHalvedInScans", Lossless(8, 3, 6), kHalved, true),
                                         Form("losslessOfFive", Lossless(8, 5, 2), {}, true, 4),
                                         Form("gray12", Sequential(12, 1), {}, false, 1),
                                         Wide(Form("color12", Sequential(12, 3), {})),
                                         Form("color12InScans", Sequential(12, 3), {}, true, 1),
                                         Form("halved12", Sequential(12, 3), kHalved, false, 1),
                                         Form("halved12InScans", Sequential(12, 3), kHalved, true),
                                         Form("fiveOf8", Sequential(8, 5), {}),
                                         Form("sevenOf12", Sequential(12, 7), {{1, 1}, {1, 2}})),
                         [](const auto &form) { return std::string(form.param.name); });

// ---- what decides colour --------------------------------------------------------------------------------------------

class OwnJpegTest : public ServiceTest {};

TEST_F(OwnJpegTest, ThreeComponentsOfTwelveBitsAreLumaAndDifferences) {
  JpegSpec spec = Sequential(12, 3);
  // A saturated red: Y 0.299, Cb below and Cr at the far end of the middle.
  spec.sample = [](uint32_t component, uint32_t, uint32_t) {
    return std::array<uint32_t, 3>{1224, 1357, 4095}[component];
  };
  KsLocalBitmap bitmap;
  ASSERT_EQ(LoadStream(EncodeJpeg(spec), bitmap), SUCCESS);
  const std::array<uint8_t, 3> red = {0, 0, 255};
  for (uint32_t i = 0; i < 3; ++i) EXPECT_NEAR(bitmap->pixels[i], red[i], 2);
}

/** Changes the last of some bytes that occur once in a stream. */
void Change(Bytes &stream, const Bytes &bytes, uint8_t last) {
  const auto found = std::search(stream.begin(), stream.end(), bytes.begin(), bytes.end());
  ASSERT_NE(found, stream.end());
  found[static_cast<std::ptrdiff_t>(bytes.size()) - 1] = last;
}

TEST_F(OwnJpegTest, RestartsWithinARowOfALosslessPictureAreDamage) {
  JpegSpec spec = Lossless(8, 1, 1);
  spec.restartRows = 1;
  Bytes stream = EncodeJpeg(spec);
  Change(stream, {0xFF, 0xDD, 0, 4, 0, kWidth}, kWidth - 1);
  KsLocalBitmap bitmap;
  EXPECT_EQ(LoadStream(stream, bitmap), ERROR_FILE_FORMAT);
}

TEST_F(OwnJpegTest, APictureEndsWhereAnotherMarkerReplacesARestart) {
  JpegSpec spec = Lossless(8, 1, 1);
  spec.restartRows = 1;
  Bytes stream = EncodeJpeg(spec);
  Change(stream, {0xFF, 0xD1}, 0xFE);
  KsLocalBitmap bitmap;
  ASSERT_EQ(LoadStream(stream, bitmap), SUCCESS);
  EXPECT_EQ(bitmap->pixels[bitmap->bytesPerLine], Noise(8, 0, 0, 1));
  uint8_t *const rest = bitmap->pixels + 2 * bitmap->bytesPerLine;
  EXPECT_TRUE(
      std::all_of(rest, bitmap->pixels + kHeight * bitmap->bytesPerLine, [](uint8_t byte) { return byte == 0; }));
}

TEST_F(OwnJpegTest, QuantisationMayHaveSixteenBits) {
  JpegSpec spec = Sequential(12, 1);
  spec.wideQuantisation = true;
  spec.sample = [](uint32_t, uint32_t, uint32_t) { return 2049U; };
  Bytes stream = EncodeJpeg(spec);
  Change(stream, {0xFF, 0xDB, 0, 131, 0x10, 0}, 1);
  KsLocalBitmap bitmap;
  ASSERT_EQ(LoadStream(stream, bitmap), SUCCESS);
  // One above the middle, 257 times.
  EXPECT_EQ(PixelOf(*bitmap.Get(), StorageOf(*bitmap.Get()), 0, 0), 2048u + 257);
}

TEST_F(OwnJpegTest, ABlockHasNoMoreThan64Coefficients) {
  // One block of 12 bits: a difference of 0 (00), then runs of 16 zeros (11111111001), and the end of the block (1010).
  Bytes start = {0xFF, 0xD8, 0xFF, 0xDB, 0, 67, 0};
  start.resize(start.size() + 64, 1);
  start = Joined(start, {0xFF, 0xC1, 0, 11, 12, 0, 8, 0, 8, 1, 1, 0x11, 0, 0xFF, 0xDA, 0, 8, 1, 1, 0, 0, 63, 0});
  KsLocalBitmap bitmap;
  EXPECT_EQ(LoadStream(Joined(start, {0x3F, 0xCF, 0xF9, 0xFF, 0, 0x35, 0xFF, 0xD9}), bitmap), SUCCESS);
  EXPECT_EQ(LoadStream(Joined(start, {0x3F, 0xCF, 0xF9, 0xFF, 0, 0x3F, 0xE7, 0xFF, 0xD9}), bitmap), ERROR_FILE_FORMAT);
}

}  // namespace
