// The blocks of an image: which ones are there, where they lie in the data, and where they land in the target bitmap.
#pragma once

#include "handlimg.h"
#include "internal/ksclasses_.h"
#include "samples.h"

#include <algorithm>
#include <optional>

/** The blocks of an image, across and down. */
struct BlockGrid {
  explicit BlockGrid(const ImageSubheader &image)
      : width(BlockWidth(image)),
        height(BlockHeight(image)),
        across(image.blocksPerRow),
        down(image.blocksPerColumn),
        count(std::uint64_t{across} * down) {}

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
    return BigEndian32(table[block]);
  }

  const ImageSubheader &image;
  std::uint32_t dataLength;
};

/**
 * Where the rows of a block are put: right in the strip that is being filled, where they are whole bytes of its depth;
 * otherwise in a bitmap of the block's own, which is then combined with the strip.
 */
class BlockRows {
 public:
  /** `depth` is that of the rows. Another one than the strip's is converted, through the image's palette. */
  BlockRows(const ImageSubheader &header, std::uint32_t width, std::uint32_t depth)
      : image(header), blockWidth(width), rowDepth(depth) {}

  /** Begins `rows` rows of the block at `left` of the strip. */
  std::int32_t Begin(KsBitmap *stripBitmap, std::int32_t left, std::uint32_t rows);
  /** The bytes of a row of the strip, from the block's left edge: at least those of a block's width. */
  std::uint8_t *Row(std::uint32_t row) { return firstRow + std::uint64_t{row} * rowStep; }
  /** Bytes from one row to the next. */
  std::uint64_t RowStep() const { return rowStep; }
  /** Brings the rows into the strip. */
  std::int32_t End();

 private:
  std::int32_t BeginBlock(std::uint32_t rows);

  const ImageSubheader &image;
  std::uint32_t blockWidth;
  std::uint32_t rowDepth;
  KsLocalBitmap block{};
  KsBitmap *strip = nullptr;
  std::int32_t stripLeft = 0;
  std::uint32_t rowCount = 0;
  std::uint8_t *firstRow = nullptr;
  std::uint64_t rowStep = 0;
  bool direct = false;
};

/** Reads the blocks of an uncompressed image, a stretch of rows of one row of blocks at a time. */
class BlockReader {
 public:
  explicit BlockReader(const ImageSource &data, std::uint32_t rowDepth)
      : source(data), image(*data.image), grid(image), mask(data), out(image, grid.width, rowDepth) {}
  BlockReader(const BlockReader &) = delete;
  BlockReader &operator=(const BlockReader &) = delete;
  virtual ~BlockReader() = default;

  /** Whether there is a picture in the data, and the file holds all of it. Before the first strip. */
  std::int32_t Open();

  /**
   * Fills `strip` with `rows` rows, from row `first` of the blocks of a row of blocks. Rows of blocks come in rising
   * order. Where a block is absent the strip keeps what it holds.
   */
  std::int32_t ReadStrip(KsBitmap *strip, std::uint32_t blockRow, std::uint32_t first, std::uint32_t rows);

  const BlockGrid &Grid() const { return grid; }
  /** Whether blocks may be absent. */
  bool HasGaps() const { return mask.HasBlockMask(); }

 protected:
  static constexpr std::int64_t kAbsent = -1;

  /** Looks at the headers: bands, depth. SUCCESS, or ERROR_NOT_SUPPORTED for what makes no picture. */
  virtual std::int32_t Prepare() = 0;
  /** Where a block's data start behind IMDATOFF, or kAbsent. Blocks are asked for in rising order from 0. */
  virtual std::int64_t StartOf(std::uint64_t block) = 0;
  /** Goes back to block 0. */
  virtual void Rewind() {}
  /** Whether the file holds what is read of a block that starts at `start` behind the image data's start. */
  virtual std::int32_t Check(std::int64_t start) const = 0;
  /** Reads rows of a block into `out`. */
  virtual std::int32_t ReadRows(std::int64_t start, std::uint32_t first, std::uint32_t rows) = 0;

  /** A buffer of at least `bytes` bytes, or null without memory. */
  std::uint8_t *Buffer(std::uint64_t bytes);

  const ImageSource &source;
  ImageSubheader &image;
  BlockGrid grid;
  BlockMask mask;
  BlockRows out;

 private:
  std::int32_t LocateRow(std::uint32_t blockRow);

  KsArray<std::int64_t> starts; /**< of the blocks of the row in hand */
  std::uint32_t locatedRow = UINT32_MAX;
  KsArray<std::uint8_t> buffer;
  std::uint64_t bufferBytes = 0;
};
