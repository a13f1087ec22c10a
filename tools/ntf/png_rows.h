// Rows of pixels as they stand in a PNG file, before they are compressed.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace ntf {

/** Some rows of a picture, one below the other. */
struct PngRows {
  std::vector<std::uint8_t> bytes; /* the row above the first one, zeros where there is none; then the rows */
  std::size_t rowBytes = 0;
  std::size_t pixelBytes = 0; /* 0 where neighbours tell nothing of each other: palettes, pixels of less than a byte */

  std::size_t Count() const { return bytes.size() / rowBytes - 1; }
};

/**
 * Makes `filtered` the rows, each with its filter in front (ISO/IEC 15948, section 9): the one that leaves the least to
 * compress.
 */
void FilterRows(const PngRows &rows, std::vector<std::uint8_t> &filtered);

}  // namespace ntf
