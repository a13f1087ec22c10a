// What the fuzz targets share. A target is one file with FuzzOne; it must return for any bytes, with nothing left
// behind in memory, and with every promise of the library kept.
#pragma once

#include "files.h"
#include "kskernel.h"
#include "ksntfx.h"

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>

using Input = std::span<const std::uint8_t>;

/** Bytes that one bitmap may have while a target runs: enough for any path, too few to spend time on pixels. */
inline constexpr std::uint64_t kBitmapLimit = std::uint64_t{4} << 20;

/** Tries one input. */
void FuzzOne(Input input);

/** Ends the process, which counts as a find, where a promise of the library is broken. */
void Require(bool kept, const char *promise);

/** A name in the folder for temporary files that no other process has. The same name gives the same path. */
std::string TemporaryPath(const std::string &name);

/** Makes `path` a file of these bytes. */
void WriteInput(const std::string &path, Input input);

/** A handle on a file, empty where it can't be opened. */
class OpenHandle {
 public:
  explicit OpenHandle(const char *path);
  OpenHandle(const OpenHandle &) = delete;
  OpenHandle &operator=(const OpenHandle &) = delete;
  ~OpenHandle();

  NitfHandle Get() const { return handle; }

 private:
  NitfHandle handle = nullptr;
};

/** A byte string read as choices. Behind its end all is zero. */
class Choices {
 public:
  explicit Choices(Input bytes) : left(bytes) {}

  bool AtEnd() const { return left.empty(); }
  std::uint8_t Byte();
  std::uint32_t Word();
  /** A number below `count`. */
  std::uint32_t Below(std::uint32_t count) { return count == 0 ? 0 : Word() % count; }
  /** Up to `most` bytes, of which the first says how many. */
  std::string Text(std::size_t most);
  /** All the bytes left. */
  Input Rest() const { return left; }

 private:
  Input left;
};
