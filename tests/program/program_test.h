// Runs the program ntf as a user does, in a temporary folder.
#pragma once

#include "harness.h"

#include <string>
#include <vector>

#include <gtest/gtest.h>

/** What a run of the program left. */
struct ProgramRun {
  int exitCode = -1; /**< -1 where a signal ended it */
  std::string output;
  std::string errors;
};

/** An image of 3 x 2 pixels, 1 to 6. */
ImageSpec SmallImage(const FieldTexts &fields = {});

/** Has an empty folder for the files of a test. */
class ProgramTest : public testing::Test {
 protected:
  /** Runs ntf in the folder; `outputFile` receives the standard output if the run is not to collect it. */
  ProgramRun Run(const std::vector<std::string> &arguments, const std::string &outputFile = {}) const;

  std::string PathOf(const std::string &name) const { return folder.Path(name); }
  void WriteText(const std::string &name, const std::string &text) const;
  std::string ReadText(const std::string &name) const;
  /** All that is in the folder, hidden files too, in order. */
  std::vector<std::string> FilesInFolder() const;

 private:
  TemporaryFolder folder;
  TemporaryFolder logs; /* apart, so that the folder holds what the program leaves and nothing else */
};
