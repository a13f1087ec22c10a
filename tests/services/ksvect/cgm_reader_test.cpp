#include "cgm_builder.h"
#include "ksvect/cgm/elements.h"
#include "ksvect/cgm/reader.h"
#include "ksvect/cgm/stream.h"
#include "service_test.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <variant>

namespace {

using namespace ksvect;
using namespace ksvect::cgm;

Drawing Read(const Bytes &metafile) {
  Drawing drawing;
  EXPECT_EQ(ReadCgm(metafile, drawing), SUCCESS);
  return drawing;
}

const std::vector<Object> &ObjectsOf(const Drawing &drawing) {
  static const std::vector<Object> none;
  return drawing.layers.empty() ? none : drawing.layers.front().objects;
}

/** The only object that a metafile draws, and its style. */
struct Drawn {
  explicit Drawn(const CgmBuilder &metafile) : drawing(Read(metafile.Finish())) {
    EXPECT_EQ(ObjectsOf(drawing).size(), 1U);
    if (ObjectsOf(drawing).empty()) return;
    shape = ObjectsOf(drawing).back().shape;
    style = drawing.styles.at(ObjectsOf(drawing).back().style);
  }
  Drawing drawing;
  Shape shape;
  Style style;
};

constexpr Color kColors[] = {0xFFFFFF, 0x000000, 0x102030, 0xC04080};

/** A colour of the scene, in the way of its metafile. */
CgmParameters &Put(CgmParameters &parameters, const CgmBuilder &metafile, int index) {
  return metafile.coding.directColor ? parameters.Direct(kColors[index]) : parameters.ColorIndex(index);
}

CgmParameters ColorOf(const CgmBuilder &metafile, int index) {
  CgmParameters parameters = metafile.New();
  Put(parameters, metafile, index);
  return parameters;
}

CgmParameters Cells(const CgmBuilder &metafile, CgmParameters parameters) {
  for (const auto &row : {std::vector{2, 3, 2}, {3, 3, 1}}) {
    parameters.Align();
    for (const int cell : row) Put(parameters, metafile, cell);
  }
  return parameters;
}

/** Something of every type of parameter; numbers fit into all precisions. */
Bytes Scene(const CgmCoding &coding) {
  CgmBuilder cgm(coding, {0, 100}, {100, 0});
  cgm.Add(kAttributes, kColorTable, cgm.New().ColorIndex(2).Direct(kColors[2]).Direct(kColors[3]))
      .Add(kAttributes, kLineWidth, cgm.New().Real(2.25))
      .Add(kAttributes, kLineType, cgm.New().Index(2))
      .Add(kAttributes, kLineColor, ColorOf(cgm, 3))
      .Add(kPrimitives, kPolyline, cgm.New().Points({{1, 2}, {3, 4}, {-5, 6}, {7, 8}, {9, 10}, {11, 12}, {0, 1}}))
      .Add(kAttributes, kInteriorStyle, cgm.New().Enumeration(2))
      .Add(kAttributes, kPatternTable, Cells(cgm, cgm.New().Index(1).Integer(3).Integer(2).Integer(0)))
      .Add(kPrimitives, kRectangle, cgm.New().Points({{5, 5}, {50, 60}}))
      .Add(kPrimitives, kCircularArcCenterClose, cgm.New().Points({{50, 50}, {1, 0}, {0, 1}}).Vdc(25).Enumeration(1))
      .Add(kPrimitives, kPolygonSet,
           cgm.New().Points({{0, 0}}).Enumeration(1).Points({{9, 0}}).Enumeration(0).Points({{9, 9}}).Enumeration(3))
      .Add(kPrimitives, kCellArray,
           Cells(cgm, cgm.New().Points({{0, 0}, {30, 20}, {30, 0}}).Integer(3).Integer(2).Integer(0).Enumeration(1)))
      .Add(kAttributes, kTextAlignment, cgm.New().Enumeration(2).Enumeration(3).Real(-0.5).Real(0.25))
      .Add(kPrimitives, kText, cgm.New().Points({{10, 20}}).Enumeration(1).String(std::string(300, 'a')))
      .Add(kPrimitives, kPolymarker, cgm.New().Points({{7, 7}}));
  return cgm.Finish();
}

constexpr std::size_t kSceneObjects = 7;

class CgmCodingTest : public ServiceTestWith<CgmCoding> {};

TEST_P(CgmCodingTest, GivesTheSameDrawing) {
  Drawing usual = Read(Scene({}));
  usual.inPixels = usual.mayBePixels = !GetParam().vdcIsReal;
  ASSERT_EQ(ObjectsOf(usual).size(), kSceneObjects);
  EXPECT_TRUE(Read(Scene(GetParam())) == usual);
}

INSTANTIATE_TEST_SUITE_P(
    Codings, CgmCodingTest,
    testing::Values(CgmCoding{.integer = 8, .index = 8, .vdcInteger = 8}, CgmCoding{.integer = 24, .index = 24},
                    CgmCoding{.integer = 32, .index = 32, .vdcInteger = 32}, CgmCoding{.vdcInteger = 24},
                    CgmCoding{.color = 16, .colorIndex = 16}, CgmCoding{.color = 24, .colorIndex = 24},
                    CgmCoding{.color = 32, .colorIndex = 32}, CgmCoding{.directColor = true},
                    CgmCoding{.color = 16, .directColor = true}, CgmCoding{.color = 32, .directColor = true},
                    CgmCoding{.real = CgmReal::Float32}, CgmCoding{.real = CgmReal::Float64},
                    CgmCoding{.real = CgmReal::Fixed64}, CgmCoding{.vdcReal = CgmReal::Float32, .vdcIsReal = true},
                    CgmCoding{.vdcReal = CgmReal::Float64, .vdcIsReal = true}, CgmCoding{.vdcIsReal = true},
                    CgmCoding{.vdcReal = CgmReal::Fixed64, .vdcIsReal = true}, CgmCoding{.partition = 2},
                    CgmCoding{.partition = 30}));

// ---- shapes

/** Parameters of elements, as data. */
using P = CgmBuilder::Corner;
struct Vdc {
  double value;
};
struct Real {
  double value;
};
struct Int {
  int value;
};
struct Enum {
  int value;
};
struct Ix {
  int value;
};
struct Ci {
  int value;
};
using Parameters = std::vector<std::variant<P, Vdc, Real, Int, Enum, Ix, Ci, std::string, Bytes>>;

struct Putter {
  void operator()(const P &point) const { to.Points({point}); }
  void operator()(Vdc number) const { to.Vdc(number.value); }
  void operator()(Real number) const { to.Real(number.value); }
  void operator()(Int number) const { to.Integer(number.value); }
  void operator()(Enum number) const { to.Enumeration(number.value); }
  void operator()(Ix number) const { to.Index(number.value); }
  void operator()(Ci number) const { to.ColorIndex(number.value); }
  void operator()(const std::string &text) const { to.String(text); }
  void operator()(const Bytes &bytes) const { to.Raw(bytes); }
  CgmParameters &to;
};

void Add(CgmBuilder &cgm, unsigned group, unsigned element, const Parameters &list) {
  CgmParameters parameters = cgm.New();
  for (const auto &parameter : list) std::visit(Putter{parameters}, parameter);
  cgm.Add(group, element, parameters);
}

struct ShapeCase {
  std::string name;
  unsigned element;
  Parameters parameters;
  Shape shape;
};

constexpr double kPi = 3.14159265358979323846;
const Parameters kCorners = {P{1, 2}, P{30, 4}, P{5, 60}};
const std::vector<Point> kCornerPoints = {{1, 2}, {30, 4}, {5, 60}};

class CgmShapeTest : public ServiceTestWith<ShapeCase> {};

TEST_P(CgmShapeTest, IsRead) {
  CgmBuilder cgm;
  Add(cgm, kPrimitives, GetParam().element, GetParam().parameters);
  EXPECT_TRUE(Drawn(cgm).shape == GetParam().shape);
}

const ShapeCase kShapes[] = {
    {"Polyline", kPolyline, kCorners, Polyline{kCornerPoints}},
    {"DisjointPolyline", kDisjointPolyline, {P{1, 2}, P{3, 4}, P{5, 6}}, DisjointPolyline{{{1, 2}, {3, 4}}}},
    {"Polymarker", kPolymarker, kCorners, Markers{kCornerPoints}},
    {"Polygon", kPolygon, kCorners, Polygon{kCornerPoints}},
    {"Rectangle", kRectangle, {P{5, 6}, P{1, 2}}, Rectangle{{5, 6}, {1, 2}}},
    {"Circle", kCircle, {P{5, 6}, Vdc{3}}, Ellipse{{5, 6}, {3, 0}, {0, 3}}},
    {"Ellipse", kEllipse, {P{5, 6}, P{9, 7}, P{4, 8}}, Ellipse{{5, 6}, {4, 1}, {-1, 2}}},
    {"ArcOverTheCut",
     kCircularArcCenter,
     {P{5, 6}, P{0, 2}, P{0, -2}, Vdc{3}},
     Ellipse{{5, 6}, {3, 0}, {0, 3}, Closure::Open, kPi / 2, 1.5 * kPi}},
    {"ArcOfOneRay",
     kCircularArcCenterClose,
     {P{5, 6}, P{2, 0}, P{4, 0}, Vdc{3}, Enum{0}},
     Ellipse{{5, 6}, {3, 0}, {0, 3}, Closure::Pie, 0, 2 * kPi}},
    {"ArcThroughARow", kCircularArc3Point, {P{0, 0}, P{1, 1}, P{2, 2}}, Polyline{{{0, 0}, {1, 1}, {2, 2}}}},
    {"ArcThroughARowClosed",
     kCircularArc3PointClose,
     {P{0, 0}, P{1, 1}, P{2, 2}, Enum{1}},
     Polygon{{{0, 0}, {1, 1}, {2, 2}}}},
    {"RestrictedText",
     kRestrictedText,
     {Vdc{40}, Vdc{10}, P{3, 4}, Enum{1}, std::string("in\nside")},
     Text{{3, 4}, "inside", true, {40, 10}}},
    {"PackedCells",
     kCellArray,
     {P{0, 0}, P{9, 9}, P{9, 0}, Int{3}, Int{2}, Int{2}, Enum{1}, Bytes{0b00011000, 0, 0b01000100, 0}},
     CellArray{{0, 0}, {9, 9}, {9, 0}, 3, 2, {0xFFFFFF, 0, 0x0000FF, 0, 0xFFFFFF, 0}}},
    // Of runs with colours of a bit, the second one begins within a byte.
    {"CellsInRuns",
     kCellArray,
     {P{0, 0}, P{9, 9}, P{9, 0}, Int{3}, Int{2}, Int{1}, Enum{0},
      Bytes{0, 2, 0b10000000, 0b00000000, 0b10000000, 0, 0, 3, 0b10000000}},
     CellArray{{0, 0}, {9, 9}, {9, 0}, 3, 2, {0, 0, 0xFFFFFF, 0, 0, 0}}},
};

INSTANTIATE_TEST_SUITE_P(Primitives, CgmShapeTest, testing::ValuesIn(kShapes),
                         [](const auto &given) { return given.param.name; });

// ---- curves in all directions of the axes

struct CurveCase {
  unsigned element;
  Parameters parameters;
  Point start, middle, end; /**< where the metafile has them */
};
const double kHalf = std::sqrt(0.5);
const CurveCase kCurves[] = {
    {kCircularArcCenter,
     {P{50, 40}, P{1, 0}, P{0, 1}, Vdc{20}},
     {70, 40},
     {50 + 20 * kHalf, 40 + 20 * kHalf},
     {50, 60}},
    {kCircularArcCenterReversed,
     {P{50, 40}, P{1, 0}, P{0, 1}, Vdc{20}},
     {70, 40},
     {50 - 20 * kHalf, 40 - 20 * kHalf},
     {50, 60}},
    {kCircularArc3Point, {P{70, 40}, P{50, 60}, P{30, 40}}, {70, 40}, {50, 60}, {30, 40}},
    {kCircularArc3Point, {P{30, 40}, P{50, 60}, P{70, 40}}, {30, 40}, {50, 60}, {70, 40}},
    {kCircularArc3PointClose, {P{70, 40}, P{30, 40}, P{70, 40}, Enum{1}}, {70, 40}, {30, 40}, {70, 40}},
    {kEllipticalArc,
     {P{50, 40}, P{90, 40}, P{50, 50}, P{1, 0}, P{0, 1}},
     {90, 40},
     {50 + 40 * kHalf, 40 + 10 * kHalf},
     {50, 50}},
    // The second diameter is on the other side: the arc runs the other way.
    {kEllipticalArcClose,
     {P{50, 40}, P{90, 40}, P{50, 30}, P{1, 0}, P{0, -1}, Enum{0}},
     {90, 40},
     {50 + 40 * kHalf, 40 - 10 * kHalf},
     {50, 30}},
};

using Extent = std::pair<CgmBuilder::Corner, CgmBuilder::Corner>;
using CgmUnitsTest = ServiceTest;
class CgmDirectionTest : public ServiceTestWith<Extent> {
 protected:
  const CgmBuilder::Corner first = GetParam().first, second = GetParam().second;
  Point Turned(Point point) const {
    return {first.first < second.first ? point.x : -point.x, first.second < second.second ? point.y : -point.y};
  }
};

void ExpectNear(Point a, Point b, const char *what) {
  EXPECT_LT(std::hypot(a.x - b.x, a.y - b.y), 1e-9) << what << ": " << a.x << ", " << a.y;
}

TEST_P(CgmDirectionTest, CurvesRunTheSameWay) {
  for (const CurveCase &curve : kCurves) {
    SCOPED_TRACE(curve.element);
    CgmBuilder cgm({}, first, second);
    Add(cgm, kPrimitives, curve.element, curve.parameters);
    const auto arc = std::get<Ellipse>(Drawn(cgm).shape);
    const auto at = [&arc](double t) { return arc.center + arc.first * std::cos(t) + arc.second * std::sin(t); };
    EXPECT_GT(arc.end, arc.start);
    ExpectNear(at(arc.start), Turned(curve.start), "start");
    ExpectNear(at((arc.start + arc.end) / 2), Turned(curve.middle), "middle");
    ExpectNear(at(arc.end), Turned(curve.end), "end");
  }
}

TEST_P(CgmDirectionTest, TheFirstCornerIsTheLowerLeftOne) {
  CgmBuilder cgm({}, first, second);
  cgm.Add(kPrimitives, kText, cgm.New().Points({{10, 20}}).Enumeration(1).String("A"));
  const Drawn drawn(cgm);
  EXPECT_EQ(drawn.drawing.extent, (Box{Turned({first.first, first.second}), Turned({second.first, second.second})}));
  EXPECT_LT(drawn.drawing.extent.low.x, drawn.drawing.extent.high.x);
  EXPECT_LT(drawn.drawing.extent.low.y, drawn.drawing.extent.high.y);
  EXPECT_EQ(drawn.drawing.downwards, second.second < first.second);
  // Pixels of the profile: whole numbers from the upper left corner on.
  EXPECT_EQ(drawn.drawing.inPixels, second.second < first.second && second.first > first.first);
  EXPECT_EQ(std::get<Text>(drawn.shape).position, Turned({10, 20}));
  EXPECT_EQ(drawn.style.text.up, Turned({0, 1}));
  EXPECT_EQ(drawn.style.text.along, Turned({1, 0}));
}

TEST_F(CgmUnitsTest, AreNoPixelsWhereTheMetafileScales) {
  CgmBuilder metric({}, {0, 100}, {100, 0});
  metric.Add(kPictureDescriptors, kScalingMode, metric.New().Enumeration(1).Real(0.25));
  EXPECT_FALSE(Read(metric.Finish()).inPixels);
  EXPECT_FALSE(Read(CgmBuilder({.vdcIsReal = true}, {0, 1}, {1, 0}).Finish()).inPixels);
}

INSTANTIATE_TEST_SUITE_P(Extents, CgmDirectionTest,
                         testing::Values(Extent{{0, 0}, {100, 200}}, Extent{{0, 200}, {100, 0}},
                                         Extent{{100, 0}, {0, 200}}, Extent{{100, 200}, {0, 0}}));

using CgmCurveTest = ServiceTest;

TEST_F(CgmCurveTest, BezierCurvesBecomeLines) {
  CgmBuilder cgm;
  const auto cubic = cgm.New().Index(2).Points({{0, 0}, {0, 40}, {40, 40}, {40, 0}, {40, -40}, {80, -40}, {80, 0}});
  const Drawn drawn(cgm.Add(kPrimitives, kPolybezier, cubic));
  const auto &points = std::get<Polyline>(drawn.shape).points;
  ASSERT_EQ(points.size() % 2, 1U);
  ExpectNear(points.front(), {0, 0}, "start");
  ExpectNear(points[points.size() / 4], {20, 30}, "top");
  ExpectNear(points[points.size() / 2], {40, 0}, "between the curves");
  ExpectNear(points.back(), {80, 0}, "end");
}

struct Element {
  unsigned group;
  unsigned number;
  Parameters parameters;
};

void Add(CgmBuilder &cgm, const std::vector<Element> &elements) {
  for (const Element &element : elements) Add(cgm, element.group, element.number, element.parameters);
}

TEST_F(CgmCurveTest, AFigureIsOneArea) {
  using enum EdgeFlag;
  const std::pair<std::vector<Element>, PolygonSet> figures[] = {
      {{{kPrimitives, kPolyline, {P{0, 0}, P{9, 0}}},
        {kPrimitives, kPolyline, {P{9, 9}, P{0, 9}}},
        {kPrimitives, kConnectingEdge, {}},
        {kControls, kNewRegion, {}},
        {kPrimitives, kRectangle, {P{2, 2}, P{4, 4}}}},
       {{{0, 0}, {9, 0}, {9, 9}, {0, 9}, {2, 2}, {4, 2}, {4, 4}, {2, 4}},
        {Visible, Invisible, Visible, CloseVisible, Visible, Visible, Visible, CloseVisible}}},
      {{{kPrimitives, kDisjointPolyline, {P{0, 0}, P{9, 0}, P{9, 0}, P{9, 9}, P{0, 9}, P{0, 5}}},
        {kPrimitives, kPolygonSet, {P{2, 2}, Enum{1}, P{4, 2}, Enum{0}, P{4, 4}, Enum{1}}}},
       {{{0, 0}, {9, 0}, {9, 0}, {9, 9}, {0, 9}, {0, 5}, {2, 2}, {4, 2}, {4, 4}},
        {Visible, Visible, Visible, Invisible, Visible, CloseInvisible, Visible, Invisible, CloseVisible}}}};
  for (const auto &[elements, area] : figures) {
    CgmBuilder cgm;
    Add(cgm, {{kDelimiters, kBeginFigure, {}}});
    Add(cgm, elements);
    Add(cgm, {{kDelimiters, kEndFigure, {}}});
    EXPECT_TRUE(Drawn(cgm).shape == Shape(area));
  }
}

// ---- looks

struct StyleCase {
  std::string name;
  std::vector<Element> elements;
  void (*change)(Style &);
};

StyleCase One(std::string name, unsigned element, const Parameters &parameters, void (*change)(Style &)) {
  return {std::move(name), {{kAttributes, element, parameters}}, change};
}

/** A size of 25 told in some mode, of which the width of lines is 0.25. */
StyleCase Sized(std::string name, int mode, void (*change)(Style &)) {
  StyleCase sized{std::move(name), {}, change};
  for (const unsigned element : {kLineWidthMode, kMarkerSizeMode, kEdgeWidthMode}) {
    sized.elements.push_back({kPictureDescriptors, element, {Enum{mode}}});
  }
  for (const unsigned element : {kLineWidth, kMarkerSize, kEdgeWidth}) {
    sized.elements.push_back({kAttributes, element, mode == 0 ? Parameters{Vdc{25}} : Parameters{Real{0.25}}});
  }
  return sized;
}

void SetSizes(Style &style, Measure line, Measure marker) {
  style.line.width = style.edge.width = line;
  style.marker.size = marker;
}

class CgmStyleTest : public ServiceTestWith<StyleCase> {};

TEST_P(CgmStyleTest, IsThatOfTheElements) {
  CgmBuilder cgm;
  Style expected;
  GetParam().change(expected);
  Add(cgm, GetParam().elements);
  EXPECT_TRUE(Drawn(cgm.Add(kPrimitives, kPolymarker, cgm.New().Points({{1, 1}}))).style == expected);
}

constexpr double kPixel = 25.4 / 72;

/** Elements that replace defaults: the edge's colour, and the hatch. */
Bytes Replacements() {
  CgmBuilder cgm;
  cgm.bytes.clear();
  Add(cgm, kAttributes, kEdgeColor, {Ci{2}});
  Add(cgm, kAttributes, kHatchIndex, {Ix{5}});
  return cgm.bytes;
}

const StyleCase kStyles[] = {
    {"Defaults", {}, [](Style &) {}},
    One("LineType", kLineType, {Ix{4}}, [](Style &s) { s.line.dash = Dash::DashDot; }),
    One("LineTypeUnknown", kLineType, {Ix{-3}}, [](Style &) {}),
    One("LineColor", kLineColor, {Ci{2}}, [](Style &s) { s.line.color = 0x0000FF; }),
    One("MarkerType", kMarkerType, {Ix{5}}, [](Style &s) { s.marker.type = Marker::Cross; }),
    One("MarkerColor", kMarkerColor, {Ci{2}}, [](Style &s) { s.marker.color = 0x0000FF; }),
    One("TextColor", kTextColor, {Ci{2}}, [](Style &s) { s.text.color = 0x0000FF; }),
    One("Expansion", kCharacterExpansionFactor, {Real{1.5}}, [](Style &s) { s.text.expansion = 1.5; }),
    One("Spacing", kCharacterSpacing, {Real{-0.25}}, [](Style &s) { s.text.spacing = -0.25; }),
    One("Height", kCharacterHeight, {Vdc{12}}, [](Style &s) { s.text.height = 12; }),
    One("Up", kCharacterOrientation, {P{-2, 0}, P{1, 0}},
        [](Style &s) {
          s.text.up = Point{-2, 0};
        }),
    One("Along", kCharacterOrientation, {P{0, 1}, P{0, 3}},
        [](Style &s) {
          s.text.along = Point{0, 3};
        }),
    One("Path", kTextPath, {Enum{3}}, [](Style &s) { s.text.path = TextPath::Down; }),
    One("Alignment", kTextAlignment, {Enum{4}, Enum{6}, Real{0.25}, Real{0.75}},
        [](Style &s) {
          s.text.across = AlignAcross::Continuous;
          s.text.upwards = AlignUp::Continuous;
          s.text.acrossPart = 0.25;
          s.text.upwardsPart = 0.75;
        }),
    One("Interior", kInteriorStyle, {Enum{3}}, [](Style &s) { s.fill.interior = Interior::Hatch; }),
    One("FillColor", kFillColor, {Ci{2}}, [](Style &s) { s.fill.color = 0x0000FF; }),
    One("Hatch", kHatchIndex, {Ix{6}}, [](Style &s) { s.fill.hatch = Hatch::DiagonalCross; }),
    One("EdgeType", kEdgeType, {Ix{3}}, [](Style &s) { s.edge.dash = Dash::Dot; }),
    One("EdgeColor", kEdgeColor, {Ci{2}}, [](Style &s) { s.edge.color = 0x0000FF; }),
    One("EdgeVisibility", kEdgeVisibility, {Enum{1}}, [](Style &s) { s.edgeVisible = true; }),
    Sized("Absolute", 0,
          [](Style &s) {
            SetSizes(s, {25, false}, {25, false});
          }),
    Sized("Scaled", 1,
          [](Style &s) {
            SetSizes(s, {0.25, true}, {0.25, true});
          }),
    Sized("Fractional", 2,
          [](Style &s) {
            SetSizes(s, {25, false}, {25, false});
          }),
    Sized("Millimeters", 3,
          [](Style &s) {
            SetSizes(s, {0.25 / kPixel, true}, {0.25 / (10 * kPixel), true});
          }),
    {"AbsoluteUntold",
     {{kPictureDescriptors, kLineWidthMode, {Enum{0}}}},
     [](Style &s) {
       s.line.width = Measure{0.1, false};
     }},
    {"Clip",
     {{kControls, kClipRectangle, {P{9, 8}, P{1, 2}}}},
     [](Style &s) {
       s.clipped = true, s.clip = Box{{1, 2}, {9, 8}};
     }},
    {"ClipOff",
     {{kControls, kClipRectangle, {P{9, 8}, P{1, 2}}}, {kControls, kClipIndicator, {Enum{0}}}},
     [](Style &) {}},
    // Without a rectangle nothing is clipped, not even to the extent.
    {"ClipOfNothing", {{kControls, kClipIndicator, {Enum{1}}}}, [](Style &) {}},
    {"Gaps",
     {{kControls, kTransparency, {Enum{0}}}, {kControls, kAuxiliaryColor, {Ci{3}}}},
     [](Style &s) { s.transparent = false, s.auxiliary = 0x00FF00; }},
    One("ColorBeyondTheTable", kEdgeColor, {Ci{8}}, [](Style &) {}),
    {"ColorExtent",
     {{kMetafileDescriptors, kColorValueExtent, {Bytes{50, 0, 0, 150, 255, 255}}},
      {kPictureDescriptors, kColorSelectionMode, {Enum{1}}},
      {kAttributes, kLineColor, {Bytes{100, 20, 255}}}},
     [](Style &s) { s.line.color = 0xFF1480; }},
    // Cyan, magenta, yellow and black: 255 * (1 - 128 / 255) * (1 - 51 / 255) is 101.6.
    {"Cmyk",
     {{kMetafileDescriptors, kColorModel, {Ix{4}}},
      {kPictureDescriptors, kColorSelectionMode, {Enum{1}}},
      {kAttributes, kLineColor, {Bytes{128, 64, 0, 51}}},
      {kAttributes, kTextColor, {Bytes{255, 0, 0, 0}}},
      {kMetafileDescriptors, kColorValueExtent, {Bytes{0, 0, 0, 0, 100, 100, 100, 100}}},
      {kAttributes, kFillColor, {Bytes{0, 0, 50, 100}}},
      {kAttributes, kEdgeColor, {Bytes{0, 0, 50, 0}}}},
     [](Style &s) { s.line.color = 0xCC9966, s.text.color = 0xFFFF00, s.fill.color = 0, s.edge.color = 0x7FFFFF; }},
    // The picture's own colours are those of the moment at which something is drawn.
    {"ColorTableAfterwards",
     {{kAttributes, kLineColor, {Ci{200}}}, {kAttributes, kColorTable, {Ci{200}, Bytes{0x33, 0x22, 0x11}}}},
     [](Style &s) { s.line.color = 0x112233; }},
    {"DefaultsReplacement",
     {{kMetafileDescriptors, kMetafileDefaultsReplacement, {Replacements()}}},
     [](Style &s) { s.edge.color = 0x0000FF, s.fill.hatch = Hatch::Cross; }},
    {"Segment",
     {{kDelimiters, kBeginSegment, {Int{1}}}, {kAttributes, kLineType, {Ix{4}}}, {kDelimiters, kEndSegment, {}}},
     [](Style &) {}},
};

INSTANTIATE_TEST_SUITE_P(Attributes, CgmStyleTest, testing::ValuesIn(kStyles),
                         [](const auto &given) { return given.param.name; });

using CgmLooksTest = ServiceTest;

TEST_F(CgmLooksTest, APatternFills) {
  CgmBuilder cgm;
  cgm.Add(kAttributes, kInteriorStyle, cgm.New().Enumeration(2))
      .Add(kAttributes, kPatternIndex, cgm.New().Index(7))
      .Add(kAttributes, kPatternTable, Cells(cgm, cgm.New().Index(7).Integer(3).Integer(2).Integer(8)))
      .Add(kAttributes, kPatternSize, cgm.New().Points({{0, 4}, {6, 0}}))
      .Add(kAttributes, kFillReferencePoint, cgm.New().Points({{1, 2}}))
      .Add(kPrimitives, kCircle, cgm.New().Points({{5, 5}}).Vdc(3));
  const Drawn drawn(cgm);
  const FillStyle &fill = drawn.style.fill;
  EXPECT_EQ(drawn.drawing.patterns.at(fill.pattern),
            (Pattern{3, 2, {0x0000FF, 0x00FF00, 0x0000FF, 0x00FF00, 0x00FF00, 0}}));
  EXPECT_EQ(fill.patternOrigin, (Point{1, 2}));
  EXPECT_EQ(fill.patternUp, (Point{0, 4}));
  EXPECT_EQ(fill.patternAlong, (Point{6, 0}));
}

struct FontCase {
  std::string name;
  Family family;
  bool bold;
  bool oblique;
  std::string letters; /**< what "AlS[1" becomes */
};
TEST_F(CgmLooksTest, FontsAreKnownByTheirNames) {
  const std::string latin = "AlS[1";
  // Greek and Cyrillic faces have the letters of their alphabets, in its order, at the codes of the Latin ones.
  const std::string greek = "\u0391\u03BC\u03A4[1";
  const std::string cyrillic = "\u0410\u043B\u0422\u042A1";
  const FontCase fonts[] = {{"TIMES_ROMAN", Family::Serif, false, false, latin},
                            {"Helvetica-BoldOblique", Family::Sans, true, true, latin},
                            {"COURIER_ITALIC", Family::Fixed, false, true, latin},
                            {"Sans Serif", Family::Sans, false, false, latin},
                            {"Letter Gothic", Family::Sans, false, false, latin},
                            {"HERSHEY:SIMPLEX_GREEK", Family::Serif, false, false, greek},
                            {"HERSHEY/COMPLEX_CYRILLIC", Family::Serif, false, false, cyrillic},
                            {"HERSHEY:COMPLEX_SCRIPT", Family::Serif, false, true, latin},
                            {"HERSHEY:GOTHIC_GERMAN", Family::Serif, true, false, latin},
                            {"HERSHEY:SIMPLEX_ROMAN", Family::Sans, false, false, latin}};
  CgmBuilder cgm;
  CgmParameters names = cgm.New();
  for (const FontCase &font : fonts) names.String(font.name);
  cgm.Add(kMetafileDescriptors, kFontList, names);
  for (std::size_t i = 1; i <= std::size(fonts); ++i) {
    cgm.Add(kAttributes, kTextFontIndex, cgm.New().Index(static_cast<int>(i)))
        .Add(kPrimitives, kText, cgm.New().Points({{1, 1}}).Enumeration(1).String(latin));
  }
  const Drawing drawing = Read(cgm.Finish());
  for (size_t i = 0; i < std::size(fonts); ++i) {
    SCOPED_TRACE(fonts[i].name);
    const Object &object = ObjectsOf(drawing).at(i);
    const TextStyle &text = drawing.styles.at(object.style).text;
    EXPECT_EQ(text.family, fonts[i].family);
    EXPECT_EQ(text.bold, fonts[i].bold);
    EXPECT_EQ(text.oblique, fonts[i].oblique);
    EXPECT_EQ(std::get<Text>(object.shape).text, fonts[i].letters);
  }
}

struct StringCase {
  std::string characterSet;
  std::string written;
  std::string read;
};
class CgmStringTest : public ServiceTestWith<StringCase> {};

TEST_P(CgmStringTest, BecomesUtf8) {
  CgmBuilder cgm;
  cgm.Add(kMetafileDescriptors, kCharacterSetList, cgm.New().Enumeration(4).String(GetParam().characterSet))
      .Add(kPrimitives, kText, cgm.New().Points({{1, 1}}).Enumeration(0).String(GetParam().written))
      .Add(kPrimitives, kAppendText, cgm.New().Enumeration(1).String("!"))
      .Add(kPrimitives, kAppendText, cgm.New().Enumeration(1).String("?"));
  EXPECT_EQ(std::get<Text>(Drawn(cgm).shape).text, GetParam().read + "!");
}

INSTANTIATE_TEST_SUITE_P(
    Texts, CgmStringTest,
    testing::Values(StringCase{"4/2", "gr\xFC\xDF\x85\x7F\n", "gr\u00FC\u00DF"},
                    StringCase{"%G", "gr\u00FC\u00DF\u0085 \U0001F5FA", "gr\u00FC\u00DF \U0001F5FA"},
                    StringCase{"%G", "\xE0\x80\xAF", "\u00E0\u00AF"}, StringCase{"\x1B%/I", "gr\xFC", "gr\u00FC"},
                    StringCase{"B", "\xFC\x1B%G\u00FC\x1B%@\xFC\x1B(B", "\u00FC\u00FC\u00FC"}));

// ---- what is no picture, or not all of one

using CgmBoundsTest = ServiceTest;

Status StatusOf(const Bytes &metafile) {
  Drawing drawing;
  return ReadCgm(metafile, drawing);
}

TEST_F(CgmBoundsTest, OnlyAWholePictureMayBeEmpty) {
  const CgmBuilder empty;
  EXPECT_EQ(StatusOf({}), ERROR_FILE_FORMAT);
  EXPECT_EQ(StatusOf(Bytes(100, 0)), ERROR_FILE_FORMAT);
  EXPECT_EQ(StatusOf(empty.bytes), ERROR_FILE_FORMAT);
  EXPECT_EQ(StatusOf(empty.Finish()), SUCCESS);
}

TEST_F(CgmBoundsTest, TheFirstPictureIsTheDrawing) {
  CgmBuilder cgm;
  cgm.Add(kPrimitives, kPolymarker, cgm.New().Points({{1, 1}}))
      .Add(kDelimiters, kEndPicture)
      .Add(kDelimiters, kBeginPicture, cgm.New().String("second"))
      .Add(kPrimitives, kPolymarker, cgm.New().Points({{2, 2}}));
  EXPECT_TRUE(Drawn(cgm).shape == Shape(Markers{{{1, 1}}}));
}

TEST_F(CgmBoundsTest, WhatIsUnknownOrHiddenIsSkipped) {
  CgmBuilder cgm;
  cgm.Add(kEscapes, 1, cgm.New().Integer(-1).String(std::string(100, 'x')))
      .Add(15, 127, cgm.New().Raw(Bytes(33)))
      .Add(kDelimiters, kBeginProtectionRegion, cgm.New().Index(1))
      .Add(kPrimitives, kPolymarker, cgm.New().Points({{1, 1}}))
      .Add(kDelimiters, kEndProtectionRegion)
      .Add(kPrimitives, kPolymarker, cgm.New().Points({{2, 2}}));
  EXPECT_TRUE(Drawn(cgm).shape == Shape(Markers{{{2, 2}}}));
}

struct BadElement {
  std::string name;
  Element element;
  SkipReason reason;
};

class CgmSkipTest : public ServiceTestWith<BadElement> {};

/** Elements in front of a bad one and behind it are read, in front of the first object as well as behind it. */
TEST_P(CgmSkipTest, LeavesOutTheElementAlone) {
  const Element &bad = GetParam().element;
  CgmBuilder cgm({.integer = 32, .real = CgmReal::Float64, .vdcReal = CgmReal::Float32, .vdcIsReal = true});
  std::vector<SkippedElement> expected;
  for (int i = 1; i <= 2; ++i) {
    expected.push_back({bad.group, bad.number, cgm.bytes.size(), GetParam().reason});
    Add(cgm, bad.group, bad.number, bad.parameters);
    Add(cgm, kPrimitives, kAppendText, {Enum{1}, std::string("to nothing")});
    Add(cgm, kPrimitives, kText, {P{1.0 * i, 2}, Enum{0}, std::string("text")});
  }
  Drawing drawing;
  SkippedElements skipped;
  ASSERT_EQ(ReadCgm(cgm.Finish(), drawing, &skipped), SUCCESS);
  EXPECT_EQ(skipped.elements, expected);
  EXPECT_EQ(skipped.count, 2U);
  // A text that is open ends at the bad primitive, so what is appended behind that isn't appended to it.
  const std::string first = bad.group == kPrimitives ? "text" : "textto nothing";
  ASSERT_EQ(ObjectsOf(drawing).size(), 2U);
  EXPECT_TRUE(ObjectsOf(drawing)[0].shape == Shape(Text{{1, 2}, first, false, {}}));
  EXPECT_TRUE(ObjectsOf(drawing)[1].shape == Shape(Text{{2, 2}, "text", false, {}}));
  CgmBuilder plain(cgm.coding);
  Add(plain, kPrimitives, kText, {P{1, 2}, Enum{0}, std::string("text")});
  EXPECT_TRUE(drawing.styles == Read(plain.Finish()).styles);
}

constexpr double kNoNumber = std::numeric_limits<double>::quiet_NaN();
constexpr double kEndless = std::numeric_limits<double>::infinity();
const BadElement kBadElements[] = {
    {"NoNumber", {kPrimitives, kPolyline, {P{1, 1}, P{kNoNumber, 1}}}, SkipReason::BadValue},
    {"Endless", {kAttributes, kLineWidth, {Real{kEndless}}}, SkipReason::BadValue},
    {"ShortCircle", {kPrimitives, kCircle, {P{1, 1}}}, SkipReason::TooShort},
    {"ShortText", {kPrimitives, kText, {P{1, 1}, Enum{1}, Bytes{9, 'a'}}}, SkipReason::TooShort},
    {"ShortIndex", {kAttributes, kLineType, {Bytes{2}}}, SkipReason::TooShort},
    {"NoParameters", {kAttributes, kTextColor, {}}, SkipReason::TooShort},
    {"EdgeFlag", {kPrimitives, kPolygonSet, {P{0, 0}, Enum{1}, P{9, 0}, Enum{9}}}, SkipReason::BadValue},
    {"VdcPrecision", {kControls, kVdcIntegerPrecision, {Int{17}}}, SkipReason::BadValue},
    {"RealPrecision", {kMetafileDescriptors, kRealPrecision, {Enum{0}, Int{5}, Int{5}}}, SkipReason::BadValue},
    {"VdcType", {kMetafileDescriptors, kVdcType, {Enum{2}}}, SkipReason::BadValue},
    {"ColorMode", {kPictureDescriptors, kColorSelectionMode, {Enum{2}}}, SkipReason::BadValue},
    {"WidthMode", {kPictureDescriptors, kLineWidthMode, {Enum{4}}}, SkipReason::BadValue},
    {"ColorModel", {kMetafileDescriptors, kColorModel, {Ix{2}}}, SkipReason::BadValue},
    {"FontList", {kMetafileDescriptors, kFontList, {std::string("COURIER"), Bytes{9, 'H'}}}, SkipReason::TooShort},
    {"MissingCells",
     {kPrimitives, kCellArray, {P{0, 0}, P{9, 9}, P{9, 0}, Int{9}, Int{9}, Int{8}, Enum{1}, Bytes(80)}},
     SkipReason::TooShort},
    {"NoColumns",
     {kPrimitives, kCellArray, {P{0, 0}, P{9, 9}, P{9, 0}, Int{0}, Int{9}, Int{8}, Enum{1}, Bytes(9)}},
     SkipReason::BadValue},
    {"PrecisionOfCells", {kAttributes, kPatternTable, {Ix{1}, Int{1}, Int{1}, Int{3}, Bytes(9)}}, SkipReason::BadValue},
    // More cells than so few bytes may stand for, in runs of which each could be of many.
    {"ManyCells",
     {kPrimitives, kCellArray, {P{0, 0}, P{9, 9}, P{9, 0}, Int{8192}, Int{8192}, Int{8}, Enum{0}, Bytes(64)}},
     SkipReason::TooLarge},
    {"EndlessCells",
     {kPrimitives, kCellArray, {P{0, 0}, P{9, 9}, P{9, 0}, Int{0x7FFFFFFF}, Int{0x7FFFFFFF}, Int{8}, Enum{0}}},
     SkipReason::TooLarge},
    {"EndlessPattern",
     {kAttributes, kPatternTable, {Ix{1}, Int{0x7FFFFFFF}, Int{0x7FFFFFFF}, Int{1}}},
     SkipReason::TooShort},
};

INSTANTIATE_TEST_SUITE_P(Elements, CgmSkipTest, testing::ValuesIn(kBadElements),
                         [](const auto &given) { return given.param.name; });

TEST_F(CgmBoundsTest, BadDefaultsLeaveTheOthersInForce) {
  CgmBuilder defaults;
  defaults.bytes.clear();
  Add(defaults, kAttributes, kLineType, {Bytes{2}});
  Add(defaults, kAttributes, kEdgeColor, {Ci{2}});
  Bytes replacement = defaults.bytes;
  replacement.insert(replacement.end(), {0x50, 0x5E, 0, 1});  // an element of 30 bytes, of which two are there
  CgmBuilder cgm;
  const std::size_t offset = cgm.bytes.size();
  Add(cgm, kMetafileDescriptors, kMetafileDefaultsReplacement, {replacement});
  Add(cgm, kPrimitives, kPolymarker, {P{1, 1}});
  Drawing drawing;
  SkippedElements skipped;
  ASSERT_EQ(ReadCgm(cgm.Finish(), drawing, &skipped), SUCCESS);
  EXPECT_EQ(skipped.elements, (std::vector<SkippedElement>{{kAttributes, kLineType, offset, SkipReason::TooShort},
                                                           {kAttributes, kLineType, offset, SkipReason::TooShort}}));
  EXPECT_EQ(drawing.styles.at(0).edge.color, 0x0000FFU);
}

/** Each element of a metafile cut in half: all objects but its own are drawn in their places. */
TEST_F(CgmBoundsTest, AnElementCutShortCostsNoOtherObject) {
  const Bytes whole = Scene({});
  const std::vector<Object> objects = ObjectsOf(Read(whole));
  ElementStream stream(whole);
  ksvect::cgm::Element element;
  for (int index = 0; stream.Next(element) == ElementStream::Step::Element; ++index) {
    if (element.group == kDelimiters || element.group == kMetafileDescriptors) continue;
    SCOPED_TRACE(index);
    Bytes cut(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(element.offset));
    const std::size_t half = std::min<std::size_t>(element.parameters.size() / 2, 30);
    cut.insert(cut.end(), {static_cast<std::uint8_t>(element.group << 4 | element.number >> 3),
                           static_cast<std::uint8_t>(element.number << 5 | half)});
    cut.insert(cut.end(), element.parameters.begin(), element.parameters.begin() + static_cast<std::ptrdiff_t>(half));
    cut.resize((cut.size() + 1) / 2 * 2);
    const auto behind = element.parameters.data() + element.parameters.size() - whole.data();
    cut.insert(cut.end(), whole.begin() + (behind + 1) / 2 * 2, whole.end());
    const std::vector<Object> left = ObjectsOf(Read(cut));
    const std::size_t lost = element.group == kPrimitives && left.size() < objects.size() ? 1 : 0;
    ASSERT_EQ(left.size() + lost, objects.size());
  }
}

TEST_F(CgmBoundsTest, ABrokenOffMetafileShowsItsBeginning) {
  const Bytes whole = Scene({});
  const Drawing drawing = Read(whole);
  size_t before = 0;
  for (size_t length = 0; length < whole.size(); ++length) {
    // A copy of its own size, so that a byte too far is found.
    const Bytes part(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(length));
    Drawing shown;
    const Status status = ReadCgm(part, shown);
    const auto &objects = ObjectsOf(shown);
    ASSERT_EQ(status, objects.empty() ? ERROR_FILE_FORMAT : SUCCESS);
    ASSERT_GE(objects.size(), before);
    ASSERT_TRUE(std::equal(objects.begin(), objects.end(), ObjectsOf(drawing).begin()));
    before = objects.size();
  }
  EXPECT_EQ(before, kSceneObjects);
}

TEST_F(CgmBoundsTest, DamagedBytesAreNoFault) {
  for (const CgmCoding &coding : {CgmCoding{}, CgmCoding{.real = CgmReal::Float64,
                                               .vdcReal = CgmReal::Float64,
                                               .vdcIsReal = true,
                                               .directColor = true,
                                               .partition = 30}}) {
    const Bytes whole = Scene(coding);
    for (size_t at = 0; at < whole.size(); ++at) {
      for (const unsigned change : {0x01U, 0x20U, 0x80U, 0xFFU}) {
        Bytes damaged = whole;
        damaged[at] = static_cast<uint8_t>(damaged[at] ^ change);
        const Status status = StatusOf(damaged);
        ASSERT_TRUE(status == SUCCESS || status == ERROR_FILE_FORMAT) << at;
      }
    }
  }
}

}  // namespace
