#include "txsubhdr.h"

#include "headerreader.h"
#include "internal/ksclasses_.h"
#include "nitffile.h"
#include "segment_data.h"
#include "strmfhdr.h"

namespace {

std::int32_t CheckMarker(HeaderReader &reader, std::string_view text) {
  if (text != "TE") return ERROR_FILE_FORMAT;
  reader.As<TextSubheader>().headerRead = 1;
  return SUCCESS;
}

using Record = TextSubheader;

constexpr HeaderRow kRows[] = {
    TextRow(NITF_TEXT(Record, TE), 2).Default("TE").Then(CheckMarker),
    TextRow(NITF_TEXT(Record, TEXTID), 7).In20(10).Default("ID        "),
    TextRow(NITF_TEXT(Record, TXTALVL), 3).Only21().Rendered(offsetof(Record, attachmentLevel)),
    TextRow(NITF_TEXT(Record, TXTDT), 14).Blank(),
    TextRow(NITF_TEXT(Record, TXTITL), 80).FillBlanks().Blank(),
    SecurityRow("T", offsetof(Record, security), kAnyClassification).GroupFills("0 0"),
    TextRow(NITF_TEXT(Record, ENCRYP), 1).Digits(),
    TextRow(NITF_TEXT(Record, TXTFMT), 3).Default("STA"),
    TextRow(NITF_TEXT(Record, TXSHDL), 5).Digits(),
    TextRow(NITF_TEXT(Record, TXSOFL), 3).Digits().CountedBy(offsetof(Record, TXSHDL)),
    BytesRow("TXSHD", offsetof(Record, extendedData), offsetof(Record, TXSHDL), 3),
};

}  // namespace

const HeaderTable kTextTable = TableOf<kRows>();

namespace {

TextSubheader DefaultText() {
  TextSubheader text{};
  SetDefaults(kTextTable, &text);
  // The downgrade fields of this kind have no default.
  for (char &character : text.security.DWNG) character = '\0';
  for (char &character : text.security.DEVT) character = '\0';
  return text;
}

}  // namespace

void TextSubheaderInit(TextSubheader *record, NitfFile *file) {
  static const TextSubheader fresh = DefaultText();
  *record = fresh;
  record->file = file;
}

void TextSubheaderFree(TextSubheader *record) {
  KsFreeAndClear(record->memoryData);
  KsFreeAndClear(record->extendedData);
}

std::int32_t TextSubheaderRead(TextSubheader *record, NitfFile &file, StreamFileHeader &stream, bool replay) {
  HeaderReader reader(file, record);
  return ReadSubheader(reader, kTextTable, file, stream, replay);
}

std::int32_t TextSubheaderSetData(TextSubheader *record, const void *data, std::uint32_t length) {
  if (data == nullptr) return NITF_NULL_DATA;
  return HoldInMemory(record, data, length);
}
