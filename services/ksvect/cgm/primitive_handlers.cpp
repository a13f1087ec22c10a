// Elements that draw.
#include "ksvect/cgm/cells.h"
#include "ksvect/cgm/curves.h"
#include "ksvect/cgm/handlers.h"

#include <cmath>
#include <utility>

namespace ksvect::cgm {
namespace {

/** How the ends of an arc that is closed are joined. */
constexpr std::int32_t kChordClosure = 1;
/** Text with this flag has nothing appended. */
constexpr std::int32_t kFinalText = 1;
/** Each Bezier curve after the first begins where the one before ended. */
constexpr std::int32_t kContinuousCurves = 2;
constexpr std::int32_t kPackedCells = 1;

Point TurnedPoint(Picture &picture, Parameters &parameters) {
  return picture.Turned(parameters.Point());
}

/** Nothing is drawn of fewer points than `least`. */
template <class Kind, std::size_t least, std::size_t group>
void AddPoints(Picture &picture, Parameters &parameters) {
  std::vector<Point> points = parameters.Points();
  points.resize(points.size() / group * group);
  if (!parameters.Good() || points.size() < least) return;
  for (Point &point : points) point = picture.Turned(point);
  picture.Add(Kind{std::move(points)});
}

void AddPolygonSet(Picture &picture, Parameters &parameters) {
  PolygonSet set;
  const std::size_t count = parameters.BytesLeft() / (parameters.PointBytes() + 2);
  set.points.reserve(count);
  set.flags.reserve(count);
  for (std::size_t i = 0; i < count; ++i) {
    set.points.push_back(TurnedPoint(picture, parameters));
    const std::int32_t flag = parameters.Enumeration();
    if (flag < 0 || flag > static_cast<std::int32_t>(EdgeFlag::CloseVisible)) parameters.Fail(SkipReason::BadValue);
    if (!parameters.Good()) return;
    set.flags.push_back(static_cast<EdgeFlag>(flag));
  }
  if (count > 0) picture.Add(std::move(set));
}

void AddRectangle(Picture &picture, Parameters &parameters) {
  const Point first = TurnedPoint(picture, parameters);
  const Point second = TurnedPoint(picture, parameters);
  if (parameters.Good()) picture.Add(Rectangle{first, second});
}

/** An ellipse as the metafile has it, with its axes turned; its angles stay what they are. */
Ellipse Turned(const Picture &picture, Ellipse ellipse) {
  ellipse.center = picture.Turned(ellipse.center);
  ellipse.first = picture.Turned(ellipse.first);
  ellipse.second = picture.Turned(ellipse.second);
  return ellipse;
}

Closure ReadClosure(Parameters &parameters, bool closed) {
  if (!closed) return Closure::Open;
  return parameters.Enumeration() == kChordClosure ? Closure::Chord : Closure::Pie;
}

void AddCircle(Picture &picture, Parameters &parameters) {
  const Point center = parameters.Point();
  const double radius = std::fabs(parameters.Vdc());
  if (parameters.Good()) picture.Add(Turned(picture, {center, {radius, 0}, {0, radius}}));
}

template <bool closed>
void AddArcThrough(Picture &picture, Parameters &parameters) {
  // The points alone say which way round the arc runs, so they can be turned first.
  Point points[3];
  for (Point &point : points) point = TurnedPoint(picture, parameters);
  const Closure closure = ReadClosure(parameters, closed);
  if (parameters.Good()) picture.Add(ArcThrough(points, closure));
}

Rays ReadRays(Parameters &parameters) {
  const Point start = parameters.Point();
  return {start, parameters.Point()};
}

template <bool closed, bool reversed>
void AddCircularArc(Picture &picture, Parameters &parameters) {
  const Point center = parameters.Point();
  const Rays rays = ReadRays(parameters);
  const double radius = std::fabs(parameters.Vdc());
  const Closure closure = ReadClosure(parameters, closed);
  if (parameters.Good()) picture.Add(Turned(picture, CircularArc(center, radius, rays, closure, reversed)));
}

void AddEllipse(Picture &picture, Parameters &parameters) {
  const Point center = parameters.Point();
  const Point first = parameters.Point() - center;
  const Point second = parameters.Point() - center;
  if (parameters.Good()) picture.Add(Turned(picture, {center, first, second}));
}

template <bool closed>
void AddEllipticalArc(Picture &picture, Parameters &parameters) {
  const Point center = parameters.Point();
  const Point first = parameters.Point() - center;
  const Point second = parameters.Point() - center;
  const Rays rays = ReadRays(parameters);
  const Closure closure = ReadClosure(parameters, closed);
  if (parameters.Good()) picture.Add(Turned(picture, EllipticalArc(center, first, second, rays, closure)));
}

void AddBeziers(Picture &picture, Parameters &parameters) {
  const bool continuous = parameters.Index() == kContinuousCurves;
  std::vector<Point> given = parameters.Points();
  if (!parameters.Good()) return;
  for (Point &point : given) point = picture.Turned(point);
  const std::size_t step = continuous ? 3 : 4;
  std::vector<Point> points;
  for (std::size_t i = 0; i + 4 <= given.size(); i += step) {
    if (!continuous || i == 0) points.push_back(given[i]);
    AppendBezier(points, {given[i], given[i + 1], given[i + 2], given[i + 3]});
    // Curves that don't go on from each other are lines of their own.
    if (!continuous) picture.Add(Polyline{std::exchange(points, {})});
  }
  if (!points.empty()) picture.Add(Polyline{std::move(points)});
}

void AddText(Picture &picture, Parameters &parameters) {
  Text text;
  text.position = TurnedPoint(picture, parameters);
  const bool final = parameters.Enumeration() == kFinalText;
  text.text = picture.ToUtf8(parameters.String());
  if (parameters.Good()) picture.AddText(std::move(text), final);
}

void AddRestrictedText(Picture &picture, Parameters &parameters) {
  Text text;
  text.restricted = true;
  const Point extent = parameters.Point();
  text.extent = {std::fabs(extent.x), std::fabs(extent.y)};
  text.position = TurnedPoint(picture, parameters);
  const bool final = parameters.Enumeration() == kFinalText;
  text.text = picture.ToUtf8(parameters.String());
  if (parameters.Good()) picture.AddText(std::move(text), final);
}

void AppendText(Picture &picture, Parameters &parameters) {
  const bool final = parameters.Enumeration() == kFinalText;
  const std::string text = picture.ToUtf8(parameters.String());
  if (parameters.Good()) picture.AppendText(text, final);
}

void AddCellArray(Picture &picture, Parameters &parameters) {
  CellArray array;
  array.origin = TurnedPoint(picture, parameters);
  array.opposite = TurnedPoint(picture, parameters);
  array.alongEnd = TurnedPoint(picture, parameters);
  CellLayout layout;
  if (!ReadLayout(parameters, picture.coding, layout)) return;
  layout.runs = parameters.Enumeration() != kPackedCells;
  if (!parameters.Good()) return;
  array.columns = layout.columns;
  array.rows = layout.rows;
  array.colors = picture.ReadCells(parameters, layout);
  if (!parameters.Good()) return;
  if (!picture.coding.directColor) {
    for (Color &color : array.colors) color = picture.colors.Of(color);
  }
  picture.Add(std::move(array));
}

void BeginFigure(Picture &picture, Parameters & /*unused*/) {
  picture.BeginFigure();
}

void EndFigure(Picture &picture, Parameters & /*unused*/) {
  picture.EndFigure();
}

void BeginRegion(Picture &picture, Parameters & /*unused*/) {
  if (Figure *figure = picture.OpenFigure()) figure->NewRegion();
}

void ConnectNext(Picture &picture, Parameters & /*unused*/) {
  if (Figure *figure = picture.OpenFigure()) figure->ConnectNext();
}

constexpr HandlerRow kRows[] = {
    {kDelimiters, kBeginFigure, BeginFigure},
    {kDelimiters, kEndFigure, EndFigure},
    {kControls, kNewRegion, BeginRegion},
    {kPrimitives, kPolyline, AddPoints<Polyline, 2, 1>},
    {kPrimitives, kDisjointPolyline, AddPoints<DisjointPolyline, 2, 2>},
    {kPrimitives, kPolymarker, AddPoints<Markers, 1, 1>},
    {kPrimitives, kText, AddText},
    {kPrimitives, kRestrictedText, AddRestrictedText},
    {kPrimitives, kAppendText, AppendText},
    {kPrimitives, kPolygon, AddPoints<Polygon, 3, 1>},
    {kPrimitives, kPolygonSet, AddPolygonSet},
    {kPrimitives, kCellArray, AddCellArray},
    {kPrimitives, kRectangle, AddRectangle},
    {kPrimitives, kCircle, AddCircle},
    {kPrimitives, kCircularArc3Point, AddArcThrough<false>},
    {kPrimitives, kCircularArc3PointClose, AddArcThrough<true>},
    {kPrimitives, kCircularArcCenter, AddCircularArc<false, false>},
    {kPrimitives, kCircularArcCenterClose, AddCircularArc<true, false>},
    {kPrimitives, kEllipse, AddEllipse},
    {kPrimitives, kEllipticalArc, AddEllipticalArc<false>},
    {kPrimitives, kEllipticalArcClose, AddEllipticalArc<true>},
    {kPrimitives, kCircularArcCenterReversed, AddCircularArc<false, true>},
    {kPrimitives, kConnectingEdge, ConnectNext},
    {kPrimitives, kPolybezier, AddBeziers},
};

}  // namespace

std::span<const HandlerRow> PrimitiveHandlers() {
  return kRows;
}

}  // namespace ksvect::cgm
