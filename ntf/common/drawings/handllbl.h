// Label segments on the canvas.
#pragma once

#include "headers/display_offset.h"
#include "headers/nitffile.h"

namespace ksntfx {

/**
 * Writes a label's lines in the context's font, each 20 pixels below the one before; empty lines leave no gap.
 * ERROR_FILE_READ where the text is cut off, ERROR_NO_MEMORY.
 */
Status DrawLabel(KsDeviceContext *context, NitfFile *file, std::uint32_t index, const DisplayOffset &offset);

}  // namespace ksntfx
