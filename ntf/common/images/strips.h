// Images pass through memory in strips: some rows of a row of blocks, as wide as the image.
#pragma once

#include "images/image_reader.h"
#include "images/image_sink.h"
#include "images/shown.h"

namespace ksntfx {

/**
 * Hands an image to `sink`, strip by strip: right into the place that the sink lends, or through one bitmap that is
 * used again.
 */
Status PassInStrips(ImageReader &reader, ShownImage &shown, ImageSink &sink);

/** Decodes an image into `target`, which the reader makes. On failure `target` is empty. */
Status PassWhole(ImageReader &reader, ShownImage &shown, KsBitmap *target);

}  // namespace ksntfx
