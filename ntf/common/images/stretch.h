// The range of an image's samples that is spread over the 8 bits of a screen.
#pragma once

#include "images/raw_image.h"

namespace ksntfx {

/** How samples become 8 bits. */
enum class StretchKind : std::uint8_t { Percent, MinMax, None };

struct StretchChoice {
  StretchKind kind = StretchKind::Percent;
  double low = 2; /**< percentiles */
  double high = 98;
};

/** What a band's values are mapped by: `low` becomes 0, `high` 255, and what lies beyond stays at these. */
struct Stretch {
  double low = 0;
  double high = 255;
  bool isDecibels = false; /**< the logarithms of values are mapped, and so of `low` and `high` */

  std::uint8_t Map(double value) const;
};

/**
 * Finds the range of one band in a sample of the image's blocks, without pad pixels and pixels that aren't recorded. A
 * status of RawImage::Read.
 */
Status MeasureStretch(RawImage &image, std::uint32_t band, const StretchChoice &choice, Stretch *stretch);

}  // namespace ksntfx
