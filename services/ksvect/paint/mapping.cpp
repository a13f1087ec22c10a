#include "ksvect/paint/mapping.h"

#include <algorithm>
#include <cmath>

namespace ksvect {
namespace {

/** Bounds are often those of the lines with their width, and so a little larger than the extent. */
constexpr double kSlack = 1.125;

/** Whether a box of one size, or on its side, has room in one of the other. */
bool HasRoom(Point outer, Point inner) {
  return (inner.x <= outer.x && inner.y <= outer.y) || (inner.y <= outer.x && inner.x <= outer.y);
}

bool IsWithin(const Box &outer, const Box &inner) {
  return inner.low.x >= outer.low.x && inner.low.y >= outer.low.y && inner.high.x <= outer.high.x &&
         inner.high.y <= outer.high.y;
}

}  // namespace

Mapping MappingOf(const Box &window, const Placement &placement) {
  const KsRect &to = placement.rectangle;
  const auto scale = [](double from, double pixels) { return std::isnormal(from) ? pixels / from : 1.0; };
  const double x = scale(window.high.x - window.low.x, double(to.right) - to.left);
  const double y = scale(window.high.y - window.low.y, double(to.bottom) - to.top) * (placement.upwards ? -1 : 1);
  Mapping mapping = {{{}, {x, 0}, {0, y}}, std::sqrt(std::abs(x * y)), to, placement.upwards};
  const Point corner = {double(to.left), double(placement.upwards ? to.bottom : to.top)};
  mapping.toCanvas.origin = corner - mapping.toCanvas.Vector(window.low);
  return mapping;
}

Box WindowOn(const Drawing &drawing, const KsRect &bounds) {
  const auto [left, right] = std::minmax({bounds.left, bounds.right});
  const auto [top, bottom] = std::minmax({bounds.top, bounds.bottom});
  const Box pixels = {{double(left), -double(bottom)}, {double(right), -double(top)}};
  const Point size = pixels.high - pixels.low;
  const Point extent = drawing.extent.high - drawing.extent.low;
  if (!drawing.hasExtent || size.x <= 0 || size.y <= 0 || extent.x <= 0 || extent.y <= 0) return pixels;
  // With y upwards, the origin is the lower left corner, and only bounds that are counted from it fit the extent.
  const bool isInPixels = drawing.inPixels || (drawing.mayBePixels && IsWithin(drawing.extent, pixels));
  return isInPixels && HasRoom(extent * kSlack, size) ? pixels : drawing.extent;
}

}  // namespace ksvect
