// The public record of the text subheader.
#include "access/header_info.h"
#include "headers/txsubhdr.h"
#include "ksntfx.h"

namespace ksntfx {

namespace {

using Info = NitfTextHeaderInfo;
using Record = TextSubheader;

static_assert(sizeof(Info) == 198);
static_assert(offsetof(Info, TXTDT) == 20 && offsetof(Info, TSCLAS) == 42 && offsetof(Info, TSSRDT) == 154);
static_assert(offsetof(Info, ENCRYP) == 170 && offsetof(Info, TXSHDL) == 182 && offsetof(Info, TXSHD) == 190);
static_assert(offsetof(Info, TSCLAS) + sizeof(SegmentSecurityInfo) == offsetof(Info, ENCRYP));

#define BOTH(member) INFO_BOTH(Info, Record, member)

constexpr InfoRow kRows[] = {
    InfoText(BOTH(TE)),
    InfoText(BOTH(TEXTID)),
    InfoNumber(BOTH(TXTALVL)).Also(offsetof(Record, attachmentLevel)),
    InfoDate(BOTH(TXTDT)),
    InfoText(BOTH(TXTITL)),
    InfoGroup(offsetof(Info, TSCLAS), offsetof(Record, security), kSecurityInOrder),
    InfoNumber(BOTH(ENCRYP)),
    InfoText(BOTH(TXTFMT)),
    InfoExtension(offsetof(Info, TXSHDL), offsetof(Record, TXSHDL), offsetof(Record, TXSOFL),
                  offsetof(Record, extendedData), 3),
};

}  // namespace

const InfoTable kTextInfo = {kRows};

}  // namespace ksntfx
