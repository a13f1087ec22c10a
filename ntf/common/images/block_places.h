// Where the blocks of plain samples are in the data of each image mode (MIL-STD-2500C, 5.4.2.2).
#pragma once

#include "headers/mask_table.h"
#include "images/block_grid.h"

namespace ksntfx {

/** How far apart things lie in the data of one image mode, in bytes. */
struct ModeLayout {
  std::int64_t block;
  std::int64_t band;
  std::int64_t row;
  std::uint32_t pixel; /**< bands between two samples of a band; more than 1 in mode P alone */
  bool masked;         /**< BMR and TMR give the offsets of blocks */
};

/** The layout of the blocks. `rowBytes` are those of one band's row of a block. */
ModeLayout LayoutOf(const ImageSubheader &image, const BlockGrid &grid, const BlockMask &mask, std::uint64_t rowBytes);

/** Finds one block after the other, in rising order from the first. */
class BlockPlaces {
 public:
  static constexpr std::int64_t kAbsent = -1;

  BlockPlaces(const ImageSubheader &image, const BlockGrid &blockGrid, const BlockMask &blockMask,
              std::uint64_t rowBytes)
      : grid(blockGrid), mask(blockMask), modes(LayoutOf(image, grid, mask, rowBytes)), oneBand(image.bandCount < 2) {}

  /** Where a block's data start behind IMDATOFF, or kAbsent. */
  std::int64_t StartOf(std::uint64_t block) { return oneBand ? NextRecorded(block) : Laid(block); }

  /** Goes back to the first block. */
  void Rewind() { recorded = 0; }

  const ModeLayout &Layout() const { return modes; }

 private:
  /** The recorded blocks of one band follow each other, whatever offsets the mask has; a single block is always there.
   */
  std::int64_t NextRecorded(std::uint64_t block) {
    if (!grid.IsSingle() && mask.IsAbsent(block)) return kAbsent;
    return static_cast<std::int64_t>(recorded++) * modes.row * grid.height;
  }

  std::int64_t Laid(std::uint64_t block) const {
    if (modes.masked && mask.IsAbsent(block)) return kAbsent;
    const std::int64_t inOrder = static_cast<std::int64_t>(block) * modes.block;
    return modes.masked ? mask.Offset(block).value_or(inOrder) : inOrder;
  }

  const BlockGrid &grid;
  const BlockMask &mask;
  ModeLayout modes;
  bool oneBand;
  std::uint64_t recorded = 0;
};

}  // namespace ksntfx
