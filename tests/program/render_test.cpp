// The pictures that ntf render writes, compared with the samples that went into the file.
#include "png_file.h"
#include "program_test.h"

#include <cmath>
#include <filesystem>
#include <functional>
#include <map>

#include <png.h>

namespace {

std::vector<BandSpec> ColorBands() {
  return {{"R", 0, {}}, {"G", 0, {}}, {"B", 0, {}}};
}

std::vector<BandSpec> OneBand() {
  return {{"M", 0, {}}};
}

std::uint32_t SceneSample(std::uint32_t band, std::uint32_t row, std::uint32_t column) {
  return 50 * band + 10 * row + column + 1;
}

/** An image of 5 by 3 pixels at row 1, column 2 of a canvas of its background colour. */
NitfBuilder Scene(const std::vector<BandSpec> &bands, const std::string &background) {
  ImageSpec image;
  image.rows = 3;
  image.columns = 5;
  image.bands = bands;
  image.representation = bands.size() == 3 ? "RGB" : "MONO";
  image.mode = bands.size() == 3 ? 'S' : 'B';
  image.locationRow = 1;
  image.locationColumn = 2;
  image.data = LayOut(image, SceneSample);
  return NitfBuilder().Field("FBKGC", background).Image(image);
}

/** The scene's canvas, 7 by 4 pixels, band after band in each pixel. */
std::string SceneCanvas(std::uint32_t bands, const std::string &background) {
  std::string pixels;
  for (std::uint32_t row = 0; row < 4; ++row) {
    for (std::uint32_t column = 0; column < 7; ++column) {
      for (std::uint32_t band = 0; band < bands; ++band) {
        const bool inside = row >= 1 && column >= 2;
        pixels += inside ? static_cast<char>(SceneSample(band, row - 1, column - 2)) : background[band];
      }
    }
  }
  return pixels;
}

std::string Pixels(const PngFile &file) {
  std::string pixels;
  for (const auto &row : file.rows) pixels.append(row.begin(), row.end());
  return pixels;
}

using Render = ProgramTest;

TEST_F(Render, ComposesInColorsAndInGray) {
  struct Depth {
    std::vector<BandSpec> bands;
    std::string background;
    std::string bits;
    int colorType;
  };
  for (const Depth &depth : {Depth{ColorBands(), "\x0a\x14\x1e", "24", PNG_COLOR_TYPE_RGB},
                             Depth{OneBand(), "ddd", "8", PNG_COLOR_TYPE_GRAY}}) {
    const auto bands = static_cast<std::uint32_t>(depth.bands.size());
    const std::string canvas = SceneCanvas(bands, depth.background);
    Scene(depth.bands, depth.background).Write(PathOf("a.ntf"));
    ASSERT_EQ(Run({"render", "a.ntf", "-o", "out.png", "--force", "--depth", depth.bits}).exitCode, 0);
    const PngFile picture = DecodePng(ReadText("out.png"));
    EXPECT_EQ(picture.width, 7U);
    EXPECT_EQ(picture.height, 4U);
    EXPECT_EQ(picture.bits, 8);
    EXPECT_EQ(picture.colorType, depth.colorType);
    EXPECT_EQ(Pixels(picture), canvas);

    // The same picture on standard output, and as PPM, which has colours only.
    const ProgramRun toOutput = Run({"render", "a.ntf", "-o", "-", "--vector-render", "--depth", depth.bits});
    EXPECT_EQ(toOutput.exitCode, 0);
    EXPECT_EQ(toOutput.output, ReadText("out.png"));
    EXPECT_EQ(toOutput.errors, "") << "no progress bar without a terminal";
    std::string colors;
    for (const char sample : canvas) colors.append(bands == 3 ? 1 : 3, sample);
    ASSERT_EQ(Run({"render", "a.ntf", "--output", "out.PPM", "--force", "--depth", depth.bits}).exitCode, 0);
    EXPECT_EQ(ReadText("out.PPM"), "P6\n7 4\n255\n" + colors);
    EXPECT_EQ(FilesInFolder(), (std::vector<std::string>{"a.ntf", "out.PPM", "out.png"}));
  }
}

TEST_F(Render, TheSamePixelsAtEachCompression) {
  // Rows of several groups, each of which is compressed by itself: slopes, noise and one colour want other filters.
  constexpr std::uint32_t kSide = 900;
  ImageSpec image;
  image.rows = image.columns = kSide;
  image.bands = ColorBands();
  image.representation = "RGB";
  image.mode = 'P';
  std::uint32_t noise = 1;
  for (std::uint32_t at = 0; at < kSide * kSide * 3; ++at) {
    const std::uint32_t row = at / (3 * kSide);
    noise = noise * 1664525 + 1013904223;
    image.data.push_back(static_cast<std::uint8_t>(row < 300 ? row + at % 7 : row < 600 ? noise >> 27 : 9));
  }
  NitfBuilder().Image(image).Write(PathOf("a.ntf"));
  const std::string samples(image.data.begin(), image.data.end());

  std::map<std::string, std::size_t> sizes;
  for (const std::string level : {"0", "1", "6", "9"}) {
    ASSERT_EQ(Run({"render", "a.ntf", "-o", "out.png", "--force", "--compress", level}).exitCode, 0);
    const std::string file = ReadText("out.png");
    EXPECT_EQ(Pixels(DecodePng(file)), samples) << level;
    sizes[level] = file.size();
  }
  EXPECT_GT(sizes["0"], samples.size());
  EXPECT_LT(sizes["1"], samples.size() / 2);
  EXPECT_LT(sizes["9"], sizes["6"] + sizes["6"] / 100);
}

TEST_F(Render, LoadOptionsReachTheComposition) {
  ImageSpec image;
  image.rows = 1;
  image.columns = 3;
  image.data = {0, 10, 19};
  NitfBuilder().Field("FBKGC", "ddd").Image(image).Write(PathOf("dark.ntf"));
  const auto rendered = [this](const std::vector<std::string> &options) {
    std::vector<std::string> command = {"render", "dark.ntf", "-o", "-", "--depth", "8"};
    command.insert(command.end(), options.begin(), options.end());
    return DecodePng(Run(command).output);
  };
  EXPECT_EQ(rendered({}).rows[0], (std::vector<std::uint8_t>{0, 10, 19}));
  EXPECT_EQ(rendered({"--tone-check"}).rows[0], (std::vector<std::uint8_t>{0, 10 * 255 / 19, 255}));

  const PngFile fixed = rendered({"--fixed-canvas"});
  EXPECT_EQ(fixed.width, 2048U);
  EXPECT_EQ(fixed.height, 2048U);
  EXPECT_EQ(fixed.Sample(0, 2), 19);
  EXPECT_EQ(fixed.Sample(2047, 2047), 'd');
}

TEST_F(Render, ReplacesAnOlderPictureAndKeepsLinksAndPermissions) {
  Scene(ColorBands(), "abc").Write(PathOf("a.ntf"));
  WriteText("out.ppm", "older");
  std::filesystem::create_symlink("out.ppm", PathOf("link.ppm"));
  std::filesystem::permissions(PathOf("out.ppm"), std::filesystem::perms(0640));
  ASSERT_EQ(Run({"render", "a.ntf", "-o", "link.ppm", "--force"}).exitCode, 0);
  EXPECT_EQ(std::filesystem::status(PathOf("out.ppm")).permissions(), std::filesystem::perms(0640));
  EXPECT_TRUE(std::filesystem::is_symlink(PathOf("link.ppm")));
  EXPECT_EQ(ReadText("out.ppm"), "P6\n7 4\n255\n" + SceneCanvas(3, "abc"));
  EXPECT_EQ(FilesInFolder(), (std::vector<std::string>{"a.ntf", "link.ppm", "out.ppm"}));
}

/** An image, and the picture that --image makes of it. */
struct ImageCase {
  const char *name;
  ImageSpec image;
  std::uint32_t (*sample)(std::uint32_t band, std::uint32_t row, std::uint32_t column);
  int colorType;
  int bits;
  std::vector<std::array<int, 3>> palette;
  int (*shown)(std::uint32_t sample); /* the picture's sample */
};

class ImageOfItsOwnDepth : public ProgramTest, public testing::WithParamInterface<ImageCase> {
 protected:
  void ExpectPicture(const std::string &bytes, std::uint32_t width, std::uint32_t height) const {
    const ImageCase &test = GetParam();
    const auto bands = static_cast<std::uint32_t>(test.image.bands.size());
    const PngFile picture = DecodePng(bytes);
    ASSERT_EQ(picture.width, width);
    ASSERT_EQ(picture.height, height);
    EXPECT_EQ(picture.colorType, test.colorType);
    EXPECT_EQ(picture.bits, test.bits);
    EXPECT_EQ(picture.palette, test.palette);
    for (std::uint32_t row = 0; row < height; ++row) {
      for (std::uint32_t at = 0; at < width * bands; ++at) {
        EXPECT_EQ(picture.Sample(row, at), test.shown(test.sample(at % bands, row, at / bands))) << row << " " << at;
      }
    }
  }
};

TEST_P(ImageOfItsOwnDepth, CroppedAndPadded) {
  ImageSpec image = GetParam().image;
  image.data = LayOut(image, GetParam().sample);
  // Another image in front, so that the number counts; a location, which must not.
  ImageSpec other;
  other.rows = other.columns = 1;
  other.data = {9};
  image.locationRow = image.locationColumn = 7;
  NitfBuilder().Image(other).Image(image).Write(PathOf("a.ntf"));

  ASSERT_EQ(Run({"render", "--strict", "a.ntf", "--image", "1", "-o", "out.png"}).exitCode, 0);
  ExpectPicture(ReadText("out.png"), image.columns, image.rows);
  ASSERT_EQ(Run({"render", "a.ntf", "--image", "1", "--padded", "-o", "out.png", "--force"}).exitCode, 0);
  ExpectPicture(ReadText("out.png"), image.BlocksPerRow() * image.BlockWidth(),
                image.BlocksPerColumn() * image.BlockHeight());
}

/** 5 by 3 pixels in blocks of 4 by 2, so that both edges are padded. */
ImageSpec Blocked(std::uint32_t bits, const std::vector<BandSpec> &bands = OneBand()) {
  ImageSpec image;
  image.rows = 3;
  image.columns = 5;
  image.blockWidth = 4;
  image.blockHeight = 2;
  image.bits = bits;
  image.bands = bands;
  return image;
}

ImageSpec Bilevel(const std::vector<BandSpec> &bands) {
  ImageSpec image = Blocked(1, bands);
  image.blockWidth = 8;
  image.pixelValueType = "B";
  return image;
}

ImageSpec WithRepresentation(ImageSpec image, const std::string &representation, char mode = 'B') {
  image.representation = representation;
  image.mode = mode;
  return image;
}

/** Packed samples are decoded in one block only. */
ImageSpec OneBlock(ImageSpec image) {
  image.blockWidth = image.blockHeight = 0;
  return image;
}

/** A palette whose colours tell their index in each part. */
std::vector<std::array<int, 3>> FullTableColors() {
  std::vector<std::array<int, 3>> colors;
  colors.reserve(256);
  for (int index = 0; index < 256; ++index) colors.push_back({index, 255 - index, index / 2});
  return colors;
}

/** The same as a lookup table: all reds, all greens, all blues. */
Bytes FullTable() {
  Bytes table;
  for (const std::size_t part : {0U, 1U, 2U}) {
    for (const auto &color : FullTableColors()) table.push_back(static_cast<std::uint8_t>(color[part]));
  }
  return table;
}

std::uint32_t Checks(std::uint32_t, std::uint32_t row, std::uint32_t column) {
  return (row + column / 2) % 2;
}
std::uint32_t Levels8(std::uint32_t, std::uint32_t row, std::uint32_t column) {
  return 60 * row + 7 * column;
}
std::uint32_t Levels12(std::uint32_t, std::uint32_t row, std::uint32_t column) {
  return row == 2 && column == 4 ? 4095 : 1000 * row + 333 * column;
}
std::uint32_t Levels16(std::uint32_t, std::uint32_t row, std::uint32_t column) {
  return 20000 * row + 515 * column;
}

int AsItIs(std::uint32_t sample) {
  return static_cast<int>(sample);
}
int SpreadFrom12Bits(std::uint32_t sample) {
  return static_cast<int>(std::lround(sample * 65535.0 / 4095.0));
}

INSTANTIATE_TEST_SUITE_P(
    Program, ImageOfItsOwnDepth,
    testing::Values(ImageCase{"Bilevel", Bilevel(OneBand()), Checks, PNG_COLOR_TYPE_GRAY, 1, {}, AsItIs},
                    ImageCase{"BilevelWithTable",
                              WithRepresentation(Bilevel({{"LU", 3, {255, 0, 0, 255, 30, 40}}}), "RGB/LUT"),
                              Checks,
                              PNG_COLOR_TYPE_PALETTE,
                              1,
                              {{255, 0, 30}, {0, 255, 40}},
                              AsItIs},
                    ImageCase{"Gray8", Blocked(8), Levels8, PNG_COLOR_TYPE_GRAY, 8, {}, AsItIs},
                    ImageCase{"Table8", WithRepresentation(Blocked(8, {{"LU", 3, FullTable()}}), "RGB/LUT"), Levels8,
                              PNG_COLOR_TYPE_PALETTE, 8, FullTableColors(), AsItIs},
                    ImageCase{"Gray12", OneBlock(Blocked(12)), Levels12, PNG_COLOR_TYPE_GRAY, 16, {}, SpreadFrom12Bits},
                    ImageCase{"Gray16", Blocked(16), Levels16, PNG_COLOR_TYPE_GRAY, 16, {}, AsItIs},
                    ImageCase{"Colors",
                              WithRepresentation(Blocked(8, ColorBands()), "RGB", 'S'),
                              SceneSample,
                              PNG_COLOR_TYPE_RGB,
                              8,
                              {},
                              AsItIs}),
    [](const auto &test) { return test.param.name; });

TEST_F(Render, WideGraysStayWideInPpm) {
  ImageSpec image;
  image.rows = 1;
  image.columns = 2;
  image.bits = 16;
  image.data = {0x12, 0x34, 0xfe, 0xdc};
  NitfBuilder().Image(image).Write(PathOf("a.ntf"));
  ASSERT_EQ(Run({"render", "--strict", "a.ntf", "--image", "0", "-o", "out.ppm"}).exitCode, 0);
  EXPECT_EQ(ReadText("out.ppm"), "P6\n2 1\n65535\n\x12\x34\x12\x34\x12\x34\xfe\xdc\xfe\xdc\xfe\xdc");
}

}  // namespace
