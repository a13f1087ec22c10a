#include "headers/txsubhdr.h"

#include "headers/held_data.h"
#include "internal/ksclasses_.h"
#include "ksntfx.h"
#include "table/header_reader.h"

namespace ksntfx {

namespace {

using Record = TextSubheader;

constexpr HeaderRow kRows[] = {
    MarkerRow(NITF_TEXT(Record, TE), "TE", NITF_MEMBER(Record, headerRead)),
    TextRow(NITF_TEXT(Record, TEXTID), 7).In20(10).Default("ID        "),
    TextRow(NITF_TEXT(Record, TXTALVL), 3).Only21().Rendered(NITF_MEMBER(Record, attachmentLevel)),
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

Status TextSubheaderSetData(TextSubheader *record, const void *data, std::uint32_t length) {
  if (data == nullptr) return NITF_NULL_DATA;
  return HoldInMemory(record, data, length);
}

}  // namespace ksntfx
