#include "ntfhdr.h"

#include "color_field.h"
#include "fields.h"
#include "headerreader.h"
#include "internal/ksclasses_.h"
#include "ksntfx.h"
#include "length_tables.h"
#include "nitffile.h"
#include "platform.h"
#include "savenitf.h"
#include "strmfhdr.h"

#include <algorithm>
#include <cstring>

namespace {

NitfHeader &Header(HeaderReader &reader) {
  return reader.As<NitfHeader>();
}

std::int32_t CheckMagic(HeaderReader &reader, std::string_view text) {
  if (text != "NITF" && text != "NSIF") return ERROR_FILE_FORMAT;
  Header(reader).valid = 1;
  return SUCCESS;
}

std::int32_t CheckVersion(HeaderReader &, std::string_view text) {
  return text == "02.10" ? static_cast<std::int32_t>(SUCCESS) : NITF_UNSUPPORTED_VERSION;
}

std::int32_t CheckComplianceLevel(HeaderReader &reader, std::string_view text) {
  if (text != "03") {
    platform::MessageBoxA(nullptr, "Unsupported CLEVEL", "Error", platform::MB_OK);
    return NITF_UNSUPPORTED_CLEVEL;
  }
  Header(reader).complianceLevel = 3;
  return SUCCESS;
}

std::int32_t SetBothFileLengths(HeaderReader &reader, std::string_view text) {
  Header(reader).fileLength = Header(reader).fileLengthOut = static_cast<std::uint32_t>(ParseNumber(text));
  return SUCCESS;
}

std::int32_t SetBothHeaderLengths(HeaderReader &reader, std::string_view text) {
  Header(reader).headerLength = Header(reader).headerLengthOut = static_cast<std::uint32_t>(ParseNumber(text));
  return SUCCESS;
}

std::int32_t CheckNoReservedSegments(HeaderReader &, std::string_view text) {
  return text == "000" ? SUCCESS : ERROR_FILE_FORMAT;
}

bool RenewTable(NitfHeader &header, std::uint32_t *NitfHeader::*table, std::uint32_t count) {
  if (table == nullptr) return true;
  KsFreeAndClear(header.*table);
  if (count == 0) return true;
  header.*table = static_cast<std::uint32_t *>(KsCalloc(count, sizeof(std::uint32_t), __LINE__, __FILE__));
  return header.*table != nullptr;
}

bool RenewTables(NitfHeader &header, const LengthTable &lengths, std::uint32_t count) {
  header.*lengths.held = 0;
  const bool made = RenewTable(header, lengths.subheader.table, count) &&
                    RenewTable(header, lengths.subheader.outTable, count) &&
                    RenewTable(header, lengths.data.table, count) && RenewTable(header, lengths.data.outTable, count);
  if (made) header.*lengths.held = count;
  return made;
}

std::int32_t ReadLength(HeaderReader &reader, const LengthColumn &column, std::uint32_t index) {
  NitfHeader &header = Header(reader);
  std::uint32_t length = 0;
  const std::int32_t status = reader.TakeNumber(column.width, column.nineIsUnknown, &length);
  if (status != SUCCESS) return status;
  (header.*column.table)[index] = length;
  if (column.outTable != nullptr) (header.*column.outTable)[index] = length;
  return SUCCESS;
}

template <const LengthTable &lengths>
std::int32_t ReadLengths(HeaderReader &reader) {
  NitfHeader &header = Header(reader);
  const std::uint32_t count = header.*lengths.count;
  // Between the old tables' release and the new ones' creation no table may be thought to be longer than it is.
  header.*lengths.count = 0;
  // More is a number with a minus sign, for which no file is long enough.
  if (count > kMostSegments) return ERROR_FILE_READ;
  if (!RenewTables(header, lengths, count)) return ERROR_NO_MEMORY;
  header.*lengths.count = count;
  for (std::uint32_t index = 0; index < count; ++index) {
    std::int32_t status = ReadLength(reader, lengths.subheader, index);
    if (status == SUCCESS) status = ReadLength(reader, lengths.data, index);
    if (status != SUCCESS) return status;
  }
  return SUCCESS;
}

std::int32_t ReadLabelLengths(HeaderReader &reader) {
  return reader.Nitf20() ? ReadLengths<kLabelLengths>(reader) : static_cast<std::int32_t>(SUCCESS);
}

const NitfHeader &Header(const HeaderWriter &writer) {
  return writer.As<NitfHeader>();
}

/** The number in the text FL, of up to 12 digits; files may be longer than 32 bits tell. */
std::int32_t WriteFileLength(HeaderWriter &writer) {
  writer.Save().fileLengthFieldOffset = static_cast<std::uint32_t>(writer.Written());
  return writer.Number(ParseLongNumber(Header(writer).FL), 12);
}

std::int32_t WriteHeaderLength(HeaderWriter &writer) {
  writer.Save().imageTableOffset = static_cast<std::uint32_t>(writer.Written()) + 6 + 3;
  return writer.Number(static_cast<std::int32_t>(Header(writer).headerLengthOut), 6);
}

template <SegmentKind kind>
std::int32_t WriteCount(HeaderWriter &writer) {
  return writer.Number(CountSegments(&writer.File(), kind), 3);
}

std::int32_t WriteLength(HeaderWriter &writer, const LengthTable &lengths, const LengthColumn &column,
                         std::uint32_t index) {
  NitfHeader &header = writer.File().header;
  const std::uint32_t *const table =
      header.*(column.outTable != nullptr && !column.writtenAsRead ? column.outTable : column.table);
  const bool listed = table != nullptr && index < header.*lengths.count;
  const std::uint32_t length = listed ? table[index] : 0;
  if (listed && column.writtenAsRead && header.*column.outTable != nullptr) (header.*column.outTable)[index] = length;
  return writer.Number(static_cast<std::int32_t>(length), column.width);
}

std::int32_t WriteLengths(HeaderWriter &writer, const LengthTable &lengths, std::uint32_t rows) {
  for (std::uint32_t index = 0; index < rows; ++index) {
    std::int32_t status = WriteLength(writer, lengths, lengths.subheader, index);
    if (status == SUCCESS) status = WriteLength(writer, lengths, lengths.data, index);
    if (status != SUCCESS) return status;
  }
  return SUCCESS;
}

/** A row for each image in the list. */
std::int32_t WriteImageLengths(HeaderWriter &writer) {
  return WriteLengths(writer, kImageLengths, CountImages(&writer.File()));
}

/** A row for each segment in the list, or for each entry of the table, whichever are more. */
template <const LengthTable &lengths, SegmentKind kind>
std::int32_t WriteListedLengths(HeaderWriter &writer) {
  const std::uint32_t count = CountSegments(&writer.File(), kind);
  return WriteLengths(writer, lengths, std::max(count, Header(writer).*lengths.count));
}

std::int32_t WriteLabelLengths(HeaderWriter &writer) {
  if (!writer.Nitf20()) return SUCCESS;
  return WriteListedLengths<kLabelLengths, SegmentKind::Label>(writer);
}

/** A row for each entry of the table. */
template <const LengthTable &lengths>
std::int32_t WriteTableLengths(HeaderWriter &writer) {
  return WriteLengths(writer, lengths, Header(writer).*lengths.count);
}

using Background = ColorField<&NitfHeader::backgroundColorValue>;

constexpr HeaderRow kRows[] = {
    TextRow(NITF_TEXT(NitfHeader, FHDR), 4).Default("NITF").Then(CheckMagic),
    TextRow(NITF_TEXT(NitfHeader, FVER), 5).Default("02.10").Then(CheckVersion),
    TextRow(NITF_TEXT(NitfHeader, CLEVEL), 2).Default("03").Digits().Then(CheckComplianceLevel),
    TextRow(NITF_TEXT(NitfHeader, STYPE), 4).Default("BF01"),
    TextRow(NITF_TEXT(NitfHeader, OSTAID), 10),
    TextRow(NITF_TEXT(NitfHeader, FDT), 14).Default("20050101010101"),
    TextRow(NITF_TEXT(NitfHeader, FTITLE), 80).Blank(),
    SecurityRow("F", offsetof(NitfHeader, security), kCheckClassification),
    TextRow(NITF_TEXT(NitfHeader, FSCOP), 5).Digits(),
    TextRow(NITF_TEXT(NitfHeader, FSCPYS), 5).Digits(),
    TextRow(NITF_TEXT(NitfHeader, ENCRYP), 1).Digits(),
    TextRow(NITF_TEXT(NitfHeader, FBKGC), 3).Only21().Binary().Then(Background::Read).Writes(Background::Write),
    TextRow(NITF_TEXT(NitfHeader, ONAME), 24).In20(27).Blank(),
    TextRow(NITF_TEXT(NitfHeader, OPHONE), 18).Blank(),
    TextRow(NITF_TEXT(NitfHeader, FL), 12).Digits().AllNinesUnknown().Then(SetBothFileLengths).Writes(WriteFileLength),
    TextRow(NITF_TEXT(NitfHeader, HL), 6)
        .Digits()
        .AllNinesUnknown()
        .Then(SetBothHeaderLengths)
        .Writes(WriteHeaderLength),
    TextRow(NITF_TEXT(NitfHeader, NUMI), 3)
        .Number(offsetof(NitfHeader, imageTableCount))
        .Writes(WriteCount<SegmentKind::Image>),
    GroupRow(ReadLengths<kImageLengths>, WriteImageLengths),
    TextRow(NITF_TEXT(NitfHeader, NUMS), 3)
        .Number(offsetof(NitfHeader, graphicTableCount))
        .Writes(WriteCount<SegmentKind::Graphic>),
    GroupRow(ReadLengths<kGraphicLengths>, WriteListedLengths<kGraphicLengths, SegmentKind::Graphic>),
    TextRow(NITF_TEXT(NitfHeader, NUMX), 3).Only21().Digits().Then(CheckNoReservedSegments),
    TextRow(NITF_TEXT(NitfHeader, NUML), 3)
        .Only20()
        .Number(offsetof(NitfHeader, labelTableCount))
        .Writes(WriteCount<SegmentKind::Label>),
    GroupRow(ReadLabelLengths, WriteLabelLengths),
    TextRow(NITF_TEXT(NitfHeader, NUMT), 3)
        .Number(offsetof(NitfHeader, textTableCount))
        .Writes(WriteCount<SegmentKind::Text>),
    GroupRow(ReadLengths<kTextLengths>, WriteListedLengths<kTextLengths, SegmentKind::Text>),
    TextRow(NITF_TEXT(NitfHeader, NUMDES), 3).Number(offsetof(NitfHeader, dataExtensionTableCount)),
    GroupRow(ReadLengths<kDataExtensionLengths>, WriteTableLengths<kDataExtensionLengths>),
    TextRow(NITF_TEXT(NitfHeader, NUMRES), 3).Number(offsetof(NitfHeader, reservedExtensionTableCount)),
    GroupRow(ReadLengths<kReservedLengths>, WriteTableLengths<kReservedLengths>),
    TextRow(NITF_TEXT(NitfHeader, UDHDL), 5).Digits(),
    TextRow(NITF_TEXT(NitfHeader, UDHOFL), 3).Digits().CountedBy(offsetof(NitfHeader, UDHDL)),
    BytesRow("UDHD", offsetof(NitfHeader, userHeaderData), offsetof(NitfHeader, UDHDL), 3),
    TextRow(NITF_TEXT(NitfHeader, XHDL), 5).Digits(),
    TextRow(NITF_TEXT(NitfHeader, XHDLOFL), 3).Digits().CountedBy(offsetof(NitfHeader, XHDL)),
    BytesRow("XHD", offsetof(NitfHeader, extendedHeaderData), offsetof(NitfHeader, XHDL), 3),
};

}  // namespace

