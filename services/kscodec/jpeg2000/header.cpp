#include "kscodec/jpeg2000/header.h"

#include <algorithm>
#include <array>
#include <optional>

namespace kscodec::jpeg2000 {

namespace {

constexpr std::array<std::uint8_t, 12> kJp2Signature = {0, 0, 0, 0x0C, 0x6A, 0x50, 0x20, 0x20, 0x0D, 0x0A, 0x87, 0x0A};
constexpr std::array<std::uint8_t, 4> kCodeStreamStart = {0xFF, 0x4F, 0xFF, 0x51};
constexpr std::uint32_t kMostComponents = 16384;
constexpr std::uint32_t kMostBits = 38;

template <std::size_t Count>
bool BeginsWith(Stream stream, const std::array<std::uint8_t, Count> &start) {
  return stream.size() >= Count && std::equal(start.begin(), start.end(), stream.begin());
}

/** Whether `count` bytes follow at `at`, which is not beyond the end. */
bool Has(Stream stream, std::uint64_t at, std::uint64_t count) {
  return count <= stream.size() - at;
}

std::uint32_t U16(Stream stream, std::uint64_t at) {
  return std::uint32_t{stream[at]} << 8 | stream[at + 1];
}

std::uint32_t U32(Stream stream, std::uint64_t at) {
  return U16(stream, at) << 16 | U16(stream, at + 2);
}

constexpr std::uint32_t BoxType(const char (&name)[5]) {
  std::uint32_t type = 0;
  for (int i = 0; i < 4; ++i) type = type << 8 | static_cast<std::uint8_t>(name[i]);
  return type;
}

/** The contents of the first box of a type, cut at the end of the stream; nothing where there is none. */
std::optional<Stream> FindBox(Stream boxes, std::uint32_t type) {
  std::uint64_t at = 0;
  while (Has(boxes, at, 8)) {
    std::uint64_t length = U32(boxes, at);
    std::uint64_t head = 8;
    if (length == 1) {
      // The length follows the type, in 64 bits.
      if (!Has(boxes, at, 16)) return std::nullopt;
      length = std::uint64_t{U32(boxes, at + 8)} << 32 | U32(boxes, at + 12);
      head = 16;
    }
    const std::uint64_t left = boxes.size() - at;
    if (length == 0) length = left;
    if (length < head) return std::nullopt;
    length = std::min(length, left);
    if (U32(boxes, at + 4) == type) return boxes.subspan(at + head, length - head);
    at += length;
  }
  return std::nullopt;
}

Colors ReadColors(Stream boxes) {
  constexpr std::uint32_t kEnumerated = 1;
  constexpr std::uint32_t kSycc = 18;
  Colors colors;
  const std::optional<Stream> palette = FindBox(boxes, BoxType("pclr"));
  // The number of entries, the number of columns, the depth of each column.
  if (palette && palette->size() >= 4) {
    colors.paletteColumns = (*palette)[2];
    colors.paletteBits = ((*palette)[3] & 0x7Fu) + 1;
  }
  colors.hasChannelDefinition = FindBox(boxes, BoxType("cdef")).has_value();
  // Method, precedence, approximation, and the number of the colour space.
  const std::optional<Stream> space = FindBox(boxes, BoxType("colr"));
  colors.isSycc = space && space->size() >= 7 && (*space)[0] == kEnumerated && U32(*space, 3) == kSycc;
  return colors;
}

std::uint64_t DivideUp(std::uint64_t value, std::uint64_t by) {
  return (value + by - 1) / by;
}

Status ReadSize(Stream codeStream, Size *size) {
  constexpr std::uint64_t kFixedPart = 42;
  if (!IsCodeStream(codeStream) || codeStream.size() < kFixedPart) return ERROR_FILE_FORMAT;
  const auto word = [&](std::uint64_t at) { return std::uint64_t{U32(codeStream, at)}; };
  const std::uint64_t right = word(8);
  const std::uint64_t bottom = word(12);
  const std::uint64_t left = word(16);
  const std::uint64_t top = word(20);
  const std::uint64_t tileWidth = word(24);
  const std::uint64_t tileHeight = word(28);
  const std::uint64_t tilesLeft = word(32);
  const std::uint64_t tilesTop = word(36);
  const std::uint32_t components = U16(codeStream, 40);
  if (components == 0 || components > kMostComponents) return ERROR_FILE_FORMAT;
  if (U16(codeStream, 4) != 38 + 3 * components || !Has(codeStream, kFixedPart, 3 * components))
    return ERROR_FILE_FORMAT;
  if (left >= right || top >= bottom || tileWidth == 0 || tileHeight == 0) return ERROR_FILE_FORMAT;
  // The first tile begins no later than the image, and holds some of it.
  if (tilesLeft > left || tilesTop > top) return ERROR_FILE_FORMAT;
  if (tilesLeft + tileWidth <= left || tilesTop + tileHeight <= top) return ERROR_FILE_FORMAT;
  size->width = static_cast<std::uint32_t>(right - left);
  size->height = static_cast<std::uint32_t>(bottom - top);
  size->tileWidth = static_cast<std::uint32_t>(std::min<std::uint64_t>(tileWidth, size->width));
  size->tileHeight = static_cast<std::uint32_t>(std::min<std::uint64_t>(tileHeight, size->height));
  const std::uint64_t across = DivideUp(right - tilesLeft, tileWidth);
  const std::uint64_t down = DivideUp(bottom - tilesTop, tileHeight);
  constexpr std::uint64_t kMostTiles = 65535;
  if (across > kMostTiles || down > kMostTiles / across) return ERROR_FILE_FORMAT;
  size->tiles = across * down;
  size->components = components;
  size->bits = (codeStream[kFixedPart] & 0x7Fu) + 1;
  if (size->bits > kMostBits) return ERROR_FILE_FORMAT;
  return SUCCESS;
}

/** Whether the image header box is about another picture than the code stream. */
bool Contradicts(Stream boxes, const Size &size) {
  constexpr std::uint64_t kUsedPart = 10;
  const std::optional<Stream> box = FindBox(boxes, BoxType("ihdr"));
  if (!box || box->size() < kUsedPart) return false;
  return U32(*box, 0) != size.height || U32(*box, 4) != size.width || U16(*box, 8) != size.components;
}

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

/** Gathers what the marker segments of the main header and of tile parts say. */
class CodingReader {
 public:
  explicit CodingReader(const Header &source) : size(source.size) {}

