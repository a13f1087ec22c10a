// Lines and outlines on the canvas, as points.
#pragma once

#include "ksvect/paint/geometry.h"

#include <cstddef>
#include <span>
#include <vector>

namespace ksvect {

/** Points from `first` up to the next contour's. */
struct Contour {
  std::size_t first;
  bool closed;
};

struct Path {
  std::vector<Point> points;
  std::vector<Contour> contours;

  void Begin(bool closed = false) { contours.push_back({points.size(), closed}); }
  void Add(Point point) { points.push_back(point); }
  std::span<const Point> PointsOf(std::size_t contour) const {
    const std::size_t first = contours[contour].first;
    const std::size_t end = contour + 1 < contours.size() ? contours[contour + 1].first : points.size();
    return std::span(points).subspan(first, end - first);
  }
};

/** The points of an arc as a chain of lines that stays within a fraction of a pixel of it. */
void AddArc(Path &path, const Affine &circle, double start, double end);

/** The part of the line from `a` to `b` that lies in the box: false where there is none. */
bool ClipLine(const Box &box, Point &a, Point &b);

/** The part of a ring that lies in the box, with lines along its sides where the ring leaves it. */
void ClipRing(const Box &box, std::vector<Point> &ring, std::vector<Point> &scratch);

/** Lengths that are drawn and left out in turn; the sum is above 0. */
using DashLengths = std::span<const double>;

/**
 * The drawn pieces of a path within the box. Dashes that are too small or too many to be seen as
 * such make whole lines.
 */
Path Dashed(const Path &path, DashLengths lengths, const Box &box);

}  // namespace ksvect
