#include "service_test.h"

#include <tuple>

namespace {

// ---- what combining means, one pixel at a time ----------------------------------------------------------------------

struct Color {
  int red;
  int green;
  int blue;
};

bool operator==(const Color &a, const Color &b) {
  return a.red == b.red && a.green == b.green && a.blue == b.blue;
}

Color Gray(int level) {
  return {level, level, level};
}

Color EntryColor(const KsBitmap &bitmap, uint64_t index) {
  if (index >= bitmap.colorCount) return Gray(0);
  const KsPaletteEntry &entry = bitmap.palette[index];
  return {entry.red, entry.green, entry.blue};
}

Color ShownColor(const KsBitmap &bitmap, uint64_t pixel) {
  const auto value = static_cast<int>(pixel & 0xFFFFFF);
  switch (bitmap.bitsPerPixel) {
    case 1:
      return bitmap.palette != nullptr ? EntryColor(bitmap, pixel) : Gray(value * 255);
    case 8:
      return bitmap.palette != nullptr ? EntryColor(bitmap, pixel) : Gray(value);
    case 12:
      return Gray(value / 16);
    case 16:
      return Gray(value / 256);
    default:
      return {value / 65536, value / 256 % 256, value % 256};
  }
}

int Distance(const Color &a, const Color &b) {
  const int red = a.red - b.red;
  const int green = a.green - b.green;
  const int blue = a.blue - b.blue;
  return red * red + green * green + blue * blue;
}

uint64_t NearestEntry(const KsBitmap &bitmap, const Color &color) {
  uint64_t nearest = 0;
  for (uint64_t i = 1; i < bitmap.colorCount; ++i) {
    if (Distance(EntryColor(bitmap, i), color) < Distance(EntryColor(bitmap, nearest), color)) nearest = i;
  }
  return nearest;
}

bool SamePalette(const KsBitmap &a, const KsBitmap &b) {
  for (uint64_t i = 0; i < 256; ++i) {
    if (!(ShownColor(a, i) == ShownColor(b, i))) return false;
  }
  return true;
}

uint64_t Converted(const KsBitmap &target, const KsBitmap &source, uint64_t pixel) {
  if (source.bitsPerPixel == target.bitsPerPixel) {
    if (source.bitsPerPixel != 8 || source.palette == nullptr || SamePalette(source, target)) return pixel;
  }
  const Color color = ShownColor(source, pixel);
  const int bgr = color.red * 65536 + color.green * 256 + color.blue;
  if (target.bitsPerPixel >= 24) return static_cast<uint64_t>(bgr);
  if (target.palette != nullptr) return NearestEntry(target, color);
  return static_cast<uint64_t>((77 * color.red + 151 * color.green + 28 * color.blue) / 256);
}

struct Piece {
  int64_t left, top, width, height, sourceLeft, sourceTop;
};

template <class IsLeftOut>
Bytes Combined(const KsBitmap &target, const KsBitmap &source, const Piece &piece, const IsLeftOut &isLeftOut) {
  Bytes result = StorageOf(target);
  const Bytes from = StorageOf(source);
  for (int64_t y = 0; y < piece.height; ++y) {
    for (int64_t x = 0; x < piece.width; ++x) {
      const int64_t fromX = piece.sourceLeft + x;
      const int64_t fromY = piece.sourceTop + y;
      const int64_t toX = piece.left + x;
      const int64_t toY = piece.top + y;
      if (fromX < 0 || fromY < 0 || fromX >= source.width || fromY >= source.height) continue;
      if (toX < 0 || toY < 0 || toX >= target.width || toY >= target.height) continue;
      const uint64_t pixel = PixelOf(source, from, static_cast<uint64_t>(fromX), static_cast<uint64_t>(fromY));
      if (isLeftOut(pixel)) continue;
      SetPixel(target, result, static_cast<uint64_t>(toX), static_cast<uint64_t>(toY),
               Converted(target, source, pixel));
    }
  }
  return result;
}

// ---- the pairs ------------------------------------------------------------------------------------------------------

enum PaletteUse { noPalette, paletteOne, paletteTwo };

struct Side {
  uint32_t bits;
  PaletteUse palette;
};

void PrintTo(const Side &side, std::ostream *out) {
  *out << side.bits << " bits, palette " << side.palette;
}

class PairTest : public ServiceTestWith<std::tuple<Side, Side>> {
 protected:
  void MakeBoth(uint32_t sourceWidth, uint32_t sourceHeight, uint32_t targetWidth, uint32_t targetHeight) {
    Make(source, std::get<0>(GetParam()), sourceWidth, sourceHeight);
    Make(target, std::get<1>(GetParam()), targetWidth, targetHeight);
    if (source->bitsPerPixel != 8) return;
    // A palette that ends early, so that some indices lie beyond its end.
    if (source->palette != nullptr) source->colorCount = 200;
  }

