// Runs the program ntf as a user does, in a folder of its own.
#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include <gtest/gtest.h>

/** What a run of the program left. */
struct ProgramRun {
  int exitCode = -1; /**< -1 where a signal ended it */
  std::string output;
  std::string errors;
};

/** Has an empty folder for the files of a test, which is removed at the end. */
class ProgramTest : public testing::Test {
 protected:
  ProgramTest();
  ~ProgramTest() override;

  std::filesystem::path PathOf(const std::string &name) const { return folder / name; }
  /** Runs ntf in the folder; `outputFile` takes the standard output where the run is not to collect it. */
  ProgramRun Run(const std::vector<std::string> &arguments, const std::string &outputFile = {}) const;

  void WriteFile(const std::string &name, const std::string &bytes) const;
  std::string ReadFile(const std::string &name) const;
  /** All that is in the folder, hidden files too, in order. */
  std::vector<std::string> FilesInFolder() const;

 private:
  std::filesystem::path folder;
  std::filesystem::path logs; /* beside the folder, so that it holds what the program leaves and nothing else */
};
