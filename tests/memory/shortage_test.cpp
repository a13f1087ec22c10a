// Every allocation on the roads of a client fails once: there is a status or the right result, nothing is lost, and
// what was open goes on working.
#include "shortage.h"

#include "internal/ksclasses_.h"
#include "opened_file.h"
#include "row_sum.h"
#include "small_files.h"

#include <gtest/gtest.h>

namespace {

/**
 * Runs `road` while its first, second and every further allocation fails, and then while none does. It gives a status,
 * and takes no memory of its own.
 */
template <class Road>
void FailEachAllocation(Road road) {
  constexpr std::int64_t kMost = 100'000;
  for (const MemorySource source : {MemorySource::Framework, MemorySource::Language}) {
    bool ranOut = true;
    for (std::int64_t allowed = 0; ranOut; ++allowed) {
      ASSERT_LT(allowed, kMost);
      const auto before = LiveBlocks();
      BeginShortage(source, allowed);
      const std::int32_t status = road();
      ranOut = EndShortage(source);
      ASSERT_TRUE(status == SUCCESS || (ranOut && status < 0)) << status << " after " << allowed;
      ASSERT_EQ(LiveBlocks(), before) << "after " << allowed;
    }
  }
}

class Shortage : public testing::TestWithParam<SmallFile> {
 protected:
  Shortage() : path(folder.Path("file.ntf")), name(Wide(path)) { WriteFile(path, GetParam().bytes); }

  TemporaryFolder folder;
  const std::string path;
  const std::u16string name;
};

TEST_P(Shortage, OfALoad) {
  FailEachAllocation([this] {
    NitfHandle handle = nullptr;
    const std::int32_t status = K_NITFCreate(&handle, name.c_str());
    K_NITFDestroy(&handle);
    return status;
  });
}

TEST_P(Shortage, OfAComposition) {
  for (const std::uint32_t bits : {8U, 24U}) {
    const RowSum whole = SumRows(name.c_str(), bits);
    ASSERT_EQ(whole.status, SUCCESS);
    FailEachAllocation([&] {
      const RowSum picture = SumRows(name.c_str(), bits);
      if (picture.status == SUCCESS) {
        EXPECT_EQ(picture, whole);
      }
      return picture.status;
    });
  }
}

TEST_P(Shortage, OfASave) {
  const Opened opened(GetParam().bytes);
  const Bytes whole = opened.Saved();
  const std::u16string out = Wide(opened.Path("short.ntf"));
  bool saved = false;
  FailEachAllocation([&] {
    const std::int32_t status = K_NITFSaveFile(opened.Get(), out.c_str());
    saved = saved || status == SUCCESS;
    return status;
  });
  ASSERT_TRUE(saved);
  EXPECT_EQ(ReadFile(opened.Path("short.ntf")), whole);
  EXPECT_EQ(opened.Saved(), whole) << "the handle is as it was";
}

INSTANTIATE_TEST_SUITE_P(Files, Shortage, testing::ValuesIn(SmallFiles()),
                         [](const auto &given) { return given.param.name; });

class ShortageOfAuthoring : public testing::Test {
 protected:
  ShortageOfAuthoring() : text(Wide(folder.Path("note.txt"))), out(Wide(folder.Path("out.ntf"))) {
    WriteFile(folder.Path("note.txt"), {'n', 'o', 't', 'e'});
    EXPECT_EQ(
        KsBitmapCreate(bitmap.Get(), sizeof(KsBitmap), KS_BITMAP_OWN, 20, 10, 24, KS_ORDER_BGR, nullptr, 1, nullptr, 0),
        SUCCESS);
    KsVectorLine line{};
    line.structureSize = sizeof line;
    line.kind = KS_VECTOR_LINE;
    line.second.x = 9;
    line.pen.structureSize = sizeof line.pen;
    KsVectorAddObject(drawing.Get(), 0, KS_VECTOR_LINE, &line, 0);
  }

  /** One road through the authoring functions, which ends at the first failure. */
  std::int32_t Author() {
    const KsRect rectangle = {0, 0, 20, 10};
    NitfHandle handle = nullptr;
    std::int32_t status = K_NITFCreate(&handle, nullptr);
    if (status == SUCCESS) status = K_NITFAppendImageSegment(handle, bitmap.Get(), KS_FORMAT_JPEG, 24, 10);
    if (status == SUCCESS) status = K_NITFAppendGraphicSegment(handle, drawing.Get(), &rectangle);
    if (status == SUCCESS) status = K_NITFAppendTextSegment(handle, text.c_str());
    if (status == SUCCESS) status = K_NITFSetVectorHandle(handle, 0, drawing.Get());
    if (status == SUCCESS) status = Change(handle, K_NITFGetImageHeader, K_NITFSetImageHeader, K_NITFFreeImageHeader);
    if (status == SUCCESS) {
      status = Change(handle, K_NITFGetGraphicHeader, K_NITFSetGraphicHeader, K_NITFFreeGraphicHeader);
    }
    if (status == SUCCESS) status = Change(handle, K_NITFGetTextHeader, K_NITFSetTextHeader, K_NITFFreeTextHeader);
    if (status == SUCCESS) status = K_NITFSaveFile(handle, out.c_str());
    // A new file's header has no length in its record: stored again, it would leave the segments without their places.
    if (status == SUCCESS) status = ChangeHeader(handle);
    K_NITFDestroy(&handle);
    return status;
  }

  /** Takes a record out and puts it back, and frees it twice. */
  template <class Info>
  static std::int32_t Change(NitfHandle handle, std::int32_t (*get)(NitfHandle, std::uint32_t, Info *),
                             std::int32_t (*set)(NitfHandle, std::uint32_t, const Info *),
                             std::int32_t (*free)(Info *)) {
    Info info{};
    std::int32_t status = get(handle, 0, &info);
    if (status == SUCCESS) status = set(handle, 0, &info);
    EXPECT_EQ(free(&info), SUCCESS);
    EXPECT_EQ(free(&info), SUCCESS);
    return status;
  }

  static std::int32_t ChangeHeader(NitfHandle handle) {
    return Change<NitfHeaderInfo>(
        handle, [](NitfHandle file, std::uint32_t, NitfHeaderInfo *info) { return K_NITFGetNITFHeader(file, info); },
        [](NitfHandle file, std::uint32_t, const NitfHeaderInfo *info) { return K_NITFSetNITFHeader(file, info); },
        K_NITFFreeNITFHeader);
  }

  TemporaryFolder folder;
  const std::u16string text;
  const std::u16string out;
  KsLocalBitmap bitmap;
  KsLocalVector drawing;
};

TEST_F(ShortageOfAuthoring, IsAStatusEverywhere) {
  FailEachAllocation([this] { return Author(); });
}

TEST_F(ShortageOfAuthoring, OrADrawingThatIsNotThere) {
  ASSERT_EQ(Author(), SUCCESS);
  const Opened opened(ReadFile(folder.Path("out.ntf")));
  FailEachAllocation([&] {
    NitfHandle handle = nullptr;
    std::int32_t status = K_NITFCreate(&handle, out.c_str());
    if (status == SUCCESS && K_NITFGetVectorHandle(handle, 0) == nullptr) status = ERROR_NO_MEMORY;
    K_NITFDestroy(&handle);
    return status;
  });
}

}  // namespace
