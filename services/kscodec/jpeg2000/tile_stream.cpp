#include "kscodec/jpeg2000/tile_stream.h"

#include "kscodec/jpeg2000/boxes.h"

#include <algorithm>
#include <cstring>
#include <tuple>

namespace kscodec::jpeg2000 {

namespace {

enum Marker : std::uint32_t { kTlm = 0xFF55, kPlm = 0xFF57, kCom = 0xFF64, kSot = 0xFF90 };

/** The marker of a tile part with its segment (ISO/IEC 15444-1, A.4.2). */
constexpr std::uint64_t kTilePartHeader = 12;

constexpr std::uint8_t kEndOfCodeStream[] = {0xFF, 0xD9};

void PutU16(std::uint8_t *to, std::uint64_t value) {
  to[0] = static_cast<std::uint8_t>(value >> 8);
  to[1] = static_cast<std::uint8_t>(value);
}

void PutU32(std::uint8_t *to, std::uint64_t value) {
  PutU16(to, value >> 16);
  PutU16(to + 2, value);
}

/** Writes the words of an axis in the size segment, for some of its tiles. */
void PutAxis(std::uint8_t *segment, const Axis &axis, std::uint64_t firstTile, std::uint64_t endTile) {
  const std::uint64_t start = axis.tileStart + firstTile * axis.tileStep;
  PutU32(segment, std::min(axis.end, axis.tileStart + endTile * axis.tileStep));
  PutU32(segment + 8, std::max(axis.start, start));
  PutU32(segment + 24, start);
}

}  // namespace

Status MakeTileIndex(const ByteSource &source, const Header &header, const Coding &coding, TileIndex *index) {
  PieceReader pieces(source);
  const auto append = [&](std::uint64_t at, std::uint64_t bytes) {
    const Stream piece = pieces.At(header.codeStreamAt + at, bytes);
    index->mainHeader.insert(index->mainHeader.end(), piece.begin(), piece.end());
  };
  constexpr std::uint64_t kMarkerBytes = 2;
  append(0, kMarkerBytes);
  for (std::uint64_t at = kMarkerBytes; at < coding.mainHeaderBytes;) {
    const Stream start = pieces.At(header.codeStreamAt + at, 4);
    const std::uint32_t marker = U16(start, 0);
    const std::uint64_t bytes = kMarkerBytes + U16(start, 2);
    if (marker != kTlm && marker != kPlm && marker != kCom) append(at, bytes);
    at += bytes;
  }
  index->parts = coding.parts;
  std::sort(index->parts.begin(), index->parts.end(), [](const TilePart &left, const TilePart &right) {
    return std::tie(left.tile, left.at) < std::tie(right.tile, right.at);
  });
  return pieces.Check();
}

TileStream::TileStream(const ByteSource &codeStream, const Header &header, const TileIndex &index,
                       const TileRange &range)
    : source(codeStream) {
  AddMainHeader(header, index, range);
  std::uint64_t number = 0;
  for (std::uint64_t row = range.top; row < range.bottom; ++row) {
    for (std::uint64_t column = range.left; column < range.right; ++column, ++number) {
      const std::uint64_t tile = row * header.size.across.tiles + column;
      auto part = std::lower_bound(index.parts.begin(), index.parts.end(), tile,
                                   [](const TilePart &each, std::uint64_t wanted) { return each.tile < wanted; });
      if (part == index.parts.end() || part->tile != tile) ++missing;
      for (; part != index.parts.end() && part->tile == tile; ++part) AddPart(*part, number);
    }
  }
  const std::uint64_t end = made.size();
  made.insert(made.end(), std::begin(kEndOfCodeStream), std::end(kEndOfCodeStream));
  Add(sizeof kEndOfCodeStream, end, true);
}

void TileStream::Add(std::uint64_t bytes, std::uint64_t from, bool isMade) {
  pieces.push_back({size, bytes, from, isMade});
  size += bytes;
}

void TileStream::AddMainHeader(const Header &header, const TileIndex &index, const TileRange &range) {
  constexpr std::uint64_t kSizesAt = 8;
  made = index.mainHeader;
  PutAxis(made.data() + kSizesAt, header.size.across, range.left, range.right);
  PutAxis(made.data() + kSizesAt + 4, header.size.down, range.top, range.bottom);
  Add(made.size(), 0, true);
}

void TileStream::AddPart(const TilePart &part, std::uint64_t tile) {
  constexpr std::uint32_t kFields = 10;
  if (part.bytes < kTilePartHeader) return;
  const std::uint64_t at = made.size();
  made.resize(at + kTilePartHeader);
  std::uint8_t *const start = made.data() + at;
  PutU16(start, kSot);
  PutU16(start + 2, kFields);
  PutU16(start + 4, tile);
  PutU32(start + 6, part.length);
  start[10] = part.number;
  start[11] = part.ofNumber;
  Add(kTilePartHeader, at, true);
  Add(part.bytes - kTilePartHeader, part.at + kTilePartHeader, false);
}

Status TileStream::Read(std::uint64_t at, void *buffer, std::uint64_t bytes) const {
  auto *to = static_cast<std::uint8_t *>(buffer);
  auto piece = std::upper_bound(pieces.begin(), pieces.end(), at,
                                [](std::uint64_t wanted, const Piece &each) { return wanted < each.at; });
  if (piece != pieces.begin()) --piece;
  for (; bytes != 0; ++piece) {
    if (piece == pieces.end()) return ERROR_FILE_READ;
    const std::uint64_t skipped = at - piece->at;
    const std::uint64_t count = std::min(bytes, piece->bytes - skipped);
    if (piece->isMade) {
      std::copy_n(made.data() + piece->from + skipped, count, to);
    } else {
      const Status status = source.Read(piece->from + skipped, to, count);
      if (status != SUCCESS) return status;
    }
    at += count;
    to += count;
    bytes -= count;
  }
  return SUCCESS;
}

}  // namespace kscodec::jpeg2000
