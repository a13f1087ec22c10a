#include "target.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>

void Require(bool kept, const char *promise) {
  if (kept) return;
  std::fprintf(stderr, "broken promise: %s\n", promise);
  std::abort();
}

std::string TemporaryPath(const std::string &name) {
  static const TemporaryFolder folder;
  return folder.Path(name);
}

void WriteInput(const std::string &path, Input input) {
  std::FILE *file = std::fopen(path.c_str(), "wb");
  Require(file != nullptr, "the folder for temporary files can be written");
  const std::size_t written = input.empty() ? 0 : std::fwrite(input.data(), 1, input.size(), file);
  Require(std::fclose(file) == 0 && written == input.size(), "the folder for temporary files has room");
}

OpenHandle::OpenHandle(const char *path) {
  const std::int32_t status = K_NITFCreateA(&handle, path);
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
  std::string text(left.begin(), left.begin() + static_cast<std::ptrdiff_t>(length));
  left = left.subspan(length);
  return text;
}
