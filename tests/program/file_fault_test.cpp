// Files that can't be read, and outputs that can't be written: one line tells why, and nothing else is touched.
#include "program_test.h"

#include <filesystem>

namespace {

NitfBuilder SmallFile(const FieldTexts &imageFields = {}) {
  return NitfBuilder().Image(SmallImage(imageFields));
}

/** A file that the library refuses, and the end of its error line. */
struct Fault {
  const char *name;
  std::string file;
  std::string line;
};

class RefusedFile : public ProgramTest, public testing::WithParamInterface<Fault> {};

TEST_P(RefusedFile, IsToldInOneLineByEachCommand) {
  WriteText("bad.ntf", GetParam().file);
  const std::string line = "ntf: bad.ntf: " + GetParam().line + "\n";
  for (const std::vector<std::string> &command :
       std::vector<std::vector<std::string>>{{"info", "bad.ntf"},
                                             {"info", "--json", "bad.ntf"},
                                             {"render", "bad.ntf", "-o", "-"},
                                             {"render", "bad.ntf", "-o", "out.png"},
                                             {"render", "bad.ntf", "-o", "out.png", "--image", "0"}}) {
    const ProgramRun run = Run(command);
    EXPECT_EQ(run.exitCode, 1) << command[0];
    EXPECT_EQ(run.errors, line) << command[0];
    EXPECT_EQ(run.output, "") << command[0];
  }
  EXPECT_EQ(FilesInFolder(), std::vector<std::string>{"bad.ntf"});
}

TEST_P(RefusedFile, LeavesAnExistingPictureAlone) {
  WriteText("bad.ntf", GetParam().file);
  WriteText("out.png", "an older picture");
  EXPECT_EQ(Run({"render", "bad.ntf", "-o", "out.png"}).exitCode, 1);
  EXPECT_EQ(ReadText("out.png"), "an older picture");
  EXPECT_EQ(FilesInFolder(), (std::vector<std::string>{"bad.ntf", "out.png"}));
}

INSTANTIATE_TEST_SUITE_P(Program, RefusedFile,
                         testing::Values(Fault{"Empty", "", "ends too early, or can't be read (status -7)"},
                                         Fault{"Truncated", TextOf(SmallFile().Build()).substr(0, 300),
                                               "ends too early, or can't be read (status -7)"},
                                         Fault{"NoNitf", std::string(500, 'x'),
                                               "is not a NITF file, or a header field is wrong (status -9)"},
                                         Fault{"Version", TextOf(SmallFile().Field("FVER", "02.00").Build()),
                                               "version is not 02.10 (status -78)"},
                                         Fault{"Compliance", TextOf(SmallFile().Field("CLEVEL", "05").Build()),
                                               "compliance level is not 03 (status -700001)"},
                                         Fault{"PixelType", TextOf(SmallFile({{"PVTYPE", "R"}}).Build()),
                                               "pixel value type is neither INT nor B (status -700000)"}),
                         [](const auto &test) { return test.param.name; });

using FileFault = ProgramTest;

TEST_F(FileFault, WhatIsNoFileIsToldBeforeItIsRead) {
  std::filesystem::create_directory(PathOf("folder.ntf"));
  EXPECT_EQ(Run({"info", "none.ntf"}).errors, "ntf: none.ntf: no such file (status -10)\n");
  EXPECT_EQ(Run({"render", "none.ntf", "-o", "out.png"}).errors, "ntf: none.ntf: no such file (status -10)\n");
  EXPECT_EQ(Run({"info", "folder.ntf"}).errors, "ntf: folder.ntf: is a directory (status -7)\n");
  EXPECT_EQ(Run({"info", "/dev/null"}).errors, "ntf: /dev/null: is not a regular file (status -7)\n");
  EXPECT_EQ(Run({"info", "\xff.ntf"}).exitCode, 1);
}

TEST_F(FileFault, BrokenBodyLeavesNoPicture) {
  ImageSpec image;
  image.rows = image.columns = 4;
  image.compression = "C0"; /* a code that nothing decodes */
  image.data = {0};
  NitfBuilder().Image(image).Write(PathOf("a.ntf"));
  for (const std::string only : {"", "--image=0"}) {
    std::vector<std::string> command = {"render", "a.ntf", "-o", "out.png"};
    if (!only.empty()) command.push_back(only);
    const ProgramRun run = Run(command);
    EXPECT_EQ(run.exitCode, 1);
    EXPECT_NE(run.errors.find("(status -16)"), std::string::npos) << run.errors;
    EXPECT_EQ(FilesInFolder(), std::vector<std::string>{"a.ntf"});
  }
}

TEST_F(FileFault, ImageNumberBeyondTheFile) {
  SmallFile().Write(PathOf("one.ntf"));
  NitfBuilder().Write(PathOf("blank.ntf"));
  const ProgramRun one = Run({"render", "one.ntf", "-o", "out.png", "--image", "1"});
  EXPECT_EQ(one.exitCode, 1);
  EXPECT_EQ(one.errors, "ntf: one.ntf: there is no image 1: the file has 1 image (status 87)\n");
  const ProgramRun blank = Run({"render", "blank.ntf", "-o", "out.png", "--image", "0"});
  EXPECT_EQ(blank.exitCode, 1);
  EXPECT_EQ(blank.errors, "ntf: blank.ntf: there is no image 0: the file has no image (status 87)\n");
}

TEST_F(FileFault, OutputThatCanNotBeWritten) {
  SmallFile().Write(PathOf("a.ntf"));
  std::filesystem::create_directory(PathOf("folder.png"));
  const ProgramRun toNowhere = Run({"render", "a.ntf", "-o", "none/out.png"});
  EXPECT_EQ(toNowhere.exitCode, 1);
  EXPECT_EQ(toNowhere.errors, "ntf: none/out.png: no such file or directory (status -5)\n");
  const ProgramRun toFolder = Run({"render", "a.ntf", "-o", "folder.png"});
  EXPECT_EQ(toFolder.exitCode, 1);
  EXPECT_EQ(toFolder.errors, "ntf: folder.png: is a directory (status -5)\n");
  for (const std::vector<std::string> &command :
       std::vector<std::vector<std::string>>{{"render", "a.ntf", "-o", "-"}, {"info", "a.ntf"}}) {
    const ProgramRun full = Run(command, "/dev/full");
    EXPECT_EQ(full.exitCode, 1);
    EXPECT_NE(full.errors.find("standard output"), std::string::npos) << full.errors;
  }
}

}  // namespace
