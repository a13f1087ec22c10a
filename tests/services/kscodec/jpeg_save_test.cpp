// Pictures that are saved as JPEG: what comes back of them, and what the stream says of itself.
#include "codec_test.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <ostream>

#include <jpeglib.h>

namespace {

constexpr uint32_t kWidth = 53;
constexpr uint32_t kHeight = 38;

/** A saved stream; empty where the save failed. */
struct Saved {
  int32_t status = 0;
  Bytes stream;
};

Saved Save(const KsBitmap *bitmap, uint32_t format, uint32_t bits, uint32_t quality = 2) {
  void *handle = nullptr;
  uint64_t size = 0;
  Saved saved;
  saved.status = KsSaveMemory(&handle, bitmap, format, bits, quality, &size, nullptr);
  EXPECT_EQ(handle != nullptr, saved.status == SUCCESS);
  KsTrackAlloc(KS_MEMORY_GLOBAL, handle, 0, "");
  const auto *const bytes = static_cast<const uint8_t *>(handle);
  if (handle != nullptr) saved.stream.assign(bytes, bytes + size);
  KsFreeGlobal(handle, 0, "");
  return saved;
}

/** A picture of `bits` a pixel: the smooth one, or what a depth shows of it. */
void MakePicture(KsLocalBitmap &bitmap, uint32_t bits, bool withPalette = false) {
  KsLocalBitmap smooth;
  ASSERT_EQ(Create(smooth, kWidth, kHeight, 24), SUCCESS);
  for (uint32_t y = 0; y < kHeight; ++y) {
    for (uint32_t x = 0; x < kWidth; ++x) {
      uint8_t *const pixel = smooth->pixels + y * smooth->bytesPerLine + 3 * x;
      pixel[0] = static_cast<uint8_t>(40 + 2 * x);
      pixel[1] = static_cast<uint8_t>(200 - 3 * y);
      pixel[2] = static_cast<uint8_t>(128 + 60 * std::sin(0.1 * (x + y)));
    }
  }
  Palette palette(256);
  for (uint32_t i = 0; i < 256; ++i) {
    palette[i] = {static_cast<uint8_t>(255 - i), static_cast<uint8_t>(i / 2), static_cast<uint8_t>(i), 0};
  }
  ASSERT_EQ(Create(bitmap, kWidth, kHeight, bits, withPalette ? palette.data() : nullptr), SUCCESS);
  if (bits == 1 || bits == 12 || bits == 16) {  // nothing converts to them
    for (uint32_t y = 0; y < kHeight; ++y) {
      const Bytes row(bitmap->bytesPerLine, static_cast<uint8_t>(0x11 * (y % 16)));
      KsBitmapPutRow(bitmap.Get(), row.data(), y, row.size());
    }
    return;
  }
  ASSERT_EQ(KsCombine(bitmap.Get(), 0, 0, kWidth, kHeight, smooth.Get(), 0, 0, 288, 0), SUCCESS);
}

/** The greatest difference of a sample between two bitmaps of one form. */
int Difference(const KsBitmap &a, const KsBitmap &b) {
  int most = 0;
  for (uint32_t y = 0; y < a.height; ++y) {
    for (uint32_t x = 0; x < a.width * a.bitsPerPixel / 8; ++x) {
      most = std::max(most, std::abs(a.pixels[y * a.bytesPerLine + x] - b.pixels[y * b.bytesPerLine + x]));
    }
  }
  return most;
}

struct Form {
  uint32_t sourceBits;
  bool withPalette;
  uint32_t format;
  uint32_t bits;
};

std::ostream &operator<<(std::ostream &out, const Form &form) {
  return out << form.sourceBits << (form.withPalette ? " with palette" : "") << " as " << form.format << ", "
             << form.bits;
}

using JpegSave = ServiceTestWith<Form>;

/** By the reader of the framework, which goes by the names of the components, and by the library's own judgement. */
TEST_P(JpegSave, ComesBack) {
  const Form &form = GetParam();
  KsLocalBitmap source;
  MakePicture(source, form.sourceBits, form.withPalette);
  const Bytes before = StorageOf(*source.Get());
  const Saved saved = Save(source.Get(), form.format, form.bits);
  ASSERT_EQ(saved.status, SUCCESS);
  EXPECT_EQ(StorageOf(*source.Get()), before);

  KsLocalBitmap expected;
  ASSERT_EQ(Create(expected, kWidth, kHeight, form.bits), SUCCESS);
  ASSERT_EQ(KsCombine(expected.Get(), 0, 0, kWidth, kHeight, source.Get(), 0, 0, 288, 0), SUCCESS);
  KsLocalBitmap loaded;
  ASSERT_EQ(LoadStream(saved.stream, loaded), SUCCESS);
  ASSERT_EQ(loaded->bitsPerPixel, form.bits);
  EXPECT_LE(Difference(*loaded.Get(), *expected.Get()), 3);
  KsFileInfo info = {};
  ASSERT_EQ(KsFileInfoMemory(saved.stream.data(), &info, sizeof info, saved.stream.size(), 0, 0), SUCCESS);
  EXPECT_EQ(info.formatId, uint32_t{KS_FORMAT_JPEG}) << "components of one size";

  jpeg_decompress_struct jpeg = {};
  jpeg_error_mgr errors = {};
  jpeg.err = jpeg_std_error(&errors);
  jpeg_create_decompress(&jpeg);
  jpeg_mem_src(&jpeg, saved.stream.data(), saved.stream.size());
  jpeg_read_header(&jpeg, TRUE);
  const J_COLOR_SPACE inColor = form.format == KS_FORMAT_JPEG_RGB ? JCS_RGB : JCS_YCbCr;
  EXPECT_EQ(jpeg.jpeg_color_space, form.bits == 8 ? JCS_GRAYSCALE : inColor);
  EXPECT_EQ(jpeg.restart_interval, (kWidth + 7) / 8);
  EXPECT_EQ(jpeg.progressive_mode | jpeg.saw_JFIF_marker | jpeg.saw_Adobe_marker, 0);
  jpeg_destroy_decompress(&jpeg);
}

INSTANTIATE_TEST_SUITE_P(Forms, JpegSave,
                         testing::Values(Form{24, false, 10, 24}, Form{24, false, 182, 24}, Form{24, false, 10, 8},
                                         Form{24, false, 182, 8}, Form{8, false, 10, 8}, Form{8, true, 10, 8},
                                         Form{8, true, 182, 24}, Form{12, false, 10, 8}, Form{16, false, 182, 24},
                                         Form{32, false, 182, 24}, Form{1, false, 10, 8}));

struct Told {
  uint32_t format;
  uint32_t bits;
  uint8_t mode;
  uint8_t imageColor;
  uint8_t streamColor;
};

TEST(JpegSaveStream, BeginsWithTheSegmentOfNitfFiles) {
  KsLocalBitmap picture;
  MakePicture(picture, 24);
  for (const Told &told : {Told{10, 24, 'P', 1, 2}, Told{182, 24, 'P', 1, 1}, Told{10, 8, 'B', 0, 0}}) {
    const Bytes stream = Save(picture.Get(), told.format, told.bits).stream;
    const Bytes expected =
        Joined({0xFF, 0xD8, 0xFF, 0xE6, 0, 25, 'N', 'I', 'T', 'F', 0, 2, 0, told.mode, 0, 1, 0, 1, told.imageColor, 8},
               {0, 1, 0, told.streamColor, 8, 1, 1, 0, 0});
    ASSERT_GT(stream.size(), expected.size());
    EXPECT_EQ(Bytes(stream.begin(), stream.begin() + static_cast<std::ptrdiff_t>(expected.size())), expected);
  }
}

TEST(JpegSaveStream, IsSmallerAndWorseWithEachStepOfTheQuality) {
  KsLocalBitmap noise;
  ASSERT_EQ(Create(noise, 64, 64, 8), SUCCESS);
  SetStorage(*noise.Get(), RandomBytes(noise->storageBytes, 7));
  std::size_t before = SIZE_MAX / 2;
  for (uint32_t quality = 2; quality <= 255; ++quality) {
    const std::size_t size = Save(noise.Get(), 10, 8, quality).stream.size();
    EXPECT_LE(size, before + 40) << quality;  // fitted tables differ by some bytes
    before = size;
  }
  EXPECT_LT(before * 8, Save(noise.Get(), 10, 8, 2).stream.size());
}

TEST(JpegSaveStream, RefusesWhatItCantWrite) {
  KsLocalBitmap picture;
  MakePicture(picture, 24);
  KsLocalBitmap wide;
  ASSERT_EQ(Create(wide, 65501, 1, 8), SUCCESS);
  KsLocalBitmap strange;
  ASSERT_EQ(Create(strange, 5, 5, 48), SUCCESS);
  KsLocalBitmap empty;
  EXPECT_EQ(Save(nullptr, 10, 24).status, ERROR_INVALID_VALUE);
  EXPECT_EQ(Save(empty.Get(), 10, 24).status, ERROR_NO_STORAGE);
  EXPECT_EQ(Save(picture.Get(), KS_FORMAT_JPEG_420, 24).status, ERROR_NOT_SUPPORTED);
  EXPECT_EQ(Save(picture.Get(), 10, 16).status, ERROR_BITS_PER_PIXEL);
  EXPECT_EQ(Save(picture.Get(), 10, 24, 1).status, ERROR_QUALITY);
  EXPECT_EQ(Save(picture.Get(), 10, 24, 256).status, ERROR_QUALITY);
  EXPECT_EQ(Save(wide.Get(), 10, 8).status, ERROR_BITMAP_SIZE);
  EXPECT_EQ(Save(strange.Get(), 10, 24).status, ERROR_NOT_SUPPORTED);
}

class JpegSaveMemory : public ServiceTest {};

TEST_F(JpegSaveMemory, RunsOutAtAnyAllocationWithoutALeak) {
  KsLocalBitmap noise;
  ASSERT_EQ(Create(noise, 400, 300, 24), SUCCESS);  // its stream outgrows the first block
  SetStorage(*noise.Get(), RandomBytes(noise->storageBytes, 3));
  int64_t failures = 0;
  for (int32_t status = ERROR_NO_MEMORY; status != SUCCESS; ++failures) {
    KsFailAllocationsAfter(failures);
    status = Save(noise.Get(), 10, 24).status;
    KsFailAllocationsAfter(-1);
    ASSERT_TRUE(status == SUCCESS || status == ERROR_NO_MEMORY) << failures;
  }
#ifdef KS_TRACE_MEMORY
  EXPECT_GT(failures, 3);
#endif
}

}  // namespace
