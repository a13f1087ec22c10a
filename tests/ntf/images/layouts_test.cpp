// Every layout of image data, on the three ways that an image takes: into a bitmap, in strips that a sink copies, and
// right into the place that a sink lends. Each way shows the same bytes and touches nothing beside its own area.
#include "bit_writer.h"
#include "harness.h"
#include "headers/mask_table.h"
#include "images/handlimg.h"
#include "internal/ksclasses_.h"
#include "jpeg_builder.h"
#include "small_files.h"

#include <algorithm>
#include <functional>
#include <string>

#include <gtest/gtest.h>

using namespace ksntfx;

namespace {

/** What a bitmap shows at a pixel: a level, or blue, green and red from the low byte up. */
using Model = std::function<std::uint32_t(std::uint32_t row, std::uint32_t column)>;

struct Layout {
  Bytes file;
  std::uint32_t width = 0; /**< of the bitmap, its height and depth; 0 where no model says */
  std::uint32_t height = 0;
  std::uint32_t depth = 0;
  Model expected = {};
  std::int32_t status = SUCCESS;
  bool isWhole = false; /**< one stream, whose bitmap is the codec's own */
};

/** A layout, which is made when its case runs: the start of the program has to be quick. */
struct NamedLayout {
  std::string name;
  std::function<Layout()> make;
};

// ---- the ways -----------------------------------------------------------------------------------------------------

/** The pixels of a row without what follows them. */
Bytes RowOf(const KsBitmap &bitmap, std::uint32_t row, std::uint32_t width) {
  const std::uint8_t *const bytes = bitmap.pixels + std::size_t{row} * bitmap.bytesPerLine;
  const std::size_t bits = std::size_t{width} * bitmap.bitsPerPixel;
  Bytes pixels(bytes, bytes + (bits + 7) / 8);
  // Pixels of 12 bits fill a byte from its low half up, those of 1 bit from its top down.
  if (bits % 8 == 4) pixels.back() &= 0x0F;
  if (bitmap.bitsPerPixel == 1 && bits % 8 != 0) pixels.back() &= static_cast<std::uint8_t>(0xFF00 >> bits % 8);
  return pixels;
}

/** Copies what it is handed; the rows have to come one after the other. */
class CopyingSink : public ImageSink {
 public:
  Status Place(KsBitmap *part, std::uint32_t top, std::uint32_t count) override {
    EXPECT_EQ(top, rows.size());
    for (std::uint32_t row = 0; row < count; ++row) rows.push_back(RowOf(*part, row, part->width));
    return SUCCESS;
  }
  bool Lend(KsBitmap *, std::uint32_t, std::uint32_t, std::uint32_t) override { return false; }

  std::vector<Bytes> rows;
};

constexpr std::uint8_t kPattern = 0xA5;
constexpr std::uint32_t kBeside = 16;

/** Lends a place on a larger canvas that is full of a pattern. What can't be lent is copied there. */
class LendingSink : public CopyingSink {
 public:
  explicit LendingSink(const KsBitmap &like) : width(like.width), height(like.height) {
    EXPECT_EQ(KsBitmapCreate(canvas.Get(), sizeof(KsBitmap), KS_BITMAP_OWN, Left() + width + kBeside,
                             height + 2 * kBeside, like.bitsPerPixel, like.order, nullptr, 1, nullptr, 0),
              SUCCESS);
    EXPECT_EQ(KsBitmapAccess(canvas.Get(), 0), SUCCESS);
    std::fill_n(canvas->pixels, CanvasBytes(), kPattern);
  }

  bool Lend(KsBitmap *view, std::uint32_t top, std::uint32_t count, std::uint32_t depth) override {
    EXPECT_EQ(depth, +canvas->bitsPerPixel);
    EXPECT_LE(top + count, height);
    lends = true;
    return KsBitmapView(view, sizeof *view, canvas.Get(), Left(), kBeside + top, width, count) == SUCCESS;
  }

