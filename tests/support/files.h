// Files of a test.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

using Bytes = std::vector<std::uint8_t>;

/** A folder of its own that is removed at the end. */
class TemporaryFolder {
 public:
  TemporaryFolder();
  TemporaryFolder(const TemporaryFolder &) = delete;
  TemporaryFolder &operator=(const TemporaryFolder &) = delete;
  ~TemporaryFolder();

  /** The path of a file in it. */
  std::string Path(const std::string &name) const { return folder + "/" + name; }

 private:
  std::string folder;
};

void WriteFile(const std::string &path, const Bytes &bytes);

/** The bytes of a file, none where it can't be read. */
Bytes ReadFile(const std::string &path);

/** Bytes as characters. */
inline std::string TextOf(const Bytes &bytes) {
  return {bytes.begin(), bytes.end()};
}
