// Images that are one stream of a codec.
#pragma once

#include "images/codec_streams.h"
#include "images/image_reader.h"

namespace ksntfx {

/**
 * Makes the reader of an image of one JPEG or JPEG 2000 stream, of which the codec makes a bitmap in its own size and
 * depth. Arguments must outlive it. Null without memory.
 */
std::unique_ptr<ImageReader> MakeStreamReader(const LoadFunctions &functions, const ImageSource &source);

/**
 * Decodes a T.4 stream, which has no header of its own, into a bitmap of its size. The codec's 1 is white. SUCCESS, or
 * the status of the codec.
 */
Status DecodeBilevel(const LoadFunctions &functions, const ImageSubheader &image, const std::uint8_t *bytes,
                     std::uint32_t size, KsBitmap *target);

/** Makes the reader of a T.4 stream, which has no header of its own and fills the image as it is. Likewise. */
std::unique_ptr<ImageReader> MakeBilevelStreamReader(const LoadFunctions &functions, const ImageSource &source);

}  // namespace ksntfx
