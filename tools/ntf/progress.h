// A progress bar for long operations.
#pragma once

#include <atomic>
#include <condition_variable>
#include <cstdint>
#include <mutex>
#include <thread>

namespace ntf {

/**
 * Shows the progress of an operation on standard error if that is a terminal and the operation has taken half a second.
 * Until the first call of Advance, it shows the time since the start.
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

  /** Removes the bar, so that other output can be written. */
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
