#include "ksvect/cgm/reader.h"
#include "ksvect/cgm/writer.h"
#include "ksvect/paint/bounds.h"
#include "service_test.h"

#include <algorithm>
#include <cmath>
#include <functional>
#include <limits>
#include <map>
#include <numbers>
#include <set>
#include <string>

namespace {

using namespace ksvect;

/** Writes it as the framework does: the bounds stand for an extent that a drawing doesn't have. */
Status Write(const Drawing &drawing, Bytes &bytes) {
  Box bounds;
  return WriteCgm(drawing, BoundsOf(drawing, bounds) ? &bounds : nullptr, "20050131", bytes);
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

struct Element {
  unsigned code; /**< a digit for the class, two for the number */
  Bytes parameters;
};

std::vector<Element> ElementsOf(const Bytes &bytes) {
  constexpr unsigned kLong = 31;
  std::vector<Element> elements;
  for (std::size_t at = 0; at < bytes.size();) {
    const unsigned head = bytes.at(at) << 8U | bytes.at(at + 1);
    const bool isLong = (head & kLong) == kLong;
    const unsigned length = isLong ? bytes.at(at + 2) << 8U | bytes.at(at + 3) : head & kLong;
    const auto first = bytes.begin() + static_cast<std::ptrdiff_t>(at) + (isLong ? 4 : 2);
    elements.push_back({(head >> 12U) << 8U | (head >> 5U & 127U), Bytes(first, first + length)});
    at += (isLong ? 4 : 2) + length + length % 2;
  }
  return elements;
}

std::string TextOf(const Bytes &parameters) {
  return {parameters.begin() + 1, parameters.end()};
}

TEST(CgmWriter, SaysWhatThePictureNeedsInTheStandardsOrder) {
  const std::vector<std::pair<Scene, std::vector<unsigned>>> scenes = {
      {LongLines(), {0x001, 0x101, 0x102, 0x10B, 0x003, 0x202, 0x203, 0x206, 0x004}},
      {OfTexts({"\xC3\xBC"}), {0x001, 0x101, 0x102, 0x10B, 0x10D, 0x10E, 0x10F, 0x003, 0x202, 0x206, 0x004}},
      {ManyCells(40001, 1), {0x001, 0x101, 0x102, 0x10B, 0x104, 0x003, 0x202, 0x206, 0x004}},
      {Attributes(0.000123),
       {0x001, 0x101, 0x102, 0x10B, 0x103, 0x10D, 0x10C, 0x003, 0x202, 0x203, 0x205, 0x204, 0x206, 0x207, 0x004}}};
  for (const auto &[scene, descriptors] : scenes) {
    Bytes bytes;
    ASSERT_EQ(Write(scene.drawing, bytes), SUCCESS);
    // What lies behind may be in partitions.
    const Bytes body = {0x00, 0x80};
    const auto end = std::search(bytes.begin(), bytes.end(), body.begin(), body.end());
    std::vector<unsigned> found;
    for (const Element &element : ElementsOf(Bytes(bytes.begin(), end + 2))) found.push_back(element.code);
    EXPECT_EQ(found, descriptors);
    // Measures of both kinds need version 3.
    const bool isMixed = &descriptors == &scenes.back().second;
    const Bytes version = {0x10, 0x22, 0, static_cast<std::uint8_t>(isMixed ? 3 : 1)};
    EXPECT_NE(std::search(bytes.begin(), bytes.end(), version.begin(), version.end()), bytes.end());
    EXPECT_EQ(bytes.size() % 2, 0U);
  }
}

/** A metafile of the profile byte for byte: attributes before their first use, and again where they change. */
TEST(CgmWriter, WritesAMetafileOfTheProfile) {
  Scene scene;
  Style style;
  style.line.color = 0x0000FF;
  style.line.width = {3, false};
  const Polyline line{{{0, 50}, {10, 60}}};
  scene.Add(line, style);
  scene.Add(line, style);
  style.fill.color = 0x00FF00;  // nothing that shows on a line
  scene.Add(line, style);
  style.line.color = 0xFF0000;
  scene.Add(line, style);
  const std::string description =
      R"("ProfileId:MIL-STD-2301A" "ProfileEd:1" "ColourClass:colour" "Source:Ksntfx" "Date:20050131")";
  Bytes expected = {0x00, 0x27, 6, 'K', 's', 'n', 't', 'f', 'x', 0,  // BEGIN METAFILE
                    0x10, 0x22, 0, 1,                                // METAFILE VERSION
                    0x10, 0x5F, 0, 93,  92};                         // METAFILE DESCRIPTION
  expected.insert(expected.end(), description.begin(), description.end());
  expected.push_back(0);
  const Bytes drawn = {0x40, 0x28, 0, 0, 0xFF, 0xCE, 0, 10, 0xFF, 0xC4};  // POLYLINE: y is negated
  for (const Bytes &part :
       {Bytes{0x11, 0x66, 0, 1, 0xFF, 0xFF, 0, 1},  // METAFILE ELEMENT LIST: the drawing plus control set
        Bytes{0x00, 0x6A, 9, 'P', 'i', 'c', 't', 'u', 'r', 'e', ' ', '1'},  // BEGIN PICTURE
        Bytes{0x20, 0x42, 0, 1},                                            // COLOUR SELECTION MODE: direct
        Bytes{0x20, 0x62, 0, 0},                                            // LINE WIDTH SPECIFICATION MODE: absolute
        Bytes{0x20, 0xC8, 0xFF, 0x9C, 0xFF, 0xCE, 3, 0x84, 0xFC, 0xAE},     // VDC EXTENT: y runs down
        Bytes{0x00, 0x80},                                                  // BEGIN PICTURE BODY
        Bytes{0x50, 0x42, 0, 1},                                            // LINE TYPE
        Bytes{0x50, 0x83, 0xFF, 0, 0, 0},                                   // LINE COLOUR
        Bytes{0x50, 0x62, 0, 3},                                            // LINE WIDTH
        drawn, drawn, drawn, Bytes{0x50, 0x83, 0, 0, 0xFF, 0}, drawn,       //
        Bytes{0x00, 0xA0},                                                  // END PICTURE
        Bytes{0x00, 0x40}}) {                                               // END METAFILE
    expected.insert(expected.end(), part.begin(), part.end());
  }
  Bytes bytes;
  ASSERT_EQ(Write(scene.drawing, bytes), SUCCESS);
  EXPECT_EQ(bytes, expected);
}

/** The elements of MIL-STD-2301A, and for each primitive the attributes that it depends on. */
const std::set<unsigned> kProfile = {0x001, 0x002, 0x003, 0x004, 0x005, 0x101, 0x102, 0x10B, 0x10D, 0x202,
                                     0x203, 0x205, 0x206, 0x303, 0x304, 0x502, 0x503, 0x504, 0x50A, 0x50E,
                                     0x50F, 0x510, 0x516, 0x517, 0x518, 0x51B, 0x51C, 0x51D, 0x51E};
const std::set<unsigned> kOfLines = {0x502, 0x503, 0x504};
const std::set<unsigned> kOfAreas = {0x516, 0x517, 0x51B, 0x51C, 0x51D, 0x51E};
const std::set<unsigned> kOfTexts = {0x50A, 0x50E, 0x50F, 0x510};
const std::map<unsigned, std::set<unsigned>> kProfilePrimitives = {
    {0x401, kOfLines}, {0x404, kOfTexts}, {0x407, kOfAreas}, {0x40B, kOfAreas}, {0x40C, kOfAreas},
    {0x40F, kOfLines}, {0x410, kOfAreas}, {0x411, kOfAreas}, {0x412, kOfLines}, {0x413, kOfAreas}};

TEST(CgmWriter, KeepsToTheProfileOrDoesNotClaimIt) {
  Style style;
  style.edgeVisible = true;
  style.fill.interior = Interior::Hatch;
  style.text.height = 12;
  style.transparent = false;
  const std::function<void(Scene &)> additions[] = {[](Scene &) {},
                                                    [&](Scene &scene) {
                                                      scene.Add(Markers{{{1, 2}}}, style);
                                                    },
                                                    [&](Scene &scene) {
                                                      scene.Add(Polyline{{{1.5, 2}, {3, 4}}}, style);
                                                    },
                                                    [&](Scene &scene) {
                                                      scene.Add(Text{{1, 2}, "gr\xC3\xBC\xC3\x9F", false, {}}, style);
                                                    },
                                                    [](Scene &scene) { scene.drawing.hasBackground = true; },
                                                    [](Scene &scene) {
                                                      Style clipped;
                                                      clipped.clipped = true;
                                                      clipped.clip = {{0, 60}, {9, 90}};
                                                      scene.Add(Polyline{{{1, 2}, {3, 4}}}, clipped);
                                                    }};
  for (const auto &add : additions) {
    const bool ofProfile = &add == &additions[0];
    Scene scene;
    for (const Shape &shape : scene.AllShapes()) {
      const auto *text = std::get_if<Text>(&shape);
      if (shape.index() == Shape(DisjointPolyline{}).index() || std::holds_alternative<PolygonSet>(shape)) continue;
      if (std::holds_alternative<Markers>(shape) || std::holds_alternative<CellArray>(shape)) continue;
      if (text == nullptr || !text->restricted) scene.Add(shape, style);
    }
    add(scene);
    Bytes bytes;
    ASSERT_EQ(Write(scene.drawing, bytes), SUCCESS);
    std::set<unsigned> before;
    bool keeps = true;
    for (const auto &[code, parameters] : ElementsOf(bytes)) {
      const auto primitive = kProfilePrimitives.find(code);
      if (primitive != kProfilePrimitives.end()) {
        EXPECT_TRUE(std::includes(before.begin(), before.end(), primitive->second.begin(), primitive->second.end()))
            << std::hex << code;
      }
      keeps = keeps && (primitive != kProfilePrimitives.end() || kProfile.contains(code));
      if (code == 0x102) {
        EXPECT_EQ(TextOf(parameters).find("ProfileId:MIL-STD-2301A") != std::string::npos, ofProfile);
        EXPECT_NE(TextOf(parameters).find("\"Date:20050131\""), std::string::npos);
      }
      before.insert(code);
    }
    EXPECT_EQ(keeps, ofProfile);
    // Height and orientation of texts count in full: said where a general reader would take less.
    EXPECT_EQ(before.contains(0x50B), !ofProfile);
    // General readers clip to the extent unless the indicator is off.
    EXPECT_EQ(before.contains(0x306), !ofProfile);
  }
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
  Scene unstyled;
  unstyled.drawing.layers[0].objects.push_back({Polyline{{{0, 0}, {1, 1}}}, 0});
  Bytes bytes;
  EXPECT_EQ(Write(unstyled.drawing, bytes), ERROR_NOT_SUPPORTED);
}

}  // namespace
