// Saving a file through the library, so that it appears complete or not at all.
#pragma once

#include "core.h"
#include "ksntfx.h"
#include "problem.h"

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

namespace ntf {

/** Refuses a name that already exists, unless `force` is set. */
Outcome CheckFree(const std::string &name, bool force);

/** Refuses an output that is, under any name or link, one of the files that the command reads. */
Outcome CheckNotInput(const std::string &output, const std::vector<std::string> &inputs);

/** Whether a NITF file may be written as `name`: not to standard output, and as CheckFree. */
Outcome CheckOutput(const std::string &name, bool force);

/** Writes a file under a temporary name. A status. */
using SavedFile = std::function<std::int32_t(const std::string &place)>;

/** Checks a file that was saved under a temporary name, before it replaces the output. */
using SavedCheck = std::function<Outcome(const std::string &savedName)>;

/** A handle that is destroyed at the end of its scope. */
class LocalHandle {
 public:
  LocalHandle() = default;
  LocalHandle(const LocalHandle &) = delete;
  LocalHandle &operator=(const LocalHandle &) = delete;
  ~LocalHandle() {
    if (handle != nullptr) K_NITFDestroy(&handle);
  }

  /** Creates a file with a header and no segments; `name` is for error messages. */
  Outcome Make(const std::string &name);
  NitfHandle Get() const { return handle; }
  FileView View() const { return FileView(handle); }

 private:
  NitfHandle handle = nullptr;
};

/**
 * Writes the output `name`, which appears only if `check` succeeds. A device is written directly, and not checked.
 * `source` is the file that is read.
 */
Outcome SaveChecked(const std::string &source, const std::string &name, const SavedFile &write,
                    const SavedCheck &check);

}  // namespace ntf
