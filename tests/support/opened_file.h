// Handles on files that a test made, and what a save writes.
#pragma once

#include "harness.h"

#include <string>

/** A handle on a file of a folder of its own, or on a blank one. */
class Opened {
 public:
  Opened() { status = K_NITFCreateA(&handle, nullptr); }
  explicit Opened(const Bytes &file) {
    WriteFile(folder.Path("in.ntf"), file);
    status = K_NITFCreateA(&handle, folder.Path("in.ntf").c_str());
  }
  Opened(const Opened &) = delete;
  Opened &operator=(const Opened &) = delete;
  ~Opened() { K_NITFDestroy(&handle); }

  std::int32_t Save(const std::string &name = "out.ntf") const {
    return K_NITFSaveFileA(handle, folder.Path(name).c_str());
  }
  /** What a save gives, and an empty file where it fails. */
  Bytes Saved() const { return Save() == SUCCESS ? ReadFile(folder.Path("out.ntf")) : Bytes(); }
  std::string Path(const std::string &name) const { return folder.Path(name); }
  NitfFile *operator->() const { return handle; }
  NitfHandle Get() const { return handle; }

  std::int32_t status;

 private:
  TemporaryFolder folder;
  NitfHandle handle = nullptr;
};
