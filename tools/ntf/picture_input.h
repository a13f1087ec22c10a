// Reading pictures of other formats.
#pragma once

#include "internal/ksclasses_.h"
#include "problem.h"

#include <cstdint>
#include <string>
#include <vector>

namespace ntf {

/** Reads a whole file. */
Outcome ReadFileBytes(const std::string &name, std::vector<std::uint8_t> &bytes);

/**
 * Reads a PNG, PPM, PGM or JPEG picture into a bitmap of 8 bits (gray) or 24. Transparent pixels are blended onto
 * white, and samples of 16 bits reduced to 8, each with a warning.
 */
Outcome ReadPicture(const std::string &name, KsLocalBitmap &bitmap);

}  // namespace ntf
