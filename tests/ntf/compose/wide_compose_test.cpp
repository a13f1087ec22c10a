// Whole compositions by the wide reader: levels, attachments, what hangs over an edge, what can't be drawn.
#include "ksntfx_reader.h"
#include "open_reader.h"
#include "version20.h"

#include <cstring>

#include <gtest/gtest.h>

namespace {

constexpr std::uint32_t kBackground = 0x102030;

/** The canvas, as words of 0xRRGGBB. */
struct Canvas {
  explicit Canvas(const OpenReader &reader) {
    EXPECT_EQ(NitfReaderGetCanvas(reader.Get(), &rows, &columns), SUCCESS);
    status = NitfReaderCompose(reader.Get(), nullptr, kBackground, Take, this);
  }
  static std::int32_t Take(const std::uint8_t *pixels, std::uint64_t firstRow, std::uint64_t count,
                           std::uint64_t columns, void *canvas) {
    auto &own = *static_cast<Canvas *>(canvas);
    EXPECT_EQ(columns, own.columns);
    EXPECT_EQ(firstRow * columns * 3, own.pixels.size());
    own.pixels.insert(own.pixels.end(), pixels, pixels + count * columns * 3);
    return SUCCESS;
  }
  std::uint32_t At(std::uint64_t row, std::uint64_t column) const {
    const std::uint8_t *const pixel = &pixels.at((row * columns + column) * 3);
    return std::uint32_t{pixel[0]} << 16 | std::uint32_t{pixel[1]} << 8 | pixel[2];
  }

