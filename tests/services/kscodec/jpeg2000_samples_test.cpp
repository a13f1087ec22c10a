// Raw samples of JPEG 2000: what went into the encoder, or what its library decodes at a lower resolution.
#include "jp2_boxes.h"
#include "samples_test.h"

namespace {

using Recipe = Jpeg2000Spec;

std::vector<Jpeg2000Component> Equal(size_t count, Jpeg2000Component component = {}) {
  return std::vector<Jpeg2000Component>(count, component);
}

/** Waves with noise, over the whole range. */
Jpeg2000Samples MadeSamples(const Recipe &recipe) {
  Jpeg2000Samples samples;
  std::mt19937 random(7);
  for (const Jpeg2000Component &component : recipe.components) {
    const Jpeg2000Extent extent = ExtentOf(recipe, component);
    const int64_t range = int64_t{1} << component.bits;
    std::vector<int32_t> &plane = samples.emplace_back();
    for (uint64_t i = 0; i < uint64_t{extent.width} * extent.height; ++i) {
      const int64_t wave = static_cast<int64_t>(i * 37 % 251) * range / 251 + random() % (range / 16 + 1);
      plane.push_back(static_cast<int32_t>(wave % range - (component.isSigned ? range / 2 : 0)));
    }
  }
  return samples;
}

/** The sample that a pixel has on the reference grid: the last one before it, or the first or last of all. */
int64_t Expected(const Recipe &recipe, const Jpeg2000Samples &samples, size_t number, uint32_t row, uint32_t column) {
  const Jpeg2000Component &component = recipe.components[number];
  const Jpeg2000Extent extent = ExtentOf(recipe, component);
  const auto place = [](uint32_t position, uint32_t distance, uint32_t first, uint32_t count) {
    return std::clamp(position / distance, first, first + count - 1) - first;
  };
  const uint32_t x = place(recipe.left + column, component.dx, extent.left, extent.width);
  const uint32_t y = place(recipe.top + row, component.dy, extent.top, extent.height);
  return samples[number][size_t{y} * extent.width + x];
}

Samples ExpectedSamples(const Recipe &recipe, const Jpeg2000Samples &samples) {
  Samples expected = {recipe.height, recipe.width};
  for (size_t i = 0; i < recipe.components.size(); ++i) {
    std::vector<int64_t> &plane = expected.planes.emplace_back();
    for (uint32_t row = 0; row < recipe.height; ++row) {
      for (uint32_t column = 0; column < recipe.width; ++column) {
        plane.push_back(Expected(recipe, samples, i, row, column));
      }
    }
  }
  return expected;
}

/** What the library decodes at a level, repeated where the size that is rounded up has one more. */
Samples DecodedByLibrary(const Recipe &recipe, const Bytes &stream, uint32_t level) {
  const std::vector<Jpeg2000Plane> planes = DecodeJpeg2000(stream, recipe.isJp2, level);
  Samples decoded = {AtLevel(recipe.height, level), AtLevel(recipe.width, level)};
  const uint32_t left = AtLevel(recipe.left, level);
  const uint32_t top = AtLevel(recipe.top, level);
  for (size_t i = 0; i < planes.size(); ++i) {
    const Jpeg2000Component &component = recipe.components[i];
    const Jpeg2000Extent extent = ExtentOf(recipe, component);
    const auto place = [level](uint32_t position, uint32_t distance, uint32_t first, uint32_t count) {
      const uint32_t start = AtLevel(first, level);
      return std::clamp(position / distance, start, start + count - 1) - start;
    };
    std::vector<int64_t> &plane = decoded.planes.emplace_back();
    for (uint32_t row = 0; row < decoded.rows; ++row) {
      for (uint32_t column = 0; column < decoded.columns; ++column) {
        const uint32_t x = place(left + column, component.dx, extent.left, planes[i].width);
        const uint32_t y = place(top + row, component.dy, extent.top, planes[i].height);
        plane.push_back(planes[i].samples[size_t{y} * planes[i].width + x]);
      }
    }
  }
  return decoded;
}

using Jpeg2000SamplesTest = ServiceTestWith<Recipe>;

TEST_P(Jpeg2000SamplesTest, AreThoseOfTheEncoderInAnyWindowAndAtAnyLevel) {
  const Recipe &recipe = GetParam();
  const Jpeg2000Samples made = MadeSamples(recipe);
  const Bytes stream = EncodeJpeg2000(recipe, made);
  PieceSource source = {stream};
  OpenedSamples pieces;
  OpenedSamples opened;
  ASSERT_EQ(OpenPieces(&source, &pieces), SUCCESS);
  ASSERT_EQ(OpenSamples(stream, &opened, {0, 2}), SUCCESS);
  const KsSamplesInfo &info = *KsSamplesDescribe(opened.get());
  ASSERT_EQ(info.components, recipe.components.size());
  for (uint32_t i = 0; i < info.components; ++i) {
    const KsSamplesComponent &component = *KsSamplesDescribeComponent(opened.get(), i);
    EXPECT_EQ(component.bits, recipe.components[i].bits);
    EXPECT_EQ(component.isSigned, recipe.components[i].isSigned ? 1u : 0u);
    EXPECT_EQ(component.columnStep, recipe.components[i].dx);
    EXPECT_EQ(component.rowStep, recipe.components[i].dy);
  }
  const Samples whole = ReadWhole(opened.get());
  EXPECT_TRUE(recipe.rate != 0 || whole == ExpectedSamples(recipe, made));
  for (uint32_t level = 0; level <= info.levels; ++level) {
    const Samples reduced = ReadWhole(opened.get(), level);
    EXPECT_TRUE(reduced == DecodedByLibrary(recipe, stream, level)) << "level " << level;
    EXPECT_TRUE(reduced == ReadWhole(pieces.get(), level)) << "level " << level;
    ASSERT_NO_FATAL_FAILURE(ExpectWindowsOf(opened.get(), reduced, level, 12));
    ASSERT_NO_FATAL_FAILURE(ExpectWindowsOf(pieces.get(), reduced, level, 6, 2));
  }
}

const Recipe kRecipes[] = {
    {.name = "1 bit", .components = Equal(1, {1}), .isJp2 = true},
    {.name = "8 bits in tiles", .components = Equal(1), .width = 150, .height = 130, .tile = 32},
    {.name = "11 bits signed", .components = Equal(1, {11, true}), .width = 90, .height = 70, .tile = 64},
    {.name = "16 bits of color", .components = Equal(3, {16}), .isJp2 = true, .mixes = true},
    {.name = "20 bits", .components = Equal(2, {20, true}), .tile = 16},
    {.name = "24 bits", .components = Equal(1, {24})},
    {.name = "mixed in tiles", .components = Equal(3), .width = 150, .height = 130, .tile = 32, .mixes = true},
    {.name = "mixed beside others", .components = Equal(5), .width = 70, .height = 60, .tile = 32, .mixes = true},
    {.name = "own depths", .components = {{8}, {3, true}, {13}, {1}}},
    {"offset", Equal(1), 50, 41, 13, 6, 16},
    {"offset of tiles and picture", Equal(3, {12, true}), 91, 87, 21, 15, 32},
    {"subsampled with an offset", {{8}, {8, true, 2, 2}, {8, false, 4, 3}, {8, false, 3, 1}}, 80, 72, 5, 7, 16},
    {"subsampled", {{8}, {8, false, 2, 2}, {8, false, 2, 2}}, 67, 45, 0, 0, 0},
    {.name = "257 components", .components = Equal(257), .width = 20, .height = 18, .tile = 16},
    {.name = "one pixel", .components = Equal(1), .width = 1, .height = 1},
    {.name = "with loss",
     .components = Equal(3),
     .width = 150,
     .height = 140,
     .tile = 64,
     .rate = 5,
     .resolutions = 5,
     .irreversible = true},
};

INSTANTIATE_TEST_SUITE_P(Recipes, Jpeg2000SamplesTest, testing::ValuesIn(kRecipes));

class Jpeg2000Parts : public ServiceTest {
 protected:
  const Recipe recipe = {.components = Equal(2), .width = 60, .height = 50, .tile = 32};
  const Bytes stream = EncodeJpeg2000(recipe, MadeSamples(recipe));
  const Samples whole = ExpectedSamples(recipe, MadeSamples(recipe));

