// Saving a file through the library so that it appears whole, or not at all.
#pragma once

#include "core.h"
#include "ksntfx.h"
#include "problem.h"

#include <functional>
#include <string>

namespace ntf {

/** Whether `name` may be written: ERROR_FILE_WRITE where a file is there already, unless `force` is set. */
Outcome CheckOutput(const std::string &name, bool force);

/** Looks at a file that was saved under a name of its own, before it takes its place. */
using SavedCheck = std::function<Outcome(const std::string &savedName)>;

/** A handle that is destroyed with its scope. */
class LocalHandle {
 public:
  LocalHandle() = default;
  LocalHandle(const LocalHandle &) = delete;
  LocalHandle &operator=(const LocalHandle &) = delete;
  ~LocalHandle() {
    if (handle != nullptr) K_NITFDestroy(&handle);
  }

  /** Opens a file. */
  Outcome Open(const std::string &name);
  /** Makes a file with a header and nothing else; `name` is the one that problems are about. */
  Outcome Make(const std::string &name);
  NitfHandle Get() const { return handle; }
  FileView View() const { return FileView(handle); }
  /** The name of the file that was opened. */
  const std::string &Name() const { return opened; }

 private:
  NitfHandle handle = nullptr;
  std::string opened;
};

/** Saves the file of a handle as `name`, where it appears after `check` found nothing wrong. */
Outcome SaveChecked(const LocalHandle &handle, const std::string &name, const SavedCheck &check);

}  // namespace ntf
