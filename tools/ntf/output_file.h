// A file that appears only when it is complete.
#pragma once

#include "problem.h"

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <string>

namespace ntf {

/**
 * Writes to a temporary file in the folder of its target, which Commit renames; until then an existing file of that
 * name stays as it is. A replaced file keeps its permissions. The name "-" is standard output. Targets that are not
 * regular files, such as devices, are written directly.
 */
class OutputFile {
 public:
  explicit OutputFile(std::string outputName) : name(std::move(outputName)) {}
  OutputFile(const OutputFile &) = delete;
  OutputFile &operator=(const OutputFile &) = delete;
  /** Removes the temporary file unless Commit was called. */
  ~OutputFile();

  Outcome Open();
  /** Returns false on error; Failure has the reason. */
  [[nodiscard]] bool Write(const void *bytes, std::size_t size);
  /** The same at `offset`, which is at most the size of the file so far. Pipes can't be written so. */
  [[nodiscard]] bool WriteAt(std::uint64_t offset, const void *bytes, std::size_t size);
  /** Flushes the file and renames it to the target. */
  Outcome Commit();

  /** The name of the file for another writer to fill before Commit; don't combine it with Write. */
  std::string PlaceToWrite() const { return (temporary.empty() ? target : temporary).string(); }

  /** Whether that is a temporary file, which Commit renames. */
  bool IsTemporary() const { return !temporary.empty(); }

  /** The name on the command line. */
  const std::string &Name() const { return name; }
  /** The problem of the last call that failed. */
  Problem Failure() const;

 private:
  bool IsStandardOutput() const { return name == "-"; }
  Outcome CreateBesideTarget();
  bool Close();
  void Discard();
  Outcome FailWithError(int error);

  std::string name;
  std::filesystem::path target;
  std::filesystem::path temporary; /* empty if the target is written directly */
  std::FILE *stream = nullptr;
  std::uint64_t position = 0; /* in the stream */
  int lastError = 0;          /* an errno */
};

}  // namespace ntf
