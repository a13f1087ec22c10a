// The front of the codecs, with streams that every build decodes.
#include "codec_test.h"

#include "jpeg_builder.h"

namespace {

constexpr uint32_t kWidth = 13;
constexpr uint32_t kHeight = 7;

/** A lossless stream of colours that differ everywhere. */
Bytes ColorStream() {
  JpegSpec spec{.width = kWidth, .height = kHeight, .components = 3};
  spec.sample = [](uint32_t component, uint32_t x, uint32_t y) { return 90 * component + 7 * x + y; };
  return EncodeJpeg(spec);
}

class CodecTest : public ServiceTest {
 protected:
  int32_t LoadInPlace(const KsBitmap &place) const {
    return KsLoadMemoryInPlace(stream.data(), &place, sizeof place, stream.size(), nullptr);
  }

  const Bytes stream = ColorStream();
};

TEST_F(CodecTest, ReadsTheHeaderAlone) {
  KsFileInfo info;
  ASSERT_EQ(Inform(stream, &info), SUCCESS);
  EXPECT_EQ(info.formatId, uint32_t{KS_FORMAT_JPEG_LOSSLESS});
  EXPECT_EQ(info.width, kWidth);
  EXPECT_EQ(info.height, kHeight);
  EXPECT_EQ(info.bitsPerPixel, 24u);
  EXPECT_EQ(uint64_t{info.imageBytes}, uint64_t{kHeight} * 40) << "rows padded to four bytes";
  EXPECT_EQ(info.pageCount, 1u);
  EXPECT_EQ(info.pageNumber, 1u);
}

TEST_F(CodecTest, ALoadReplacesWhatTheBitmapHeld) {
  KsLocalBitmap bitmap;
  const Palette palette = RandomPalette(256, 1);
  ASSERT_EQ(Create(bitmap, 3, 3, 8, palette.data()), SUCCESS);
  ASSERT_EQ(LoadStream(stream, bitmap), SUCCESS);
  EXPECT_EQ(bitmap->width, kWidth);
  EXPECT_EQ(bitmap->palette, nullptr);
  KsFailAllocationsAfter(0);
  EXPECT_EQ(LoadStream(stream, bitmap), ERROR_NO_MEMORY);
  EXPECT_EQ(bitmap->pixels, nullptr);
}

TEST_F(CodecTest, DecodesInPlaceWhereSizeAndDepthFit) {
  KsLocalBitmap whole;
  KsLocalBitmap gray;
  ASSERT_EQ(Create(whole, kWidth + 3, kHeight + 2, 24), SUCCESS);
  ASSERT_EQ(Create(gray, kWidth, kHeight, 8), SUCCESS);
  const auto load = [&](uint32_t width, uint32_t height) {
    KsLocalBitmap view;
    EXPECT_EQ(KsBitmapView(view.Get(), sizeof(KsBitmap), whole.Get(), 2, 1, width, height), SUCCESS);
    return LoadInPlace(*view.Get());
  };
  EXPECT_EQ(load(kWidth + 1, kHeight), ERROR_NOT_SUPPORTED);
  EXPECT_EQ(load(kWidth, kHeight + 1), ERROR_NOT_SUPPORTED);
  EXPECT_EQ(LoadInPlace(*gray.Get()), ERROR_NOT_SUPPORTED);
  EXPECT_EQ(load(kWidth, kHeight), SUCCESS);
  KsLocalBitmap alone;
  KsLocalBitmap expected;
  ASSERT_EQ(LoadStream(stream, alone), SUCCESS);
  ASSERT_EQ(Create(expected, kWidth + 3, kHeight + 2, 24), SUCCESS);
  KsCombine(expected.Get(), 2, 1, kWidth, kHeight, alone.Get(), 0, 0, 288, 0);
  EXPECT_EQ(StorageOf(*whole.Get()), StorageOf(*expected.Get()));
}

TEST_F(CodecTest, ARedirectLeavesTheBitmapToTheRawStream) {
  const KsRedirectCallback redirect = [](KsRawFormatInfo *, void *) -> int32_t { return ERROR_QUALITY; };
  KsLocalBitmap bitmap;
  ASSERT_EQ(Create(bitmap, kWidth, kHeight, 24), SUCCESS);
  const Bytes before = StorageOf(*bitmap.Get());
  KsSetRedirect(redirect, nullptr);
  EXPECT_EQ(LoadStream(stream, bitmap), ERROR_QUALITY);
  EXPECT_EQ(LoadInPlace(*bitmap.Get()), ERROR_NOT_SUPPORTED);
  KsSetRedirect(nullptr, nullptr);
  EXPECT_EQ(StorageOf(*bitmap.Get()), before);
}

TEST_F(CodecTest, UnusableArgumentsAreRefused) {
  KsFileInfo info = {};
  EXPECT_EQ(KsFileInfoMemory(nullptr, &info, sizeof info, 9, 0, 0), ERROR_INVALID_VALUE);
  EXPECT_EQ(KsFileInfoMemory(stream.data(), nullptr, sizeof info, stream.size(), 0, 0), ERROR_INVALID_VALUE);
  EXPECT_EQ(KsFileInfoMemory(stream.data(), &info, sizeof info - 1, stream.size(), 0, 0), ERROR_INVALID_VALUE);
  EXPECT_EQ(KsFileInfoMemory(stream.data(), &info, sizeof info, 0, 0, 0), ERROR_INVALID_VALUE);
  EXPECT_EQ(KsFileInfoMemory("stream", &info, sizeof info, 6, 0, 0), ERROR_NOT_SUPPORTED);
  KsLoadOptions options = {};
  EXPECT_EQ(KsLoadOptionsInit(nullptr, sizeof options), ERROR_INVALID_VALUE);
  EXPECT_EQ(KsLoadOptionsInit(&options, sizeof options + 1), ERROR_INVALID_VALUE);
  KsSaveOptions saving;
  EXPECT_EQ(KsSaveOptionsInit(&saving, sizeof saving), SUCCESS);
  EXPECT_EQ(saving.structureSize, sizeof saving);
  EXPECT_EQ(KsSaveOptionsInit(&saving, sizeof saving - 1), ERROR_INVALID_VALUE);
  KsLocalBitmap bitmap;
  const auto load = [&](const void *bytes, uint64_t size, int32_t bits, int32_t order) {
    return KsLoadMemory(bytes, bitmap.Get(), sizeof(KsBitmap), bits, order, size, nullptr, nullptr);
  };
  EXPECT_EQ(load("stream", 6, 0, KS_ORDER_CODEC), ERROR_NOT_SUPPORTED);
  EXPECT_EQ(load(nullptr, 9, 0, KS_ORDER_CODEC), ERROR_INVALID_VALUE);
  EXPECT_EQ(load(stream.data(), 0, 0, KS_ORDER_CODEC), ERROR_INVALID_VALUE);
  EXPECT_EQ(load(stream.data(), stream.size(), 8, KS_ORDER_CODEC), ERROR_NOT_SUPPORTED);
  EXPECT_EQ(load(stream.data(), stream.size(), 0, KS_ORDER_BGR), ERROR_NOT_SUPPORTED);
  EXPECT_EQ(KsLoadMemoryInPlace(nullptr, bitmap.Get(), sizeof(KsBitmap), 9, nullptr), ERROR_INVALID_VALUE);
  EXPECT_EQ(LoadInPlace(*bitmap.Get()), ERROR_NO_STORAGE);
}

}  // namespace
