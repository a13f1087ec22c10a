// Uncompressed image data: the block layouts of the four image modes (MIL-STD-2500C, 5.4.2.1 and 5.4.2.2) and packed
// bi-level blocks.
#pragma once

#include "handlimg.h"

/** Gives a bitmap the image's lookup table as palette, or the gray ramp of its bit depth. */
void SetImagePalette(KsBitmap *bitmap, const ImageSubheader &image);

/**
 * Decodes IC NC or NM with PVTYPE INT into `target`, whose caller releases it. SUCCESS, ERROR_FILE_READ where the file
 * ends, ERROR_NOT_SUPPORTED for samples that make no picture, ERROR_NO_MEMORY.
 */
std::int32_t DecodeSamples(const ImageSource &source, KsBitmap *target);

/** The same with PVTYPE B. ERROR_FILE_FORMAT where the data of a block run out. */
std::int32_t DecodePackedBilevel(const ImageSource &source, KsBitmap *target);
