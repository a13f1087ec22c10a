#include "kscodec/jpeg2000/channels.h"

#include "kscodec/jpeg2000/boxes.h"

namespace kscodec::jpeg2000 {

namespace {

constexpr std::uint32_t kMostColors = 1024;

/** An integer of one to five bytes. */
std::int64_t ValueOf(Stream bytes, const Component &column) {
  std::uint64_t value = 0;
  for (const std::uint8_t byte : bytes) value = value << 8 | byte;
  value &= (std::uint64_t{1} << column.bits) - 1;
  const bool isNegative = column.isSigned && (value >> (column.bits - 1)) != 0;
  return static_cast<std::int64_t>(value) - (isNegative ? std::int64_t{1} << column.bits : 0);
}

/** The number of colours, the number of columns, the depth of each column, and the colours. */
bool ReadColors(Stream box, Palette *palette) {
  constexpr std::size_t kFixedPart = 3;
  constexpr std::uint32_t kMostBits = 38;
  if (box.size() < kFixedPart) return false;
  palette->size = U16(box, 0);
  const std::size_t columns = box[2];
  if (palette->size == 0 || palette->size > kMostColors || columns == 0) return false;
  if (box.size() < kFixedPart + columns) return false;
  for (const std::uint8_t depth : box.subspan(kFixedPart, columns)) {
    palette->columns.push_back({(depth & 0x7FU) + 1, (depth & 0x80) != 0});
    if (palette->columns.back().bits > kMostBits) return false;
  }
  Stream rest = box.subspan(kFixedPart + columns);
  for (std::uint32_t color = 0; color < palette->size; ++color) {
    for (const Component &column : palette->columns) {
      const std::size_t bytes = (column.bits + 7) / 8;
      if (rest.size() < bytes) return false;
      palette->values.push_back(ValueOf(rest.first(bytes), column));
      rest = rest.subspan(bytes);
    }
  }
  return true;
}

/** Four bytes for each channel: the component, whether the palette is used, and its column. */
bool ReadMapping(Stream box, std::uint32_t components, Palette *palette) {
  constexpr std::size_t kChannelBytes = 4;
  for (; box.size() >= kChannelBytes; box = box.subspan(kChannelBytes)) {
    const Channel channel = {U16(box, 0), box[2] == 1, box[3]};
    if (channel.component >= components) return false;
    if (channel.isMapped && channel.column >= palette->columns.size()) return false;
    palette->channels.push_back(channel);
  }
  return !palette->channels.empty();
}

/** The contents of a box of the JP2 header; nothing where there is none. */
Stream Contents(PieceReader &pieces, const Header &header, std::uint32_t type) {
  // More than a palette of the most colours and columns.
  constexpr std::uint64_t kMostBytes = 2 << 20;
  const std::optional<Box> box = FindBox(pieces, {header.boxesAt, header.boxesBytes}, type);
  return box ? pieces.At(box->at, std::min(box->bytes, kMostBytes)) : Stream();
}

}  // namespace

Status ReadPalette(const ByteSource &source, const Header &header, Palette *palette) {
  *palette = {};
  PieceReader pieces(source);
  const bool hasColors = ReadColors(Contents(pieces, header, BoxType("pclr")), palette);
  const bool isMapped =
      hasColors && ReadMapping(Contents(pieces, header, BoxType("cmap")), header.size.components, palette);
  if (pieces.Check() != SUCCESS) return pieces.Check();
  return isMapped ? SUCCESS : ERROR_FILE_FORMAT;
}

std::vector<ChannelUse> ReadChannelUses(const ByteSource &source, const Header &header) {
  constexpr std::size_t kUseBytes = 6;
  std::vector<ChannelUse> uses;
  PieceReader pieces(source);
  Stream box = Contents(pieces, header, BoxType("cdef"));
  if (box.size() < 2) return uses;
  for (box = box.subspan(2); box.size() >= kUseBytes; box = box.subspan(kUseBytes)) {
    uses.push_back({U16(box, 0), U16(box, 2), U16(box, 4)});
  }
  return uses;
}

}  // namespace kscodec::jpeg2000
