#include "ksvect/paint/tiles.h"

#include "ksvect/paint/tint.h"

#include <bitset>

namespace ksvect {
namespace {

constexpr std::int32_t kTileSize = 512;
/** Pixels from one row of a tile to the next: no power of two, so that a column spreads over the cache. */
constexpr std::int32_t kTileStride = kTileSize + 16;
constexpr std::int32_t kRowBytes = kTileStride * 4;

/** A tile is loaded and stored in cells. */
constexpr std::int32_t kCellSize = 32;
constexpr std::int32_t kCellsAcross = kTileSize / kCellSize;

/**
 * Points within this distance of a tile go to the drawing library as they are; those farther out are moved along their
 * lines, where the rounding of their places can't be seen.
 */
constexpr double kNear = 8192;
/** The same for areas of many points, of which few shall be left. */
constexpr double kNearOfMany = 128;
constexpr std::size_t kManyPoints = 1024;

constexpr std::size_t kStretch = 64;

/** Marks are drawn when they have as many points as this. */
constexpr std::size_t kMostPoints = 1 << 20;
/** Bounds the time of a drawing: pixels in the boxes of its marks, and each point as some. Marks beyond it are left
 * out. */
constexpr std::uint64_t kMostWork = std::uint64_t{1} << 36;
constexpr std::uint64_t kWorkOfPoint = 16;

std::uint64_t AreaOf(const KsRect &r) {
  return static_cast<std::uint64_t>(r.right - r.left) * static_cast<std::uint64_t>(r.bottom - r.top);
}

KsRect Around(const KsRect &a, const KsRect &b) {
  if (IsEmpty(a)) return b;
  return {std::min(a.left, b.left), std::min(a.top, b.top), std::max(a.right, b.right), std::max(a.bottom, b.bottom)};
}

KsRect Moved(const KsRect &r, std::int32_t x, std::int32_t y) {
  return {r.left + x, r.top + y, r.right + x, r.bottom + y};
}

KsRect CanvasOf(const KsBitmap &bitmap) {
  // A side beyond the far ones can't be reached by drawings.
  const auto side = [](std::uint32_t pixels) {
    return static_cast<std::int32_t>(std::min<std::uint32_t>(pixels, static_cast<std::uint32_t>(kFarAway)));
  };
  return {0, 0, side(bitmap.width), side(bitmap.height)};
}

std::vector<Box> StretchesOf(const std::vector<Point> &points) {
  std::vector<Box> stretches;
  if (points.size() < 4 * kStretch) return stretches;
  for (std::size_t first = 0; first < points.size(); first += kStretch) {
    GrowingBox around;
    // With the first point of the next stretch, to which a line leads.
    for (std::size_t i = first; i < std::min(first + kStretch + 1, points.size()); ++i) around.Add(points[i]);
    stretches.push_back(around.box);
  }
  return stretches;
}

}  // namespace

/** A part of the canvas, with marks being drawn on it. Coordinates are its own. */
class Tiles::Tile {
 public:
  Tile(Tiles &tiles, const KsRect &tilePlace)
      : owner(tiles),
        place(tilePlace),
        size{0, 0, tilePlace.right - tilePlace.left, tilePlace.bottom - tilePlace.top},
        surface(tiles.tilePixels.get(), size.right, size.bottom, kRowBytes) {}

  void Draw(const Placed &placed) {
    const KsRect box = Moved(placed.box, -place.left, -place.top);
    visible = Intersection(box, size);
    if (IsEmpty(visible)) return;
    Clip(Intersection(Moved(placed.mark.clip, -place.left, -place.top), size));
    if (placed.mark.kind == MarkKind::Stroke) {
      DrawStroke(placed);
    } else {
      DrawArea(placed.mark);
    }
  }

  void Store() {
    ForCells(size, [this](std::size_t number, const KsRect &cell) {
      if (!loaded[number]) return;
      owner.pixels.Store(Moved(cell, place.left, place.top), PixelsAt(cell), kTileStride);
    });
  }

 private:
  Point Local(Point point) const { return {point.x - place.left, point.y - place.top}; }

