#include "ksvect/paint/shapes.h"

#include "ksvect/paint/stroke.h"
#include "ksvect/paint/text_layout.h"

#include <utility>

namespace ksvect {
namespace {

/** The nominal size of markers: pixels. */
constexpr double kNominalMarker = 8;
constexpr double kLargestMarker = 65536;
/** The lines of a marker against its size, and the disc of a dot. */
constexpr double kMarkerLine = 1.0 / 16;
constexpr double kMarkerDot = 0.375;
/** Half the strokes of a cross against its size: it looks as large as a plus. */
constexpr double kCrossArm = 0.4;
/** Half an asterisk's slanted strokes against its size: they stand at 60 degrees to each other. */
constexpr Point kSlantedArm = {0.433, 0.25};
constexpr std::size_t kMarkersOfMark = 4096;

Path RingOf(const std::vector<Point> &points, const Affine &toCanvas, bool closed) {
  Path path;
  path.Begin(closed);
  for (const Point point : points) path.Add(toCanvas(point));
  return path;
}

/** Turns shapes of one style into marks. */
class ShapeMarks {
 public:
  ShapeMarks(const Drawing &ofDrawing, const Mapping &onCanvas, const Style &ofStyle, Tiles &target)
      : drawing(ofDrawing), mapping(onCanvas), style(ofStyle), tiles(target), clip(tiles.Canvas()) {
    if (style.clipped) clip = Intersection(clip, ClipOf(style.clip));
  }

  void operator()(const Polyline &line) const { Line(RingOf(line.points, mapping.toCanvas, false)); }

  void operator()(const DisjointPolyline &lines) const {
    Path path;
    for (std::size_t i = 0; i + 1 < lines.points.size(); i += 2) {
      path.Begin();
      path.Add(mapping.toCanvas(lines.points[i]));
      path.Add(mapping.toCanvas(lines.points[i + 1]));
    }
    Line(path);
  }

  void operator()(const Polygon &polygon) const { Area(RingOf(polygon.points, mapping.toCanvas, true)); }

  void operator()(const Rectangle &rectangle) const {
    const Point a = rectangle.first;
    const Point c = rectangle.second;
    Area(RingOf({a, {c.x, a.y}, c, {a.x, c.y}}, mapping.toCanvas, true));
  }

  void operator()(const PolygonSet &set) const {
    Path rings;
    Path edges;
    std::size_t first = 0;
    bool edgeGoesOn = false;
    const std::size_t count = std::min(set.points.size(), set.flags.size());
    for (std::size_t i = 0; i < count; ++i) {
      const Point point = mapping.toCanvas(set.points[i]);
      if (i == first) rings.Begin(true);
      rings.Add(point);
      const EdgeFlag flag = set.flags[i];
      const bool closes = flag == EdgeFlag::CloseInvisible || flag == EdgeFlag::CloseVisible || i + 1 == count;
      const bool visible = flag == EdgeFlag::Visible || flag == EdgeFlag::CloseVisible;
      if (visible) {
        if (!edgeGoesOn) {
          edges.Begin();
          edges.Add(point);
        }
        edges.Add(mapping.toCanvas(set.points[closes ? first : i + 1]));
      }
      edgeGoesOn = visible && !closes;
      if (closes) first = i + 1;
    }
    CloseRings(edges);
    Area(rings, &edges);
  }

  void operator()(const Ellipse &ellipse) const {
    const Affine circle = {mapping.toCanvas(ellipse.center), Bounded(mapping.toCanvas.Vector(ellipse.first)),
                           Bounded(mapping.toCanvas.Vector(ellipse.second))};
    Path path;
    path.Begin(ellipse.closure != Closure::Open);
    if (ellipse.closure == Closure::Pie) path.Add(circle.origin);
    if (ellipse.closure == Closure::Full) {
      AddArc(path, circle, 0, kTurn);
      if (!path.points.empty()) path.points.pop_back();
    } else {
      AddArc(path, circle, ellipse.start, ellipse.end);
    }
    if (ellipse.closure == Closure::Open) {
      Stroke(style.line, path, Join::Round, false);
    } else {
      Area(path, nullptr, ellipse.closure != Closure::Full ? Join::Miter : Join::Round, false);
    }
  }

