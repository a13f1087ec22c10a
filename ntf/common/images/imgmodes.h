// Uncompressed image data: plain blocks in the four image modes (MIL-STD-2500C, 5.4.2.1 and 5.4.2.2).
#pragma once

#include "images/image_reader.h"
#include "images/image_source.h"
#include "table/bits.h"

#include <span>

namespace ksntfx {

/** The bands that are read of each pixel: the one that is shown, or those of red, green and blue. */
struct BandSelection {
  std::uint32_t bands[3] = {};
  std::uint32_t count = 1; /**< 1 or 3 */

  std::span<const std::uint32_t> Selected() const { return {bands, count}; }
};

/** Makes the reader of an image of whole samples, NBPP bits each. `source` must outlive it. Null without memory. */
std::unique_ptr<ImageReader> MakePlainReader(const ImageSource &source, const BandSelection &bands);

/** Makes the reader of packed bi-level blocks, PVTYPE B. Likewise. */
std::unique_ptr<ImageReader> MakeBilevelReader(const ImageSource &source, const BandSelection &bands);

}  // namespace ksntfx