  std::uint64_t rows = 0;
  std::uint64_t columns = 0;
  std::int32_t status;
  Bytes pixels;
};

struct Place {
  int level;
  int attachment = 0;
  int row = 0;
  int column = 0;
};

/** A square of one gray. */
ImageSpec Square(std::uint32_t side, std::uint8_t gray, const Place &place) {
  ImageSpec image{.rows = side, .columns = side};
  image.data = Bytes(std::size_t{side} * side, gray);
  image.level = place.level;
  image.attachment = place.attachment;
  image.locationRow = place.row;
  image.locationColumn = place.column;
  return image;
}

TEST(WideComposition, StacksImagesByLevelWhereTheirAttachmentsLead) {
  // In the order of the file the highest comes first; 3 hangs on 2, which hangs on 1.
  const OpenReader reader(NitfBuilder()
                              .Image(Square(2, 0x33, {3, 2, 1, 1}))
                              .Image(Square(8, 0x11, {1, 0, 2, 1}))
                              .Image(Square(4, 0x22, {2, 1, 3, 3})));
  const Canvas canvas(reader);
  ASSERT_EQ(canvas.status, SUCCESS);
  ASSERT_EQ(canvas.rows, 10U);
  ASSERT_EQ(canvas.columns, 9U);
  for (std::uint64_t row = 0; row < 10; ++row) {
    for (std::uint64_t column = 0; column < 9; ++column) {
      const auto isIn = [&](std::uint64_t top, std::uint64_t left, std::uint64_t side) {
        return row >= top && row < top + side && column >= left && column < left + side;
      };
      const std::uint32_t expected = isIn(6, 5, 2)   ? 0x333333
                                     : isIn(5, 4, 4) ? 0x222222
                                     : isIn(2, 1, 8) ? 0x111111
                                                     : kBackground;
      EXPECT_EQ(canvas.At(row, column), expected) << row << ", " << column;
    }
  }
}

/** Each pixel of the image has a value of its own; rows and columns above and left of the canvas are cut off. */
TEST(WideComposition, CutsOffWhatHangsOverTheUpperLeftCorner) {
  ImageSpec image = Square(150, 0, {1, 0, -2, -3});
  for (std::size_t at = 0; at < image.data.size(); ++at) image.data[at] = static_cast<std::uint8_t>(at % 251);
  const OpenReader reader(NitfBuilder().Image(image).Image(Square(4, 0x44, {2, 0, -9, -9})));
  const Canvas canvas(reader);
  ASSERT_EQ(canvas.status, SUCCESS);
  ASSERT_EQ(canvas.rows, 148U);
  ASSERT_EQ(canvas.columns, 147U);
  for (const auto &[row, column] : {std::pair{0U, 0U}, {0U, 146U}, {147U, 0U}, {70U, 33U}}) {
    EXPECT_EQ(canvas.At(row, column), ((row + 2) * 150 + column + 3) % 251 * 0x010101) << row << ", " << column;
  }
}

TEST(WideComposition, LetsTheBackgroundThroughPadsAndAbsentBlocks) {
  ImageSpec image = Square(4, 0x55, {1});
  image.blockWidth = 2;
  image.compression = "NM";
  image.data.resize(8);
  image.data[3] = 0x66;
  image.mask = MaskSpec{{0, 0xFFFFFFFF}, {}, Bytes{0x66}};
  const Canvas canvas(OpenReader(NitfBuilder().Image(image)));
  ASSERT_EQ(canvas.status, SUCCESS);
  EXPECT_EQ(canvas.At(0, 0), 0x555555U);
  EXPECT_EQ(canvas.At(1, 1), kBackground);
  EXPECT_EQ(canvas.At(0, 2), kBackground);
}

TEST(WideComposition, LeavesOutWhatCannotBeDrawnOnlyIfItMayGoOn) {
  ImageSpec unknown = Square(4, 0, {2, 0, 1, 1});
  unknown.compression = "C6";
  unknown.blockWidth = 2;
  const OpenReader reader(NitfBuilder().Image(Square(8, 0x11, {1})).Image(unknown).Image(Square(2, 0x33, {3})));
  EXPECT_EQ(Canvas(reader).status, ERROR_NOT_SUPPORTED);
  EXPECT_STREQ(NitfReaderProblem(reader.Get()), "image 1: IC 'C6' is not supported");
  NitfReaderSetOptions(reader.Get(), NITF_READER_KEEP_GOING);
  const Canvas canvas(reader);
  ASSERT_EQ(canvas.status, SUCCESS);
  EXPECT_EQ(canvas.At(0, 0), 0x333333U);
  EXPECT_EQ(canvas.At(2, 2), 0x111111U);
  ASSERT_EQ(NitfReaderNoteCount(reader.Get()), 1U);
  NitfNote note{};
  ASSERT_EQ(NitfReaderGetNote(reader.Get(), 0, &note), SUCCESS);
  EXPECT_EQ(note.kind, std::uint32_t{NITF_SEGMENT_IMAGE});
  EXPECT_EQ(note.index, 1U);
  EXPECT_EQ(note.status, ERROR_NOT_SUPPORTED);
  EXPECT_STREQ(note.text, "image 1: IC 'C6' is not supported");
}

TEST(WideComposition, DrawsTheRowsThatACutFileHas) {
  Bytes file = NitfBuilder().Image(Square(100, 0x77, {1})).Build();
  file.resize(file.size() - 5000);
  const OpenReader reader(file);
  EXPECT_EQ(Canvas(reader).status, ERROR_FILE_READ);
  NitfReaderSetOptions(reader.Get(), NITF_READER_KEEP_GOING);
  const Canvas canvas(reader);
  ASSERT_EQ(canvas.status, SUCCESS);
  EXPECT_EQ(canvas.At(49, 99), 0x777777U);
  EXPECT_EQ(canvas.At(50, 0), 0U);
}

/** Image, symbol of bits and label of version 02.00, each attached to the one below. */
TEST(WideComposition, DrawsSymbolsAndLabelsOfVersion0200) {
  constexpr std::size_t kSide = 60;
  const FieldList image = With(
      Image20(),
      {{"NROWS", "00000060"}, {"NCOLS", "00000060"}, {"NPPBH", "0060"}, {"NPPBV", "0060"}, {"ILOC", "0000400005"}});
  const FieldList symbol = With(Symbol20('B', 2), {{"SCOLOR", "R"}, {"SLOC", "0000100002"}});
  const FieldList label =
      With(Label20(), {{"LDLVL", "003"}, {"LALVL", "002"}, {"LLOC", "0002000010"}, {"LTC", "\x04\x05\x06"}});
  const OpenReader reader(File20({{NITF_SEGMENT_IMAGE, image, std::string(kSide * kSide, '\x40')},
                                  {NITF_SEGMENT_GRAPHIC, symbol, "\xA0\x05"},
                                  {NITF_SEGMENT_LABEL, label, "II"}}));
  ASSERT_EQ(reader.status, SUCCESS);
  const Canvas canvas(reader);
  ASSERT_EQ(canvas.status, SUCCESS) << NitfReaderProblem(reader.Get());
  EXPECT_EQ(canvas.rows, 64U);
  EXPECT_EQ(canvas.columns, 65U);
  EXPECT_EQ(canvas.At(0, 0), kBackground);
  EXPECT_EQ(canvas.At(4, 5), 0x404040U);
  // The symbol at row 4 + 1 and column 5 + 2: bits 10100000 00000101 in two rows of 8.
  for (std::uint64_t at = 0; at < 16; ++at) {
    const bool isSet = at == 0 || at == 2 || at == 13 || at == 15;
    EXPECT_EQ(canvas.At(5 + at / 8, 7 + at % 8), isSet ? 0xFF0000U : 0x404040U) << at;
  }
  // The label 20 rows and 10 columns further on, letters and background of the same color.
  EXPECT_EQ(canvas.At(26, 18), 0x040506U);
  EXPECT_EQ(canvas.At(24, 18), 0x404040U);
  EXPECT_EQ(canvas.At(26, 16), 0x404040U);
}

TEST(WideComposition, HasNothingToDrawInAFileWithoutImages) {
  const OpenReader reader(NitfBuilder().Text({.text = "words"}));
  const Canvas canvas(reader);
  EXPECT_EQ(canvas.status, ERROR_INVALID_VALUE);
  EXPECT_EQ(canvas.rows + canvas.columns, 0U);
}

}  // namespace
