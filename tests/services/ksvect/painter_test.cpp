// Drawings and texts on bitmaps, by the colours of regions and the bounds of ink.
#include "ksvect/paint/painter.h"

#include "ksvect/paint/bounds.h"
#include "ksvect/paint/text_layout.h"
#include "platform/platform.h"
#include "service_test.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <numbers>

namespace {

using namespace ksvect;

constexpr Color kWhite = 0xFFFFFF;
constexpr Color kRed = 0x0000FF;
constexpr Color kBlue = 0xFF0000;

Style Solid(Color color) {
  Style style;
  style.fill.interior = Interior::Solid;
  style.fill.color = color;
  return style;
}

Style Lines(double width, Color color = 0) {
  Style style;
  style.line = {{width, false}, Dash::Solid, color};
  return style;
}

/** A drawing of one shape, a unit a pixel. */
Drawing DrawingOf(Shape shape, const Style &style, Box extent = {{0, 0}, {100, 100}}) {
  Drawing drawing;
  drawing.hasExtent = true;
  drawing.extent = extent;
  drawing.styles = {style};
  drawing.layers.push_back({u"", {{std::move(shape), 0}}});
  return drawing;
}

/** A white canvas; y runs downwards. */
class Canvas {
 public:
  explicit Canvas(uint32_t width = 100, uint32_t height = 100, uint32_t bits = 24,
                  const KsPaletteEntry *palette = nullptr) {
    EXPECT_EQ(Create(bitmap, width, height, bits, palette), SUCCESS);
    KsBitmapFill(bitmap.Get(), kWhite);
  }

  KsBitmap &Bitmap() { return *bitmap.Get(); }
  KsRect All() { return {0, 0, int32_t(Bitmap().width), int32_t(Bitmap().height)}; }

  Canvas &Paint(const Drawing &drawing) { return Paint(drawing, {All(), true}); }
  Canvas &Paint(const Drawing &drawing, const Placement &placement) {
    EXPECT_EQ(PaintDrawing(drawing, placement, Bitmap()), SUCCESS);
    return *this;
  }

  uint32_t At(int32_t x, int32_t y) {
    const uint8_t *const row = Bitmap().pixels + uint64_t(y) * Bitmap().bytesPerLine;
    if (Bitmap().bitsPerPixel == 8) return row[x];
    const uint8_t *const pixel = row + uint64_t(x) * Bitmap().bitsPerPixel / 8;
    return pixel[2] | uint32_t{pixel[1]} << 8 | uint32_t{pixel[0]} << 16;
  }

  /** The box around all pixels that are not white. */
  KsRect Ink() {
    KsRect ink = {All().right, All().bottom, 0, 0};
    for (int32_t y = 0; y < All().bottom; ++y) {
      for (int32_t x = 0; x < All().right; ++x) {
        if (At(x, y) == kWhite) continue;
        ink = {std::min(ink.left, x), std::min(ink.top, y), std::max(ink.right, x + 1), std::max(ink.bottom, y + 1)};
      }
    }
    return ink;
  }

