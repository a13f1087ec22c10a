// The bitmap that an image is decoded into: its depth, colour order and palette.
#pragma once

#include "headers/image_record.h"
#include "internal/status.h"
#include "kskernel.h"

namespace ksntfx {

/**
 * Bits per pixel of the bitmap that an image is decoded into. Two bands are shown as one through its palette, in full
 * colour; so are three or more, of which three are shown. Samples of 32 and 64 bits of a gray image come down to 8.
 */
std::uint32_t TargetDepth(const ImageSubheader &image);

/** Creates a bitmap for `width` columns and `rows` rows of an image, with its palette and colour order. */
Status CreateTarget(KsBitmap *target, const ImageSubheader &image, std::uint64_t width, std::uint64_t rows);

/** Whether the padded size of an image makes a bitmap: SUCCESS, or what its creation would fail with. */
Status CheckTargetSize(const ImageSubheader &image);

/** Gives a bitmap the image's lookup table as palette, or the gray ramp of its bit depth. */
void SetImagePalette(KsBitmap *bitmap, const ImageSubheader &image);

}  // namespace ksntfx
