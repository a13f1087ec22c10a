// One graphic segment of a file, drawn.
#pragma once

#include "core.h"
#include "internal/ksclasses_.h"
#include "problem.h"

#include <cstdint>
#include <string>

namespace ntf {

/** Draws graphic `index`, counted from 0, of a file on a white 24-bit picture of its size. */
Outcome DrawSegment(const std::string &fileName, Door door, std::uint32_t index, KsLocalBitmap &picture);

}  // namespace ntf