  /** The rows of the image's own place. */
  std::vector<Bytes> Lent() {
    std::vector<Bytes> place;
    for (std::uint32_t row = 0; row < height; ++row) {
      KsLocalBitmap view;
      EXPECT_EQ(KsBitmapView(view.Get(), sizeof(KsBitmap), canvas.Get(), Left(), kBeside + row, width, 1), SUCCESS);
      place.push_back(RowOf(*view.Get(), 0, width));
    }
    return place;
  }

  /** The pixels around it keep the pattern, to the last whole byte. */
  void ExpectTheRestUntouched() const {
    const std::size_t from = std::size_t{Left()} * canvas->bitsPerPixel / 8;
    const std::size_t to = (std::size_t{Left() + width} * canvas->bitsPerPixel + 7) / 8;
    for (std::uint32_t row = 0; row < canvas->height; ++row) {
      const bool isBeside = row < kBeside || row >= kBeside + height;
      for (std::size_t at = 0; at < canvas->bytesPerLine; ++at) {
        if (!isBeside && at >= from && at < to) continue;
        ASSERT_EQ(canvas->pixels[std::size_t{row} * canvas->bytesPerLine + at], kPattern) << row << ", byte " << at;
      }
    }
  }

  bool lends = false;

 private:
  static std::uint32_t Left() { return kBeside; }
  std::size_t CanvasBytes() const { return std::size_t{canvas->height} * canvas->bytesPerLine; }

  KsLocalBitmap canvas;
  std::uint32_t width;
  std::uint32_t height;
};

/** A row of a model, as a bitmap holds it. */
Bytes ExpectedRow(const Layout &layout, std::uint32_t row) {
  Bytes bytes;
  BitWriter bits(bytes);
  for (std::uint32_t column = 0; column < layout.width; ++column) {
    const std::uint32_t value = layout.expected(row, column);
    if (layout.depth == 1) {
      bits.Put(value, 1);
    } else if (layout.depth == 12 && column % 2 != 0) {
      bytes.back() = static_cast<std::uint8_t>(bytes.back() | (value & 0x0F) << 4);
      bytes.push_back(static_cast<std::uint8_t>(value >> 4));
    } else {
      for (std::uint32_t shift = 0; shift < layout.depth; shift += 8) {
        bytes.push_back(static_cast<std::uint8_t>(value >> shift));
      }
    }
  }
  return bytes;
}

class Layouts : public testing::TestWithParam<NamedLayout> {};

TEST_P(Layouts, ShowTheSameOnEveryWay) {
  const Layout layout = GetParam().make();
  const auto blocks = LiveBlocks();
  {
    LoadedFile file(layout.file);
    ASSERT_EQ(file.status, SUCCESS);
    KsLocalBitmap bitmap;
    ASSERT_EQ(DecodeImageSegment(nullptr, file.Get(), 0, bitmap.Get()), layout.status);
    CopyingSink copying;
    ASSERT_EQ(DecodeImageInStrips(nullptr, file.Get(), 0, copying), layout.status);
    if (layout.status != SUCCESS) return;
    std::vector<Bytes> whole;
    for (std::uint32_t row = 0; row < bitmap->height; ++row) {
      whole.push_back(RowOf(*bitmap.Get(), row, bitmap->width));
      if (layout.expected) {
        ASSERT_EQ(whole.back(), ExpectedRow(layout, row)) << "row " << row;
      }
    }
    if (layout.expected) {
      EXPECT_EQ(+bitmap->bitsPerPixel, layout.depth);
      EXPECT_EQ(+bitmap->width, layout.width);
      EXPECT_EQ(+bitmap->height, layout.height);
    }
    EXPECT_TRUE(copying.rows == whole) << "copied in strips";
    LendingSink lending(*bitmap.Get());
    ASSERT_EQ(DecodeImageInStrips(nullptr, file.Get(), 0, lending), SUCCESS);
    EXPECT_TRUE(lending.lends || layout.isWhole || !layout.expected);
    EXPECT_TRUE((lending.lends ? lending.Lent() : lending.rows) == whole) << "in the place that is lent";
    lending.ExpectTheRestUntouched();
  }
  EXPECT_EQ(LiveBlocks(), blocks);
}

// ---- plain blocks -------------------------------------------------------------------------------------------------

/** A sample that differs from its neighbours in every direction and band. */
std::uint32_t Sample(std::uint32_t band, std::uint32_t row, std::uint32_t column) {
  return (row * 2654435761U + column * 40503U + band * 977U) >> 5;
}

struct Grid {
  const char *name;
  std::uint32_t rows;
  std::uint32_t columns;
  std::uint32_t blockWidth;
  std::uint32_t blockHeight;
};

/** One block; more across than down, with pads; blocks of one row; blocks of more rows than a strip has. */
constexpr Grid kGrids[] = {{"OneBlock", 6, 7, 7, 6}, {"ManyBlocks", 7, 13, 4, 4}, {"OneRow", 2, 3, 3, 1}};
/** Blocks of bits that begin anywhere in a byte. */
constexpr Grid kOfBits[] = {
    {"Wide", 5, 23, 10, 2}, {"Bytes", 5, 23, 8, 5}, {"Narrow", 5, 23, 3, 1}, {"Bits", 5, 23, 1, 1}};
constexpr Grid kTall[] = {{"Tall", 701, 503, 503, 701}, {"TallBlocks", 700, 502, 251, 350}};

constexpr std::uint32_t kAbsentBlock = 2;

struct Plain {
  char mode;
  std::uint32_t bands;
  std::uint32_t bits;
  Grid grid;
  bool masked = false;
  const char *type = "INT";

