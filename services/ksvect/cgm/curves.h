// Arcs and curves of a metafile as shapes of the model.
#pragma once

#include "ksvect/model/drawing.h"

namespace ksvect::cgm {

/** The angles of an arc, from the direction of `start` to that of `end`: the whole circle where these are the same. */
struct Rays {
  Point start;
  Point end;
};

/** From the start to the end in the direction from x to y, or against it. */
Ellipse CircularArc(Point center, double radius, const Rays &rays, Closure closure, bool reversed);

/** From the start to the end in the direction from the first diameter to the second. */
Ellipse EllipticalArc(Point center, Point first, Point second, const Rays &rays, Closure closure);

/** The arc from the first point through the second to the third one; lines where they are in a row. */
Shape ArcThrough(const Point (&points)[3], Closure closure);

/** Appends points along the ellipse or arc, from its start to its end. */
void AppendArc(std::vector<Point> &points, const Ellipse &arc);

/** Appends points along a Bezier curve, without the first one. */
void AppendBezier(std::vector<Point> &points, const Point (&controls)[4]);

}  // namespace ksvect::cgm
