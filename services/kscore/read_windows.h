// Read-ahead. A decoder goes through a block in several places at once, one a band plane, and often reads a row again;
// each place gets a window of its own, so that most rows cost no system call.
#pragma once

#include "kscore/file_system.h"

namespace kscore {

class ReadWindows {
 public:
  ReadWindows() = default;
  ReadWindows(const ReadWindows &) = delete;
  ReadWindows &operator=(const ReadWindows &) = delete;
  ~ReadWindows();

  /** The bytes read at `position`: fewer than asked for at the end of the file or on an error. */
  std::uint64_t Read(SystemFile file, std::uint8_t *buffer, std::uint64_t bytes, std::int64_t position);

  /** True where Read would find all of the bytes without asking the system. */
  bool Holds(std::uint64_t bytes, std::int64_t position);

  /** Forgets what is held of a part of the file, because it is written. */
  void Drop(std::uint64_t bytes, std::int64_t position);

 private:
  struct Window {
    std::uint8_t *bytes = nullptr;
    std::uint64_t capacity = 0;
    std::int64_t start = 0;
    std::uint64_t length = 0;
    std::uint64_t readAhead = 0;  // what the window asked for when it was filled
    std::uint64_t lastUse = 0;
  };

  Window *Find(std::int64_t position);
  Window &LeastRecentlyUsed();
  std::uint64_t ReadAheadFor(std::uint64_t bytes, std::int64_t position) const;
  Window *Fill(SystemFile file, std::uint64_t bytes, std::int64_t position);

  Window windows[4];
  std::uint64_t uses = 0;
};

}  // namespace kscore
