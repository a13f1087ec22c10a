#include "ksvect/drawing.h"

namespace ksvect {

std::uint32_t StyleNumber(Drawing &drawing, const Style &style) {
  if (drawing.styles.empty() || drawing.styles.back() != style) drawing.styles.push_back(style);
  return static_cast<std::uint32_t>(drawing.styles.size() - 1);
}

Layer &CurrentLayer(Drawing &drawing) {
  if (drawing.layers.empty()) drawing.layers.emplace_back();
  return drawing.layers[drawing.currentLayer];
}

}  // namespace ksvect
