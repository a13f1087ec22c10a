#include "headers/grsubhdr.h"

#include "headers/held_data.h"
#include "internal/ksclasses_.h"
#include "table/fields.h"
#include "table/header_reader.h"
#include "table/header_writer.h"

#include <algorithm>

namespace ksntfx {

namespace {

Status CheckFormat(HeaderReader &, std::string_view text) {
  return std::string_view("BCO").find(text[0]) == std::string_view::npos ? ERROR_FILE_FORMAT : SUCCESS;
}

/** The lookup table of the 2.0 layout: a row for red, green and blue each, or for one entry a single gray byte. */
Status ReadLut(HeaderReader &reader) {
  auto &graphic = reader.As<GraphicSubheader>();
  const std::uint32_t entries = graphic.lutEntries;
  graphic.lutEntries = 0;
  KsFreeAndClear(graphic.lut);
  if (entries == 0) return SUCCESS;
  if (!reader.Holds(entries, entries == 1 ? 1 : 3)) return ERROR_FILE_READ;
  KsArray<std::uint32_t> lut;
  KsArray<std::uint8_t> row;
  if (!lut.Allocate(entries) || !row.Allocate(entries)) return ERROR_NO_MEMORY;
  graphic.lut = lut.Release();
  graphic.lutEntries = entries;
  for (const std::uint32_t channels : {entries == 1 ? 0x010101U : 0x010000U, 0x000100U, 0x000001U}) {
    const Status status = reader.Take(row.Get(), entries);
    if (status != SUCCESS) return status;
    for (std::uint32_t entry = 0; entry < entries; ++entry) graphic.lut[entry] |= row[entry] * channels;
    if (entries == 1) break;
  }
  return SUCCESS;
}

Status WriteColor(HeaderWriter &writer) {
  return writer.Text("C", 1, '0');
}

/** One gray row for one entry, and the third row only for more than two. */
Status WriteLut(HeaderWriter &writer) {
  const auto &graphic = writer.As<GraphicSubheader>();
  if (!writer.Nitf20() || graphic.lut == nullptr) return SUCCESS;
  const std::uint32_t rows = std::min(graphic.lutEntries, 3U);
  for (std::uint32_t row = 0; row < rows; ++row) {
    for (std::uint32_t entry = 0; entry < graphic.lutEntries; ++entry) {
      const char byte[] = {static_cast<char>(graphic.lut[entry] >> (16 - 8 * row)), '\0'};
      const Status status = writer.Text(byte, 1, '0');
      if (status != SUCCESS) return status;
    }
  }
  return SUCCESS;
}

using Record = GraphicSubheader;

constexpr HeaderRow kRows[] = {
    MarkerRow(NITF_TEXT(Record, SY), "SY", NITF_MEMBER(Record, headerRead)).FillBlanks(),
    TextRow(NITF_TEXT(Record, SID), 10).FillBlanks().Default("ID        "),
    TextRow(NITF_TEXT(Record, SNAME), 20).FillBlanks().Blank(),
    SecurityRow("S", offsetof(Record, security), kCheckClassification).GroupFills("0  "),
    TextRow(NITF_TEXT(Record, ENCRYP), 1).Digits(),
    TextRow(NITF_TEXT(Record, SFMT), 1).Default("C").Then(CheckFormat),
    TextRow(NITF_TEXT(Record, SSTRUCT), 13).Only21(),
    TextRow(NITF_TEXT(Record, NLIPS), 4).Only20().Digits(),
    TextRow(NITF_TEXT(Record, NPIXPL), 4).Only20().Digits(),
    TextRow(NITF_TEXT(Record, NWDTH), 4).Only20().Digits(),
    TextRow(NITF_TEXT(Record, NBPP), 1).Only20().Rendered(NITF_MEMBER(Record, bitsPerPixel)),
    TextRow(NITF_TEXT(Record, SDLVL), 3).Rendered(NITF_MEMBER(Record, displayLevel)),
    TextRow(NITF_TEXT(Record, SALVL), 3).Rendered(NITF_MEMBER(Record, attachmentLevel)),
    TextRow(NITF_TEXT(Record, SLOC), 10).Halves(NITF_MEMBER(Record, locationRow)),
    TextRow(NITF_TEXT(Record, SBND1), 10).Only21().Halves(NITF_MEMBER(Record, firstBound)),
    TextRow(NITF_TEXT(Record, SCOLOR), 1).Only21().Blank().Writes(WriteColor),
    TextRow(NITF_TEXT(Record, SBND2), 10).Halves(NITF_MEMBER(Record, secondBound)),
    TextRow(NITF_TEXT(Record, SCOLOR), 1).Only20().Blank().FillBlanks(),
    TextRow(NITF_TEXT(Record, SRES2), 2).Only21(),
    TextRow(NITF_TEXT(Record, SNUM), 6).Only20().Digits(),
    TextRow(NITF_TEXT(Record, SROT), 3).Only20().Digits(),
    TextRow(NITF_TEXT(Record, NELUT), 3).Only20().Rendered(NITF_MEMBER(Record, lutEntries)),
    GroupRow("DLUT", ReadLut, WriteLut),
    TextRow(NITF_TEXT(Record, SXSHDL), 5).Digits(),
    TextRow(NITF_TEXT(Record, SXSOFL), 3).Digits().CountedBy(offsetof(Record, SXSHDL)),
    BytesRow("SXSHD", offsetof(Record, extendedData), offsetof(Record, SXSHDL), 3),
};

void SetBound(std::int32_t (&bound)[2], char *text, std::int32_t first, std::int32_t second) {
  bound[0] = first;
  bound[1] = second;
  SetNumberField(text, kLocationHalf, static_cast<std::uint32_t>(first));
  SetNumberField(text + kLocationHalf, kLocationHalf, static_cast<std::uint32_t>(second));
}

}  // namespace

const HeaderTable kGraphicTable = TableOf<kRows>();

void PrepareVector(KsVector *vector) {
  constexpr std::uint32_t kVectorOptions = 8194;
  constexpr std::uint32_t kVectorFlags = 32768;
  vector->options = kVectorOptions;
  KsVectorInit(vector);
  vector->flags = kVectorFlags;
}

namespace {

GraphicSubheader DefaultGraphic() {
  GraphicSubheader graphic{};
  SetDefaults(kGraphicTable, &graphic);
  PrepareVector(&graphic.vector);
  return graphic;
}

}  // namespace

void GraphicSubheaderInit(GraphicSubheader *record, NitfFile *file) {
  static const GraphicSubheader fresh = DefaultGraphic();
  *record = fresh;
  record->file = file;
}

void GraphicSubheaderFree(GraphicSubheader *record) {
  if (KsVectorIsEmpty(&record->vector) == 0) KsVectorFree(&record->vector);
  KsFreeAndClear(record->extendedData);
  KsFreeAndClear(record->lut);
  KsFreeAndClear(record->memoryData);
}

Status GraphicSetData(GraphicSubheader *record, const void *data, std::uint32_t length) {
  return HoldInMemory(record, data, length);
}

void GraphicSetLocation(GraphicSubheader *record, std::int32_t row, std::int32_t column) {
  record->locationRow = row;
  record->locationColumn = column;
  SetLocationField(record->SLOC, row, column);
}

void GraphicSetBound1(GraphicSubheader *record, std::int32_t first, std::int32_t second) {
  SetBound(record->firstBound, record->SBND1, first, second);
}

void GraphicSetBound2(GraphicSubheader *record, std::int32_t first, std::int32_t second) {
  SetBound(record->secondBound, record->SBND2, first, second);
}

}  // namespace ksntfx
