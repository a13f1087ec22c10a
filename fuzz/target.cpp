#include "target.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <unistd.h>

void Require(bool kept, const char *promise) {
  if (kept) return;
  std::fprintf(stderr, "broken promise: %s\n", promise);
  std::abort();
}

namespace {

/** A folder of this process, removed at its end. */
class ProcessFolder {
 public:
  ProcessFolder() : path(std::filesystem::temp_directory_path() / ("ksntfx-fuzz-" + std::to_string(getpid()))) {
    std::filesystem::create_directories(path);
  }
  ProcessFolder(const ProcessFolder &) = delete;
  ProcessFolder &operator=(const ProcessFolder &) = delete;
  ~ProcessFolder() {
    std::error_code ignored;
    std::filesystem::remove_all(path, ignored);
  }

  const std::filesystem::path path;
};

}  // namespace

std::string TemporaryPath(const std::string &name) {
  static const ProcessFolder folder;
  return (folder.path / name).string();
}

void WriteInput(const std::string &path, Input input) {
  std::FILE *file = std::fopen(path.c_str(), "wb");
  Require(file != nullptr, "the folder for temporary files can be written");
  const std::size_t written = input.empty() ? 0 : std::fwrite(input.data(), 1, input.size(), file);
  Require(std::fclose(file) == 0 && written == input.size(), "the folder for temporary files has room");
}

std::vector<std::uint8_t> ReadAll(const std::string &path) {
  std::ifstream stream(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(stream), {}};
}

OpenHandle::OpenHandle(const char *path) : status(K_NITFCreateA(&handle, path)) {
  Require((status == SUCCESS) == (handle != nullptr), "a handle comes with SUCCESS, and only then");
}

OpenHandle::~OpenHandle() {
  K_NITFDestroy(&handle);
}

std::uint8_t Choices::Byte() {
  if (left.empty()) return 0;
  const std::uint8_t first = left.front();
  left = left.subspan(1);
  return first;
}

std::uint32_t Choices::Word() {
  // Small numbers are common in files, and large ones take few bytes of input.
  const std::uint32_t first = Byte();
  if (first < 0xF0) return first;
  std::uint32_t value = 0;
  for (std::uint32_t i = 0; i < 1 + first % 4; ++i) value = value << 8 | Byte();
  return value;
}

std::string Choices::Text(std::size_t most) {
  const std::size_t length = std::min({std::size_t{Byte()}, most, left.size()});
  const std::string text(left.begin(), left.begin() + static_cast<std::ptrdiff_t>(length));
  left = left.subspan(length);
  return text;
}
