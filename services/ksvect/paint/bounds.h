// The box around a drawing, as it is painted.
#pragma once

#include "ksvect/model/drawing.h"

namespace ksvect {

/**
 * The box around all objects, without the width of their lines; text is as wide as its font makes it. False, and a box
 * at the origin, for a drawing without objects.
 */
bool BoundsOf(const Drawing &drawing, Box &bounds);

/** The extent, or the bounds where there is none; false without either. */
bool ExtentOf(const Drawing &drawing, Box &extent);

}  // namespace ksvect
