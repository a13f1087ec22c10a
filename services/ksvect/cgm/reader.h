// Reads computer graphics metafiles (ISO/IEC 8632-3, binary encoding, versions 1 to 3).
#pragma once

#include "internal/status.h"
#include "ksvect/cgm/skipped.h"
#include "ksvect/model/drawing.h"

#include <cstdint>
#include <span>

namespace ksvect {

/**
 * Reads the first picture of a metafile. Elements with unusable parameters are skipped, and listed in `skipped` unless
 * that is null. Of truncated data
 * the beginning is read. ERROR_FILE_FORMAT where there is nothing to draw. May throw std::bad_alloc.
 */
Status ReadCgm(std::span<const std::uint8_t> data, Drawing &drawing, cgm::SkippedElements *skipped = nullptr);

}  // namespace ksvect
