#include "headers/dexsbhdr.h"

#include "internal/ksclasses_.h"
#include "table/fields.h"
#include "table/header_reader.h"

#include <array>

namespace ksntfx {

namespace {

/** The identifier of a segment that holds what found no room in another header (MIL-STD-2500C, 5.8.1.3). */
constexpr std::string_view kOverflowIdentifier = "TRE_OVERFLOW             ";

Status CheckVersion(HeaderReader &, std::string_view text) {
  return static_cast<std::uint32_t>(ParseNumber(text)) > 99 ? ERROR_FILE_FORMAT : SUCCESS;
}

bool IsOverflow(const void *record, bool) {
  const char *identifier = static_cast<const DataExtensionSubheader *>(record)->DESID;
  return std::string_view(identifier, kOverflowIdentifier.size()) == kOverflowIdentifier;
}

/** In the 2.0 layout the segments for overflow are named after what they hold (MIL-STD-2500A, 5.8.1.3). */
bool IsOverflowOfItsVersion(const void *record, bool nitf20) {
  if (!nitf20) return IsOverflow(record, nitf20);
  const std::string_view identifier(static_cast<const DataExtensionSubheader *>(record)->DESID, 25);
  return identifier == "Registered Extensions    " || identifier == "Controlled Extensions    ";
}

using Record = DataExtensionSubheader;

constexpr auto MakeRows(unsigned securityRules, bool (*isOverflow)(const void *, bool)) {
  return std::array{
      MarkerRow(NITF_TEXT(Record, DE), "DE", NITF_MEMBER(Record, valid)).NoDefault(),
      TextRow(NITF_TEXT(Record, DESID), 25),
      TextRow(NITF_TEXT(Record, DESVER), 2).Digits().Then(CheckVersion),
      SecurityRow("DE", offsetof(Record, security), securityRules),
      TextRow(NITF_TEXT(Record, DESOFLW), 6).If(isOverflow),
      TextRow(NITF_TEXT(Record, DESITEM), 3).Digits().If(isOverflow),
      TextRow(NITF_TEXT(Record, DESSHL), 4).Digits(),
      BytesRow("DESSHF", offsetof(Record, userData), offsetof(Record, DESSHL), 0).WrittenAsText(),
  };
}

constexpr auto kRows = MakeRows(kCheckClassification | kCheckOnly21 | kEventAlways, IsOverflow);
constexpr auto kWideRows = MakeRows(kCheckClassification, IsOverflowOfItsVersion);

}  // namespace

const HeaderTable kDataExtensionTable = TableOf<kRows>();
const HeaderTable kWideDataExtensionTable = TableOf<kWideRows>();

void DataExtensionSubheaderInit(DataExtensionSubheader *record) {
  *record = DataExtensionSubheader{};
}

void DataExtensionSubheaderFree(DataExtensionSubheader *record) {
  KsFreeAndClear(record->userData);
}

}  // namespace ksntfx
