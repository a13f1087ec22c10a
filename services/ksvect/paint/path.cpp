#include "ksvect/paint/path.h"

#include <numbers>
#include <numeric>

namespace ksvect {
namespace {

/** How far a chain of lines may stay from its arc: pixels. */
constexpr double kArcTolerance = 0.05;
constexpr double kMostArcLines = 16384;
constexpr double kFewestLinesOfCircle = 16;

constexpr std::size_t kMostDashes = 1'000'000;
constexpr double kShortestPeriod = 1.5;

/** A side of a box: what is inside has a coordinate of `sign` times at most `limit`. */
struct Side {
  double Point::*coordinate;
  double sign;
  double limit;

  double Excess(Point p) const { return p.*coordinate * sign - limit; }
};

/** Where the line from `a` to `b`, which lie on different sides, passes. */
Point Crossing(const Side &side, Point a, Point b) {
  const double excess = side.Excess(a);
  Point crossing = a + (b - a) * (excess / (excess - side.Excess(b)));
  crossing.*side.coordinate = side.limit * side.sign;
  return crossing;
}

void ClipToSide(const Side &side, const std::vector<Point> &ring, std::vector<Point> &clipped) {
  clipped.clear();
  if (ring.empty()) return;
  Point before = ring.back();
  bool wasInside = side.Excess(before) <= 0;
  for (const Point point : ring) {
    const bool isInside = side.Excess(point) <= 0;
    if (isInside != wasInside) clipped.push_back(Crossing(side, before, point));
    if (isInside) clipped.push_back(point);
    before = point;
    wasInside = isInside;
  }
}

/** Cuts contours into dashes. */
class Dasher {
 public:
  Dasher(DashLengths dashLengths, const Box &visible, Path &target)
      : lengths(dashLengths), box(visible), pieces(target) {
    period = std::accumulate(lengths.begin(), lengths.end(), 0.0);
  }

  void BeginContour() {
    place = 0;
    drawing = false;
  }

  void Line(Point a, Point b) {
    const double length = LengthOf(b - a);
    if (!(length > 0)) return;
    Point from = a;
    Point to = b;
    if (!ClipLine(box, from, to)) {
      Skip(length);
      return;
    }
    const Point direction = (b - a) * (1 / length);
    const double start = LengthOf(from - a);
    const double end = std::min(LengthOf(to - a), length);
    if (start > 0) Skip(start);
    Walk(a, direction, start, end);
    if (end < length) Skip(length - end);
  }

 private:
  /** Goes on without drawing. */
  void Skip(double length) {
    place = std::fmod(place + length, period);
    drawing = false;
  }

  void Walk(Point a, Point direction, double at, double end) {
    std::size_t index = 0;
    double left = 0;
    FindPlace(index, left);
    while (at < end) {
      const double step = std::min(left, end - at);
      if (index % 2 == 0) Draw(a + direction * at, a + direction * (at + step));
      at += step;
      place = std::fmod(place + step, period);
      left -= step;
      if (left > 0) break;
      drawing = false;
      index = (index + 1) % lengths.size();
      left = lengths[index];
    }
  }

  /** Which length `place` lies in, and how much of it is left. */
  void FindPlace(std::size_t &index, double &left) const {
    double end = 0;
    for (index = 0; index + 1 < lengths.size(); ++index) {
      end += lengths[index];
      if (place < end) break;
    }
    if (place >= end) end += lengths[index];
    left = std::max(end - place, 1e-6);
  }

  void Draw(Point from, Point to) {
    if (!drawing) {
      pieces.Begin();
      pieces.Add(from);
    }
    pieces.Add(to);
    drawing = true;
  }

  DashLengths lengths;
  Box box;
  Path &pieces;
  double period = 0;
  double place = 0;
  bool drawing = false;
};

}  // namespace

void AddArc(Path &path, const Affine &circle, double start, double end) {
  const double radius = std::max(LengthOf(circle.x), LengthOf(circle.y));
  const double turn = 2 * std::numbers::pi;
  const double span = std::isfinite(end - start) ? std::clamp(end - start, 0.0, turn) : turn;
  const double step = std::min(2 * std::acos(std::max(1 - kArcTolerance / radius, 0.0)), turn / kFewestLinesOfCircle);
  // What is no number makes the fewest lines.
  const auto lines = static_cast<int>(std::fmin(std::fmax(std::ceil(span / step), 1), kMostArcLines));
  for (int i = 0; i <= lines; ++i) {
    const double angle = start + span * i / lines;
    path.Add(circle({std::cos(angle), std::sin(angle)}));
  }
}

bool ClipLine(const Box &box, Point &a, Point &b) {
  const Side sides[] = {
      {&Point::x, -1, -box.low.x}, {&Point::x, 1, box.high.x}, {&Point::y, -1, -box.low.y}, {&Point::y, 1, box.high.y}};
  for (const Side &side : sides) {
    const bool aInside = side.Excess(a) <= 0;
    const bool bInside = side.Excess(b) <= 0;
    if (!aInside && !bInside) return false;
    if (aInside && bInside) continue;
    (aInside ? b : a) = Crossing(side, a, b);
  }
  return true;
}

void ClipRing(const Box &box, std::vector<Point> &ring, std::vector<Point> &scratch) {
  const Side sides[] = {
      {&Point::x, -1, -box.low.x}, {&Point::x, 1, box.high.x}, {&Point::y, -1, -box.low.y}, {&Point::y, 1, box.high.y}};
  for (const Side &side : sides) {
    ClipToSide(side, ring, scratch);
    ring.swap(scratch);
  }
}

Path Dashed(const Path &path, DashLengths lengths, const Box &box) {
  if (std::accumulate(lengths.begin(), lengths.end(), 0.0) < kShortestPeriod) return path;
  Path pieces;
  Dasher dasher(lengths, box, pieces);
  for (std::size_t i = 0; i < path.contours.size(); ++i) {
    const std::span<const Point> points = path.PointsOf(i);
    dasher.BeginContour();
    for (std::size_t j = 1; j < points.size(); ++j) {
      dasher.Line(points[j - 1], points[j]);
      if (pieces.contours.size() > kMostDashes) return path;
    }
    if (path.contours[i].closed && points.size() > 1) dasher.Line(points.back(), points.front());
  }
  return pieces;
}

}  // namespace ksvect
