#include "harness.h"
#include "headers/strmfhdr.h"

#include <cstring>
#include <string>

#include <gtest/gtest.h>

using namespace ksntfx;

namespace {

TEST(FileHeader, AFileThatIsNotThereIsAShortRead) {
  LocalNitfFile file;
  EXPECT_EQ(Load(file.Get(), u"/no/such/file"), ERROR_FILE_READ);
}

TEST(FileHeader, LengthsBeyond32BitsStayAtTheLimit) {
  LoadedFile file(NitfBuilder().Image({.rows = 1, .columns = 1, .data = {1}}).Field("LI1", "9999999998"));
  ASSERT_EQ(file.status, SUCCESS);
  EXPECT_EQ(file->header.imageDataLengths[0], 2147483647U);
}

// ---- stream files -------------------------------------------------------------------------------------------------

/**
 * A file whose lengths are given as unknown in its headers, with their true copies in a stream file header at its end.
 */
class StreamFile {
 public:
  explicit StreamFile(std::uint32_t rows) {
    sound.Image(Picture(rows));
    unknown.Image(Picture(rows)).Field("FL", "999999999999");
  }

  Bytes Build(std::size_t replacementBytes = SIZE_MAX, const std::string &lastLength = {},
              const std::string &padding = {}) const {
    Bytes replacement = sound.Header();
    const Bytes subheader = sound.ImageSubheader(0);
    replacement.insert(replacement.end(), subheader.begin(), subheader.end());
    replacement.resize(std::min(replacement.size(), replacementBytes));
    Bytes file = WithStreamHeader(unknown.Build(), replacement, lastLength);
    file.insert(file.end(), padding.begin(), padding.end());
    return file;
  }

  NitfBuilder sound;
  NitfBuilder unknown;

