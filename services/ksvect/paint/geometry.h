// Places on a canvas, and how a drawing comes there.
#pragma once

#include "kskernel.h"
#include "ksvect/model/drawing.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace ksvect {

/** Canvas coordinates beyond this say nothing more: far outside, and safe to calculate with. */
constexpr double kFarAway = 1e9;

/** Into the range of canvas coordinates; what is no number goes there as well. */
inline Point Bounded(Point point) {
  const auto bound = [](double value) { return std::fmax(std::fmin(value, kFarAway), -kFarAway); };
  return {bound(point.x), bound(point.y)};
}

/** origin + x * p.x + y * p.y */
struct Affine {
  Point origin;
  Point x = {1, 0};
  Point y = {0, 1};

  Point Vector(Point p) const { return x * p.x + y * p.y; }
  Point operator()(Point p) const { return Bounded(origin + Vector(p)); }

  bool IsInvertible() const { return std::isnormal(CrossOf(x, y)); }
  /** Only where IsInvertible. */
  Affine Inverse() const {
    const double area = CrossOf(x, y);
    Affine inverse{{}, {y.y / area, -x.y / area}, {-y.x / area, x.x / area}};
    inverse.origin = inverse.Vector(origin) * -1;
    return inverse;
  }
};

/** A box that nothing is in, and that grows by what is added. */
struct GrowingBox {
  static constexpr double kInfinity = std::numeric_limits<double>::infinity();
  Box box = {{kInfinity, kInfinity}, {-kInfinity, -kInfinity}};

  void Add(Point p) {
    box.low = {std::fmin(box.low.x, p.x), std::fmin(box.low.y, p.y)};
    box.high = {std::fmax(box.high.x, p.x), std::fmax(box.high.y, p.y)};
  }
  bool IsEmpty() const { return box.low.x > box.high.x; }
};

inline Box Grown(const Box &box, double by) {
  return {{box.low.x - by, box.low.y - by}, {box.high.x + by, box.high.y + by}};
}

inline bool Touch(const Box &a, const Box &b) {
  return a.low.x <= b.high.x && a.high.x >= b.low.x && a.low.y <= b.high.y && a.high.y >= b.low.y;
}

inline bool IsInside(const Box &inner, const Box &outer) {
  return inner.low.x >= outer.low.x && inner.high.x <= outer.high.x && inner.low.y >= outer.low.y &&
         inner.high.y <= outer.high.y;
}

// A KsRect serves as a box of whole pixels.

inline bool IsEmpty(const KsRect &r) {
  return r.left >= r.right || r.top >= r.bottom;
}

inline KsRect Intersection(const KsRect &a, const KsRect &b) {
  return {std::max(a.left, b.left), std::max(a.top, b.top), std::min(a.right, b.right), std::min(a.bottom, b.bottom)};
}

/** All pixels that a box touches. */
inline KsRect PixelsOf(const Box &box) {
  const Point low = Bounded(box.low);
  const Point high = Bounded(box.high);
  return {static_cast<std::int32_t>(std::floor(low.x)), static_cast<std::int32_t>(std::floor(low.y)),
          static_cast<std::int32_t>(std::ceil(high.x)), static_cast<std::int32_t>(std::ceil(high.y))};
}

inline Box BoxOf(const KsRect &r) {
  return {{static_cast<double>(r.left), static_cast<double>(r.top)},
          {static_cast<double>(r.right), static_cast<double>(r.bottom)}};
}

}  // namespace ksvect
