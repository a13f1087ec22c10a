#include "ksvect/drawing.h"

#include "ksvect/painter.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <numbers>

namespace ksvect {
namespace {

/** A box that grows by what it is shown. */
class Growing {
 public:
  void Show(Point point) {
    box.low = {std::min(box.low.x, point.x), std::min(box.low.y, point.y)};
    box.high = {std::max(box.high.x, point.x), std::max(box.high.y, point.y)};
  }
  void Show(const std::vector<Point> &points) {
    for (const Point point : points) Show(point);
  }
  bool IsEmpty() const { return box.low.x > box.high.x; }
  const Box &Shown() const { return box; }

 private:
  static constexpr double kFar = std::numeric_limits<double>::infinity();

  Box box{{kFar, kFar}, {-kFar, -kFar}};
};

Point PointOn(const Ellipse &ellipse, double t) {
  return ellipse.center + ellipse.first * std::cos(t) + ellipse.second * std::sin(t);
}

/** An arc reaches furthest at its ends and, on either axis, at the two places where it runs across that axis. */
void ShowEllipse(const Ellipse &ellipse, Growing &box) {
  const bool whole = ellipse.closure == Closure::Full;
  const double start = whole ? 0 : ellipse.start;
  const double end = whole ? 2 * std::numbers::pi : ellipse.end;
  box.Show(PointOn(ellipse, start));
  box.Show(PointOn(ellipse, end));
  if (ellipse.closure == Closure::Pie) box.Show(ellipse.center);
  for (const double turn :
       {std::atan2(ellipse.second.x, ellipse.first.x), std::atan2(ellipse.second.y, ellipse.first.y)}) {
    const double first = turn + std::ceil((start - turn) / std::numbers::pi) * std::numbers::pi;
    for (const double t : {first, first + std::numbers::pi}) {
      if (t <= end) box.Show(PointOn(ellipse, t));
    }
  }
}

struct ShapeBounds {
  const Style &style;
  Growing &box;

  template <class Lines>
  void operator()(const Lines &lines) const {
    box.Show(lines.points);
  }
  void operator()(const Rectangle &rectangle) const {
    box.Show(rectangle.first);
    box.Show(rectangle.second);
  }
  void operator()(const Ellipse &ellipse) const { ShowEllipse(ellipse, box); }
  void operator()(const Text &text) const {
    for (const Point corner : CornersOf(text, style.text).corners) box.Show(corner);
  }
  void operator()(const CellArray &cells) const {
    for (const Point corner : {cells.origin, cells.opposite, cells.alongEnd}) box.Show(corner);
    box.Show(cells.origin + (cells.opposite - cells.alongEnd));
  }
};

double Length(Point vector) {
  return std::hypot(vector.x, vector.y);
}

/** Each axis by a factor and an offset of its own. */
struct Change {
  Point factor;
  Point offset;

  Point Place(Point point) const { return {point.x * factor.x + offset.x, point.y * factor.y + offset.y}; }
  Point Vector(Point vector) const { return {vector.x * factor.x, vector.y * factor.y}; }
  /** How much longer something in the direction of `vector` becomes. */
  double Along(Point vector) const {
    const double length = Length(vector);
    return length > 0 ? Length(Vector(vector)) / length : 1;
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

bool BoundsOf(const Drawing &drawing, Box &bounds) {
  Growing box;
  for (const Layer &layer : drawing.layers) {
    for (const Object &object : layer.objects) std::visit(ShapeBounds{drawing.styles[object.style], box}, object.shape);
  }
  bounds = box.IsEmpty() ? Box{} : box.Shown();
  return !box.IsEmpty();
}

bool ExtentOf(const Drawing &drawing, Box &extent) {
  if (!drawing.hasExtent) return BoundsOf(drawing, extent);
  extent = drawing.extent;
  return true;
}

void Move(Drawing &drawing, Point offset) {
  ChangeDrawing(drawing, {{1, 1}, offset});
}

void LayOnto(Drawing &drawing, const Box &target) {
  Box extent;
  if (!ExtentOf(drawing, extent)) return;
  const Point from = extent.high - extent.low;
  const Point onto = target.high - target.low;
  // Where there is nothing to measure along an axis, its units stay.
  const Point factor = {from.x > 0 && onto.x > 0 ? onto.x / from.x : 1, from.y > 0 && onto.y > 0 ? onto.y / from.y : 1};
  const Point offset = {target.low.x - extent.low.x * factor.x, target.low.y - extent.low.y * factor.y};
  drawing.extent = extent;
  drawing.hasExtent = true;
  ChangeDrawing(drawing, {factor, offset});
}

}  // namespace ksvect
