// Some tiles of a code stream as a code stream of their own, so that the cost of decoding them doesn't depend on the
// number of the others.
#pragma once

#include "kscodec/jpeg2000/coding.h"

#include <cstdint>
#include <vector>

namespace kscodec::jpeg2000 {

/** Tiles by their places among all tiles. */
struct TileRange {
  std::uint64_t left = 0;
  std::uint64_t top = 0;
  std::uint64_t right = 0; /**< exclusive */
  std::uint64_t bottom = 0;

  std::uint64_t Count() const { return (right - left) * (bottom - top); }
};

/** Where the tiles of a stream are, and the main header that they share. */
struct TileIndex {
  std::vector<std::uint8_t> mainHeader; /**< without segments that are about the places of other tiles */
  std::vector<TilePart> parts;          /**< by tile, and the parts of a tile in their order */
};

/** SUCCESS, or ERROR_FILE_READ. `coding.partsAreKnown` is required. */
Status MakeTileIndex(const ByteSource &source, const Header &header, const Coding &coding, TileIndex *index);

/**
 * A code stream of a range of tiles. Its picture is the part of the reference grid that they cover, with the same
 * coordinates, so that samples and code blocks are those of the whole picture.
 */
class TileStream final : public ByteSource {
 public:
  /** All arguments must outlive it. */
  TileStream(const ByteSource &codeStream, const Header &header, const TileIndex &index, const TileRange &range);

  std::uint64_t Size() const override { return size; }
  Status Read(std::uint64_t at, void *buffer, std::uint64_t bytes) const override;

  /** Tiles that have no part at all. */
  std::uint64_t MissingTiles() const { return missing; }

 private:
  /** Bytes that follow those of the piece before it. */
  struct Piece {
    std::uint64_t at; /**< in this stream */
    std::uint64_t bytes;
    std::uint64_t from; /**< in `made`, or in the code stream */
    bool isMade;
  };

  void Add(std::uint64_t bytes, std::uint64_t from, bool isMade);
  void AddMainHeader(const Header &header, const TileIndex &index, const TileRange &range);
  void AddPart(const TilePart &part, std::uint64_t tile);

  const ByteSource &source;
  std::vector<std::uint8_t> made; /**< headers that differ from those of the code stream */
  std::vector<Piece> pieces;
  std::uint64_t size = 0;
  std::uint64_t missing = 0;
};

}  // namespace kscodec::jpeg2000
