// What the command line takes, and how it tells what it doesn't.
#include "program_test.h"

namespace {

struct Usage {
  const char *name;
  std::vector<std::string> arguments;
  std::string words; /* expected in what is printed */
};

std::string NameOf(const testing::TestParamInfo<Usage> &info) {
  return info.param.name;
}

class Help : public ProgramTest, public testing::WithParamInterface<Usage> {};

TEST_P(Help, GoesToTheStandardOutput) {
  const ProgramRun run = Run(GetParam().arguments);
  EXPECT_EQ(run.exitCode, 0);
  EXPECT_NE(run.output.find(GetParam().words), std::string::npos) << run.output;
  EXPECT_EQ(run.errors, "");
}

INSTANTIATE_TEST_SUITE_P(Program, Help,
                         testing::Values(Usage{"Help", {"--help"}, "render"},
                                         Usage{"InfoHelp", {"info", "--help"}, "--json"},
                                         Usage{"RenderHelp", {"render", "--help"}, "--padded"},
                                         Usage{"Version", {"--version"}, "ntf "},
                                         Usage{"InfoVersion", {"info", "--version"}, "ntf "},
                                         Usage{"RenderVersion", {"render", "--version"}, "ntf "}),
                         NameOf);

class WrongUsage : public ProgramTest, public testing::WithParamInterface<Usage> {};

TEST_P(WrongUsage, EndsWithCode2AndWritesNothing) {
  const ProgramRun run = Run(GetParam().arguments);
  EXPECT_EQ(run.exitCode, 2);
  EXPECT_EQ(run.output, "");
  EXPECT_EQ(run.errors.rfind("ntf: ", 0), 0U) << run.errors;
  EXPECT_NE(run.errors.find(GetParam().words), std::string::npos) << run.errors;
  EXPECT_TRUE(FilesInFolder().empty());
}

INSTANTIATE_TEST_SUITE_P(
    Program, WrongUsage,
    testing::Values(
        Usage{"NoCommand", {}, "subcommand"}, Usage{"UnknownCommand", {"draw", "a.ntf"}, ""},
        Usage{"InfoWithoutFile", {"info"}, "FILE"}, Usage{"RenderWithoutFile", {"render", "-o", "a.png"}, "FILE"},
        Usage{"RenderWithoutOutput", {"render", "a.ntf"}, "--output"},
        Usage{"UnknownSuffix", {"render", "a.ntf", "-o", "a.jpg"}, ".png"},
        Usage{"NoSuffix", {"render", "a.ntf", "-o", "png"}, ".png"},
        Usage{"UnknownDepth", {"render", "a.ntf", "-o", "a.png", "--depth", "16"}, "--depth"},
        Usage{"CompressedTooMuch", {"render", "a.ntf", "-o", "a.png", "--compress", "10"}, "--compress"},
        Usage{"CompressedNegatively", {"render", "a.ntf", "-o", "a.png", "--compress", "-1"}, "--compress"},
        Usage{"CompressedPpm", {"render", "a.ntf", "-o", "a.ppm", "--compress", "1"}, "--compress"},
        Usage{"NegativeImage", {"render", "a.ntf", "-o", "a.png", "--image", "-1"}, "--image"},
        Usage{"PaddedWithoutImage", {"render", "a.ntf", "-o", "a.png", "--padded"}, "--image"},
        Usage{"DepthOfAnImage", {"render", "a.ntf", "-o", "a.png", "--image", "0", "--depth", "8"}, "--depth"},
        Usage{"ToneOfAnImage", {"render", "a.ntf", "-o", "a.png", "--image", "0", "--tone-check"}, "--tone-check"}),
    NameOf);

}  // namespace
