#include "saving.h"

#include "input_file.h"
#include "output_file.h"

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

Outcome SaveChecked(const LocalHandle &handle, const std::string &name, const SavedCheck &check) {
  OutputFile output(name);
  if (Outcome unopened = output.Open()) return unopened;
  const std::int32_t status = K_NITFSaveFileA(handle.Get(), output.PlaceToWrite().c_str());
  if (status != SUCCESS) return StatusProblem(status == ERROR_FILE_WRITE ? name : handle.Name(), status);
  if (Outcome wrong = check(output.PlaceToWrite())) return wrong;
  return output.Commit();
}

Outcome LocalHandle::Open(const std::string &name) {
  if (Outcome unreadable = CheckInput(name)) return unreadable;
  opened = name;
  const std::int32_t status = K_NITFCreateA(&handle, name.c_str());
  return OutcomeOf(name, status);
}

Outcome LocalHandle::Make(const std::string &name) {
  opened = name;
  const std::int32_t status = K_NITFCreate(&handle, nullptr);
  return OutcomeOf(name, status);
}

}  // namespace ntf
