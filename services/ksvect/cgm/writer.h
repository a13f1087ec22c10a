// Writes computer graphics metafiles (ISO/IEC 8632-3, binary encoding).
#pragma once

#include "internal/status.h"
#include "ksvect/model/drawing.h"

#include <cstdint>
#include <vector>

namespace ksvect {

/**
 * Writes a metafile of one picture. `bounds` is the box around all objects, which stands for an extent where the
 * drawing has none; null where there are no objects. ERROR_NOT_SUPPORTED where a number is beyond what the encoding
 * holds. May throw std::bad_alloc.
 */
Status WriteCgm(const Drawing &drawing, const Box *bounds, std::vector<std::uint8_t> &data);

}  // namespace ksvect
