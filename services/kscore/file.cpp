#include "kscore/file.h"

#include "kscore/allocation.h"

#include <algorithm>
#include <cstring>
#include <limits>
#include <memory>
#include <new>

namespace kscore {
namespace {

constexpr std::uint64_t kHeldCapacity = 256 * 1024;
constexpr std::uint64_t kCopyPiece = 1024 * 1024;
constexpr std::int64_t kLastPosition = std::numeric_limits<std::int64_t>::max();

/** `bytes`, cut so that no position beyond the last one is reached. */
std::uint64_t WithinPositions(std::uint64_t bytes, std::int64_t position) {
  return std::min(bytes, static_cast<std::uint64_t>(kLastPosition - position));
}

}  // namespace

File::~File() {
  Release(KS_MEMORY_FILE, held);
}

bool File::Close() {
  if (memory != nullptr) return true;
  const bool flushed = Flush();
  const bool closed = CloseSystemFile(system);
  return flushed && closed && !failed;
}

std::uint64_t File::Read(std::uint8_t *buffer, std::uint64_t bytes) {
  bytes = WithinPositions(bytes, position);
  if (memory != nullptr) {
    const std::uint64_t copied = ReadFrom(position, buffer, bytes);
    position += static_cast<std::int64_t>(copied);
    return copied;
  }
  // Windows never hold what was written since they were filled, so only a read past them needs the held bytes on file.
  if (heldBytes != 0 && !windows.Holds(bytes, position) && !Flush()) return 0;
  const std::uint64_t moved = windows.Read(system, buffer, bytes, position);
  position += static_cast<std::int64_t>(moved);
  return moved;
}

std::uint64_t File::ReadFrom(std::int64_t start, std::uint8_t *buffer, std::uint64_t bytes) const {
  if (start < 0) return 0;
  bytes = WithinPositions(bytes, start);
  if (memory == nullptr) return ReadAt(system, buffer, bytes, start);
  const auto from = static_cast<std::uint64_t>(start);
  const std::uint64_t count = from < memoryBytes ? std::min(bytes, memoryBytes - from) : 0;
  if (count != 0) std::memcpy(buffer, memory + from, count);
  return count;
}

std::uint64_t File::Write(const std::uint8_t *buffer, std::uint64_t bytes) {
  if (!writable) failed = true;
  if (failed) return 0;
  bytes = WithinPositions(bytes, position);
  windows.Drop(bytes, position);
  std::uint64_t done = 0;
  while (done < bytes && !failed) {
    const std::uint64_t moved = HoldBack(buffer + done, bytes - done);
    position += static_cast<std::int64_t>(moved);
    done += moved;
    if (moved != 0) continue;
    if (!Flush()) break;
    if (bytes - done < kHeldCapacity && MakeHeld()) continue;
    const std::uint64_t through = WriteThrough(buffer + done, bytes - done);
    position += static_cast<std::int64_t>(through);
    done += through;
  }
  return done;
}

std::int64_t File::Seek(std::int64_t offset, std::uint32_t origin) {
  std::int64_t base = 0;
  if (origin == KS_SEEK_CURRENT) base = position;
  if (origin == KS_SEEK_END) base = Size();
  if (origin > KS_SEEK_END || base < 0) return -1;
  if (offset > kLastPosition - base || base + offset < 0) return -1;
  position = base + offset;
  return position;
}

/** Copies long runs from file to file without passing them through the process, where the system can do that. */
std::uint64_t File::CopyInSystem(File &source, std::uint64_t bytes) {
  if (!writable || source.memory != nullptr || bytes < kHeldCapacity || !Flush()) return 0;
  windows.Drop(bytes, position);
  const std::uint64_t moved = CopyRange({source.system, source.position}, {system, position}, bytes);
  position += static_cast<std::int64_t>(moved);
  source.position += static_cast<std::int64_t>(moved);
  return moved;
}

Status File::CopyFrom(File &source, std::uint64_t bytes) {
  // The system copies what is in the file.
  if (!source.Flush()) return ERROR_FILE_READ;
  const std::int64_t left = source.Size() - source.position;
  if (left < 0 || bytes > static_cast<std::uint64_t>(left)) return ERROR_FILE_READ;
  std::uint64_t done = CopyInSystem(source, bytes);
  if (done == bytes) return SUCCESS;
  const std::uint64_t piece = std::min(bytes - done, kCopyPiece);
  const Block<std::uint8_t, KS_MEMORY_FILE> buffer(piece);
  if (!buffer) return ERROR_NO_MEMORY;
  while (done < bytes) {
    const std::uint64_t count = std::min(bytes - done, piece);
    if (source.Read(buffer.Get(), count) != count) return ERROR_FILE_READ;
    if (Write(buffer.Get(), count) != count) return ERROR_FILE_WRITE;
    done += count;
  }
  return SUCCESS;
}

std::int64_t File::Size() const {
  if (memory != nullptr) return static_cast<std::int64_t>(memoryBytes);
  const std::int64_t size = SizeOf(system);
  return size >= 0 && heldBytes != 0 ? std::max(size, HeldEnd()) : size;
}

/** Makes the buffer ready for a run that starts at the position. False without memory. */
bool File::MakeHeld() {
  if (held == nullptr) held = static_cast<std::uint8_t *>(Allocate(KS_MEMORY_FILE, 1, kHeldCapacity));
  heldStart = position;
  return held != nullptr;
}

/** Writes the held bytes. A failure drops them, and is reported by the close. */
bool File::Flush() {
  if (heldBytes != 0 && WriteAt(system, held, heldBytes, heldStart) != heldBytes) failed = true;
  heldBytes = 0;
  return !failed;
}

/** Buffers what continues or overwrites the held run, as much as fits. */
std::uint64_t File::HoldBack(const std::uint8_t *buffer, std::uint64_t bytes) {
  if (held == nullptr || position < heldStart || position > HeldEnd()) return 0;
  const auto offset = static_cast<std::uint64_t>(position - heldStart);
  // A long run goes straight through, unless its place is in part held already.
  if (heldBytes == 0 && bytes >= kHeldCapacity) return 0;
  const std::uint64_t count = std::min(bytes, kHeldCapacity - offset);
  std::memcpy(held + offset, buffer, count);
  heldBytes = std::max(heldBytes, offset + count);
  return count;
}

std::uint64_t File::WriteThrough(const std::uint8_t *buffer, std::uint64_t bytes) {
  const std::uint64_t moved = WriteAt(system, buffer, bytes, position);
  if (moved != bytes) failed = true;
  return moved;
}

}  // namespace kscore

