// Bi-level streams of T.4. They have no header: the redirect describes them.
#include "codec_test.h"
#include "t4_encoder.h"

#include <filesystem>
#include <unistd.h>

namespace {

/** Runs of all lengths, longer ones more often than chance has them. */
T4Picture RandomPicture(uint32_t width, uint32_t height) {
  std::vector<bool> black;
  for (const uint8_t byte : RandomBytes(uint64_t{width} * height, 7)) {
    const bool before = !black.empty() && black.back();
    black.push_back(byte < 60 ? !before : before);
  }
  return {width, height, [=](uint32_t row, uint32_t column) { return black[uint64_t{row} * width + column]; }};
}

Bytes Encode(const T4Picture &picture, bool twoDimensional) {
  const std::string path = std::filesystem::temp_directory_path() / ("ksntfx-t4-" + std::to_string(getpid()) + ".tif");
  Bytes stream = EncodeT4(picture, twoDimensional, path);
  std::filesystem::remove(path);
  return stream;
}

Bytes Start(const Bytes &stream, size_t size) {
  return {stream.begin(), stream.begin() + static_cast<std::ptrdiff_t>(size)};
}

/** Loads a stream into a bitmap of the picture's size. */
int32_t Load(const Bytes &stream, const T4Picture &picture, uint32_t format, KsLocalBitmap &bitmap) {
  EXPECT_EQ(Create(bitmap, picture.width, picture.height, 1), SUCCESS);
  KsRawFormatInfo described = {};
  described.format = format;
  described.width = picture.width;
  described.height = picture.height;
  described.bits = 1;
  const KsRedirectCallback describe = [](KsRawFormatInfo *info, void *userData) -> int32_t {
    *info = *static_cast<const KsRawFormatInfo *>(userData);
    return SUCCESS;
  };
  KsSetRedirect(describe, &described);
  const int32_t status =
      KsLoadMemory(stream.data(), bitmap.Get(), sizeof(KsBitmap), 1, KS_ORDER_BGR, stream.size(), nullptr, nullptr);
  KsSetRedirect(nullptr, nullptr);
  return status;
}

int32_t StatusOf(const Bytes &stream, const T4Picture &picture, uint32_t format = KS_FORMAT_T4_1D) {
  KsLocalBitmap bitmap;
  return Load(stream, picture, format, bitmap);
}

struct StreamCase {
  uint32_t width;
  uint32_t height;
  bool twoDimensional;
};

class T4Test : public ServiceTestWith<StreamCase> {
 protected:
  /** The rows from the top that show the picture; none without SUCCESS. */
  uint32_t RightRows(const Bytes &bytes) const {
    KsLocalBitmap bitmap;
    const int32_t status = Load(bytes, picture, format, bitmap);
    EXPECT_TRUE(status == SUCCESS || status == ERROR_FILE_FORMAT) << status;
    const Bytes storage = StorageOf(*bitmap.Get());
    for (uint64_t at = 0; at < uint64_t{picture.width} * picture.height && status == SUCCESS; ++at) {
      const auto row = static_cast<uint32_t>(at / picture.width);
      const auto column = static_cast<uint32_t>(at % picture.width);
      if ((PixelOf(*bitmap.Get(), storage, column, row) != 0) == picture.isBlack(row, column)) return row;
    }
    return status == SUCCESS ? picture.height : 0;
  }

  const T4Picture picture = RandomPicture(GetParam().width, GetParam().height);
  const Bytes stream = Encode(picture, GetParam().twoDimensional);
  const uint32_t format = GetParam().twoDimensional ? KS_FORMAT_T4_2D : KS_FORMAT_T4_1D;
};

TEST_P(T4Test, ShowsItsPictureInEitherOrderOfBits) {
  EXPECT_EQ(RightRows(stream), picture.height);
  Bytes turned = stream;
  for (uint8_t &byte : turned) {
    const uint8_t before = byte;
    for (int bit = 0; bit < 8; ++bit) byte = static_cast<uint8_t>(byte << 1 | (before >> bit & 1));
  }
  EXPECT_EQ(RightRows(turned), picture.height);
}

TEST_P(T4Test, ShowsTheRowsBeforeItsEnd) {
  uint32_t rowsBefore = 0;
  for (size_t length = 1; length < stream.size(); length += 1 + stream.size() / 100) {
    const uint32_t rows = RightRows(Start(stream, length));
    ASSERT_GE(rows, rowsBefore) << "a longer stream shows no less";
    rowsBefore = rows;
  }
  EXPECT_GT(rowsBefore, picture.height / 2);
}

TEST_P(T4Test, DamagedBytesDoNoHarm) {
  for (size_t at = 0; at < stream.size(); at += 1 + stream.size() / 200) {
    Bytes damaged = stream;
    damaged[at] = static_cast<uint8_t>(damaged[at] ^ 0x5A);
    RightRows(damaged);
  }
}

INSTANTIATE_TEST_SUITE_P(Streams, T4Test,
                         testing::Values(StreamCase{8, 16, false}, StreamCase{35, 18, false},
                                         StreamCase{512, 64, false}, StreamCase{35, 18, true},
                                         StreamCase{512, 64, true}, StreamCase{2601, 33, true}),
                         [](const auto &given) {
                           return std::to_string(given.param.width) + (given.param.twoDimensional ? "_2D" : "_1D");
                         });

TEST(T4Limits, AnotherFormatOrNoRowIsRefused) {
  const T4Picture picture = RandomPicture(16, 4);
  EXPECT_EQ(StatusOf(Encode(picture, false), picture, KS_FORMAT_JPEG), ERROR_NOT_SUPPORTED);
  EXPECT_EQ(StatusOf({0x00}, picture), ERROR_FILE_FORMAT);
}

TEST(T4Limits, AShortStreamHoldsNoHugePicture) {
  // Rows of white: an end of line, 31 times 2560 pixels, and no pixel more.
  std::string row = "000000000001";
  for (int i = 0; i < 31; ++i) row += "000000011111";
  row += "00110101";
  Bytes rowBytes(row.size() / 8);
  for (size_t i = 0; i < row.size(); ++i) rowBytes[i / 8] = static_cast<uint8_t>(rowBytes[i / 8] << 1 | (row[i] - '0'));
  Bytes stream;
  for (int i = 0; i < 9000; ++i) stream.insert(stream.end(), rowBytes.begin(), rowBytes.end());
  constexpr uint32_t kWidth = 31 * 2560;
  EXPECT_EQ(StatusOf(stream, {kWidth, 9000, {}}), SUCCESS);
  EXPECT_EQ(StatusOf(Start(stream, 2000), {kWidth, 9000, {}}), ERROR_FILE_FORMAT);
  EXPECT_EQ(StatusOf(Start(stream, 2000), {kWidth, 5000, {}}), SUCCESS);
}

}  // namespace
