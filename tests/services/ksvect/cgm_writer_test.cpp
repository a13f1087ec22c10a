#include "ksvect/cgm/reader.h"
#include "ksvect/cgm/writer.h"
#include "ksvect/paint/bounds.h"
#include "service_test.h"

#include <algorithm>
#include <cmath>
#include <functional>
#include <limits>
#include <numbers>

namespace {

using namespace ksvect;

/** Writes it as the framework does: the bounds stand for an extent that a drawing doesn't have. */
Status Write(const Drawing &drawing, Bytes &bytes) {
  Box bounds;
  return WriteCgm(drawing, BoundsOf(drawing, bounds) ? &bounds : nullptr, bytes);
}

constexpr double kHalfTurn = std::numbers::pi;

/** A drawing of 1000 by 800 units, each `unit` long. */
struct Scene {
  double unit = 1;
  Drawing drawing;

  explicit Scene(double size = 1) : unit(size) {
    drawing.hasExtent = true;
    drawing.extent = {{-100 * unit, 50 * unit}, {900 * unit, 850 * unit}};
    drawing.patterns = {{2, 1, {0x112233, 0x445566}}, {3, 2, {1, 2, 3, 4, 5, 6}}};
    drawing.layers.resize(2);
  }

  Point At(double x, double y) const { return {x * unit, y * unit}; }

  void Add(const Shape &shape, const Style &style, std::size_t layer = 0) {
    drawing.layers[layer].objects.push_back({shape, StyleNumber(drawing, style)});
  }

  std::vector<Shape> AllShapes() const {
    const std::vector<Point> points = {At(10, 20), At(300, 60), At(120, 700), At(-50, 80)};
    std::vector<Shape> shapes = {
        Polyline{points},
        DisjointPolyline{points},
        Polygon{points},
        PolygonSet{points, {EdgeFlag::Visible, EdgeFlag::Invisible, EdgeFlag::CloseInvisible, EdgeFlag::CloseVisible}},
        Rectangle{points[0], points[1]},
        Ellipse{At(200, 300), At(100, 0), At(0, -100)},
        Ellipse{At(200, 300), At(80, 30), At(10, 50)},
        Text{points[0], "Height 12 \"m\"", false, {}},
        Text{points[0], "Restricted", true, At(90, 14)},
        Markers{points},
        CellArray{points[0], points[2], points[1], 3, 2, {0xFF, 0xFF00, 0xFF0000, 1, 2, 0x030405}}};
    for (const Closure closure : {Closure::Open, Closure::Pie, Closure::Chord}) {
      for (const Point second : {At(0, -70), At(0, 70), At(5, 30)}) {
        shapes.emplace_back(Ellipse{At(200, 300), At(70, 0), second, closure, 0.3, 2.2});
        shapes.emplace_back(Ellipse{At(200, 300), At(70, 0), second, closure, -2, 2.5});
        shapes.emplace_back(Ellipse{At(200, 300), At(70, 0), second, closure, 1, 1 + 2 * kHalfTurn});
      }
    }
    return shapes;
  }
};

/** Every number that shows on an object: lengths in units, so that one tolerance does for all scales. */
class Numbers {
 public:
  Numbers(const Drawing &from, double size) : drawing(from), unit(size) {}

  std::vector<double> Of(const Object &object) {
    list = {static_cast<double>(object.shape.index())};
    const Style &style = drawing.styles[object.style];
    Put(style.clipped, style.transparent);
    if (style.clipped) Lengths({style.clip.low, style.clip.high});
    if (!style.transparent) Put(style.auxiliary);
    std::visit([&](const auto &shape) { OfShape(shape, style); }, object.shape);
    return list;
  }

 private:
  template <typename... Values>
  void Put(Values... values) {
    (list.push_back(static_cast<double>(values)), ...);
  }
  void Size(const Measure &size) { Put(size.nominal, size.nominal ? size.value : size.value / unit); }
  template <typename Points>
  void Lengths(const Points &points) {
    for (const Point point : points) Put(point.x / unit, point.y / unit);
  }
  void Lengths(std::initializer_list<Point> points) { Lengths<std::initializer_list<Point>>(points); }

