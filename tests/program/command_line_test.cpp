// The command line: what it prints by itself, and what it refuses.
#include "program_test.h"

#include <filesystem>

namespace {

struct Line {
  std::vector<std::string> arguments;
  std::string words; /* expected in the output */
};

using CommandLine = ProgramTest;

TEST_F(CommandLine, HelpAndVersionGoToStandardOutput) {
  for (const Line &line : std::vector<Line>{{{"--help"}, "render"},
                                            {{"render", "--help"}, "--image N"},
                                            {{"help", "create"}, "ntf create -o"},
                                            {{"help"}, "Report inconsistencies"},
                                            {{"-v"}, "ntf "},
                                            {{"info", "--version"}, "ntf "}}) {
    const ProgramRun run = Run(line.arguments);
    EXPECT_EQ(run.exitCode, 0) << line.words;
    EXPECT_NE(run.output.find(line.words), std::string::npos) << run.output;
    EXPECT_EQ(run.errors, "");
  }
}

std::vector<std::string> Render(const std::vector<std::string> &options) {
  std::vector<std::string> arguments = {"render", "a.ntf", "-o", "b.png"};
  arguments.insert(arguments.end(), options.begin(), options.end());
  return arguments;
}

std::vector<std::string> Create(const std::vector<std::string> &options) {
  std::vector<std::string> arguments = {"create", "-o", "b.ntf"};
  arguments.insert(arguments.end(), options.begin(), options.end());
  return arguments;
}

/** Options behind an image. */
std::vector<std::string> Placed(const std::string &option, const std::string &value) {
  return Create({"--image", "a.pgm", option, value});
}

class WrongUsage : public ProgramTest, public testing::WithParamInterface<Line> {};

TEST_P(WrongUsage, EndsWithCode2AndWritesNothing) {
  NitfBuilder().Image(SmallImage()).Write(PathOf("a.ntf"));
  WriteText("a.pgm", "P5 2 1 255\nab");
  const ProgramRun run = Run(GetParam().arguments);
  EXPECT_EQ(run.exitCode, 2);
  EXPECT_EQ(run.output, "");
  EXPECT_TRUE(run.errors.starts_with("ntf: ")) << run.errors;
  EXPECT_NE(run.errors.find(GetParam().words), std::string::npos) << run.errors;
  EXPECT_EQ(FilesInFolder(), (std::vector<std::string>{"a.ntf", "a.pgm"}));
}

INSTANTIATE_TEST_SUITE_P(Commands, WrongUsage,
                         testing::Values(Line{{}, "no command"}, Line{{"rendr", "a.ntf"}, "did you mean 'render'?"},
                                         Line{{"draw", "a.ntf"}, "no command 'draw'; 'ntf --help'"},
                                         Line{{"info"}, "FILE"}, Line{{"info", "--foo", "a.ntf"}, "no option '--foo'"},
                                         Line{{"--foo"}, "no option '--foo'"},
                                         Line{{"info", "a.ntf", "--json=3"}, "--json has no value"},
                                         Line{{"text", "a.ntf", "0", "1"}, "unexpected argument '1'"},
                                         Line{{"render", "a.ntf"}, "--output is required"}));
INSTANTIATE_TEST_SUITE_P(
    Render, WrongUsage,
    testing::Values(Line{{"render", "a.ntf", "-o", "a.jpg"}, ".png"}, Line{{"render", "a.ntf", "-o", "png"}, ".png"},
                    Line{Render({"--depth", "16"}), "--depth: '16' is not 8 or 24"},
                    Line{Render({"--compress", "10"}), "--compress"},
                    Line{Render({"--compress"}), "--compress requires a value"},
                    Line{{"render", "a.ntf", "-o", "b.ppm", "--compress", "1"}, "--compress"},
                    Line{Render({"--image", "-1"}), "--image: '-1'"}, Line{Render({"--padded"}), "--image"},
                    Line{Render({"--image", "0", "--depth", "8"}), "--depth"},
                    Line{Render({"--image", "0", "--tone-check"}), "--tone-check"},
                    Line{Render({"--image", "1"}), "a.ntf: there is no image 1: the file has 1 image (status 87)"},
                    Line{Render({"--graphic", "0"}), "a.ntf: there is no graphic 0: the file has no graphic"}));
INSTANTIATE_TEST_SUITE_P(
    Create, WrongUsage,
    testing::Values(Line{Create({"--quality", "10", "--image", "a.pgm"}), "--quality: must follow the --image"},
                    Line{Placed("--quality", "101"), "--quality: '101' is not a number from 1 to 100"},
                    Line{Placed("--at", "1"), "--at: '1'"}, Line{Placed("--at", "1,"), "--at"},
                    Line{Placed("--at", "a,b"), "--at"}, Line{Placed("--at", "1,2,3"), "--at"},
                    Line{Placed("--at", "1.5,2"), "--at"}, Line{Placed("--at", "-10000,2"), "--at"},
                    Line{Placed("--level", "0"), "--level"}, Line{Placed("--level", "1000"), "--level"},
                    Line{Placed("--attach", "999"), "--attach"},
                    Line{Placed("--box", "1,2,3,4"), "--box: must follow the --graphic"},
                    Line{Create({"--graphic", "x.cgm", "--box", "1,2,3"}), "--box: '1,2,3'"},
                    Line{Create({"--graphic", "x.cgm", "--box", "9,9,5,5"}), "LEFT < RIGHT"},
                    Line{Create({"--security", "X"}), "--security"}, Line{Create({"--background", "red"}), "RRGGBB"},
                    Line{Create({"--title", std::string(81, 'x')}), "more than 80"},
                    Line{Create({"--origin", "elevenbytes"}), "more than 10"},
                    Line{Create({"--title", "a\xe6\x97\xa5"}), "has '\xe6\x97\xa5', which header"},
                    Line{Create({"--title", "a", "--title", "b"}), "--title can be given only once"},
                    Line{Create({"--image", "a.pgm", "--level", "999", "--image", "a.pgm"}), "no display level above"},
                    Line{Create({"--image", "a.pgm", "--level", "2", "--attach", "2"}), "its own display level 2"}));

// ---- inputs that would be overwritten, and fields -----------------------------------------------------------------

INSTANTIATE_TEST_SUITE_P(
    Inputs, WrongUsage,
    testing::Values(Line{{"create", "-o", "a.pgm", "--force", "--image", "a.pgm"}, "a.pgm: is an input"},
                    Line{{"append", "a.ntf", "-o", "./a.pgm", "--force", "--text", "a.pgm"}, "is an input"}));

std::vector<std::string> Set(const std::string &field) {
  return {"set", "a.ntf", "-o", "b.ntf", field};
}

INSTANTIATE_TEST_SUITE_P(
    Set, WrongUsage,
    testing::Values(
        Line{Set("FOO=1"), "the file header has no field FOO"}, Line{Set("FL=1"), "FL depends on the data"},
        Line{Set("FSCLAS"), "is not FIELD=VALUE"}, Line{Set("FSCLAS=UU"), "FSCLAS can't hold 'UU': it has more than 1"},
        Line{Set("FSCLAS=X"), "FSCLAS is 'X', not one of"},
        Line{Set("FSCOP=x"), "FSCOP can't hold 'x': it is not a number of up to 5"},
        Line{Set("FDT=yesterday"), "FDT is not a date"},
        Line{Set("FTITLE=a\x07"), "header fields can't have the byte 0x07"},
        Line{{"set", "a.ntf", "-o", "b.ntf", "ILOC=a,b", "--image", "0"}, "ILOC can't hold 'a,b': it is not ROW"},
        Line{{"set", "a.ntf", "-o", "b.ntf", "IDLVL=0", "--image", "0"}, "IDLVL is 0"},
        Line{{"set", "a.ntf", "-o", "b.ntf", "IALVL=1", "--image", "0"}, "IALVL attaches image 0 to its own"},
        Line{{"set", "a.ntf", "-o", "b.ntf", "TXTITL=x", "--text", "1"}, "there is no text 1"}));

TEST_F(CommandLine, AnOutputNeverReplacesItsInput) {
  NitfBuilder().Image(SmallImage()).Write(PathOf("a.png"));
  const std::string before = ReadText("a.png");
  std::filesystem::create_symlink("a.png", PathOf("link.ppm"));
  for (const char *output : {"a.png", "link.ppm"}) {
    const ProgramRun run = Run({"render", "a.png", "-o", output, "--force"});
    EXPECT_EQ(run.exitCode, 2);
    EXPECT_NE(run.errors.find("is an input of the command"), std::string::npos) << run.errors;
    EXPECT_EQ(ReadText("a.png"), before);
  }
  std::filesystem::rename(PathOf("a.png"), PathOf("manifest.json"));
  EXPECT_EQ(Run({"extract", "manifest.json", "-o", ".", "--force"}).exitCode, 2);
  EXPECT_EQ(ReadText("manifest.json"), before);
}

}  // namespace
