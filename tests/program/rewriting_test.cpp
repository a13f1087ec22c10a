// What ntf copy, append and set carry: every byte that was not named.
#include "program_test.h"
#include "vq_builder.h"

#include <cstdlib>
#include <filesystem>
#include <sys/stat.h>
#include <unistd.h>

namespace {

// Offsets in a file header of the 2.1 layout, and the first segment's behind a header with one image.
constexpr std::size_t kTitle = 39;
constexpr std::size_t kBackground = 297;
constexpr std::size_t kFileLength = 342;
constexpr std::size_t kHeaderLength = 354;
constexpr std::size_t kImageCount = 360;
constexpr std::size_t kImageRow = 16;

std::string Digits(std::uint64_t number, std::size_t width) {
  const std::string digits = std::to_string(number);
  return std::string(width - digits.size(), '0') + digits;
}

std::uint64_t NumberAt(const std::string &file, std::size_t offset, std::size_t width) {
  return std::strtoull(file.substr(offset, width).c_str(), nullptr, 10);
}

/** A masked image of one block, whose rows of three codes don't end with a byte, with bytes behind the last code. */
ImageSpec Quantised() {
  VqSpec spec{.codeRows = 2, .codesPerRow = 3, .codeBits = 12, .kernelHeight = 1, .tables = 1};
  spec.kernels = {{1}, {2}};
  spec.codes = std::vector<std::uint32_t>(6, 1);
  ImageSpec image{.rows = 2, .columns = 3, .compression = "M4", .mask = MaskSpec{{0}, {}, {}}};
  image.data = EncodeVq(spec);
  image.data.resize(image.data.size() + 3, 0xAA);
  return image;
}

/** An image of level 4 with a COMRAT that a strict writer would replace. */
ImageSpec WaveletImage() {
  ImageSpec image = SmallImage({{"COMRAT", "N061"}});
  image.compression = "C8";
  image.level = 4;
  return image;
}

/** A file of both, with a reserved extension segment and bytes that the header doesn't count. */
std::string AwkwardFile() {
  std::string file = TextOf(NitfBuilder()
                                .Image(Quantised())
                                .Image(WaveletImage())
                                .Text({"some words", {}})
                                .DataExtension({"SAMPLE_DES", "user data", {7, 8, 9}})
                                .Build());
  const std::uint64_t header = NumberAt(file, kHeaderLength, 6);
  const std::size_t reserved = header - 10 - 3;  // NUMRES, in front of UDHDL and XHDL
  file.replace(reserved, 3, "00100050000007");
  file += "SUBHDRESDATA";
  file.replace(kHeaderLength, 6, Digits(header + 11, 6));
  file.replace(kFileLength, 12, Digits(file.size(), 12));
  return file;
}

class Rewriting : public ProgramTest {
 protected:
  void SetUp() override {
    WriteText("a.ntf", AwkwardFile());
    WriteText("notes.txt", "more words\n");
    WriteText("gray.pgm", "P5 2 1 255\nab");
  }
};

TEST_F(Rewriting, ACopyIsTheWholeFile) {
  const ProgramRun run = Run({"copy", "a.ntf", "b.ntf"});
  EXPECT_EQ(run.exitCode, 0);
  EXPECT_EQ(run.errors, "");
  EXPECT_EQ(ReadText("b.ntf"), AwkwardFile());
  WriteText("longer.ntf", AwkwardFile() + "behind");
  EXPECT_EQ(Run({"copy", "longer.ntf", "c.ntf"}).errors,
            "ntf: longer.ntf: warning: FL is " + std::to_string(AwkwardFile().size()) + ", but the file has " +
                std::to_string(AwkwardFile().size() + 6) + " bytes\n");
  EXPECT_EQ(ReadText("c.ntf"), AwkwardFile() + "behind");
}

TEST_F(Rewriting, SetChangesTheNamedBytesAndNoOthers) {
  std::string expected = AwkwardFile();
  expected.replace(kTitle, 80,
                   "Gr\xfc\xdf"
                   "e" +
                       std::string(75, ' '));
  expected.replace(kBackground, 3, "\x01\x80\xff");
  ASSERT_EQ(Run({"set", "a.ntf", "-o", "b.ntf", "FTITLE=first", "FTITLE=Gr\u00fc\u00dfe", "FBKGC=0180ff"}).exitCode, 0);
  EXPECT_EQ(ReadText("b.ntf"), expected);
  const std::size_t images = NumberAt(expected, kHeaderLength, 6);
  const std::size_t second = images + NumberAt(expected, kImageCount + 3, 6) + NumberAt(expected, kImageCount + 9, 10);
  const std::size_t location = expected.find("0040000000", second);  // IDLVL, IALVL and the first half of ILOC
  expected.replace(location, 16, "005000-000700012");
  ASSERT_EQ(Run({"set", "b.ntf", "-o", "b.ntf", "--force", "--image", "1", "IDLVL=5", "ILOC=-7,12"}).exitCode, 0);
  EXPECT_EQ(ReadText("b.ntf"), expected);
}

TEST_F(Rewriting, AppendInsertsSegmentsAndTheirLengths) {
  const std::string before = AwkwardFile() + "behind";
  WriteText("a.ntf", before);
  ASSERT_EQ(Run({"append", "a.ntf", "-o", "b.ntf", "--text", "notes.txt", "--image", "gray.pgm"}).exitCode, 0);
  const std::string after = ReadText("b.ntf");
  // Two rows of images, the counts of symbols and of the reserved segments of old, one row of texts.
  const std::size_t newImageRow = kImageCount + 3 + 2 * kImageRow;
  const std::size_t newTextRow = newImageRow + kImageRow + 3 + 3 + 3 + 9;
  const std::string image = after.substr(newImageRow, kImageRow);
  const std::string text = after.substr(newTextRow, 9);
  const std::size_t imageBytes = NumberAt(image, 0, 6) + NumberAt(image, 6, 10);
  const std::size_t textBytes = NumberAt(text, 0, 4) + NumberAt(text, 4, 5);
  ASSERT_EQ(NumberAt(text, 4, 5), 11U);

  std::string expected = before;
  const std::size_t texts = before.find("TESample");
  const std::size_t extensions = before.find("DESAMPLE_DES");
  expected.insert(extensions, after.substr(extensions + 25 + imageBytes, textBytes));
  expected.insert(texts, after.substr(texts + 25, imageBytes));
  expected.insert(newTextRow - kImageRow, text);
  expected.insert(newImageRow, image);
  expected.replace(newTextRow - 12, 3, "002");
  expected.replace(kImageCount, 3, "003");
  expected.replace(kHeaderLength, 6, Digits(NumberAt(before, kHeaderLength, 6) + 25, 6));
  expected.replace(kFileLength, 12, Digits(NumberAt(before, kFileLength, 12) + 25 + imageBytes + textBytes, 12));
  EXPECT_EQ(after, expected);
  EXPECT_EQ(after.substr(texts + 25, 2), "IM");
  EXPECT_EQ(after.substr(texts + 25 + imageBytes - 2, 2), "\xff\xd9") << "a JPEG stream";
  EXPECT_EQ(after.substr(extensions + 25 + imageBytes, 2), "TE");
  EXPECT_EQ(after.substr(extensions + 25 + imageBytes + textBytes - 11, 11), "more words\n");
  EXPECT_NE(after.substr(texts + 25, imageBytes).find("0050000000000000"), std::string::npos) << "above level 4";
}

TEST_F(Rewriting, WhatDoesNotFitIsRefused) {
  struct Refusal {
    std::string file;
    std::string words;
  };
  NitfBuilder full;
  for (int text = 0; text < 999; ++text) full.Text({"", {}});
  std::string longHeader = TextOf(NitfBuilder().Build());
  longHeader.resize(999995);
  longHeader.replace(kHeaderLength, 6, "999995");
  std::string longFile = TextOf(NitfBuilder().Build());
  longFile.replace(kFileLength, 12, "999999999990");
  std::string stream = TextOf(NitfBuilder().Build());
  stream.replace(kFileLength, 12, std::string(12, '9'));
  const Bytes header = NitfBuilder().Header();
  for (const Refusal &refusal :
       {Refusal{TextOf(full.Build()), "NUMT would exceed its digits"}, Refusal{longHeader, "HL would exceed"},
        Refusal{longFile, "FL would exceed"},
        Refusal{TextOf(WithStreamHeader(Bytes(stream.begin(), stream.end()), header)), "stream file header"}}) {
    WriteText("a.ntf", refusal.file);
    const ProgramRun run = Run({"append", "a.ntf", "-o", "b.ntf", "--text", "notes.txt"});
    EXPECT_EQ(run.exitCode, 1) << refusal.words;
    EXPECT_NE(run.errors.find(refusal.words), std::string::npos) << run.errors;
  }
  // The last file's header is replaced by that near its end.
  const ProgramRun run = Run({"set", "a.ntf", "-o", "b.ntf", "FTITLE=other"});
  EXPECT_EQ(run.exitCode, 1);
  EXPECT_NE(run.errors.find("FTITLE can't be changed"), std::string::npos) << run.errors;
  EXPECT_EQ(FilesInFolder(), (std::vector<std::string>{"a.ntf", "gray.pgm", "notes.txt"}));
}

TEST_F(Rewriting, AReplacedFileKeepsItsModeAndItsOwner) {
  struct stat status = {};
  std::filesystem::permissions(PathOf("a.ntf"), std::filesystem::perms(0640));
  constexpr uid_t kOther = 12345;
  const bool isRoot = geteuid() == 0;
  ASSERT_TRUE(!isRoot || chown(PathOf("a.ntf").c_str(), kOther, kOther) == 0);
  ASSERT_EQ(Run({"set", "a.ntf", "-o", "a.ntf", "--force", "FTITLE=x"}).exitCode, 0);
  ASSERT_EQ(stat(PathOf("a.ntf").c_str(), &status), 0);
  EXPECT_EQ(status.st_mode & 0777U, 0640U);
  EXPECT_EQ(status.st_uid, isRoot ? kOther : geteuid());
  EXPECT_EQ(status.st_gid, isRoot ? kOther : getegid());
}

}  // namespace
