#include "headers/dexsbhdr.h"

#include "internal/ksclasses_.h"
#include "table/fields.h"
#include "table/header_reader.h"

#include <algorithm>
#include <iterator>

namespace ksntfx {

namespace {

/** The identifier of a segment that holds what found no room in another header (MIL-STD-2500C, 5.8.1.3). */
constexpr std::string_view kOverflowIdentifier = "TRE_OVERFLOW             ";

Status CheckVersion(HeaderReader &, std::string_view text) {
  return static_cast<std::uint32_t>(ParseNumber(text)) > 99 ? ERROR_FILE_FORMAT : SUCCESS;
}

/** In files of version 02.00. */
constexpr std::string_view kOldOverflowIdentifiers[] = {"Registered Extensions    ", "Controlled Extensions    "};

bool IsOverflow(const void *record, bool nitf20) {
  const std::string_view identifier(static_cast<const DataExtensionSubheader *>(record)->DESID,
                                    kOverflowIdentifier.size());
  if (identifier == kOverflowIdentifier) return true;
  return nitf20 && std::find(std::begin(kOldOverflowIdentifiers), std::end(kOldOverflowIdentifiers), identifier) !=
                       std::end(kOldOverflowIdentifiers);
}

using Record = DataExtensionSubheader;

constexpr HeaderRow kRows[] = {
    MarkerRow(NITF_TEXT(Record, DE), "DE", NITF_MEMBER(Record, valid)).NoDefault(),
    TextRow(NITF_TEXT(Record, DESID), 25),
    TextRow(NITF_TEXT(Record, DESVER), 2).Digits().Then(CheckVersion),
    SecurityRow("DE", offsetof(Record, security), kCheckClassification | kCheckOnly21 | kEventAlways),
    TextRow(NITF_TEXT(Record, DESOFLW), 6).If(IsOverflow),
    TextRow(NITF_TEXT(Record, DESITEM), 3).Digits().If(IsOverflow),
    TextRow(NITF_TEXT(Record, DESSHL), 4).Digits(),
    BytesRow("DESSHF", offsetof(Record, userData), offsetof(Record, DESSHL), 0).WrittenAsText(),
};

}  // namespace

const HeaderTable kDataExtensionTable = TableOf<kRows>();

void DataExtensionSubheaderInit(DataExtensionSubheader *record) {
  *record = DataExtensionSubheader{};
}

void DataExtensionSubheaderFree(DataExtensionSubheader *record) {
  KsFreeAndClear(record->userData);
}

}  // namespace ksntfx
