// The value of pad pixels: TPXCD of the mask table (MIL-STD-2500C, table A-3(A)).
#pragma once

#include "images/sample_reader.h"

namespace ksntfx {

class PadValue {
 public:
  PadValue() = default;
  /** That of a header's mask table, if it has one of as many bits as a sample. */
  PadValue(const ImageSubheader &image, const SampleShape &shape);

  /** Whether there is one. Without it, the sample below is 0. */
  bool Exists() const { return exists; }
  /** A sample in memory. */
  const std::uint8_t *Sample() const { return value; }
  /** Whether the image has a pad value, and this sample is it. */
  bool Is(const std::uint8_t *sample) const;

 private:
  bool exists = false;
  std::uint8_t value[8] = {};
  std::uint32_t bytes = 0;
};

}  // namespace ksntfx