 private:
  KsLocalBitmap bitmap;
};

void ExpectNear(const KsRect &ink, const KsRect &expected, int32_t tolerance) {
  EXPECT_NEAR(ink.left, expected.left, tolerance);
  EXPECT_NEAR(ink.top, expected.top, tolerance);
  EXPECT_NEAR(ink.right, expected.right, tolerance);
  EXPECT_NEAR(ink.bottom, expected.bottom, tolerance);
}

/** What a canvas of 100 by 100 shows at a place, y upwards: the pixel whose lower left corner it is. */
struct Sight {
  int32_t x;
  int32_t y;
  Color color;
};

struct Scene {
  const char *name;
  Drawing drawing;
  std::vector<Sight> sights;
};

Drawing Patterned() {
  Style style;
  style.fill.interior = Interior::Pattern;
  style.fill.patternAlong = {20, 0};
  style.fill.patternUp = {0, 20};
  Drawing drawing = DrawingOf(Rectangle{{0, 0}, {100, 100}}, style);
  drawing.patterns.push_back({2, 2, {kRed, kBlue, 0, 0x00FF00}});
  return drawing;
}

Style Edged(Style style, Color color) {
  style.edgeVisible = true;
  style.edge = {{4, false}, Dash::Solid, color};
  return style;
}

Style Clipped(Style style) {
  style.clipped = true;
  style.clip = {{20, 20}, {60, 60}};
  return style;
}

Style Dashed(bool transparent) {
  Style style = Lines(5, kRed);
  style.line.dash = Dash::Dash;
  style.transparent = transparent;
  style.auxiliary = kBlue;
  return style;
}

Style Hatched() {
  Style style;
  style.fill.interior = Interior::Hatch;
  style.fill.hatch = Hatch::Horizontal;
  style.fill.color = kRed;
  style.transparent = false;
  style.auxiliary = kBlue;
  return style;
}

Style Marked(Marker type) {
  Style style;
  style.marker = {type, {40, false}, kRed};
  return style;
}

const std::vector<EdgeFlag> kFrameFlags = {EdgeFlag::Visible,        EdgeFlag::Invisible,   EdgeFlag::Invisible,
                                           EdgeFlag::CloseInvisible, EdgeFlag::Visible,     EdgeFlag::Visible,
                                           EdgeFlag::Visible,        EdgeFlag::CloseVisible};
const PolygonSet kFrame = {{{10, 10}, {90, 10}, {90, 90}, {10, 90}, {30, 30}, {70, 30}, {70, 70}, {30, 70}},
                           kFrameFlags};

std::vector<Scene> Scenes() {
  return {
      {"Polyline",
       DrawingOf(Polyline{{{10, 10}, {90, 10}, {90, 90}}}, Lines(6, kRed)),
       {{50, 10, kRed}, {90, 50, kRed}, {50, 50, kWhite}, {91, 8, kRed}}},
      {"DisjointPolyline",
       DrawingOf(DisjointPolyline{{{10, 10}, {40, 10}, {60, 10}, {90, 10}}}, Lines(6, kRed)),
       {{25, 10, kRed}, {75, 10, kRed}, {50, 10, kWhite}}},
      {"Point", DrawingOf(Polyline{{{50, 50}, {50, 50}}}, Lines(6, kRed)), {{50, 50, kRed}, {56, 50, kWhite}}},
      {"Dashes",
       DrawingOf(Polyline{{{0, 50}, {100, 50}}}, Dashed(true)),
       {{28, 50, kRed}, {32, 50, kWhite}, {48, 50, kWhite}, {52, 50, kRed}}},
      {"Gaps",
       DrawingOf(Polyline{{{0, 50}, {100, 50}}}, Dashed(false)),
       {{28, 50, kRed}, {48, 50, kBlue}, {52, 50, kRed}}},
      {"Polygon",
       DrawingOf(Polygon{{{10, 10}, {90, 10}, {10, 90}}}, Edged(Solid(kRed), kBlue)),
       {{30, 30, kRed}, {10, 50, kBlue}, {50, 10, kBlue}, {70, 70, kWhite}}},
      {"PolygonSet",
       DrawingOf(kFrame, Edged(Solid(kRed), kBlue)),
       {{20, 50, kRed}, {50, 50, kWhite}, {50, 10, kBlue}, {89, 50, kRed}, {30, 50, kBlue}, {50, 70, kBlue}}},
      {"Hollow",
       DrawingOf(Rectangle{{10, 10}, {90, 90}},
                 [] {
                   Style style;
                   style.fill.color = kRed;
                   return style;
                 }()),
       {{10, 50, kRed}, {50, 10, kRed}, {50, 50, kWhite}, {12, 50, kWhite}}},
      {"Clip",
       DrawingOf(Rectangle{{10, 10}, {90, 90}}, Clipped(Solid(kRed))),
       {{22, 22, kRed}, {18, 30, kWhite}, {30, 18, kWhite}, {63, 30, kWhite}, {30, 63, kWhite}, {58, 58, kRed}}},
      {"Hatch", DrawingOf(Rectangle{{0, 0}, {100, 100}}, Hatched()), {{50, 99 - 4, kRed}, {50, 99, kBlue}}},
      {"Pattern", Patterned(), {{5, 15, kRed}, {15, 15, kBlue}, {5, 5, 0}, {35, 45, 0x00FF00}}},
      {"Ellipse",
       DrawingOf(Ellipse{{50, 50}, {40, 0}, {0, 20}}, Solid(kRed)),
       {{50, 50, kRed}, {12, 50, kRed}, {50, 68, kRed}, {50, 73, kWhite}, {18, 66, kWhite}}},
      {"Arc",
       DrawingOf(Ellipse{{50, 50}, {40, 0}, {0, 40}, Closure::Open, 0, kTurn / 4}, Lines(6, kRed)),
       {{78, 78, kRed}, {22, 22, kWhite}, {70, 50, kWhite}, {50, 50, kWhite}}},
      {"Pie",
       DrawingOf(Ellipse{{50, 50}, {40, 0}, {0, 40}, Closure::Pie, 0, kTurn / 4}, Solid(kRed)),
       {{55, 55, kRed}, {75, 75, kRed}, {45, 55, kWhite}}},
      {"PieCorner",
       DrawingOf(Ellipse{{50, 50}, {40, 0}, {0, 40}, Closure::Pie, 0, kTurn / 4},
                 [] {
                   Style style = Edged(Solid(kRed), kBlue);
                   style.edge.width.value = 10;
                   return style;
                 }()),
       {{45, 45, kBlue}, {60, 60, kRed}, {43, 43, kWhite}}},
      {"Chord",
       DrawingOf(Ellipse{{50, 50}, {40, 0}, {0, 40}, Closure::Chord, 0, kTurn / 4}, Solid(kRed)),
       {{55, 55, kWhite}, {75, 75, kRed}}},
      {"Cells",
       DrawingOf(CellArray{{10, 90}, {90, 10}, {90, 90}, 2, 2, {kRed, kBlue, 0, 0x00FF00}}, {}),
       {{30, 70, kRed}, {70, 70, kBlue}, {30, 30, 0}, {70, 30, 0x00FF00}, {5, 50, kWhite}}},
      {"TurnedCells",
       DrawingOf(CellArray{{50, 10}, {50, 90}, {90, 50}, 2, 1, {kRed, kBlue}}, {}),
       {{40, 30, kRed}, {75, 55, kBlue}, {15, 15, kWhite}}},
      {"TextBox",
       DrawingOf(Text{{20, 30}, "|", false, {}},
                 [] {
                   Style style;
                   style.text = {.family = Family::Fixed, .color = kRed, .height = 80};
                   style.transparent = false;
                   style.auxiliary = kBlue;
                   return style;
                 }()),
       {{44, 50, kRed}, {30, 50, kBlue}, {60, 20, kBlue}, {60, 85, kBlue}, {15, 50, kWhite}, {72, 50, kWhite}}},
      {"DotMarker", DrawingOf(Markers{{{50, 50}}}, Marked(Marker::Dot)), {{50, 50, kRed}, {66, 50, kWhite}}},
      {"PlusMarker",
       DrawingOf(Markers{{{50.5, 50.5}}}, Marked(Marker::Plus)),
       {{50, 65, kRed}, {65, 50, kRed}, {60, 60, kWhite}}},
      {"AsteriskMarker",
       DrawingOf(Markers{{{50.5, 50.5}}}, Marked(Marker::Asterisk)),
       {{50, 65, kRed}, {60, 56, kRed}, {65, 50, kWhite}}},
      {"CircleMarker",
       DrawingOf(Markers{{{50.5, 50.5}}}, Marked(Marker::Circle)),
       {{50, 70, kRed}, {70, 50, kRed}, {50, 50, kWhite}}},
      {"CrossMarker",
       DrawingOf(Markers{{{50.5, 50.5}}}, Marked(Marker::Cross)),
       {{60, 60, kRed}, {40, 60, kRed}, {50, 65, kWhite}}},
  };
}

class SceneTest : public ServiceTestWith<Scene> {};

TEST_P(SceneTest, ShowsItsColors) {
  for (const uint32_t bits : {24u, 32u}) {
    Canvas canvas(100, 100, bits);
    canvas.Paint(GetParam().drawing);
    for (const Sight &sight : GetParam().sights) {
      EXPECT_EQ(canvas.At(sight.x, 99 - sight.y), sight.color) << bits << ": " << sight.x << ", " << sight.y;
    }
  }
}

INSTANTIATE_TEST_SUITE_P(Painter, SceneTest, testing::ValuesIn(Scenes()),
                         [](const auto &scene) { return std::string(scene.param.name); });

using PainterTest = ServiceTest;

TEST_F(PainterTest, GraysAndPalettesShowTheNearestColors) {
  const Drawing drawing = DrawingOf(Rectangle{{10, 10}, {90, 90}}, Solid(kRed));
  Canvas gray(100, 100, 8);
  EXPECT_EQ(gray.Paint(drawing).At(50, 50), 77u * 255 / 256);
  Palette palette(256);
  palette[7] = {1, 2, 250, 0};
  palette[200] = {255, 255, 255, 0};
  Canvas indexed(100, 100, 8, palette.data());
  EXPECT_EQ(indexed.Paint(drawing).At(50, 50), 7u);
  EXPECT_EQ(indexed.At(2, 2), 200u);
  Canvas deep(100, 100, 16);
  EXPECT_EQ(PaintDrawing(drawing, {deep.All(), true}, deep.Bitmap()), ERROR_NOT_SUPPORTED);
  KsLocalBitmap empty;
  EXPECT_EQ(PaintDrawing(drawing, {{0, 0, 9, 9}, true}, *empty.Get()), ERROR_NO_STORAGE);
}

TEST_F(PainterTest, LinesAreAtLeastAPixelAtAnyScale) {
  const std::vector<Point> frame = {{0, 0}, {1e5, 0}, {1e5, 1e5}, {0, 1e5}, {0, 0}};
  Canvas canvas;
  canvas.Paint(DrawingOf(Polyline{frame}, Lines(0.001), {{0, 0}, {1e5, 1e5}}));
  for (const Sight &sight :
       {Sight{50, 0, 0}, {50, 99, 0}, {0, 50, 0}, {99, 50, 0}, {1, 50, kWhite}, {50, 98, kWhite}}) {
    EXPECT_EQ(canvas.At(sight.x, sight.y), sight.color) << sight.x << ", " << sight.y;
  }
  Canvas thin;
  thin.Paint(DrawingOf(Rectangle{{10, 50}, {90, 50.01}}, Solid(0)));
  EXPECT_EQ(thin.At(50, 49), 0u) << "an area too thin to fill";
}

/** A level line of an odd width lies on the side of its place to which y runs in the metafile; none is on another. */
TEST_F(PainterTest, LevelLinesLieWhereTheirMetafileCountsRows) {
  struct Case {
    bool downwards;  // in the metafile
    bool upwards;    // on the canvas
    double y;        // of the model
    int32_t row;
  };
  for (const Case &line : {Case{true, true, -0.0, 0},
                           {true, true, -1, 1},
                           {true, true, -2, 2},
                           {true, true, -99, 99},
                           {true, true, -100, 99},
                           {false, true, -100, 99},
                           {false, true, -99, 98},
                           {false, true, -1, 0},
                           {false, true, 0, 0},
                           {false, false, -100, 0},
                           {false, false, -99, 1},
                           {true, false, -99, 0},
                           {true, false, -98, 1}}) {
    for (const double width : {1.0, 3.0}) {
      Drawing drawing = DrawingOf(Polyline{{{20, line.y}, {80, line.y}}}, Lines(width), {{0, -100}, {100, 0}});
      drawing.downwards = line.downwards;
      Canvas canvas;
      canvas.Paint(drawing, {canvas.All(), line.upwards});
      const auto reach = static_cast<int32_t>(width) / 2;
      const KsRect ink = {20, std::max(line.row - reach, 0), 80, std::min(line.row + reach + 1, 100)};
      EXPECT_EQ(std::memcmp(&ink, std::vector{canvas.Ink()}.data(), sizeof ink), 0)
          << line.y << ": " << canvas.Ink().top << " to " << canvas.Ink().bottom;
    }
  }
}

TEST_F(PainterTest, AClipTakesInTheLinesOnItsBorders) {
  Style style = Lines(1);
  style.clipped = true;
  style.clip = {{10, -90}, {90, -10}};
  Drawing drawing =
      DrawingOf(Polyline{{{10, -10}, {90, -10}, {90, -90}, {10, -90}, {10, -10}}}, style, {{0, -100}, {100, 0}});
  for (const bool downwards : {false, true}) {
    drawing.downwards = downwards;
    Canvas canvas;
    const int32_t up = downwards ? 0 : 1;
    ExpectNear(canvas.Paint(drawing).Ink(), {10, 10 - up, 91, 91 - up}, 0);
  }
}

struct WindowCase {
  const char *name;
  Box extent;
  bool inPixels;
  KsRect bounds;
  Box window;
  bool mayBePixels = false;
};

class WindowTest : public ServiceTestWith<WindowCase> {};

TEST_P(WindowTest, DependsOnTheMetafileAndNotOnItsObjects) {
  const WindowCase &given = GetParam();
  Drawing drawing = DrawingOf(Rectangle{{10, -10}, {30, -20}}, Solid(0), given.extent);
  drawing.inPixels = given.inPixels;
  drawing.mayBePixels = given.mayBePixels;
  drawing.hasExtent = !(given.extent == Box{});
  for (const double y : {-20, -5000}) {
    std::get<Rectangle>(drawing.layers[0].objects[0].shape).second.y = y;
    EXPECT_EQ(WindowOn(drawing, given.bounds), given.window);
  }
}

INSTANTIATE_TEST_SUITE_P(
    Painter, WindowTest,
    testing::Values(
        WindowCase{"WholeSpace", {{0, -32767}, {32767, 0}}, true, {20, 10, 80, 40}, {{20, -40}, {80, -10}}},
        WindowCase{"BoundsTurned", {{0, -50}, {100, 0}}, true, {0, 0, 50, 100}, {{0, -100}, {50, 0}}},
        WindowCase{"BoundsWithLines", {{0, -50}, {100, 0}}, true, {-2, -2, 102, 52}, {{-2, -52}, {102, 2}}},
        WindowCase{"ExtentTooSmall", {{0, -50}, {100, 0}}, true, {0, 0, 200, 100}, {{0, -50}, {100, 0}}},
        WindowCase{"Scaled", {{0, 0}, {1, 1}}, false, {0, 0, 200, 100}, {{0, 0}, {1, 1}}},
        WindowCase{"Upwards", {{0, 0}, {999, 999}}, false, {25, -925, 725, -25}, {{25, 25}, {725, 925}}, true},
        WindowCase{"UpwardsFromTheTop", {{0, 0}, {99, 99}}, false, {5, 5, 50, 50}, {{0, 0}, {99, 99}}, true},
        WindowCase{"NoExtent", {}, false, {10, 20, 200, 100}, {{10, -100}, {200, -20}}},
        WindowCase{"NoBounds", {{0, 0}, {1, 1}}, false, {7, 7, 7, 7}, {{7, -7}, {7, -7}}}),
    [](const auto &given) { return std::string(given.param.name); });

/** A drawing larger than a tile, of everything that could show where tiles meet. */
Drawing Wide() {
  Drawing drawing = DrawingOf(Polyline{{{-50, 10}, {900, 700}, {1250, 30}}}, Lines(5.5), {{0, 0}, {1200, 800}});
  drawing.styles.push_back(Edged(Hatched(), 0));
  drawing.styles.push_back(Dashed(true));
  drawing.styles.back().text.height = 300;
  drawing.layers[0].objects.push_back({Ellipse{{600, 400}, {500, 20}, {0, 300}}, 1});
  drawing.layers[0].objects.push_back({Polyline{{{0, 790}, {1190, 60}}}, 2});
  drawing.layers[0].objects.push_back({Text{{100, 300}, "Seams", false, {}}, 2});
  std::vector<Point> many;
  many.reserve(3000);
  for (int i = 0; i < 3000; ++i) many.push_back({600 + 590 * std::cos(i * 0.9), 400 + 390 * std::sin(i * 0.9)});
  drawing.layers[0].objects.push_back({Polyline{many}, 0});
  return drawing;
}

TEST_F(PainterTest, TilesMeetWithoutSeams) {
  // The hatch is tied to the canvas, and so goes along with moves by multiples of its spacing.
  constexpr int32_t kMove = 8 * 23;
  Canvas whole(1200, 800);
  whole.Paint(Wide());
  Canvas moved(1200 - kMove, 800 - kMove);
  moved.Paint(Wide(), {{-kMove, -kMove, 1200 - kMove, 800 - kMove}, true});
  int64_t different = 0;
  for (int32_t y = 0; y < 800 - kMove; ++y) {
    for (int32_t x = 0; x < 1200 - kMove; ++x) {
      const uint32_t a = whole.At(x + kMove, y + kMove);
      const uint32_t b = moved.At(x, y);
      for (int shift = 0; shift < 24; shift += 8) {
        const int distance = std::abs(int(a >> shift & 0xFF) - int(b >> shift & 0xFF));
        if (distance > 40) ++different;
      }
    }
  }
  EXPECT_EQ(different, 0);
}

class ExtremeTest : public ServiceTestWith<double> {};

TEST_P(ExtremeTest, FarPlacesAreHarmless) {
  const double far = GetParam();
  Style style = Edged(Hatched(), kRed);
  style.line = {{far, false}, Dash::DashDot, kRed};
  style.edge.dash = Dash::Dot;
  style.marker.size = {far, false};
  style.text.height = far;
  style.text.spacing = far;
  const std::vector<Point> ring = {{-far, -far}, {far, -far}, {far, far}, {50, far}, {-far, far}};
  const Shape shapes[] = {Polyline{ring},
                          DisjointPolyline{ring},
                          Polygon{ring},
                          PolygonSet{ring, std::vector<EdgeFlag>(ring.size(), EdgeFlag::Visible)},
                          Rectangle{ring[0], ring[2]},
                          Ellipse{{far, far}, {far, 0}, {0, -far}},
                          Ellipse{{0, 0}, {far, far}, {far, far}, Closure::Open, -far, far},
                          Text{ring[0], "Far", true, {far, far}},
                          Markers{ring},
                          CellArray{ring[0], ring[2], ring[1], 1000, 1000, {kRed}}};
  Canvas canvas(40, 40);
  for (const Shape &shape : shapes) {
    canvas.Paint(DrawingOf(shape, style));
    Drawing boundless = DrawingOf(shape, Lines(1));
    boundless.hasExtent = false;
    canvas.Paint(boundless);
  }
}

INSTANTIATE_TEST_SUITE_P(Painter, ExtremeTest,
                         testing::Values(0.0, 1e5, 1e9, 1e30, std::numeric_limits<double>::max(),
                                         std::numeric_limits<double>::infinity(),
                                         std::numeric_limits<double>::quiet_NaN()));

TEST_F(PainterTest, FarEndsKeepTheLineInItsPlace) {
  Canvas canvas;
  canvas.Paint(DrawingOf(Polyline{{{-1e8 + 50, -1e8 + 50}, {1e8 + 50, 1e8 + 50}}}, Lines(6, kRed)));
  for (const int32_t place : {5, 50, 94}) EXPECT_EQ(canvas.At(place, 99 - place), kRed);
  canvas.Paint(DrawingOf(Polygon{{{-1e8, 20}, {1e8, 20}, {0, 1e8}}}, Solid(kBlue)));
  EXPECT_EQ(canvas.At(50, 50), kBlue);
  EXPECT_EQ(canvas.At(50, 85), kWhite);
}

TEST_F(PainterTest, TheExtentIsLaidOntoTheRectangle) {
  const Drawing drawing = DrawingOf(Rectangle{{10, 10}, {30, 20}}, Solid(0), {{10, 10}, {50, 50}});
  Canvas up;
  up.Paint(drawing, {{20, 20, 60, 100}, true});
  ExpectNear(up.Ink(), {20, 80, 40, 100}, 0);
  Canvas down;
  down.Paint(drawing, {{20, 20, 60, 100}, false});
  ExpectNear(down.Ink(), {20, 20, 40, 40}, 0);
  const Box window = {{0, 0}, {40, 40}};
  Canvas part;
  part.Paint(drawing, {{20, 20, 60, 100}, true, &window});
  ExpectNear(part.Ink(), {30, 60, 50, 80}, 0);
  Canvas flat;
  flat.Paint(DrawingOf(Rectangle{{10, 10}, {30, 20}}, Solid(0), {{10, 10}, {50, 10}}), {{20, 20, 60, 100}, true});
  ExpectNear(flat.Ink(), {20, 90, 40, 100}, 0);
}

// ---- text -----------------------------------------------------------------------------------------------------------

struct TextCase {
  const char *name;
  void (*set)(TextStyle &style);
  KsRect ink; /**< of "HH" in a font of 30 units at (50, 50): y downwards */
};

/** "HH" in the fixed font is about 34 wide and 20 high. */
class TextTest : public ServiceTestWith<TextCase> {};

TEST_P(TextTest, LiesWhereItsStyleSays) {
  Style style;
  style.text.family = Family::Fixed;
  style.text.height = 30;
  GetParam().set(style.text);
  Canvas canvas;
  canvas.Paint(DrawingOf(Text{{50, 50}, "HH", false, {}}, style));
  ExpectNear(canvas.Ink(), GetParam().ink, 3);
}

INSTANTIATE_TEST_SUITE_P(
    Painter, TextTest,
    testing::Values(TextCase{"Plain", [](TextStyle &) {}, {51, 30, 87, 50}},
                    TextCase{"Centered", [](TextStyle &s) { s.across = AlignAcross::Center; }, {32, 30, 68, 50}},
                    TextCase{"RightTop",
                             [](TextStyle &s) {
                               s.across = AlignAcross::Right;
                               s.upwards = AlignUp::Cap;
                             },
                             {13, 50, 49, 70}},
                    TextCase{"Half", [](TextStyle &s) { s.upwards = AlignUp::Half; }, {51, 40, 87, 60}},
                    TextCase{"Leftwards", [](TextStyle &s) { s.path = TextPath::Left; }, {13, 30, 49, 50}},
                    TextCase{"Narrow", [](TextStyle &s) { s.expansion = 0.5; }, {50, 30, 69, 50}},
                    TextCase{"Upright",
                             [](TextStyle &s) {
                               s.up = {-1, 0};
                               s.along = {0, 1};
                             },
                             {30, 13, 50, 49}},
                    TextCase{"UpsideDown",
                             [](TextStyle &s) {
                               s.up = {0, -1};
                               s.along = {-1, 0};
                             },
                             {13, 50, 49, 70}}),
    [](const auto &text) { return std::string(text.param.name); });

TEST_F(PainterTest, ColumnsOfTextBeginAtTheirPosition) {
  const auto inkOf = [](TextPath path, const char *text) {
    Style style;
    style.text = {.height = 20, .path = path};
    Canvas canvas;
    return canvas.Paint(DrawingOf(Text{{50, 50}, text, false, {}}, style)).Ink();
  };
  EXPECT_EQ(inkOf(TextPath::Down, "H.").top, inkOf(TextPath::Down, "H").top);
  EXPECT_GT(inkOf(TextPath::Down, "H.").bottom, inkOf(TextPath::Down, "H").bottom);
  EXPECT_EQ(inkOf(TextPath::Up, "H.").bottom, inkOf(TextPath::Up, "H").bottom);
  EXPECT_LT(inkOf(TextPath::Up, "H.").top, inkOf(TextPath::Up, "H").top);
}

TEST_F(PainterTest, RestrictedTextIsNarrowedAndNeverWidened) {
  TextStyle style;
  style.height = 10;
  const auto widthOf = [&style](const char *text, bool restricted) {
    const auto corners = CornersOf(LayoutOf({{7, 7}, text, restricted, {30, 12}}, style));
    EXPECT_EQ(corners[3].x, corners[0].x);
    EXPECT_GE(corners[3].y, corners[0].y + 10);
    return corners[1].x - corners[0].x;
  };
  EXPECT_NEAR(widthOf("a text wider than its box", true), 30, 1e-6);
  EXPECT_EQ(widthOf("i", true), widthOf("i", false));
  // Two bytes of UTF-8, and one that is none, are a character each.
  EXPECT_NEAR(widthOf("\xC3\xA9", false), widthOf("\xE9", false), 1e-9);
}

TEST_F(PainterTest, BoundsHoldArcsAndTexts) {
  Drawing drawing = DrawingOf(Ellipse{{50, 50}, {40, 0}, {0, 40}, Closure::Open, kTurn / 8, kTurn * 3 / 8}, {});
  drawing.hasExtent = false;
  Box bounds;
  ASSERT_TRUE(ExtentOf(drawing, bounds));
  EXPECT_NEAR(bounds.high.y, 90, 1e-6);
  EXPECT_NEAR(bounds.low.y, 50 + 40 * std::sqrt(0.5), 1e-6);
  drawing.layers[0].objects.push_back({Text{{200, 50}, "wide", false, {}}, 0});
  ASSERT_TRUE(BoundsOf(drawing, bounds));
  EXPECT_GT(bounds.high.x, 201);
  drawing.layers.clear();
  EXPECT_FALSE(BoundsOf(drawing, bounds));
}

/** An H of the sans font is 0.688 em high, and its stems run from 0.079 to 0.642 em: here an em is 14 pixels. */
TEST_F(PainterTest, ContextsWriteTexts) {
  Canvas canvas;
  const KsLocalContext context(&canvas.Bitmap());
  EXPECT_EQ(platform::SetTextColor(context.Get(), kRed), 0u);
  EXPECT_EQ(platform::SetBkColor(context.Get(), kBlue), kWhite);
  EXPECT_EQ(platform::SetBkMode(context.Get(), platform::TRANSPARENT), platform::OPAQUE);
  EXPECT_TRUE(platform::TextOutA(context.Get(), 10, 20, "HH?", 2));
  ExpectNear(canvas.Ink(), {11, 23, 30, 33}, 0);
  EXPECT_EQ(platform::SetBkMode(context.Get(), platform::OPAQUE), platform::TRANSPARENT);
  EXPECT_TRUE(platform::TextOutA(context.Get(), 10, 20, "H", 1));
  ExpectNear(canvas.Ink(), {10, 20, 30, 36}, 0);
  EXPECT_EQ(canvas.At(10, 20), kBlue);
  EXPECT_EQ(canvas.At(20, 35), kBlue);
  EXPECT_EQ(canvas.At(21, 35), kWhite);
  EXPECT_EQ(platform::SetBkMode(context.Get(), 7), 0);
  EXPECT_FALSE(platform::TextOutA(context.Get(), 0, 0, nullptr, 1));
  EXPECT_FALSE(platform::TextOutA(nullptr, 0, 0, "", 0));
}

}  // namespace
