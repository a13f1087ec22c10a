// Graphic segments on the canvas.
#pragma once

#include "headers/display_offset.h"
#include "headers/nitffile.h"

namespace ksntfx {

/**
 * The right and bottom edge that a graphic reaches. For a CGM both bounds count with its location; for the symbols of
 * the 2.0 layout the second bound is row and column. ERROR_FILE_READ where the data are cut off, or what a CGM can't be
 * loaded for.
 */
Status MeasureGraphic(NitfFile *file, std::uint32_t index, const DisplayOffset &offset, std::uint32_t *right,
                      std::uint32_t *bottom);

/**
 * Loads a graphic and tells which pixels its objects take, without the width of their lines, counted from what it is
 * attached to. Nothing where it has no objects. Results as DrawGraphic.
 */
Status PlaceGraphic(NitfFile *file, std::uint32_t index, KsRect *place);

/**
 * Loads a graphic, leaves its drawing in the record's `vector`, and draws it. Without a context nothing is painted.
 * ERROR_FILE_READ, ERROR_FILE_FORMAT, ERROR_NO_MEMORY; `vector` is empty then.
 */
Status DrawGraphic(KsDeviceContext *context, NitfFile *file, std::uint32_t index, const DisplayOffset &offset);

}  // namespace ksntfx
