#include "service_test.h"

namespace {

using BitmapTest = ServiceTest;

struct Shape {
  uint32_t width;
  uint32_t height;
  uint32_t bits;
  int32_t status;
  uint32_t bytesPerLine;
};

class ShapeTest : public ServiceTestWith<Shape> {};

TEST_P(ShapeTest, CreatesOrRefuses) {
  const Shape shape = GetParam();
  KsLocalBitmap bitmap;
  EXPECT_EQ(Create(bitmap, shape.width, shape.height, shape.bits), shape.status);
  EXPECT_EQ(bitmap->bytesPerLine, shape.bytesPerLine);
  EXPECT_EQ(bitmap->flags & KS_BITMAP_ALLOCATED, shape.status == SUCCESS ? 1u : 0u);
  EXPECT_EQ(uint64_t{bitmap->storageBytes}, uint64_t{shape.bytesPerLine} * bitmap->height);
}

INSTANTIATE_TEST_SUITE_P(Shapes, ShapeTest,
                         testing::Values(Shape{1, 1, 1, SUCCESS, 4}, Shape{32, 2, 1, SUCCESS, 4},
                                         Shape{33, 2, 1, SUCCESS, 8}, Shape{5, 3, 12, SUCCESS, 8},
                                         Shape{3, 1, 24, SUCCESS, 12}, Shape{7, 9, 255, SUCCESS, 224},
                                         Shape{0, 5, 8, ERROR_INVALID_VALUE, 0}, Shape{5, 0, 8, ERROR_INVALID_VALUE, 0},
                                         Shape{5, 5, 0, ERROR_INVALID_VALUE, 0},
                                         Shape{5, 5, 256, ERROR_INVALID_VALUE, 0},
                                         Shape{65536, 65536, 24, ERROR_NO_MEMORY, 0},
                                         Shape{UINT32_MAX, UINT32_MAX, 255, ERROR_NO_MEMORY, 0}));

TEST_F(BitmapTest, LimitBoundsThePixels) {
  const uint64_t before = KsSetBitmapLimit(400);
  EXPECT_EQ(before, uint64_t{4} << 30);
  KsLocalBitmap bitmap;
  EXPECT_EQ(Create(bitmap, 20, 21, 8), ERROR_NO_MEMORY);
  EXPECT_EQ(Create(bitmap, 20, 20, 8), SUCCESS);
  EXPECT_EQ(KsSetBitmapLimit(0), 400u);
  EXPECT_EQ(KsSetBitmapLimit(0), before);
}

TEST_F(BitmapTest, AnotherLayoutIsRefused) {
  KsLocalBitmap bitmap;
  EXPECT_EQ(KsBitmapCreate(bitmap.Get(), 280, KS_BITMAP_OWN, 4, 4, 8, 0, nullptr, 1, nullptr, 0), ERROR_INVALID_VALUE);
  EXPECT_EQ(KsBitmapCreate(nullptr, 284, KS_BITMAP_OWN, 4, 4, 8, 0, nullptr, 1, nullptr, 0), ERROR_INVALID_VALUE);
  EXPECT_EQ(KsBitmapCreate(bitmap.Get(), 284, 3, 4, 4, 8, 0, nullptr, 1, nullptr, 0), ERROR_INVALID_VALUE);
}

TEST_F(BitmapTest, AViewShowsAPartOfAnotherBitmap) {
  KsLocalBitmap whole;
  ASSERT_EQ(Create(whole, 9, 5, 24), SUCCESS);
  KsLocalBitmap view;
  const auto show = [&](uint32_t left, uint32_t top, uint32_t width, uint32_t height) {
    return KsBitmapView(view.Get(), sizeof(KsBitmap), whole.Get(), left, top, width, height);
  };
  ASSERT_EQ(show(7, 3, 2, 2), SUCCESS);
  KsBitmapAccess(whole.Get(), 0);
  EXPECT_EQ(view->pixels, whole->pixels + 3 * uint64_t{whole->bytesPerLine} + 7 * 3);
  EXPECT_EQ(view->bytesPerLine, whole->bytesPerLine);
  // A larger source fills the view and no pixel beside it.
  KsLocalBitmap source;
  ASSERT_EQ(Create(source, 20, 20, 24), SUCCESS);
  ASSERT_EQ(KsBitmapFill(source.Get(), 0x0A0A0A), SUCCESS);
  ASSERT_EQ(KsCombine(view.Get(), 0, 0, 20, 20, source.Get(), 0, 0, 288, 0), SUCCESS);
  for (uint32_t y = 0; y < 5; ++y) {
    for (uint32_t x = 0; x < 9; ++x) {
      EXPECT_EQ(whole->pixels[y * whole->bytesPerLine + x * 3], x >= 7 && y >= 3 ? 10 : 0) << x << ", " << y;
    }
  }
  KsBitmapRelease(whole.Get(), 1, 1);
  EXPECT_EQ(show(8, 0, 2, 1), ERROR_INVALID_VALUE);
  EXPECT_EQ(show(0, 4, 1, 2), ERROR_INVALID_VALUE);
  EXPECT_EQ(show(0, 0, 0, 1), ERROR_INVALID_VALUE);
  EXPECT_EQ(show(UINT32_MAX, UINT32_MAX, 2, 2), ERROR_INVALID_VALUE);
  KsLocalBitmap bits;
  ASSERT_EQ(Create(bits, 20, 2, 1), SUCCESS);
  EXPECT_EQ(KsBitmapView(view.Get(), sizeof(KsBitmap), bits.Get(), 8, 0, 3, 1), SUCCESS);
  EXPECT_EQ(KsBitmapView(view.Get(), sizeof(KsBitmap), bits.Get(), 4, 0, 3, 1), ERROR_INVALID_VALUE);
  KsLocalBitmap empty;
  EXPECT_EQ(KsBitmapView(view.Get(), sizeof(KsBitmap), empty.Get(), 0, 0, 1, 1), ERROR_NO_STORAGE);
}

TEST_F(BitmapTest, CallersPixelsAreShownAndLeftAlive) {
  Bytes pixels = RandomBytes(40, 1);
  KsLocalBitmap bitmap;
  const auto create = [&](void *data, uint64_t size) {
    return KsBitmapCreate(bitmap.Get(), 284, KS_BITMAP_CALLER, 7, 5, 8, 0, nullptr, 1, data, size);
  };
  EXPECT_EQ(create(pixels.data(), 39), ERROR_INVALID_VALUE);
  EXPECT_EQ(bitmap->width, 0u) << "empty after a failure";
  ASSERT_EQ(create(nullptr, 0), SUCCESS);
  EXPECT_EQ(KsBitmapFill(bitmap.Get(), 0), ERROR_NO_STORAGE);
  EXPECT_EQ(KsBitmapAccess(bitmap.Get(), 0), ERROR_NO_STORAGE);
  EXPECT_EQ(KsBitmapSetData(bitmap.Get(), pixels.data(), 39, 0), ERROR_INVALID_VALUE);
  ASSERT_EQ(KsBitmapSetData(bitmap.Get(), pixels.data(), 40, 0), SUCCESS);
  Bytes row(8);
  EXPECT_EQ(KsBitmapGetRow(bitmap.Get(), row.data(), 2, 8), 8);
  EXPECT_EQ(row, Bytes(pixels.begin() + 16, pixels.begin() + 24));
  KsBitmapClear(bitmap.Get());
  EXPECT_EQ(pixels, Bytes(40));
  pixels[3] = 9;
  KsBitmapClear(bitmap.Get());
  EXPECT_EQ(pixels[3], 0) << "the caller had written meanwhile";

  KsLocalBitmap own;
  ASSERT_EQ(Create(own, 4, 4, 8), SUCCESS);
  EXPECT_EQ(KsBitmapSetData(own.Get(), pixels.data(), 40, 0), ERROR_INVALID_VALUE);
}

TEST_F(BitmapTest, RowsMoveWithinTheirBounds) {
  KsLocalBitmap bitmap;
  ASSERT_EQ(Create(bitmap, 5, 3, 8), SUCCESS);
  const Bytes source = RandomBytes(20, 2);
  Bytes target(20);
  EXPECT_EQ(KsBitmapPutRow(bitmap.Get(), source.data(), 1, 20), 8) << "cut to a row";
  EXPECT_EQ(KsBitmapPutRow(bitmap.Get(), source.data(), 2, 3), 3);
  EXPECT_EQ(KsBitmapGetRow(bitmap.Get(), target.data(), 1, 20), 8);
  EXPECT_TRUE(std::equal(target.begin(), target.begin() + 8, source.begin()));
  EXPECT_EQ(bitmap->pixels[18], source[2]);
  EXPECT_EQ(bitmap->pixels[19], 0);
  EXPECT_EQ(KsBitmapPutRow(bitmap.Get(), source.data(), 3, 8), ERROR_INVALID_VALUE);
  EXPECT_EQ(KsBitmapGetRow(bitmap.Get(), target.data(), UINT32_MAX, 8), ERROR_INVALID_VALUE);
  EXPECT_EQ(KsBitmapGetRow(bitmap.Get(), nullptr, 0, 8), ERROR_INVALID_VALUE);
  KsBitmapFree(bitmap.Get());
  EXPECT_EQ(KsBitmapGetRow(bitmap.Get(), target.data(), 0, 8), ERROR_NO_STORAGE);
}

struct FillCase {
  uint32_t bits;
  bool palette;
  uint32_t color;
  uint64_t pixel;
};

class FillTest : public ServiceTestWith<FillCase> {};

TEST_P(FillTest, GivesEveryPixelTheColor) {
  const FillCase fill = GetParam();
  const Palette palette = {{10, 20, 30, 0}, {250, 240, 230, 0}};
  Palette full(256, KsPaletteEntry{1, 1, 1, 0});
  std::copy(palette.begin(), palette.end(), full.begin() + (fill.bits == 8 ? 7 : 0));
  KsLocalBitmap bitmap;
  ASSERT_EQ(Create(bitmap, 13, 3, fill.bits, fill.palette ? full.data() : nullptr), SUCCESS);
  SetStorage(*bitmap.Get(), RandomBytes(uint64_t{bitmap->bytesPerLine} * 3, 3));
  ASSERT_EQ(KsBitmapFill(bitmap.Get(), fill.color), SUCCESS);
  const Bytes storage = StorageOf(*bitmap.Get());
  for (uint32_t i = 0; i < 39; ++i) ASSERT_EQ(PixelOf(*bitmap.Get(), storage, i % 13, i / 13), fill.pixel) << i;
  KsBitmapClear(bitmap.Get());
  EXPECT_EQ(StorageOf(*bitmap.Get()), Bytes(storage.size()));
}

// 0x40C020 is red 32, green 192, blue 64, of brightness (77 * 32 + 151 * 192 + 28 * 64) / 256 = 129.
INSTANTIATE_TEST_SUITE_P(Depths, FillTest,
                         testing::Values(FillCase{1, false, 0x40C020, 1}, FillCase{1, false, 0x40A020, 0},
                                         FillCase{1, true, 0x101010, 0}, FillCase{1, true, 0xFFFFFF, 1},
                                         FillCase{8, false, 0x40C020, 129}, FillCase{8, true, 0xF0E0D0, 8},
                                         FillCase{8, true, 0x0A141E, 7}, FillCase{12, false, 0xFFFFFF, 4095},
                                         FillCase{12, false, 0x40C020, 0x818}, FillCase{16, false, 0xFFFFFF, 65535},
                                         FillCase{16, false, 0x40C020, 0x8181}, FillCase{24, false, 0x40C020, 0x20C040},
                                         FillCase{24, false, 0x555555, 0x555555}, FillCase{24, false, 0, 0},
                                         FillCase{32, false, 0xFF40C020, 0x20C040}));

/** One way to write to a fresh bitmap of 4 by 2 colours. */
struct Writer {
  const char *name;
  void (*write)(KsBitmap *bitmap, const KsBitmap *source);
};

class WriterTest : public ServiceTestWith<Writer> {};

TEST_P(WriterTest, FillOfBlackComesAfterIt) {
  KsLocalBitmap bitmap;
  KsLocalBitmap source;
  ASSERT_EQ(Create(bitmap, 4, 2, 24), SUCCESS);
  ASSERT_EQ(Create(source, 4, 2, 24), SUCCESS);
  ASSERT_EQ(KsBitmapFill(source.Get(), 0x123456), SUCCESS);
  GetParam().write(bitmap.Get(), source.Get());
  const Bytes black(24);
  EXPECT_NE(StorageOf(*bitmap.Get()), black);
  KsBitmapFill(bitmap.Get(), 0);
  EXPECT_EQ(StorageOf(*bitmap.Get()), black);
}

const Writer writers[] = {
    {"Row", [](KsBitmap *bitmap, const KsBitmap *) { KsBitmapPutRow(bitmap, "kkk", 0, 3); }},
    {"Color", [](KsBitmap *bitmap, const KsBitmap *) { KsBitmapFill(bitmap, 0x123456); }},
    {"Gray", [](KsBitmap *bitmap, const KsBitmap *) { KsBitmapFill(bitmap, 0x777777); }},
    {"Combine", [](KsBitmap *bitmap, const KsBitmap *source) { KsCombine(bitmap, 0, 0, 4, 2, source, 0, 0, 288, 0); }},
    {"Paint",
     [](KsBitmap *bitmap, const KsBitmap *source) {
       const KsLocalContext context(bitmap);
       const KsRect rectangle = {0, 0, 4, 2};
       KsPaintBitmap(context.Get(), source, nullptr, nullptr, &rectangle, nullptr, KS_ROP_COPY);
     }},
    {"Access",
     [](KsBitmap *bitmap, const KsBitmap *) {
       KsBitmapAccess(bitmap, 0);
       bitmap->pixels[5] = 1;
       KsBitmapRelease(bitmap, 1, 1);
     }},
};

INSTANTIATE_TEST_SUITE_P(Ways, WriterTest, testing::ValuesIn(writers),
                         [](const auto &way) { return std::string(way.param.name); });

TEST_F(BitmapTest, FillHasNoConversionForOtherDepths) {
  KsLocalBitmap bitmap;
  ASSERT_EQ(Create(bitmap, 4, 4, 48), SUCCESS);
  EXPECT_EQ(KsBitmapFill(bitmap.Get(), 0xFFFFFF), ERROR_BITS_PER_PIXEL);
}

uint32_t EntryAt(const KsBitmap &bitmap, uint32_t index) {
  KsPaletteEntry entry = {};
  EXPECT_EQ(KsBitmapGetPalette(&bitmap, index, 1, &entry), SUCCESS);
  return entry.red << 16 | entry.green << 8 | entry.blue;
}

TEST_F(BitmapTest, PartOfAPaletteLeavesTheGrayRampInTheRest) {
  KsLocalBitmap bitmap;
  ASSERT_EQ(Create(bitmap, 4, 4, 8), SUCCESS);
  KsPaletteEntry entry = {};
  EXPECT_EQ(KsBitmapGetPalette(bitmap.Get(), 0, 1, &entry), ERROR_INVALID_VALUE);
  const Palette black(300, KsPaletteEntry{});
  ASSERT_EQ(KsBitmapSetPalette(bitmap.Get(), 0, 255, black.data()), SUCCESS);
  EXPECT_EQ(bitmap->colorCount, 256u);
  EXPECT_EQ(EntryAt(*bitmap.Get(), 254), 0u);
  EXPECT_EQ(EntryAt(*bitmap.Get(), 255), 0xFFFFFFu);
  const Palette entries = RandomPalette(300, 4);
  ASSERT_EQ(KsBitmapSetPalette(bitmap.Get(), 250, 300, entries.data()), SUCCESS);
  Palette copy(10, KsPaletteEntry{9, 9, 9, 9});
  ASSERT_EQ(KsBitmapGetPalette(bitmap.Get(), 250, 10, copy.data()), SUCCESS);
  EXPECT_EQ(std::memcmp(copy.data(), entries.data(), 6 * 4), 0);
  EXPECT_EQ(copy[6].red, 9) << "beyond the palette";
  KsLocalBitmap deep;
  ASSERT_EQ(Create(deep, 4, 4, 12), SUCCESS);
  EXPECT_EQ(KsBitmapSetPalette(deep.Get(), 0, 255, black.data()), ERROR_BITS_PER_PIXEL);
}

TEST_F(BitmapTest, DefaultPaletteIsTheRampOfItsDepth) {
  for (uint32_t bits = 1; bits <= 8; ++bits) {
    KsPaletteEntry *const ramp = KsDefaultPalette(bits);
    ASSERT_NE(ramp, nullptr);
    const uint32_t last = (1u << bits) - 1;
    EXPECT_EQ(ramp[0].green, 0);
    EXPECT_EQ(ramp[last].blue, 255);
    EXPECT_EQ(ramp[last / 2].red, last / 2 * 255 / last);
    KsPaletteFree(ramp);
  }
  EXPECT_EQ(KsDefaultPalette(0), nullptr);
  EXPECT_EQ(KsDefaultPalette(9), nullptr);
}

TEST_F(BitmapTest, LutIsCutToTheDepthAndBlackBeyondItsEnd) {
  const uint32_t table[] = {0xFF123456, 0x808080, 0xFFFFFF, 0x0000FF};
  KsPalette *const palette = KsPaletteFromLut(table, 4);
  ASSERT_NE(palette, nullptr);
  KsLocalBitmap bilevel;
  KsLocalBitmap indexed;
  KsLocalBitmap gray;
  KsLocalBitmap colors;
  ASSERT_TRUE(Create(bilevel, 4, 4, 1) == SUCCESS && Create(indexed, 4, 4, 8) == SUCCESS);
  ASSERT_TRUE(Create(gray, 4, 4, 16) == SUCCESS && Create(colors, 4, 4, 24) == SUCCESS);
  EXPECT_EQ(KsBitmapSetLut(bilevel.Get(), palette), SUCCESS);
  EXPECT_EQ(bilevel->colorCount, 2u);
  EXPECT_EQ(KsBitmapSetLut(indexed.Get(), palette), SUCCESS);
  EXPECT_EQ(indexed->colorCount, 4u);
  EXPECT_EQ(EntryAt(*indexed.Get(), 0), 0x123456u);
  EXPECT_GE(indexed->paletteCapacity, 256u);
  EXPECT_EQ(indexed->palette[200].red, 0);
  EXPECT_EQ(KsBitmapSetLut(gray.Get(), palette), SUCCESS);
  EXPECT_EQ(gray->colorCount, 4u);
  EXPECT_EQ(KsBitmapSetLut(colors.Get(), palette), ERROR_BITS_PER_PIXEL);
  EXPECT_EQ(KsBitmapSetLut(indexed.Get(), nullptr), ERROR_INVALID_VALUE);
  KsObjectFree(palette, __LINE__, __FILE__);
  KsObjectFree(nullptr, __LINE__, __FILE__);
  EXPECT_EQ(KsPaletteFromLut(table, 0), nullptr);
  EXPECT_EQ(KsPaletteFromLut(nullptr, 4), nullptr);
  EXPECT_EQ(KsPaletteFromLut(table, 65537), nullptr);
}

}  // namespace
