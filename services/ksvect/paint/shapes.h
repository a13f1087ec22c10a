// From the objects of a drawing to marks on a canvas.
#pragma once

#include "ksvect/paint/mapping.h"
#include "ksvect/paint/tiles.h"

namespace ksvect {

/** Adds the marks of all objects of a drawing, from the back to the front. */
void AddMarks(const Drawing &drawing, const Mapping &mapping, Tiles &tiles);

}  // namespace ksvect
