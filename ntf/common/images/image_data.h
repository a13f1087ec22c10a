// The bytes of one image segment's data, in 64 bits, read at positions: several threads may read at once.
#pragma once

#include "headers/image_record.h"
#include "internal/status.h"
#include "kskernel.h"

#include <algorithm>

namespace ksntfx {

struct ImageData {
  KsHandle file;
  ImageSubheader *image;  /**< no reader of samples changes it */
  std::uint64_t start;    /**< position of the mask table, or of the data where there is none */
  std::uint64_t length;   /**< LI, the mask table included */
  std::uint64_t fileSize; /**< bytes of the file */
  bool fillsMissing;      /**< bytes behind the end of the file are read as 0, not refused */

  /** The position of the first byte behind the mask table. */
  std::uint64_t Samples() const { return start + image->maskDataOffset; }
  /** Bytes behind the mask table. */
  std::uint64_t SampleBytes() const { return length > image->maskDataOffset ? length - image->maskDataOffset : 0; }
  /** Of these, the ones that the file holds. */
  std::uint64_t HeldBytes() const { return std::min(SampleBytes(), fileSize > Samples() ? fileSize - Samples() : 0); }

  /** Reads `bytes` bytes at `offset` behind the mask table: SUCCESS or ERROR_FILE_READ. */
  Status Read(std::uint64_t offset, void *buffer, std::uint64_t bytes) const;
};

}  // namespace ksntfx
