// Files that are made from the bytes of others.
#include "save/splice.h"

#include "harness.h"

#include <cstdlib>
#include <filesystem>
#include <fstream>

#include <gtest/gtest.h>

using namespace ksntfx;

namespace {

class SpliceTest : public testing::Test {
 protected:
  KsHandle Open(const std::string &name, const std::string &bytes) {
    WriteFile(folder.Path(name), Bytes(bytes.begin(), bytes.end()));
    return Open(name);
  }
  KsHandle Open(const std::string &name) {
    handles.push_back(KsOpen(Wide(folder.Path(name)).c_str(), KS_OPEN_READ, KS_MODE_READ));
    return handles.back();
  }
  std::string Written(const Splice &splice) {
    const KsHandle out = KsOpen(Wide(folder.Path("out")).c_str(), KS_OPEN_CREATE, KS_MODE_CREATE);
    EXPECT_EQ(splice.WriteTo(out), SUCCESS);
    EXPECT_EQ(KsClose(out), SUCCESS);
    return TextOf(ReadFile(folder.Path("out")));
  }
  void TearDown() override {
    for (const KsHandle handle : handles) KsClose(handle);
  }

  TemporaryFolder folder;
  std::vector<KsHandle> handles;
};

TEST_F(SpliceTest, ChangesAreInPlaceInAnyOrder) {
  const KsHandle source = Open("in", "0123456789");
  Splice splice(source);
  EXPECT_EQ(Written(splice), "0123456789");
  const std::string held = "held";
  splice.Replace(8, "XY");
  splice.Insert(10, "end");
  splice.Replace(0, "ab");
  splice.Insert(8, "one");
  splice.InsertHeld(8, held);
  splice.Insert(0, "front");
  EXPECT_EQ(splice.Length(), 25U);
  const std::string expected = "frontab234567oneheldXYend";
  EXPECT_EQ(Written(splice), expected);
  EXPECT_EQ(splice.CompareWith(Open("same", expected)), SUCCESS);
  for (const std::size_t at : {0U, 6U, 9U, 17U, 24U}) {
    std::string other = expected;
    other[at] = '!';
    EXPECT_EQ(splice.CompareWith(Open("other", other)), ERROR_FILE_WRITE) << at;
  }
  EXPECT_EQ(splice.CompareWith(Open("other", expected + "x")), ERROR_FILE_WRITE);
  EXPECT_EQ(splice.CompareWith(Open("other", expected.substr(1))), ERROR_FILE_WRITE);
}

TEST_F(SpliceTest, SegmentsGoBehindAnImageOfMoreThan4GiB) {
  constexpr std::uint64_t kImageBytes = (std::uint64_t{1} << 32) + 5;
  std::string front = TextOf(NitfBuilder().Image(SixPixels()).Build());
  front.resize(front.size() - 6);
  front.replace(369, 10, std::to_string(kImageBytes));
  front.replace(342, 12, "00" + std::to_string(front.size() + kImageBytes));
  std::ofstream(folder.Path("in"), std::ios::binary) << front;
  std::filesystem::resize_file(folder.Path("in"), front.size() + kImageBytes);

  LocalNitfFile file;
  file->longPlaces = 1;
  ASSERT_EQ(Load(file.Get(), Wide(folder.Path("in")).c_str()), SUCCESS);
  EXPECT_EQ(EndOfKind(file.Get(), SegmentKind::Image), front.size() + kImageBytes);
  NitfHandle added = nullptr;
  ASSERT_EQ(K_NITFCreate(&added, nullptr), SUCCESS);
  WriteFile(folder.Path("words.txt"), {'w', 'o', 'r', 'd', 's'});
  ASSERT_EQ(K_NITFAppendTextSegmentA(added, folder.Path("words.txt").c_str()), SUCCESS);
  ASSERT_EQ(K_NITFSaveFileA(added, folder.Path("added").c_str()), SUCCESS);
  const std::string saved = TextOf(ReadFile(folder.Path("added")));
  const std::string text = saved.substr(397);
  ASSERT_TRUE(text.starts_with("TE"));

  std::string expected = front;
  expected.replace(385, 3, "001");  // NUMT
  expected.insert(388, saved.substr(372, 9));
  expected.replace(342, 12, "00" + std::to_string(front.size() + kImageBytes + 9 + text.size()));
  expected.replace(354, 6, "000413");  // of a file with one image 404, and a row for the text

  Splice splice(file->fileHandle);
  std::string_view field;
  ASSERT_EQ(SpliceSegments(file.Get(), added, &splice, &field), SUCCESS);
  std::string begin(expected.size(), ' ');
  ASSERT_EQ(splice.Read(0, begin.data(), begin.size()), SUCCESS);
  EXPECT_EQ(begin, expected);
  std::string end(text.size() + 1, ' ');
  ASSERT_EQ(splice.Read(expected.size() + kImageBytes - 1, end.data(), end.size()), SUCCESS);
  EXPECT_EQ(end, '\0' + text);
  EXPECT_EQ(splice.Length(), expected.size() + kImageBytes + text.size());
  char beyond = 0;
  EXPECT_EQ(splice.Read(splice.Length(), &beyond, 1), ERROR_FILE_READ);
  K_NITFDestroy(&added);
}

}  // namespace
