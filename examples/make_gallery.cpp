// Writes the files that the gallery shows: every element of a drawing on one sheet, a scene of images and drawings at
// several display levels, and an image with absent blocks and pad pixels.
#include "cgm_builder.h"
#include "nitf_builder.h"

#include <cmath>
#include <cstdio>
#include <exception>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace {

using Points = std::vector<std::pair<double, double>>;

constexpr std::uint32_t kBlack = 0x000000;
constexpr std::uint32_t kBlue = 0xB06020;
constexpr std::uint32_t kRed = 0x3030D0;
constexpr std::uint32_t kGold = 0x30B0F0;
constexpr std::uint32_t kGreen = 0x409030;

/** A drawing with y downwards, in pixels. */
class Sheet {
 public:
  Sheet(double width, double height) : metafile(Coding(), {0, height}, {width, 0}) {
    metafile.Add(5, 16, metafile.New().Points({{0, -1}, {1, 0}}));
    metafile.Add(5, 27, metafile.New().Index(1));
    Line(1, 2, kBlue);
    Edge(true, 2, kBlue);
    Fill(1, kGold);
  }

  void Line(int type, double width, std::uint32_t color) {
    metafile.Add(5, 2, metafile.New().Index(type)).Add(5, 3, metafile.New().Real(width));
    metafile.Add(5, 4, metafile.New().Direct(color));
  }
  void Edge(bool visible, double width, std::uint32_t color) {
    metafile.Add(5, 30, metafile.New().Enumeration(visible ? 1 : 0)).Add(5, 28, metafile.New().Real(width));
    metafile.Add(5, 29, metafile.New().Direct(color));
  }
  void Fill(int interior, std::uint32_t color, int hatch = 1) {
    metafile.Add(5, 22, metafile.New().Enumeration(interior)).Add(5, 24, metafile.New().Index(hatch));
    metafile.Add(5, 23, metafile.New().Direct(color));
  }
  void Text(double x, double y, std::string_view text, double height = 14, std::uint32_t color = kBlack) {
    metafile.Add(5, 15, metafile.New().Vdc(height)).Add(5, 14, metafile.New().Direct(color));
    metafile.Add(4, 4, metafile.New().Points({{x, y}}).Enumeration(1).String(text));
  }
  void Shape(unsigned number, const CgmParameters &parameters) { metafile.Add(4, number, parameters); }
  CgmParameters New() const { return metafile.New(); }

  CgmBuilder metafile;

 private:
  static CgmCoding Coding() {
    CgmCoding coding;
    coding.directColor = true;
    return coding;
  }
};

std::string Pair(int first, int second) {
  char text[16];
  std::snprintf(text, sizeof text, "%05d%05d", first, second);
  return text;
}

GraphicSpec Graphic(const Sheet &sheet, int level, int width, int height) {
  return {level, 0, 0, 0, 'C', sheet.metafile.Finish(), {{"SBND1", Pair(0, 0)}, {"SBND2", Pair(height, width)}}};
}

/** One cell of the sheet: a name, and what is drawn above it in a box of 100 by 70. */
struct Cell {
  const char *name;
  std::function<void(Sheet &, double x, double y)> draw;
};

Points Star(double x, double y) {
  Points points;
  for (int i = 0; i < 5; ++i) {
    const double angle = 4 * i * 3.14159265 / 5;
    points.emplace_back(x + 50 + 36 * std::sin(angle), y + 37 - 36 * std::cos(angle));
  }
  return points;
}

