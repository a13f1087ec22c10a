// Placing one image on the canvas: its position, its transparent pixels, its tones.
#pragma once

#include "compose/canvas.h"
#include "headers/display_offset.h"
#include "headers/nitffile.h"

namespace ksntfx {

/**
 * Draws image `index` at its location plus `offset`. SUCCESS, or what decoding or painting it fails with. With a canvas
 * that isn't discarded after a failure, an image that fails leaves nothing on it.
 */
Status DrawImage(FilterLoadRecord *loadContext, const Canvas &canvas, NitfFile *file, std::uint32_t index,
                 const DisplayOffset &offset);

}  // namespace ksntfx