namespace {

using kscore::File;

File *FileOf(KsHandle handle) {
  // NOLINTNEXTLINE(performance-no-int-to-ptr): a handle is the address of its file.
  return handle == 0 || handle == KS_INVALID_HANDLE ? nullptr : reinterpret_cast<File *>(handle);
}

}  // namespace

KsHandle KsOpen(const char16_t *name, uint32_t flags, uint32_t) {
  if (name == nullptr || (flags != KS_OPEN_READ && flags != KS_OPEN_CREATE)) return KS_INVALID_HANDLE;
  void *const place = kscore::Allocate(KS_MEMORY_FILE, 1, sizeof(File));
  if (place == nullptr) return KS_INVALID_HANDLE;
  const bool create = flags == KS_OPEN_CREATE;
  const auto system = kscore::OpenSystemFile(name, create ? kscore::OpenMode::create : kscore::OpenMode::read);
  if (system == kscore::SystemFile::none) {
    kscore::Release(KS_MEMORY_FILE, place);
    return KS_INVALID_HANDLE;
  }
  return reinterpret_cast<KsHandle>(new (place) File(system, create));
}

KsHandle KsOpenMemory(const void *bytes, uint64_t count) {
  if (bytes == nullptr || count > INT64_MAX) return KS_INVALID_HANDLE;
  void *const place = kscore::Allocate(KS_MEMORY_FILE, 1, sizeof(File));
  if (place == nullptr) return KS_INVALID_HANDLE;
  return reinterpret_cast<KsHandle>(new (place) File(static_cast<const uint8_t *>(bytes), count));
}

uint64_t KsReadAt(KsHandle handle, int64_t position, void *buffer, uint64_t bytes) {
  const File *const file = FileOf(handle);
  return file == nullptr || buffer == nullptr ? 0 : file->ReadFrom(position, static_cast<uint8_t *>(buffer), bytes);
}

int32_t KsClose(KsHandle handle) {
  File *const file = FileOf(handle);
  if (file == nullptr) return ERROR_FILE_WRITE;
  const bool written = file->Close();
  std::destroy_at(file);
  kscore::Release(KS_MEMORY_FILE, file);
  return written ? SUCCESS : ERROR_FILE_WRITE;
}

uint64_t KsRead(KsHandle handle, void *buffer, uint64_t bytes) {
  File *const file = FileOf(handle);
  return file == nullptr || buffer == nullptr ? 0 : file->Read(static_cast<uint8_t *>(buffer), bytes);
}

uint64_t KsWrite(KsHandle handle, const void *buffer, uint64_t bytes) {
  File *const file = FileOf(handle);
  return file == nullptr || buffer == nullptr ? 0 : file->Write(static_cast<const uint8_t *>(buffer), bytes);
}

uint64_t KsWriteBlock(KsHandle handle, const void *buffer, uint64_t bytes) {
  return KsWrite(handle, buffer, bytes);
}

int32_t KsCopyBytes(KsHandle target, KsHandle source, uint64_t bytes) {
  if (FileOf(source) == nullptr) return ERROR_FILE_READ;
  return FileOf(target) == nullptr ? ERROR_FILE_WRITE : FileOf(target)->CopyFrom(*FileOf(source), bytes).Code();
}

int32_t KsFileExists(const char16_t *name) {
  return name != nullptr && kscore::FileExists(name) ? SUCCESS : ERROR_NO_FILE;
}

int32_t KsIsSameFile(KsHandle handle, const char16_t *name) {
  const File *const file = FileOf(handle);
  return file != nullptr && name != nullptr && file->IsNamed(name) ? SUCCESS : ERROR_NO_FILE;
}

int64_t KsSeek(KsHandle handle, int64_t offset, uint32_t origin) {
  File *const file = FileOf(handle);
  return file == nullptr ? -1 : file->Seek(offset, origin);
}
