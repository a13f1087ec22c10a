// Graphics and labels on the canvas: where drawings come to lie, the symbols and labels of the 2.0 layout, and what is
// no drawing.
#include "cgm_builder.h"
#include "drawings/handlgfx.h"
#include "drawings/handllbl.h"
#include "harness.h"
#include "internal/ksclasses_.h"
#include "table/fields.h"

#include <algorithm>
#include <cmath>
#include <cstring>

#include <gtest/gtest.h>

using namespace ksntfx;

namespace {

constexpr std::uint32_t kRed = 0xFF0000;
constexpr std::uint32_t kWhite = 0xFFFFFF;

struct Pair {
  double x;
  double y;
};

/** A metafile that fills a box with red; its extent runs from `first`, the lower left corner, to `second`. */
Bytes RedBox(Pair first, Pair second, Pair corner, Pair opposite) {
  CgmCoding coding;
  coding.directColor = true;
  CgmBuilder metafile(coding, {first.x, first.y}, {second.x, second.y});
  metafile.Add(5, 22, metafile.New().Enumeration(1));
  metafile.Add(5, 23, metafile.New().Direct(0x0000FF));
  metafile.Add(4, 11, metafile.New().Points({{corner.x, corner.y}, {opposite.x, opposite.y}}));
  return metafile.Finish();
}

GraphicSpec Drawing(Bytes data, const std::string &bound1, const std::string &bound2, int level = 1) {
  return {level, 0, 0, 0, 'C', std::move(data), {{"SBND1", bound1}, {"SBND2", bound2}}};
}

/** A file with a white background. */
NitfBuilder WhiteFile() {
  return NitfBuilder().Field("FBKGC", "\xFF\xFF\xFF");
}

// ---- drawings -----------------------------------------------------------------------------------------------------

/** Where a drawing's red box is expected. */
struct Placed {
  const char *name;
  GraphicSpec graphic;
  KsRect ink;
};

class PlacedDrawings : public testing::TestWithParam<Placed> {};

TEST_P(PlacedDrawings, LieWhereTheirBoundsAndLocationSay) {
  // Nothing but a canvas for it.
  const GraphicSpec empty = Drawing(RedBox({0, 1}, {1, 0}, {0, 0}, {0, 0}), "0000000000", "0020000200", 2);
  const Composition picture = Compose(WhiteFile().Graphic(GetParam().graphic).Graphic(empty));
  ASSERT_EQ(picture.status, SUCCESS);
  const KsRect &ink = GetParam().ink;
  EXPECT_EQ(picture.At(static_cast<std::uint32_t>(ink.top), static_cast<std::uint32_t>(ink.left)), kRed);
  EXPECT_EQ(picture.At(static_cast<std::uint32_t>(ink.bottom - 1), static_cast<std::uint32_t>(ink.right - 1)), kRed);
  EXPECT_EQ(picture.At(static_cast<std::uint32_t>(ink.bottom + 1), static_cast<std::uint32_t>(ink.right + 1)), kWhite);
  EXPECT_EQ(picture.At(static_cast<std::uint32_t>(ink.top), static_cast<std::uint32_t>(ink.right + 1)), kWhite);
  EXPECT_EQ(picture.At(static_cast<std::uint32_t>(ink.top + 3), static_cast<std::uint32_t>(ink.left - 2)), kWhite);
}

GraphicSpec Located(GraphicSpec graphic, int row, int column) {
  graphic.locationRow = row;
  graphic.locationColumn = column;
  return graphic;
}

INSTANTIATE_TEST_SUITE_P(
    Graphics, PlacedDrawings,
    testing::Values(
        // The extent is the rectangle of the bounds, moved by the location.
        Placed{"ExtentOntoBounds",
               Located(Drawing(RedBox({0, 50}, {100, 0}, {10, 10}, {50, 40}), "0000000000", "0010000050"), 10, 20),
               {30, 20, 70, 50}},
        Placed{"ScaledExtent",
               Drawing(RedBox({0, 5}, {10, 0}, {1, 1}, {9, 4}), "0002000010", "0012000060"),
               {30, 20, 110, 50}},
        Placed{"UpwardsExtent",
               Drawing(RedBox({0, 0}, {1000, 500}, {100, 100}, {900, 200}), "0000000000", "0010000050"),
               {10, 30, 90, 40}},
        // The extent is all that can be told, and units are pixels.
        Placed{"Pixels",
               Located(Drawing(RedBox({0, 32767}, {32767, 0}, {30, 40}, {90, 60}), "0003000040", "0009000060"), 5, 7),
               {37, 45, 97, 65}},
        Placed{"PixelsRowFirst",
               Drawing(RedBox({0, 32767}, {32767, 0}, {30, 40}, {90, 120}), "0004000030", "0012000090"),
               {30, 40, 90, 120}},
        Placed{"PixelsFromTheAttachment",
               Located(Drawing(RedBox({0, 32767}, {32767, 0}, {130, 140}, {190, 160}), "0010000080", "0016000100"), -60,
                       -30),
               {100, 80, 160, 100}},
        Placed{"NoBounds",
               Drawing(RedBox({0, 32767}, {32767, 0}, {30, 40}, {90, 60}), "0000000000", "0000000000"),
               {30, 40, 90, 60}}),
    [](const auto &tested) { return tested.param.name; });

TEST(Graphics, AreDrawnInTheOrderOfTheirLevelsWithImages) {
  ImageSpec image;
  image.rows = image.columns = 40;
  image.level = 2;
  image.data.assign(1600, 0x40);
  const auto box = [](int level, Pair corner, Pair opposite) {
    return Drawing(RedBox({0, 60}, {60, 0}, corner, opposite), "0000000000", "0006000060", level);
  };
  const Composition picture =
      Compose(WhiteFile().Image(image).Graphic(box(1, {0, 0}, {50, 50})).Graphic(box(3, {10, 10}, {20, 20})));
  ASSERT_EQ(picture.status, SUCCESS);
  EXPECT_EQ(picture.width, 60U);
  EXPECT_EQ(picture.At(5, 5), 0x404040U) << "the image lies over the lower drawing";
  EXPECT_EQ(picture.At(15, 15), kRed) << "the upper drawing lies over the image";
  EXPECT_EQ(picture.At(45, 45), kRed);
}

TEST(Graphics, MeasureTheCanvasByTheirSecondBound) {
  GraphicSpec graphic = Drawing(RedBox({0, 9}, {9, 0}, {1, 1}, {2, 2}), "0000000000", "0010000050");
  graphic.locationRow = 7;
  graphic.locationColumn = -130;
  const Information info = Inform(NitfBuilder().Graphic(graphic));
  ASSERT_EQ(info.status, SUCCESS);
  EXPECT_EQ(info.info.width, 30U) << "the distance counts where the edge is left of the canvas";
  EXPECT_EQ(info.info.height, 57U);
}

TEST(Graphics, ThatAreNoDrawingsAreRefused) {
  const auto statusOf = [](const Bytes &data) {
    return Compose(NitfBuilder().Graphic(Drawing(data, "0000000000", "0001000010"))).status;
  };
  EXPECT_EQ(statusOf({}), ERROR_FILE_FORMAT);
  EXPECT_EQ(statusOf(Bytes(100, 'x')), ERROR_FILE_FORMAT);
  const Bytes drawing = RedBox({0, 9}, {9, 0}, {1, 1}, {2, 2});
  EXPECT_EQ(statusOf({drawing.begin(), drawing.begin() + 40}), ERROR_FILE_FORMAT);
}

TEST(Graphics, DrawAgainWhatTheyDrew) {
  LoadedFile file(WhiteFile().Graphic(Drawing(RedBox({0, 9}, {9, 0}, {1, 1}, {8, 8}), "0000000000", "0000900009")));
  KsLocalBitmap once;
  KsLocalBitmap twice;
  ASSERT_EQ(K_NtfRenderBitmap(once.Get(), file.Get()), SUCCESS);
  ASSERT_EQ(K_NtfRenderBitmap(twice.Get(), file.Get()), SUCCESS);
  const std::uint64_t bytes = once->storageBytes;
  ASSERT_EQ(std::uint64_t{twice->storageBytes}, bytes);
  EXPECT_EQ(std::memcmp(once->pixels, twice->pixels, bytes), 0);
  const KsVector &drawing = FindGraphic(file.Get(), 0)->vector;
  KsVectorPoint low;
  KsVectorPoint high;
  ASSERT_EQ(KsVectorWindow(&drawing, &low, &high), SUCCESS);
  EXPECT_EQ(high.x - low.x, 9);
  EXPECT_EQ(high.y - low.y, 9);
}

// ---- the 2.0 layout -----------------------------------------------------------------------------------------------

/** One segment of the 2.0 layout, made in memory over a file of its data, and a white canvas. */
class GraphicsOf20 : public testing::Test {
 protected:
  void SetUp() override {
    ASSERT_EQ(KsBitmapCreate(canvas.Get(), sizeof(KsBitmap), KS_BITMAP_OWN, 100, 100, 24, KS_ORDER_BGR, nullptr, 1,
                             nullptr, 0),
              SUCCESS);
    KsBitmapFill(canvas.Get(), kWhite);
  }

