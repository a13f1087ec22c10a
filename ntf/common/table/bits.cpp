#include "table/bits.h"

#include <cstring>

namespace ksntfx {

void UnpackBits(const std::uint8_t *source, std::uint64_t from, std::uint32_t count, std::uint8_t *row) {
  const std::uint8_t *bytes = source + from / 8;
  const auto shift = static_cast<unsigned>(from % 8);
  const std::uint64_t whole = count / 8;
  if (shift == 0) {
    std::memcpy(row, bytes, whole);
  } else {
    for (std::uint64_t at = 0; at < whole; ++at) {
      row[at] = static_cast<std::uint8_t>(bytes[at] << shift | bytes[at + 1] >> (8 - shift));
    }
  }
  const unsigned rest = count % 8;
  if (rest == 0) return;
  unsigned last = static_cast<unsigned>(bytes[whole]) << shift;
  if (shift + rest > 8) last |= static_cast<unsigned>(bytes[whole + 1]) >> (8 - shift);
  row[whole] = static_cast<std::uint8_t>(last & (0xFF00U >> rest));
}

}  // namespace ksntfx