  void operator()(const Text &text) const {
    const Layout layout = LayoutOf(text, style.text);
    if (!style.transparent && !layout.characters.empty()) {
      Path box;
      box.Begin(true);
      for (const Point corner : CornersOf(layout)) box.Add(mapping.toCanvas(corner));
      FillSolid(box, style.auxiliary);
    }
    AddGlyphs(layout, mapping.toCanvas, style.text.color, clip, tiles);
  }

  void operator()(const Markers &markers) const {
    const double size =
        std::fmin(std::fmax(style.marker.size.value * (style.marker.size.nominal ? kNominalMarker : mapping.scale), 1),
                  kLargestMarker);
    const Box seen = Grown(BoxOf(clip), size);
    Path path;
    for (const Point point : markers.points) {
      const Point place = mapping.toCanvas(point);
      if (!Touch({place, place}, seen)) continue;
      AddMarker(path, place, size);
      if (path.contours.size() > kMarkersOfMark) AddMarkers(std::exchange(path, {}), size);
    }
    AddMarkers(std::move(path), size);
  }

  void operator()(const CellArray &array) const {
    const Point origin = mapping.toCanvas(array.origin);
    const Point opposite = mapping.toCanvas(array.opposite);
    const Point alongEnd = mapping.toCanvas(array.alongEnd);
    if (array.columns == 0 || array.rows == 0) return;
    const Affine fromCells = {origin, (alongEnd - origin) * (1.0 / array.columns),
                              (opposite - alongEnd) * (1.0 / array.rows)};
    if (!fromCells.IsInvertible()) return;
    Path path;
    path.Begin(true);
    for (const Point corner : {origin, alongEnd, opposite, origin + (opposite - alongEnd)}) path.Add(Bounded(corner));
    Mark mark = Filled(MarkKind::Cells, std::move(path));
    mark.cells = {fromCells.Inverse(), array.columns, array.rows, false, array.colors};
    tiles.Add(std::move(mark));
  }

 private:
  /** Pixels whose centers lie in a box; one more towards the high side, where a line on the border lies. */
  KsRect ClipOf(const Box &box) const {
    GrowingBox around;
    around.Add(mapping.toCanvas(box.low));
    around.Add(mapping.toCanvas(box.high));
    const auto nearest = [](double value) { return static_cast<std::int32_t>(std::lround(value)); };
    return {nearest(around.box.low.x), nearest(around.box.low.y) - (mapping.linesAbove ? 1 : 0),
            nearest(around.box.high.x) + 1, nearest(around.box.high.y) + (mapping.linesAbove ? 0 : 1)};
  }

  /** Contours that end where they begin have a corner there. */
  static void CloseRings(Path &edges) {
    for (std::size_t i = 0; i < edges.contours.size(); ++i) {
      const std::span<const Point> points = edges.PointsOf(i);
      edges.contours[i].closed = points.size() > 2 && points.front() == points.back();
    }
  }

  void Line(const Path &path) const { Stroke(style.line, path, Join::Round, true); }

  void Stroke(const LineStyle &line, const Path &path, Join join, bool straight) const {
    AddStroke({line, style, join, straight}, mapping, path, clip, tiles);
  }

  Mark Filled(MarkKind kind, Path path) const {
    Mark mark;
    mark.kind = kind;
    mark.color = style.fill.color;
    mark.path = std::move(path);
    mark.clip = clip;
    return mark;
  }

  /** An area, with `edges` that are not simply its outline. */
  void Area(const Path &path, const Path *edges = nullptr, Join join = Join::Miter, bool straight = true) const {
    switch (style.fill.interior) {
      case Interior::Solid:
        FillSolid(path, style.fill.color);
        break;
      case Interior::Hatch:
        FillHatch(path);
        break;
      case Interior::Pattern:
        FillPattern(path);
        break;
      case Interior::Hollow:
        if (!style.edgeVisible) Outline(path, join, straight);
        break;
      default:
        break;
    }
    if (style.edgeVisible) Stroke(style.edge, edges != nullptr ? *edges : path, join, straight);
  }

