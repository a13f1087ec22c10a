// One graphic segment of a file, drawn.
#pragma once

#include "internal/ksclasses_.h"
#include "problem.h"

#include <cstdint>
#include <string>

namespace ntf {

/** Draws graphic segment `index`, counted from 0, of a file alone on a white picture that it fills, of 24 bits. */
Outcome DrawSegment(const std::string &fileName, std::uint32_t index, KsLocalBitmap &picture);

}  // namespace ntf
