// Files in memory, open for the wide reader.
#pragma once

#include "ksntfx_reader.h"
#include "nitf_builder.h"

#include <utility>

class OpenReader {
 public:
  explicit OpenReader(Bytes file) : bytes(std::move(file)) {
    status = NitfReaderOpenMemory(bytes.data(), bytes.size(), &reader);
  }
  explicit OpenReader(const NitfBuilder &builder) : OpenReader(builder.Build()) {}
  OpenReader(const OpenReader &) = delete;
  OpenReader &operator=(const OpenReader &) = delete;
  ~OpenReader() { NitfReaderClose(reader); }

  NitfReader *Get() const { return reader; }

  std::int32_t status;

 private:
  Bytes bytes;
  NitfReader *reader = nullptr;
};