  void Make(std::uint32_t NitfFile::*count, std::uint32_t NitfFile::*countInFile, const Bytes &data) {
    WriteFile(folder.Path("data"), data);
    file->fileHandle = KsOpen(Wide(folder.Path("data")).c_str(), KS_OPEN_READ, KS_MODE_READ);
    file->nitf20Layout = 1;
    (*file.Get()).*count = (*file.Get()).*countInFile = 1;
    ASSERT_EQ(AllocateObjects(file.Get()), SUCCESS);
  }
  GraphicSubheader &Symbol(char form, const Bytes &data) {
    Make(&NitfFile::graphicCount, &NitfFile::graphicCountInFile, data);
    file->header.graphicTableCount = file->header.graphicTableHeld = 1;
    file->header.graphicSubheaderLengths = Table(0);
    file->header.graphicDataLengths = Table(static_cast<std::uint32_t>(data.size()));
    GraphicSubheader &symbol = *FindGraphic(file.Get(), 0);
    symbol.SFMT[0] = form;
    symbol.locationRow = 10;
    symbol.locationColumn = 20;
    symbol.bitsPerPixel = 1;
    return symbol;
  }
  static std::uint32_t *Table(std::uint32_t value) {
    auto *table = static_cast<std::uint32_t *>(KsCalloc(1, sizeof(std::uint32_t), __LINE__, __FILE__));
    *table = value;
    return table;
  }
  std::int32_t Draw() {
    const KsLocalContext context(canvas.Get());
    return DrawGraphic(context.Get(), file.Get(), 0, {1, 2}).Code();
  }
  std::uint32_t At(std::uint32_t row, std::uint32_t column) const {
    const std::uint8_t *pixel = canvas->pixels + std::size_t{row} * canvas->bytesPerLine + std::size_t{column} * 3;
    return std::uint32_t{pixel[2]} << 16 | std::uint32_t{pixel[1]} << 8 | pixel[0];
  }
  /** The box of what is not white. */
  KsRect InkBox() const {
    KsRect ink = {100, 100, 0, 0};
    for (std::int32_t row = 0; row < 100; ++row) {
      for (std::int32_t column = 0; column < 100; ++column) {
        if (At(static_cast<std::uint32_t>(row), static_cast<std::uint32_t>(column)) == kWhite) continue;
        ink = {std::min(ink.left, column), std::min(ink.top, row), std::max(ink.right, column + 1),
               std::max(ink.bottom, row + 1)};
      }
    }
    return ink;
  }

