// Writes a file whose picture shows what composition is: six images and a text, made by arithmetic.
#include "nitf_builder.h"
#include "sheet.h"
#include "terrain.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <exception>
#include <string_view>
#include <utility>
#include <vector>

namespace {

// Places are in pixels, from the upper left corner of the canvas, or of what an image is attached to.
constexpr int kCanvasWidth = 880;
constexpr int kCanvasHeight = 544;

constexpr int kMapLeft = 32;
constexpr int kMapTop = 64;
constexpr int kMapWidth = 640;
constexpr int kMapHeight = 448;

constexpr int kInsetWidth = 224;
constexpr int kInsetHeight = 184;
constexpr int kInsetLeft = 592;
constexpr int kHeatTop = 24;
constexpr int kReliefTop = 240;
constexpr int kFrame = 2;

constexpr int kStripSize = 320;
constexpr int kStripBlock = 32;
constexpr int kStripLeft = 32;
constexpr int kStripTop = 96;

/** The part of the map that an inset shows larger. */
struct View {
  double left;
  double top;
  double zoom;

  double MapX(std::uint32_t column) const { return left + (column + 0.5) / zoom; }
  double MapY(std::uint32_t row) const { return top + (row + 0.5) / zoom; }
  int Width() const { return static_cast<int>(std::lround(kInsetWidth / zoom)); }
  int Height() const { return static_cast<int>(std::lround(kInsetHeight / zoom)); }
};

constexpr View kHeatView{368, 122, 1.75};
constexpr View kReliefView{480, 318, 2.5};

const std::vector<BandSpec> kColorBands = {{"R", 0, {}}, {"G", 0, {}}, {"B", 0, {}}};

/** Display levels: the lines run over the map and the strip, and under the insets. */
enum Level { kMap = 1, kStrip = 2, kHalo = 10, kLines = 11, kHeat = 20, kRelief = 21 };

std::uint8_t Byte(double value) {
  return static_cast<std::uint8_t>(std::clamp(std::lround(value), 0L, 255L));
}

std::uint32_t Channel(const Rgb &color, std::uint32_t band) {
  const double parts[] = {color.red, color.green, color.blue};
  return Byte(parts[band]);
}

/** The colours of all pixels, so that each is worked out once and not again for every band. */
template <class Color>
SampleFunction Colors(std::uint32_t columns, std::uint32_t rows, Color color) {
  std::vector<Rgb> colors;
  for (std::uint32_t i = 0; i < columns * rows; ++i) colors.push_back(color(i / columns, i % columns));
  return [colors = std::move(colors), columns](std::uint32_t band, std::uint32_t row, std::uint32_t column) {
    return Channel(colors[row * columns + column], band);
  };
}

bool IsFrame(std::uint32_t row, std::uint32_t column) {
  return row < kFrame || column < kFrame || row >= kInsetHeight - kFrame || column >= kInsetWidth - kFrame;
}

ImageSpec Titled(ImageSpec image, const char *title) {
  image.fields["IID2"] = title;
  return image;
}

/** The map everything else is attached to: three bands, one after the other in each block. */
ImageSpec Map() {
  ImageSpec image{.rows = kMapHeight, .columns = kMapWidth, .bands = kColorBands, .representation = "RGB"};
  image.blockWidth = image.blockHeight = 64;
  image.level = kMap;
  image.locationRow = kMapTop;
  image.locationColumn = kMapLeft;
  image.data = LayOut(image, Colors(kMapWidth, kMapHeight,
                                    [](std::uint32_t row, std::uint32_t column) { return MapColor(column, row); }));
  return Titled(image, "Shaded relief, RGB, IMODE B");
}

/** Whether the sensor's strip, which runs slanting over the map, covers a pixel of its image. */
bool IsInStrip(std::uint32_t row, std::uint32_t column) {
  const double across = (static_cast<double>(column) - kStripSize / 2.0) + 0.42 * (row - kStripSize / 2.0);
  const double along = row - 0.3 * column;
  return std::abs(across) < 78 && along > -24 && along < 254;
}

bool IsStripBlockRecorded(std::uint32_t block) {
  constexpr std::uint32_t kBlocksPerRow = kStripSize / kStripBlock;
  const std::uint32_t top = block / kBlocksPerRow * kStripBlock, left = block % kBlocksPerRow * kStripBlock;
  for (std::uint32_t i = 0; i < kStripBlock * kStripBlock; ++i) {
    if (IsInStrip(top + i / kStripBlock, left + i % kStripBlock)) return true;
  }
  return false;
}

/** A slanting strip: pad pixels, which are transparent, beside it, and blocks without any of it are not recorded. */
ImageSpec Strip() {
  ImageSpec image{.rows = kStripSize, .columns = kStripSize, .bands = kColorBands, .representation = "RGB"};
  image.compression = "NM";
  image.mode = 'P';
  image.blockWidth = image.blockHeight = kStripBlock;
  image.level = kStrip;
  image.attachment = kMap;
  image.locationRow = kStripTop;
  image.locationColumn = kStripLeft;
  MaskSpec mask;
  mask.padCode = Bytes{0};
  std::uint32_t offset = 0;
  for (std::uint32_t block = 0; block < image.BlocksPerRow() * image.BlocksPerColumn(); ++block) {
    const bool recorded = IsStripBlockRecorded(block);
    mask.blockOffsets.push_back(recorded ? offset : 0xFFFFFFFF);
    offset += recorded ? kStripBlock * kStripBlock * 3 : 0;
  }
  image.mask = mask;
  const auto colors = Colors(kStripSize, kStripSize, [](std::uint32_t row, std::uint32_t column) {
    return IsInStrip(row, column)
               ? InfraredColor(kStripLeft + static_cast<int>(column), kStripTop + static_cast<int>(row))
               : Rgb{0, 0, 0};
  });
  image.data = LayOut(image, colors, IsStripBlockRecorded);
  return Titled(image, "Infrared strip, RGB, IMODE P, blocks left out");
}

/** Heights in the colours of a table, with lines of equal height. */
ImageSpec Heat() {
  constexpr std::uint32_t kLastHeat = 253, kContour = 254, kWhite = 255;
  ImageSpec image{.rows = kInsetHeight, .columns = kInsetWidth, .representation = "RGB/LUT"};
  Bytes lut(3 * 256);
  for (std::uint32_t entry = 0; entry < 256; ++entry) {
    Rgb color = HeatColor(entry / static_cast<double>(kLastHeat));
    if (entry == kContour) color = {28, 10, 30};
    if (entry == kWhite) color = {255, 255, 255};
    for (std::uint32_t band = 0; band < 3; ++band)
      lut[band * 256 + entry] = static_cast<std::uint8_t>(Channel(color, band));
  }
  image.bands = {{"LU", 3, lut}};
  image.level = kHeat;
  image.attachment = kMap;
  image.locationRow = kHeatTop;
  image.locationColumn = kInsetLeft;
  const auto step = [](std::uint32_t row, std::uint32_t column) {
    return std::floor(HeightAt(kHeatView.MapX(column), kHeatView.MapY(row)) * 10);
  };
  image.data = LayOut(image, [&](std::uint32_t, std::uint32_t row, std::uint32_t column) -> std::uint32_t {
    if (IsFrame(row, column)) return kWhite;
    if (step(row, column) != step(row, column + 1) || step(row, column) != step(row + 1, column)) return kContour;
    const double height = HeightAt(kHeatView.MapX(column), kHeatView.MapY(row));
    return static_cast<std::uint32_t>(std::lround(kLastHeat * std::clamp(height / 1.0, 0.0, 1.0)));
  });
  return Titled(image, "Heights, RGB/LUT");
}

/** The light on the ground in 4096 grays. */
ImageSpec Relief() {
  constexpr std::uint32_t kFullScale = 4095;
  ImageSpec image{.rows = kInsetHeight, .columns = kInsetWidth, .bits = 16, .actualBits = 12};
  image.bands[0].representation = "M";
  image.level = kRelief;
  image.attachment = kMap;
  image.locationRow = kReliefTop;
  image.locationColumn = kInsetLeft;
  image.data = LayOut(image, [](std::uint32_t, std::uint32_t row, std::uint32_t column) -> std::uint32_t {
    if (IsFrame(row, column)) return kFullScale;
    const double x = kReliefView.MapX(column), y = kReliefView.MapY(row);
    const double tone = HeightAt(x, y) < 0 ? 0.16 : 0.2 + 0.78 * LightAt(x, y, 1.0);
    return static_cast<std::uint32_t>(std::lround(kFullScale * std::clamp(tone, 0.0, 1.0)));
  });
  return Titled(image, "Light, 12 of 16 bits");
}

// ---- what is drawn over the map -------------------------------------------------------------------------------

void DrawGrid(Sheet &sheet) {
  constexpr int kPitch = 128;
  for (int x = kPitch; x < kMapWidth; x += kPitch) {
    sheet.Line(kMapLeft + x, kMapTop, kMapLeft + x, kMapTop + kMapHeight - 1, 1, 8);
  }
  for (int y = kPitch / 2; y < kMapHeight; y += kPitch) {
    sheet.Line(kMapLeft, kMapTop + y, kMapLeft + kMapWidth - 1, kMapTop + y, 1, 8);
  }
}

void DrawScaleBar(Sheet &sheet) {
  constexpr int kLeft = kMapLeft + 24, kTop = kMapTop + kMapHeight - 30, kPart = 40, kParts = 4, kThickness = 6;
  sheet.Box(kLeft, kTop, kPart * kParts + 1, kThickness);
  for (int part = 0; part < kParts; part += 2) sheet.Fill(kLeft + part * kPart, kTop, kPart, kThickness);
  const char *figures[] = {"0", "2", "4", "6", "8 KM"};
  for (int part = 0; part <= kParts; ++part) sheet.Text(kLeft + part * kPart - 2, kTop + 11, figures[part]);
}

void DrawNorthArrow(Sheet &sheet) {
  constexpr int kX = kMapLeft + 36, kTop = kMapTop + 36, kHeight = 40, kHalfWidth = 11, kNotch = 9;
  for (int y = 0; y < kHeight; ++y) {
    const int reach = kHalfWidth * y / kHeight;
    const int inner = std::max(0, (y - (kHeight - kNotch)) * kHalfWidth / kNotch);
    sheet.Mark(kX + reach, kTop + y);
    sheet.Mark(kX + inner, kTop + y);
    sheet.Fill(kX - reach, kTop + y, reach - inner + 1, 1);
  }
  sheet.Text(kX - 5, kTop - 20, "N", 2);
}

/** Where on the map an inset looks, and which inset it is. */
void DrawView(Sheet &sheet, const View &view, int insetTop) {
  const int left = kMapLeft + static_cast<int>(view.left), top = kMapTop + static_cast<int>(view.top);
  const int insetLeft = kMapLeft + kInsetLeft - 1;
  sheet.Box(left, top, view.Width(), view.Height());
  sheet.Line(left + view.Width(), top, insetLeft, kMapTop + insetTop, 2, 4);
  sheet.Line(left + view.Width(), top + view.Height() - 1, insetLeft, kMapTop + insetTop + kInsetHeight - 1, 2, 4);
}

/** Below an inset, at its right end. */
void DrawCaption(Sheet &sheet, int insetTop, std::string_view text) {
  const int right = kMapLeft + kInsetLeft + kInsetWidth;
  sheet.Text(right - Sheet::TextWidth(text), kMapTop + insetTop + kInsetHeight + 6, text);
}

Sheet Drawing() {
  Sheet sheet(kCanvasWidth, kCanvasHeight);
  DrawGrid(sheet);
  sheet.Box(kMapLeft - 4, kMapTop - 4, kMapWidth + 8, kMapHeight + 8);
  DrawScaleBar(sheet);
  DrawNorthArrow(sheet);
  DrawView(sheet, kHeatView, kHeatTop);
  DrawView(sheet, kReliefView, kReliefTop);
  sheet.Text(kMapLeft - 4, 26, "ONE FILE, MANY IMAGES", 3);
  sheet.Text(kMapLeft + kStripLeft + 26, kMapTop + kStripTop + 291, "INFRARED STRIP");
  DrawCaption(sheet, kHeatTop, "HEIGHTS, 256 COLORS");
  DrawCaption(sheet, kReliefTop, "LIGHT, 12 OF 16 BITS");
  return sheet;
}

/** Marks in one colour over a transparent ground: a table of two colours, the first of which is the pad. */
ImageSpec Overlay(const Sheet &sheet, Bytes lut, int level, int attachment) {
  ImageSpec image{.rows = kCanvasHeight, .columns = kCanvasWidth, .representation = "RGB/LUT", .pixelValueType = "B"};
  image.bands = {{"LU", 3, std::move(lut)}};
  image.compression = "NM";
  image.bits = 1;
  image.level = level;
  image.attachment = attachment;
  image.mask = MaskSpec{{}, {}, Bytes{0}};
  image.data = LayOut(image, [&](std::uint32_t, std::uint32_t row, std::uint32_t column) -> std::uint32_t {
    return sheet.IsMarked(static_cast<int>(column), static_cast<int>(row)) ? 1 : 0;
  });
  return Titled(image, "Lines, packed bi-level");
}

NitfBuilder Scene() {
  const Sheet drawing = Drawing();
  // The order in the file is not that of the display levels.
  return NitfBuilder()
      .Field("FTITLE", "An island: one file, many images")
      .Field("FBKGC", "\x1c\x24\x30")
      .Image(Map())
      .Image(Overlay(drawing, {0, 255, 0, 255, 0, 250}, kLines, kHalo))
      .Image(Overlay(drawing.Halo(), {255, 14, 255, 20, 255, 30}, kHalo, 0))
      .Image(Relief())
      .Image(Heat())
      .Image(Strip())
      .Text({"The island does not exist. Its heights are octaves of noise.\r\n", {{"TXTITL", "About this file"}}});
}

}  // namespace

int main(int count, char **arguments) {
  if (count != 2) {
    std::fprintf(stderr, "usage: make_sample OUT.ntf\n");
    return 2;
  }
  try {
    Scene().Write(arguments[1]);
  } catch (const std::exception &problem) {
    std::fprintf(stderr, "make_sample: %s\n", problem.what());
    return 1;
  }
  return 0;
}
