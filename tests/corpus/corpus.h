// The folder of sample files that the environment names.
#pragma once

#include <optional>
#include <string>

/** The folder that KSNTFX_CORPUS names; none where the variable is not set. */
std::optional<std::string> CorpusFolder();

/** The path of a sample file; none where there is no folder, or no such file in it. */
std::optional<std::string> CorpusFile(const std::string &name);

// Leaves a test, visibly skipped, where its sample file is not at hand.
#define NEED_CORPUS_FILE(path, name)  \
  const auto path = CorpusFile(name); \
  if (!path) GTEST_SKIP() << (name) << " is not in a folder named by KSNTFX_CORPUS"
