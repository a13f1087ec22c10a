// The composition of a file: the size of its canvas, and all objects drawn on it in order.
#pragma once

#include "compose/canvas.h"
#include "headers/nitffile.h"

namespace ksntfx {

/** The size of the canvas of a loaded file. SUCCESS, ERROR_NO_MEMORY, or what a graphic that is measured fails with. */
Status MeasureCanvas(NitfFile *file, std::uint32_t *width, std::uint32_t *height);

/** Draws all objects from the lowest display level to the highest; see K_NitfDrawObjects. */
Status DrawObjects(FilterLoadRecord *loadContext, const Canvas &canvas, NitfFile *file);

}  // namespace ksntfx
