// The bytes of one image segment.
#pragma once

#include "headers/nitffile.h"

namespace ksntfx {

struct ImageSource {
  KsHandle file;
  ImageSubheader *image;
  std::uint32_t dataLength; /**< LI */
  std::int64_t dataStart;   /**< position of the image data, the mask table included */
  std::uint64_t fileSize;

  /** Reads `bytes` bytes at `offset` behind the image data's start: SUCCESS or ERROR_FILE_READ. */
  Status Read(std::int64_t offset, void *buffer, std::uint64_t bytes) const;
  /** Whether the file holds the image data up to `end` bytes behind their start. */
  bool Holds(std::int64_t end) const;
};

/** The source of segment `index`, whose record is `image`. */
ImageSource OpenSource(const NitfFile *file, ImageSubheader *image, std::uint32_t index);

}  // namespace ksntfx