std::vector<Cell> Cells() {
  std::vector<Cell> cells = {
      {"polyline",
       [](Sheet &s, double x, double y) {
         s.Shape(1, s.New().Points({{x, y + 60}, {x + 35, y + 5}, {x + 65, y + 60}, {x + 100, y + 5}}));
       }},
      {"disjoint",
       [](Sheet &s, double x, double y) {
         s.Shape(2, s.New().Points({{x, y + 60},
                                    {x + 30, y + 5},
                                    {x + 35, y + 60},
                                    {x + 65, y + 5},
                                    {x + 70, y + 60},
                                    {x + 100, y + 5}}));
       }},
      {"polygon", [](Sheet &s, double x, double y) { s.Shape(7, s.New().Points(Star(x, y))); }},
      {"rectangle",
       [](Sheet &s, double x, double y) {
         s.Shape(11, s.New().Points({{x + 5, y + 8}, {x + 95, y + 62}}));
       }},
      {"circle",
       [](Sheet &s, double x, double y) {
         s.Shape(12, s.New().Points({{x + 50, y + 35}}).Vdc(32));
       }},
      {"ellipse",
       [](Sheet &s, double x, double y) {
         s.Shape(17, s.New().Points({{x + 50, y + 35}, {x + 90, y + 20}, {x + 57, y + 62}}));
       }},
      {"arc, open",
       [](Sheet &s, double x, double y) {
         s.Shape(15, s.New().Points({{x + 50, y + 60}}).Vdc(-45).Vdc(0).Vdc(30).Vdc(-40).Vdc(48));
       }},
      {"arc, pie",
       [](Sheet &s, double x, double y) {
         s.Shape(16, s.New().Points({{x + 50, y + 50}}).Vdc(-45).Vdc(-10).Vdc(40).Vdc(-20).Vdc(45).Enumeration(0));
       }},
      {"arc, chord",
       [](Sheet &s, double x, double y) {
         s.Shape(16, s.New().Points({{x + 50, y + 50}}).Vdc(-45).Vdc(-10).Vdc(40).Vdc(-20).Vdc(45).Enumeration(1));
       }},
  };
  static const char *const dashes[] = {"solid", "dash", "dot", "dash-dot", "dash-dot-dot"};
  for (int type = 1; type <= 5; ++type) {
    cells.push_back({dashes[type - 1], [type](Sheet &s, double x, double y) {
                       s.Line(type, 3, kRed);
                       s.Shape(1, s.New().Points({{x, y + 55}, {x + 50, y + 15}, {x + 100, y + 55}}));
                     }});
  }
  for (int hatch = 1; hatch <= 6; ++hatch) {
    cells.push_back({"hatch", [hatch](Sheet &s, double x, double y) {
                       s.Fill(3, kGreen, hatch);
                       s.Shape(11, s.New().Points({{x + 5, y + 8}, {x + 95, y + 62}}));
                     }});
  }
  for (int marker = 1; marker <= 5; ++marker) {
    cells.push_back(
        {"marker", [marker](Sheet &s, double x, double y) {
           s.metafile.Add(5, 6, s.New().Index(marker)).Add(5, 7, s.New().Real(2)).Add(5, 8, s.New().Direct(kRed));
           s.Shape(3, s.New().Points({{x + 15, y + 20}, {x + 50, y + 50}, {x + 85, y + 20}}));
         }});
  }
  return cells;
}

NitfBuilder Elements() {
  constexpr int kAcross = 5;
  constexpr double kStepX = 140;
  constexpr double kStepY = 110;
  const std::vector<Cell> cells = Cells();
  const int width = static_cast<int>(kAcross * kStepX) + 20;
  const std::size_t lines = (cells.size() + kAcross - 1) / kAcross;
  const int height = static_cast<int>(static_cast<double>(lines) * kStepY) + 20;
  Sheet sheet(width, height);
  for (std::size_t i = 0; i < cells.size(); ++i) {
    const std::size_t line = i / kAcross;
    const double x = 40 + kStepX * static_cast<double>(i % kAcross);
    const double y = 20 + kStepY * static_cast<double>(line);
    sheet.Line(1, 2, kBlue);
    sheet.Fill(1, kGold);
    cells[i].draw(sheet, x, y);
    sheet.Text(x, y + 86, cells[i].name);
  }
  return NitfBuilder().Field("FBKGC", "\xFF\xFF\xFF").Graphic(Graphic(sheet, 1, width, height));
}

