#include "progress.h"

#include "host.h"

#include <chrono>
#include <cstdio>
#include <string>

namespace ntf {
namespace {

using Clock = std::chrono::steady_clock;

constexpr auto kPatience = std::chrono::milliseconds(500);
constexpr auto kInterval = std::chrono::milliseconds(100);
constexpr std::size_t kBarCells = 30;
constexpr std::size_t kLineCells = 60;

}  // namespace

Progress::Progress(const char *workName) : work(workName) {
  if (StandardErrorIsTerminal()) thread = std::thread(&Progress::Show, this);
}

void Progress::Stop() {
  if (!thread.joinable()) return;
  {
    const std::lock_guard lock(mutex);
    stopping = true;
  }
  wake.notify_one();
  thread.join();
}

void Progress::Show() {
  const Clock::time_point start = Clock::now();
  std::unique_lock lock(mutex);
  const auto isStopping = [this] { return stopping; };
  if (wake.wait_for(lock, kPatience, isStopping)) return;
  do {
    Draw(std::chrono::duration<double>(Clock::now() - start).count());
  } while (!wake.wait_for(lock, kInterval, isStopping));
  std::fprintf(stderr, "\r%*s\r", static_cast<int>(kLineCells), "");
}

void Progress::Draw(double seconds) {
  const std::uint64_t all = total.load(std::memory_order_relaxed);
  if (all == 0) {
    std::fprintf(stderr, "\r%s %.1f s", work, seconds);
    return;
  }
  const double part = static_cast<double>(done.load(std::memory_order_relaxed)) / static_cast<double>(all);
  std::string bar(static_cast<std::size_t>(part * kBarCells), '#');
  bar.resize(kBarCells, '.');
  std::fprintf(stderr, "\r%s [%s] %3d %%  ", work, bar.c_str(), static_cast<int>(part * 100));
}

}  // namespace ntf
