#include "kscodec/jpeg2000/header.h"

#include "kscodec/jpeg2000/boxes.h"

#include <algorithm>
#include <array>

namespace kscodec::jpeg2000 {

namespace {

constexpr std::array<std::uint8_t, 12> kJp2Signature = {0, 0, 0, 0x0C, 0x6A, 0x50, 0x20, 0x20, 0x0D, 0x0A, 0x87, 0x0A};
constexpr std::array<std::uint8_t, 4> kCodeStreamStart = {0xFF, 0x4F, 0xFF, 0x51};
constexpr std::uint32_t kMostComponents = 16384;
constexpr std::uint32_t kMostBits = 38;

/** Of the size segment, with the start of the code stream in front of it; three bytes follow for each component. */
constexpr std::uint64_t kFixedPart = 42;
constexpr std::uint64_t kComponentBytes = 3;

template <std::size_t Count>
bool BeginsWith(Stream stream, const std::array<std::uint8_t, Count> &start) {
  return stream.size() >= Count && std::equal(start.begin(), start.end(), stream.begin());
}

/** The beginning of a source, as far as it goes. */
Stream BeginningOf(PieceReader &pieces, std::uint64_t at, std::uint64_t count) {
  return pieces.At(at, std::min(count, pieces.Has(at, 0) ? pieces.Size() - at : 0));
}

Component ComponentOf(Stream bytes) {
  return {(bytes[0] & 0x7FU) + 1, (bytes[0] & 0x80) != 0, bytes[1], bytes[2]};
}

/** The colour space of the first box colr: method, precedence, approximation, and the number of the space. */
void ReadSpace(PieceReader &pieces, const Box &box, Colors *colors) {
  constexpr std::uint32_t kEnumerated = 1;
  constexpr std::uint32_t kSycc = 18;
  if (box.bytes == 0) return;
  const Stream space = pieces.At(box.at, std::min<std::uint64_t>(box.bytes, 7));
  colors->hasProfile = space[0] != kEnumerated;
  if (colors->hasProfile || space.size() < 7) return;
  colors->space = U32(space, 3);
  colors->isSycc = colors->space == kSycc;
}

Colors ReadColors(PieceReader &pieces, const Box &boxes) {
  Colors colors;
  const std::optional<Box> palette = FindBox(pieces, boxes, BoxType("pclr"));
  // The number of entries, the number of columns, the depth of each column.
  if (palette && palette->bytes >= 4) {
    const Stream start = pieces.At(palette->at, 4);
    colors.paletteEntries = U16(start, 0);
    colors.paletteColumns = start[2];
    colors.paletteBits = (start[3] & 0x7Fu) + 1;
  }
  colors.hasChannelDefinition = FindBox(pieces, boxes, BoxType("cdef")).has_value();
  const std::optional<Box> space = FindBox(pieces, boxes, BoxType("colr"));
  if (space) ReadSpace(pieces, *space, &colors);
  return colors;
}

std::uint64_t DivideUp(std::uint64_t value, std::uint64_t by) {
  return (value + by - 1) / by;
}

/** Reads one axis of the size segment: its words are in pairs, one for each axis. */
Status ReadAxis(Stream segment, std::uint64_t at, Axis *axis) {
  const auto word = [&](std::uint64_t pair) { return std::uint64_t{U32(segment, at + 8 * pair)}; };
  *axis = {.start = word(1), .end = word(0), .tileStart = word(3), .tileStep = word(2)};
  if (axis->start >= axis->end || axis->tileStep == 0) return ERROR_FILE_FORMAT;
  // The first tile begins no later than the image, and holds some of it.
  if (axis->tileStart > axis->start || axis->tileStart + axis->tileStep <= axis->start) return ERROR_FILE_FORMAT;
  axis->tiles = DivideUp(axis->end - axis->tileStart, axis->tileStep);
  return SUCCESS;
}

Status ReadSize(PieceReader &pieces, const Box &codeStream, Size *size) {
  if (codeStream.bytes < kFixedPart) return ERROR_FILE_FORMAT;
  const Stream segment = pieces.At(codeStream.at, kFixedPart);
  if (!IsCodeStream(segment)) return ERROR_FILE_FORMAT;
  const std::uint32_t components = U16(segment, 40);
  if (components == 0 || components > kMostComponents) return ERROR_FILE_FORMAT;
  const std::uint64_t bytes = kComponentBytes * components;
  if (U16(segment, 4) != 38 + bytes || bytes > codeStream.bytes - kFixedPart) return ERROR_FILE_FORMAT;
  Status status = ReadAxis(segment, 8, &size->across);
  if (status == SUCCESS) status = ReadAxis(segment, 12, &size->down);
  if (status != SUCCESS) return status;
  const auto along = [](const Axis &axis) { return static_cast<std::uint32_t>(axis.end - axis.start); };
  size->width = along(size->across);
  size->height = along(size->down);
  size->tileWidth = static_cast<std::uint32_t>(std::min<std::uint64_t>(size->across.tileStep, size->width));
  size->tileHeight = static_cast<std::uint32_t>(std::min<std::uint64_t>(size->down.tileStep, size->height));
  constexpr std::uint64_t kMostTiles = 65535;
  const std::uint64_t across = size->across.tiles;
  if (across > kMostTiles || size->down.tiles > kMostTiles / across) return ERROR_FILE_FORMAT;
  size->tiles = across * size->down.tiles;
  size->components = components;
  size->bits = ComponentOf(pieces.At(codeStream.at + kFixedPart, kComponentBytes)).bits;
  if (size->bits > kMostBits) return ERROR_FILE_FORMAT;
  return SUCCESS;
}

/** Whether the image header box is about another picture than the code stream. */
bool Contradicts(PieceReader &pieces, const Box &boxes, const Size &size) {
  constexpr std::uint64_t kUsedPart = 10;
  const std::optional<Box> box = FindBox(pieces, boxes, BoxType("ihdr"));
  if (!box || box->bytes < kUsedPart) return false;
  const Stream used = pieces.At(box->at, kUsedPart);
  return U32(used, 0) != size.height || U32(used, 4) != size.width || U16(used, 8) != size.components;
}

Status ReadWhole(PieceReader &pieces, Header *header) {
  const Box all = {0, pieces.Size()};
  const bool isFile = IsJp2(BeginningOf(pieces, 0, kJp2Signature.size()));
  const std::optional<Box> codeStream = isFile ? FindBox(pieces, all, BoxType("jp2c")) : all;
  if (!codeStream) return ERROR_FILE_FORMAT;
  header->codeStreamAt = codeStream->at;
  header->codeStreamBytes = codeStream->bytes;
  const Status status = ReadSize(pieces, *codeStream, &header->size);
  if (status != SUCCESS || !isFile) return status;
  const Box boxes = FindBox(pieces, all, BoxType("jp2h")).value_or(Box());
  header->isJp2 = !Contradicts(pieces, boxes, header->size);
  if (!header->isJp2) return SUCCESS;
  header->boxesAt = boxes.at;
  header->boxesBytes = boxes.bytes;
  header->colors = ReadColors(pieces, boxes);
  return SUCCESS;
}

}  // namespace

bool IsJp2(Stream stream) {
  return BeginsWith(stream, kJp2Signature);
}

bool IsCodeStream(Stream stream) {
  return BeginsWith(stream, kCodeStreamStart);
}

Status ReadHeader(const ByteSource &source, Header *header) {
  *header = {};
  PieceReader pieces(source);
  const Status status = ReadWhole(pieces, header);
  return pieces.Check() == SUCCESS ? status : pieces.Check();
}

Status ReadComponents(const ByteSource &source, const Header &header, std::vector<Component> *components) {
  components->clear();
  PieceReader pieces(source);
  const Stream each = pieces.At(header.codeStreamAt + kFixedPart, kComponentBytes * header.size.components);
  if (pieces.Check() != SUCCESS) return pieces.Check();
  for (std::uint32_t i = 0; i < header.size.components; ++i) {
    components->push_back(ComponentOf(each.subspan(i * kComponentBytes, kComponentBytes)));
    const Component &component = components->back();
    if (component.bits > kMostBits || component.across == 0 || component.down == 0) return ERROR_FILE_FORMAT;
  }
  return SUCCESS;
}

}  // namespace kscodec::jpeg2000
