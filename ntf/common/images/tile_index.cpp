#include "images/tile_index.h"

#include "headers/mask_table.h"
#include "internal/ksclasses_.h"

#include <algorithm>
#include <cstring>
#include <iterator>

namespace ksntfx {

Status TileIndex::Build(const ImageData &data, std::uint64_t tiles) {
  // No stream is shorter than its mark: a count beyond that is a damaged header's, and not worth any memory.
  if (tiles > data.length && !BlockMask(*data.image, data.length).HasBlockMask()) return ERROR_FILE_FORMAT;
  if (BlockMask(*data.image, data.length).HasBlockMask()) {
    TakeMask(data, tiles);
  } else {
    const Status status = Search(data, tiles);
    if (status != SUCCESS) return status;
  }
  std::copy_if(starts.begin(), starts.end(), std::back_inserter(ends),
               [](std::uint64_t start) { return start != kAbsent; });
  ends.push_back(data.SampleBytes());
  std::sort(ends.begin(), ends.end());
  return SUCCESS;
}

std::optional<StreamPlace> TileIndex::Find(std::uint64_t tile) const {
  if (tile >= starts.size() || starts[tile] == kAbsent) return std::nullopt;
  const std::uint64_t start = starts[tile];
  const auto end = std::upper_bound(ends.begin(), ends.end(), start);
  return StreamPlace{start, end == ends.end() ? 0 : *end - start};
}

void TileIndex::TakeMask(const ImageData &data, std::uint64_t tiles) {
  const BlockMask mask(*data.image, data.length);
  starts.reserve(std::min<std::uint64_t>(tiles, data.image->maskEntries));
  for (std::uint64_t tile = 0; tile < mask.Visited(tiles); ++tile) {
    const std::uint32_t word = mask.BlockWord(tile);
    starts.push_back(word == kNotRecorded ? kAbsent : word);
  }
}

Status TileIndex::Search(const ImageData &data, std::uint64_t tiles) {
  constexpr std::uint64_t kPiece = 256 * 1024;
  constexpr std::uint64_t kMark = 3;
  const std::uint64_t held = data.HeldBytes();
  KsArray<std::uint8_t> piece;
  if (!piece.Allocate(kPiece)) return ERROR_NO_MEMORY;
  for (std::uint64_t at = 0; at + kMark <= held && starts.size() < tiles; at += kPiece - kMark + 1) {
    const std::uint64_t bytes = std::min(kPiece, held - at);
    const Status status = data.Read(at, piece.Get(), bytes);
    if (status != SUCCESS) return status;
    const std::uint8_t *const end = piece.Get() + bytes - (kMark - 1);
    for (const std::uint8_t *from = piece.Get(); from < end && starts.size() < tiles; ++from) {
      from = static_cast<const std::uint8_t *>(std::memchr(from, 0xFF, static_cast<std::size_t>(end - from)));
      if (from == nullptr) break;
      if (from[1] == 0xD8 && from[2] == 0xFF) starts.push_back(at + static_cast<std::uint64_t>(from - piece.Get()));
    }
  }
  complete = starts.size() == tiles;
  return SUCCESS;
}

}  // namespace ksntfx