/** A hill in gray, lit from the left. */
ImageSpec Hill(std::uint32_t side) {
  ImageSpec image;
  image.rows = image.columns = side;
  for (std::uint32_t y = 0; y < side; ++y) {
    for (std::uint32_t x = 0; x < side; ++x) {
      const double a = (x - side * 0.45) / side;
      const double b = (y - side * 0.5) / side;
      const double light = 130 - 380 * a * std::exp(-9 * (a * a + b * b)) + 12 * std::sin(0.35 * x) * std::sin(0.3 * y);
      image.data.push_back(static_cast<std::uint8_t>(std::fmax(0, std::fmin(255, light))));
    }
  }
  return image;
}

NitfBuilder Scene() {
  ImageSpec map = Hill(420);
  map.level = 2;
  map.locationRow = map.locationColumn = 30;
  ImageSpec inset = Hill(140);
  inset.level = 4;
  inset.locationRow = 40;
  inset.locationColumn = 330;
  Sheet frame(500, 480);
  frame.Edge(false, 1, kBlack);
  frame.Fill(1, 0x604020);
  frame.Shape(11, frame.New().Points({{18, 18}, {462, 462}}));
  Sheet marks(500, 480);
  marks.Line(2, 3, kGold);
  marks.Shape(1, marks.New().Points({{60, 420}, {150, 330}, {240, 340}, {360, 250}, {440, 300}}));
  marks.Fill(3, kRed, 5);
  marks.Edge(true, 2, kRed);
  marks.Shape(17, marks.New().Points({{200, 230}, {280, 230}, {200, 280}}));
  marks.Text(130, 215, "search area", 24, 0xFFFFFF);
  Sheet label(500, 480);
  label.Edge(true, 2, 0xFFFFFF);
  label.Fill(0, 0xFFFFFF);
  label.Shape(11, label.New().Points({{329, 39}, {470, 180}}));
  label.Text(336, 200, "the hill, smaller", 18, 0xFFFFFF);
  return NitfBuilder()
      .Field("FBKGC", "\xE8\xE4\xDC")
      .Image(map)
      .Image(inset)
      .Graphic(Graphic(frame, 1, 500, 480))
      .Graphic(Graphic(marks, 3, 500, 480))
      .Graphic(Graphic(label, 5, 500, 480));
}

/** A checked ground under blocks of which some are absent, and pad pixels that show it. */
NitfBuilder Masks() {
  ImageSpec ground;
  ground.rows = ground.columns = 256;
  for (std::uint32_t i = 0; i < 256 * 256; ++i) ground.data.push_back((i / 16 + i / 4096) % 2 == 0 ? 210 : 235);
  ImageSpec masked;
  masked.rows = masked.columns = 256;
  masked.blockWidth = masked.blockHeight = 64;
  masked.compression = "NM";
  masked.level = 2;
  const auto isRecorded = [](std::uint32_t block) { return block % 5 != 2; };
  masked.data = LayOut(
      masked,
      [](std::uint32_t, std::uint32_t y, std::uint32_t x) {
        const double distance = std::hypot(x - 128.0, y - 128.0);
        return distance > 120 ? 0U : 255U - static_cast<std::uint32_t>(distance * 1.6);
      },
      isRecorded);
  masked.mask = MaskSpec{{}, {}, Bytes{0}};
  std::uint32_t offset = 0;
  for (std::uint32_t block = 0; block < 16; ++block) {
    masked.mask->blockOffsets.push_back(isRecorded(block) ? offset : 0xFFFFFFFF);
    masked.mask->padOffsets.push_back(isRecorded(block) ? offset : 0xFFFFFFFF);
    if (isRecorded(block)) offset += 64 * 64;
  }
  return NitfBuilder().Image(ground).Image(masked);
}

}  // namespace

int main(int argc, char **argv) {
  if (argc != 2) {
    std::fputs("usage: make_gallery FOLDER\n", stderr);
    return 2;
  }
  try {
    const std::string folder = argv[1];
    Elements().Write(folder + "/elements.ntf");
    Scene().Write(folder + "/scene.ntf");
    Masks().Write(folder + "/masks.ntf");
  } catch (const std::exception &error) {
    std::fprintf(stderr, "make_gallery: %s\n", error.what());
    return 1;
  }
  return 0;
}
