// Samples of one byte that the readers of bi-level streams and of vector-quantised data deliver: bits, and indices of
// colors.
#pragma once

#include "images/sample_reader.h"

namespace ksntfx {

/** Makes the reader of a bi-level stream, whose samples are 0 and 1. `data` must outlive it. Null if out of memory. */
std::unique_ptr<SampleReader> MakeBilevelSamples(const ImageData &data);

/** Makes the reader of vector-quantised data of 8 bits. Likewise. */
std::unique_ptr<SampleReader> MakeVqSamples(const ImageData &data);

}  // namespace ksntfx
