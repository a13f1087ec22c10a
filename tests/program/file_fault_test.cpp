// Files that can't be read, and outputs that can't be written: one line has the reason, and nothing else is touched.
#include "program_test.h"

#include <algorithm>
#include <filesystem>

namespace {

/** A file that the library refuses, and the end of its error line. */
struct Fault {
  const char *name;
  std::string file;
  std::string line;
};

class RefusedFile : public ProgramTest, public testing::WithParamInterface<Fault> {};

TEST_P(RefusedFile, IsReportedInOneLineByEachCommand) {
  WriteText("bad.ntf", GetParam().file);
  WriteText("out.png", "an older picture");
  const std::string line = "ntf: bad.ntf: " + GetParam().line + "\n";
  for (const std::vector<std::string> &command :
       std::vector<std::vector<std::string>>{{"info", "bad.ntf"},
                                             {"info", "--json", "bad.ntf"},
                                             {"render", "bad.ntf", "-o", "-"},
                                             {"render", "bad.ntf", "-o", "out.png", "--force"},
                                             {"render", "bad.ntf", "-o", "out.png", "--force", "--image", "0"}}) {
    const ProgramRun run = Run(command);
    EXPECT_EQ(run.exitCode, 1) << command[0];
    EXPECT_EQ(run.errors, line) << command[0];
    EXPECT_EQ(run.output, "") << command[0];
  }
  EXPECT_EQ(ReadText("out.png"), "an older picture");
  EXPECT_EQ(FilesInFolder(), (std::vector<std::string>{"bad.ntf", "out.png"}));
}

std::string FileWith(const std::string &field, const std::string &value, const FieldTexts &imageFields = {}) {
  return TextOf(NitfBuilder().Field(field, value).Image(SmallImage(imageFields)).Build());
}

INSTANTIATE_TEST_SUITE_P(
    Program, RefusedFile,
    testing::Values(Fault{"Empty", "", "is truncated, or can't be read (status -7)"},
                    Fault{"Truncated", FileWith("FVER", "02.10").substr(0, 300),
                          "is truncated, or can't be read (status -7)"},
                    Fault{"NoNitf", std::string(500, 'x'), "is not a NITF file, or is malformed (status -9)"},
                    Fault{"Version", FileWith("FVER", "02.00"), "version is not 02.10 (status -78)"},
                    Fault{"Compliance", FileWith("CLEVEL", "05"), "compliance level is not 03 (status -700001)"},
                    Fault{"PixelType", FileWith("FVER", "02.10", {{"PVTYPE", "R"}}),
                          "pixel value type is neither INT nor B (status -700000)"}),
    [](const auto &test) { return test.param.name; });

/** A command that fails, and the words of its error line. */
struct Failure {
  std::vector<std::string> command;
  std::string words;
};

class FileFault : public ProgramTest, public testing::WithParamInterface<Failure> {};

TEST_P(FileFault, IsReportedAndLeavesNothing) {
  ImageSpec undecoded = SmallImage();
  undecoded.compression = "C0"; /* a code that nothing decodes */
  NitfBuilder().Image(undecoded).Write(PathOf("c0.ntf"));
  NitfBuilder().Image(SmallImage()).Write(PathOf("a.ntf"));
  WriteText("notes.txt", "some words\n");
  WriteText("long.txt", std::string(100000, 'x'));
  WriteText("ascii.ppm", "P3 1 1 255\n1 2 3\n");
  WriteText("zero.ppm", "P6 0 1 255\n");
  WriteText("half.jpg", "\xff\xd8\xff\xdb\x01\x02");
  std::filesystem::create_directory(PathOf("folder.png"));
  const std::vector<std::string> before = FilesInFolder();
  const ProgramRun run = Run(GetParam().command);
  EXPECT_EQ(run.exitCode, 1);
  EXPECT_NE(run.errors.find(GetParam().words), std::string::npos) << run.errors;
  EXPECT_EQ(std::count(run.errors.begin(), run.errors.end(), '\n'), 1) << run.errors;
  EXPECT_EQ(FilesInFolder(), before);
}

std::vector<std::string> Append(const std::string &option, const std::string &file) {
  return {"create", "-o", "b.ntf", option, file};
}

INSTANTIATE_TEST_SUITE_P(
    Inputs, FileFault,
    testing::Values(Failure{{"info", "none.ntf"}, "ntf: none.ntf: no such file (status -10)\n"},
                    Failure{{"render", "none.ntf", "-o", "b.png"}, "ntf: none.ntf: no such file (status -10)\n"},
                    Failure{{"info", "folder.png"}, "ntf: folder.png: is a directory (status -7)\n"},
                    Failure{{"info", "/dev/null"}, "ntf: /dev/null: is not a regular file (status -7)\n"},
                    Failure{{"info", "\xff.ntf"}, "ntf: "}, Failure{{"info", "a\x1b[2J\n.ntf"}, "a?[2J?.ntf: no such"},
                    Failure{{"render", "c0.ntf", "-o", "b.png"}, "(status -16)"},
                    Failure{{"render", "c0.ntf", "-o", "b.png", "--image=0"}, "(status -16)"},
                    Failure{Append("--image", "notes.txt"), "notes.txt: can't be read as a picture: it is not PNG"},
                    Failure{Append("--image", "none.png"), "none.png: no such file"},
                    Failure{Append("--image", "ascii.ppm"), "only binary PPM"},
                    Failure{Append("--image", "zero.ppm"), "it has no pixels"},
                    Failure{Append("--image", "half.jpg"), "it is truncated"},
                    Failure{Append("--graphic", "notes.txt"), "notes.txt: can't be read as a CGM drawing"},
                    Failure{Append("--text", "none.txt"), "none.txt: no such file"},
                    Failure{Append("--text", "/dev/stdin"), "/dev/stdin: is not a regular file"},
                    Failure{Append("--text", "long.txt"), "long.txt: has 100000 bytes"}));
INSTANTIATE_TEST_SUITE_P(
    Outputs, FileFault,
    testing::Values(
        Failure{{"render", "a.ntf", "-o", "none/b.png"}, "ntf: none/b.png: no such file or directory (status -5)\n"},
        Failure{{"render", "a.ntf", "-o", "folder.png", "--force"}, "ntf: folder.png: is a directory (status -5)\n"},
        Failure{{"render", "a.ntf", "-o", "folder.png"}, "folder.png: already exists (use --force"},
        Failure{{"create", "-o", "a.ntf", "--text", "notes.txt"}, "a.ntf: already exists (use --force"}));

TEST_F(ProgramTest, FullDiskIsReported) {
  NitfBuilder().Image(SmallImage()).Write(PathOf("a.ntf"));
  for (const std::vector<std::string> &command :
       std::vector<std::vector<std::string>>{{"render", "a.ntf", "-o", "-"}, {"info", "a.ntf"}}) {
    const ProgramRun full = Run(command, "/dev/full");
    EXPECT_EQ(full.exitCode, 1);
    EXPECT_NE(full.errors.find("standard output"), std::string::npos) << full.errors;
  }
}

}  // namespace
