// One image segment of a file, decoded.
#pragma once

#include "internal/ksclasses_.h"
#include "problem.h"

#include <cstdint>
#include <string>

namespace ntf {

struct SegmentImage {
  KsLocalBitmap bitmap;      /* whole blocks, at the segment's own depth */
  std::uint32_t columns = 0; /* NCOLS: the image's part of each row */
  std::uint32_t rows = 0;    /* NROWS */
};

/** Decodes image segment `index`, counted from 0, of a file into `image`. */
Outcome DecodeSegment(const std::string &fileName, std::uint32_t index, SegmentImage &image);

}  // namespace ntf
