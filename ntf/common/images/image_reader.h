// What reads the data of an image: one reader for each layout of the data, which hands out rows of samples as they are
// stored, block by block. What is shown of them is a later step (images/shown).
#pragma once

#include "images/block_grid.h"
#include "internal/ksclasses_.h"
#include "internal/status.h"

#include <memory>

namespace ksntfx {

/** What is known of an image once its reader is open. */
struct ImageShape {
  std::uint32_t blockWidth; /**< pixels of a block */
  std::uint32_t blockHeight;
  std::uint32_t across; /**< blocks that are read, from the image's corner on */
  std::uint32_t down;
  std::uint32_t gridAcross;     /**< blocks of a row of the image */
  std::uint32_t depth;          /**< bits per pixel of the image's bitmap */
  std::uint32_t rowUnit = 1;    /**< rows of a block are read in multiples of so many */
  std::uint64_t stripBytes = 0; /**< bytes that are best read at once; 0 for a whole row of blocks */
  bool hasHoles = false;        /**< not all pixels of a block have a value in the data */
  bool isWhole = false;         /**< the only block is a bitmap of the reader's own making */

  std::uint64_t Width() const { return std::uint64_t{across} * blockWidth; }
  std::uint64_t Height() const { return std::uint64_t{down} * blockHeight; }
};

/** Some rows of one block. */
struct BlockRows {
  std::uint64_t block; /**< counted from the left to the right and from the top down */
  std::uint32_t first;
  std::uint32_t rows;
};

/** The place of a block's rows in a strip of an image's bitmap. */
struct StripPlace {
  KsBitmap *strip;
  std::uint32_t left;
  std::uint8_t *bytes; /**< the first row; null where the rows come as a bitmap */
  std::uint64_t step;  /**< bytes from one row to the next */
  std::uint32_t depth; /**< bits of a pixel of these rows */
};

/** Rows of a block as they are stored. Buffers and bitmaps are the reader's, and good until its next read. */
struct StoredRows {
  enum class Form : std::uint8_t {
    Absent,  /**< the block isn't recorded */
    Placed,  /**< the rows are in the place that was offered, and need nothing more */
    Samples, /**< rows of samples: of up to three bands */
    Bitmap   /**< what a codec made of them, in a size, depth and colour order of its own */
  };

  Form form = Form::Absent;
  const std::uint8_t *bands[3] = {}; /**< the first sample of each band that the reader was made for */
  std::uint64_t rowStep = 0;         /**< bytes from one row to the next */
  std::uint32_t sampleStep = 0;      /**< bytes from one sample of a band to the next; 0 where samples are bits */
  KsBitmap *bitmap = nullptr;
};

class ImageReader {
 public:
  ImageReader() = default;
  ImageReader(const ImageReader &) = delete;
  ImageReader &operator=(const ImageReader &) = delete;
  virtual ~ImageReader() = default;

  /**
   * Finds what the data hold, before anything is shown: SUCCESS, ERROR_NOT_SUPPORTED for samples that make no picture,
   * ERROR_FILE_READ for data that are cut off, ERROR_FILE_FORMAT, ERROR_NO_MEMORY.
   */
  virtual Status Open() = 0;

  /** After Open. */
  const ImageShape &Shape() const { return shape; }

  /** Makes a bitmap for `rows` rows of the image; empty where Shape().isWhole. */
  virtual Status MakeBitmap(KsBitmap *bitmap, std::uint64_t rows) = 0;

  /**
   * Reads rows of a block. Rows of blocks come in rising order, and the blocks of a strip from the left to the right.
   * SUCCESS, ERROR_FILE_READ, ERROR_FILE_FORMAT, ERROR_NO_MEMORY, or the status of a codec.
   */
  virtual Status Read(const BlockRows &which, const StripPlace &place, StoredRows *stored) = 0;

 protected:
  ImageShape shape{};
};

/** The shape of an image all of whose blocks are read. */
inline ImageShape ShapeOf(const BlockGrid &grid, std::uint32_t depth) {
  return {grid.width, grid.height, grid.across, grid.down, grid.across, depth};
}

}  // namespace ksntfx
