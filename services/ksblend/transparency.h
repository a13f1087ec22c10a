// Which pixels of a row are left out, because they have the transparent colour.
#pragma once

#include "kscore/palette.h"

namespace ksblend {

class Transparency {
 public:
  /** Prepares the test for the pixels of `source`. False where its pixels have no colour to compare. */
  bool Prepare(const KsBitmap &source, kscore::Bgr color);

  /** The end of the run of pixels that starts at `x`, all transparent or all not, at most `end`. */
  std::uint64_t RunEnd(const std::uint8_t *row, std::uint64_t x, std::uint64_t end, bool transparent) const {
    return findRunEnd(*this, row, x, end, transparent);
  }

 private:
  using FindRunEnd = std::uint64_t (*)(const Transparency &, const std::uint8_t *row, std::uint64_t x,
                                       std::uint64_t end, bool transparent);
  template <class Form>
  struct Runs;

  FindRunEnd findRunEnd = nullptr;
  std::uint32_t value = 0;           // the one value of grays and colours
  bool levels[kscore::kLevelCount];  // the indices of that colour
};

}  // namespace ksblend
