#include "ksvect/paint/tint.h"

#include "kscore/color.h"

namespace ksvect {
namespace {

constexpr std::uint32_t kOpaque = 0xFF000000;

/** From one line of a hatch to the next, across: diagonal ones then lie about as close as the others. */
constexpr std::int32_t kHatchSpacing = 8;
constexpr std::int32_t kDiagonalSpacing = 11;

constexpr std::uint32_t kFull = 255;
/** How much a diagonal line as wide as a pixel covers of the pixels it runs through, and of those beside them. */
constexpr std::uint32_t kOnDiagonal = 233;
constexpr std::uint32_t kBesideDiagonal = 64;

std::int32_t Remainder(std::int32_t value, std::int32_t by) {
  const std::int32_t rest = value % by;
  return rest < 0 ? rest + by : rest;
}

std::uint32_t StraightCover(std::int32_t place) {
  return Remainder(place, kHatchSpacing) == kHatchSpacing / 2 ? kFull : 0;
}

std::uint32_t DiagonalCover(std::int32_t place) {
  const std::int32_t rest = Remainder(place, kDiagonalSpacing);
  if (rest == 0) return kOnDiagonal;
  return rest == 1 || rest == kDiagonalSpacing - 1 ? kBesideDiagonal : 0;
}

/** How much of a pixel the lines cover. They are tied to the canvas, so that neighbouring areas go together. */
std::uint32_t CoverOf(Hatch hatch, std::int32_t x, std::int32_t y) {
  switch (hatch) {
    case Hatch::Vertical:
      return StraightCover(x);
    case Hatch::Rising:
      return DiagonalCover(x + y);
    case Hatch::Falling:
      return DiagonalCover(x - y);
    case Hatch::Cross:
      return std::max(StraightCover(x), StraightCover(y));
    case Hatch::DiagonalCross:
      return std::max(DiagonalCover(x + y), DiagonalCover(x - y));
    default:
      return StraightCover(y);
  }
}

std::uint32_t Premultiplied(kscore::Bgr color, std::uint32_t cover) {
  const auto part = [cover](std::uint32_t level) { return (level * cover + kFull / 2) / kFull; };
  return cover << 24 |
         kscore::MakeBgr(part(kscore::BlueOf(color)), part(kscore::GreenOf(color)), part(kscore::RedOf(color)));
}

/** The cell at a coordinate, of `count`. */
std::uint32_t CellAt(double coordinate, std::uint32_t count, bool repeats) {
  if (repeats) coordinate -= std::floor(coordinate / count) * count;
  return static_cast<std::uint32_t>(std::fmin(std::fmax(coordinate, 0), count - 1.0));
}

}  // namespace

void TintHatch(Hatch hatch, Color color, const KsRect &place, std::uint32_t *pixels, std::int32_t stride) {
  const kscore::Bgr bgr = kscore::BgrOfColor(color);
  const std::uint32_t tints[] = {Premultiplied(bgr, kFull), Premultiplied(bgr, kOnDiagonal),
                                 Premultiplied(bgr, kBesideDiagonal)};
  const auto tintOf = [&tints](std::uint32_t cover) {
    if (cover == 0) return 0u;
    return cover == kFull ? tints[0] : tints[cover == kOnDiagonal ? 1 : 2];
  };
  for (std::int32_t y = place.top; y < place.bottom; ++y, pixels += stride) {
    for (std::int32_t x = place.left; x < place.right; ++x) pixels[x - place.left] = tintOf(CoverOf(hatch, x, y));
  }
}

void TintCells(const CellGrid &grid, const KsRect &place, std::uint32_t *pixels, std::int32_t stride) {
  for (std::int32_t y = place.top; y < place.bottom; ++y, pixels += stride) {
    for (std::int32_t x = place.left; x < place.right; ++x) {
      const Point cell = grid.toCells({x + 0.5, y + 0.5});
      const std::size_t index = std::size_t{CellAt(cell.y, grid.rows, grid.repeats)} * grid.columns +
                                CellAt(cell.x, grid.columns, grid.repeats);
      pixels[x - place.left] =
          index < grid.colors.size() ? kOpaque | (kscore::BgrOfColor(grid.colors[index]) & 0xFFFFFF) : 0;
    }
  }
}

}  // namespace ksvect
