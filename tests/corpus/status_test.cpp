// Which sample files are accepted, and how large their pictures are.
#include "corpus.h"
#include "harness.h"
#include "sample_files.h"

#include <algorithm>
#include <filesystem>

#include <gtest/gtest.h>

namespace {

class SampleFiles : public testing::TestWithParam<SampleFile> {};

TEST_P(SampleFiles, GiveTheirStatusAndCanvas) {
  const SampleFile &sample = GetParam();
  const auto path = CorpusFile(sample.name);
  if (!path) GTEST_SKIP() << sample.name << kNotAtHand;
  const PlatformWatch quiet;
  const auto blocksBefore = LiveBlocks();

  const Information information = Inform(*path);
  EXPECT_EQ(information.status, sample.info);
  if (sample.info == SUCCESS) {
    EXPECT_EQ(information.info.width, sample.width);
    EXPECT_EQ(information.info.height, sample.height);
  }

  const Composition picture = Compose(*path);
  EXPECT_EQ(picture.status, sample.load);
  EXPECT_EQ(picture.rows.size(), sample.load == SUCCESS ? sample.height : 0);
  if (sample.load == SUCCESS) {
    EXPECT_EQ(picture.width, sample.width);
  }
  EXPECT_EQ(LiveBlocks(), blocksBefore);
}

INSTANTIATE_TEST_SUITE_P(Corpus, SampleFiles, testing::ValuesIn(kSampleFiles),
                         [](const auto &tested) { return TestName(tested.param.name); });

bool IsListed(const std::string &name) {
  return std::any_of(std::begin(kSampleFiles), std::end(kSampleFiles),
                     [&](const SampleFile &sample) { return name == sample.name; });
}

/** Files that nothing is known of: other samples, and whatever else lies in the folder, which is no NITF file. */
TEST(OtherFiles, LoadOrAreRefused) {
  const auto folder = CorpusFolder();
  if (!folder) GTEST_SKIP() << "KSNTFX_CORPUS is not set";
  const PlatformWatch quiet;
  for (const auto &entry : std::filesystem::recursive_directory_iterator(*folder)) {
    if (!entry.is_regular_file() || IsListed(entry.path().filename().string())) continue;
    const auto blocksBefore = LiveBlocks();
    const std::string path = entry.path().string();
    const std::int32_t info = Inform(path).status;
    EXPECT_TRUE(info == SUCCESS || info < 0) << path << ": " << info;
    const Composition picture = Compose(path);
    EXPECT_TRUE(picture.status == SUCCESS || picture.status < 0) << path << ": " << picture.status;
    EXPECT_EQ(picture.rows.empty(), picture.status != SUCCESS) << path;
    EXPECT_EQ(LiveBlocks(), blocksBefore) << path;
  }
}

}  // namespace
