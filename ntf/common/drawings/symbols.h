// The symbols that graphics of the 2.0 layout are: small bitmaps, and objects by number.
#pragma once

#include "headers/display_offset.h"
#include "headers/nitffile.h"

#include <span>

namespace ksntfx {

/**
 * Paints a bitmap symbol of NPIXPL by NLIPS pixels. Symbols of one bit take their colours from SCOLOR, and all but
 * those of SCOLOR N show the canvas through their zero bits. ERROR_FILE_FORMAT where the data run out,
 * ERROR_INVALID_VALUE or ERROR_NO_MEMORY for sizes that make no bitmap. Without a context the data are only checked.
 */
Status DrawBitmapSymbol(const GraphicSubheader &graphic, std::span<char> data, KsDeviceContext *context,
                        const DisplayOffset &offset);

/**
 * Builds the object of type SNUM in the graphic's `vector`, and paints it where `render` is set. Types that nobody has
 * given a form leave an empty layer.
 */
Status BuildObjectSymbol(GraphicSubheader &graphic, KsDeviceContext *context, const DisplayOffset &offset, bool render);

}  // namespace ksntfx
