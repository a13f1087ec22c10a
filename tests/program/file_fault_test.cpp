// Files that can't be read, and outputs that can't be written: one line has the reason, and nothing else is touched.
#include "program_test.h"

#include <algorithm>
#include <filesystem>

#include <nlohmann/json.hpp>

namespace {

using Json = nlohmann::json;

/** A file that can't be loaded: the field at fault, its place and its value. */
struct Fault {
  const char *name;
  std::string file;
  std::string field;
  std::size_t offset;
  std::string words; /* about the field */
  int status;
};

class RefusedFile : public ProgramTest, public testing::WithParamInterface<Fault> {};

TEST_P(RefusedFile, IsExplainedInOneLineByEachCommand) {
  WriteText("bad.ntf", GetParam().file);
  WriteText("out.png", "an older picture");
  const std::string place = GetParam().field + " at byte " + std::to_string(GetParam().offset);
  const std::string explained = place + " " + GetParam().words;
  const std::string line = "ntf: bad.ntf: " + explained + " (status " + std::to_string(GetParam().status) + ")\n";
  for (const std::vector<std::string> &command :
       std::vector<std::vector<std::string>>{{"info"},
                                             {"render", "-o", "-"},
                                             {"render", "-o", "out.png", "--force"},
                                             {"render", "-o", "out.png", "--force", "--image", "0"},
                                             {"text"},
                                             {"extract", "-o", "folder"},
                                             {"copy", "out.ntf"}}) {
    std::vector<std::string> words = command;
    words.insert(words.begin() + 1, {"--strict", "bad.ntf"});
    const ProgramRun run = Run(words);
    EXPECT_EQ(run.exitCode, 1) << command[0];
    EXPECT_EQ(run.errors, line) << command[0];
    EXPECT_EQ(run.output, "") << command[0];
  }
  EXPECT_EQ(ReadText("out.png"), "an older picture");
  EXPECT_EQ(FilesInFolder(), (std::vector<std::string>{"bad.ntf", "out.png"}));

  EXPECT_EQ(Run({"check", "--strict", "bad.ntf"}).output, "bad.ntf: " + place + ": " + GetParam().words + "\n");
  const Json described = Json::parse(Run({"info", "--strict", "--json", "bad.ntf"}).output);
  EXPECT_EQ(described["name"], "bad.ntf");
  EXPECT_EQ(described["error"], explained);
  const Json checked = Json::parse(Run({"check", "--strict", "--json", "bad.ntf"}).output);
  EXPECT_EQ(checked["ok"], false);
  for (const Json &fault : {described, checked["findings"][0]}) {
    EXPECT_EQ(fault["field"], GetParam().field);
    EXPECT_EQ(fault["offset"], GetParam().offset);
  }
  for (const Json &file : {described, checked}) EXPECT_EQ(file["status"], GetParam().status);
}

std::string FileWith(const std::string &field, const std::string &value, const FieldTexts &imageFields = {}) {
  return TextOf(NitfBuilder().Field(field, value).Image(SmallImage(imageFields)).Build());
}

std::string ImageWith(const std::string &field, const std::string &value) {
  return FileWith("FVER", "02.10", {{field, value}});
}

std::string ColorImage() {
  ImageSpec image = SmallImage();
  image.bands = {{}, {}};
  image.bits = 16;
  return TextOf(NitfBuilder().Image(image).Build());
}

constexpr const char *kClassifications = ", not one of T, S, C, R, U";
constexpr const char *kNoStreamHeader = "is unknown (all nines), and the file has no stream file header";

// The header of a file of one image has 404 bytes.
INSTANTIATE_TEST_SUITE_P(
    Program, RefusedFile,
    testing::Values(
        Fault{"Truncated", FileWith("FVER", "02.10").substr(0, 300), "ONAME", 300,
              "is not complete: the file has 300 bytes", -7},
        Fault{"WithoutSegment", FileWith("FVER", "02.10").substr(0, 404), "image 0 IM", 404,
              "is not complete: the file has 404 bytes", -7},
        Fault{"NoNitf", std::string(500, 'x'), "FHDR", 0, "is 'xxxx', not NITF or NSIF", -9},
        Fault{"Version", FileWith("FVER", "02.00"), "FVER", 4, "is '02.00', not 02.10", -78},
        Fault{"Compliance", FileWith("CLEVEL", "05"), "CLEVEL", 9, "is '05', not 03", -700001},
        Fault{"Classification", FileWith("FSCLAS", "X"), "FSCLAS", 119, std::string("is 'X'") + kClassifications, -9},
        Fault{"Count", FileWith("NUMT", "-01"), "NUMT", 385, "is '-01', not a number from 000 to 999", -1},
        Fault{"UnknownLength", FileWith("FL", "999999999999"), "FL", 342, kNoStreamHeader, -13},
        Fault{"UnknownSegmentLength", FileWith("FVER", "02.10").replace(369, 10, "9999999999"), "LI001", 369,
              kNoStreamHeader, -13},
        Fault{"HeaderLength", FileWith("HL", "000405"), "image 0 IM", 405, "is 'MS', not IM", -9},
        Fault{"ExtendedData", FileWith("XHDL", "00002"), "XHDL", 399, "is '00002', not 00000 or at least 00003", -9},
        Fault{"SegmentClassification", ImageWith("ISCLAS", "X"), "image 0 ISCLAS", 527,
              std::string("is 'X'") + kClassifications, -9},
        Fault{"UnknownSize", ImageWith("NROWS", "99999999"), "image 0 NROWS", 737, kNoStreamHeader, -13},
        Fault{"PixelType", ImageWith("PVTYPE", "R"), "image 0 PVTYPE", 753, "is 'R  ', not INT or B", -700000},
        Fault{"Mode", ImageWith("IMODE", "X"), "image 0 IMODE", 794, "is 'X', not B, P, R or S", -9},
        Fault{"Bands", ColorImage(), "image 0 NBPP", 824, "is 16, but the image has several bands", -700002}),
    [](const auto &test) { return test.param.name; });

class NotedValue : public ProgramTest {};

TEST_F(NotedValue, IsReportedOnce) {
  WriteText("level.ntf", FileWith("CLEVEL", "77"));
  WriteText("class.ntf", FileWith("FSCLAS", "X"));
  EXPECT_EQ(Run({"check", "level.ntf"}).output, "level.ntf: CLEVEL at byte 9: is '77', not a compliance level\n");
  EXPECT_EQ(Run({"check", "class.ntf"}).output, "class.ntf: FSCLAS at byte 119: is 'X', not one of T, S, C, R, U\n");
  const ProgramRun shown = Run({"render", "level.ntf", "-o", "level.ppm"});
  EXPECT_EQ(shown.exitCode, 0);
  EXPECT_EQ(shown.errors, "ntf: level.ntf: warning: file header: CLEVEL at byte 9 is '77', not a compliance level\n");
}

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
                    Failure{{"info", "\xff.ntf"}, ".ntf: no such file"},
                    Failure{{"info", "a\x1b[2J\n.ntf"}, "a?[2J?.ntf: no such"},
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
