// Rows of three bands, which are put together to pixels.
#pragma once

#include <cstdint>

namespace ksntfx {

/** The samples of a row, band by band; each is `step` bytes behind the one before it. */
struct BandRows {
  const std::uint8_t *red;
  const std::uint8_t *green;
  const std::uint8_t *blue;
  std::uint32_t step;
};

/** Writes `width` pixels of blue, green and red at `pixels`. */
void InterleaveRow(std::uint8_t *pixels, std::uint32_t width, const BandRows &bands);

}  // namespace ksntfx
