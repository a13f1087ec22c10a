// The pixels of a canvas as colours, and back.
#pragma once

#include "kscore/palette.h"
#include "kskernel.h"

#include <cstdint>
#include <vector>

namespace ksvect {

/** Loads parts of a bitmap of 8, 24 or 32 bits as pixels of blue, green, red and 0, and stores them. */
class CanvasPixels {
 public:
  explicit CanvasPixels(KsBitmap &bitmap);

  static bool IsKnown(const KsBitmap &bitmap);

  /** `part` lies inside the bitmap; its rows go to `pixels`, which are `stride` pixels apart. */
  void Load(const KsRect &part, std::uint32_t *pixels, std::int32_t stride) const;
  /** The reverse. Pixels that show the same as before stay as they are. */
  void Store(const KsRect &part, const std::uint32_t *pixels, std::int32_t stride);

 private:
  void LoadRow(const std::uint8_t *row, std::int32_t left, std::int32_t count, std::uint32_t *pixels) const;
  void StoreRow(std::uint8_t *row, std::int32_t left, std::int32_t count, const std::uint32_t *pixels);
  std::uint8_t LevelOf(kscore::Bgr color);

  KsBitmap &canvas;
  kscore::ShownColors shown = {};  // of 8 bits
  /** The last colour asked for, of those that share a cell, and its level: neighbours are often alike. */
  struct Found {
    kscore::Bgr color;
    std::uint8_t level;
  };
  std::vector<Found> found;
};

}  // namespace ksvect
