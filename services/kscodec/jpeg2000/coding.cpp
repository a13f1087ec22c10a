#include "kscodec/jpeg2000/coding.h"

#include "kscodec/jpeg2000/boxes.h"

#include <algorithm>
#include <utility>

namespace kscodec::jpeg2000 {

namespace {

/**
 * Precincts of one component of a picture or tile: what a segment that begins with the number of decomposition levels
 * says (ISO/IEC 15444-1, table A.20). The sizes of precincts follow it where `hasSizes`.
 */
double PrecinctsOf(Stream style, bool hasSizes, std::uint32_t width, std::uint32_t height) {
  constexpr std::uint64_t kSizes = 5;
  constexpr std::uint32_t kMostLevels = 32;
  if (style.empty() || style[0] > kMostLevels) return 0;
  const std::uint32_t levels = style[0];
  double precincts = 0;
  for (std::uint32_t resolution = 0; resolution <= levels; ++resolution) {
    const bool given = hasSizes && kSizes + resolution < style.size();
    const std::uint32_t exponents = given ? style[kSizes + resolution] : 0xFFu;
    const std::uint32_t reduction = levels - resolution;
    const auto along = [&](std::uint64_t extent, std::uint32_t exponent) {
      return static_cast<double>((extent >> reduction >> exponent) + 1);
    };
    precincts += along(width, exponents & 0xF) * along(height, exponents >> 4);
  }
  return precincts;
}

/** About the code blocks of a component: their sides follow the number of levels, as exponents less 2. */
double CodeBlocksOf(Stream style, std::uint32_t width, std::uint32_t height) {
  if (style.size() < 3) return 0;
  const auto along = [](std::uint32_t extent, std::uint32_t exponent) {
    return static_cast<double>((std::uint64_t{extent} >> (exponent % 16 + 2)) + 1);
  };
  return along(width, style[1]) * along(height, style[2]);
}

/** Goes from marker segment to marker segment, and over compressed data by the lengths of tile parts. */
class CodingReader {
 public:
  CodingReader(const ByteSource &source, const Header &header)
      : pieces(source), size(header.size), start(header.codeStreamAt), bytes(header.codeStreamBytes) {}

  Coding Read() {
    std::uint64_t at = kStartOfCodeStream;
    while (Has(at, 2)) {
      const std::uint32_t marker = U16(pieces.At(start + at, 2), 0);
      if (marker == kEoc) coding.partsAreKnown = true;
      if (marker == kEoc || !(marker == kSod ? SkipData(&at) : ReadSegment(marker, &at))) break;
    }
    return std::move(coding);
  }

 private:
  enum Marker : std::uint32_t {
    kCod = 0xFF52,
    kCoc = 0xFF53,
    kPpm = 0xFF60,
    kSot = 0xFF90,
    kSod = 0xFF93,
    kEoc = 0xFFD9
  };
  static constexpr std::uint64_t kStartOfCodeStream = 2;

  bool Has(std::uint64_t at, std::uint64_t count) const { return at <= bytes && count <= bytes - at; }

  /** Compressed data go up to the end of the tile part. */
  bool SkipData(std::uint64_t *at) {
    if (tilePartEnd <= *at) return false;
    if (tilePartEnd >= bytes) coding.partsAreKnown = true;
    *at = tilePartEnd;
    return tilePartEnd < bytes;
  }

  bool ReadSegment(std::uint32_t marker, std::uint64_t *at) {
    if (!Has(*at, 4)) return false;
    const std::uint32_t length = U16(pieces.At(start + *at + 2, 2), 0);
    if (length < 2 || !Has(*at + 2, length)) return false;
    if (marker == kCod || marker == kCoc || marker == kSot) {
      const Stream segment = pieces.At(start + *at + 4, length - 2);
      if (marker == kCod) ReadDefault(segment);
      if (marker == kCoc) ReadComponent(segment);
      if (marker == kSot && segment.size() >= kTilePartFields) StartTilePart(segment, *at);
    }
    if (marker == kPpm) coding.packsHeaders = true;
    *at += 2 + std::uint64_t{length};
    return true;
  }

  /** The number of the tile, the length of the part from its marker on, its number, and how many parts there are. */
  void StartTilePart(Stream segment, std::uint64_t at) {
    TilePart part = {.at = at,
                     .length = U32(segment, 2),
                     .tile = static_cast<std::uint16_t>(U16(segment, 0)),
                     .number = segment[6],
                     .ofNumber = segment[7]};
    tilePartEnd = part.length == 0 ? bytes : at + part.length;
    part.bytes = std::min(tilePartEnd, bytes) - at;
    if (part.length == 0) {
      // It goes up to the end of the code stream, whose marker isn't its own.
      if (U16(pieces.At(start + bytes - 2, 2), 0) == kEoc) part.bytes -= 2;
      part.length = static_cast<std::uint32_t>(std::min<std::uint64_t>(part.bytes, UINT32_MAX));
    }
    if (!inTile) coding.mainHeaderBytes = at;
    inTile = true;
    coding.parts.push_back(part);
  }

  void ReadDefault(Stream segment) {
    if (segment.size() < 5) return;
    layers = U16(segment, 2);
    coding.mixesComponents = coding.mixesComponents || segment[4] != 0;
    Add(segment.subspan(5), (segment[0] & 1) != 0, size.components);
  }

  void ReadComponent(Stream segment) {
    const std::uint64_t number = size.components < 257 ? 1 : 2;
    if (segment.size() <= number) return;
    Add(segment.subspan(number + 1), (segment[number] & 1) != 0, 1);
  }

  void Add(Stream style, bool hasSizes, std::uint32_t components) {
    const double tiles = inTile ? 1 : static_cast<double>(size.tiles);
    coding.codeBlocks += CodeBlocksOf(style, size.tileWidth, size.tileHeight) * tiles * components;
    coding.packets += PrecinctsOf(style, hasSizes, size.tileWidth, size.tileHeight) * tiles * layers * components;
    if (!style.empty()) coding.levels = std::min<std::uint32_t>(coding.levels, style[0]);
  }

  static constexpr std::size_t kTilePartFields = 8;

  PieceReader pieces;
  const Size &size;
  std::uint64_t start;
  std::uint64_t bytes;
  std::uint64_t tilePartEnd = 0;
  bool inTile = false;
  std::uint32_t layers = 1;
  Coding coding;
};

}  // namespace

Coding ReadCoding(const ByteSource &source, const Header &header) {
  return CodingReader(source, header).Read();
}

bool IsPlausible(const Header &header, const Coding &coding) {
  constexpr double kSamplesOfAByte = 1024;
  constexpr double kSamplesOfNone = 64 << 20;
  constexpr double kTilePartHeader = 14;
  constexpr double kPacketsOfAByte = 8;
  constexpr double kPacketsOfNone = 65536;
  constexpr double kCodeBlocksOfAByte = 8;
  constexpr double kCodeBlocksOfNone = 262144;
  const Size &size = header.size;
  const auto bytes = static_cast<double>(header.codeStreamBytes);
  const double samples = static_cast<double>(size.width) * size.height * size.components;
  if (samples > kSamplesOfAByte * bytes + kSamplesOfNone) return false;
  if (static_cast<double>(size.tiles) * (kTilePartHeader + size.components) > bytes) return false;
  if (coding.codeBlocks > kCodeBlocksOfAByte * bytes + kCodeBlocksOfNone) return false;
  return coding.packets <= kPacketsOfAByte * bytes + kPacketsOfNone;
}

}  // namespace kscodec::jpeg2000
