// What the file layer needs of the operating system: a few calls on whole files at 64-bit positions.
#pragma once

#include <cstdint>

namespace kscore {

/** An open file of the operating system. */
enum class SystemFile : std::intptr_t { none = -1 };

enum class OpenMode { read, create };

/** Opens a file, or creates or empties it for reading and writing. Folders are not opened. */
SystemFile OpenSystemFile(const char16_t *name, OpenMode mode);
/** False where the system reports that earlier writes were lost. */
bool CloseSystemFile(SystemFile file);
/** The bytes moved: all that were asked for, unless the file ends or fails before. */
std::uint64_t ReadAt(SystemFile file, void *buffer, std::uint64_t bytes, std::int64_t position);
std::uint64_t WriteAt(SystemFile file, const void *buffer, std::uint64_t bytes, std::int64_t position);
/** The file's size in bytes, or -1. */
std::int64_t SizeOf(SystemFile file);

/** A place in a file. */
struct FilePlace {
  SystemFile file;
  std::int64_t position;
};

/** Copies within the system and returns the bytes copied, 0 where the files don't allow it. */
std::uint64_t CopyRange(const FilePlace &from, const FilePlace &to, std::uint64_t bytes);

bool FileExists(const char16_t *name);
/** Whether `name` leads to `file`. */
bool IsSameFile(SystemFile file, const char16_t *name);

}  // namespace kscore
