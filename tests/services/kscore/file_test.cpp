#include "service_test.h"

#include <filesystem>
#include <fstream>

namespace {

namespace fs = std::filesystem;

KsHandle OpenToRead(const fs::path &path) {
  return KsOpen(path.u16string().c_str(), KS_OPEN_READ, KS_MODE_READ);
}
KsHandle OpenToCreate(const fs::path &path) {
  return KsOpen(path.u16string().c_str(), KS_OPEN_CREATE, KS_MODE_CREATE);
}

template <class Base>
class WithFolder : public Base {
  TemporaryFolder temporary;

 protected:
  const fs::path folder = temporary.Path("");
};

using FileTest = WithFolder<ServiceTest>;

/** Random steps on a file, checked against plain bytes. The parameter starts the random numbers. */
class FileModelTest : public WithFolder<ServiceTestWith<uint32_t>> {
 protected:
  void Seek() {
    const auto origin = static_cast<uint32_t>(random() % 3);
    const auto size = static_cast<int64_t>(model.size());
    const int64_t base = origin == KS_SEEK_START ? 0 : origin == KS_SEEK_CURRENT ? position : size;
    const int64_t target = random() % 4 == 0 ? size : static_cast<int64_t>(random() % (model.size() + 100000));
    ASSERT_EQ(KsSeek(file, target - base, origin), target);
    position = target;
  }

  void Read() {
    const uint64_t asked = SomeSize();
    const auto at = static_cast<uint64_t>(position);
    const uint64_t expected = at >= model.size() ? 0 : std::min<uint64_t>(asked, model.size() - at);
    Bytes buffer(asked + 1);
    ASSERT_EQ(KsRead(file, buffer.data(), asked), expected);
    const auto expectedStart = model.begin() + (expected == 0 ? 0 : position);
    ASSERT_TRUE(std::equal(expectedStart, expectedStart + static_cast<int64_t>(expected), buffer.begin())) << at;
    position += static_cast<int64_t>(expected);
  }

  void Write() {
    const Bytes bytes = RandomBytes(SomeSize(), static_cast<uint32_t>(random()));
    const uint64_t end = static_cast<uint64_t>(position) + bytes.size();
    ASSERT_EQ(KsWrite(file, bytes.data(), bytes.size()), bytes.size());
    if (!bytes.empty() && end > model.size()) model.resize(end);
    std::copy(bytes.begin(), bytes.end(), model.begin() + (bytes.empty() ? 0 : position));
    position += static_cast<int64_t>(bytes.size());
  }

  /** Mostly field sizes, sometimes rows, now and then more than any buffer holds. */
  uint64_t SomeSize() {
    const uint64_t bounds[] = {4, 20, 20, 3000, 3000, 40000, 700000};
    return random() % bounds[random() % std::size(bounds)];
  }

