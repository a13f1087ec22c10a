// What a screen shows of samples: each expected pixel is worked out by hand.
#include "bit_writer.h"
#include "ksntfx_reader.h"
#include "open_reader.h"

#include <array>
#include <bit>
#include <cstdio>
#include <cstring>

#include <gtest/gtest.h>

namespace {

/** Pixels as words, "rrggbb" in hexadecimal, or "none" for a transparent one. */
std::string Words(const Bytes &pixels) {
  std::string words;
  for (std::size_t at = 0; at < pixels.size(); at += 4) {
    char word[8] = "none";
    if (pixels[at + 3] == 255)
      std::snprintf(word, sizeof word, "%02x%02x%02x", pixels[at], pixels[at + 1], pixels[at + 2]);
    words += (at == 0 ? "" : " ") + std::string(word);
  }
  return words;
}

std::string Shown(const ImageSpec &image, const NitfShowOptions *options = nullptr) {
  const OpenReader reader(NitfBuilder().Image(image));
  const std::size_t rowBytes = std::size_t{image.columns} * 4;
  Bytes pixels(rowBytes * image.rows, 0x77);
  const std::int32_t status = NitfReaderShowImage(reader.Get(), 0, options, nullptr, pixels.data(), rowBytes);
  return status == SUCCESS ? Words(pixels) : NitfReaderProblem(reader.Get());
}

/** Grays as words. */
std::string Grays(const std::vector<int> &levels) {
  Bytes pixels;
  for (const int level : levels)
    pixels.insert(pixels.end(), {Bytes::value_type(level), Bytes::value_type(level), Bytes::value_type(level), 255});
  return Words(pixels);
}

/** One row of an image in mode B. */
ImageSpec Row(std::uint32_t columns, Bytes data, std::uint32_t bits = 8) {
  ImageSpec image{.rows = 1, .columns = columns, .bits = bits};
  image.data = std::move(data);
  return image;
}

ImageSpec OfType(ImageSpec image, const char *pixelValueType) {
  image.pixelValueType = pixelValueType;
  return image;
}

ImageSpec InBands(ImageSpec image, const char *representation, const std::vector<const char *> &tags) {
  image.representation = representation;
  image.bands.clear();
  for (const char *tag : tags) image.bands.push_back({tag, 0, {}});
  return image;
}

ImageSpec WithTable(ImageSpec image, const char *representation, const BandSpec &band) {
  image.representation = representation;
  image.bands = {band};
  return image;
}

/** Numbers of some bytes each. */
Bytes Numbers(int width, const std::vector<std::uint64_t> &values) {
  Bytes bytes;
  for (const std::uint64_t value : values) PutBigEndian(bytes, value, width);
  return bytes;
}

Bytes Complex(const std::vector<std::pair<float, float>> &values) {
  Bytes bytes;
  for (const auto &[real, imaginary] : values) {
    PutBigEndian(bytes, std::bit_cast<std::uint32_t>(real), 4);
    PutBigEndian(bytes, std::bit_cast<std::uint32_t>(imaginary), 4);
  }
  return bytes;
}

const NitfShowOptions kPercent{};
const NitfShowOptions kMinMax{NITF_STRETCH_MINMAX, 0, 0, 0, 0, {}};
const NitfShowOptions kNone{NITF_STRETCH_NONE, 0, 0, 0, 0, {}};
const NitfShowOptions kMinMaxOfAll{NITF_STRETCH_MINMAX, 1, 0, 0, 0, {}};

struct ShownCase {
  const char *name;
  ImageSpec image;
  std::string expected;
  NitfShowOptions options = kPercent;
};

/** The mask table of one row of two blocks, of which the second isn't there, with a pad value. */
ImageSpec Padded(Bytes data, Bytes pad, std::uint32_t bits = 8) {
  ImageSpec image = Row(4, std::move(data), bits);
  image.blockWidth = 2;
  image.compression = "NM";
  image.mask = MaskSpec{{0, 0xFFFFFFFF}, {}, std::move(pad)};
  return image;
}

std::vector<ShownCase> ShownCases() {
  const BandSpec gray = {"LU", 1, {9, 8, 7}};
  const BandSpec color = {"LU", 3, {1, 2, 3, 0x10, 0x20, 0x30, 0xA0, 0xB0, 0xC0}};
  std::vector<ShownCase> cases = {
      {"Gray", Row(4, {0, 1, 127, 255}), Grays({0, 1, 127, 255})},
      {"OneTable", WithTable(Row(4, {2, 1, 0, 3}), "MONO", gray), Grays({7, 8, 9, 0})},
      {"ThreeTables", WithTable(Row(4, {2, 1, 0, 3}), "RGB/LUT", color), "0330c0 0220b0 0110a0 000000"},
      {"Bits", Row(10, {0b10110000, 0b01000000}, 1), Grays({255, 0, 255, 255, 0, 0, 0, 0, 0, 255})},
      {"TwoBits", Row(4, {0b00011011}, 2), Grays({0, 85, 170, 255})},
      {"ThreeBands", InBands(Row(2, {1, 2, 3, 4, 5, 6}), "RGB", {"R", "G", "B"}), "010305 020406"},
      {"OtherOrder", InBands(Row(2, {1, 2, 3, 4, 5, 6, 7, 8}), "MULTI", {"B", "", "R", "G"}), "050701 060802"},
      {"ChosenBands",
       InBands(Row(2, {1, 2, 3, 4, 5, 6}), "RGB", {"R", "G", "B"}),
       "050103 060204",
       {0, 0, 0, 0, 1, {2, 0, 1}}},
      {"ChosenGray",
       InBands(Row(2, {1, 2, 3, 4, 5, 6}), "RGB", {"R", "G", "B"}),
       Grays({3, 4}),
       {0, 0, 0, 0, 1, {1, 1, 1}}},
      // R = Y + 1.402 (Cr - 128), and so on: 76, 85, 255 is pure red, and 29, 255, 107 pure blue.
      {"Ycc", InBands(Row(3, {76, 29, 128, 85, 255, 128, 255, 107, 128}), "YCbCr601", {"Y", "Cb", "Cr"}),
       "fe0000 0000fe 808080"},
      {"YccWithoutTags", InBands(Row(1, {76, 85, 255}), "YCbCr601", {"", "", ""}), "fe0000"},
      {"YccByTags", InBands(Row(1, {255, 76, 85}), "MULTI", {"Cr", "Y", "Cb"}), "fe0000"},
      {"MonoOfMulti", InBands(Row(2, {1, 2, 3, 4}), "MULTI", {"", "M"}), Grays({3, 4})},
      {"WideNone", Row(4, Numbers(2, {0, 0x0800, 0x8000, 0xFFFF}), 16), Grays({0, 8, 128, 255}), kNone},
      {"WideMinMax", Row(4, Numbers(2, {1000, 1100, 1200, 1510}), 16), Grays({0, 50, 100, 255}), kMinMax},
      {"SignedMinMax", OfType(Row(3, Numbers(2, {0xFF00, 0, 0x00FF}), 16), "SI"), Grays({0, 128, 255}), kMinMax},
      {"SignedNone", OfType(Row(3, Numbers(2, {0x8000, 0, 0x7FFF}), 16), "SI"), Grays({0, 128, 255}), kNone},
      {"Stretched", Row(4, {100, 110, 120, 151}), Grays({0, 50, 100, 255}), kMinMaxOfAll},
      {"AbsentBlock", Padded({1, 2}, {}), "010101 020202 none none"},
      {"PadPixels", Padded({5, 2}, {5}), "none 020202 none none"},
      {"PadBits", Padded({0b10000000}, {1}, 1), "none 000000 none none"},
      {"WidePads", Padded(Numbers(2, {5, 2}), {0, 5}, 16), "none 000000 none none", kNone},
  };
  // 11 bits: the high 8 of those that count.
  ImageSpec actual = Row(4, Numbers(2, {0, 8, 1024, 2047}), 16);
  actual.actualBits = 11;
  cases.push_back({"ActualBits", actual, Grays({0, 1, 128, 255}), kNone});
  const ImageSpec real = OfType(Row(4, Complex({{-2.0F, -1.0F}, {0.55F, 3.1F}}), 32), "R");
  cases.push_back({"RealMinMax", real, Grays({0, 50, 128, 255}), kMinMax});
  const ImageSpec tame = OfType(Row(3, Complex({{3.0F, 4.0F}, {0.0F, -10.0F}, {6.0F, 8.0F}}), 64), "C");
  cases.push_back({"Magnitudes", tame, Grays({0, 255, 255}), kMinMax});
  // 1, 10, 100 and 10000: by their logarithms 0, 1, 2 and 4.
  const Bytes wild = Complex({{1.0F, 0.0F}, {-6.0F, 8.0F}, {0.0F, 100.0F}, {10000.0F, 0.0F}});
  cases.push_back({"Decibels", OfType(Row(4, wild, 64), "C"), Grays({0, 64, 128, 255}), kMinMax});
  return cases;
}

class ShownImages : public testing::TestWithParam<ShownCase> {};

TEST_P(ShownImages, HaveThePixelsOfTheirSamples) {
  EXPECT_EQ(Shown(GetParam().image, &GetParam().options), GetParam().expected);
}

INSTANTIATE_TEST_SUITE_P(Kinds, ShownImages, testing::ValuesIn(ShownCases()),
                         [](const auto &shown) { return shown.param.name; });

/** 0 to 1000, of which 2 percent are 20; a range of samples beyond 8 bits is that of the whole image. */
TEST(ShownStretch, LeavesOutTheOutermostPercents) {
  std::vector<std::uint64_t> values(1001);
  for (std::size_t at = 0; at < values.size(); ++at) values[at] = at;
  const OpenReader reader(NitfBuilder().Image(Row(1001, Numbers(2, values), 16)));
  const auto level = [&](const NitfShowOptions *options, std::uint64_t column) {
    const NitfWindow window = {0, column, 1, 1};
    std::uint8_t pixel[4] = {};
    EXPECT_EQ(NitfReaderShowImage(reader.Get(), 0, options, &window, pixel, 4), SUCCESS);
    return +pixel[0];
  };
  for (const NitfShowOptions *options : {static_cast<const NitfShowOptions *>(nullptr), &kMinMax}) {
    const bool isWhole = options == &kMinMax;
    EXPECT_EQ(level(options, 20), isWhole ? 5 : 0);
    EXPECT_EQ(level(options, 500), 128);
    EXPECT_EQ(level(options, 980), isWhole ? 250 : 255);
    EXPECT_EQ(level(options, 260), isWhole ? 66 : 64);
  }
  const NitfShowOptions quarters{NITF_STRETCH_PERCENT, 0, 25, 75, 0, {}};
  EXPECT_EQ(level(&quarters, 250), 0);
  EXPECT_EQ(level(&quarters, 300), 26);
  EXPECT_EQ(level(&quarters, 750), 255);
}

TEST(ShownStretch, IsThatOfPixelsThatAreRecorded) {
  // Pads of 0xFFFF, and an absent block without pad value, which reads as 0, would widen the range.
  ImageSpec image = Padded(Numbers(2, {0xFFFF, 10, 265, 61}), {0xFF, 0xFF}, 16);
  image.columns = 6;
  image.blockWidth = 4;
  EXPECT_EQ(Shown(image, &kMinMax), "none 000000 ffffff 333333 none none");
  image.mask->padCode.reset();
  image.data = Numbers(2, {265, 10, 265, 61});
  EXPECT_EQ(Shown(image, &kMinMax), "ffffff 000000 ffffff 333333 none none");
}

}  // namespace
