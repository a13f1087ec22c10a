#include "corpus.h"

#include <cstdlib>
#include <filesystem>

#include <gtest/gtest.h>

std::optional<std::string> CorpusFolder() {
  const char *folder = std::getenv("KSNTFX_CORPUS");
  if (folder == nullptr || *folder == '\0') return std::nullopt;
  return folder;
}

std::optional<std::string> CorpusFile(const std::string &name) {
  const auto folder = CorpusFolder();
  if (!folder) return std::nullopt;
  std::string path = *folder + "/" + name;
  return std::filesystem::is_regular_file(path) ? std::optional(path) : std::nullopt;
}

namespace {

TEST(CorpusFolder, IsAFolderWhereItIsNamed) {
  const auto folder = CorpusFolder();
  if (!folder) GTEST_SKIP() << "KSNTFX_CORPUS is not set";
  EXPECT_TRUE(std::filesystem::is_directory(*folder)) << *folder;
}

}  // namespace