  bool IsAbsent(std::uint32_t block) const { return masked && block == kAbsentBlock && mode != 'R'; }
  std::string Name() const;
  ImageSpec Image() const;
  Layout Made() const;
};

std::string Plain::Name() const {
  return std::string(type) + mode + std::to_string(bands) + "x" + std::to_string(bits) + grid.name +
         (masked ? "Masked" : "");
}

/** Rows of bits of a single block are as long as those of a bitmap, or as the block is wide where that is less. */
Bytes InLongRows(const ImageSpec &image) {
  const std::size_t rowBytes = (image.BlockWidth() + 7) / 8;
  const std::size_t longBytes = std::min<std::size_t>((rowBytes + 3) / 4 * 4, image.BlockWidth());
  Bytes data;
  for (std::size_t row = 0; row < image.BlockHeight(); ++row) {
    const auto first = image.data.begin() + static_cast<std::ptrdiff_t>(row * rowBytes);
    data.insert(data.end(), first, first + static_cast<std::ptrdiff_t>(rowBytes));
    data.resize((row + 1) * longBytes, 0xAA);
  }
  return data;
}

ImageSpec Plain::Image() const {
  ImageSpec image{.rows = grid.rows, .columns = grid.columns};
  image.bands.resize(bands);
  image.representation = bands == 1 ? "MONO" : bands == 3 ? "RGB" : "MULTI";
  image.pixelValueType = type;
  image.mode = mode;
  image.bits = bits;
  image.blockWidth = grid.blockWidth;
  image.blockHeight = grid.blockHeight;
  const auto sample = [this](std::uint32_t band, std::uint32_t row, std::uint32_t column) {
    // 32 bits are spread over their own range: with a range of 255 the levels are the samples.
    return bits == 32 ? 1000 + (row == 0 && column < 2 ? column * 255 : Sample(band, row, column) % 256)
                      : Sample(band, row, column) & ((1U << bits) - 1);
  };
  image.data = LayOut(image, sample, [this](std::uint32_t block) { return !IsAbsent(block); });
  const bool oneBlock = image.BlocksPerRow() * image.BlocksPerColumn() == 1;
  if (bits == 1 && bands == 1 && oneBlock && image.pixelValueType == "INT") image.data = InLongRows(image);
  if (!masked) return image;
  image.compression = "NM";
  image.mask = MaskSpec{};
  const std::uint32_t blocks = image.BlocksPerRow() * image.BlocksPerColumn();
  const auto present = static_cast<std::size_t>(mode == 'R' ? blocks : blocks - 1);
  const std::size_t step = image.data.size() / present / (mode == 'S' ? bands : 1);
  std::size_t offset = 0;
  for (std::uint32_t block = 0; block < blocks; ++block) {
    image.mask->blockOffsets.push_back(block == kAbsentBlock ? kNotRecorded : static_cast<std::uint32_t>(offset));
    offset += block == kAbsentBlock ? 0 : step;
  }
  // The entries of the other bands are of no use.
  image.mask->blockOffsets.resize(std::size_t{blocks} * bands, kNotRecorded);
  return image;
}

Layout Plain::Made() const {
  const ImageSpec image = Image();
  Layout layout{NitfBuilder().Image(image).Build()};
  layout.width = image.BlocksPerRow() * image.BlockWidth();
  layout.height = image.BlocksPerColumn() * image.BlockHeight();
  layout.depth = bands > 1 ? 24 : bits == 32 ? 8 : bits;
  layout.expected = [given = *this, across = image.BlocksPerRow()](std::uint32_t row, std::uint32_t column) {
    const std::uint32_t blockHeight = given.grid.blockHeight;
    if (given.IsAbsent(row / blockHeight * across + column / given.grid.blockWidth)) return 0U;
    // Of three bands in mode P the last row of a block repeats the one before it, and is black where there is none.
    const bool repeats = given.mode == 'P' && given.bands > 2 && (row + 1) % blockHeight == 0;
    if (repeats && blockHeight == 1) return 0U;
    const auto level = [&](std::uint32_t band) {
      const std::uint32_t sample = Sample(band, repeats ? row - 1 : row, column);
      if (given.bits == 32) return row == 0 && column < 2 ? column * 255 : sample % 256;
      return sample & ((1U << given.bits) - 1);
    };
    if (given.bands == 1) return level(0);
    if (given.bands > 2) return level(0) << 16 | level(1) << 8 | level(2);
    // Two bands are one, in full colour.
    return 0x010101 * (given.bits == 1 ? level(0) * 255 : level(0) >> (given.bits - 8));
  };
  return layout;
}

std::vector<NamedLayout> PlainLayouts() {
  std::vector<NamedLayout> all;
  const auto add = [&](const Plain &plain) { all.push_back({plain.Name(), [plain] { return plain.Made(); }}); };
  for (const char mode : {'B', 'P', 'R', 'S'}) {
    for (const Grid &grid : kGrids) {
      for (const std::uint32_t bands : {1U, 2U, 3U, 5U}) add({mode, bands, 8, grid});
      for (const std::uint32_t bits : {1U, 12U, 16U}) add({mode, 1, bits, grid});
    }
    for (const std::uint32_t bits : {1U, 12U}) {
      if (mode != 'P') add({mode, 2, bits, kGrids[1]});
    }
    for (const Grid &grid : kTall) add({mode, 3, 8, grid});
    add({mode, 2, 8, kTall[0]});
    add({mode, 1, 32, kGrids[0]});
  }
  for (const std::uint32_t bits : {1U, 8U, 12U, 16U, 32U}) add({'B', 1, bits, kTall[0]});
  for (const std::uint32_t bits : {1U, 8U, 12U, 16U}) add({'B', 1, bits, kGrids[1], true});
  for (const char mode : {'B', 'P', 'R'}) add({mode, 3, 8, kGrids[1], true});
  for (const Grid &grid : {kGrids[0], kGrids[1], kGrids[2], kTall[0]}) {
    for (const std::uint32_t bands : {1U, 2U}) add({'B', bands, 1, grid, false, "B"});
  }
  for (const Grid &grid : kOfBits) add({'B', 1, 1, grid, false, "B"});
  return all;
}

// ---- streams ------------------------------------------------------------------------------------------------------

constexpr std::uint32_t kTile = 40;

std::uint32_t Level(std::uint32_t component, std::uint32_t x, std::uint32_t y) {
  return (x * 2654435761U ^ y * 2246822519U ^ component * 668265263U) * 3266489917U >> 24;
}

/** Tiles of streams without loss, of which one may be left out. */
struct Tiles {
  const char *name;
  char mode;
  std::uint32_t bands;
  std::uint32_t across;
  std::uint32_t down;
  bool masked = false;
  std::uint32_t bits = 8;
  std::uint32_t headerBits = 8;

