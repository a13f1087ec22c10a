#include "ksvect/cgm/shape_writer.h"

#include "ksvect/cgm/style_writer.h"

#include <algorithm>
#include <cmath>
#include <span>
#include <variant>
#include <vector>

namespace ksvect::cgm {
namespace {

/** How far the halves of a circle may differ, against its radius. */
constexpr double kRoundness = 1e-9;

constexpr std::size_t kLeastOfLine = 2;
constexpr std::size_t kLeastOfPolygon = 3;

constexpr unsigned kFinal = 1;  /**< the text is complete */
constexpr unsigned kPacked = 1; /**< all cells one after another */
constexpr unsigned kPie = 0;
constexpr unsigned kChord = 1;

double Dot(Point a, Point b) {
  return a.x * b.x + a.y * b.y;
}

/** Whether the diameters are those of a circle. */
bool IsCircle(const Ellipse &ellipse) {
  const double radius = LengthOf(ellipse.first);
  return std::abs(LengthOf(ellipse.second) - radius) <= kRoundness * radius &&
         std::abs(Dot(ellipse.first, ellipse.second)) <= kRoundness * radius * radius;
}

Point RayAt(const Ellipse &ellipse, double angle) {
  return ellipse.first * std::cos(angle) + ellipse.second * std::sin(angle);
}

/** Writes the objects of a drawing. */
class ShapeWriter {
 public:
  explicit ShapeWriter(Encoder &target) : encoder(target) {}

  void operator()(const Polyline &line) { Points(kPolyline, line.points, kLeastOfLine); }
  void operator()(const DisjointPolyline &lines) {
    Points(kDisjointPolyline, std::span(lines.points).first(lines.points.size() / 2 * 2), kLeastOfLine);
  }
  void operator()(const Polygon &polygon) { Points(kPolygon, polygon.points, kLeastOfPolygon); }
  void operator()(const Markers &markers) { Points(kPolymarker, markers.points, 1); }

  void operator()(const PolygonSet &set) {
    if (set.flags.size() != set.points.size()) return encoder.Refuse();
    const std::size_t parameters = encoder.Begin({kPrimitives, kPolygonSet});
    for (std::size_t i = 0; i < set.points.size(); ++i) {
      encoder.Place(set.points[i]);
      encoder.Enumeration(static_cast<unsigned>(set.flags[i]));
    }
    encoder.End(parameters);
  }

  void operator()(const Rectangle &rectangle) {
    const std::size_t parameters = encoder.Begin({kPrimitives, kRectangle});
    encoder.Place(rectangle.first);
    encoder.Place(rectangle.second);
    encoder.End(parameters);
  }

  void operator()(const Text &text) {
    const std::size_t parameters = encoder.Begin({kPrimitives, text.restricted ? kRestrictedText : kText});
    if (text.restricted) {
      encoder.Vdc(text.extent.x);
      encoder.Vdc(text.extent.y);
    }
    encoder.Place(text.position);
    encoder.Enumeration(kFinal);
    encoder.Text(text.text);
    encoder.End(parameters);
  }

  void operator()(const CellArray &cells) {
    if (!HasAllCells(cells)) return encoder.Refuse();
    const std::size_t parameters = encoder.Begin({kPrimitives, kCellArray});
    for (const Point corner : {cells.origin, cells.opposite, cells.alongEnd}) encoder.Place(corner);
    encoder.Integer(cells.columns);
    encoder.Integer(cells.rows);
    encoder.Integer(kLocalPrecision);
    encoder.Enumeration(kPacked);
    encoder.Rows(cells.colors, cells.columns);
    encoder.End(parameters);
  }

  void operator()(const Ellipse &ellipse) {
    const bool circle = IsCircle(ellipse);
    if (ellipse.closure == Closure::Full) {
      WriteWhole(ellipse, circle);
    } else {
      // A circle's arc runs from x to y in the metafile; one that runs the other way is an ellipse's, which has the
      // direction of its diameters.
      const double direction = CrossOf(ellipse.first, ellipse.second);
      WriteArc(ellipse, circle && (encoder.IsUpsideDown() ? direction < 0 : direction > 0));
    }
  }