const HeaderTable kFileHeaderTable = TableOf<kRows, false>();

void NitfHeaderInit(NitfHeader *header) {
  *header = NitfHeader{};
  header->complianceLevel = 3;
  SetDefaults(kFileHeaderTable, header);
}

void NitfHeaderFree(NitfHeader *header) {
  for (const LengthTable *lengths :
       {&kImageLengths, &kGraphicLengths, &kLabelLengths, &kTextLengths, &kDataExtensionLengths, &kReservedLengths}) {
    RenewTables(*header, *lengths, 0);
  }
  KsFreeAndClear(header->userHeaderData);
  KsFreeAndClear(header->extendedHeaderData);
}

void ChangeFileLength(NitfHeader *header, std::int64_t bytes) {
  // Files may be longer than the numbers beside the text can tell.
  const std::int64_t length = std::max<std::int64_t>(ParseLongNumber(BufferText(header->FL, 12)) + bytes, 0);
  FormatBounded(header->FL, sizeof header->FL, "%012lld", static_cast<long long>(length));
  header->fileLength = header->fileLengthOut = static_cast<std::uint32_t>(ParseNumber(header->FL));
}

std::int32_t NitfHeaderRead(NitfHeader *header, NitfFile &file, StreamFileHeader &stream, bool replay) {
  HeaderReader reader(file, header);
  if (replay) reader.ReplayFrom(stream);
  std::int32_t status = reader.Read(kFileHeaderTable);
  if (status == kBudgetSpent) return SUCCESS;
  if (status != SUCCESS) return status;
  if (replay) {
    // A copy that is itself marked as unknown is taken as it stands: reading it again would give the same bytes.
    reader.CountReplayed();
    return SUCCESS;
  }
  if (!reader.SawUnknown()) return SUCCESS;
  status = SeekReplacementData(file, stream);
  return status == SUCCESS ? NitfHeaderRead(header, file, stream, true) : status;
}