  static void Make(KsLocalBitmap &bitmap, const Side &side, uint32_t width, uint32_t height) {
    const Palette palette = RandomPalette(256, side.palette);
    ASSERT_EQ(Create(bitmap, width, height, side.bits, side.palette != noPalette ? palette.data() : nullptr), SUCCESS);
    SetStorage(*bitmap.Get(), RandomBytes(uint64_t{bitmap->bytesPerLine} * height, side.bits));
  }

  bool HasConversion() const {
    const uint32_t from = std::get<0>(GetParam()).bits;
    const uint32_t to = std::get<1>(GetParam()).bits;
    const auto known = [](uint32_t bits) { return bits <= 8 ? bits == 1 || bits == 8 : bits <= 32 && bits != 15; };
    return from == to || (known(from) && (to == 8 || to == 24 || to == 32));
  }

  KsLocalBitmap source;
  KsLocalBitmap target;
};

TEST_P(PairTest, CombinesAtEveryPositionAsPixelByPixel) {
  MakeBoth(19, 3, 23, 4);
  for (const int32_t left : {-20, -17, -3, 0, 1, 2, 5, 8, 21, 30}) {
    for (const int32_t sourceLeft : {-2, 0, 1, 7, 18}) {
      for (const int32_t width : {-1, 0, 1, 2, 3, 11, 40}) {
        const Piece piece = {left, sourceLeft % 3 - 1, width, 3, sourceLeft, left & 1};
        const Bytes before = StorageOf(*target.Get());
        const Bytes expected = Combined(*target.Get(), *source.Get(), piece, [](uint64_t) { return false; });
        const int32_t status = KsCombine(target.Get(), left, static_cast<int32_t>(piece.top), width, 3, source.Get(),
                                         sourceLeft, static_cast<int32_t>(piece.sourceTop), 288, 0);
        ASSERT_EQ(status, HasConversion() ? SUCCESS : ERROR_NOT_SUPPORTED);
        ASSERT_EQ(StorageOf(*target.Get()), HasConversion() ? expected : before)
            << "left " << left << " from " << sourceLeft << " width " << width;
      }
    }
  }
}

TEST_P(PairTest, CombinesWholeBitmaps) {
  // Rows end with their last pixel here, so that a byte too many would lie outside the storage.
  MakeBoth(32, 5, 32, 5);
  for (const int32_t sourceLeft : {27, 3, 0}) {
    const Bytes before = StorageOf(*target.Get());
    const Piece piece = {0, 0, 32, 5, sourceLeft, 0};
    const Bytes expected = Combined(*target.Get(), *source.Get(), piece, [](uint64_t) { return false; });
    KsCombine(target.Get(), 0, 0, INT32_MAX, INT32_MAX, source.Get(), sourceLeft, 0, 288, 0);
    ASSERT_EQ(StorageOf(*target.Get()), HasConversion() ? expected : before) << "from " << sourceLeft;
  }
}

TEST_P(PairTest, PaintsAllButTheTransparentColor) {
  MakeBoth(19, 3, 23, 4);
  const bool comparable = source->bitsPerPixel <= 32 && source->bitsPerPixel != 4;
  const Bytes from = StorageOf(*source.Get());
  // Of a deep gray only the sample whose bits repeat the level is of a colour; make some such, next to the like of it.
  Bytes pixels = from;
  uint64_t exact = PixelOf(*source.Get(), from, 4, 1);
  if (source->bitsPerPixel == 12) exact = 0xA7A;
  if (source->bitsPerPixel == 16) exact = 0xA7A7;
  const Color shown = ShownColor(*source.Get(), exact);
  for (const uint32_t x : {0, 1, 5, 6, 18}) SetPixel(*source.Get(), pixels, x, 1, exact);
  SetPixel(*source.Get(), pixels, 7, 1, exact ^ 1);
  SetStorage(*source.Get(), pixels);
  const auto isLeftOut = [&](uint64_t pixel) {
    const bool deepGray = source->bitsPerPixel == 12 || source->bitsPerPixel == 16;
    return deepGray ? pixel == exact : ShownColor(*source.Get(), pixel) == shown;
  };
  const Bytes before = StorageOf(*target.Get());
  const Bytes expected = Combined(*target.Get(), *source.Get(), {-1, 1, 18, 2, 0, 0}, isLeftOut);
  const KsLocalContext context(target.Get());
  const KsRect rectangle = {-1, 1, 17, 3};
  const auto color = static_cast<uint32_t>(shown.blue << 16 | shown.green << 8 | shown.red);
  const int32_t status = KsPaintTransparent(context.Get(), source.Get(), nullptr, nullptr, &rectangle, nullptr, 1000, 1,
                                            1, 1, 1, 1, 1, 1, color, 0, 0, KS_ROP_COPY);
  const bool paints = HasConversion() && comparable;
  EXPECT_EQ(status, paints ? SUCCESS : ERROR_NOT_SUPPORTED);
  EXPECT_EQ(StorageOf(*target.Get()), paints ? expected : before);
}

const Side sides[] = {{1, noPalette},  {1, paletteOne}, {8, noPalette},  {8, paletteOne}, {8, paletteTwo},
                      {12, noPalette}, {16, noPalette}, {24, noPalette}, {32, noPalette}};

INSTANTIATE_TEST_SUITE_P(All, PairTest, testing::Combine(testing::ValuesIn(sides), testing::ValuesIn(sides)));

const Side others[] = {{40, noPalette}, {64, noPalette}};
INSTANTIATE_TEST_SUITE_P(OtherDepths, PairTest, testing::Combine(testing::ValuesIn(others), testing::ValuesIn(others)));

using CombineTest = ServiceTest;

TEST_F(CombineTest, NearestColorIsExactForEveryColor) {
  KsLocalBitmap source;
  KsLocalBitmap target;
  const Palette palette = RandomPalette(256, 8);
  ASSERT_TRUE(Create(source, 200, 100, 24) == SUCCESS && Create(target, 200, 100, 8, palette.data()) == SUCCESS);
  Bytes pixels = RandomBytes(600 * 100, 9);
  std::fill_n(pixels.begin(), 30, uint8_t{0});
  std::fill_n(pixels.begin() + 30, 30, uint8_t{255});
  SetStorage(*source.Get(), pixels);
  const Bytes expected = Combined(*target.Get(), *source.Get(), {0, 0, 200, 100, 0, 0}, [](uint64_t) { return false; });
  ASSERT_EQ(KsCombine(target.Get(), 0, 0, 200, 100, source.Get(), 0, 0, 288, 0), SUCCESS);
  EXPECT_EQ(StorageOf(*target.Get()), expected);
}

TEST_F(CombineTest, PositionsAtTheEndsOfTheirRangeCopyNothing) {
  KsLocalBitmap bitmap;
  KsLocalBitmap source;
  ASSERT_TRUE(Create(bitmap, 5, 5, 8) == SUCCESS && Create(source, 5, 5, 8) == SUCCESS);
  KsBitmapFill(source.Get(), 0xFFFFFF);
  for (const int32_t position : {INT32_MIN, INT32_MAX}) {
    for (const int32_t from : {INT32_MIN, 0, INT32_MAX}) {
      EXPECT_EQ(KsCombine(bitmap.Get(), position, 0, INT32_MAX, 5, source.Get(), from, 0, 288, 0), SUCCESS);
      EXPECT_EQ(KsCombine(bitmap.Get(), 0, position, 5, INT32_MAX, source.Get(), 0, from, 288, 0), SUCCESS);
    }
  }
  EXPECT_EQ(StorageOf(*bitmap.Get()), Bytes(40));
}

TEST_F(CombineTest, RefusesWhatItCannotCombine) {
  KsLocalBitmap bitmap;
  KsLocalBitmap empty;
  ASSERT_EQ(Create(bitmap, 5, 5, 8), SUCCESS);
  EXPECT_EQ(KsCombine(bitmap.Get(), 0, 0, 5, 5, empty.Get(), 0, 0, 288, 0), ERROR_NO_STORAGE);
  EXPECT_EQ(KsCombine(empty.Get(), 0, 0, 5, 5, bitmap.Get(), 0, 0, 288, 0), ERROR_NO_STORAGE);
  EXPECT_EQ(KsCombine(nullptr, 0, 0, 5, 5, bitmap.Get(), 0, 0, 288, 0), ERROR_INVALID_VALUE);
  EXPECT_EQ(KsCombine(bitmap.Get(), 0, 0, 5, 5, bitmap.Get(), 0, 0, 289, 0), ERROR_NOT_SUPPORTED);
}

TEST_F(CombineTest, AnEnlargedBitmapIsTheSamePaintedAndCombinedAndUnderAClip) {
  KsLocalBitmap source;
  KsLocalBitmap combined;
  KsLocalBitmap painted;
  ASSERT_TRUE(Create(source, 3, 2, 8) == SUCCESS && Create(combined, 12, 12, 24) == SUCCESS);
  ASSERT_EQ(Create(painted, 12, 12, 24), SUCCESS);
  SetStorage(*source.Get(), {0, 90, 255, 0, 7, 0, 120, 0});
  source->flags |= KS_BITMAP_ENLARGED;
  ASSERT_EQ(KsCombine(combined.Get(), 1, -2, 11, 14, source.Get(), 0, 0, 288, 0), SUCCESS);
  const Bytes storage = StorageOf(*combined.Get());
  EXPECT_EQ(PixelOf(*combined.Get(), storage, 0, 5), 0u);
  EXPECT_EQ(PixelOf(*combined.Get(), storage, 11, 11), 0x787878u);
  const KsLocalContext context(painted.Get());
  const KsRect rectangle = {1, -2, 12, 12};
  for (const KsRect &clip : {KsRect{0, 0, 5, 12}, KsRect{5, 0, 12, 12}}) {
    ASSERT_EQ(KsPaintTransparent(context.Get(), source.Get(), nullptr, &clip, &rectangle, nullptr, 1000, 1, 1, 1, 1, 1,
                                 1, 1, 0x787878, 1, 1, KS_ROP_COPY),
              SUCCESS);
  }
  // What has the transparent colour is left black.
  for (uint32_t y = 0; y < 12; ++y) {
    for (uint32_t x = 0; x < 12; ++x) {
      const uint64_t pixel = PixelOf(*combined.Get(), storage, x, y);
      EXPECT_EQ(PixelOf(*painted.Get(), StorageOf(*painted.Get()), x, y), pixel == 0x787878 ? 0 : pixel);
    }
  }
}

TEST_F(CombineTest, PaintingKeepsToSourceClipAndRectangle) {
  KsLocalBitmap source;
  KsLocalBitmap target;
  ASSERT_TRUE(Create(source, 9, 9, 24) == SUCCESS && Create(target, 12, 12, 24) == SUCCESS);
  SetStorage(*source.Get(), RandomBytes(uint64_t{source->bytesPerLine} * 9, 5));
  const KsLocalContext context(target.Get());
  const KsRect piece = {2, 1, 7, 8};
  const KsRect clip = {4, 0, 8, 6};
  const KsRect rectangle = {3, 2, 12, 12};
  // Pixel (2, 1) lies at (3, 2); the clip leaves columns 4 to 7 and rows 2 to 5 of what is painted.
  const Bytes expected = Combined(*target.Get(), *source.Get(), {4, 2, 4, 4, 3, 1}, [](uint64_t) { return false; });
  ASSERT_EQ(KsPaintBitmap(context.Get(), source.Get(), &piece, &clip, &rectangle, nullptr, KS_ROP_COPY), SUCCESS);
  EXPECT_EQ(StorageOf(*target.Get()), expected);
  EXPECT_EQ(KsPaintBitmap(nullptr, source.Get(), nullptr, nullptr, &rectangle, nullptr, KS_ROP_COPY),
            ERROR_INVALID_VALUE);
  EXPECT_EQ(KsPaintBitmap(context.Get(), source.Get(), nullptr, nullptr, nullptr, nullptr, KS_ROP_COPY),
            ERROR_INVALID_VALUE);
}

}  // namespace
