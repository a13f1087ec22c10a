// JPEG 2000: pictures come back as they were encoded, and no stream costs more than its length allows.
#include "codec_test.h"
#include "jp2_boxes.h"
#include "kscodec/jpeg2000/coding.h"

#include <algorithm>
#include <cmath>
#include <map>
#include <memory>
#include <optional>
#include <ostream>

namespace {

// ---- making streams -------------------------------------------------------------------------------------------------

using Recipe = Jpeg2000Spec;
using Component = Jpeg2000Component;
using Components = std::vector<Component>;
using Samples = Jpeg2000Samples;

Components Equal(size_t count, const Component &component = {}) {
  return Components(count, component);
}

Samples RandomSamples(const Recipe &recipe) {
  std::mt19937 random(7);
  Samples samples;
  for (const Component &component : recipe.components) {
    const Jpeg2000Extent extent = ExtentOf(recipe, component);
    std::vector<int32_t> &values = samples.emplace_back(extent.width * extent.height);
    const int32_t lowest = component.isSigned ? -(1 << (component.bits - 1)) : 0;
    for (int32_t &value : values) value = lowest + static_cast<int32_t>(random() % (1u << component.bits));
    values.front() = lowest;
    values.back() = lowest + static_cast<int32_t>((1u << component.bits) - 1);
  }
  return samples;
}

Bytes Encode(const Recipe &recipe) {
  return EncodeJpeg2000(recipe, RandomSamples(recipe));
}

// ---- reading them ---------------------------------------------------------------------------------------------------

int32_t Load(const Bytes &stream, KsLocalBitmap &bitmap, const KsLoadOptions &options = {}) {
  // A copy of exactly its size, so that a read beyond the end is found.
  const Bytes exact(stream.begin(), stream.end());
  return LoadStream(exact, bitmap, &options);
}

/** Red, green and blue of a 24-bit pixel. */
std::array<int, 3> ColorAt(const KsLocalBitmap &bitmap, uint64_t x, uint64_t y) {
  const uint8_t *const pixel = bitmap->pixels + y * bitmap->bytesPerLine + x * 3;
  return {pixel[2], pixel[1], pixel[0]};
}

// ---- pictures -------------------------------------------------------------------------------------------------------

using Jpeg2000Test = ServiceTest;

struct PictureCase {
  Recipe recipe;
  std::optional<std::array<uint32_t, 3>> bands = {};
  uint32_t bits = 24;
  std::vector<uint32_t> shown = {0, 1, 2}; /**< the components for red, green and blue, or the one for gray */
  friend std::ostream &operator<<(std::ostream &out, const PictureCase &picture) { return out << picture.recipe.name; }
};

class PictureTest : public ServiceTestWith<PictureCase> {
 protected:
  /** The value that a component has at a pixel, spread from its own range to `full`. */
  long Expected(const Samples &samples, uint32_t number, uint32_t x, uint32_t y, uint32_t full) const {
    const Recipe &recipe = GetParam().recipe;
    const Component &component = recipe.components[number];
    const Jpeg2000Extent extent = ExtentOf(recipe, component);
    const uint32_t column = std::max((recipe.left + x) / component.dx, extent.left) - extent.left;
    const uint32_t row = std::max((recipe.top + y) / component.dy, extent.top) - extent.top;
    const int32_t value =
        samples[number][row * extent.width + column] + (component.isSigned ? 1 << (component.bits - 1) : 0);
    return std::lround(static_cast<double>(value) * full / ((1 << component.bits) - 1));
  }

