#include "table/fields.h"

#include "harness.h"

#include <array>
#include <string>
#include <tuple>

#include <gtest/gtest.h>

using namespace ksntfx;

namespace {

class Numbers : public testing::TestWithParam<std::tuple<const char *, std::int32_t>> {};

TEST_P(Numbers, AreReadUpToTheFirstOtherCharacter) {
  const auto &[text, expected] = GetParam();
  EXPECT_EQ(ParseNumber(text), expected) << '"' << text << '"';
}

INSTANTIATE_TEST_SUITE_P(Fields, Numbers,
                         testing::Values(std::tuple{"00042", 42}, std::tuple{"   12AB", 12}, std::tuple{"   ", 0},
                                         std::tuple{"", 0}, std::tuple{"-0100", -100}, std::tuple{"+7", 7},
                                         std::tuple{"--1", 0}, std::tuple{"1 2", 1},
                                         std::tuple{"2147483647", 2147483647}, std::tuple{"9999999999", 2147483647},
                                         std::tuple{"-2147483648", -2147483647 - 1},
                                         std::tuple{"-99999999999999999999", -2147483647 - 1}));

TEST(Fields, FractionsTakeNoAccountOfTheLocale) {
  EXPECT_DOUBLE_EQ(ParseFraction("1.0 "), 1.0);
  EXPECT_DOUBLE_EQ(ParseFraction("  .25"), 0.25);
  EXPECT_DOUBLE_EQ(ParseFraction("    "), 0.0);
  EXPECT_DOUBLE_EQ(ParseFraction("abcd"), 0.0);
}

TEST(Fields, ATextStandsAtTheFrontOfItsField) {
  char field[] = "xxxxxx";
  EXPECT_EQ(SetField(field, 5, "ab"), SUCCESS);
  EXPECT_STREQ(field, "ab   ");
  EXPECT_EQ(SetField(field, 5, ""), SUCCESS);
  EXPECT_STREQ(field, "     ");
  EXPECT_EQ(SetField(field, 5, "abcde"), SUCCESS);
  EXPECT_STREQ(field, "abcde");
  EXPECT_EQ(SetField(field, 5, "abcdef"), ERROR_INVALID_VALUE);
  EXPECT_STREQ(field, "abcde");
  EXPECT_EQ(SetField(nullptr, 5, "a"), ERROR_INVALID_VALUE);
}

class NumberFields : public testing::TestWithParam<std::tuple<std::uint32_t, std::uint32_t, const char *>> {};

TEST_P(NumberFields, StandAtTheBackWithZerosInFront) {
  const auto &[width, value, expected] = GetParam();
  char field[16] = "xxxxxxxxxxxxxxx";
  SetNumberField(field, width, value);
  EXPECT_STREQ(field, expected);
}

INSTANTIATE_TEST_SUITE_P(Fields, NumberFields,
                         testing::Values(std::tuple{3U, 0U, "000"}, std::tuple{3U, 7U, "007"},
                                         std::tuple{3U, 999U, "999"}, std::tuple{3U, 1000U, "000"},
                                         std::tuple{4U, static_cast<std::uint32_t>(-5), "00-5"},
                                         std::tuple{12U, 388U, "000000000388"},
                                         std::tuple{12U, 0x80000000U, "0-2147483648"}));

class WrittenFields
    : public testing::TestWithParam<std::tuple<const char *, std::uint32_t, const char *, const char *>> {};

TEST_P(WrittenFields, HaveExactlyTheirWidth) {
  const auto &[text, width, fill, expected] = GetParam();
  const TemporaryFolder folder;
  const std::string path = folder.Path("field");
  const KsHandle out = KsOpen(Wide(path).c_str(), KS_OPEN_CREATE, KS_MODE_CREATE);
  EXPECT_EQ(WriteField(nullptr, out, text, width, fill), SUCCESS);
  EXPECT_EQ(KsClose(out), SUCCESS);
  EXPECT_EQ(TextOf(ReadFile(path)), expected);
}

INSTANTIATE_TEST_SUITE_P(Fields, WrittenFields,
                         testing::Values(std::tuple{"ab", 4U, " ", "ab  "}, std::tuple{"ab", 4U, "0", "00ab"},
                                         std::tuple{"ab", 4U, "  ", "  ab"}, std::tuple{"", 3U, "0", "000"},
                                         std::tuple{"", 3U, " ", "   "}, std::tuple{"abcde", 3U, " ", "abc"},
                                         std::tuple{"abcde", 3U, "0", "abc"}, std::tuple{"abc", 3U, "0", "abc"}));

TEST(Fields, AFieldThatCanNotBeWrittenIsAWriteError) {
  EXPECT_EQ(WriteField(nullptr, KS_INVALID_HANDLE, "ab", 4, " "), ERROR_FILE_WRITE);
  EXPECT_EQ(WriteField(nullptr, KS_INVALID_HANDLE, "", 4, "0"), ERROR_FILE_WRITE);
}

TEST(Fields, FormattingThatDoesNotFitLeavesAnEmptyText) {
  char buffer[4] = "xyz";
  EXPECT_EQ(FormatBounded(buffer, sizeof buffer, "%d", 123), 3);
  EXPECT_STREQ(buffer, "123");
  EXPECT_EQ(FormatBounded(buffer, sizeof buffer, "%d", 1234), -1);
  EXPECT_STREQ(buffer, "");
  EXPECT_EQ(FormatBounded(nullptr, 4, "%d", 1), -1);
}

TEST(Fields, ACopiedStringIsTheCallersOwn) {
  const auto before = LiveBlocks();
  char *copy = nullptr;
  CopyOutString(&copy, "text");
  EXPECT_STREQ(copy, "text");
  KsFree(copy, __LINE__, __FILE__);
  CopyOutString(&copy, "");
  EXPECT_STREQ(copy, "");
  KsFree(copy, __LINE__, __FILE__);
  EXPECT_EQ(LiveBlocks(), before);
}

}  // namespace
