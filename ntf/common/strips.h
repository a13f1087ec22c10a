// Images pass through memory in strips: some rows of a row of blocks, as wide as the image.
#pragma once

#include "blocks.h"

/** Reads an image into `target`, which has its padded size. */
std::int32_t ReadWhole(BlockReader &reader, KsBitmap *target);

/** Reads an image through one strip of its own depth and palette, and hands each filling of it to `sink`. */
std::int32_t ReadInStrips(BlockReader &reader, const ImageSubheader &image, const ImagePartSink &sink);
