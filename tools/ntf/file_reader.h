// A file that is opened through the wide reader.
#pragma once

#include "ksntfx_reader.h"
#include "problem.h"

#include <string>

namespace ntf {

class FileReader {
 public:
  FileReader() = default;
  FileReader(const FileReader &) = delete;
  FileReader &operator=(const FileReader &) = delete;
  ~FileReader() { NitfReaderClose(reader); }

  Outcome Open(const std::string &fileName);
  NitfReader *Get() const { return reader; }

  /** The problem of a call that failed, in the reader's words. */
  Problem Failed(std::int32_t status) const;
  /** FBKGC as 0xRRGGBB; black without it. */
  std::uint32_t Background() const;
  /** Prints what is missing in what was drawn, a line each, on standard error. */
  void WarnOfNotes() const;

 private:
  std::string name;
  NitfReader *reader = nullptr;
};

}  // namespace ntf