  void Line(const LineStyle &line) {
    Size(line.width);
    Put(line.dash, line.color);
  }

  void Area(const Style &style) {
    const FillStyle &fill = style.fill;
    Put(fill.interior, style.edgeVisible);
    if (style.edgeVisible) Line(style.edge);
    if (fill.interior == Interior::Empty) return;
    if (fill.interior != Interior::Pattern) return Put(fill.color, Hatching(fill));
    const Pattern &pattern = drawing.patterns.at(fill.pattern);
    Lengths({fill.patternOrigin, fill.patternUp, fill.patternAlong * (1.0 / pattern.columns)});
    for (std::uint32_t row = 0; row < pattern.rows; ++row) {
      for (std::uint32_t x = 0; x < 6; ++x) Put(pattern.colors[row * pattern.columns + x % pattern.columns]);
    }
  }
  static double Hatching(const FillStyle &fill) {
    return fill.interior == Interior::Hatch ? static_cast<double>(fill.hatch) : 0;
  }

  template <typename PointShape>
  void OfShape(const PointShape &shape, const Style &style) {
    Lengths(shape.points);
    if constexpr (requires { shape.flags; }) {
      for (const EdgeFlag flag : shape.flags) Put(flag);
    }
    constexpr bool isLine = std::is_same_v<PointShape, Polyline> || std::is_same_v<PointShape, DisjointPolyline>;
    isLine ? Line(style.line) : Area(style);
  }
  void OfShape(const Rectangle &shape, const Style &style) {
    Lengths({shape.first, shape.second});
    Area(style);
  }
  void OfShape(const Markers &shape, const Style &style) {
    Lengths(shape.points);
    Size(style.marker.size);
    Put(style.marker.type, style.marker.color);
  }
  void OfShape(const Ellipse &shape, const Style &style) {
    const bool full = shape.closure == Closure::Full;
    Put(shape.closure);
    for (int i = 0; i <= 8; ++i) {
      const double t = full ? i * kHalfTurn / 4 : shape.start + (shape.end - shape.start) * i / 8;
      Lengths({shape.center + shape.first * std::cos(t) + shape.second * std::sin(t)});
    }
    shape.closure == Closure::Open ? Line(style.line) : Area(style);
  }
  void OfShape(const CellArray &shape, const Style & /*unused*/) {
    Lengths({shape.origin, shape.opposite, shape.alongEnd});
    Put(shape.columns, shape.rows);
    list.insert(list.end(), shape.colors.begin(), shape.colors.end());
  }
  void OfShape(const Text &shape, const Style &style) {
    const TextStyle &text = style.text;
    Lengths({shape.position, shape.extent});
    list.insert(list.end(), shape.text.begin(), shape.text.end());
    const double length = std::hypot(text.along.x, text.along.y);
    Put(shape.restricted, text.family, text.bold, text.oblique);
    Put(text.color, text.height / unit, text.expansion, text.spacing);
    Put(text.up.x / length, text.up.y / length, text.along.x / length, text.along.y / length);
    Put(text.path, text.across, text.upwards);
    Put(text.across == AlignAcross::Continuous ? text.acrossPart : 0);
    Put(text.upwards == AlignUp::Continuous ? text.upwardsPart : 0);
  }

