// A bar for work that takes long.
#pragma once

#include <atomic>
#include <condition_variable>
#include <cstdint>
#include <mutex>
#include <thread>

namespace ntf {

/**
 * Shows how far the work is on the standard error output, where that is a terminal and the work has taken half a
 * second. The work that tells no amount, Advance not having been called yet, is shown by the time it has taken.
 */
class Progress {
 public:
  /** `work` is shown before the bar and must outlive the object. */
  explicit Progress(const char *work);
  Progress(const Progress &) = delete;
  Progress &operator=(const Progress &) = delete;
  ~Progress() { Stop(); }

  void Advance(std::uint64_t doneUnits, std::uint64_t totalUnits) {
    total.store(totalUnits, std::memory_order_relaxed);
    done.store(doneUnits, std::memory_order_relaxed);
  }

  /** Removes the bar, so that something else can be written. */
  void Stop();

 private:
  void Show();
  void Draw(double seconds);

  const char *work;
  std::atomic<std::uint64_t> done = 0;
  std::atomic<std::uint64_t> total = 0;
  std::mutex mutex;
  std::condition_variable wake;
  bool stopping = false;
  std::thread thread;
};

}  // namespace ntf
