#include "kscore/read_windows.h"

#include "kscore/allocation.h"

#include <algorithm>
#include <bit>
#include <cstring>
#include <iterator>

namespace kscore {
namespace {

// Scattered headers cost one small read each; a place that is read on and on is worth larger and larger ones.
constexpr std::uint64_t kLeastReadAhead = 16 * 1024;
constexpr std::uint64_t kMostReadAhead = 256 * 1024;

// From here on a system call costs little beside the bytes, and reading ahead would only copy them once more.
constexpr std::uint64_t kStraightRead = 32 * 1024;

}  // namespace

ReadWindows::~ReadWindows() {
  for (Window &window : windows) Release(KS_MEMORY_FILE, window.bytes);
}

std::uint64_t ReadWindows::Read(SystemFile file, std::uint8_t *buffer, std::uint64_t bytes, std::int64_t position) {
  std::uint64_t done = 0;
  while (done < bytes) {
    const std::int64_t here = position + static_cast<std::int64_t>(done);
    Window *window = Find(here);
    if (window == nullptr) {
      if (bytes - done < kStraightRead) window = Fill(file, bytes - done, here);
      if (window == nullptr) return done + ReadAt(file, buffer + done, bytes - done, here);
    }
    const auto offset = static_cast<std::uint64_t>(here - window->start);
    const std::uint64_t count = std::min(bytes - done, window->length - offset);
    std::memcpy(buffer + done, window->bytes + offset, count);
    window->lastUse = ++uses;
    done += count;
    const bool atEnd = window->length < window->readAhead;
    if (atEnd) break;
  }
  return done;
}

bool ReadWindows::Holds(std::uint64_t bytes, std::int64_t position) {
  const Window *window = Find(position);
  return window != nullptr && bytes <= window->length - static_cast<std::uint64_t>(position - window->start);
}

void ReadWindows::Drop(std::uint64_t bytes, std::int64_t position) {
  const std::int64_t end = position + static_cast<std::int64_t>(bytes);
  for (Window &window : windows) {
    const bool apart = end <= window.start || position >= window.start + static_cast<std::int64_t>(window.length);
    if (!apart) window.length = 0;
  }
}

ReadWindows::Window *ReadWindows::Find(std::int64_t position) {
  for (Window &window : windows) {
    if (position >= window.start && position - window.start < static_cast<std::int64_t>(window.length)) return &window;
  }
  return nullptr;
}

ReadWindows::Window &ReadWindows::LeastRecentlyUsed() {
  return *std::min_element(std::begin(windows), std::end(windows),
                           [](const Window &a, const Window &b) { return a.lastUse < b.lastUse; });
}

std::uint64_t ReadWindows::ReadAheadFor(std::uint64_t bytes, std::int64_t position) const {
  std::uint64_t readAhead = kLeastReadAhead;
  for (const Window &window : windows) {
    const bool continued = window.length != 0 && window.start + static_cast<std::int64_t>(window.length) == position;
    if (continued) readAhead = std::max(readAhead, window.readAhead * 2);
  }
  return std::min(std::max(readAhead, std::bit_ceil(bytes)), kMostReadAhead);
}

/** Reads ahead from `position` into the window that was not used for longest. Null without memory. */
ReadWindows::Window *ReadWindows::Fill(SystemFile file, std::uint64_t bytes, std::int64_t position) {
  const std::uint64_t readAhead = ReadAheadFor(bytes, position);
  Window &window = LeastRecentlyUsed();
  if (window.capacity < readAhead) {
    window.length = 0;
    auto *grown = static_cast<std::uint8_t *>(Reallocate(KS_MEMORY_FILE, window.bytes, readAhead));
    if (grown == nullptr) return nullptr;
    window.bytes = grown;
    window.capacity = readAhead;
  }
  window.start = position;
  window.readAhead = readAhead;
  window.length = ReadAt(file, window.bytes, readAhead, position);
  return &window;
}

}  // namespace kscore
