#include "ksvect/paint/stroke.h"

namespace ksvect {
namespace {

/** Widths this near to a whole number of pixels are meant to be one. */
constexpr double kWholeWidth = 0.01;
/** A line that strays less than this from an axis runs along it: pixels. */
constexpr double kAlongAxis = 0.01;

/** Lengths of dashes and gaps by the line's width. */
constexpr double kDash[] = {6, 4};
constexpr double kDot[] = {2, 3};
constexpr double kDashDot[] = {6, 3, 2, 3};
constexpr double kDashDotDot[] = {6, 3, 2, 3, 2, 3};

DashLengths LengthsOf(Dash dash) {
  switch (dash) {
    case Dash::Dash:
      return kDash;
    case Dash::Dot:
      return kDot;
    case Dash::DashDot:
      return kDashDot;
    case Dash::DashDotDot:
      return kDashDotDot;
    default:
      return {};
  }
}

double WidthOf(const Measure &measure, const Mapping &mapping) {
  // What is no number has the least width, too.
  return std::fmin(std::fmax(measure.value * (measure.nominal ? 1 : mapping.scale), 1), kWidestLine);
}

/**
 * Moves lines along an axis so that they cover whole pixels: a pixel wide, they would otherwise often be two, and pale.
 * A coordinate of the drawing means the pixels that begin there, in the direction of the metafile's axes; on the far
 * border of the rectangle it means the last ones.
 */
class PixelGrid {
 public:
  PixelGrid(const Mapping &mapping, double lineWidth)
      : rectangle(BoxOf(mapping.rectangle)), linesAbove(mapping.linesAbove), odd(std::lround(lineWidth) % 2 != 0) {}

  void Align(Path &path) const {
    for (std::size_t i = 0; i < path.contours.size(); ++i) {
      Align(path.points.data() + path.contours[i].first, path.PointsOf(i).size(), path.contours[i].closed);
    }
  }

 private:
  void Align(Point *points, std::size_t count, bool closed) const {
    if (count < 2) return;
    const Point first = points[0];
    Point from = first;
    for (std::size_t i = 0; i + (closed ? 0 : 1) < count; ++i) {
      const bool last = i + 1 == count;
      Point &end = points[last ? 0 : i + 1];
      const Point to = last ? first : end;
      AlignLine(from, to, points[i], end);
      from = to;
    }
  }

  /** Aligns the ends of a line that was from `from` to `to`. */
  void AlignLine(Point from, Point to, Point &start, Point &end) const {
    const bool upright = std::abs(to.x - from.x) < kAlongAxis;
    const bool level = std::abs(to.y - from.y) < kAlongAxis;
    if (upright == level) return;
    if (upright) {
      start.x = end.x = Aligned(from.x, rectangle.low.x, rectangle.high.x, false);
    } else {
      start.y = end.y = Aligned(from.y, rectangle.low.y, rectangle.high.y, linesAbove);
    }
  }

  double Aligned(double place, double low, double high, bool backwards) const {
    if (!odd) return std::round(place);
    const double center = backwards ? std::ceil(place) - 0.5 : std::floor(place) + 0.5;
    const bool inside = place >= low && place <= high && high - low >= 1;
    return inside ? std::clamp(center, low + 0.5, high - 0.5) : center;
  }

  Box rectangle;
  bool linesAbove;
  bool odd;
};

/** Lines without length are dots as large as the line is wide. */
void AddDots(const Path &path, const Mark &stroke, Tiles &tiles) {
  Mark dots = stroke;
  dots.kind = MarkKind::Fill;
  dots.byParity = false;
  dots.path = {};
  const double half = stroke.width / 2;
  for (std::size_t i = 0; i < path.contours.size(); ++i) {
    const std::span<const Point> points = path.PointsOf(i);
    GrowingBox around;
    for (const Point point : points) around.Add(point);
    const bool isDot = !points.empty() && LengthOf(around.box.high - around.box.low) < kAlongAxis;
    if (!isDot) continue;
    const Point center = points.front();
    dots.path.Begin(true);
    for (const Point corner : {Point{-half, -half}, Point{half, -half}, Point{half, half}, Point{-half, half}}) {
      dots.path.Add(center + corner);
    }
  }
  tiles.Add(std::move(dots));
}

}  // namespace

void AddStroke(const StrokeStyle &stroke, const Mapping &mapping, Path path, const KsRect &clip, Tiles &tiles) {
  Mark mark;
  mark.kind = MarkKind::Stroke;
  mark.width = WidthOf(stroke.line.width, mapping);
  mark.join = stroke.join;
  mark.clip = clip;
  const bool whole = std::abs(mark.width - std::round(mark.width)) < kWholeWidth;
  if (stroke.straight && whole) PixelGrid(mapping, mark.width).Align(path);
  mark.color = stroke.line.color;
  AddDots(path, mark, tiles);

  std::vector<double> lengths;
  for (const double length : LengthsOf(stroke.line.dash)) lengths.push_back(length * mark.width);
  if (!lengths.empty() && !stroke.style.transparent) {
    Mark gaps = mark;
    gaps.color = stroke.style.auxiliary;
    gaps.path = path;
    tiles.Add(std::move(gaps));
  }
  mark.path = lengths.empty() ? std::move(path) : Dashed(path, lengths, Grown(BoxOf(clip), ReachOf(mark)));
  tiles.Add(std::move(mark));
}

}  // namespace ksvect
