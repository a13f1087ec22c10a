// Samples of any type as numbers that can be compared and scaled.
#pragma once

#include "images/sample_types.h"

namespace ksntfx {

/** Writes `count` samples that lie side by side as numbers; of complex ones, their magnitudes. */
using ReadValues = void (*)(const std::uint8_t *samples, std::uint64_t count, double *values);

ReadValues ChooseValues(SampleType type);

}  // namespace ksntfx