 private:
  static ImageSpec Picture(std::uint32_t rows) {
    return {.rows = rows, .columns = 4, .data = Bytes(std::size_t{4} * rows, 7)};
  }
};

TEST(StreamFile, TakesItsLengthsFromTheReplacementData) {
  LoadedFile file(StreamFile(3).Build());
  ASSERT_EQ(file.status, SUCCESS);
  EXPECT_EQ(file->header.fileLength, StreamFile(3).sound.Build().size());
  EXPECT_EQ(file->streamHeaderLoaded, 1U);
  EXPECT_EQ(file->streamBytesConsumed, 404U);
}

TEST(StreamFile, TakesAnImageSizeFromBehindTheFileHeader) {
  StreamFile stream(3);
  stream.unknown = NitfBuilder();
  stream.unknown.Field("FL", "999999999999")
      .Image({.rows = 3, .columns = 4, .data = Bytes(12, 7), .fields = {{"NROWS", "99999999"}, {"NBPC", "9999"}}});
  LoadedFile file(stream.Build());
  ASSERT_EQ(file.status, SUCCESS);
  EXPECT_EQ(file.Image(0).rows, 3U);
  EXPECT_EQ(file.Image(0).blocksPerColumn, 1U);
  EXPECT_EQ(file->streamBytesConsumed, 404U + 439U);
}

TEST(StreamFile, AnImageAloneMayBeUnknown) {
  StreamFile stream(3);
  stream.unknown = NitfBuilder();
  stream.unknown.Image({.rows = 3, .columns = 4, .data = Bytes(12, 7), .fields = {{"NCOLS", "99999999"}}});
  Bytes bytes = stream.Build();
  // With the file header known, the replacement data begin with the image subheader's own bytes: these are not.
  LoadedFile file(bytes);
  ASSERT_EQ(file.status, SUCCESS);
  EXPECT_EQ(file.Image(0).columns, 99999999U);
}

TEST(StreamFile, DataThatTheReplayDoesNotReachStayBesideTheirNewLength) {
  StreamFile stream(3);
  stream.sound.Field("UDHD", "twelve bytes").Field("HL", "000411");
  stream.unknown.Field("UDHD", "four");
  const std::size_t lengthEnd = stream.sound.Header().size() - 5 - 12 - 3;
  for (const std::size_t bytes : {lengthEnd, lengthEnd + 2, lengthEnd + 3, lengthEnd + 14}) {
    LoadedFile file(stream.Build(bytes));
    ASSERT_EQ(file.status, SUCCESS);
    EXPECT_STREQ(file->header.UDHDL, "00015");
    EXPECT_STREQ(file->header.userHeaderData, "four") << bytes;
  }
}

TEST(StreamFile, LengthsThatAReplayDoesNotReachStay) {
  NitfBuilder builder;
  builder.Image(SixPixels()).Image(SixPixels());
  Bytes header = builder.Header();
  constexpr std::size_t kFirstLengths = 363;
  constexpr std::size_t kRow = 16;
  std::memcpy(header.data() + kFirstLengths + kRow + 6, "0000000004", 10);
  const Bytes file = builder.Field("FL", "999999999999").Build();
  for (const std::size_t read : {std::size_t{0}, std::size_t{6}, kRow, kRow + 6, 2 * kRow}) {
    const std::size_t bytes = kFirstLengths + read;
    const Bytes cut(header.begin(), header.begin() + static_cast<std::ptrdiff_t>(bytes));
    LoadedFile loaded(WithStreamHeader(file, cut));
    ASSERT_EQ(loaded.status, SUCCESS) << bytes;
    ASSERT_EQ(loaded->header.imageTableCount, 2U);
    EXPECT_EQ(loaded->header.imageDataLengths[0], 6U) << bytes;
    EXPECT_EQ(loaded->header.imageDataLengths[1], read < 2 * kRow ? 6U : 4U) << bytes;
    EXPECT_EQ(loaded->header.imageDataLengthsOut[1], read < 2 * kRow ? 6U : 4U) << bytes;
    EXPECT_GT(loaded->header.imageSubheaderLengths[1], 400U) << bytes;
  }
}

TEST(StreamFile, ACopyThatIsItselfUnknownEndsThere) {
  StreamFile stream(3);
  stream.sound = stream.unknown;
  LoadedFile file(stream.Build());
  EXPECT_EQ(file.status, SUCCESS);
  EXPECT_EQ(file->header.fileLength, 2147483647U);
}

TEST(StreamFile, LengthsThatDisagreeAreRefused) {
  EXPECT_EQ(LoadedFile(StreamFile(3).Build(SIZE_MAX, "0000001")).status, ERROR_FILE_FORMAT);
}

TEST(StreamFile, AReplacementThatPassesTheEndIsAShortRead) {
  Bytes bytes = StreamFile(3).Build();
  bytes.resize(bytes.size() - 100);
  EXPECT_EQ(LoadedFile(bytes).status, ERROR_FILE_READ);
}

TEST(StreamFile, TheDelimiterIsFoundAcrossAllSeamsOfTheSearch) {
  constexpr std::size_t kWindow = 255;
  for (std::size_t padding = 0; padding <= kWindow; ++padding) {
    const Bytes bytes = StreamFile(3).Build(SIZE_MAX, {}, std::string(padding, '\0'));
    LoadedFile file(bytes);
    ASSERT_EQ(file.status, SUCCESS) << padding;
    ASSERT_EQ(file->header.fileLength, StreamFile(3).sound.Build().size()) << padding;
  }
}

TEST(StreamFile, ASearchInATinyFileFindsNothing) {
  const TemporaryFolder folder;
  for (const std::size_t size : {0U, 1U, 3U, 4U, 255U, 256U, 1000U}) {
    WriteFile(folder.Path("tiny"), Bytes(size, 0x0A));
    const KsHandle handle = KsOpen(Wide(folder.Path("tiny")).c_str(), KS_OPEN_READ, KS_MODE_READ);
    StreamFileHeader stream{};
    std::uint32_t left = 0;
    EXPECT_EQ(ReadStreamFileHeader(handle, &stream, &left), ERROR_INVALID_VALUE) << size;
    StreamFileHeaderFree(&stream);
    KsClose(handle);
  }
}

}  // namespace
