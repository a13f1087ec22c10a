// Compressed streams inside an image segment: where each one begins and ends, and how it becomes a part of the image.
// What is in the streams is the codecs' business.
#pragma once

#include "handlimg.h"

/**
 * Decodes an image of JPEG or JPEG 2000 streams (IC C3, C5, C6, C8, I1 and their masked twins) into `target`. A single
 * stream replaces the target by the codec's own bitmap. SUCCESS, NITF_UNSUPPORTED_TILE for streams of another kind,
 * ERROR_FILE_READ, ERROR_NOT_SUPPORTED for more than four bands with a stream each, ERROR_NO_MEMORY, or the codec's
 * status. `target` is the caller's to release.
 */
std::int32_t DecodeCodecImage(FilterLoadRecord *loadContext, const ImageSource &source, KsBitmap *target);

/** Whether the IC of an image is one of those. */
bool HasCodec(const ImageSubheader &image);

/** Whether each block of the image is a stream of its own, with all bands. */
bool IsTiled(const ImageSubheader &image);

/**
 * The same for such an image, one row of blocks after the other, so that no more of it is in memory. Where a tile
 * fails, the rows in front of it are with the sink already.
 */
std::int32_t DecodeTilesInParts(FilterLoadRecord *loadContext, const ImageSource &source, ImagePartSink &sink);

/** The same for a bi-level stream (IC C1, M1), which has no header of its own and fills the target as it is. */
std::int32_t DecodeBilevelStream(FilterLoadRecord *loadContext, const ImageSource &source, KsBitmap *target);
