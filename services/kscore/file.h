// An open file: one position, read-ahead on it, and, where it is writable, a run of written bytes that is held back.
#pragma once

#include "internal/status.h"
#include "kscore/read_windows.h"

namespace kscore {

class File {
 public:
  File(SystemFile opened, bool mayWrite) : system(opened), writable(mayWrite) {}
  /** A file that is read from memory of the caller, which must outlive it. */
  File(const std::uint8_t *bytes, std::uint64_t count)
      : system(SystemFile::none), writable(false), memory(bytes), memoryBytes(count) {}
  File(const File &) = delete;
  File &operator=(const File &) = delete;
  ~File();

  /** Writes what is held back and closes. False where any write failed. */
  bool Close();
  std::uint64_t Read(std::uint8_t *buffer, std::uint64_t bytes);
  /** Reads at a position, without moving that of the file: several threads may do so at once. */
  std::uint64_t ReadFrom(std::int64_t start, std::uint8_t *buffer, std::uint64_t bytes) const;
  std::uint64_t Write(const std::uint8_t *buffer, std::uint64_t bytes);
  std::int64_t Seek(std::int64_t offset, std::uint32_t origin);
  /** Copies from one position to the other; see KsCopyBytes. */
  Status CopyFrom(File &source, std::uint64_t bytes);
  bool IsNamed(const char16_t *name) const { return memory == nullptr && IsSameFile(system, name); }

 private:
  std::int64_t HeldEnd() const { return heldStart + static_cast<std::int64_t>(heldBytes); }
  std::int64_t Size() const;
  bool MakeHeld();
  bool Flush();
  std::uint64_t HoldBack(const std::uint8_t *buffer, std::uint64_t bytes);
  std::uint64_t WriteThrough(const std::uint8_t *buffer, std::uint64_t bytes);
  std::uint64_t CopyInSystem(File &source, std::uint64_t bytes);

  SystemFile system;
  bool writable;
  const std::uint8_t *memory = nullptr;
  std::uint64_t memoryBytes = 0;
  bool failed = false;  // a write was lost, and the file can't be trusted any more
  std::int64_t position = 0;
  ReadWindows windows;
  std::uint8_t *held = nullptr;
  std::int64_t heldStart = 0;
  std::uint64_t heldBytes = 0;
};

}  // namespace kscore