  std::uint32_t *PixelsAt(const KsRect &part) const {
    return owner.tilePixels.get() + std::int64_t{part.top} * kTileStride + part.left;
  }

  void Clip(const KsRect &to) {
    if (to.left == clip.left && to.top == clip.top && to.right == clip.right && to.bottom == clip.bottom) return;
    clip = to;
    surface.Clip(clip);
  }

  template <class Operation>
  void ForCells(const KsRect &part, const Operation &operation) const {
    for (std::int32_t y = part.top / kCellSize; y * kCellSize < part.bottom; ++y) {
      for (std::int32_t x = part.left / kCellSize; x * kCellSize < part.right; ++x) {
        const std::int32_t left = x * kCellSize;
        const std::int32_t top = y * kCellSize;
        operation(static_cast<std::size_t>(y) * kCellsAcross + static_cast<std::size_t>(x),
                  Intersection({left, top, left + kCellSize, top + kCellSize}, size));
      }
    }
  }

  /** Has the pixels there before they are drawn on. */
  void Need(const Box &box) {
    const KsRect part = Intersection(PixelsOf(box), visible);
    if (IsEmpty(part)) return;
    ForCells(part, [this](std::size_t number, const KsRect &cell) {
      if (loaded[number]) return;
      loaded[number] = true;
      owner.pixels.Load(Moved(cell, place.left, place.top), PixelsAt(cell), kTileStride);
    });
  }

  // ---- lines ----

  void DrawStroke(const Placed &placed) {
    reach = ReachOf(placed.mark);
    seen = Grown(BoxOf(visible), reach);
    nearBox = Grown(BoxOf(size), std::max(kNear, 2 * reach));
    anything = false;
    for (std::size_t i = 0; i < placed.mark.path.contours.size(); ++i) DrawContour(placed, i);
    if (anything) surface.Stroke(placed.mark.color, placed.mark.width, placed.mark.join);
  }

  void DrawContour(const Placed &placed, std::size_t number) {
    const std::span<const Point> contour = placed.mark.path.PointsOf(number);
    const std::size_t first = placed.mark.path.contours[number].first;
    const bool closed = placed.mark.path.contours[number].closed;
    connected = false;
    whole = true;
    for (std::size_t i = 0; i + 1 < contour.size(); ++i) {
      if ((first + i) % kStretch == 0 && IsStretchOutside(placed, (first + i) / kStretch)) {
        connected = whole = false;
        i += kStretch - 1;
        continue;
      }
      DrawLine(Local(contour[i]), Local(contour[i + 1]), false);
    }
    if (!closed || contour.size() < 2) return;
    DrawLine(Local(contour.back()), Local(contour.front()), whole);
    // Where parts are missing the ring is an open line, which needs the corner at its beginning.
    if (!whole) DrawLine(Local(contour[0]), Local(contour[1]), false);
  }

  bool IsStretchOutside(const Placed &placed, std::size_t stretch) const {
    if (stretch >= placed.stretches.size()) return false;
    const Box &box = placed.stretches[stretch];
    return !Touch({Local(box.low), Local(box.high)}, seen);
  }

  /** A line, where it comes near; `closes` a ring of which everything is there. */
  void DrawLine(Point a, Point b, bool closes) {
    Point from = a;
    Point to = b;
    if (!ClipLine(seen, from, to)) {
      connected = whole = false;
      return;
    }
    GrowingBox box;
    box.Add(from);
    box.Add(to);
    Need(Grown(box.box, reach));
    from = a;
    to = b;
    ClipLine(nearBox, from, to);
    if (!connected || from != a) surface.MoveTo(from);
    if (from != a || to != b) whole = false;
    if (closes && whole) {
      surface.Close();
    } else {
      surface.LineTo(to);
    }
    connected = to == b;
    anything = true;
  }

  // ---- areas ----

