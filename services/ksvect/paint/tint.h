// The pixels of areas that are not of one colour.
#pragma once

#include "ksvect/paint/mark.h"

namespace ksvect {

/** Fills `pixels`, rows of `stride` pixels for `place` on the canvas, with premultiplied pixels of a hatch. */
void TintHatch(Hatch hatch, Color color, const KsRect &place, std::uint32_t *pixels, std::int32_t stride);

/** The same with the cells of a grid. */
void TintCells(const CellGrid &grid, const KsRect &place, std::uint32_t *pixels, std::int32_t stride);

}  // namespace ksvect
