// Samples of images that are one stream of a codec, whatever blocks the header counts.
#pragma once

#include "images/sample_reader.h"

namespace ksntfx {

/** Makes the reader of an image that is one stream. `data` must outlive it. Null if out of memory. */
std::unique_ptr<SampleReader> MakeStreamSamples(const ImageData &data);

/** Makes the reader of an image of one stream a block, or one a block and band. Likewise. */
std::unique_ptr<SampleReader> MakeTileSamples(const ImageData &data);

}  // namespace ksntfx
