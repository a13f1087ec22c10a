// Threads that each have files of their own get what one thread alone gets. Built under ThreadSanitizer as well.
#include "internal/ksclasses_.h"
#include "opened_file.h"
#include "row_sum.h"
#include "small_files.h"

#include <atomic>
#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

namespace {

constexpr int kThreads = 2;
constexpr int kRounds = 4;

/** A file with all kinds of segments goes through a handle, is drawn, and comes out again. */
Bytes Author(const Bytes &source) {
  const Opened opened(source);
  KsLocalBitmap bitmap;
  if (KsBitmapCreate(bitmap.Get(), sizeof(KsBitmap), KS_BITMAP_OWN, 20, 10, 24, KS_ORDER_BGR, nullptr, 1, nullptr, 0) !=
          SUCCESS ||
      K_NITFAppendImageSegment(opened.Get(), bitmap.Get(), KS_FORMAT_JPEG, 24, 10) != SUCCESS) {
    return {};
  }
  KsVector *const drawing = K_NITFGetVectorHandle(opened.Get(), 0);
  if (drawing == nullptr || K_NITFSetVectorHandle(opened.Get(), 0, drawing) != SUCCESS) return {};
  KsLocalBitmap canvas;
  K_NtfRenderBitmap(canvas.Get(), opened.Get());
  return opened.Saved();
}

TEST(Threads, WithFilesOfTheirOwnDoNotMeet) {
  const std::vector<SmallFile> files = SmallFiles();
  const TemporaryFolder folder;
  std::vector<std::u16string> names;
  Bytes source;
  for (const SmallFile &file : files) {
    WriteFile(folder.Path(file.name), file.bytes);
    names.push_back(Wide(folder.Path(file.name)));
    if (file.name == "drawing") source = file.bytes;
  }
  const auto compose = [&] {
    std::vector<RowSum> sums;
    sums.reserve(names.size());
    for (const std::u16string &name : names) sums.push_back(SumRows(name.c_str(), 24));
    return sums;
  };
  // What is set up at the first use is to be set up by threads at once: the single thread comes last.
  std::atomic<int> waiting = kThreads;
  std::vector<std::vector<RowSum>> sums(kThreads);
  std::vector<Bytes> saved(kThreads);
  std::vector<std::thread> threads;
  threads.reserve(kThreads);
  for (int i = 0; i < kThreads; ++i) {
    threads.emplace_back([&, i] {
      for (--waiting; waiting != 0;) std::this_thread::yield();
      for (int round = 0; round < kRounds; ++round) {
        sums[i] = compose();
        saved[i] = Author(source);
      }
    });
  }
  for (std::thread &thread : threads) thread.join();
  const std::vector<RowSum> alone = compose();
  const Bytes savedAlone = Author(source);
  EXPECT_FALSE(savedAlone.empty());
  for (int i = 0; i < kThreads; ++i) {
    EXPECT_EQ(sums[i], alone);
    EXPECT_EQ(saved[i], savedAlone);
  }
  for (const RowSum &sum : alone) EXPECT_EQ(sum.status, SUCCESS);
}

}  // namespace
