#include "images/pad_value.h"

#include "headers/mask_table.h"
#include "images/sample_unpack.h"

#include <algorithm>
#include <cstring>

namespace ksntfx {

PadValue::PadValue(const ImageSubheader &image, const SampleShape &shape) : bytes(BytesOf(shape.type)) {
  // Codes of whole bytes are common for samples of fewer bits, which are the last ones of the code.
  const bool isInteger = shape.type < SampleType::Float32;
  const std::uint32_t bits = isInteger ? std::min<std::uint32_t>(image.padCodeBits, shape.bits) : image.padCodeBits;
  const std::uint32_t codeBytes = PadCodeBytes(image);
  exists = image.padCode != nullptr && bits >= 1 && bits <= bytes * 8 && (isInteger || bits == shape.bits) &&
           image.padCodeHeld >= codeBytes;
  if (!exists) return;
  // The code is at the end of its bytes.
  ChooseUnpacking(bits, shape.type)({image.padCode, codeBytes * 8 - bits, bits, 1, bits}, value, bytes);
}

bool PadValue::Is(const std::uint8_t *sample) const {
  return exists && std::memcmp(sample, value, bytes) == 0;
}

}  // namespace ksntfx
