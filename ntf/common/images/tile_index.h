// Where the streams of a tiled image are: by its mask table, or by one search for the marks that JPEG streams begin
// with.
#pragma once

#include "images/open_stream.h"

#include <optional>
#include <vector>

namespace ksntfx {

class TileIndex {
 public:
  /**
   * Finds `tiles` streams. Without a mask table the data are searched for the bytes FF D8 FF. SUCCESS, ERROR_FILE_READ,
   * ERROR_NO_MEMORY.
   */
  Status Build(const ImageData &data, std::uint64_t tiles);

  /** The place of a stream, or nothing where it isn't recorded. */
  std::optional<StreamPlace> Find(std::uint64_t tile) const;

  /** Whether the data have a stream for each tile that is recorded. */
  bool IsComplete() const { return complete; }

 private:
  static constexpr std::uint64_t kAbsent = UINT64_MAX;

  void TakeMask(const ImageData &data, std::uint64_t tiles);
  Status Search(const ImageData &data, std::uint64_t tiles);

  std::vector<std::uint64_t> starts; /**< of each tile */
  std::vector<std::uint64_t> ends; /**< the starts of all that are recorded, and the end of the data, in rising order */
  bool complete = true;
};

}  // namespace ksntfx
