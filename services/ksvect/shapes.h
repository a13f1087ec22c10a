// From the objects of a drawing to marks on a canvas.
#pragma once

#include "ksvect/painter.h"
#include "ksvect/tiles.h"

namespace ksvect {

/** How the space of a drawing lies on the canvas. */
struct Mapping {
  Affine toCanvas;
  double scale = 1; /**< pixels of a unit, the mean of both directions */
  KsRect rectangle = {};
  bool upwards = true;
};

/** The extent onto the rectangle of a placement. */
Mapping MappingOf(const Box &extent, const Placement &placement);

/** Adds the marks of all objects of a drawing, from the back to the front. */
void AddMarks(const Drawing &drawing, const Mapping &mapping, Tiles &tiles);

}  // namespace ksvect
