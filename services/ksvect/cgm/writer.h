// Writes computer graphics metafiles (ISO/IEC 8632-3, binary encoding).
#pragma once

#include "internal/status.h"
#include "ksvect/model/drawing.h"

#include <cstdint>
#include <string_view>
#include <vector>

namespace ksvect {

/**
 * Writes a metafile of one picture. `bounds` is the box around all objects, which replaces the extent of a drawing
 * that has none; null where there are no objects. `date` is the day of writing, as in 20050131. A drawing that needs
 * no more than the profile MIL-STD-2301A becomes a metafile of that profile, others a general one. ERROR_NOT_SUPPORTED
 * where a number is beyond what the encoding holds. May throw std::bad_alloc.
 */
Status WriteCgm(const Drawing &drawing, const Box *bounds, std::string_view date, std::vector<std::uint8_t> &data);

}  // namespace ksvect
