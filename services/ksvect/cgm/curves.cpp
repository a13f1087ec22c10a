#include "ksvect/cgm/curves.h"

#include <cmath>

namespace ksvect::cgm {
namespace {

/** Lines for a whole turn of an arc: they keep within a three thousandth of the radius. */
constexpr double kLinesOfTurn = 128;
constexpr int kLinesOfBezier = 32;

double Angle(Point ray) {
  return std::atan2(ray.y, ray.x);
}

/** Makes `end` the first angle behind `start`. */
void SetAngles(Ellipse &arc, double start, double end) {
  arc.start = start;
  arc.end = end;
  while (arc.end <= arc.start) arc.end += kTurn;
}

}  // namespace

Ellipse CircularArc(Point center, double radius, const Rays &rays, Closure closure, bool reversed) {
  // An arc against the direction is one of the circle seen from behind.
  const double side = reversed ? -1 : 1;
  Ellipse arc{center, {radius, 0}, {0, side * radius}, closure};
  SetAngles(arc, side * Angle(rays.start), side * Angle(rays.end));
  return arc;
}

Ellipse EllipticalArc(Point center, Point first, Point second, const Rays &rays, Closure closure) {
  Ellipse arc{center, first, second, closure};
  const double area = CrossOf(first, second);
  const auto parameter = [&](Point ray) { return std::atan2(CrossOf(first, ray) / area, CrossOf(ray, second) / area); };
  arc.end = kTurn;
  if (area != 0) SetAngles(arc, parameter(rays.start), parameter(rays.end));
  return arc;
}

Shape ArcThrough(const Point (&points)[3], Closure closure) {
  const Point middle = points[1] - points[0];
  const Point last = points[2] - points[0];
  if (last == Point{} && middle != Point{}) {
    const Point center = points[0] + middle * 0.5;
    return CircularArc(center, LengthOf(middle) / 2, {points[0] - center, points[0] - center}, closure, false);
  }
  const double turn = 2 * CrossOf(middle, last);
  const double middleSquare = middle.x * middle.x + middle.y * middle.y;
  const double lastSquare = last.x * last.x + last.y * last.y;
  const Point toCenter = {(last.y * middleSquare - middle.y * lastSquare) / turn,
                          (middle.x * lastSquare - last.x * middleSquare) / turn};
  const double radius = LengthOf(toCenter);
  if (turn == 0 || !(radius <= kGreatestNumber)) {
    std::vector<Point> line(std::begin(points), std::end(points));
    if (closure == Closure::Open) return Polyline{std::move(line)};
    return Polygon{std::move(line)};
  }
  const Rays rays = {toCenter * -1, last - toCenter};
  return CircularArc(points[0] + toCenter, radius, rays, closure, turn < 0);
}

void AppendArc(std::vector<Point> &points, const Ellipse &arc) {
  const bool full = arc.closure == Closure::Full;
  const double start = full ? 0 : arc.start;
  const double sweep = full ? kTurn : arc.end - arc.start;
  const double lines = std::ceil(sweep / kTurn * kLinesOfTurn) + 1;
  const int count = static_cast<int>(std::fmin(lines, 2 * kLinesOfTurn));
  // A whole ellipse closes itself.
  for (int i = 0; i < count + (full ? 0 : 1); ++i) {
    const double t = start + sweep * i / count;
    points.push_back(arc.center + arc.first * std::cos(t) + arc.second * std::sin(t));
  }
}

void AppendBezier(std::vector<Point> &points, const Point (&controls)[4]) {
  for (int i = 1; i <= kLinesOfBezier; ++i) {
    const double t = static_cast<double>(i) / kLinesOfBezier;
    const double u = 1 - t;
    points.push_back(controls[0] * (u * u * u) + controls[1] * (3 * u * u * t) + controls[2] * (3 * u * t * t) +
                     controls[3] * (t * t * t));
  }
}

}  // namespace ksvect::cgm