  void Outline(const Path &path, Join join, bool straight) const {
    Stroke({{}, Dash::Solid, style.fill.color}, path, join, straight);
  }

  void FillSolid(const Path &path, Color color) const {
    Mark mark = Filled(MarkKind::Fill, path);
    mark.color = color;
    GrowingBox around;
    for (const Point point : path.points) around.Add(point);
    tiles.Add(std::move(mark));
    // An area thinner than a pixel is still to be seen.
    const Point size = around.box.high - around.box.low;
    if (std::fmin(size.x, size.y) < 1) Stroke({{}, Dash::Solid, color}, path, Join::Miter, true);
  }

  void FillHatch(const Path &path) const {
    if (!style.transparent) FillSolid(path, style.auxiliary);
    Mark mark = Filled(MarkKind::Hatch, path);
    mark.hatch = style.fill.hatch;
    tiles.Add(std::move(mark));
  }

  void FillPattern(const Path &path) const {
    const FillStyle &fill = style.fill;
    static const Pattern kNoPattern;
    const Pattern &pattern = fill.pattern < drawing.patterns.size() ? drawing.patterns[fill.pattern] : kNoPattern;
    if (pattern.columns == 0 || pattern.rows == 0) {
      FillSolid(path, fill.color);
      return;
    }
    // From the upper left corner of a pattern along its first row, and down its first column.
    Affine fromCells = {mapping.toCanvas(fill.patternOrigin + fill.patternUp),
                        mapping.toCanvas.Vector(fill.patternAlong) * (1.0 / pattern.columns),
                        mapping.toCanvas.Vector(fill.patternUp) * (-1.0 / pattern.rows)};
    if (!fromCells.IsInvertible()) fromCells = {};
    Mark mark = Filled(MarkKind::Cells, path);
    mark.cells = {fromCells.Inverse(), pattern.columns, pattern.rows, true, pattern.colors};
    tiles.Add(std::move(mark));
  }

  // ---- markers ----

  void AddMarker(Path &path, Point place, double size) const {
    const auto stroke = [&path, place, size](Point arm) {
      path.Begin();
      path.Add(place - arm * size);
      path.Add(place + arm * size);
    };
    const auto disc = [&path, place](double diameter) {
      path.Begin(true);
      AddArc(path, {place, {diameter / 2, 0}, {0, diameter / 2}}, 0, kTurn);
      path.points.pop_back();
    };
    switch (style.marker.type) {
      case Marker::Dot:
        disc(std::max(size * kMarkerDot, 1.0));
        break;
      case Marker::Circle:
        disc(size);
        break;
      case Marker::Cross:
        stroke({kCrossArm, kCrossArm});
        stroke({kCrossArm, -kCrossArm});
        break;
      case Marker::Plus:
        stroke({0.5, 0});
        stroke({0, 0.5});
        break;
      default:
        stroke({0, 0.5});
        stroke(kSlantedArm);
        stroke({kSlantedArm.x, -kSlantedArm.y});
        break;
    }
  }

  void AddMarkers(Path path, double size) const {
    Mark mark = Filled(style.marker.type == Marker::Dot ? MarkKind::Fill : MarkKind::Stroke, std::move(path));
    mark.color = style.marker.color;
    mark.width = std::max(size * kMarkerLine, 1.0);
    mark.byParity = false;
    tiles.Add(std::move(mark));
  }

  const Drawing &drawing;
  const Mapping &mapping;
  const Style &style;
  Tiles &tiles;
  KsRect clip;
};

}  // namespace

void AddMarks(const Drawing &drawing, const Mapping &mapping, Tiles &tiles) {
  const Style plain;
  for (const Layer &layer : drawing.layers) {
    for (const Object &object : layer.objects) {
      const Style &style = object.style < drawing.styles.size() ? drawing.styles[object.style] : plain;
      std::visit(ShapeMarks(drawing, mapping, style, tiles), object.shape);
    }
  }
}

}  // namespace ksvect
