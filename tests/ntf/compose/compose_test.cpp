#include "harness.h"
#include "internal/ksclasses_.h"

#include <numeric>
#include <string>

#include <gtest/gtest.h>

namespace {

/** A square of one gray level. */
ImageSpec Square(int level, int attachment, int row, int column, std::uint8_t gray, std::uint32_t side = 4) {
  ImageSpec image{.rows = side, .columns = side, .level = level, .attachment = attachment};
  image.locationRow = row;
  image.locationColumn = column;
  image.data = Bytes(std::size_t{side} * side, gray);
  return image;
}

std::pair<std::uint32_t, std::uint32_t> CanvasOf(const NitfBuilder &builder, std::uint32_t loadFlags = 0) {
  const Information answer = Inform(builder, loadFlags);
  EXPECT_EQ(answer.status, SUCCESS);
  return {answer.info.width, answer.info.height};
}

using Size = std::pair<std::uint32_t, std::uint32_t>;

// ---- what the filter tells ----------------------------------------------------------------------------------------

TEST(FilterInfo, FillsItsAnswerAndTheFrameworksFlags) {
  ImageSpec image = Square(1, 0, 100, 200, 9);
  image.rows = 64;
  image.columns = 192;
  image.blockWidth = 64;
  image.blockHeight = 32;
  const Information answer = Inform(NitfBuilder().Image(image), 0x40);
  ASSERT_EQ(answer.status, SUCCESS);
  EXPECT_EQ(answer.info.formatId, 248U);
  EXPECT_EQ(answer.info.width, 392U);
  EXPECT_EQ(answer.info.height, 164U);
  EXPECT_EQ(answer.info.bitsPerPixel, 24U);
  EXPECT_EQ(answer.info.imageBytes, 392U * 3 * 164);
  EXPECT_EQ(answer.info.pageCount, 1U);
  EXPECT_EQ(answer.info.pageNumber, 1U);
  EXPECT_EQ(answer.loadFlags, 0x80000041U);
  // Rows are padded to four bytes.
  EXPECT_EQ(Inform(NitfBuilder().Image(Square(1, 0, 0, 0, 9, 5))).info.imageBytes, 16U * 5);
}

TEST(FilterInfo, PutsTheCallersHandleBackToTheStart) {
  const TemporaryFolder folder;
  NitfBuilder().Write(folder.Path("blank.ntf"));
  const std::u16string name = Wide(folder.Path("blank.ntf"));
  KsFileInfo info{};
  KsLoadOptions options{};
  FilterInfoRecord request{};
  request.fileName = name.c_str();
  request.inputHandle = KsOpen(name.c_str(), KS_OPEN_READ, KS_MODE_READ);
  request.fileInfo = &info;
  request.loadOptions = &options;
  KsSeek(request.inputHandle, 100, KS_SEEK_START);
  EXPECT_EQ(fltInfo(&request), SUCCESS);
  EXPECT_EQ(KsSeek(request.inputHandle, 0, KS_SEEK_CURRENT), 0);
  KsClose(request.inputHandle);
}

TEST(FilterLoad, NeedsItsFunctions) {
  KsLoadOptions options{};
  FilterLoadRecord whole{};
  whole.fileName = u"/no/such/file";
  whole.loadOptions = &options;
  whole.loadFromMemory = KsLoadMemory;
  whole.setRedirect = KsSetRedirect;
  whole.requiredEntry = [] {};
  FilterLoadRecord request = whole;
  EXPECT_EQ(fltLoad(&request), ERROR_FILE_READ);
  request.loadFromMemory = nullptr;
  EXPECT_EQ(fltLoad(&request), ERROR_FILE_FORMAT);
  request = whole;
  request.setRedirect = nullptr;
  EXPECT_EQ(fltLoad(&request), ERROR_FILE_FORMAT);
  request = whole;
  request.requiredEntry = nullptr;
  EXPECT_EQ(fltLoad(&request), ERROR_FILE_FORMAT);
  const PlatformWatch watch;
  EXPECT_EQ(fltSave(), ERROR_NOT_SUPPORTED);
  EXPECT_EQ(watch.debugLines, std::vector<std::string>{"\nFreeObjects\n"}) << "it makes its file and declines";
}

// ---- rows ---------------------------------------------------------------------------------------------------------

TEST(Rows, AreMarkedFirstAndLast) {
  const Composition picture = Compose(NitfBuilder().Image(Square(1, 0, 0, 0, 9, 3)));
  ASSERT_EQ(picture.rows.size(), 3U);
  EXPECT_EQ(picture.rows[0].flags, 7U);
  EXPECT_EQ(picture.rows[1].flags, 3U);
  EXPECT_EQ(picture.rows[2].flags, 11U);
  EXPECT_EQ(picture.rows[2].index, 2U);
  EXPECT_EQ(Compose(NitfBuilder().Image(Square(1, 0, 0, 0, 9, 1))).rows.at(0).flags, 15U);
}

TEST(Rows, EndWhereTheCallbackSaysSo) {
  const auto before = LiveBlocks();
  for (const std::int32_t answer : {0, 2, -77}) {
    const Composition picture =
        Compose(NitfBuilder().Image(Square(1, 0, 0, 0, 9, 9)), {.stopAtRow = 5, .stopWith = answer});
    EXPECT_EQ(picture.status, answer);
    EXPECT_EQ(picture.rows.size(), 6U);
  }
  EXPECT_EQ(LiveBlocks(), before);
}

TEST(Rows, AreNotDeliveredWhenTheyAreSkipped) {
  const Composition picture = Compose(NitfBuilder().Image(Square(1, 0, 0, 0, 9)), {.skipRows = true});
  EXPECT_EQ(picture.status, SUCCESS);
  EXPECT_TRUE(picture.rows.empty());
  EXPECT_EQ(Compose(NitfBuilder().Image({.rows = 2, .columns = 2}), {.skipRows = true}).status, ERROR_FILE_READ);
}

// ---- size of the canvas -------------------------------------------------------------------------------------------

TEST(Canvas, OfAFileWithoutPictureHasASizeOfItsOwn) {
  EXPECT_EQ(CanvasOf(NitfBuilder()), Size(2048, 2048));
  EXPECT_EQ(CanvasOf(NitfBuilder().Text({.text = "x"})), Size(2, 2));
  EXPECT_EQ(CanvasOf(NitfBuilder().DataExtension({.identifier = "ANY"})), Size(2048, 2048));
  const Composition blank = Compose(NitfBuilder().Field("FBKGC", "\x01\x02\x03"));
  ASSERT_EQ(blank.rows.size(), 2048U);
  EXPECT_EQ(blank.At(2047, 2047), 0x010203U);
}

TEST(Canvas, IsFixedOnRequest) {
  EXPECT_EQ(CanvasOf(NitfBuilder().Image(Square(1, 0, 5000, 0, 9)), NITF_LOAD_FIXED_CANVAS), Size(2048, 2048));
  EXPECT_EQ(CanvasOf(NitfBuilder().Graphic({}), NITF_LOAD_FIXED_CANVAS), Size(2048, 2048));
}

TEST(Canvas, HoldsWholeBlocks) {
  ImageSpec image = Square(1, 0, 0, 0, 9);
  image.columns = 100;
  image.blockWidth = 128;
  image.data = Bytes(4 * 128, 9);
  EXPECT_EQ(CanvasOf(NitfBuilder().Image(image)), Size(128, 4));
}

TEST(Canvas, AnEdgeLeftOfTheOriginIsTakenAsUnsigned) {
  const NitfBuilder builder = NitfBuilder().Image(Square(1, 0, 0, -100, 9));
  EXPECT_EQ(CanvasOf(builder), Size(0xFFFFFFFF - 95, 4));
  EXPECT_EQ(Compose(builder).status, ERROR_NO_MEMORY);
}

TEST(Canvas, APictureBeyond32BitsHasNoCanvas) {
  ImageSpec image = Square(1, 0, 0, 0, 9);
  image.fields = {{"NBPR", "9998"}, {"NPPBH", "0000"}, {"NCOLS", "99999998"}};
  EXPECT_EQ(Compose(NitfBuilder().Image(image)).status, ERROR_NO_MEMORY);
}

TEST(Canvas, OfASymbolIsItsSecondBound) {
  const NitfBuilder builder = NitfBuilder().Graphic({.format = 'O', .fields = {{"SBND2", "0002000030"}}});
  EXPECT_EQ(CanvasOf(builder), Size(30, 20));
}

TEST(Canvas, NeedsTheDataOfAGraphic) {
  EXPECT_EQ(Inform(NitfBuilder().Graphic({.data = Bytes(9, 0), .fields = {}}).Field("LS1", "000010")).status,
            ERROR_FILE_READ);
}

// ---- display order ------------------------------------------------------------------------------------------------

TEST(DisplayOrder, FollowsTheLevels) {
  const Composition picture =
      Compose(NitfBuilder().Image(Square(7, 0, 0, 0, 70)).Image(Square(2, 0, 0, 0, 20)).Image(Square(5, 0, 2, 2, 50)));
  EXPECT_EQ(picture.At(0, 0), 0x464646U);
  EXPECT_EQ(picture.At(3, 3), 0x464646U);
  EXPECT_EQ(picture.At(5, 5), 0x323232U);
}

TEST(DisplayOrder, OfEqualLevelsIsThatOfTheExchangeSort) {
  // A and B of level 5, C of level 3, come out as C, B, A: A lies on top.
  const Composition turned =
      Compose(NitfBuilder().Image(Square(5, 0, 0, 0, 1)).Image(Square(5, 0, 0, 0, 2)).Image(Square(3, 0, 0, 0, 3)));
  EXPECT_EQ(turned.At(0, 0), 0x010101U);
  // Equal levels alone keep their order.
  const Composition kept =
      Compose(NitfBuilder().Image(Square(5, 0, 0, 0, 1)).Image(Square(5, 0, 0, 0, 2)).Image(Square(5, 0, 0, 0, 3)));
  EXPECT_EQ(kept.At(0, 0), 0x030303U);
}

// ---- attachment ---------------------------------------------------------------------------------------------------

TEST(Attachment, AddsUpAlongTheChain) {
  const NitfBuilder builder = NitfBuilder()
                                  .Image(Square(3, 2, 1, 2, 30, 1))
                                  .Image(Square(2, 1, 10, 20, 20, 1))
                                  .Image(Square(1, 0, 100, 200, 10, 1));
  const Composition picture = Compose(builder);
  ASSERT_EQ(picture.width, 223U);
  ASSERT_EQ(picture.height, 112U);
  EXPECT_EQ(picture.At(100, 200), 0x0A0A0AU);
  EXPECT_EQ(picture.At(110, 220), 0x141414U);
  EXPECT_EQ(picture.At(111, 222), 0x1E1E1EU);
}

TEST(Attachment, GoesThroughGraphicsToo) {
  const NitfBuilder builder =
      NitfBuilder()
          .Image(Square(3, 2, 1, 2, 30, 1))
          .Image(Square(1, 0, 100, 200, 10, 1))
          .Graphic({.level = 2, .attachment = 1, .locationRow = 10, .locationColumn = 20, .format = 'O'});
  EXPECT_EQ(CanvasOf(builder), Size(223, 112));
}

TEST(Attachment, TheFirstObjectOfALevelCounts) {
  const NitfBuilder builder =
      NitfBuilder().Image(Square(1, 0, 0, 7, 10, 1)).Image(Square(1, 0, 0, 50, 10, 1)).Image(Square(2, 1, 3, 0, 20, 1));
  EXPECT_EQ(Compose(builder).At(3, 7), 0x141414U);
}

std::pair<std::uint32_t, std::uint32_t> SizeOf(LoadedFile &file) {
  std::uint32_t width = 0;
  std::uint32_t height = 0;
  EXPECT_EQ(GetActual_Width_Height(file.Get(), &width, &height), SUCCESS);
  return {width, height};
}

GraphicSpec ObjectAt(int level, int attachment, int place) {
  return {level, attachment, place, place, 'O', {}, {{"SBND2", "0000500005"}}};
}

TEST(Attachment, MayPassTheirStartAndEnd) {
  // From the first graphic: the image of level 2, then itself among the graphics, then the second one.
  ImageSpec image{.rows = 4, .columns = 4, .level = 2, .attachment = 1, .data = Bytes(16, 9)};
  image.locationRow = image.locationColumn = 100;
  LoadedFile file(NitfBuilder().Image(image).Graphic(ObjectAt(1, 2, 1)).Graphic(ObjectAt(2, 0, 10)));
  ASSERT_EQ(file.status, SUCCESS);
  EXPECT_EQ(SizeOf(file), Size(100 + 1 + 10 + 5, 100 + 1 + 10 + 5));
}

TEST(Attachment, OfRealCirclesCountEachLocationOnce) {
  ImageSpec image{.rows = 4, .columns = 4, .level = 2, .attachment = 1, .data = Bytes(16, 9)};
  image.locationRow = image.locationColumn = 100;
  LoadedFile file(NitfBuilder().Image(image).Graphic(ObjectAt(1, 2, 1)));
  ASSERT_EQ(file.status, SUCCESS);
  EXPECT_EQ(SizeOf(file), Size(105, 105));
}

TEST(Attachment, HaveLevelsOfAnySize) {
  ImageSpec image{.rows = 4, .columns = 4, .data = Bytes(16, 9)};
  LoadedFile file(NitfBuilder().Image(image).Graphic(ObjectAt(2, 0, 50)).Graphic(ObjectAt(3, 0, 0)));
  ASSERT_EQ(file.status, SUCCESS);
  for (const std::uint32_t level : {1000U, 70'000U, 0xFFFFFFFFU}) {
    FindGraphic(file.Get(), 0)->displayLevel = level;
    FindImage(file.Get(), 0)->attachmentLevel = level;
    EXPECT_EQ(SizeOf(file), Size(54, 54)) << level;
  }
}

struct CycleCase {
  const char *name;
  NitfBuilder builder;
  std::uint32_t row;
  std::uint32_t column;
};

class AttachmentCycles : public testing::TestWithParam<CycleCase> {};

TEST_P(AttachmentCycles, AreCutAndTheFileIsDrawn) {
  const CycleCase &given = GetParam();
  const Composition picture = Compose(given.builder);
  ASSERT_EQ(picture.status, SUCCESS);
  EXPECT_EQ(picture.At(given.row, given.column), 0x090909U);
}

INSTANTIATE_TEST_SUITE_P(
    Compose, AttachmentCycles,
    testing::Values(CycleCase{"ToItself", NitfBuilder().Image(Square(1, 1, 5, 6, 9, 1)), 5, 6},
                    CycleCase{"LevelZero", NitfBuilder().Image(Square(0, 0, 5, 6, 9, 1)), 5, 6},
                    CycleCase{"Two", NitfBuilder().Image(Square(1, 2, 5, 6, 8, 1)).Image(Square(2, 1, 10, 20, 9, 1)),
                              15, 26},
                    CycleCase{"IntoACycle",
                              NitfBuilder()
                                  .Image(Square(1, 2, 1, 0, 8, 1))
                                  .Image(Square(2, 1, 2, 0, 8, 1))
                                  .Image(Square(3, 1, 50, 0, 9, 1)),
                              53, 0}),
    [](const auto &given) { return std::string(given.param.name); });

// ---- placing ------------------------------------------------------------------------------------------------------

TEST(Placing, AnImageMayReachOverTheLeftAndTopEdge) {
  ImageSpec image = Square(1, 0, -1, -2, 0);
  for (std::size_t at = 0; at < image.data.size(); ++at) image.data[at] = static_cast<std::uint8_t>(at);
  const Composition picture = Compose(NitfBuilder().Image(image));
  ASSERT_EQ(picture.width, 2U);
  ASSERT_EQ(picture.height, 3U);
  EXPECT_EQ(picture.At(0, 0), 0x060606U);
  EXPECT_EQ(picture.At(2, 1), 0x0F0F0FU);
}

TEST(Placing, AnImageChangesNoPixelBesideIt) {
  for (const std::uint32_t bands : {1U, 3U}) {
    for (const std::uint32_t bits : {8U, 24U, 32U}) {
      ImageSpec image = Square(2, 0, 3, 5, 9, 3);
      image.bands = std::vector<BandSpec>(bands);
      image.representation = bands == 3 ? "RGB" : "MONO";
      image.mode = 'S';
      image.data = Bytes(std::size_t{9} * bands, 9);
      const Composition picture = Compose(NitfBuilder().Image(Square(1, 0, 0, 0, 5, 11)).Image(image), {.bits = bits});
      for (std::uint32_t row = 0; row < 11; ++row) {
        for (std::uint32_t column = 0; column < 11; ++column) {
          const bool inside = row >= 3 && row < 6 && column >= 5 && column < 8;
          const std::uint32_t level = inside ? 9 : 5;
          ASSERT_EQ(picture.At(row, column), bits == 8 ? level : level * 0x010101) << row << ", " << column;
        }
      }
    }
  }
}

struct PadCase {
  const char *name;
  std::string representation;
  std::vector<BandSpec> bands;
  std::uint32_t bits;
  Bytes data;
  std::uint8_t padCode;
  std::uint32_t first;
  std::uint32_t second;
};

class PadPixels : public testing::TestWithParam<PadCase> {};

/** Two pixels over a canvas of 0x112233. */
TEST_P(PadPixels, LeaveTheCanvasVisible) {
  const PadCase &given = GetParam();
  ImageSpec image{.rows = 1, .columns = 2, .bands = given.bands, .representation = given.representation};
  image.bits = given.bits;
  image.compression = "NM";
  image.mode = 'S';
  image.mask = MaskSpec{{}, {}, Bytes{given.padCode}};
  image.data = given.data;
  const auto before = LiveBlocks();
  const Composition picture = Compose(NitfBuilder().Field("FBKGC", "\x11\x22\x33").Image(image));
  ASSERT_EQ(picture.status, SUCCESS);
  EXPECT_EQ(picture.At(0, 0), given.first);
  EXPECT_EQ(picture.At(0, 1), given.second);
  EXPECT_EQ(LiveBlocks(), before);
}

const std::vector<BandSpec> kColorBands = {{"R", 0, {}}, {"G", 0, {}}, {"B", 0, {}}};

INSTANTIATE_TEST_SUITE_P(
    Compose, PadPixels,
    testing::Values(
        PadCase{"gray", "MONO", {{}}, 8, {7, 9}, 7, 0x112233, 0x090909},
        PadCase{"palette", "RGB/LUT", {{"LU", 3, {1, 2, 3, 4, 5, 6}}}, 8, {1, 0}, 1, 0x112233, 0x010305},
        PadCase{"index_behind_palette", "RGB/LUT", {{"LU", 3, {1, 2, 3, 4, 5, 6}}}, 8, {1, 0}, 2, 0x020406, 0x010305},
        PadCase{"colour_is_black", "RGB", kColorBands, 8, {0, 5, 0, 0, 0, 0}, 99, 0x112233, 0x050000},
        PadCase{"sixteen_bits_are_compared_whole", "MONO", {{}}, 16, {0, 0, 0, 9}, 0, 0x112233, 0x000000}),
    [](const auto &given) { return std::string(given.param.name); });

TEST(Placing, PadValuesAndGraphicsNeedAContext) {
  ImageSpec image = Square(1, 0, 0, 0, 9);
  image.compression = "NM";
  image.mask = MaskSpec{{}, {}, Bytes{7}};
  KsLocalBitmap canvas;
  ASSERT_EQ(
      KsBitmapCreate(canvas.Get(), sizeof(KsBitmap), KS_BITMAP_OWN, 4, 4, 24, KS_ORDER_BGR, nullptr, 4, nullptr, 0),
      SUCCESS);
  for (const NitfBuilder &builder : {NitfBuilder().Image(image), NitfBuilder().Graphic({.format = 'O'})}) {
    LoadedFile file(builder);
    EXPECT_EQ(K_NitfDrawObjects(nullptr, nullptr, canvas.Get(), file.Get()), ERROR_INVALID_VALUE);
  }
}

TEST(Placing, ACompressionWithoutDecoderIsNotSupported) {
  for (const char *compression : {"C0", "M0", "C2", "M2", "XX"}) {
    ImageSpec image = Square(1, 0, 0, 0, 9);
    image.compression = compression;
    if (image.compression == "M0") image.mask = MaskSpec{};
    EXPECT_EQ(Compose(NitfBuilder().Image(image)).status, ERROR_NOT_SUPPORTED) << compression;
  }
}

// ---- tone check ---------------------------------------------------------------------------------------------------

struct ToneCase {
  Bytes levels;
  Bytes expected;
};

class ToneCheck : public testing::TestWithParam<ToneCase> {};

TEST_P(ToneCheck, SpreadsImagesOfLowLevelsOnly) {
  Bytes ramp(256);
  std::iota(ramp.begin(), ramp.end(), std::uint8_t{0});
  Bytes table = ramp;
  for (int channel = 1; channel < 3; ++channel) table.insert(table.end(), ramp.begin(), ramp.end());
  const Bytes &levels = GetParam().levels;
  ImageSpec gray{.rows = 1, .columns = 3, .data = levels};
  ImageSpec color{.rows = 1, .columns = 3, .bands = kColorBands, .representation = "RGB"};
  for (int band = 0; band < 3; ++band) color.data.insert(color.data.end(), levels.begin(), levels.end());
  ImageSpec palette{.rows = 1, .columns = 3, .bands = {{"LU", 3, table}}, .representation = "RGB/LUT", .data = levels};
  for (const ImageSpec &image : {gray, color, palette}) {
    const Composition plain = Compose(NitfBuilder().Image(image), {.bits = 8});
    const Composition checked = Compose(NitfBuilder().Image(image), {.bits = 8, .loadFlags = NITF_LOAD_TONE_CHECK});
    for (std::uint32_t column = 0; column < 3; ++column) {
      EXPECT_EQ(plain.At(0, column), GetParam().levels[column]) << image.representation;
      EXPECT_EQ(checked.At(0, column), GetParam().expected[column]) << image.representation;
    }
  }
}

INSTANTIATE_TEST_SUITE_P(Compose, ToneCheck,
                         testing::Values(ToneCase{{0, 10, 19}, {0, 134, 255}}, ToneCase{{5, 6, 20}, {5, 6, 20}},
                                         ToneCase{{0, 0, 255}, {0, 0, 255}}, ToneCase{{7, 7, 7}, {7, 7, 7}},
                                         ToneCase{{19, 9, 19}, {255, 0, 255}}));

// ---- rendering into a bitmap --------------------------------------------------------------------------------------

TEST(RenderBitmap, ReplacesWhatTheBitmapHeld) {
  const auto before = LiveBlocks();
  {
    LoadedFile file(NitfBuilder().Field("FBKGC", "\x01\x02\x03").Image(Square(1, 0, 1, 1, 9, 2)));
    KsLocalBitmap bitmap;
    ASSERT_EQ(KsBitmapCreate(bitmap.Get(), sizeof(KsBitmap), KS_BITMAP_OWN, 90, 90, 8, 0, nullptr, 1, nullptr, 0),
              SUCCESS);
    ASSERT_EQ(K_NtfRenderBitmap(bitmap.Get(), file.Get()), SUCCESS);
    EXPECT_EQ(bitmap->width, 3U);
    EXPECT_EQ(bitmap->bitsPerPixel, 24U);
    EXPECT_EQ(bitmap->pixels[0], 3);
    EXPECT_EQ(bitmap->pixels[bitmap->bytesPerLine + 3], 9);
    // A second picture of the same object is the same.
    ASSERT_EQ(K_NtfRenderBitmap(bitmap.Get(), file.Get()), SUCCESS);
    EXPECT_EQ(bitmap->pixels[bitmap->bytesPerLine + 3], 9);
  }
  EXPECT_EQ(LiveBlocks(), before);
  EXPECT_EQ(K_NtfRenderBitmap(nullptr, nullptr), ERROR_INVALID_VALUE);
}

TEST(RenderBitmap, IsEmptyAfterAFailure) {
  LoadedFile file(NitfBuilder().Image({.rows = 2, .columns = 2}));
  KsLocalBitmap bitmap;
  EXPECT_EQ(K_NtfRenderBitmap(bitmap.Get(), file.Get()), ERROR_FILE_READ);
  EXPECT_EQ(bitmap->flags & KS_BITMAP_ALLOCATED, 0U);
}

}  // namespace
