// The blocks of an image: which ones are there, where they lie in the data, and where they land in the target bitmap.
#pragma once

#include "handlimg.h"
#include "internal/ksclasses_.h"

#include <algorithm>
#include <optional>

/** The block grid of an image whose target bitmap exists, so that all of its products are small numbers. */
struct BlockGrid {
  explicit BlockGrid(const ImageSubheader &image)
      : width(BlockWidth(image)),
        height(BlockHeight(image)),
        across(image.blocksPerRow),
        down(image.blocksPerColumn),
        count(std::uint64_t{across} * down) {}

  std::int32_t Left(std::uint64_t block) const { return static_cast<std::int32_t>(block % across * width); }
  std::int32_t Top(std::uint64_t block) const { return static_cast<std::int32_t>(block / across * height); }
  bool IsSingle() const { return across <= 1 && down <= 1; }

  std::uint32_t width; /**< pixels of a block */
  std::uint32_t height;
  std::uint32_t across;
  std::uint32_t down;
  std::uint64_t count;
};

/** The image data mask: BMR and TMR, of which the first entry of each block is used. */
class BlockMask {
 public:
  explicit BlockMask(const ImageSource &source) : image(*source.image), dataLength(source.dataLength) {}

  bool HasBlockMask() const { return image.blockMaskLength != 0 && image.blockMask != nullptr; }
  bool HasPadMask() const { return image.padMaskLength != 0 && image.padMask != nullptr; }

  /** The blocks to visit of `count`: those behind a BMR's end are not there. */
  std::uint64_t Visited(std::uint64_t count) const {
    return HasBlockMask() ? std::min<std::uint64_t>(count, image.maskEntries) : count;
  }

  /** The block's entry of BMR, kNotRecorded where the table is too short. */
  std::uint32_t BlockWord(std::uint64_t block) const { return Word(image.blockMask, block); }

  /** BMR says that the block isn't there: no offset, or one behind the data. */
  bool IsAbsent(std::uint64_t block) const {
    return HasBlockMask() && (BlockWord(block) == kNotRecorded || BlockWord(block) > dataLength);
  }

  /** The block's offset in the tables: BMR's, or without a BMR that of TMR where it has one. */
  std::optional<std::uint32_t> Offset(std::uint64_t block) const {
    if (HasBlockMask()) return BlockWord(block);
    const std::uint32_t word = HasPadMask() ? Word(image.padMask, block) : kNotRecorded;
    return word == kNotRecorded ? std::nullopt : std::optional(word);
  }

 private:
  std::uint32_t Word(const std::uint8_t (*table)[4], std::uint64_t block) const {
    if (block >= image.maskEntries) return kNotRecorded;
    const std::uint8_t *bytes = table[block];
    return std::uint32_t{bytes[0]} << 24 | std::uint32_t{bytes[1]} << 16 | std::uint32_t{bytes[2]} << 8 | bytes[3];
  }

  const ImageSubheader &image;
  std::uint32_t dataLength;
};

/**
 * Where the rows of a block are put: right in the target, where they are whole bytes of its depth; otherwise in a
 * bitmap of the block, which is then combined with the target.
 */
class BlockRows {
 public:
  BlockRows() = default;
  BlockRows(const BlockRows &) = delete;
  BlockRows &operator=(const BlockRows &) = delete;
  ~BlockRows();

  /** `depth` is that of the rows. Another one than the target's is converted, through the image's palette. */
  std::int32_t Create(KsBitmap *imageTarget, const ImageSubheader &image, const BlockGrid &grid, std::uint32_t depth);

  /** Begins a block; a bitmap of its own is cleared. */
  void Begin(std::int32_t blockLeft, std::int32_t blockTop);
  /** The bytes of a row, at least those of a block's width. */
  std::uint8_t *Row(std::uint32_t row);
  /** Brings the block into the target. */
  std::int32_t End();

 private:
  bool IsDirect() const { return (block->flags & KS_BITMAP_ALLOCATED) == 0; }

  KsBitmap *target = nullptr;
  KsLocalBitmap block{};
  std::int32_t left = 0;
  std::int32_t top = 0;
};
