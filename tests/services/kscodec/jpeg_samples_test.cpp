// Raw samples of JPEG of 8 bits: what its library decodes, at each of its scales.
#include "jpeg_encoder.h"
#include "samples_test.h"

namespace {

uint32_t Picture(uint32_t component, uint32_t x, uint32_t y) {
  const uint32_t noise = (x * 2654435761U ^ (y + 7 * component) * 2246822519U) >> 27;
  return std::min(255U, (x * (component + 1) + y * 2 + noise) % 256);
}

struct SamplesCase {
  const char *name;
  JpegEncoding encoding;
  uint32_t flags = 0;
  uint32_t color = KS_SAMPLES_COLOR_UNSAID;
  bool isConverted = false;
};

using JpegSamplesTest = ServiceTestWith<SamplesCase>;

TEST_P(JpegSamplesTest, AreThoseOfTheLibraryInAnyWindowAndAtAnyLevel) {
  const auto &[name, encoding, flags, color, isConverted] = GetParam();
  const Bytes stream = EncodeByLibrary(encoding, Picture);
  PieceSource source = {stream};
  OpenedSamples opened;
  OpenedSamples pieces;
  ASSERT_EQ(OpenSamples(stream, &opened, {flags, 0}), SUCCESS);
  ASSERT_EQ(OpenPieces(&source, &pieces, {flags, 0}), SUCCESS);
  const KsSamplesInfo &info = *KsSamplesDescribe(opened.get());
  EXPECT_EQ(info.color, color);
  EXPECT_EQ(info.isConverted, isConverted ? 1u : 0u);
  ASSERT_EQ(info.levels, 3u);
  for (uint32_t level = 0; level <= info.levels; ++level) {
    const JpegPixels decoded = DecodeByLibrary(stream, isConverted, level);
    Samples expected = {decoded.height, decoded.width};
    expected.planes.resize(info.components);
    for (size_t i = 0; i < decoded.samples.size(); ++i) {
      expected.planes[i % info.components].push_back(decoded.samples[i]);
    }
    EXPECT_TRUE(ReadWhole(opened.get(), level) == expected) << "level " << level;
    EXPECT_TRUE(ReadWhole(pieces.get(), level) == expected) << "level " << level;
    ASSERT_NO_FATAL_FAILURE(ExpectWindowsOf(opened.get(), expected, level, 30));
    ASSERT_NO_FATAL_FAILURE(ExpectWindowsOf(pieces.get(), expected, level, 10, 2));
  }
}

constexpr uint32_t kWidth = 203;
constexpr uint32_t kHeight = 157;

JpegEncoding Sized(JpegEncoding encoding) {
  encoding.width = kWidth;
  encoding.height = kHeight;
  encoding.quality = 90;
  return encoding;
}

const SamplesCase kCases[] = {
    {"gray", Sized({.components = 1}), 0, KS_SAMPLES_COLOR_GRAY},
    {"gray in units of 2 by 2", Sized({.components = 1, .sampling = {{2, 2}}}), 0, KS_SAMPLES_COLOR_GRAY},
    {"two", Sized({.components = 2})},
    {"color that nothing is said about", Sized({}), 0, KS_SAMPLES_COLOR_UNSAID, true},
    {"the same, as it is stored", Sized({}), KS_SAMPLES_AS_STORED},
    {"the same, as red, green, blue", Sized({}), KS_SAMPLES_RGB_IF_UNSAID},
    {"JFIF", Sized({.sampling = {{2, 2}}, .jfif = true}), KS_SAMPLES_RGB_IF_UNSAID, KS_SAMPLES_COLOR_YCBCR, true},
    {"letters", Sized({.ids = "RGB"}), 0, KS_SAMPLES_COLOR_RGB},
    {"the format's own segment", Sized({.nitf = {{0, 1}}}), 0, KS_SAMPLES_COLOR_RGB},
    {"4:2:2 with restarts", Sized({.sampling = {{2, 1}}, .restart = 3}), 0, KS_SAMPLES_COLOR_UNSAID, true},
    {"4:2:0 stored", Sized({.sampling = {{2, 2}}}), KS_SAMPLES_AS_STORED},
    {"4:4:0", Sized({.sampling = {{1, 2}}}), 0, KS_SAMPLES_COLOR_UNSAID, true},
    {"4:1:1", Sized({.sampling = {{4, 1}}}), 0, KS_SAMPLES_COLOR_UNSAID, true},
    {"four", Sized({.components = 4})},
    {"four inks", Sized({.components = 4, .adobe = 2}), 0, KS_SAMPLES_COLOR_YCCK},
    {"four subsampled", Sized({.components = 4, .sampling = {{2, 2}, {1, 2}, {2, 1}, {1, 1}}})},
    {"progressive", Sized({.sampling = {{2, 2}}, .progressive = true}), 0, KS_SAMPLES_COLOR_UNSAID, true},
    {"a scan for each", Sized({.sampling = {{2, 1}}, .eachAlone = true}), 0, KS_SAMPLES_COLOR_UNSAID, true},
};

INSTANTIATE_TEST_SUITE_P(Encodings, JpegSamplesTest, testing::ValuesIn(kCases));

TEST(JpegSamples, OfAStreamThatBreaksOffAreThoseInFrontOfTheBreak) {
  Bytes stream = EncodeByLibrary(Sized({.components = 1}), Picture);
  OpenedSamples opened;
  ASSERT_EQ(OpenSamples(stream, &opened), SUCCESS);
  const Samples whole = ReadWhole(opened.get());
  stream.resize(stream.size() / 2);
  ASSERT_EQ(OpenSamples(stream, &opened), SUCCESS);
  const KsSamplesWindow upper = {0, 0, kHeight / 4, kWidth, 0};
  Samples part;
  ASSERT_EQ(ReadSamples(opened.get(), upper, {0}, &part), SUCCESS);
  EXPECT_TRUE(part == Cropped(whole, upper, {0}));
  EXPECT_FALSE(ReadWhole(opened.get()) == whole);
}

TEST(JpegSamples, BelowTheWindowAreNotRead) {
  JpegEncoding encoding = Sized({.components = 1});
  encoding.height = 4000;
  const Bytes stream = EncodeByLibrary(encoding, Picture);
  PieceSource source = {stream};
  OpenedSamples opened;
  ASSERT_EQ(OpenPieces(&source, &opened), SUCCESS);
  source.bytesRead = 0;
  Samples part;
  ASSERT_EQ(ReadSamples(opened.get(), {10, 10, 20, 20, 0}, {0}, &part), SUCCESS);
  EXPECT_LT(source.bytesRead, stream.size() / 10);
  source.readsLeft = 0;
  EXPECT_EQ(ReadSamples(opened.get(), {10, 10, 20, 20, 0}, {0}, &part), ERROR_FILE_READ);
}

}  // namespace
