// Puts marks onto a canvas, tile by tile, so that neither memory nor time grows with the canvas.
#pragma once

#include "ksvect/paint/canvas_pixels.h"
#include "ksvect/paint/mark.h"

#include <cstdint>
#include <memory>
#include <vector>

namespace ksvect {

/**
 * Collects marks and draws them, in their order, when there are many and at Finish. Only those parts of the canvas are
 * looked at that marks may touch. Any of its functions may throw std::bad_alloc.
 */
class Tiles {
 public:
  explicit Tiles(KsBitmap &bitmap);

  /** The whole canvas. */
  const KsRect &Canvas() const { return canvas; }

  void Add(Mark mark);
  void Finish();

 private:
  struct Placed {
    Mark mark;
    KsRect box;                  // what it may touch of the canvas
    std::vector<Box> stretches;  // the boxes of its points, kStretch at a time, where there are many
  };
  class Tile;

  CanvasPixels pixels;
  KsRect canvas;
  std::vector<Placed> marks;
  KsRect touched = {};  // the box around the boxes of all marks
  std::size_t points = 0;
  std::uint64_t work = 0;
  std::unique_ptr<std::uint32_t[]> tilePixels;
  std::unique_ptr<std::uint32_t[]> tint;
};

}  // namespace ksvect
