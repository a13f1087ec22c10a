#include "ksvect/paint/mapping.h"

#include <cmath>

namespace ksvect {

Mapping MappingOf(const Box &extent, const Placement &placement) {
  const KsRect &to = placement.rectangle;
  const auto scale = [](double from, double pixels) { return std::isnormal(from) ? pixels / from : 1.0; };
  const double x = scale(extent.high.x - extent.low.x, double(to.right) - to.left);
  const double y = scale(extent.high.y - extent.low.y, double(to.bottom) - to.top) * (placement.upwards ? -1 : 1);
  Mapping mapping = {{{}, {x, 0}, {0, y}}, std::sqrt(std::abs(x * y)), to, placement.upwards};
  const Point corner = {double(to.left), double(placement.upwards ? to.bottom : to.top)};
  mapping.toCanvas.origin = corner - mapping.toCanvas.Vector(extent.low);
  return mapping;
}

}  // namespace ksvect
