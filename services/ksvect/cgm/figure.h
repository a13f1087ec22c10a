// Closed figures: lines and areas that together are one area.
#pragma once

#include "ksvect/model/drawing.h"

namespace ksvect::cgm {

/** Gathers the shapes of a figure. */
class Figure {
 public:
  /** True where the shape is a line or an area, and so part of the figure. */
  bool Add(const Shape &shape);

  /** The line that joins the last point with what follows is a visible one. */
  void ConnectNext() { connected = true; }

  /** Closes the region that is open; lines that follow are of another one. */
  void NewRegion();

  /** The area of all regions; leaves an empty figure. */
  PolygonSet Finish();

 private:
  void AddLine(const std::vector<Point> &points);
  void AddArea(const std::vector<Point> &points);
  void AddArc(const Ellipse &arc);
  void AddSet(const PolygonSet &set);
  EdgeFlag Joint(EdgeFlag visible, EdgeFlag invisible);

  PolygonSet area;
  std::size_t regionStart = 0; /**< where the points of the open region begin */
  bool connected = false;
};

}  // namespace ksvect::cgm
