#include "input_file.h"

#include <cerrno>
#include <cstdio>
#include <filesystem>
#include <system_error>

namespace ntf {

Outcome CheckInput(const std::string &name) {
  namespace fs = std::filesystem;
  std::error_code error;
  const fs::file_status status = fs::status(name, error);
  if (status.type() == fs::file_type::not_found) return StatusProblem(name, ERROR_NO_FILE);
  if (fs::is_directory(status)) return Problem{name, "is a directory", ERROR_FILE_READ};
  if (error) return SystemProblem(name, error.value(), ERROR_FILE_READ);
  // A pipe can't be read twice, and could block.
  if (!fs::is_regular_file(status)) return Problem{name, "is not a regular file", ERROR_FILE_READ};
  if (Widen(name) == nullptr) return Problem{name, "the file name is not UTF-8", ERROR_FILE_READ};

  std::FILE *stream = std::fopen(name.c_str(), "rb");
  if (stream == nullptr) return SystemProblem(name, errno, ERROR_FILE_READ);
  std::fclose(stream);
  return {};
}

WideName Widen(const std::string &name) {
  return {KsToWide(name.c_str()), &KsToWideFree};
}

}  // namespace ntf
