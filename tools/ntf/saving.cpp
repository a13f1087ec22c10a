#include "saving.h"

#include "input_file.h"
#include "output_file.h"

#include <cerrno>
#include <filesystem>
#include <system_error>

namespace ntf {

Outcome CheckFree(const std::string &name, bool force) {
  std::error_code ignored;
  if (force || !std::filesystem::exists(std::filesystem::symlink_status(name, ignored))) return {};
  return Problem{name, "already exists (use --force to overwrite)", ERROR_FILE_WRITE};
}

Outcome CheckNotInput(const std::string &output, const std::vector<std::string> &inputs) {
  for (const std::string &input : inputs) {
    std::error_code missing;
    if (!std::filesystem::equivalent(output, input, missing) || missing) continue;
    return Problem{output, "is an input of the command", ERROR_FILE_WRITE, true};
  }
  return {};
}

Outcome CheckOutput(const std::string &name, bool force) {
  if (name == "-") return Problem{name, "a NITF file can't be written to standard output", ERROR_FILE_WRITE, true};
  return CheckFree(name, force);
}

Outcome SaveChecked(const std::string &source, const std::string &name, const SavedFile &write,
                    const SavedCheck &check) {
  OutputFile output(name);
  if (Outcome unopened = output.Open()) return unopened;
  // A status has no reason, but the system's call that failed has left one.
  errno = 0;
  const std::int32_t status = write(output.PlaceToWrite());
  if (status == ERROR_FILE_WRITE && errno != 0) return SystemProblem(name, errno, status);
  if (status != SUCCESS) return StatusProblem(status == ERROR_FILE_WRITE ? name : source, status);
  if (output.IsTemporary()) {
    if (Outcome wrong = check(output.PlaceToWrite())) return wrong;
  }
  return output.Commit();
}

Outcome LocalHandle::Make(const std::string &name) {
  const std::int32_t status = K_NITFCreate(&handle, nullptr);
  return OutcomeOf(name, status);
}

}  // namespace ntf
