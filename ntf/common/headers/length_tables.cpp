#include "headers/length_tables.h"

#include "internal/ksclasses_.h"
#include "table/fields.h"
#include "table/header_reader.h"
#include "table/header_writer.h"

#include <algorithm>

namespace ksntfx {

namespace {

/** In the order of SegmentKind. */
constexpr const LengthTable *kOfKinds[] = {&kImageLengths, &kGraphicLengths, &kLabelLengths, &kTextLengths,
                                           &kDataExtensionLengths};

/** Makes a table for `count` entries, of which the first `kept` are those of the table before it. */
template <class Length>
bool RenewTable(NitfHeader &header, Length *NitfHeader::*table, std::uint32_t count, std::uint32_t kept) {
  if (table == nullptr) return true;
  KsArray<Length> renewed;
  if (count != 0 && !renewed.Allocate(count)) return false;
  if (header.*table != nullptr) std::copy_n(header.*table, std::min(count, kept), renewed.Get());
  KsFreeAndClear(header.*table);
  header.*table = renewed.Release();
  return true;
}

/** Without memory no table is longer than it was before, or than it is now. */
bool RenewTables(NitfHeader &header, const LengthTable &lengths, std::uint32_t count) {
  const std::uint32_t kept = header.*lengths.held;
  header.*lengths.held = std::min(count, kept);
  const bool made = RenewTable(header, lengths.subheader.table, count, kept) &&
                    RenewTable(header, lengths.subheader.outTable, count, kept) &&
                    RenewTable(header, lengths.data.table, count, kept) &&
                    RenewTable(header, lengths.data.outTable, count, kept) &&
                    RenewTable(header, lengths.longData, count, kept);
  if (made) header.*lengths.held = count;
  return made;
}

void SetEntry(NitfHeader &header, const LengthColumn &column, std::uint32_t index, std::uint32_t length) {
  (header.*column.table)[index] = length;
  if (column.outTable != nullptr) (header.*column.outTable)[index] = length;
}

Status ReadLength(HeaderReader &reader, const LengthColumn &column, std::uint32_t index) {
  std::uint32_t length = 0;
  const Status status = reader.TakeNumber(column.width, column.nineIsUnknown, &length);
  if (status == SUCCESS) SetEntry(reader.As<NitfHeader>(), column, index, length);
  return status;
}

Status WriteLength(HeaderWriter &writer, const LengthTable &lengths, const LengthColumn &column, std::uint32_t index) {
  const bool asRead = column.outTable == nullptr || column.writtenAsRead;
  const LengthArray table = asRead ? column.table : column.outTable;
  const std::uint32_t length = EntryOf(writer.As<NitfHeader>(), lengths, table, index);
  return writer.Number(static_cast<std::int32_t>(length), column.width);
}

template <class Length>
bool GrowTable(NitfHeader &header, Length *NitfHeader::*table, std::uint32_t entries) {
  if (table == nullptr) return true;
  void *const grown = KsRealloc(header.*table, std::uint64_t{entries} * sizeof(Length), __LINE__, __FILE__);
  if (grown != nullptr) header.*table = static_cast<Length *>(grown);
  return grown != nullptr;
}

bool GrowColumn(NitfHeader &header, const LengthColumn &column, std::uint32_t entries) {
  return GrowTable(header, column.table, entries) && GrowTable(header, column.outTable, entries);
}

void DropColumn(NitfHeader &header, const LengthColumn &column) {
  KsFreeAndClear(header.*column.table);
  if (column.outTable != nullptr) KsFreeAndClear(header.*column.outTable);
}

}  // namespace

const LengthTable &LengthsOf(SegmentKind kind) {
  return *kOfKinds[static_cast<std::size_t>(kind)];
}

std::uint32_t EntryOf(const NitfHeader &header, const LengthTable &lengths, LengthArray table, std::uint32_t index) {
  return header.*table == nullptr || index >= header.*lengths.count ? 0 : (header.*table)[index];
}

Status ReadLengths(HeaderReader &reader, const LengthTable &lengths) {
  auto &header = reader.As<NitfHeader>();
  const std::uint32_t count = header.*lengths.count;
  header.*lengths.count = 0;
  // More is a number with a minus sign, for which there is no memory.
  if (count > kMostSegments) return ERROR_NO_MEMORY;
  if (!RenewTables(header, lengths, count)) return ERROR_NO_MEMORY;
  header.*lengths.count = count;
  std::uint32_t cut = 0;
  for (std::uint32_t index = 0; index < count; ++index) {
    Status status = ReadLength(reader, lengths.subheader, index);
    if (status == SUCCESS) status = ReadLength(reader, lengths.data, index);
    if (status != SUCCESS) return status;
    if (lengths.longData == nullptr) continue;
    (header.*lengths.longData)[index] = static_cast<std::uint64_t>(std::max<std::int64_t>(reader.LongNumber(), 0));
    if (reader.SawBeyond()) cut = 1;
  }
  if (lengths.longData != nullptr) header.imageLengthsCut = cut;
  return SUCCESS;
}

Status WriteLengths(HeaderWriter &writer, const LengthTable &lengths, std::uint32_t rows) {
  for (std::uint32_t index = 0; index < rows; ++index) {
    Status status = WriteLength(writer, lengths, lengths.subheader, index);
    if (status == SUCCESS) status = WriteLength(writer, lengths, lengths.data, index);
    if (status != SUCCESS) return status;
  }
  return SUCCESS;
}

void WriteAsRead(NitfHeader *header, const LengthTable &lengths, std::uint32_t listed) {
  const LengthColumn &column = lengths.data;
  if (header->*column.table == nullptr || header->*column.outTable == nullptr) return;
  std::copy_n(header->*column.table, std::min(listed, header->*lengths.count), header->*column.outTable);
}

void FreeLengths(NitfHeader *header) {
  for (const LengthTable *const lengths : kOfKinds) RenewTables(*header, *lengths, 0);
  RenewTables(*header, kReservedLengths, 0);
}

Status GrowLengths(NitfHeader *header, const LengthTable &lengths) {
  const std::uint32_t needed = header->*lengths.count + 1;
  if (needed <= header->*lengths.held) return SUCCESS;
  const bool grown = GrowColumn(*header, lengths.subheader, needed) && GrowColumn(*header, lengths.data, needed) &&
                     GrowTable(*header, lengths.longData, needed);
  if (!grown) {
    // Tables that grew are as good as before; where there were none, none are left.
    if (header->*lengths.held == 0) {
      DropColumn(*header, lengths.subheader);
      DropColumn(*header, lengths.data);
      if (lengths.longData != nullptr) KsFreeAndClear(header->*lengths.longData);
    }
    return ERROR_NO_MEMORY;
  }
  header->*lengths.held = needed;
  return SUCCESS;
}

void AddLengths(NitfHeader *header, const LengthTable &lengths, std::uint32_t subheaderBytes, std::uint32_t dataBytes) {
  const std::uint32_t rowBytes = lengths.subheader.width + lengths.data.width;
  const std::uint32_t index = header->*lengths.count;
  SetEntry(*header, lengths.subheader, index, subheaderBytes);
  SetEntry(*header, lengths.data, index, dataBytes);
  if (lengths.longData != nullptr) (header->*lengths.longData)[index] = dataBytes;
  header->headerLengthOut += rowBytes;
  ChangeFileLength(header, std::int64_t{rowBytes} + subheaderBytes + dataBytes);
  header->*lengths.count += 1;
}

void ChangeSubheaderLength(NitfHeader *header, const LengthTable &lengths, std::uint32_t index, std::int32_t bytes) {
  std::uint32_t *const table = header->*lengths.subheader.outTable;
  if (bytes == 0 || table == nullptr || index >= header->*lengths.count) return;
  table[index] += static_cast<std::uint32_t>(bytes);
  ChangeFileLength(header, bytes);
}

void ReplaceDataLength(NitfHeader *header, const LengthTable &lengths, std::uint32_t index, std::uint32_t bytes) {
  std::uint32_t *const table = header->*lengths.data.outTable;
  if (table == nullptr || index >= header->*lengths.count) return;
  ChangeFileLength(header, std::int64_t{bytes} - table[index]);
  table[index] = bytes;
}

void ChangeFileLength(NitfHeader *header, std::int64_t bytes) {
  // Files may be longer than the numbers beside the text can tell.
  const std::int64_t length = std::max<std::int64_t>(ParseLongNumber(BufferText(header->FL, 12)) + bytes, 0);
  FormatBounded(header->FL, sizeof header->FL, "%012lld", static_cast<long long>(length));
  header->fileLength = header->fileLengthOut = static_cast<std::uint32_t>(ParseNumber(header->FL));
}

}  // namespace ksntfx