  std::mt19937 random{GetParam()};
  KsHandle file = KS_INVALID_HANDLE;
  Bytes model;
  int64_t position = 0;
};

TEST_P(FileModelTest, ReadsWhatTheFileHas) {
  model = RandomBytes(900000, GetParam());
  WriteFile(folder / "read", model);
  file = OpenToRead(folder / "read");
  ASSERT_NE(file, KS_INVALID_HANDLE);
  for (int step = 0; step < 400 && !HasFatalFailure(); ++step) random() % 3 == 0 ? Seek() : Read();
  EXPECT_EQ(KsClose(file), SUCCESS);
}

TEST_P(FileModelTest, WritesReadsAndPatchesInAnyOrder) {
  file = OpenToCreate(folder / "written");
  ASSERT_NE(file, KS_INVALID_HANDLE);
  for (int step = 0; step < 400 && !HasFatalFailure(); ++step) {
    const auto kind = random() % 8;
    kind < 2 ? Seek() : kind < 4 ? Read() : Write();
  }
  EXPECT_EQ(KsClose(file), SUCCESS);
  EXPECT_TRUE(ReadFile(folder / "written") == model);
}

INSTANTIATE_TEST_SUITE_P(Seeds, FileModelTest, testing::Range(1u, 9u));

TEST_F(FileTest, FileThatShrinksEndsEarlier) {
  WriteFile(folder / "file", RandomBytes(1000000, 1));
  const KsHandle file = OpenToRead(folder / "file");
  Bytes buffer(600000);
  EXPECT_EQ(KsRead(file, buffer.data(), 10), 10u);
  fs::resize_file(folder / "file", 500000);
  KsSeek(file, 400000, KS_SEEK_START);
  EXPECT_EQ(KsRead(file, buffer.data(), buffer.size()), 100000u);
  KsSeek(file, 450000, KS_SEEK_START);
  EXPECT_EQ(KsRead(file, buffer.data(), 100000), 50000u);
  KsSeek(file, 600000, KS_SEEK_START);
  EXPECT_EQ(KsRead(file, buffer.data(), 10), 0u);
  KsClose(file);
}

TEST_F(FileTest, SeekNeverGoesBeforeTheStartOrBeyondThePositions) {
  WriteFile(folder / "file", Bytes(100));
  const KsHandle file = OpenToRead(folder / "file");
  KsSeek(file, 40, KS_SEEK_START);
  EXPECT_EQ(KsSeek(file, -41, KS_SEEK_CURRENT), -1);
  EXPECT_EQ(KsSeek(file, -1, KS_SEEK_START), -1);
  EXPECT_EQ(KsSeek(file, -101, KS_SEEK_END), -1);
  EXPECT_EQ(KsSeek(file, INT64_MAX, KS_SEEK_CURRENT), -1);
  EXPECT_EQ(KsSeek(file, 0, 3), -1);
  EXPECT_EQ(KsSeek(file, 0, KS_SEEK_CURRENT), 40);
  uint8_t byte = 0;
  EXPECT_EQ(KsSeek(file, INT64_MAX, KS_SEEK_START), INT64_MAX);
  EXPECT_EQ(KsRead(file, &byte, 1), 0u);
  KsClose(file);
}

TEST_F(FileTest, NoFileIsHarmless) {
  uint8_t byte = 0;
  for (const KsHandle none : {KsHandle{0}, KS_INVALID_HANDLE}) {
    EXPECT_EQ(KsRead(none, &byte, 1), 0u);
    EXPECT_EQ(KsWrite(none, &byte, 1), 0u);
    EXPECT_EQ(KsSeek(none, 0, KS_SEEK_START), -1);
    EXPECT_LT(KsClose(none), 0);
  }
  EXPECT_EQ(OpenToRead(folder), KS_INVALID_HANDLE) << "a folder";
  EXPECT_EQ(OpenToRead(folder / "missing"), KS_INVALID_HANDLE);
  EXPECT_EQ(OpenToCreate(folder / "missing" / "file"), KS_INVALID_HANDLE);
  EXPECT_EQ(KsOpen(nullptr, KS_OPEN_READ, KS_MODE_READ), KS_INVALID_HANDLE);
  EXPECT_EQ(KsOpen((folder / "file").u16string().c_str(), 0x8001, KS_MODE_CREATE), KS_INVALID_HANDLE);
}

TEST_F(FileTest, ReadingHandleDoesNotWrite) {
  WriteFile(folder / "file", Bytes(5, 7));
  const KsHandle file = OpenToRead(folder / "file");
  EXPECT_EQ(KsWrite(file, "x", 1), 0u);
  EXPECT_EQ(KsClose(file), ERROR_FILE_WRITE);
  EXPECT_EQ(ReadFile(folder / "file"), Bytes(5, 7));
}

TEST_F(FileTest, CreatingEmptiesAnOlderFile) {
  WriteFile(folder / "file", Bytes(5, 7));
  EXPECT_EQ(KsClose(OpenToCreate(folder / "file")), SUCCESS);
  EXPECT_TRUE(ReadFile(folder / "file").empty());
}

TEST_F(FileTest, CopiesCountWhatTheSourceHoldsBack) {
  const KsHandle source = OpenToCreate(folder / "a");
  const KsHandle target = OpenToCreate(folder / "b");
  Bytes bytes = RandomBytes(1 << 20, 1);
  for (size_t at = 0; at < bytes.size(); at += 1024) ASSERT_EQ(KsWrite(source, bytes.data() + at, 1024), 1024u);
  // What is written over earlier bytes is held back too.
  std::fill_n(bytes.begin() + 5000, 100, uint8_t{0xEE});
  KsSeek(source, 5000, KS_SEEK_START);
  ASSERT_EQ(KsWrite(source, bytes.data() + 5000, 100), 100u);
  KsSeek(source, 0, KS_SEEK_START);
  ASSERT_EQ(KsCopyBytes(target, source, bytes.size()), SUCCESS);
  KsClose(source);
  KsClose(target);
  EXPECT_EQ(ReadFile(folder / "b"), bytes);
}

#ifdef __linux__

/** A counter of the process, such as the read calls that it has made. */
uint64_t ProcessCounter(const std::string &name) {
  std::ifstream stream("/proc/self/io");
  std::string word;
  uint64_t value = 0;
  while (stream >> word >> value) {
    if (word == name + ":") return value;
  }
  ADD_FAILURE() << "no counter " << name;
  return 0;
}

TEST_F(FileTest, RowsOfThreePlanesReadTwiceCostFewSystemCalls) {
  constexpr int64_t plane = 1 << 20;
  constexpr int64_t row = 4000;
  WriteFile(folder / "file", Bytes(3 * plane));
  const KsHandle file = OpenToRead(folder / "file");
  Bytes buffer(row);
  const uint64_t before = ProcessCounter("syscr");
  for (int64_t offset = 0; offset + row <= plane; offset += row) {
    for (const int64_t band : {0, 2, 1, 0, 2, 1}) {
      KsSeek(file, band * plane + offset, KS_SEEK_START);
      ASSERT_EQ(KsRead(file, buffer.data(), row), static_cast<uint64_t>(row));
    }
  }
  EXPECT_LT(ProcessCounter("syscr") - before, 60u) << "for 1572 row reads";
  KsClose(file);
}

TEST_F(FileTest, ScatteredHeadersDoNotReadTheBodiesBetween) {
  WriteFile(folder / "file", {});
  fs::resize_file(folder / "file", uint64_t{200} << 20);
  const KsHandle file = OpenToRead(folder / "file");
  Bytes buffer(400);
  const uint64_t before = ProcessCounter("rchar");
  for (int64_t i = 0; i < 999; ++i) {
    KsSeek(file, i * 200000, KS_SEEK_START);
    ASSERT_EQ(KsRead(file, buffer.data(), buffer.size()), buffer.size());
  }
  EXPECT_LT(ProcessCounter("rchar") - before, uint64_t{999} * 16500);
  KsClose(file);
}

TEST_F(FileTest, SingleBytesAndPatchesAreWrittenTogether) {
  const KsHandle file = OpenToCreate(folder / "file");
  const uint64_t before = ProcessCounter("syscw");
  for (int i = 0; i < 100000; ++i) KsWrite(file, "0", 1);
  KsSeek(file, 300, KS_SEEK_START);
  for (int i = 0; i < 10; ++i) KsWrite(file, "1", 1);
  KsSeek(file, 0, KS_SEEK_END);
  for (int i = 0; i < 100000; ++i) KsWrite(file, "2", 1);
  EXPECT_EQ(KsClose(file), SUCCESS);
  EXPECT_LT(ProcessCounter("syscw") - before, 6u);
}

TEST_F(FileTest, FullDeviceShowsAtCloseAtTheLatest) {
  const KsHandle small = KsOpen(u"/dev/full", KS_OPEN_CREATE, KS_MODE_CREATE);
  ASSERT_NE(small, KS_INVALID_HANDLE);
  KsWrite(small, "header", 6);
  EXPECT_EQ(KsClose(small), ERROR_FILE_WRITE);

  const KsHandle large = KsOpen(u"/dev/full", KS_OPEN_CREATE, KS_MODE_CREATE);
  const Bytes body(1 << 20);
  EXPECT_LT(KsWriteBlock(large, body.data(), body.size()), body.size());
  EXPECT_EQ(KsWrite(large, "more", 4), 0u);
  EXPECT_EQ(KsClose(large), ERROR_FILE_WRITE);
}

#endif

struct NameCase {
  const char *narrow;
  std::u16string wide;
};

class NameTest : public WithFolder<ServiceTestWith<NameCase>> {};

TEST_P(NameTest, GoesToUtf16AndNamesTheSameFile) {
  char16_t *const wide = KsToWide(GetParam().narrow);
  ASSERT_NE(wide, nullptr);
  EXPECT_EQ(std::u16string(wide), GetParam().wide);
  KsToWideFree(wide);
  const std::u16string path = folder.u16string() + u"/" + GetParam().wide;
  const KsHandle file = KsOpen(path.c_str(), KS_OPEN_CREATE, KS_MODE_CREATE);
  ASSERT_NE(file, KS_INVALID_HANDLE);
  KsClose(file);
  EXPECT_EQ(fs::directory_iterator(folder)->path().filename().string(), GetParam().narrow);
}

INSTANTIATE_TEST_SUITE_P(Names, NameTest,
                         testing::Values(NameCase{"plain.ntf", u"plain.ntf"},
                                         NameCase{"b\xC3\xBCro.ntf", u"b\u00FCro.ntf"},
                                         NameCase{"\xE5\x9C\xB0\xE5\x9B\xB3", u"\u5730\u56F3"},
                                         NameCase{"\xF0\x9F\x9B\xB0.ntf", u"\U0001F6F0.ntf"},
                                         NameCase{"\xEF\xBF\xBD", u"\uFFFD"}));

TEST_F(FileTest, MalformedNamesAreRefused) {
  // A stray continuation, a cut character, overlong forms, a surrogate, a value beyond Unicode, a byte of no character.
  for (const char *name : {"a\x80", "a\xC3", "\xE5\x9C", "\xC0\x80", "\xE0\x80\xAF", "\xF0\x80\x80\xAF", "\xED\xA0\x80",
                           "\xF4\x90\x80\x80", "\xF8\x88\x80\x80\x80", "\xFF"}) {
    EXPECT_EQ(KsToWide(name), nullptr) << testing::PrintToString(std::string(name));
  }
  EXPECT_EQ(KsToWide(nullptr), nullptr);
  for (const char16_t surrogate : {u'\xD800', u'\xDBFF', u'\xDC00'}) {
    const std::u16string path = folder.u16string() + u"/" + surrogate + u"x";
    EXPECT_EQ(KsOpen(path.c_str(), KS_OPEN_CREATE, KS_MODE_CREATE), KS_INVALID_HANDLE);
  }
}

}  // namespace
