// Graphic segments on the canvas.
#pragma once

#include "compose.h"

/**
 * The right and bottom edge that a graphic reaches. For a CGM both bounds count with its location; for the symbols of
 * the 2.0 layout the second bound is row and column. ERROR_FILE_READ where the data are cut off, ERROR_NOT_SUPPORTED
 * for a drawing that can't be loaded.
 */
std::int32_t MeasureGraphic(NitfFile *file, std::uint32_t index, const DisplayOffset &offset, std::uint32_t *right,
                            std::uint32_t *bottom);

/** Draws a graphic. ERROR_NOT_SUPPORTED: drawings have no decoder yet. */
std::int32_t DrawGraphic(KsDeviceContext *context, NitfFile *file, std::uint32_t index, const DisplayOffset &offset);
