#include "service_test.h"

#include <filesystem>
#include <unistd.h>

#include <tiffio.h>

namespace {

/** A bi-level picture: true is black. */
struct Picture {
  uint32_t width;
  uint32_t height;
  std::vector<bool> black;
  bool At(uint32_t row, uint32_t column) const { return black[uint64_t{row} * width + column]; }
};

Picture RandomPicture(uint32_t width, uint32_t height, uint32_t seed) {
  Picture picture{width, height, {}};
  const Bytes random = RandomBytes(uint64_t{width} * height, seed);
  // Runs of all lengths, longer ones more often than chance has them.
  bool black = false;
  for (const uint8_t byte : random) {
    if (byte < 60) black = !black;
    picture.black.push_back(black);
  }
  return picture;
}

/** The picture as a T.4 stream, made by libtiff. */
Bytes Encode(const Picture &picture, bool twoDimensional) {
  const std::string path = std::filesystem::temp_directory_path() / ("ksntfx-t4-" + std::to_string(getpid()) + ".tif");
  TIFF *tiff = TIFFOpen(path.c_str(), "w");
  TIFFSetField(tiff, TIFFTAG_IMAGEWIDTH, picture.width);
  TIFFSetField(tiff, TIFFTAG_IMAGELENGTH, picture.height);
  TIFFSetField(tiff, TIFFTAG_BITSPERSAMPLE, 1);
  TIFFSetField(tiff, TIFFTAG_COMPRESSION, COMPRESSION_CCITTFAX3);
  TIFFSetField(tiff, TIFFTAG_GROUP3OPTIONS, twoDimensional ? GROUP3OPT_2DENCODING : 0);
  TIFFSetField(tiff, TIFFTAG_PHOTOMETRIC, PHOTOMETRIC_MINISWHITE);
  TIFFSetField(tiff, TIFFTAG_FILLORDER, FILLORDER_MSB2LSB);
  TIFFSetField(tiff, TIFFTAG_ROWSPERSTRIP, picture.height);
  for (uint32_t row = 0; row < picture.height; ++row) {
    Bytes line((picture.width + 7) / 8);
    for (uint32_t x = 0; x < picture.width; ++x) {
      if (picture.At(row, x)) line[x / 8] = static_cast<uint8_t>(line[x / 8] | 0x80 >> x % 8);
    }
    TIFFWriteScanline(tiff, line.data(), row, 0);
  }
  TIFFClose(tiff);
  tiff = TIFFOpen(path.c_str(), "r");
  Bytes stream(static_cast<size_t>(TIFFRawStripSize(tiff, 0)));
  TIFFReadRawStrip(tiff, 0, stream.data(), static_cast<tmsize_t>(stream.size()));
  TIFFClose(tiff);
  std::filesystem::remove(path);
  return stream;
}

/** Loads a stream as one of the picture's size. */
class Loaded {
 public:
  Loaded(const Bytes &stream, const Picture &picture, uint32_t format) : width(picture.width), height(picture.height) {
    EXPECT_EQ(Create(bitmap, width, height, 1), SUCCESS);
    described = {format, width, height};
    KsSetRedirect(Describe, &described);
    status =
        KsLoadMemory(stream.data(), bitmap.Get(), sizeof(KsBitmap), 1, KS_ORDER_BGR, stream.size(), nullptr, nullptr);
    KsSetRedirect(nullptr, nullptr);
  }

  bool IsWhite(uint32_t row, uint32_t column) {
    return (bitmap->pixels[uint64_t{row} * bitmap->bytesPerLine + column / 8] >> (7 - column % 8) & 1) != 0;
  }

  /** The rows from the top that show the picture. */
  uint32_t RightRows(const Picture &picture) {
    for (uint32_t row = 0; row < height; ++row) {
      for (uint32_t x = 0; x < width; ++x) {
        if (IsWhite(row, x) == picture.At(row, x)) return row;
      }
    }
    return height;
  }

  int32_t status;

 private:
  struct Description {
    uint32_t format;
    uint32_t width;
    uint32_t height;
  };

  static int32_t Describe(KsRawFormatInfo *info, void *userData) {
    const auto &description = *static_cast<const Description *>(userData);
    info->format = description.format;
    info->width = description.width;
    info->height = description.height;
    info->bits = 1;
    return SUCCESS;
  }

