// Computer graphics metafiles (ISO/IEC 8632-3, binary encoding, versions 1 to 3, as MIL-STD-2301A profiles them).
#pragma once

#include "internal/status.h"
#include "ksvect/model/drawing.h"

#include <cstdint>
#include <span>
#include <vector>

namespace ksvect {

/**
 * Reads the first picture of a metafile. SUCCESS also where the data break off or are damaged behind something to
 * draw: what stands before is kept. ERROR_FILE_FORMAT where there is nothing to draw, ERROR_NO_MEMORY above the bounds.
 * May throw std::bad_alloc.
 */
Status ReadCgm(std::span<const std::uint8_t> data, Drawing &drawing);

}  // namespace ksvect
