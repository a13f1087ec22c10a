// Files that are cut off or changed anywhere must end in a status or a picture, soon, without a fault.
#include "harness.h"
#include "images/handlimg.h"
#include "small_files.h"

#include <string>

#include <gtest/gtest.h>

using namespace ksntfx;

namespace {

class Damage : public testing::TestWithParam<SmallFile> {
 protected:
  Damage() : file(GetParam().bytes), before(LiveBlocks()) {}

  /** Composes the bytes; whatever comes out must be a status or a whole picture. */
  void Try(const Bytes &bytes) {
    const PlatformWatch watch;
    WriteFile(folder.Path("damaged"), bytes);
    const Composition picture = Compose(folder.Path("damaged"));
    ASSERT_TRUE(picture.status == SUCCESS || picture.status < 0) << picture.status;
    if (picture.status == SUCCESS) {
      ASSERT_EQ(picture.rows.size(), picture.height);
    }
    ASSERT_EQ(LiveBlocks(), before);
  }

  /** Where damage begins: a stream alone is damaged in a file whose headers are like those of others. */
  std::size_t First() const { return GetParam().streamBytes == 0 ? 0 : file.size() - GetParam().streamBytes; }

  TemporaryFolder folder;
  const Bytes file;
  const std::array<std::int64_t, KS_MEMORY_KINDS> before;
};

TEST_P(Damage, EveryTruncationEndsInAStatusOrAPicture) {
  for (std::size_t length = First(); length < file.size(); ++length) {
    ASSERT_NO_FATAL_FAILURE(Try(Bytes(file.begin(), file.begin() + static_cast<std::ptrdiff_t>(length)))) << length;
  }
}

TEST_P(Damage, EveryChangedByteEndsInAStatusOrAPicture) {
  for (std::size_t at = First(); at < file.size(); ++at) {
    for (const std::uint8_t value : {0x00, 0x20, 0x2D, 0x30, 0x39, 0xFF}) {
      Bytes changed = file;
      if (changed[at] == value) continue;
      changed[at] = value;
      ASSERT_NO_FATAL_FAILURE(Try(changed)) << at << " to " << int{value};
    }
  }
}

INSTANTIATE_TEST_SUITE_P(Files, Damage, testing::ValuesIn(SmallFiles()),
                         [](const auto &given) { return given.param.name; });

TEST(Limits, ASmallFileCanNotAskForALargeCanvas) {
  ImageSpec image = SmallImage('B', 1, "NC");
  image.fields = {{"NBPR", "9000"}, {"NBPC", "9000"}, {"NPPBH", "9000"}, {"NPPBV", "9000"}};
  EXPECT_EQ(Compose(NitfBuilder().Image(image)).status, ERROR_NO_MEMORY);
}

TEST(Limits, AnImageWithoutItsDataTakesNoTime) {
  // 4 GiB of blocks, none of which is in the file: refused at the first one.
  ImageSpec image = SmallImage('B', 1, "NC");
  image.fields = {{"NBPR", "6400"}, {"NBPC", "6400"}, {"NPPBH", "0010"}, {"NPPBV", "0010"}};
  LoadedFile file(NitfBuilder().Image(image));
  KsBitmap bitmap;
  KsBitmapInit(&bitmap, sizeof bitmap, 0, 0, 0);
  EXPECT_EQ(DecodeImageSegment(nullptr, file.Get(), 0, &bitmap), ERROR_FILE_READ);
  EXPECT_EQ(bitmap.flags & KS_BITMAP_ALLOCATED, 0U);
}

TEST(Limits, AnImageWithoutBlocksIsRefusedInEveryMode) {
  for (const char mode : {'B', 'P', 'R', 'S'}) {
    for (const char *field : {"NBPR", "NBPC", "NCOLS", "NROWS"}) {
      for (const bool masked : {false, true}) {
        ImageSpec image = masked ? SmallMaskedImage(mode, 3) : SmallImage(mode, 3, "NC");
        // A block size of 0 stands for the size of the image.
        image.fields = {{field, "00000000"}, {"NPPBH", "0000"}, {"NPPBV", "0000"}};
        if (field[0] == 'N' && field[1] == 'B') image.fields[field] = "0000";
        const NitfBuilder builder = NitfBuilder().Image(SmallImage('B', 1, "NC")).Image(image);
        EXPECT_LT(Compose(builder).status, 0) << mode << ' ' << field << ' ' << masked;
      }
    }
  }
}

TEST(Limits, ALongChainOfAttachmentsIsFollowed) {
  NitfBuilder builder;
  for (int level = 1; level <= 998; ++level) {
    ImageSpec image{.rows = 1, .columns = 1, .level = level, .attachment = level - 1, .data = {9}};
    image.locationColumn = 1;
    builder.Image(image);
  }
  EXPECT_EQ(Inform(builder).info.width, 999U);
}

}  // namespace
