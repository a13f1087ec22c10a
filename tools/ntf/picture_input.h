// Pictures of other formats, as bitmaps.
#pragma once

#include "internal/ksclasses_.h"
#include "problem.h"

#include <cstdint>
#include <string>
#include <vector>

namespace ntf {

/** All bytes of a file. */
Outcome ReadFileBytes(const std::string &name, std::vector<std::uint8_t> &bytes);

/** Reads a PNG, PPM, PGM or JPEG picture: grays of 8 bits, colours of 24. Transparency lies over white. */
Outcome ReadPicture(const std::string &name, KsLocalBitmap &bitmap);

}  // namespace ntf