  uint32_t width;
  uint32_t height;
  Description described{};
  KsLocalBitmap bitmap;
};

struct StreamCase {
  uint32_t width;
  uint32_t height;
  bool twoDimensional;
};

class T4Test : public ServiceTestWith<StreamCase> {
 protected:
  Picture picture = RandomPicture(GetParam().width, GetParam().height, 7);
  Bytes stream = Encode(picture, GetParam().twoDimensional);
  uint32_t format = GetParam().twoDimensional ? KS_FORMAT_T4_2D : KS_FORMAT_T4_1D;
};

TEST_P(T4Test, ShowsItsPicture) {
  Loaded loaded(stream, picture, format);
  ASSERT_EQ(loaded.status, SUCCESS);
  EXPECT_EQ(loaded.RightRows(picture), picture.height);
}

TEST_P(T4Test, MayHaveItsBitsTheOtherWayRound) {
  for (uint8_t &byte : stream) {
    uint8_t turned = 0;
    for (int bit = 0; bit < 8; ++bit) turned = static_cast<uint8_t>(turned | (byte >> bit & 1) << (7 - bit));
    byte = turned;
  }
  Loaded loaded(stream, picture, format);
  ASSERT_EQ(loaded.status, SUCCESS);
  EXPECT_EQ(loaded.RightRows(picture), picture.height);
}

TEST_P(T4Test, GivesTheRowsBeforeItsEnd) {
  uint32_t rowsBefore = 0;
  for (size_t length = 1; length < stream.size(); length += 1 + stream.size() / 100) {
    Loaded loaded(Bytes(stream.begin(), stream.begin() + static_cast<std::ptrdiff_t>(length)), picture, format);
    ASSERT_TRUE(loaded.status == SUCCESS || loaded.status == ERROR_FILE_FORMAT);
    const uint32_t rows = loaded.status == SUCCESS ? loaded.RightRows(picture) : 0;
    ASSERT_GE(rows, rowsBefore) << "a longer stream shows no less";
    rowsBefore = rows;
  }
  EXPECT_GT(rowsBefore, picture.height / 2);
}

TEST_P(T4Test, DamagedBytesAreNoFault) {
  for (size_t at = 0; at < stream.size(); at += 1 + stream.size() / 200) {
    Bytes damaged = stream;
    damaged[at] = static_cast<uint8_t>(damaged[at] ^ 0x5A);
    const Loaded loaded(damaged, picture, format);
    ASSERT_TRUE(loaded.status == SUCCESS || loaded.status == ERROR_FILE_FORMAT);
  }
}

INSTANTIATE_TEST_SUITE_P(Streams, T4Test,
                         testing::Values(StreamCase{8, 16, false}, StreamCase{35, 18, false},
                                         StreamCase{512, 64, false}, StreamCase{35, 18, true},
                                         StreamCase{512, 64, true}, StreamCase{2601, 33, true}),
                         [](const auto &given) {
                           return std::to_string(given.param.width) + (given.param.twoDimensional ? "_2D" : "_1D");
                         });

using T4Limits = ServiceTest;

TEST_F(T4Limits, AnotherTargetOrFormatIsRefused) {
  const Picture picture = RandomPicture(16, 4, 1);
  const Bytes stream = Encode(picture, false);
  EXPECT_EQ(Loaded(stream, picture, KS_FORMAT_JPEG).status, ERROR_NOT_SUPPORTED);
  EXPECT_EQ(Loaded({0x00}, picture, KS_FORMAT_T4_1D).status, ERROR_FILE_FORMAT);
}

TEST_F(T4Limits, AShortStreamHoldsNoHugePicture) {
  // Rows of white: an end of line, 31 times 2560 pixels, and no pixel more.
  std::string row = "000000000001";
  for (int i = 0; i < 31; ++i) row += "000000011111";
  row += "00110101";
  Bytes rowBytes(row.size() / 8);
  for (size_t i = 0; i < row.size(); ++i) rowBytes[i / 8] = static_cast<uint8_t>(rowBytes[i / 8] << 1 | (row[i] - '0'));
  Bytes stream;
  for (int i = 0; i < 9000; ++i) stream.insert(stream.end(), rowBytes.begin(), rowBytes.end());
  constexpr uint32_t kWidth = 31 * 2560;
  EXPECT_EQ(Loaded(stream, {kWidth, 9000, {}}, KS_FORMAT_T4_1D).status, SUCCESS);
  stream.resize(2000);
  EXPECT_EQ(Loaded(stream, {kWidth, 9000, {}}, KS_FORMAT_T4_1D).status, ERROR_FILE_FORMAT);
  EXPECT_EQ(Loaded(stream, {kWidth, 5000, {}}, KS_FORMAT_T4_1D).status, SUCCESS);
}

}  // namespace
