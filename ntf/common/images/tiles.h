// Images of JPEG streams, one for each block: where each one begins and ends, and how it becomes a part of the image.
#pragma once

#include "images/codec_streams.h"
#include "images/image_reader.h"

namespace ksntfx {

/**
 * Makes the reader of an image whose blocks are a stream each, with all bands. Reading fails with NITF_UNSUPPORTED_TILE
 * for streams of another kind. Arguments must outlive it. Null without memory.
 */
std::unique_ptr<ImageReader> MakeTileReader(const LoadFunctions &functions, const ImageSource &source);

/**
 * Makes the reader of an image with a stream for each band of each block, band after band in the data. It opens with
 * ERROR_NOT_SUPPORTED for more than four bands. Likewise.
 */
std::unique_ptr<ImageReader> MakeBandStreamsReader(const LoadFunctions &functions, const ImageSource &source);

}  // namespace ksntfx
