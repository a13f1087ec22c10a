#include "headers/ntfhdr.h"

#include "headers/length_tables.h"
#include "internal/ksclasses_.h"
#include "ksntfx.h"
#include "platform.h"
#include "table/color_field.h"
#include "table/fields.h"
#include "table/header_reader.h"
#include "table/header_writer.h"

#include <algorithm>

namespace ksntfx {

namespace {

NitfHeader &Header(const HeaderReader &reader) {
  return reader.As<NitfHeader>();
}

Status CheckMagic(HeaderReader &reader, std::string_view text) {
  if (text != "NITF" && text != "NSIF") return ERROR_FILE_FORMAT;
  Header(reader).valid = 1;
  return SUCCESS;
}

/** Of the two prefixes, NSIF has versions of its own; 02.00 is the version whose layout was chosen before. */
bool IsKnownVersion(const HeaderReader &reader, std::string_view text) {
  const bool isNsif = std::string_view(Header(reader).FHDR, 4) == "NSIF";
  return isNsif ? text == "01.00" : text == (reader.Nitf20() ? "02.00" : "02.10");
}

Status CheckVersion(HeaderReader &reader, std::string_view text) {
  if (text == "02.10" || (reader.Notes() != nullptr && IsKnownVersion(reader, text))) return SUCCESS;
  return NITF_UNSUPPORTED_VERSION;
}

/** The levels of MIL-STD-2500C, table A-10. */
bool IsKnownLevel(std::string_view text) {
  constexpr std::string_view kLevels[] = {"03", "05", "06", "07", "09"};
  return std::find(std::begin(kLevels), std::end(kLevels), text) != std::end(kLevels);
}

Status CheckComplianceLevel(HeaderReader &reader, std::string_view text) {
  if (reader.Notes() != nullptr) {
    const bool known = reader.Nitf20() || IsKnownLevel(text);
    return known ? Status(SUCCESS) : Status(NITF_UNSUPPORTED_CLEVEL);
  }
  if (text != "03") {
    platform::MessageBoxA(nullptr, "Unsupported CLEVEL", "Error", platform::MB_OK);
    return NITF_UNSUPPORTED_CLEVEL;
  }
  Header(reader).complianceLevel = 3;
  return SUCCESS;
}

Status SetBothFileLengths(HeaderReader &reader, std::string_view text) {
  Header(reader).fileLength = Header(reader).fileLengthOut = static_cast<std::uint32_t>(ParseNumber(text));
  return SUCCESS;
}

Status SetBothHeaderLengths(HeaderReader &reader, std::string_view text) {
  Header(reader).headerLength = Header(reader).headerLengthOut = static_cast<std::uint32_t>(ParseNumber(text));
  return SUCCESS;
}

Status CheckNoReservedSegments(HeaderReader &, std::string_view text) {
  return text == "000" ? SUCCESS : ERROR_FILE_FORMAT;
}

template <const LengthTable &lengths>
Status ReadLengths(HeaderReader &reader) {
  return ReadLengths(reader, lengths);
}

Status ReadLabelLengths(HeaderReader &reader) {
  return reader.Nitf20() ? ReadLengths(reader, kLabelLengths) : SUCCESS;
}

const NitfHeader &Header(const HeaderWriter &writer) {
  return writer.As<NitfHeader>();
}

/** The number in the text FL, of up to 12 digits; files may be longer than 32 bits tell. */
Status WriteFileLength(HeaderWriter &writer) {
  writer.Sink().marks.fileLengthField = static_cast<std::uint32_t>(writer.Written());
  return writer.Number(ParseLongNumber(Header(writer).FL), 12);
}

Status WriteHeaderLength(HeaderWriter &writer) {
  constexpr std::uint32_t kToFirstLength = 6 + 3;  // HL and NUMI
  writer.Sink().marks.imageLengths = static_cast<std::uint32_t>(writer.Written()) + kToFirstLength;
  return writer.Number(static_cast<std::int32_t>(Header(writer).headerLengthOut), 6);
}

template <SegmentKind kind>
Status WriteCount(HeaderWriter &writer) {
  return writer.Number(writer.Sink().listed[kind], 3);
}

/** A row for each image in the list. */
Status WriteImageLengths(HeaderWriter &writer) {
  return WriteLengths(writer, kImageLengths, writer.Sink().listed[SegmentKind::Image]);
}

/** A row for each segment in the list, or for each entry of the table, whichever are more. */
template <const LengthTable &lengths, SegmentKind kind>
Status WriteListedLengths(HeaderWriter &writer) {
  return WriteLengths(writer, lengths, std::max(writer.Sink().listed[kind], Header(writer).*lengths.count));
}

Status WriteLabelLengths(HeaderWriter &writer) {
  return writer.Nitf20() ? WriteListedLengths<kLabelLengths, SegmentKind::Label>(writer) : SUCCESS;
}

/** A row for each entry of the table. */
template <const LengthTable &lengths>
Status WriteTableLengths(HeaderWriter &writer) {
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
    SecurityRow("F", offsetof(NitfHeader, security), kCheckClassification, kUnterminatedSecurityTable),
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
        .Number(NITF_MEMBER(NitfHeader, imageTableCount))
        .Writes(WriteCount<SegmentKind::Image>),
    GroupRow("LISH", ReadLengths<kImageLengths>, WriteImageLengths),
    TextRow(NITF_TEXT(NitfHeader, NUMS), 3)
        .Number(NITF_MEMBER(NitfHeader, graphicTableCount))
        .Writes(WriteCount<SegmentKind::Graphic>),
    GroupRow("LSSH", ReadLengths<kGraphicLengths>, WriteListedLengths<kGraphicLengths, SegmentKind::Graphic>),
    TextRow(NITF_TEXT(NitfHeader, NUMX), 3).Only21().Digits().Then(CheckNoReservedSegments),
    TextRow(NITF_TEXT(NitfHeader, NUML), 3)
        .Only20()
        .Number(NITF_MEMBER(NitfHeader, labelTableCount))
        .Writes(WriteCount<SegmentKind::Label>),
    GroupRow("LLSH", ReadLabelLengths, WriteLabelLengths),
    TextRow(NITF_TEXT(NitfHeader, NUMT), 3)
        .Number(NITF_MEMBER(NitfHeader, textTableCount))
        .Writes(WriteCount<SegmentKind::Text>),
    GroupRow("LTSH", ReadLengths<kTextLengths>, WriteListedLengths<kTextLengths, SegmentKind::Text>),
    TextRow(NITF_TEXT(NitfHeader, NUMDES), 3).Number(NITF_MEMBER(NitfHeader, dataExtensionTableCount)),
    GroupRow("LDSH", ReadLengths<kDataExtensionLengths>, WriteTableLengths<kDataExtensionLengths>),
    TextRow(NITF_TEXT(NitfHeader, NUMRES), 3).Number(NITF_MEMBER(NitfHeader, reservedExtensionTableCount)),
    GroupRow("LRESH", ReadLengths<kReservedLengths>, WriteTableLengths<kReservedLengths>),
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
  FreeLengths(header);
  KsFreeAndClear(header->userHeaderData);
  KsFreeAndClear(header->extendedHeaderData);
}

}  // namespace ksntfx
