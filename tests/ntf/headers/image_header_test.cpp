#include "harness.h"

#include <string>

#include <gtest/gtest.h>

namespace {

ImageSpec Tiny(FieldTexts fields = {}) {
  return {.rows = 2, .columns = 2, .data = Bytes(4, 1), .fields = std::move(fields)};
}

LoadedFile LoadImage(ImageSpec image) {
  return LoadedFile(NitfBuilder().Image(std::move(image)));
}

TEST(ImageHeader, AnUnknownCompressionIsReadAsOneWithARate) {
  ImageSpec image = Tiny();
  image.compression = "??";
  LoadedFile file(NitfBuilder().Image(image));
  ASSERT_EQ(file.status, SUCCESS);
  EXPECT_EQ(file.Image(0).compression, kUnknownCompression);
  EXPECT_STREQ(file.Image(0).COMRAT, "00.0");
}

TEST(ImageHeader, SixteenBitsInSeveralBandsAreRefused) {
  const PlatformWatch watch;
  ImageSpec image = Tiny({{"NBPP", "16"}});
  image.bands.resize(2);
  EXPECT_EQ(LoadImage(image).status, NITF_UNSUPPORTED_BPP);
  EXPECT_EQ(watch.messages, std::vector<std::string>{"Error: Unsupported BPP"});
}

TEST(ImageHeader, ManyBandsAreCountedInTheExtendedField) {
  // More bands than bytes behind them: what a band takes at least is all that may be asked of the file.
  ImageSpec image = Tiny();
  image.bands = std::vector<BandSpec>(120);
  image.bands[11].representation = "M";
  LoadedFile file = LoadedFile(NitfBuilder().Image(image));
  ASSERT_EQ(file.status, SUCCESS);
  EXPECT_EQ(file.Image(0).bandField, 0U);
  EXPECT_EQ(file.Image(0).bandCount, 120U);
  EXPECT_EQ(BandTag(file.Image(0), 11), kBandMono);
  EXPECT_EQ(BandTag(file.Image(0), 10), kBandNone);
  EXPECT_EQ(BandTag(file.Image(0), 120), kBandNone);
}

TEST(ImageHeader, NoBandsAtAllGoOnWithTheNextField) {
  ImageSpec image = Tiny();
  image.bands.clear();
  LoadedFile file(NitfBuilder().Image(image));
  ASSERT_EQ(file.status, SUCCESS);
  EXPECT_EQ(file.Image(0).bandCount, 0U);
  EXPECT_EQ(file.Image(0).bandRepresentation, nullptr);
  EXPECT_EQ(file.Image(0).bitsPerPixel, 8U);
}

TEST(ImageHeader, OneRowIsGrayAndTheLastTableWins) {
  ImageSpec image = Tiny();
  image.bands = {{"LU", 3, Bytes(12, 9)}, {"LU", 1, {0x40, 0x80}}};
  LoadedFile file(NitfBuilder().Image(image));
  ASSERT_EQ(file.status, SUCCESS);
  const ImageSubheader &header = file.Image(0);
  EXPECT_EQ(header.bandLutEntries[0], 4U);
  ASSERT_EQ(header.lutCount, 2U);
  EXPECT_EQ(header.lut[0], 0x404040U);
  EXPECT_EQ(header.lut[1], 0x808080U);
}

TEST(ImageHeader, TheMaskTableIsKeptInFileOrder) {
  ImageSpec image = Tiny();
  image.compression = "NM";
  image.mask = MaskSpec{{}, {0x01020304}, Bytes{0xAB}};
  LoadedFile file(NitfBuilder().Image(image));
  ASSERT_EQ(file.status, SUCCESS);
  const ImageSubheader &header = file.Image(0);
  EXPECT_EQ(header.blockMask, nullptr);
  ASSERT_NE(header.padMask, nullptr);
  EXPECT_EQ(header.padMask[0][0], 1);
  EXPECT_EQ(header.padMask[0][3], 4);
  EXPECT_EQ(header.padMask[1][3], 0);
  EXPECT_EQ(header.maskDataOffset, 15U);
  EXPECT_EQ(header.padCode[0], 0xAB);
}

TEST(ImageHeader, AMaskThatTheFileCanNotHoldIsAShortRead) {
  ImageSpec image = Tiny({{"NBPR", "9999"}, {"NBPC", "9998"}});
  image.compression = "NM";
  image.mask = MaskSpec{{0}, {}, {}};
  EXPECT_EQ(LoadedFile(NitfBuilder().Image(image)).status, ERROR_FILE_READ);
}

}  // namespace
