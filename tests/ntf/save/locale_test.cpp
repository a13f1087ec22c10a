// Numbers in a process whose locale has a decimal comma.
#include "opened_file.h"

#include <algorithm>
#include <clocale>
#include <cstdio>
#include <cstdlib>
#include <filesystem>

#include <gtest/gtest.h>

namespace {

/**
 * The process's numbers with a decimal comma: a category file of the C library's own format, whose strings are the
 * decimal point, the separator and the grouping of thousands, both points as wide characters, and the code set.
 */
class CommaLocale {
 public:
  CommaLocale() {
    constexpr std::uint8_t kCategory[] = {0x14, 0x11, 0x03, 0x20, 6, 0,   0,   0,    0x20, 0,   0,   0,    0x22,
                                          0,    0,    0,    0x23, 0, 0,   0,   0x24, 0,    0,   0,   0x28, 0,
                                          0,    0,    0x2C, 0,    0, 0,   ',', 0,    0,    0,   ',', 0,    0,
                                          0,    0,    0,    0,    0, 'U', 'T', 'F',  '-',  '8', 0};
    std::filesystem::create_directory(folder.Path("comma"));
    WriteFile(folder.Path("comma/LC_NUMERIC"), {std::begin(kCategory), std::end(kCategory)});
    setenv("LOCPATH", folder.Path("").c_str(), 1);
    installed = std::setlocale(LC_NUMERIC, "comma") != nullptr;
  }
  CommaLocale(const CommaLocale &) = delete;
  CommaLocale &operator=(const CommaLocale &) = delete;
  ~CommaLocale() {
    std::setlocale(LC_NUMERIC, "C");
    unsetenv("LOCPATH");
  }

  bool installed = false;

 private:
  TemporaryFolder folder;
};

TEST(Decimals, AreWrittenWithAPointInEveryLocale) {
  const Opened opened(NitfBuilder().Image(SixPixels({{"IMAG", "/2  "}})).Build());
  ASSERT_EQ(opened.status, SUCCESS);
  const Bytes before = opened.Saved();
  const CommaLocale locale;
  ASSERT_TRUE(locale.installed);
  char half[8];
  std::snprintf(half, sizeof half, "%.1f", 0.5);
  ASSERT_STREQ(half, "0,5") << "the locale must be in force";
  NitfHeaderInfo info{};
  ASSERT_EQ(K_NITFGetNITFHeader(opened.Get(), &info), SUCCESS);
  EXPECT_FLOAT_EQ(info.FVER, 2.1F);
  ASSERT_EQ(K_NITFSetNITFHeader(opened.Get(), &info), SUCCESS);
  K_NITFFreeNITFHeader(&info);
  EXPECT_EQ(std::string(opened->header.FVER, 5), "02.10");
  const Bytes saved = opened.Saved();
  EXPECT_NE(TextOf(saved).find("0.5 "), std::string::npos);
  EXPECT_TRUE(std::equal(before.begin() + 342, before.end(), saved.begin() + 342, saved.end())) << "all behind OPHONE";
}

}  // namespace
