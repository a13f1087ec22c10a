#include "ksvect/paint/bounds.h"

#include "ksvect/paint/text_layout.h"

#include <numbers>

namespace ksvect {
namespace {

/** The points of shapes that a box has to hold. */
class BoundsReader {
 public:
  BoundsReader(const Style &ofStyle, GrowingBox &target) : style(ofStyle), box(target) {}

  template <class Shape>
  requires requires(const Shape &shape) { shape.points; }
  void operator()(const Shape &shape) const {
    for (const Point point : shape.points) box.Add(point);
  }

  void operator()(const Rectangle &rectangle) const {
    box.Add(rectangle.first);
    box.Add(rectangle.second);
  }

  void operator()(const Ellipse &ellipse) const {
    if (ellipse.closure == Closure::Pie) box.Add(ellipse.center);
    if (ellipse.closure != Closure::Full) {
      AddAt(ellipse, ellipse.start);
      AddAt(ellipse, ellipse.end);
    }
    AddFarthest(ellipse, std::atan2(ellipse.second.x, ellipse.first.x));
    AddFarthest(ellipse, std::atan2(ellipse.second.y, ellipse.first.y));
  }

  void operator()(const Text &text) const {
    for (const Point corner : CornersOf(LayoutOf(text, style.text))) box.Add(corner);
  }

  void operator()(const CellArray &array) const {
    for (const Point corner :
         {array.origin, array.opposite, array.alongEnd, array.origin + (array.opposite - array.alongEnd)}) {
      box.Add(corner);
    }
  }

 private:
  void AddAt(const Ellipse &ellipse, double angle) const {
    box.Add(ellipse.center + ellipse.first * std::cos(angle) + ellipse.second * std::sin(angle));
  }

  /** An ellipse is farthest out at an angle and opposite to it, where the arc reaches these. */
  void AddFarthest(const Ellipse &ellipse, double angle) const {
    for (const double farthest : {angle, angle + std::numbers::pi}) {
      const double behindStart = std::fmod(std::fmod(farthest - ellipse.start, kTurn) + kTurn, kTurn);
      if (ellipse.closure == Closure::Full || behindStart <= ellipse.end - ellipse.start) AddAt(ellipse, farthest);
    }
  }

  const Style &style;
  GrowingBox &box;
};

}  // namespace

bool BoundsOf(const Drawing &drawing, Box &bounds) {
  const Style plain;
  GrowingBox around;
  for (const Layer &layer : drawing.layers) {
    for (const Object &object : layer.objects) {
      const Style &style = object.style < drawing.styles.size() ? drawing.styles[object.style] : plain;
      std::visit(BoundsReader(style, around), object.shape);
    }
  }
  bounds = around.IsEmpty() ? Box{} : around.box;
  return !around.IsEmpty();
}

bool ExtentOf(const Drawing &drawing, Box &extent) {
  if (!drawing.hasExtent) return BoundsOf(drawing, extent);
  extent = drawing.extent;
  return true;
}

}  // namespace ksvect
