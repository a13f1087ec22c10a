#include "table/security_fields.h"

#include "table/header_reader.h"

namespace ksntfx {

namespace {

/** The downgrade field's value that a downgrade event goes with (MIL-STD-2500A, table A-1, FSDWNG). */
constexpr std::string_view kDowngradeByEvent = "999998";

bool DowngradeByEvent(const void *security, bool) {
  const char *text = static_cast<const SecurityFields *>(security)->DWNG;
  return BufferText(text, sizeof(SecurityFields::DWNG)) == kDowngradeByEvent;
}

Status CheckClassification(HeaderReader &reader, std::string_view text) {
  const unsigned rules = reader.SecurityRules();
  if ((rules & kCheckClassification) == 0 || ((rules & kCheckOnly21) != 0 && reader.Nitf20())) return SUCCESS;
  return std::string_view("CRSTU").find(text[0]) == std::string_view::npos ? ERROR_FILE_FORMAT : SUCCESS;
}

#define SECURITY(member) "S" #member, offsetof(SecurityFields, member), sizeof(SecurityFields::member)

constexpr HeaderRow kSecurityRows[] = {
    TextRow(SECURITY(CLAS), 1).Default("U").Then(CheckClassification),
    TextRow(SECURITY(CLSY), 2).Only21().Blank(),
    TextRow(SECURITY(CODE), 11).In20(40).Blank(),
    TextRow(SECURITY(CTLH), 2).In20(40).Blank(),
    TextRow(SECURITY(REL), 20).In20(40).Blank(),
    TextRow(SECURITY(DCTP), 2).Only21().Blank(),
    TextRow(SECURITY(DCDT), 8).Only21().Blank(),
    TextRow(SECURITY(DCXM), 4).Only21().Blank(),
    TextRow(SECURITY(DG), 1).Only21().Blank(),
    TextRow(SECURITY(DGDT), 8).Only21().Blank(),
    TextRow(SECURITY(CLTX), 43).Only21().Blank(),
    TextRow(SECURITY(CATP), 1).Only21().Blank(),
    TextRow(SECURITY(CAUT), 40).In20(20).Blank(),
    TextRow(SECURITY(CRSN), 1).Only21().Blank(),
    TextRow(SECURITY(SRDT), 8).Only21().Blank(),
    TextRow(SECURITY(CTLN), 15).In20(20).Blank(),
    TextRow(SECURITY(DWNG), 6).Only20().Blank(),
    TextRow(SECURITY(DEVT), 40).Only20().Blank().If(DowngradeByEvent).AlwaysUnder(kEventAlways),
};

#undef SECURITY

}  // namespace

const HeaderTable kSecurityTable = TableOf<kSecurityRows>();
const HeaderTable kUnterminatedSecurityTable = TableOf<kSecurityRows, false>();

}  // namespace ksntfx
