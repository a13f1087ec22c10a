#include "files.h"

#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>

namespace {

std::string MakeFolder() {
  std::string pattern = (std::filesystem::temp_directory_path() / "ksntfx-XXXXXX").string();
  if (mkdtemp(pattern.data()) == nullptr) throw std::runtime_error("no temporary folder");
  return pattern;
}

}  // namespace

TemporaryFolder::TemporaryFolder() : folder(MakeFolder()) {}

TemporaryFolder::~TemporaryFolder() {
  std::error_code ignored;
  std::filesystem::remove_all(folder, ignored);
}

void WriteFile(const std::string &path, const Bytes &bytes) {
  // A new file: file systems that flush an emptied one when it is closed would make thousands of small files slow.
  std::filesystem::remove(path);
  std::ofstream file(path, std::ios::binary | std::ios::trunc);
  file.write(reinterpret_cast<const char *>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
  if (!file.flush()) throw std::runtime_error("can't write " + path);
}

Bytes ReadFile(const std::string &path) {
  std::ifstream stream(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(stream), {}};
}
