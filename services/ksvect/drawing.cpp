#include "ksvect/drawing.h"

#include <algorithm>

namespace ksvect {

std::uint32_t StyleNumber(Drawing &drawing, const Style &style) {
  if (drawing.styles.empty() || drawing.styles.back() != style) drawing.styles.push_back(style);
  return static_cast<std::uint32_t>(drawing.styles.size() - 1);
}

Layer &CurrentLayer(Drawing &drawing) {
  if (drawing.layers.empty()) drawing.layers.emplace_back();
  return drawing.layers[drawing.currentLayer];
}

bool BoundsOf(const Drawing &drawing, Box &bounds) {
  bool any = false;
  const auto add = [&](Point p) {
    if (!any) bounds = {p, p};
    any = true;
    bounds.low = {std::min(bounds.low.x, p.x), std::min(bounds.low.y, p.y)};
    bounds.high = {std::max(bounds.high.x, p.x), std::max(bounds.high.y, p.y)};
  };
  for (const Layer &layer : drawing.layers) {
    for (const Object &object : layer.objects) {
      std::visit(
          [&](const auto &shape) {
            if constexpr (requires { shape.points; }) std::for_each(shape.points.begin(), shape.points.end(), add);
          },
          object.shape);
    }
  }
  return any;
}

bool ExtentOf(const Drawing &drawing, Box &extent) {
  if (!drawing.hasExtent) return BoundsOf(drawing, extent);
  extent = drawing.extent;
  return true;
}

}  // namespace ksvect
