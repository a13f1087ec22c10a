#include "images/pad_value.h"

#include "images/sample_unpack.h"

#include <cstring>

namespace ksntfx {

PadValue::PadValue(const ImageSubheader &image, const SampleShape &shape) : bytes(BytesOf(shape.type)) {
  const std::uint32_t bits = image.padCodeBits;
  const std::uint32_t codeBytes = (bits + 7) / 8;
  exists = image.padCode != nullptr && bits == shape.bits && bits >= 1 && bits <= bytes * 8 &&
           image.padCodeHeld >= codeBytes;
  if (!exists) return;
  // The code is at the end of its bytes.
  ChooseUnpacking(bits, shape.type)({image.padCode, codeBytes * 8 - bits, bits, 1, bits}, value, bytes);
}

bool PadValue::Is(const std::uint8_t *sample) const {
  return exists && std::memcmp(sample, value, bytes) == 0;
}

}  // namespace ksntfx