  /** Where the part of a tile starts. */
  size_t PartOf(uint32_t tile) const {
    const Bytes start = {0xFF, 0x90, 0, 10, 0, static_cast<uint8_t>(tile)};
    return static_cast<size_t>(std::search(stream.begin(), stream.end(), start.begin(), start.end()) - stream.begin());
  }
};

/** Tiles are 32 wide and high, so the last one of four has 28 columns and 18 rows. */
constexpr KsSamplesWindow kFirstTile = {0, 0, 32, 32, 0};
constexpr KsSamplesWindow kLastTile = {32, 32, 18, 28, 0};

TEST_F(Jpeg2000Parts, OnlyThoseOfTheWindowAreRead) {
  PieceSource source = {stream};
  OpenedSamples opened;
  ASSERT_EQ(OpenPieces(&source, &opened), SUCCESS);
  source.bytesRead = 0;
  Samples part;
  ASSERT_EQ(ReadSamples(opened.get(), {40, 40, 2, 2, 0}, {1}, &part), SUCCESS);
  EXPECT_TRUE(part == Cropped(whole, {40, 40, 2, 2, 0}, {1}));
  constexpr uint64_t kReadAhead = 1024;
  EXPECT_LE(source.bytesRead, stream.size() - PartOf(3) + kReadAhead);
  source.readsLeft = 0;
  EXPECT_EQ(ReadSamples(opened.get(), kLastTile, {1}, &part), ERROR_FILE_READ);
}

TEST_F(Jpeg2000Parts, ThatAreMissingFailOrAreLeftOut) {
  // The stream ends in the last tile; the last tile is another one; there is no last tile.
  Bytes cut(stream.begin(), stream.begin() + static_cast<std::ptrdiff_t>(PartOf(3)) + 60);
  Bytes renamed = stream;
  renamed[PartOf(3) + 5] = 77;
  Bytes ended(stream.begin(), stream.begin() + static_cast<std::ptrdiff_t>(PartOf(3)));
  for (const Bytes *each : {&cut, &renamed, &ended}) {
    const Bytes &damaged = *each;
    OpenedSamples strict;
    OpenedSamples partial;
    ASSERT_EQ(OpenSamples(damaged, &strict), SUCCESS);
    ASSERT_EQ(OpenSamples(damaged, &partial, {KS_SAMPLES_PARTIAL, 0}), SUCCESS);
    Samples part;
    EXPECT_EQ(ReadSamples(strict.get(), kFirstTile, {0, 1}, &part), SUCCESS);
    EXPECT_TRUE(part == Cropped(whole, kFirstTile, {0, 1}));
    EXPECT_EQ(ReadSamples(strict.get(), kLastTile, {0, 1}, &part), ERROR_FILE_FORMAT);
    const KsSamplesWindow all = WholeWindow(partial.get());
    ASSERT_EQ(ReadSamples(partial.get(), all, {0, 1}, &part), SUCCESS);
    EXPECT_TRUE(Cropped(part, kFirstTile, {0, 1}) == Cropped(whole, kFirstTile, {0, 1}));
    EXPECT_FALSE(part == whole);
    if (each == &cut) continue;
    EXPECT_EQ(ReadSamples(partial.get(), kLastTile, {0}, &part), ERROR_FILE_FORMAT) << "nothing is there";
  }
}

TEST_F(Jpeg2000Parts, ThatCantBeFoundAreReadFromTheWholeStream) {
  // A length of 0 says that the part goes up to the end, which is wrong for the first tile.
  Bytes endless = stream;
  PutBig(endless, PartOf(3) + 6, 0, 4);
  OpenedSamples opened;
  ASSERT_EQ(OpenSamples(endless, &opened), SUCCESS);
  EXPECT_TRUE(ReadWhole(opened.get()) == whole);
  ASSERT_NO_FATAL_FAILURE(ExpectWindowsOf(opened.get(), whole, 0, 5));
  // Bytes between the tiles.
  Bytes apart = stream;
  Insert(apart, PartOf(3), {0xFF, 0x30});
  ASSERT_EQ(OpenSamples(apart, &opened), SUCCESS);
  Samples part;
  const int32_t status = ReadSamples(opened.get(), kFirstTile, {0, 1}, &part);
  EXPECT_TRUE(status == ERROR_FILE_FORMAT || part == Cropped(whole, kFirstTile, {0, 1})) << status;
}

TEST_F(Jpeg2000Parts, PaletteIsAppliedOnDemand) {
  const Bytes file = PaletteFile();
  OpenedSamples opened;
  ASSERT_EQ(OpenSamples(file, &opened), SUCCESS);
  EXPECT_EQ(KsSamplesDescribe(opened.get())->paletteSize, 4u);
  EXPECT_EQ(KsSamplesDescribe(opened.get())->paletteParts, 3u);
  EXPECT_EQ(ReadWhole(opened.get()).planes, (std::vector<std::vector<int64_t>>{{0, 3, 2, 1}}));
  ASSERT_EQ(OpenSamples(file, &opened, {KS_SAMPLES_EXPAND_PALETTE, 0}), SUCCESS);
  EXPECT_EQ(KsSamplesDescribe(opened.get())->components, 3u);
  EXPECT_EQ(KsSamplesDescribeComponent(opened.get(), 2)->bits, 8u);
  EXPECT_EQ(ReadWhole(opened.get()).planes,
            (std::vector<std::vector<int64_t>>{{10, 100, 70, 40}, {20, 110, 80, 50}, {30, 120, 90, 60}}));
}

TEST_F(Jpeg2000Parts, HeadersAreDescribed) {
  const Recipe color = {.components = Equal(4), .isJp2 = true, .hasAlpha = true, .space = OPJ_CLRSPC_SRGB};
  const Bytes file = EncodeJpeg2000(color, MadeSamples(color));
  OpenedSamples opened;
  ASSERT_EQ(OpenSamples(file, &opened), SUCCESS);
  const KsSamplesInfo &info = *KsSamplesDescribe(opened.get());
  EXPECT_EQ(info.format, uint32_t{KS_FORMAT_JP2});
  EXPECT_EQ(info.color, uint32_t{KS_SAMPLES_COLOR_RGB});
  EXPECT_EQ(info.colorSpace, 16u);
  EXPECT_EQ(info.hasChannels, 1u);
  EXPECT_EQ(KsSamplesDescribeComponent(opened.get(), 2)->channelOf, 3u);
  EXPECT_EQ(KsSamplesDescribeComponent(opened.get(), 3)->channelType, 1u);
  Bytes other = file;
  PutBig(other, BoxAt(other, "ihdr") + 8, 30, 4);
  ASSERT_EQ(OpenSamples(other, &opened), SUCCESS);
  EXPECT_EQ(KsSamplesDescribe(opened.get())->format, uint32_t{KS_FORMAT_J2K}) << "its header is about another picture";
  EXPECT_TRUE(ReadWhole(opened.get()) == ExpectedSamples(color, MadeSamples(color)));
  ASSERT_EQ(OpenSamples(stream, &opened), SUCCESS);
  EXPECT_EQ(KsSamplesDescribe(opened.get())->tileRows, 32u);
  EXPECT_EQ(KsSamplesDescribe(opened.get())->color, uint32_t{KS_SAMPLES_COLOR_UNSAID});
  Bytes deep = stream;
  deep[42] = 31;
  ASSERT_EQ(OpenSamples(deep, &opened), SUCCESS);
  Samples part;
  EXPECT_EQ(ReadSamples(opened.get(), kFirstTile, {0}, &part), ERROR_NOT_SUPPORTED) << "32 bits";
}

/** A picture of one colour, whose few bytes claim 64 Mi samples, is read; one that claims more in a tile isn't. */
TEST_F(Jpeg2000Parts, ClaimsAreBoundedByTile) {
  Bytes wide = stream;
  for (const size_t at : {8U, 12U, 24U, 28U}) PutBig(wide, at, 60000, 4);
  OpenedSamples opened;
  ASSERT_EQ(OpenSamples(wide, &opened), SUCCESS);
  Samples part;
  EXPECT_EQ(ReadSamples(opened.get(), kFirstTile, {0}, &part), ERROR_FILE_FORMAT);
}

TEST_F(Jpeg2000Parts, DamageDoesNoHarm) {
  const Recipe small = {.components = {{8}, {12, true, 2, 2}}, .width = 21, .height = 13, .tile = 16};
  for (const Bytes &sound : {PaletteFile(), EncodeJpeg2000(small, MadeSamples(small))}) {
    for (size_t i = 0; i < sound.size(); ++i) {
      for (const int change : {0x00, 0x01, 0x80, 0xFF}) {
        Bytes damaged = sound;
        damaged[i] = static_cast<uint8_t>(damaged[i] ^ change);
        if (change == 0) damaged.resize(i);
        const uint32_t partial = i % 2 == 0 ? uint32_t{KS_SAMPLES_PARTIAL} : 0;
        ReadDamaged(damaged, {KS_SAMPLES_EXPAND_PALETTE | partial, 0});
      }
    }
  }
}

}  // namespace
