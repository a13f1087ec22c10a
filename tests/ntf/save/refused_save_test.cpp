// Saves that would lose data are refused or carry them byte for byte.
#include "opened_file.h"
#include "vq_builder.h"

#include <algorithm>

#include <gtest/gtest.h>

namespace {

/** Whether `bytes` is somewhere in a file. */
bool Holds(const Bytes &file, const Bytes &bytes) {
  return std::search(file.begin(), file.end(), bytes.begin(), bytes.end()) != file.end();
}

TEST(Saves, CarryVectorQuantisedDataByTheirLength) {
  // Three codes of 12 bits a row, which don't fill whole bytes; and bytes behind the last code.
  VqSpec spec{.codeRows = 2, .codesPerRow = 3, .codeBits = 12, .kernelHeight = 1, .tables = 1};
  spec.kernels = {{1}, {2}};
  spec.codes = {0, 1, 0, 1, 1, 0};
  ImageSpec image{.rows = 2, .columns = 3, .compression = "C4", .data = EncodeVq(spec)};
  image.data.insert(image.data.end(), {0xAA, 0xBB, 0xCC});
  const Bytes file = NitfBuilder().Image(image).Image(SixPixels()).Text({"text", {}}).Build();
  const Opened opened(file);
  EXPECT_EQ(opened.Saved(), file);
}

TEST(Saves, KeepACompressionThatIsNotKnown) {
  ImageSpec image = SixPixels({{"COMRAT", "01.5"}});
  image.compression = "C7";
  const Bytes file = NitfBuilder().Image(image).Build();
  const Opened opened(file);
  ASSERT_EQ(opened.status, SUCCESS);
  EXPECT_EQ(opened.Saved(), file);
  image.compression = "C3";
  const Opened known(NitfBuilder().Image(image).Build());
  EXPECT_TRUE(Holds(known.Saved(), {'C', '3', '0', '0', '.', '0'}));
}

struct LostCase {
  const char *name;
  std::vector<const char *> lengths; /**< LI of the images */
};

class LostData : public testing::TestWithParam<LostCase> {};

TEST_P(LostData, IsRefusedBeforeAByteIsWritten) {
  NitfBuilder builder;
  for (const char *length : GetParam().lengths) {
    builder.Image(SixPixels());
    static_cast<void>(length);
  }
  Bytes file = builder.Build();
  constexpr std::size_t kFirstLength = 369;
  for (std::size_t at = 0; at < GetParam().lengths.size(); ++at) {
    const std::string digits = GetParam().lengths[at];
    std::copy(digits.begin(), digits.end(), file.begin() + static_cast<std::ptrdiff_t>(kFirstLength + 16 * at));
  }
  Opened blank;
  WriteFile(blank.Path("large.ntf"), file);
  // Its subheaders would stand gigabytes further on, so the header alone is read.
  NitfFile *const opened = blank.Get();
  opened->fileHandle = KsOpen(Wide(blank.Path("large.ntf")).c_str(), KS_OPEN_READ, KS_MODE_READ);
  StreamFileHeader stream{};
  ASSERT_EQ(ReadFileHeader(opened, &stream), SUCCESS);
  opened->imageCountInFile = opened->header.imageTableCount;
  EXPECT_EQ(blank.Save(), ERROR_INVALID_VALUE);
  EXPECT_TRUE(ReadFile(blank.Path("out.ntf")).empty());
}

INSTANTIATE_TEST_SUITE_P(Saves, LostData,
                         testing::Values(LostCase{"beyond31Bits", {"2147483648"}},
                                         LostCase{"together", {"1900000000", "1900000000", "1900000000"}}),
                         [](const auto &given) { return std::string(given.param.name); });

TEST(Saves, RefuseASubheaderThatIsLongerThanItsLength) {
  const Opened opened(NitfBuilder().Image(SixPixels()).Build());
  NitfImageHeaderInfo info{};
  ASSERT_EQ(K_NITFGetImageHeader(opened.Get(), 0, &info), SUCCESS);
  NitfImageHeaderInfo changed = info;
  char data[] = "abc";
  changed.UDIDL = 6;
  changed.UDID = data;
  ASSERT_EQ(K_NITFSetImageHeader(opened.Get(), 0, &changed), SUCCESS);
  EXPECT_EQ(opened.Save(), ERROR_INVALID_VALUE);
  EXPECT_TRUE(ReadFile(opened.Path("out.ntf")).empty());
  changed.UDIDL = 0;
  changed.UDID = nullptr;
  ASSERT_EQ(K_NITFSetImageHeader(opened.Get(), 0, &changed), SUCCESS);
  EXPECT_EQ(opened.Save(), SUCCESS);
  K_NITFFreeImageHeader(&info);
}

}  // namespace