  void DrawArea(const Mark &mark) {
    const Box near = Grown(BoxOf(size), mark.path.points.size() > kManyPoints ? kNearOfMany : kNear);
    const Box seenArea = BoxOf(visible);
    GrowingBox drawn;
    for (std::size_t i = 0; i < mark.path.contours.size(); ++i) {
      GrowingBox around;
      ring.clear();
      for (const Point point : mark.path.PointsOf(i)) {
        ring.push_back(Local(point));
        around.Add(ring.back());
      }
      if (!Touch(around.box, seenArea)) continue;
      if (!IsInside(around.box, near)) ClipRing(near, ring, scratch);
      AddRing();
      drawn.Add(around.box.low);
      drawn.Add(around.box.high);
    }
    if (drawn.IsEmpty()) return;
    Need(drawn.box);
    Fill(mark, Intersection(PixelsOf(drawn.box), visible));
  }

  void AddRing() {
    if (ring.empty()) return;
    surface.MoveTo(ring.front());
    for (std::size_t i = 1; i < ring.size(); ++i) surface.LineTo(ring[i]);
    surface.Close();
  }

  void Fill(const Mark &mark, const KsRect &part) {
    if (mark.kind == MarkKind::Fill) {
      surface.Fill(mark.color, mark.byParity);
      return;
    }
    if (!owner.tint) owner.tint.reset(new std::uint32_t[kTileSize * kTileStride]);
    const KsRect onCanvas = Moved(part, place.left, place.top);
    if (mark.kind == MarkKind::Hatch) {
      TintHatch(mark.hatch, mark.color, onCanvas, owner.tint.get(), kTileStride);
    } else {
      TintCells(mark.cells, onCanvas, owner.tint.get(), kTileStride);
    }
    surface.Fill(owner.tint.get(), part, kRowBytes, mark.byParity);
  }

  Tiles &owner;
  KsRect place;  // on the canvas
  KsRect size;
  Surface surface;
  std::bitset<kCellsAcross * kCellsAcross> loaded;  // by cells
  KsRect clip = {};
  // Of the mark being drawn:
  KsRect visible = {};
  double reach = 0;
  Box seen;     // what lies outside of it shows nothing
  Box nearBox;  // what lies outside of it is cut off
  bool anything = false;
  bool connected = false;  // the contour's last line ended where the next one begins
  bool whole = false;      // nothing of the contour is missing
  std::vector<Point> ring;
  std::vector<Point> scratch;
};

Tiles::Tiles(KsBitmap &bitmap) : pixels(bitmap), canvas(CanvasOf(bitmap)) {}

void Tiles::Add(Mark mark) {
  GrowingBox around;
  for (const Point point : mark.path.points) around.Add(point);
  if (around.IsEmpty()) return;
  const KsRect box = Intersection(PixelsOf(Grown(around.box, ReachOf(mark))), Intersection(mark.clip, canvas));
  if (IsEmpty(box)) return;
  work += AreaOf(box) + mark.path.points.size() * kWorkOfPoint;
  if (work > kMostWork) return;
  points += mark.path.points.size();
  touched = Around(touched, box);
  std::vector<Box> stretches = StretchesOf(mark.path.points);
  marks.push_back({std::move(mark), box, std::move(stretches)});
  if (points > kMostPoints) Finish();
}

void Tiles::Finish() {
  if (!marks.empty() && !tilePixels) tilePixels.reset(new std::uint32_t[kTileSize * kTileStride]);
  std::vector<const Placed *> ofRow;
  for (std::int32_t top = touched.top; top < touched.bottom; top += kTileSize) {
    const std::int32_t bottom = std::min(top + kTileSize, touched.bottom);
    ofRow.clear();
    for (const Placed &placed : marks) {
      if (placed.box.top < bottom && placed.box.bottom > top) ofRow.push_back(&placed);
    }
    for (std::int32_t left = touched.left; left < touched.right && !ofRow.empty(); left += kTileSize) {
      Tile tile(*this, {left, top, std::min(left + kTileSize, touched.right), bottom});
      for (const Placed *const placed : ofRow) tile.Draw(*placed);
      tile.Store();
    }
  }
  marks.clear();
  touched = {};
  points = 0;
}

}  // namespace ksvect