  void ExpectPicture(const Bytes &stream, const Samples &samples) const {
    const PictureCase &picture = GetParam();
    const Recipe &recipe = picture.recipe;
    KsLocalBitmap bitmap;
    ASSERT_EQ(Load(stream, bitmap, picture.bands ? Options(KS_LOAD_BANDS, *picture.bands) : Options(0)), SUCCESS);
    ASSERT_EQ(bitmap->width, recipe.width);
    ASSERT_EQ(bitmap->height, recipe.height);
    ASSERT_EQ(bitmap->bitsPerPixel, picture.bits);
    const std::map<uint32_t, uint32_t> orders = {{8, KS_ORDER_PALETTE}, {16, KS_ORDER_GRAY}, {24, KS_ORDER_BGR}};
    EXPECT_EQ(bitmap->order, orders.at(picture.bits));
    const uint32_t ownFull = (1u << recipe.components[0].bits) - 1;
    const Bytes storage = StorageOf(*bitmap.Get());
    for (uint32_t y = 0; y < recipe.height; ++y) {
      for (uint32_t x = 0; x < recipe.width; ++x) {
        if (picture.bits == 24) {
          const std::array<int, 3> color = ColorAt(bitmap, x, y);
          for (size_t i = 0; i < 3; ++i) {
            ASSERT_EQ(color[i], Expected(samples, picture.shown[i], x, y, 255)) << x << ", " << y << " channel " << i;
          }
        } else {
          const uint32_t full = picture.bits == 16 ? 65535 : ownFull;
          ASSERT_EQ(static_cast<long>(PixelOf(*bitmap.Get(), storage, x, y)),
                    Expected(samples, picture.shown[0], x, y, full))
              << x << ", " << y;
        }
      }
    }
  }
};

TEST_P(PictureTest, ComesAsItWasEncoded) {
  const PictureCase &picture = GetParam();
  const Recipe &recipe = picture.recipe;
  const Samples samples = RandomSamples(recipe);
  const Bytes stream = EncodeJpeg2000(recipe, samples);

  KsFileInfo info;
  ASSERT_EQ(Inform(stream, &info), SUCCESS);
  EXPECT_EQ(info.formatId, uint32_t{recipe.isJp2 ? KS_FORMAT_JP2 : KS_FORMAT_J2K});
  EXPECT_EQ(info.width, recipe.width);
  EXPECT_EQ(info.height, recipe.height);
  EXPECT_EQ(info.bitsPerPixel, recipe.components.size() * recipe.components[0].bits);

  ExpectPicture(stream, samples);
  // Decoded some rows at a time, where its samples don't fit below the limit of a bitmap.
  const uint64_t bytesOfAPixel = std::max<uint64_t>(recipe.components.size(), picture.bits / 8);
  KsSetBitmapLimit(uint64_t{recipe.width + 3} * recipe.height * bytesOfAPixel);
  ExpectPicture(stream, samples);
  KsSetBitmapLimit(0);
}

const PictureCase kPictures[] = {
    {{.name = "gray JP2", .components = Equal(1), .isJp2 = true}, {}, 8, {0}},
    {{.name = "bands of one component", .components = Equal(1)}, {{2, 1, 0}}, 8, {0}},
    {{.name = "1 bit", .components = Equal(1, {1})}, {}, 8, {0}},
    {{.name = "11 bits", .components = Equal(1, {11}), .tile = 16}, {}, 16, {0}},
    {{.name = "16 bits", .components = Equal(1, {16}), .isJp2 = true}, {}, 16, {0}},
    {{.name = "12 bits signed", .components = Equal(1, {12, true})}, {}, 16, {0}},
    {{.name = "one pixel", .components = Equal(1), .width = 1, .height = 1}, {}, 8, {0}},
    {{.name = "offset", .components = Equal(1), .left = 13, .top = 6, .tile = 16}, {}, 8, {0}},
    {{.name = "mixed", .components = Equal(3), .tile = 16, .mixes = true}},
    {{.name = "RGB JP2", .components = Equal(3), .isJp2 = true, .mixes = true, .space = OPJ_CLRSPC_SRGB}},
    {{.name = "11 bits mixed", .components = Equal(3, {11}), .mixes = true}},
    {{.name = "16 bits of color", .components = Equal(3, {16})}},
    {{.name = "own depths", .components = {{8}, {3, true}, {13}}}},
    {{"subsampled with an offset", {{8, false, 1, 2}, {8, true, 2, 2}, {8, false, 4, 3}}, 36, 30, 5, 7, 16}},
    {{.name = "with alpha", .components = Equal(4), .isJp2 = true, .hasAlpha = true}},
    {{.name = "two", .components = Equal(2)}, {}, 24, {0, 0, 0}},
    {{.name = "bands of two", .components = Equal(2), .isJp2 = true}, {{1, 0, 5}}, 24, {1, 0, 1}},
    {{.name = "first of five, mixed", .components = Equal(5), .mixes = true}},
    {{.name = "backwards", .components = Equal(5), .tile = 16}, {{4, 2, 0}}, 24, {4, 2, 0}},
    {{.name = "cut", .components = Equal(5), .isJp2 = true}, {{9, 1, UINT32_MAX}}, 24, {4, 1, 4}},
    {{.name = "some mixed", .components = Equal(5), .mixes = true}, {{4, 1, 3}}, 24, {4, 1, 3}},
    {{.name = "of alpha", .components = Equal(4), .isJp2 = true, .hasAlpha = true}, {{3, 1, 0}}, 24, {3, 1, 0}},
    {{"bands of own depths", {{16}, {8}, {12, true}, {5}, {8, false, 2, 2}}}, {{4, 2, 3}}, 24, {4, 2, 3}},
    {{.name = "of 300", .components = Equal(300), .width = 9, .height = 8}, {{299, 256, 7}}, 24, {299, 256, 7}},
};

INSTANTIATE_TEST_SUITE_P(Pictures, PictureTest, testing::ValuesIn(kPictures));

TEST_F(Jpeg2000Test, LuminanceAndColorDifferencesBecomeRgbUnlessBandsAreWanted) {
  const Recipe recipe = {.components = Equal(3), .width = 4, .height = 1, .isJp2 = true, .space = OPJ_CLRSPC_SYCC};
  const Bytes stream = EncodeJpeg2000(recipe, {{76, 150, 29, 200}, {85, 44, 255, 128}, {255, 21, 107, 128}});
  const std::array<std::array<int, 3>, 4> colors = {{{255, 0, 0}, {0, 255, 0}, {0, 0, 255}, {200, 200, 200}}};
  KsLocalBitmap bitmap;
  ASSERT_EQ(Load(stream, bitmap), SUCCESS);
  for (size_t x = 0; x < 4; ++x) {
    for (size_t i = 0; i < 3; ++i) EXPECT_NEAR(ColorAt(bitmap, x, 0)[i], colors[x][i], 2) << x << " channel " << i;
  }
  KsLocalBitmap bands;
  ASSERT_EQ(Load(stream, bands, Options(KS_LOAD_BANDS, {0, 1, 2})), SUCCESS);
  EXPECT_EQ(ColorAt(bands, 0, 0), (std::array<int, 3>{76, 85, 255}));
}

// ---- components that a file names beside the stream ---------------------------------------------------------------

struct NamedCase {
  const char *name;
  Recipe spec;
  uint32_t flags;
  std::array<int, 3> color; /**< red, green, blue */
};

class NamedComponents : public ServiceTestWith<NamedCase> {};

/** Components 0 to 2 are 150, 128 and 100: Cr, Cb and Y, or blue, green and red. */
TEST_P(NamedComponents, AreTakenUnlessTheStreamKnowsBetter) {
  Recipe spec = GetParam().spec;
  spec.components.resize(3);
  spec.width = spec.height = 16;
  const Bytes stream = EncodeJpeg2000(
      spec, {std::vector<int32_t>(256, 150), std::vector<int32_t>(256, 128), std::vector<int32_t>(256, 100)});
  KsLocalBitmap bitmap;
  const uint32_t flags = KS_LOAD_BANDS | KS_LOAD_NAMED_BANDS | GetParam().flags;
  ASSERT_EQ(Load(stream, bitmap, Options(flags, {2, 1, 0})), SUCCESS);
  for (size_t i = 0; i < 3; ++i) EXPECT_NEAR(ColorAt(bitmap, 0, 0)[i], GetParam().color[i], 1) << i;
}

// Y 100, Cb 128, Cr 150: red is 100 + 1.402 * 22, green 100 - 0.714 * 22, blue 100.
constexpr std::array<int, 3> kConverted = {131, 84, 100};
constexpr std::array<int, 3> kInOrder = {150, 128, 100};
constexpr std::array<int, 3> kByName = {100, 128, 150};

INSTANTIATE_TEST_SUITE_P(
    Jpeg2000, NamedComponents,
    testing::Values(NamedCase{"bareYCbCr", {}, KS_LOAD_YCBCR, kConverted}, NamedCase{"bareRgb", {}, 0, kByName},
                    NamedCase{"mixedYCbCr", {.mixes = true}, KS_LOAD_YCBCR, kInOrder},
                    NamedCase{"mixedRgb", {.mixes = true}, 0, kByName},
                    NamedCase{"boxedYCbCr", {.isJp2 = true, .space = OPJ_CLRSPC_SYCC}, KS_LOAD_YCBCR, kConverted},
                    NamedCase{"boxedRgb", {.isJp2 = true, .space = OPJ_CLRSPC_SRGB}, KS_LOAD_YCBCR, kInOrder},
                    NamedCase{"boxedRgbByName", {.isJp2 = true, .space = OPJ_CLRSPC_SRGB}, 0, kByName}),
    [](const auto &given) { return std::string(given.param.name); });

TEST_F(Jpeg2000Test, PaletteIsAppliedBeforeComponentsAreCounted) {
  KsFileInfo info;
  ASSERT_EQ(Inform(PaletteFile(), &info), SUCCESS);
  EXPECT_EQ(info.bitsPerPixel, 24u);
  KsLocalBitmap bitmap;
  ASSERT_EQ(Load(PaletteFile(), bitmap), SUCCESS);
  EXPECT_EQ(bitmap->bitsPerPixel, 24u);
  EXPECT_EQ(ColorAt(bitmap, 1, 0), (std::array<int, 3>{100, 110, 120}));
  EXPECT_EQ(ColorAt(bitmap, 3, 0), (std::array<int, 3>{40, 50, 60}));
  KsLocalBitmap bands;
  ASSERT_EQ(Load(PaletteFile(), bands, Options(KS_LOAD_BANDS, {2, 0, 7})), SUCCESS);
  EXPECT_EQ(ColorAt(bands, 2, 0), (std::array<int, 3>{90, 70, 90}));
}

TEST_F(Jpeg2000Test, DeeperThan16BitsIsNotSupported) {
  const Recipe recipe = {.components = Equal(1, {20})};
  KsLocalBitmap bitmap;
  EXPECT_EQ(Load(Encode(recipe), bitmap), ERROR_NOT_SUPPORTED);
}

// ---- headers --------------------------------------------------------------------------------------------------------

struct BoxCase {
  const char *name;
  void (*change)(Bytes &file, size_t codeStreamBox);
  int32_t status;
  friend std::ostream &operator<<(std::ostream &out, const BoxCase &box) { return out << box.name; }
};

using BoxTest = ServiceTestWith<BoxCase>;

TEST_P(BoxTest, FindsTheCodeStream) {
  Bytes file = Encode({.components = Equal(1), .isJp2 = true});
  GetParam().change(file, BoxAt(file, "jp2c"));
  KsFileInfo info;
  EXPECT_EQ(Inform(file, &info), GetParam().status);
  KsLocalBitmap bitmap;
  EXPECT_EQ(Load(file, bitmap), GetParam().status);
  EXPECT_EQ(bitmap->width, GetParam().status == SUCCESS ? 37u : 0u);
}

INSTANTIATE_TEST_SUITE_P(
    Boxes, BoxTest,
    testing::Values(
        BoxCase{"up to the end", [](Bytes &file, size_t box) { PutBig(file, box, 0, 4); }, SUCCESS},
        BoxCase{"64 bits",
                [](Bytes &file, size_t box) {
                  Insert(file, box + 8, Bytes(8));
                  PutBig(file, box, 1, 4);
                  PutBig(file, box + 8, file.size() - box, 8);
                },
                SUCCESS},
        BoxCase{"a foreign box before it",
                [](Bytes &file, size_t box) { Insert(file, box, Box("free", RandomBytes(99, 1))); }, SUCCESS},
        BoxCase{"another height in the header box",
                [](Bytes &file, size_t) { PutBig(file, BoxAt(file, "ihdr") + 8, 30, 4); }, SUCCESS},
        BoxCase{"another width", [](Bytes &file, size_t) { PutBig(file, BoxAt(file, "ihdr") + 12, 36, 4); }, SUCCESS},
        BoxCase{"other components", [](Bytes &file, size_t) { PutBig(file, BoxAt(file, "ihdr") + 16, 3, 2); }, SUCCESS},
        BoxCase{"shorter than its head", [](Bytes &file, size_t box) { PutBig(file, box, 3, 4); }, ERROR_FILE_FORMAT},
        BoxCase{"64 bits, shorter than its head",
                [](Bytes &file, size_t box) {
                  Insert(file, box + 8, Bytes(8));
                  PutBig(file, box, 1, 4);
                  PutBig(file, box + 8, 15, 8);
                },
                ERROR_FILE_FORMAT},
        BoxCase{"a box before it that ends beyond the file",
                [](Bytes &file, size_t box) {
                  Insert(file, box, Box("free", Bytes(8)));
                  PutBig(file, box, 1, 4);
                  PutBig(file, box + 8, UINT64_MAX - 7, 8);
                },
                ERROR_FILE_FORMAT},
        BoxCase{"nothing behind the header box", [](Bytes &file, size_t box) { file.resize(box); }, ERROR_FILE_FORMAT},
        BoxCase{"half a box head", [](Bytes &file, size_t box) { file.resize(box + 6); }, ERROR_FILE_FORMAT}));

struct SizeCase {
  const char *name;
  size_t at; /**< in the code stream */
  uint64_t value;
  int bytes;
  friend std::ostream &operator<<(std::ostream &out, const SizeCase &size) { return out << size.name; }
};

using SizeTest = ServiceTestWith<SizeCase>;

TEST_P(SizeTest, IsRefused) {
  Bytes stream = Encode({.components = Equal(1)});
  PutBig(stream, GetParam().at, GetParam().value, GetParam().bytes);
  KsFileInfo info;
  EXPECT_EQ(Inform(stream, &info), ERROR_FILE_FORMAT);
  KsLocalBitmap bitmap;
  EXPECT_EQ(Load(stream, bitmap), ERROR_FILE_FORMAT);
}

INSTANTIATE_TEST_SUITE_P(Sizes, SizeTest,
                         testing::Values(SizeCase{"no width", 8, 0, 4}, SizeCase{"no height", 12, 0, 4},
                                         SizeCase{"offset at the right edge", 16, 37, 4},
                                         SizeCase{"no tile width", 24, 0, 4},
                                         SizeCase{"tiles right of the image", 32, 1, 4},
                                         SizeCase{"no components", 40, 0, 2}, SizeCase{"two components", 40, 2, 2},
                                         SizeCase{"16385 components", 40, 16385, 2}, SizeCase{"39 bits", 42, 38, 1},
                                         SizeCase{"another length", 4, 40, 2}));

TEST_F(Jpeg2000Test, TheSizeSegmentMustBeWhole) {
  // The start, the fixed part of the segment, and three bytes for the one component.
  Bytes stream = Encode({.components = Equal(1)});
  KsFileInfo info;
  stream.resize(45);
  EXPECT_EQ(Inform(stream, &info), SUCCESS);
  stream.resize(44);
  EXPECT_EQ(Inform(stream, &info), ERROR_FILE_FORMAT);
}

// ---- bounds ---------------------------------------------------------------------------------------------------------

TEST_F(Jpeg2000Test, BitmapLimitBoundsThePictureAndWhatIsDecodedForIt) {
  const Recipe alone = {.components = Equal(5), .width = 64, .height = 64};
  Recipe mixed = alone;
  mixed.mixes = true;
  const auto load = [](const Recipe &recipe, uint64_t limit) {
    const Bytes stream = Encode(recipe);
    KsSetBitmapLimit(limit);
    KsLocalBitmap bitmap;
    const int32_t status = Load(stream, bitmap);
    KsSetBitmapLimit(0);
    return status;
  };
  constexpr uint64_t kPixels = 64 * 64;
  EXPECT_EQ(load(alone, 3 * kPixels - 1), ERROR_NO_MEMORY);
  EXPECT_EQ(load(alone, 3 * kPixels), SUCCESS);
  // All five components have to be decoded.
  EXPECT_EQ(load(mixed, 5 * kPixels - 1), ERROR_NO_MEMORY);
  EXPECT_EQ(load(mixed, 5 * kPixels), SUCCESS);
}

TEST_F(Jpeg2000Test, AnEmptyPictureOfMostPixelsIsDecodedInParts) {
  // Of one colour but for two pixels far apart, so that parts that changed places would show.
  const Recipe recipe = {.components = Equal(1), .width = 4096, .height = 1024};
  Samples samples = {std::vector<int32_t>(size_t{recipe.width} * recipe.height, 90)};
  samples[0][size_t{300} * recipe.width + 7] = 200;
  samples[0][size_t{1023} * recipe.width + 4000] = 30;
  const Bytes stream = EncodeJpeg2000(recipe, samples);
  ASSERT_LT(stream.size(), samples[0].size() / 64);
  KsSetBitmapLimit(samples[0].size());
  KsLocalBitmap bitmap;
  EXPECT_EQ(Load(stream, bitmap), SUCCESS);
  KsSetBitmapLimit(0);
  ASSERT_NE(bitmap->pixels, nullptr);
  EXPECT_TRUE(std::equal(samples[0].begin(), samples[0].end(), bitmap->pixels));
}

struct ClaimCase {
  const char *name;
  void (*change)(Bytes &stream, size_t style); /**< `style` is where the COD marker stands */
  friend std::ostream &operator<<(std::ostream &out, const ClaimCase &claim) { return out << claim.name; }
};

using ClaimTest = ServiceTestWith<ClaimCase>;

TEST_P(ClaimTest, OfAShortStreamIsRefusedBeforeDecoding) {
  Bytes stream = Encode({.components = Equal(1), .tile = 8});
  const auto isPlausible = [&stream] {
    kscodec::jpeg2000::Header header;
    const kscodec::MemorySource source(stream);
    EXPECT_EQ(ReadHeader(source, &header), SUCCESS);
    return IsPlausible(header, ReadCoding(source, header));
  };
  const std::string marker = "\xFF\x52";
  const auto found = std::search(stream.begin(), stream.end(), marker.begin(), marker.end(),
                                 [](uint8_t byte, char wanted) { return byte == static_cast<uint8_t>(wanted); });
  const auto style = static_cast<size_t>(found - stream.begin());
  PutBig(stream, style + 6, 200, 2);  // layers
  EXPECT_TRUE(isPlausible());
  GetParam().change(stream, style);
  EXPECT_FALSE(isPlausible());
  KsLocalBitmap bitmap;
  EXPECT_EQ(Load(stream, bitmap), ERROR_FILE_FORMAT);
}

void SetSize(Bytes &stream, uint32_t width, uint32_t height, uint32_t tile) {
  PutBig(stream, 8, width, 4);
  PutBig(stream, 12, height, 4);
  PutBig(stream, 24, tile, 4);
  PutBig(stream, 28, tile, 4);
}

INSTANTIATE_TEST_SUITE_P(
    Claims, ClaimTest,
    testing::Values(ClaimCase{"60000 by 60000", [](Bytes &stream, size_t) { SetSize(stream, 60000, 60000, 60000); }},
                    ClaimCase{"one row", [](Bytes &stream, size_t) { SetSize(stream, 4000000000, 1, 4000000000); }},
                    ClaimCase{"65025 tiles", [](Bytes &stream, size_t) { SetSize(stream, 255, 255, 1); }},
                    ClaimCase{"65535 layers", [](Bytes &stream, size_t style) { PutBig(stream, style + 6, 65535, 2); }},
                    ClaimCase{"code blocks of 4 by 4",
                              [](Bytes &stream, size_t style) {
                                SetSize(stream, 8000, 8000, 8000);
                                stream[style + 10] = stream[style + 11] = 0;
                              }},
                    ClaimCase{"precincts of one pixel", [](Bytes &stream, size_t style) {
                                SetSize(stream, 4000, 4000, 4000);
                                PutBig(stream, style + 2, 15, 2);
                                stream[style + 4] |= 1;
                                Insert(stream, style + 14, {0, 0x11, 0x11});
                              }}));

TEST_F(Jpeg2000Test, ChangedBytesDoNoHarm) {
  LoadWithChangedBytes(PaletteFile());
  LoadWithChangedBytes(
      Encode({.components = {{8}, {8, false, 2, 2}, {12, true}, {8}}, .width = 13, .height = 9, .tile = 8}));
}

}  // namespace