  std::uint32_t Sample(std::uint32_t component, std::uint32_t x, std::uint32_t y) const {
    return Level(component, x, y) * 0x101 >> (16 - bits);
  }
  Bytes Stream(std::uint32_t tile, std::uint32_t band) const;
  Layout Made() const;
};

Bytes Tiles::Stream(std::uint32_t tile, std::uint32_t band) const {
  JpegSpec spec{.width = kTile, .height = kTile, .bits = bits, .predictor = tile % 7 + 1};
  spec.components = mode == 'S' ? 1 : bands;
  spec.sample = [=, this](std::uint32_t component, std::uint32_t x, std::uint32_t y) {
    return Sample(mode == 'S' ? band : component, x + tile % across * kTile, y + tile / across * kTile);
  };
  return EncodeJpeg(spec);
}

Layout Tiles::Made() const {
  ImageSpec image{.rows = down * kTile - 5, .columns = across * kTile - 7, .compression = masked ? "M5" : "C5"};
  image.mode = mode;
  image.bits = headerBits;
  image.actualBits = bits;
  image.bands.resize(bands);
  image.representation = bands == 3 ? "RGB" : "MONO";
  image.blockWidth = image.blockHeight = kTile;
  if (masked) image.mask = MaskSpec{};
  for (std::uint32_t band = 0; band < (mode == 'S' ? bands : 1); ++band) {
    for (std::uint32_t tile = 0; tile < across * down; ++tile) {
      const bool isAbsent = masked && tile == kAbsentBlock;
      if (masked) {
        image.mask->blockOffsets.push_back(isAbsent ? kNotRecorded : static_cast<std::uint32_t>(image.data.size()));
      }
      if (isAbsent) continue;
      const Bytes stream = Stream(tile, band);
      image.data.insert(image.data.end(), stream.begin(), stream.end());
    }
  }
  // The text behind the image is no part of it.
  const Bytes file = NitfBuilder().Image(image).Text({"behind", {}}).Build();
  Layout layout{file, across * kTile, down * kTile, bands == 3 ? 24U : bits};
  layout.isWhole = across * down == 1;
  layout.expected = [given = *this](std::uint32_t row, std::uint32_t column) {
    if (given.masked && row / kTile * given.across + column / kTile == kAbsentBlock) return 0U;
    // A mask table places all bands of a block at the same bytes.
    const bool isShared = given.masked && given.mode == 'S';
    const auto level = [&](std::uint32_t component) { return given.Sample(isShared ? 0 : component, column, row); };
    return given.bands == 1 ? level(0) : level(0) << 16 | level(1) << 8 | level(2);
  };
  return layout;
}

std::vector<NamedLayout> TileLayouts() {
  std::vector<NamedLayout> all;
  for (const Tiles &tiles :
       {Tiles{"Tiles", 'B', 1, 3, 2}, Tiles{"MaskedTiles", 'B', 1, 3, 2, true}, Tiles{"ColourTiles", 'P', 3, 2, 3},
        Tiles{"MaskedColourTiles", 'P', 3, 3, 2, true}, Tiles{"BandTiles", 'S', 3, 3, 2},
        Tiles{"MaskedBandTiles", 'S', 3, 2, 3, true}, Tiles{"TwelveBitTiles", 'B', 1, 4, 2, false, 12, 12},
        Tiles{"TwelveBitTilesIn16", 'B', 1, 3, 2, true, 12, 16}, Tiles{"SixteenBitTiles", 'B', 1, 2, 3, false, 16, 16},
        Tiles{"OneStream", 'B', 1, 1, 1}, Tiles{"OneColourStream", 'P', 3, 1, 1}}) {
    all.push_back({tiles.name, [tiles] { return tiles.Made(); }});
  }
  return all;
}

// ---- what has no model here ---------------------------------------------------------------------------------------

/** Whether a build has what a file's stream calls for. */
bool HasCodec([[maybe_unused]] const std::string &name) {
  bool has = true;
#ifndef KSNTFX_CODEC_JPEG
  has = has && name != "jpeg";
#endif
#ifndef KSNTFX_CODEC_JPEG2000
  has = has && name != "jpeg_2000";
#endif
#ifndef KSNTFX_CODEC_T4
  has = has && name != "bilevel_stream";
#endif
  return has;
}

std::vector<NamedLayout> OtherLayouts() {
  std::vector<NamedLayout> all;
  for (const SmallFile &file : SmallFiles()) {
    if (file.name == "drawing") continue;
    all.push_back({file.name, [file] {
                     Layout layout{file.bytes};
                     layout.status = HasCodec(file.name) ? SUCCESS : ERROR_NOT_SUPPORTED;
                     return layout;
                   }});
  }
  return all;
}

/** An image that was made smaller. */
TEST(SmallerImage, CoversTheBlockOfItsHeader) {
  constexpr std::uint32_t kSmall = 8;
  JpegSpec spec{.width = kSmall, .height = kSmall};
  spec.sample = [](std::uint32_t, std::uint32_t x, std::uint32_t y) { return 16 * x + 8 * y; };
  ImageSpec image{.rows = 16, .columns = 32, .compression = "I1", .data = EncodeJpeg(spec)};
  image.blockWidth = 40;
  image.blockHeight = 24;
  image.fields = {{"NBPR", "0001"}, {"NBPC", "0001"}};
  image.locationRow = image.locationColumn = 3;
  const Composition picture = Compose(NitfBuilder().Image(image));
  ASSERT_EQ(picture.status, SUCCESS);
  EXPECT_EQ(picture.width, 43U);
  EXPECT_EQ(picture.height, 27U);
  for (std::uint32_t y = 0; y < 24; ++y) {
    for (std::uint32_t x = 0; x < 40; ++x) {
      // Pixel centres: the outermost ones reach to the edges.
      const double column = std::clamp((x + 0.5) / 5 - 0.5, 0.0, 7.0);
      const double row = std::clamp((y + 0.5) / 3 - 0.5, 0.0, 7.0);
      ASSERT_NEAR(picture.At(y + 3, x + 3) & 0xFF, 16 * column + 8 * row, 0.51) << x << ", " << y;
    }
  }
  // Painted on a part of a canvas, it is enlarged as if it were seen whole.
  image.locationRow = image.locationColumn = -5;
  const Composition cut = Compose(NitfBuilder().Image(image));
  ASSERT_EQ(cut.status, SUCCESS);
  EXPECT_EQ(cut.At(10, 26), picture.At(18, 34));
  EXPECT_EQ(cut.At(0, 0), picture.At(8, 8));
}

std::string NameOf(const testing::TestParamInfo<NamedLayout> &given) {
  return given.param.name;
}
INSTANTIATE_TEST_SUITE_P(Plain, Layouts, testing::ValuesIn(PlainLayouts()), NameOf);
INSTANTIATE_TEST_SUITE_P(Tiles, Layouts, testing::ValuesIn(TileLayouts()), NameOf);
INSTANTIATE_TEST_SUITE_P(Small, Layouts, testing::ValuesIn(OtherLayouts()), NameOf);

}  // namespace