  TemporaryFolder folder;
  LocalNitfFile file;
  KsLocalBitmap canvas;
};

TEST_F(GraphicsOf20, BitmapSymbolsHaveTheColorsOfTheirLetter) {
  struct Case {
    char letter;
    std::uint32_t clear;
    std::uint32_t set;
  };
  // Three rows of five bits: 10101 01010 11111, on white.
  GraphicSubheader &symbol = Symbol('B', {0b10101010, 0b10111110});
  std::strcpy(symbol.NPIXPL, "0005");
  std::strcpy(symbol.NLIPS, "0003");
  for (const Case &expected : {Case{'N', 0x000000, 0xFFFFFF}, Case{'K', kWhite, 0x000000}, Case{'R', kWhite, 0xFF0000},
                               Case{'B', kWhite, 0x0000FF}, Case{'O', kWhite, 0xFF9600}, Case{'Y', kWhite, 0xFFFF00},
                               Case{'W', kWhite, kWhite}, Case{'?', kWhite, kWhite}}) {
    KsBitmapFill(canvas.Get(), kWhite);
    symbol.SCOLOR[0] = expected.letter;
    ASSERT_EQ(Draw(), SUCCESS);
    EXPECT_EQ(At(11, 22), expected.set) << expected.letter;
    EXPECT_EQ(At(11, 23), expected.clear) << expected.letter;
    EXPECT_EQ(At(12, 22), expected.clear) << expected.letter;
    EXPECT_EQ(At(13, 26), expected.set) << expected.letter;
    EXPECT_EQ(At(11, 27), kWhite) << expected.letter;
  }
  std::strcpy(symbol.NLIPS, "0004");
  EXPECT_EQ(Draw(), ERROR_FILE_FORMAT) << "the data end before the rows do";
}

/** Rows of five pixels, which begin on the bytes behind each other. */
TEST_F(GraphicsOf20, DeepSymbolsShowTheirTableAndAreOpaque) {
  GraphicSubheader &symbol = Symbol('B', {0, 1, 2, 1, 0, 2, 2, 1, 1, 1, 0, 0, 1, 2, 2});
  std::strcpy(symbol.NPIXPL, "0005");
  std::strcpy(symbol.NLIPS, "0003");
  symbol.bitsPerPixel = 8;
  symbol.SCOLOR[0] = 'R';
  symbol.lutEntries = 3;
  symbol.lut = static_cast<std::uint32_t *>(KsCalloc(3, sizeof(std::uint32_t), __LINE__, __FILE__));
  symbol.lut[1] = 0x102030;
  symbol.lut[2] = 0xFF8040;
  ASSERT_EQ(Draw(), SUCCESS);
  constexpr std::uint32_t kExpected[] = {0, 1, 2, 1, 0, 2, 2, 1, 1, 1, 0, 0, 1, 2, 2};
  for (std::uint32_t pixel = 0; pixel < 15; ++pixel) {
    EXPECT_EQ(At(11 + pixel / 5, 22 + pixel % 5), symbol.lut[kExpected[pixel]]) << pixel;
  }
  std::strcpy(symbol.NLIPS, "0004");
  EXPECT_EQ(Draw(), ERROR_INVALID_VALUE);
}

TEST_F(GraphicsOf20, LinesHaveTheirColorAndDashes) {
  GraphicSubheader &symbol = Symbol('O', {});
  std::strcpy(symbol.NWDTH, "0003");
  symbol.secondBound[0] = 10;
  symbol.secondBound[1] = 90;
  file->vectorRender = 1;
  const auto inked = [&](const char *type, char letter) {
    KsBitmapFill(canvas.Get(), 0x808080);
    EXPECT_EQ(SetField(symbol.SNUM, 6, type), SUCCESS);
    symbol.SCOLOR[0] = letter;
    EXPECT_EQ(Draw(), SUCCESS);
    int count = 0;
    for (std::uint32_t column = 0; column < 100; ++column) count += At(11, column) != 0x808080 ? 1 : 0;
    return count;
  };
  for (const auto &[letter, color] : {std::pair{'N', kWhite},
                                      {'K', 0U},
                                      {'R', kRed},
                                      {'B', 0x0000FFU},
                                      {'O', 0xFF9600U},
                                      {'Y', 0xFFFF00U},
                                      {'W', kWhite},
                                      {'?', 0U}}) {
    EXPECT_NEAR(inked("1", letter), 70, 4) << letter;
    EXPECT_EQ(At(11, 50), color) << letter;
    EXPECT_EQ(At(10, 50), color) << letter << ", three pixels wide";
    EXPECT_EQ(At(8, 50), 0x808080U) << letter;
  }
  for (const char *const type : {"2", "3", "4", "5", "6"}) EXPECT_LT(inked(type, 'K'), 60) << type;
}

/** Object symbols, and the box around their corners. */
struct ObjectCase {
  std::vector<const char *> types;
  Pair low;
  Pair high;
};

TEST_F(GraphicsOf20, ObjectSymbolsAreBuiltFromTheirNumbers) {
  GraphicSubheader &symbol = Symbol('O', {});
  std::strcpy(symbol.NPIXPL, "0040");
  std::strcpy(symbol.NLIPS, "0030");
  std::strcpy(symbol.NWDTH, "0001");
  symbol.SCOLOR[0] = 'K';
  symbol.secondBound[0] = 60;
  symbol.secondBound[1] = 70;
  // The place is 22 across and 11 down. The angle of the hexagon is 30 radians.
  const double part = 15 / std::tan(30.0);
  for (const ObjectCase &expected :
       {ObjectCase{{"1", "2", "3", "4", "5", "6", "18"}, {22, 11}, {72, 61}}, ObjectCase{{"10"}, {22, -19}, {42, 51}},
        ObjectCase{{"11", "12"}, {2, -4}, {42, 26}}, ObjectCase{{"13", "14"}, {22, 11}, {62, 41}},
        ObjectCase{{"15"}, {22, -4}, {62, 51}}, ObjectCase{{"16"}, {7, -9}, {37, 31}},
        ObjectCase{{"17"}, {22 + 2 * part, -4}, {22 - 2 * part, 26}}}) {
    for (const char *const type : expected.types) {
      ASSERT_EQ(SetField(symbol.SNUM, 6, type), SUCCESS);
      KsBitmapFill(canvas.Get(), kWhite);
      file->vectorRender = 0;
      ASSERT_EQ(Draw(), SUCCESS);
      EXPECT_EQ(InkBox().right, 0) << type << " is built and not painted";
      KsVectorPoint low = {};
      KsVectorPoint high = {};
      ASSERT_EQ(KsVectorExtents(&symbol.vector, &low, &high), SUCCESS);
      EXPECT_NEAR(low.x, expected.low.x, 1e-6) << type;
      EXPECT_NEAR(low.y, expected.low.y, 1e-6) << type;
      EXPECT_NEAR(high.x, expected.high.x, 1e-6) << type;
      EXPECT_NEAR(high.y, expected.high.y, 1e-6) << type;
      file->vectorRender = 1;
      ASSERT_EQ(Draw(), SUCCESS);
      // Whatever its corners, a symbol is painted into its place, a line as far as it goes; joins stand out a little.
      const bool isLine = expected.high.x == 72;
      EXPECT_NEAR(InkBox().left, 22, 2) << type;
      EXPECT_NEAR(InkBox().top, 11, 2) << type;
      EXPECT_NEAR(InkBox().right, isLine ? 72 : 62, 5) << type;
      EXPECT_NEAR(InkBox().bottom, isLine ? 61 : 41, 5) << type;
    }
  }
  for (const char *type : {"7", "8", "9", "0", "19", ""}) {
    ASSERT_EQ(SetField(symbol.SNUM, 6, type), SUCCESS);
    KsBitmapFill(canvas.Get(), kWhite);
    ASSERT_EQ(Draw(), SUCCESS);
    EXPECT_EQ(InkBox().right, 0) << type;
  }
}

TEST_F(GraphicsOf20, LabelsAreLinesOfText) {
  const std::string text = "HH\r\n\r\nHH";
  Make(&NitfFile::labelCount, &NitfFile::labelCountInFile, Bytes(text.begin(), text.end()));
  file->header.labelTableCount = file->header.labelTableHeld = 1;
  file->header.labelSubheaderLengths = Table(0);
  file->header.labelDataLengths = Table(static_cast<std::uint32_t>(text.size()));
  LabelSubheader &label = *FindLabel(file.Get(), 0);
  label.locationRow = 10;
  label.locationColumn = 20;
  label.textColor = 0x0000FF;
  label.backgroundColor = 0;
  const KsLocalContext context(canvas.Get());
  ASSERT_EQ(DrawLabel(context.Get(), file.Get(), 0, {5, 3}), SUCCESS);
  const KsRect ink = InkBox();
  EXPECT_NEAR(ink.left, 24, 2);
  EXPECT_GE(ink.top, 15);
  // Lines are 20 rows apart, and empty ones leave no gap.
  const auto isInked = [this](std::int32_t row) {
    const auto y = static_cast<std::uint32_t>(row);
    std::uint32_t column = 0;
    while (column < 100 && At(y, column) == kWhite) ++column;
    return column < 100;
  };
  std::int32_t second = ink.top;
  while (isInked(second)) ++second;
  while (second < ink.bottom && !isInked(second)) ++second;
  EXPECT_EQ(second, ink.top + 20);
  EXPECT_LT(ink.bottom, 15 + 40);
  EXPECT_EQ(At(16, 24), kWhite) << "a black background is none";
  label.backgroundColor = 0x00FFFF;
  ASSERT_EQ(DrawLabel(context.Get(), file.Get(), 0, {5, 3}), SUCCESS);
  EXPECT_EQ(At(16, 24), 0xFFFF00U);
  file->header.labelDataLengths[0] = 100;
  EXPECT_EQ(DrawLabel(context.Get(), file.Get(), 0, {5, 3}), ERROR_FILE_READ);
}

}  // namespace