  void ReadDefault(Stream segment, bool inTile) {
    if (segment.size() < 5) return;
    layers = U16(segment, 2);
    coding.mixesComponents = coding.mixesComponents || segment[4] != 0;
    Add(segment.subspan(5), (segment[0] & 1) != 0, size.components, inTile);
  }

  void ReadComponent(Stream segment, bool inTile) {
    const std::uint64_t number = size.components < 257 ? 1 : 2;
    if (segment.size() <= number) return;
    Add(segment.subspan(number + 1), (segment[number] & 1) != 0, 1, inTile);
  }

  const Coding &Result() const { return coding; }

 private:
  void Add(Stream style, bool hasSizes, std::uint32_t components, bool inTile) {
    const double tiles = inTile ? 1 : static_cast<double>(size.tiles);
    coding.codeBlocks += CodeBlocksOf(style, size.tileWidth, size.tileHeight) * tiles * components;
    coding.packets += PrecinctsOf(style, hasSizes, size.tileWidth, size.tileHeight) * tiles * layers * components;
  }

  const Size &size;
  std::uint32_t layers = 1;
  Coding coding;
};

}  // namespace

bool IsJp2(Stream stream) {
  return BeginsWith(stream, kJp2Signature);
}

bool IsCodeStream(Stream stream) {
  return BeginsWith(stream, kCodeStreamStart);
}

Status ReadHeader(Stream stream, Header *header) {
  *header = {};
  header->stream = header->codeStream = stream;
  if (!IsJp2(stream)) return ReadSize(stream, &header->size);
  const std::optional<Stream> codeStream = FindBox(stream, BoxType("jp2c"));
  if (!codeStream) return ERROR_FILE_FORMAT;
  header->codeStream = *codeStream;
  const Status status = ReadSize(*codeStream, &header->size);
  if (status != SUCCESS) return status;
  const Stream boxes = FindBox(stream, BoxType("jp2h")).value_or(Stream());
  header->isJp2 = !Contradicts(boxes, header->size);
  if (header->isJp2) {
    header->colors = ReadColors(boxes);
  } else {
    header->stream = *codeStream;
  }
  return SUCCESS;
}

Coding ReadCoding(const Header &header) {
  enum Marker : std::uint32_t { kCod = 0xFF52, kCoc = 0xFF53, kSot = 0xFF90, kSod = 0xFF93, kEoc = 0xFFD9 };
  const Stream stream = header.codeStream;
  CodingReader reader(header);
  std::uint64_t at = 2;
  std::uint64_t tilePartEnd = 0;
  bool inTile = false;
  while (Has(stream, at, 4)) {
    const std::uint32_t marker = U16(stream, at);
    if (marker == kEoc) break;
    if (marker == kSod) {
      // Compressed data, up to the end of the tile part.
      if (tilePartEnd <= at || tilePartEnd > stream.size()) break;
      at = tilePartEnd;
      continue;
    }
    const std::uint32_t length = U16(stream, at + 2);
    if (length < 2 || !Has(stream, at + 2, length)) break;
    const Stream segment = stream.subspan(at + 4, length - 2);
    if (marker == kSot && segment.size() >= 6) {
      const std::uint64_t tilePart = U32(segment, 2);
      tilePartEnd = tilePart == 0 ? stream.size() : at + tilePart;
      inTile = true;
    }
    if (marker == kCod) reader.ReadDefault(segment, inTile);
    if (marker == kCoc) reader.ReadComponent(segment, inTile);
    at += 2 + std::uint64_t{length};
  }
  return reader.Result();
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
  const auto bytes = static_cast<double>(header.codeStream.size());
  const double samples = static_cast<double>(size.width) * size.height * size.components;
  if (samples > kSamplesOfAByte * bytes + kSamplesOfNone) return false;
  if (static_cast<double>(size.tiles) * (kTilePartHeader + size.components) > bytes) return false;
  if (coding.codeBlocks > kCodeBlocksOfAByte * bytes + kCodeBlocksOfNone) return false;
  return coding.packets <= kPacketsOfAByte * bytes + kPacketsOfNone;
}

}  // namespace kscodec::jpeg2000
