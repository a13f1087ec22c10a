#include "images/sample_reader.h"

#include <cstring>

namespace ksntfx {

void ClearSamples(const SampleTarget &target, std::size_t bands, std::uint64_t rows, std::uint64_t columns,
                  SampleType type) {
  const std::uint32_t bytes = BytesOf(type);
  for (std::size_t band = 0; band < bands; ++band) {
    for (std::uint64_t row = 0; row < rows; ++row) {
      std::uint8_t *to = target.Row(band, row);
      for (std::uint64_t column = 0; column < columns; ++column, to += target.columnStep) std::memset(to, 0, bytes);
    }
  }
}

}  // namespace ksntfx
