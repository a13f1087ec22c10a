// What tests need of the library: composing through the filter entries, and loaded files.
#pragma once

#include "headers/nitffile.h"
#include "internal/status.h"
#include "kskernel.h"
#include "ksntfx.h"
#include "live_blocks.h"
#include "nitf_builder.h"

#include <ostream>
#include <string>
#include <vector>

using namespace ksntfx;

/** A failed comparison shows the number. */
inline void PrintTo(const Status &status, std::ostream *out) {
  *out << status.Code();
}

std::u16string Wide(const std::string &narrow);

/** A row as fltLoad delivered it. */
struct DeliveredRow {
  std::uint32_t flags;
  std::uint32_t index;
  Bytes bytes;
};

/** What fltLoad gave. */
struct Composition {
  std::int32_t status = 0;
  std::uint32_t width = 0;
  std::uint32_t height = 0;
  std::uint32_t bits = 0;
  std::vector<DeliveredRow> rows;

  /** Colour of a pixel as 0xRRGGBB; of an 8-bit canvas its gray. */
  std::uint32_t At(std::uint32_t row, std::uint32_t column) const;
};

struct ComposeOptions {
  std::uint32_t bits = 24;
  std::uint32_t loadFlags = 0;
  bool skipRows = false;
  std::int32_t stopAtRow = -1; /**< the callback answers `stopWith` here */
  std::int32_t stopWith = 0;
  NitfLoadFromMemory load = KsLoadMemory; /**< decodes compressed streams */
  NitfSetRedirect setRedirect = KsSetRedirect;
};

Composition Compose(const std::string &path, const ComposeOptions &options = {});
Composition Compose(const NitfBuilder &builder, const ComposeOptions &options = {});

/** What fltInfo gave. */
struct Information {
  std::int32_t status = 0;
  KsFileInfo info{};
  std::uint32_t loadFlags = 0;
};

Information Inform(const std::string &path, std::uint32_t loadFlags = 0);
Information Inform(const NitfBuilder &builder, std::uint32_t loadFlags = 0);

/** A loaded file. */
class LoadedFile {
 public:
  explicit LoadedFile(const NitfBuilder &builder) : LoadedFile(builder.Build()) {}
  explicit LoadedFile(const Bytes &bytes);

  std::int32_t status;
  NitfFile *operator->() { return file.Get(); }
  NitfFile *Get() { return file.Get(); }
  const ImageSubheader &Image(std::uint32_t index) { return *FindImage(file.Get(), index); }

 private:
  TemporaryFolder folder;
  LocalNitfFile file;
};

/** Collects the message boxes and debug lines of its scope. */
class PlatformWatch {
 public:
  PlatformWatch();
  PlatformWatch(const PlatformWatch &) = delete;
  PlatformWatch &operator=(const PlatformWatch &) = delete;
  ~PlatformWatch();

  std::vector<std::string> messages; /**< caption, colon, text */
  std::vector<std::string> debugLines;
};