  const Drawing &drawing;
  double unit;
  std::vector<double> list;
};

std::vector<std::vector<double>> NumbersOf(const Drawing &drawing, double unit) {
  std::vector<std::vector<double>> all;
  for (const Layer &layer : drawing.layers) {
    for (const Object &object : layer.objects) all.push_back(Numbers(drawing, unit).Of(object));
  }
  return all;
}

/** A hundred thousandth of the drawing's width: rays of 16 bits turn the ends of arcs by less. */
constexpr double kTolerance = 0.01;

void ExpectSamePicture(const Drawing &drawing, const Drawing &expected, double unit) {
  EXPECT_EQ(drawing.hasBackground, expected.hasBackground);
  EXPECT_EQ(drawing.background, expected.background);
  const auto numbers = NumbersOf(drawing, unit);
  const auto wanted = NumbersOf(expected, unit);
  ASSERT_EQ(numbers.size(), wanted.size());
  for (std::size_t i = 0; i < numbers.size(); ++i) {
    ASSERT_EQ(numbers[i].size(), wanted[i].size()) << "object " << i;
    for (std::size_t k = 0; k < numbers[i].size(); ++k) {
      ASSERT_NEAR(numbers[i][k], wanted[i][k], kTolerance) << "object " << i << ", number " << k;
    }
  }
}

struct SceneCase {
  const char *name;
  std::function<Scene()> make;
};

Scene Shapes(double unit) {
  Scene scene(unit);
  std::size_t layer = 0;
  for (const Shape &shape : scene.AllShapes()) scene.Add(shape, Style{}, layer++ % 2);
  return scene;
}

/** Each attribute of an object changed, and back. */
Scene Attributes(double unit) {
  Scene scene(unit);
  scene.drawing.hasBackground = true;
  scene.drawing.background = 0x102030;
  const std::vector<std::function<void(Style &)>> changes = {
      [](Style &style) {
        style.line = {{2.5, true}, Dash::Dot, 0x0000FF};
      },
      [&](Style &style) {
        style.line.width = {3 * unit, false};
      },
      [&](Style &style) {
        style.edge = {{4 * unit, false}, Dash::DashDotDot, 0x00FF00};
      },
      [](Style &style) { style.fill.interior = Interior::Solid; },
      [](Style &style) { style.fill.interior = Interior::Hatch, style.fill.hatch = Hatch::DiagonalCross; },
      [](Style &style) { style.fill.interior = Interior::Empty; },
      [&](Style &style) {
        style.fill = {Interior::Pattern, {}, 0, 1, scene.At(7, 9), scene.At(-4, 20), scene.At(30, 2)};
      },
      [&](Style &style) {
        style.fill = {Interior::Pattern, {}, 0, 0, scene.At(7, 9), scene.At(0, 20), scene.At(30, 0)};
      },
      [&](Style &style) {
        style.marker = {Marker::Cross, {5 * unit, false}, 0x00FFFF};
      },
      [](Style &style) {
        style.marker.size = {3, true};
      },
      [](Style &style) { style.transparent = false, style.auxiliary = 0x777777; },
      [&](Style &style) {
        style.clipped = true, style.clip = {scene.At(1, 2), scene.At(300, 400)};
      },
      [](Style &style) { style.text.color = 0x123456, style.text.expansion = 1.25, style.text.spacing = -0.125; },
      [](Style &style) {
        style.text.up = {-0.6, 0.8}, style.text.along = {1.6, 1.2};
      },
      [](Style &style) { style.text.path = TextPath::Down, style.text.across = AlignAcross::Right; },
      [](Style &style) { style.text.across = AlignAcross::Continuous, style.text.acrossPart = 0.25; },
      [](Style &style) { style.text.upwards = AlignUp::Continuous, style.text.upwardsPart = 0.75; },
  };
  for (const Shape &shape : scene.AllShapes()) {
    for (const auto &change : changes) {
      for (const bool edge : {false, true}) {
        Style style;
        style.text.height = 12 * unit;
        style.edgeVisible = edge;
        change(style);
        scene.Add(shape, style);
      }
    }
  }
  return scene;
}

Scene Faces() {
  Scene scene;
  for (const Family family : {Family::Sans, Family::Serif, Family::Fixed}) {
    for (const bool bold : {false, true}) {
      for (const bool oblique : {false, true}) {
        Style style;
        style.text.family = family;
        style.text.bold = bold;
        style.text.oblique = oblique;
        for (int i = 0; i < 2; ++i) scene.Add(Text{{}, "face", false, {}}, style);
      }
    }
  }
  return scene;
}

Scene OfTexts(const std::vector<std::string> &texts) {
  Scene scene;
  for (const std::string &text : texts) scene.Add(Text{{1, 2}, text, false, {}}, Style{});
  return scene;
}

/** Lines whose elements end about where partitions do. */
Scene LongLines() {
  Scene scene;
  for (const int count : {7, 8, 8191, 8192, 16383, 16384, 50000}) {
    Polyline line;
    for (int i = 0; i < count; ++i) line.points.push_back({i % 997 * 1.0, i % 31 * 1.0});
    scene.Add(line, Style{});
  }
  return scene;
}

Scene ManyCells(std::uint32_t columns, std::uint32_t rows) {
  Scene scene;
  CellArray cells{{0, 0}, {300, 200}, {300, 0}, columns, rows, {}};
  for (std::uint32_t i = 0; i < columns * rows; ++i) cells.colors.push_back(i * 2654435761U >> 8);
  scene.Add(cells, Style{});
  return scene;
}

Scene GreatFactors() {
  Scene scene;
  Style style;
  style.line.width = {100000.5, true};
  scene.Add(scene.AllShapes()[0], style);
  return scene;
}

class CgmRoundTrip : public testing::TestWithParam<SceneCase> {};

TEST_P(CgmRoundTrip, ShowsTheSamePictureAndIsWrittenTheSameAgain) {
  const Scene scene = GetParam().make();
  Bytes bytes;
  ASSERT_EQ(Write(scene.drawing, bytes), SUCCESS);
  Drawing read;
  ASSERT_EQ(ReadCgm(bytes, read), SUCCESS);
  ExpectSamePicture(read, scene.drawing, scene.unit);
  for (const Point Box::*corner : {&Box::low, &Box::high}) {
    EXPECT_NEAR((read.extent.*corner).x, (scene.drawing.extent.*corner).x, kTolerance * scene.unit);
    EXPECT_NEAR((read.extent.*corner).y, (scene.drawing.extent.*corner).y, kTolerance * scene.unit);
  }
  Bytes again;
  ASSERT_EQ(Write(read, again), SUCCESS);
  EXPECT_TRUE(again == bytes);
}

INSTANTIATE_TEST_SUITE_P(
    Scenes, CgmRoundTrip,
    testing::Values(SceneCase{"Shapes", [] { return Shapes(1); }},
                    SceneCase{"ShapesOfLongUnits", [] { return Shapes(1e5); }},
                    SceneCase{"ShapesOfFractions", [] { return Shapes(0.37); }},
                    SceneCase{"SmallShapes", [] { return Shapes(0.000123); }},
                    SceneCase{"GreatShapes", [] { return Shapes(1e7 / 3); }},
                    SceneCase{"Attributes", [] { return Attributes(1); }},
                    SceneCase{"AttributesOfLongUnits", [] { return Attributes(1e5); }},
                    SceneCase{"AttributesOfFractions", [] { return Attributes(0.37); }},
                    SceneCase{"SmallAttributes", [] { return Attributes(0.000123); }}, SceneCase{"Faces", Faces},
                    SceneCase{"Latin1",
                              [] {
                                return OfTexts({"plain", "gr\xC3\xBC\xC3\x9F"});
                              }},
                    SceneCase{"Unicode",
                              [] {
                                return OfTexts({"gr\xC3\xBC\xC3\x9F", "\xCE\xA9 \xE2\x82\xAC"});
                              }},
                    SceneCase{"LongTexts",
                              [] {
                                return OfTexts({std::string(254, 'a'), std::string(255, 'b'), std::string(32767, 'c'),
                                                std::string(70001, 'd')});
                              }},
                    SceneCase{"LongLines", LongLines}, SceneCase{"ManyCells", [] { return ManyCells(301, 99); }},
                    SceneCase{"LongRows", [] { return ManyCells(40001, 2); }}, SceneCase{"GreatFactors", GreatFactors}),
    [](const auto &given) { return given.param.name; });

/** The elements up to the picture's body: a digit for the group, two for the number. */
std::vector<unsigned> DescriptorsOf(const Bytes &bytes) {
  constexpr unsigned kLong = 31;
  std::vector<unsigned> elements;
  for (std::size_t at = 0; elements.empty() || elements.back() != 0x004;) {
    const unsigned head = bytes.at(at) << 8U | bytes.at(at + 1);
    const bool isLong = (head & kLong) == kLong;
    const unsigned length = isLong ? bytes.at(at + 2) << 8U | bytes.at(at + 3) : head & kLong;
    elements.push_back((head >> 12U) << 8U | (head >> 5U & 127U));
    at += (isLong ? 4 : 2) + length + length % 2;
  }
  return elements;
}

TEST(CgmWriter, TellsWhatThePictureNeedsInTheStandardsOrder) {
  const std::vector<std::pair<Scene, std::vector<unsigned>>> scenes = {
      {LongLines(), {0x001, 0x101, 0x102, 0x10B, 0x103, 0x003, 0x202, 0x203, 0x206, 0x004}},
      {OfTexts({"\xC3\xBC"}), {0x001, 0x101, 0x102, 0x10B, 0x103, 0x10D, 0x10E, 0x10F, 0x003, 0x202, 0x206, 0x004}},
      {ManyCells(40001, 1), {0x001, 0x101, 0x102, 0x10B, 0x103, 0x104, 0x003, 0x202, 0x206, 0x004}},
      {Attributes(0.000123),
       {0x001, 0x101, 0x102, 0x10B, 0x103, 0x10D, 0x10C, 0x003, 0x202, 0x203, 0x205, 0x204, 0x206, 0x207, 0x004}}};
  for (const auto &[scene, descriptors] : scenes) {
    Bytes bytes;
    ASSERT_EQ(Write(scene.drawing, bytes), SUCCESS);
    EXPECT_EQ(DescriptorsOf(bytes), descriptors);
    // Measures of both kinds need version 3.
    const bool isMixed = &descriptors == &scenes.back().second;
    const Bytes version = {0x10, 0x22, 0, static_cast<std::uint8_t>(isMixed ? 3 : 1)};
    EXPECT_NE(std::search(bytes.begin(), bytes.end(), version.begin(), version.end()), bytes.end());
    EXPECT_EQ(bytes.size() % 2, 0U);
  }
}

TEST(CgmWriter, WritesAttributesWhereTheyChange) {
  Scene scene;
  Style style;
  style.line.color = 0x0000FF;
  const Polyline line{{{0, 50}, {10, 60}}};
  scene.Add(line, style);
  scene.Add(line, style);
  style.fill.color = 0x00FF00;  // nothing that shows on a line
  scene.Add(line, style);
  style.line.color = 0xFF0000;
  scene.Add(line, style);
  Bytes bytes;
  ASSERT_EQ(Write(scene.drawing, bytes), SUCCESS);
  const Bytes drawn = {0x40, 0x28, 0, 0, 0xFF, 0xCE, 0, 10, 0xFF, 0xC4};
  Bytes body = {0x00, 0x80, 0x30, 0xC2, 0, 0, 0x50, 0x83, 0xFF, 0, 0, 0};
  for (int i = 0; i < 3; ++i) body.insert(body.end(), drawn.begin(), drawn.end());
  for (const std::uint8_t byte : {0x50, 0x83, 0x00, 0x00, 0xFF, 0x00}) body.push_back(byte);
  body.insert(body.end(), drawn.begin(), drawn.end());
  for (const std::uint8_t byte : {0x00, 0xA0, 0x00, 0x40}) body.push_back(byte);
  ASSERT_GT(bytes.size(), body.size());
  EXPECT_EQ(Bytes(bytes.end() - static_cast<std::ptrdiff_t>(body.size()), bytes.end()), body);
}

/** A drawing without an extent, flat or small as it may be, stays where it is. */
TEST(CgmWriter, TakesTheBoundsForAnExtent) {
  for (const Box &bounds : {Box{{-3, 50}, {10, 60}}, Box{{-3, 50}, {10, 50}}, Box{{1e-6, 0}, {2e-6, 3e-6}}}) {
    Scene scene;
    scene.drawing.hasExtent = false;
    scene.Add(Polyline{{bounds.low, bounds.high}}, Style{});
    Bytes bytes;
    ASSERT_EQ(Write(scene.drawing, bytes), SUCCESS);
    Drawing read;
    ASSERT_EQ(ReadCgm(bytes, read), SUCCESS);
    EXPECT_EQ(read.extent, bounds);
    EXPECT_EQ(std::get<Polyline>(read.layers[0].objects[0].shape), (Polyline{{bounds.low, bounds.high}}));
  }
}

/** What readers would drop, or take for a whole turn, is written as something that shows the same. */
TEST(CgmWriter, KeepsTheShortest) {
  const auto arc = [](Closure closure) { return Ellipse{{5, 60}, {40, 0}, {0, -40}, closure, 0, 1e-7}; };
  const std::vector<std::pair<Shape, Shape>> kept = {
      {Polyline{{{1, 2}}}, Polyline{{{1, 2}, {1, 2}}}},
      {Polygon{{{1, 2}, {3, 4}}}, Polygon{{{1, 2}, {3, 4}, {3, 4}}}},
      {DisjointPolyline{{{1, 2}, {3, 4}, {5, 6}}}, DisjointPolyline{{{1, 2}, {3, 4}}}},
      {arc(Closure::Open), Polyline{{{45, 60}, {45, 60}}}},
      {arc(Closure::Pie), Polygon{{{45, 60}, {45, 60}, {5, 60}}}},
      {arc(Closure::Chord), Polygon{{{45, 60}, {45, 60}, {45, 60}}}}};
  Scene scene;
  for (const auto &[given, expected] : kept) scene.Add(given, Style{});
  scene.Add(Polyline{}, Style{});
  scene.Add(DisjointPolyline{{{1, 2}}}, Style{});
  Bytes bytes;
  ASSERT_EQ(Write(scene.drawing, bytes), SUCCESS);
  Drawing read;
  ASSERT_EQ(ReadCgm(bytes, read), SUCCESS);
  ASSERT_EQ(read.layers[0].objects.size(), kept.size());
  for (std::size_t i = 0; i < kept.size(); ++i) EXPECT_EQ(read.layers[0].objects[i].shape, kept[i].second) << i;
}

TEST(CgmWriter, RefusesWhatNoMetafileHolds) {
  const double kNone = std::numeric_limits<double>::quiet_NaN();
  const double kEndless = std::numeric_limits<double>::infinity();
  Style wide;
  wide.line.width.value = kEndless;
  Style patterned;
  patterned.fill.interior = Interior::Pattern;
  patterned.fill.pattern = 99;
  const std::vector<std::pair<Shape, Style>> refused = {
      {Polyline{{{0, kNone}, {1, 1}}}, {}},           {Polyline{{{0, 1e61}, {1, 1}}}, {}},
      {Ellipse{{}, {kEndless, 0}, {0, 1}}, {}},       {Ellipse{{}, {1, 0}, {0, 1}, Closure::Pie, 0, kEndless}, {}},
      {CellArray{{}, {}, {}, 2, 2, {1, 2, 3}}, {}},   {Polyline{{{0, 0}, {1, 1}}}, wide},
      {Polygon{{{0, 0}, {1, 1}, {2, 0}}}, patterned}, {PolygonSet{{{0, 0}, {1, 1}}, {}}, {}}};
  for (const auto &[shape, style] : refused) {
    Scene scene;
    scene.Add(shape, style);
    Bytes bytes;
    EXPECT_EQ(Write(scene.drawing, bytes), ERROR_NOT_SUPPORTED) << shape.index();
    EXPECT_TRUE(bytes.empty());
  }
}

}  // namespace
