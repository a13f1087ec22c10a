// A file that appears only when it is complete.
#pragma once

#include "problem.h"

#include <cstddef>
#include <cstdio>
#include <filesystem>
#include <string>

namespace ntf {

/**
 * Writes beside its target, in the same folder, and takes the target's name at Commit; until then a file of that name
 * stays as it is. The name "-" is the standard output. What is not a regular file, such as a device, is written
 * directly.
 */
class OutputFile {
 public:
  explicit OutputFile(std::string outputName) : name(std::move(outputName)) {}
  OutputFile(const OutputFile &) = delete;
  OutputFile &operator=(const OutputFile &) = delete;
  /** Without a Commit nothing of it remains. */
  ~OutputFile();

  Outcome Open();
  /** False where the bytes were not taken; Failure tells why. */
  [[nodiscard]] bool Write(const void *bytes, std::size_t size);
  /** Writes what is held back and puts the file in its place. */
  Outcome Commit();

  /** A file that another writer may fill before the Commit; Write is not for it. */
  std::string PlaceToWrite() const { return (temporary.empty() ? target : temporary).string(); }

  /** The name as the user gave it. */
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
  std::filesystem::path temporary; /* empty where the target is written directly */
  std::FILE *stream = nullptr;
  int lastError = 0; /* as in errno */
};

}  // namespace ntf
