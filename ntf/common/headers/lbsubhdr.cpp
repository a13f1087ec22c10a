#include "headers/lbsubhdr.h"

#include "internal/ksclasses_.h"
#include "table/color_field.h"
#include "table/fields.h"
#include "table/header_reader.h"

namespace ksntfx {

namespace {

using Record = LabelSubheader;
using TextColor = ColorField<&Record::textColor>;
using BackgroundColor = ColorField<&Record::backgroundColor>;

constexpr HeaderRow kRows[] = {
    MarkerRow(NITF_TEXT(Record, LA), "LA", NITF_MEMBER(Record, headerRead)),
    TextRow(NITF_TEXT(Record, LID), 10),
    SecurityRow("L", offsetof(Record, security), kCheckClassification),
    TextRow(NITF_TEXT(Record, ENCRYP), 1).Digits(),
    TextRow(NITF_TEXT(Record, LFS), 1).Blank(),
    TextRow(NITF_TEXT(Record, LCW), 2).Number(NITF_MEMBER(Record, cellWidth)),
    TextRow(NITF_TEXT(Record, LCH), 2).Number(NITF_MEMBER(Record, cellHeight)),
    TextRow(NITF_TEXT(Record, LDLVL), 3).Number(NITF_MEMBER(Record, displayLevel)),
    TextRow(NITF_TEXT(Record, LALVL), 3).Number(NITF_MEMBER(Record, attachmentLevel)),
    TextRow(NITF_TEXT(Record, LLOC), 10).Halves(NITF_MEMBER(Record, locationRow)),
    TextRow(NITF_TEXT(Record, LTC), 3).Binary().Default("\x01\x01\x01").Then(TextColor::Read).Writes(TextColor::Write),
    TextRow(NITF_TEXT(Record, LBC), 3)
        .Binary()
        .Default("\xFF\xFF\xFF")
        .Then(BackgroundColor::Read)
        .Writes(BackgroundColor::Write),
    TextRow(NITF_TEXT(Record, LXSHDL), 5).Digits(),
    TextRow(NITF_TEXT(Record, LXSOFL), 3).Digits().CountedBy(offsetof(Record, LXSHDL)),
    BytesRow("LXSHD", offsetof(Record, extendedData), offsetof(Record, LXSHDL), 3),
};

}  // namespace

const HeaderTable kLabelTable = TableOf<kRows>();

void LabelSubheaderInit(LabelSubheader *record, NitfFile *file) {
  *record = LabelSubheader{};
  SetDefaults(kLabelTable, record);
  record->backgroundColor = 0xFFFFFF;
  record->file = file;
  LabelSetLocation(record, 0, 0);
  SetNumberField(record->LDLVL, 3, record->displayLevel);
}

void LabelSetLocation(LabelSubheader *record, std::int32_t row, std::int32_t column) {
  record->locationRow = row;
  record->locationColumn = column;
  SetLocationField(record->LLOC, row, column);
}

void LabelSubheaderFree(LabelSubheader *record) {
  KsFreeAndClear(record->extendedData);
  KsFreeAndClear(record->memoryData);
}

}  // namespace ksntfx
