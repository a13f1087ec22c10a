// What the program tells of the sample files.
#include "corpus.h"
#include "program_test.h"
#include "sample_files.h"

#include <filesystem>

#include <nlohmann/json.hpp>

namespace {

using Json = nlohmann::json;

class Descriptions : public ProgramTest, public testing::WithParamInterface<SampleFile> {};

TEST_P(Descriptions, AreValidJson) {
  const SampleFile &sample = GetParam();
  const auto path = CorpusFile(sample.name);
  if (!path) GTEST_SKIP() << sample.name << kNotAtHand;
  const ProgramRun run = Run({"info", "--strict", "--json", std::filesystem::absolute(*path).string()});
  if (!sample.Accepted()) {
    EXPECT_EQ(run.exitCode, 1);
    EXPECT_NE(run.errors.find("(status " + std::to_string(sample.info) + ")"), std::string::npos) << run.errors;
    return;
  }
  ASSERT_EQ(run.exitCode, 0) << run.errors;
  const Json description = Json::parse(run.output);
  const Json &file = description.at("file");
  EXPECT_EQ(file.at("FL"), std::filesystem::file_size(*path));
  EXPECT_EQ(file.at("NUMI"), description.at("images").size());
  EXPECT_EQ(file.at("NUMS"), description.at("graphics").size());
  EXPECT_EQ(file.at("NUMT"), description.at("texts").size());
  EXPECT_EQ(file.at("NUMDES"), description.at("dataExtensions").size());
  if (description["images"].empty() && description["graphics"].empty()) {
    EXPECT_TRUE(description.at("canvas").is_null()) << "there is nothing to draw";
  } else if (sample.info == SUCCESS) {
    EXPECT_EQ(description.at("canvas"), Json({{"width", sample.width}, {"height", sample.height}}));
  } else {
    EXPECT_TRUE(description.at("canvas").is_null());
    EXPECT_EQ(description.at("canvasStatus"), sample.info);
  }
}

INSTANTIATE_TEST_SUITE_P(Corpus, Descriptions, testing::ValuesIn(kSampleFiles),
                         [](const auto &tested) { return TestName(tested.param.name); });

}  // namespace
