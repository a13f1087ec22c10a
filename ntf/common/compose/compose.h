// The picture of a file: which objects it shows, in which order, where each one lies, and how large the canvas is.
#pragma once

#include "headers/nitffile.h"

namespace ksntfx {

/** What kind of segment an object of the display list is. */
enum DisplayKind : std::uint32_t { kDisplayImage = 0, kDisplayGraphic = 2, kDisplayLabel = 3 };

/** The size of the canvas of a loaded file. SUCCESS, ERROR_NO_MEMORY, or what a graphic that is measured fails with. */
Status MeasureCanvas(NitfFile *file, std::uint32_t *width, std::uint32_t *height);

/** Where objects are drawn. */
struct Canvas {
  KsBitmap *bitmap;
  KsDeviceContext *context; /**< on the bitmap, or null */
  bool isDiscarded;         /**< after a failure: a part of an image may then be on it */
};

/** Draws all objects from the lowest display level to the highest; see K_NitfDrawObjects. */
Status DrawObjects(FilterLoadRecord *loadContext, const Canvas &canvas, NitfFile *file);

}  // namespace ksntfx
