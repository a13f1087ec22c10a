#include "service_test.h"

namespace {

using MemoryTest = ServiceTest;

TEST_F(MemoryTest, BlocksAreCountedByKindUntilTheyGoBack) {
  const int64_t before = KsLiveBlocks(KS_MEMORY_BLOCK);
  void *const zeroed = KsCalloc(10, 4, __LINE__, __FILE__);
  void *block = KsRealloc(nullptr, 8, __LINE__, __FILE__);
  block = KsRealloc(block, 100000, __LINE__, __FILE__);
  EXPECT_EQ(KsLiveBlocks(KS_MEMORY_BLOCK), before + 2);
  KsFree(zeroed, __LINE__, __FILE__);
  KsFree(block, __LINE__, __FILE__);
  KsFree(nullptr, __LINE__, __FILE__);
  EXPECT_EQ(KsLiveBlocks(KS_MEMORY_BLOCK), before);
}

TEST_F(MemoryTest, ReportedBlocksAreCounted) {
  const int block = 0;
  KsTrackAlloc(KS_MEMORY_ARRAY, &block, __LINE__, __FILE__);
  KsTrackAlloc(KS_MEMORY_ARRAY, nullptr, __LINE__, __FILE__);
  KsTrackAlloc(KS_MEMORY_KINDS, &block, __LINE__, __FILE__);
  EXPECT_EQ(KsLiveBlocks(KS_MEMORY_ARRAY), 1);
  EXPECT_EQ(KsLiveBlocks(KS_MEMORY_KINDS), 0);
  KsTrackFree(KS_MEMORY_ARRAY, &block, __LINE__, __FILE__);
}

TEST_F(MemoryTest, SizesThatOverflowAreRefused) {
  EXPECT_EQ(KsCalloc(UINT64_MAX, 2, __LINE__, __FILE__), nullptr);
  EXPECT_EQ(KsAllocBlock(uint64_t{1} << 33, uint64_t{1} << 33, __LINE__, __FILE__), nullptr);
  EXPECT_EQ(KsAllocBlock(1, uint64_t{1} << 63, __LINE__, __FILE__), nullptr);
  KsArray<char> block;
  ASSERT_TRUE(block.Allocate(3));
  block[0] = 'k';
  EXPECT_EQ(KsRealloc(block.Get(), UINT64_MAX, __LINE__, __FILE__), nullptr);
  EXPECT_EQ(block[0], 'k');
}

TEST_F(MemoryTest, EmptyBlockIsStillABlock) {
  auto *block = static_cast<char *>(KsCalloc(0, 16, __LINE__, __FILE__));
  ASSERT_NE(block, nullptr);
  EXPECT_EQ(*block, 0);
  block = static_cast<char *>(KsRealloc(block, 0, __LINE__, __FILE__));
  ASSERT_NE(block, nullptr);
  KsFree(block, __LINE__, __FILE__);
}

/** Uses everything that allocates; true where all of it succeeded. */
bool UseEverything() {
  bool all = true;
  const auto expect = [&all](bool success) { all = all && success; };
  KsLocalBitmap indexed;
  KsLocalBitmap colors;
  KsLocalBitmap merged;
  KsLocalBitmap deep;
  const Palette palette = RandomPalette(256, 1);
  expect(Create(indexed, 30, 20, 8, palette.data()) == SUCCESS);
  expect(Create(colors, 30, 20, 24) == SUCCESS);
  expect(Create(deep, 30, 20, 16) == SUCCESS);
  expect(KsCombine(indexed.Get(), 0, 0, 30, 20, colors.Get(), 0, 0, 288, 0) == SUCCESS);
  KsBitmap *bands[] = {indexed.Get(), nullptr};
  expect(KsBandsMerge(merged.Get(), bands, sizeof(KsBitmap), 0) == SUCCESS);
  const Bytes row = RandomBytes(60, 2);
  expect(KsBitmapPutRow(deep.Get(), row.data(), 0, 60) == 60);
  expect(KsToneAdjust(deep.Get(), 350, 0) == SUCCESS);
  const KsLocalContext context(colors.Get());
  expect(context.Get() != nullptr);
  KsPalette *const object = KsPaintPalette(context.Get(), indexed.Get());
  expect(object != nullptr && KsBitmapSetLut(deep.Get(), object) == SUCCESS);
  KsObjectFree(object, __LINE__, __FILE__);
  expect(KsBitmapSetPalette(merged.Get(), 0, 1, palette.data()) == ERROR_BITS_PER_PIXEL || merged->bitsPerPixel == 0);
  char16_t *const name = KsToWide("name");
  expect(name != nullptr);
  KsToWideFree(name);
  return all;
}

TEST_F(MemoryTest, EveryAllocationMayFail) {
  int64_t successes = 0;
  for (;; ++successes) {
    const int64_t pixels = KsLiveBlocks(KS_MEMORY_PIXELS);
    KsFailAllocationsAfter(successes);
    const bool all = UseEverything();
    KsFailAllocationsAfter(-1);
    ASSERT_EQ(KsLiveBlocks(KS_MEMORY_PIXELS), pixels) << "after " << successes;
    if (all) break;
    ASSERT_LT(successes, 100);
  }
  EXPECT_GT(successes, 8) << "the allocations were not reached";
}

TEST_F(MemoryTest, FileWorksWithoutMemoryForItsBuffers) {
  const std::string narrow = testing::TempDir() + "services_unbuffered";
  const std::u16string name(narrow.begin(), narrow.end());
  KsHandle file = KsOpen(name.c_str(), KS_OPEN_CREATE, KS_MODE_CREATE);
  ASSERT_NE(file, KS_INVALID_HANDLE);
  KsFailAllocationsAfter(0);
  EXPECT_EQ(KsWrite(file, "header", 6), 6u);
  KsSeek(file, 2, KS_SEEK_START);
  std::array<char, 4> text = {};
  EXPECT_EQ(KsRead(file, text.data(), 4), 4u);
  EXPECT_EQ(std::string(text.data(), 4), "ader");
  EXPECT_EQ(KsClose(file), SUCCESS);
  EXPECT_EQ(KsOpen(name.c_str(), KS_OPEN_READ, KS_MODE_READ), KS_INVALID_HANDLE);
  std::remove(narrow.c_str());
}

}  // namespace
