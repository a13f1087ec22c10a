// Uncompressed samples of any type and size, in the four image modes (MIL-STD-2500C, 5.4.2.1 and 5.4.2.2).
#pragma once

#include "images/sample_reader.h"

namespace ksntfx {

/** Makes the reader of uncompressed samples. `data` must outlive it. Null if out of memory. */
std::unique_ptr<SampleReader> MakePlainSamples(const ImageData &data);

}  // namespace ksntfx
