// The rows of a PNG file before compression.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace ntf {

/** Some rows of a picture, one below the other. */
struct PngRows {
  std::vector<std::uint8_t> bytes; /* the row above the first one, or zeros; then the rows */
  std::size_t rowBytes = 0;
  std::size_t pixelBytes = 0; /* 0 if filters don't help: palettes, pixels of less than a byte */

  std::size_t Count() const { return bytes.size() / rowBytes - 1; }
};

/**
 * Filters the rows, each preceded by the number of its filter (ISO/IEC 15948, section 9), with the filter that
 * compresses best.
 */
void FilterRows(const PngRows &rows, std::vector<std::uint8_t> &filtered);

}  // namespace ntf
