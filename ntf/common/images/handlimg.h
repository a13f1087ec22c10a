// One image segment into bitmaps: the reader that its kind of data calls for, and the ways on from it.
#pragma once

#include "headers/nitffile.h"
#include "images/image_sink.h"

namespace ksntfx {

/**
 * Decodes image segment `index` into `target`, an empty bitmap. `loadContext` may be null; its load functions decode
 * compressed streams where it is given. On failure `target` is empty: ERROR_NOT_SUPPORTED for an IC without decoder or
 * samples that make no picture, ERROR_FILE_READ, ERROR_FILE_FORMAT, ERROR_NO_MEMORY.
 */
Status DecodeImageSegment(FilterLoadRecord *loadContext, const NitfFile *file, std::uint32_t index, KsBitmap *target);

/**
 * Decodes the image strip by strip into `sink`, without ever holding all of it where its IC allows that. The results
 * are those of DecodeImageSegment; what is wrong with the headers, or cut off, shows before the first strip.
 */
Status DecodeImageInStrips(FilterLoadRecord *loadContext, const NitfFile *file, std::uint32_t index, ImageSink &sink);

}  // namespace ksntfx
