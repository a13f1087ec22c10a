// Sample files that are opened and saved: the bodies, the picture, and a second save of the first.
#include "corpus.h"
#include "harness.h"
#include "opened_file.h"
#include "sample_files.h"

#include <gtest/gtest.h>

namespace {

void Save(const std::string &from, const std::string &to) {
  NitfHandle handle = nullptr;
  ASSERT_EQ(K_NITFCreateA(&handle, from.c_str()), SUCCESS);
  EXPECT_EQ(K_NITFSaveFileA(handle, to.c_str()), SUCCESS);
  K_NITFDestroy(&handle);
}

/** The bodies of all segments of a file, kind by kind. */
std::vector<Bytes> Bodies(const std::string &path) {
  LocalNitfFile file;
  EXPECT_EQ(Load(file.Get(), Wide(path).c_str()), SUCCESS);
  std::vector<Bytes> bodies;
  for (const SegmentKind kind :
       {SegmentKind::Image, SegmentKind::Graphic, SegmentKind::Text, SegmentKind::DataExtension}) {
    for (std::uint32_t index = 0; index < CountSegments(file.Get(), kind); ++index) {
      Bytes body(DataLength(file.Get(), kind, index));
      SeekSegmentData(file.Get(), kind, index);
      EXPECT_EQ(KsRead(file->fileHandle, body.data(), body.size()), body.size());
      bodies.push_back(std::move(body));
    }
  }
  return bodies;
}

class SavedSamples : public testing::TestWithParam<SampleFile> {};

TEST_P(SavedSamples, KeepTheirBodiesAndTheirPicture) {
  const SampleFile &sample = GetParam();
  const auto path = CorpusFile(sample.name);
  if (!path) GTEST_SKIP() << sample.name << kNotAtHand;
  if (!sample.Accepted()) GTEST_SKIP() << sample.name << " is refused";
  const TemporaryFolder folder;
  const std::string saved = folder.Path("saved.ntf");
  const std::string again = folder.Path("again.ntf");
  Save(*path, saved);
  Save(saved, again);
  EXPECT_EQ(Bodies(saved), Bodies(*path));
  EXPECT_EQ(ReadFile(again), ReadFile(saved));
  const Composition before = Compose(*path);
  const Composition after = Compose(saved);
  EXPECT_EQ(after.status, before.status);
  ASSERT_EQ(after.rows.size(), before.rows.size());
  for (std::size_t row = 0; row < before.rows.size(); ++row) {
    ASSERT_EQ(after.rows[row].bytes, before.rows[row].bytes) << row;
  }
}

INSTANTIATE_TEST_SUITE_P(Corpus, SavedSamples, testing::ValuesIn(kSampleFiles),
                         [](const auto &tested) { return TestName(tested.param.name); });

}  // namespace
