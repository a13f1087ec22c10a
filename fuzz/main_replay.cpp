// Tries all files of the folders that are given, once each. A fault ends the process; the file is named before it.
#include "target.h"

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <vector>

int main(int count, char **arguments) {
  std::vector<std::filesystem::path> files;
  for (int i = 1; i < count; ++i) {
    if (!std::filesystem::is_directory(arguments[i])) continue;
    for (const auto &entry : std::filesystem::directory_iterator(arguments[i])) files.push_back(entry.path());
  }
  std::sort(files.begin(), files.end());
  for (const auto &file : files) {
    std::printf("%s\n", file.c_str());
    std::fflush(stdout);
    FuzzOne(ReadFile(file.string()));
  }
  std::printf("%zu inputs\n", files.size());
  return files.empty() ? 1 : 0;
}
