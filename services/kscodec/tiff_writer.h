// A TIFF file that is being written, whatever library writes it.
#pragma once

#include "internal/status.h"

#include <cstdint>

namespace kscodec {

/** A file whose shape and strips have been checked by the front. */
class TiffWriter {
 public:
  TiffWriter() = default;
  TiffWriter(const TiffWriter &) = delete;
  TiffWriter &operator=(const TiffWriter &) = delete;
  virtual ~TiffWriter() = default;

  /** Writes `bytes` bytes as strip `strip`, counted over all planes. */
  virtual Status WriteStrip(std::uint32_t strip, const void *samples, std::uint64_t bytes) = 0;
  virtual Status Finish() = 0;
};

}  // namespace kscodec
