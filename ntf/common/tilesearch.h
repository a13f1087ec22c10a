// JPEG tiles that no table tells the sizes of: their boundaries are found by looking for the mark that a stream begins
// with, the bytes FF D8 FF.
#pragma once

#include "handlimg.h"
#include "internal/ksclasses_.h"

/** A tile's bytes. */
struct Tile {
  KsArray<std::uint8_t> bytes;
  std::uint32_t size = 0;

  /** Reads `count` bytes at `offset` behind the image data's start. SUCCESS, ERROR_FILE_READ, ERROR_NO_MEMORY. */
  std::int32_t Read(const ImageSource &source, std::int64_t offset, std::uint32_t count);
};

/** Walks along the tiles of an image without a mask table. */
class TileCursor {
 public:
  explicit TileCursor(const ImageSource &data) : source(data), remaining(data.dataLength) {}

  /**
   * Finds where the tile at the cursor ends and moves behind it. `isLast` is for the last tile of a walk that knows it:
   * that one is searched from the end of the data. With `endIsLast` a tile behind which no mark is found is taken as
   * the last one. The tile's place behind the image data's start and its size; ERROR_FILE_READ where none is found.
   */
  std::int32_t Next(bool isLast, bool endIsLast, std::int64_t *offset, std::uint32_t *size);

 private:
  std::int32_t FindEnd(std::uint32_t *size);
  void TakeLast(std::int64_t *offset, std::uint32_t *size);

  const ImageSource &source;
  std::uint32_t position = 0; /**< behind IMDATOFF */
  std::uint32_t remaining;
};

/**
 * Finds the last tile by searching backward from the end of the image data: its size. ERROR_FILE_READ with a size of 0
 * where no mark is found.
 */
std::int32_t FindLastTile(const ImageSource &source, std::uint32_t *size);
