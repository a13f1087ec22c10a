#include "input_file.h"

#include "kskernel.h"
#include "printable.h"

#include <cerrno>
#include <cstdio>
#include <filesystem>
#include <memory>
#include <string_view>
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

  std::FILE *stream = std::fopen(name.c_str(), "rb");
  if (stream == nullptr) return SystemProblem(name, errno, ERROR_FILE_READ);
  std::fclose(stream);
  return {};
}

std::u16string Widen(const std::string &name) {
  constexpr char16_t kEscapedBytes = 0xDC00;
  std::u16string wide;
  for (std::string_view rest = name; !rest.empty();) {
    const std::string character(rest.substr(0, CharacterBytes(rest)));
    const std::unique_ptr<char16_t, decltype(&KsToWideFree)> units(KsToWide(character.c_str()), &KsToWideFree);
    if (units != nullptr) {
      wide += units.get();
    } else {
      for (const char byte : character) wide += static_cast<char16_t>(kEscapedBytes | (byte & 0xFF));
    }
    rest.remove_prefix(character.size());
  }
  return wide;
}

}  // namespace ntf
