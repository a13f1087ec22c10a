// JPEG tiles whose sizes are in no table: their boundaries are found by looking for the mark that a stream begins
// with, the bytes FF D8 FF.
#pragma once

#include "images/image_source.h"

#include <optional>

namespace ksntfx {

/** Walks along the tiles of an image without a mask table. */
class TileCursor {
 public:
  explicit TileCursor(const ImageSource &data) : source(data), remaining(data.dataLength) {}

  /** Goes back to the first tile. */
  void Rewind() {
    position = 0;
    remaining = source.dataLength;
    failedAt.reset();
  }

  /**
   * Finds where the tile at the cursor ends and moves behind it. `isLast` is for the last tile of a walk that knows it:
   * that one is searched from the end of the data. With `endIsLast` each tile behind which no mark is found is taken as
   * the last one. The tile's place behind the image data's start and its size; ERROR_FILE_READ where none is found.
   */
  Status Next(bool isLast, bool endIsLast, std::int64_t *offset, std::uint32_t *size);

 private:
  Status FindEnd(std::uint32_t *size);
  void TakeLast(std::int64_t *offset, std::uint32_t *size);

  const ImageSource &source;
  std::uint32_t position = 0; /**< behind IMDATOFF */
  std::uint32_t remaining;
  std::optional<std::uint32_t> failedAt; /**< the position behind which no mark was found */
  std::optional<std::uint32_t> lastSize; /**< of the last tile, once it was searched */
};

/** The size of the last tile, searched backward from the end of the image data; 0 where no mark is found. */
std::uint32_t FindLastTile(const ImageSource &source);

}  // namespace ksntfx
