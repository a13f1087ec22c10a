// Tiles that are larger than their block reach over their neighbours, and stay to be seen where a neighbour is absent.
#pragma once

#include "internal/ksclasses_.h"
#include "internal/status.h"

#include <cstdint>
#include <memory>

namespace ksntfx {

/** A part of an image: pixels from the image's upper left corner. */
struct ImagePart {
  std::uint64_t left;
  std::uint64_t top;
  std::uint32_t width;
  std::uint32_t height;
};

/** Bitmaps that reach beyond their block, in the order in which they were drawn. */
class Overhang {
 public:
  /** Takes over the pixels of a bitmap at a place of the image. SUCCESS or ERROR_NO_MEMORY. */
  Status Keep(KsBitmap *bitmap, std::uint64_t left, std::uint64_t top);

  /** Draws what reaches into a part of the image, at (`column`, `row`) of `strip`. */
  Status Draw(KsBitmap *strip, std::uint32_t column, std::uint32_t row, const ImagePart &part) const;

  /** Forgets what doesn't reach to row `top` of the image. */
  void DropAbove(std::uint64_t top);

 private:
  struct Piece {
    KsLocalBitmap bitmap;
    std::uint64_t left = 0;
    std::uint64_t top = 0;
    std::unique_ptr<Piece> next;
  };

  std::unique_ptr<Piece> first;
};

}  // namespace ksntfx
