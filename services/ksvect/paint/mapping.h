// Where a drawing lies on the canvas.
#pragma once

#include "kskernel.h"
#include "ksvect/paint/geometry.h"

namespace ksvect {

/** The rectangle of the canvas that a part of a drawing is laid onto. It doesn't clip. */
struct Placement {
  KsRect rectangle;
  bool upwards = true; /**< y of the drawing runs up the canvas; otherwise down */
};

/** How the space of a drawing lies on the canvas. */
struct Mapping {
  Affine toCanvas;
  double scale = 1; /**< pixels of a unit, the mean of both directions */
  KsRect rectangle = {};
  bool upwards = true;
};

/** Lays `extent` onto the rectangle of a placement; unscaled in a direction in which it has no size. */
Mapping MappingOf(const Box &extent, const Placement &placement);

}  // namespace ksvect