 private:
  /** Repeats the last point where there are fewer than a metafile requires. */
  void Points(PrimitiveElement number, std::span<const Point> points, std::size_t least) {
    const std::size_t parameters = encoder.Begin({kPrimitives, number});
    for (const Point point : points) encoder.Place(point);
    for (std::size_t i = points.size(); i < least; ++i) encoder.Place(points.back());
    encoder.End(parameters);
  }

  void WriteWhole(const Ellipse &ellipse, bool circle) {
    const std::size_t parameters = encoder.Begin({kPrimitives, circle ? kCircle : cgm::kEllipse});
    encoder.Place(ellipse.center);
    if (circle) {
      encoder.Vdc(LengthOf(ellipse.first));
    } else {
      encoder.Place(ellipse.center + ellipse.first);
      encoder.Place(ellipse.center + ellipse.second);
    }
    encoder.End(parameters);
  }

  void WriteArc(const Ellipse &ellipse, bool circle) {
    const bool open = ellipse.closure == Closure::Open;
    const unsigned ofCircle = open ? kCircularArcCenter : kCircularArcCenterClose;
    const unsigned ofEllipse = open ? kEllipticalArc : kEllipticalArcClose;
    const double sweep = ellipse.end - ellipse.start;
    if (!std::isfinite(sweep)) return encoder.Refuse();
    const std::size_t parameters = encoder.Begin({kPrimitives, circle ? ofCircle : ofEllipse});
    encoder.Place(ellipse.center);
    if (!circle) {
      encoder.Place(ellipse.center + ellipse.first);
      encoder.Place(ellipse.center + ellipse.second);
    }
    const std::size_t startRay = encoder.Parameters(parameters).size();
    encoder.Ray(RayAt(ellipse, ellipse.start));
    const std::size_t endRay = encoder.Parameters(parameters).size();
    // Rays that are the same mean a whole turn.
    encoder.Ray(RayAt(ellipse, sweep < kTurn ? ellipse.end : ellipse.start));
    const auto written = encoder.Parameters(parameters);
    const std::size_t size = endRay - startRay;
    if (sweep < kTurn / 2 && std::ranges::equal(written.subspan(startRay, size), written.subspan(endRay, size))) {
      encoder.Drop(parameters);
      return WriteSliver(ellipse);
    }
    if (circle) encoder.Vdc(LengthOf(ellipse.first));
    if (!open) encoder.Enumeration(ellipse.closure == Closure::Pie ? kPie : kChord);
    encoder.End(parameters);
  }

  /** An arc too short for its rays to differ: the line between its ends. */
  void WriteSliver(const Ellipse &ellipse) {
    std::vector<Point> points = {ellipse.center + RayAt(ellipse, ellipse.start),
                                 ellipse.center + RayAt(ellipse, ellipse.end)};
    if (ellipse.closure == Closure::Open) return Points(kPolyline, points, kLeastOfLine);
    points.push_back(ellipse.closure == Closure::Pie ? ellipse.center : points.front());
    Points(kPolygon, points, kLeastOfPolygon);
  }

  Encoder &encoder;
};

}  // namespace

bool IsBlank(const Shape &shape) {
  const auto *lines = std::get_if<DisjointPolyline>(&shape);
  if (lines != nullptr && lines->points.size() < 2) return true;
  return std::visit(
      [](const auto &object) {
        if constexpr (requires { object.points; }) return object.points.empty();
        if constexpr (requires { object.text; }) return object.text.empty();
        return false;
      },
      shape);
}

void WriteShape(Encoder &encoder, const Shape &shape) {
  std::visit(ShapeWriter(encoder), shape);
}

}  // namespace ksvect::cgm
