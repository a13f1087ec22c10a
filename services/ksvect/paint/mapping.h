// Where a drawing lies on the canvas.
#pragma once

#include "kskernel.h"
#include "ksvect/paint/geometry.h"

namespace ksvect {

/** The rectangle of the canvas that a part of a drawing is laid onto. It doesn't clip. */
struct Placement {
  KsRect rectangle;
  bool upwards = true;         /**< y of the drawing runs up the canvas; otherwise down */
  const Box *window = nullptr; /**< the part of the drawing's space that is laid on; null: its extent */
};

/** How the space of a drawing lies on the canvas. */
struct Mapping {
  Affine toCanvas;
  double scale = 1; /**< pixels of a unit, the mean of both directions */
  KsRect rectangle = {};
  bool linesAbove = true; /**< a level line covers the row above its place on the canvas; otherwise the row below it */
};

/** Lays `window` onto the rectangle of a placement; unscaled in a direction in which it has no size. */
Mapping MappingOf(const Box &window, const Placement &placement);

/**
 * The part of a drawing's space that belongs on its bounds: left, top, right and bottom as the file with the metafile
 * has them, in pixels and with y downwards. It is the bounds themselves where the metafile's units are pixels, and the
 * extent where that is to be scaled. The metafile's descriptors decide, never its objects:
 *   - Whole coordinates with y downwards and no metric scale are pixels, unless the extent is clearly too small to have
 *     the bounds in it.
 *   - Without an extent, or with bounds of no area, there is nothing to scale, and units are pixels.
 */
Box WindowOn(const Drawing &drawing, const KsRect &bounds);

}  // namespace ksvect
