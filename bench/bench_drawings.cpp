// Composing drawings, as a ratio to cairo painting the same paths on one surface.
#include "cgm_builder.h"
#include "measure.h"
#include "nitf_builder.h"

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <string>
#include <vector>

#include <cairo.h>

namespace {

constexpr std::uint32_t kSide = 2048;
constexpr int kDrawings = 1000;
constexpr int kLines = 100;
constexpr int kPoints = 10;
constexpr int kRuns = 5;
constexpr double kAim = 1.5;

using Points = std::vector<std::pair<double, double>>;

/** A walk of short steps, from anywhere on the canvas. */
Points Walk(std::uint32_t &state) {
  const auto place = [&state] { return (NoiseByte(state) << 8 | NoiseByte(state)) % kSide; };
  Points points = {{place(), place()}};
  while (points.size() < kPoints) {
    const auto step = [&state](double from) {
      return std::clamp<double>(from + NoiseByte(state) % 41 - 20.0, 0, kSide);
    };
    points.emplace_back(step(points.back().first), step(points.back().second));
  }
  return points;
}

std::vector<Points> Walks() {
  std::vector<Points> walks;
  std::uint32_t state = 1;
  walks.reserve(std::size_t{kDrawings} * kLines);
  for (int i = 0; i < kDrawings * kLines; ++i) walks.push_back(Walk(state));
  return walks;
}

void WriteDrawings(const std::string &path, const std::vector<Points> &walks) {
  NitfBuilder file;
  CgmCoding coding;
  coding.directColor = true;
  // The test builder's file header has room for 999 graphics, like all such files.
  for (int drawing = 0; drawing < std::min(kDrawings, 999); ++drawing) {
    CgmBuilder metafile(coding, {0, kSide}, {kSide, 0});
    for (int line = 0; line < kLines; ++line) {
      metafile.Add(4, 1, metafile.New().Points(walks[std::size_t{kLines} * drawing + line]));
    }
    file.Graphic({drawing + 1, 0, 0, 0, 'C', metafile.Finish(), {{"SBND1", "0000000000"}, {"SBND2", "0204802048"}}});
  }
  file.Write(path);
}

void PaintDirectly(const std::vector<Points> &walks) {
  const int side = static_cast<int>(kSide);
  cairo_surface_t *surface = cairo_image_surface_create(CAIRO_FORMAT_ARGB32, side, side);
  cairo_t *context = cairo_create(surface);
  cairo_set_line_width(context, 1);
  for (const Points &walk : walks) {
    for (const auto &[x, y] : walk) cairo_line_to(context, x, y);
    cairo_stroke(context);
  }
  cairo_destroy(context);
  cairo_surface_destroy(surface);
}

}  // namespace

int main() {
  const std::string path = BenchPath("drawings");
  const std::vector<Points> walks = Walks();
  WriteDrawings(path, walks);
  double composed = 1e9;
  double direct = 1e9;
  for (int run = 0; run < kRuns; ++run) {
    composed = std::min(composed, SecondsOf([&] { ComposeFile(path, 24, kSide); }));
    direct = std::min(direct, SecondsOf([&] { PaintDirectly(walks); }));
  }
  std::filesystem::remove(path);
  std::printf("%-58s %8s %8s\n", "composing drawings, in times of painting them directly", "ratio", "aim");
  std::printf("%-58s %8.2f %8.2f\n", "999 drawings of 100 lines of 10 points, 2048 x 2048", composed / direct, kAim);
  return 0;
}
