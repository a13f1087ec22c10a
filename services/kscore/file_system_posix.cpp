#if !defined(_WIN32)

#include "kscore/file_system.h"
#include "kscore/names.h"

#include <algorithm>
#include <cerrno>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace kscore {
namespace {

static_assert(sizeof(off_t) == 8, "files beyond 2 GiB need 64-bit positions");

// One system call moves a bounded number of bytes, whatever the platform's own bound is.
constexpr std::uint64_t kMostBytesPerCall = 1u << 30;

int DescriptorOf(SystemFile file) {
  return static_cast<int>(file);
}

bool IsFolder(int descriptor) {
  struct stat status = {};
  return fstat(descriptor, &status) != 0 || S_ISDIR(status.st_mode);
}

int OpenDescriptor(const char *name, OpenMode mode) {
  const int flags = mode == OpenMode::read ? O_RDONLY : O_RDWR | O_CREAT | O_TRUNC;
  int descriptor = -1;
  do {
    descriptor = open(name, flags | O_CLOEXEC, 0666);
  } while (descriptor < 0 && errno == EINTR);
  return descriptor;
}

/** Repeats `transfer(done, bytes)` until everything is moved, nothing moves any more, or the system fails. */
template <class Transfer>
std::uint64_t MoveAll(std::uint64_t bytes, const Transfer &transfer) {
  std::uint64_t done = 0;
  while (done < bytes) {
    const ssize_t moved = transfer(done, static_cast<std::size_t>(std::min(bytes - done, kMostBytesPerCall)));
    if (moved < 0 && errno == EINTR) continue;
    if (moved <= 0) break;
    done += static_cast<std::uint64_t>(moved);
  }
  return done;
}

}  // namespace

SystemFile OpenSystemFile(const char16_t *name, OpenMode mode) {
  const NarrowName narrow = NarrowFromWide(name);
  if (!narrow) return SystemFile::none;
  const int descriptor = OpenDescriptor(narrow.Get(), mode);
  if (descriptor >= 0 && IsFolder(descriptor)) {
    close(descriptor);
    return SystemFile::none;
  }
  return static_cast<SystemFile>(descriptor);
}

bool CloseSystemFile(SystemFile file) {
  // An interrupted close has released the descriptor all the same and must not be repeated.
  return close(DescriptorOf(file)) == 0 || errno == EINTR;
}

std::uint64_t ReadAt(SystemFile file, void *buffer, std::uint64_t bytes, std::int64_t position) {
  auto *target = static_cast<std::uint8_t *>(buffer);
  return MoveAll(bytes, [&](std::uint64_t done, std::size_t count) {
    return pread(DescriptorOf(file), target + done, count, position + static_cast<std::int64_t>(done));
  });
}

std::uint64_t WriteAt(SystemFile file, const void *buffer, std::uint64_t bytes, std::int64_t position) {
  const auto *source = static_cast<const std::uint8_t *>(buffer);
  return MoveAll(bytes, [&](std::uint64_t done, std::size_t count) {
    return pwrite(DescriptorOf(file), source + done, count, position + static_cast<std::int64_t>(done));
  });
}

std::int64_t SizeOf(SystemFile file) {
  struct stat status = {};
  return fstat(DescriptorOf(file), &status) == 0 ? status.st_size : -1;
}

std::uint64_t CopyRange(const FilePlace &from, const FilePlace &to, std::uint64_t bytes) {
#if defined(__linux__)
  return MoveAll(bytes, [&](std::uint64_t done, std::size_t count) {
    off_t source = from.position + static_cast<off_t>(done);
    off_t target = to.position + static_cast<off_t>(done);
    return copy_file_range(DescriptorOf(from.file), &source, DescriptorOf(to.file), &target, count, 0);
  });
#else
  return 0;
#endif
}

bool FileExists(const char16_t *name) {
  const NarrowName narrow = NarrowFromWide(name);
  return narrow && access(narrow.Get(), F_OK) == 0;
}

bool IsSameFile(SystemFile file, const char16_t *name) {
  struct stat open = {};
  struct stat named = {};
  const NarrowName narrow = NarrowFromWide(name);
  if (!narrow || fstat(DescriptorOf(file), &open) != 0 || stat(narrow.Get(), &named) != 0) return false;
  return open.st_dev == named.st_dev && open.st_ino == named.st_ino;
}

}  // namespace kscore

#endif
