// Images pass through memory in strips: some rows of a row of blocks, as wide as the image.
#pragma once

#include "blocks.h"

/**
 * The bytes of a strip: little enough to stay in a processor's cache while it is filled, converted and placed, and
 * enough for the rows of a block to be read at once, past the windows of small reads.
 */
constexpr std::uint64_t kStripBytes = 512 * 1024;

/** Reads an image into `target`, which has its padded size. */
std::int32_t ReadWhole(BlockReader &reader, KsBitmap *target);

/**
 * Reads an image through one strip of its own depth and palette, and hands each filling of it to `sink`; right into the
 * place that the sink lends, where it lends one.
 */
std::int32_t ReadInStrips(BlockReader &reader, const ImageSubheader &image, ImagePartSink &sink);
