#include "ksvect/model/drawing.h"

#include <cmath>

namespace ksvect {
namespace {

/** Each axis by a factor and an offset of its own. */
struct Change {
  Point factor;
  Point offset;

  Point Place(Point point) const { return {point.x * factor.x + offset.x, point.y * factor.y + offset.y}; }
  Point Vector(Point vector) const { return {vector.x * factor.x, vector.y * factor.y}; }
  /** How much longer something in the direction of `vector` becomes. */
  double Along(Point vector) const {
    const double length = LengthOf(vector);
    return length > 0 ? LengthOf(Vector(vector)) / length : 1;
  }
  double Mean() const { return std::sqrt(factor.x * factor.y); }
};

struct ShapeChange {
  const TextStyle &style;
  const Change &change;

  template <class Lines>
  void operator()(Lines &lines) const {
    for (Point &point : lines.points) point = change.Place(point);
  }
  void operator()(Rectangle &rectangle) const {
    rectangle = {change.Place(rectangle.first), change.Place(rectangle.second)};
  }
  void operator()(Ellipse &ellipse) const {
    ellipse.center = change.Place(ellipse.center);
    ellipse.first = change.Vector(ellipse.first);
    ellipse.second = change.Vector(ellipse.second);
  }
  void operator()(Text &text) const {
    text.position = change.Place(text.position);
    text.extent = {text.extent.x * change.Along(style.along), text.extent.y * change.Along(style.up)};
  }
  void operator()(CellArray &cells) const {
    for (Point *corner : {&cells.origin, &cells.opposite, &cells.alongEnd}) *corner = change.Place(*corner);
  }
};

void ChangeStyle(Style &style, const Change &change) {
  for (Measure *measure : {&style.line.width, &style.edge.width, &style.marker.size}) {
    if (!measure->nominal) measure->value *= change.Mean();
  }
  style.fill.patternOrigin = change.Place(style.fill.patternOrigin);
  style.fill.patternUp = change.Vector(style.fill.patternUp);
  style.fill.patternAlong = change.Vector(style.fill.patternAlong);
  style.text.height *= change.Along(style.text.up);
  style.text.up = change.Vector(style.text.up);
  style.text.along = change.Vector(style.text.along);
  style.clip = {change.Place(style.clip.low), change.Place(style.clip.high)};
}

void ChangeDrawing(Drawing &drawing, const Change &change) {
  for (Layer &layer : drawing.layers) {
    for (Object &object : layer.objects) {
      std::visit(ShapeChange{drawing.styles[object.style].text, change}, object.shape);
    }
  }
  for (Style &style : drawing.styles) ChangeStyle(style, change);
  drawing.extent = {change.Place(drawing.extent.low), change.Place(drawing.extent.high)};
}

}  // namespace

std::uint32_t StyleNumber(Drawing &drawing, const Style &style) {
  if (drawing.styles.empty() || drawing.styles.back() != style) drawing.styles.push_back(style);
  return static_cast<std::uint32_t>(drawing.styles.size() - 1);
}

Layer &CurrentLayer(Drawing &drawing) {
  if (drawing.layers.empty()) drawing.layers.emplace_back();
  return drawing.layers[drawing.currentLayer];
}

void Move(Drawing &drawing, Point offset) {
  ChangeDrawing(drawing, {{1, 1}, offset});
}

void LayOnto(Drawing &drawing, const Box &part, const Box &target) {
  const Point from = part.high - part.low;
  const Point onto = target.high - target.low;
  // Where there is nothing to measure along an axis, its units stay.
  const Point factor = {from.x > 0 && onto.x > 0 ? onto.x / from.x : 1, from.y > 0 && onto.y > 0 ? onto.y / from.y : 1};
  const Point offset = {target.low.x - part.low.x * factor.x, target.low.y - part.low.y * factor.y};
  drawing.extent = part;
  drawing.hasExtent = true;
  ChangeDrawing(drawing, {factor, offset});
}

}  // namespace ksvect
