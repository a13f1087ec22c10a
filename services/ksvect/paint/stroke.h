// Lines as they are seen: their width, their dashes, and their place among the pixels.
#pragma once

#include "ksvect/paint/mapping.h"
#include "ksvect/paint/tiles.h"

namespace ksvect {

struct StrokeStyle {
  const LineStyle &line;
  const Style &style; /**< says what gaps show */
  Join join = Join::Round;
  bool straight = true; /**< of lines that are meant to be straight, so that those along an axis go to whole pixels */
};

/** Adds the marks of a line. */
void AddStroke(const StrokeStyle &stroke, const Mapping &mapping, Path path, const KsRect &clip, Tiles &tiles);

}  // namespace ksvect
