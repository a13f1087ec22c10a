// The public record of the graphic subheader.
#include "access/header_info.h"
#include "headers/grsubhdr.h"
#include "ksntfx.h"

namespace ksntfx {

namespace {

using Info = NitfGraphicHeaderInfo;
using Record = GraphicSubheader;

static_assert(sizeof(Info) == 228);
static_assert(offsetof(Info, SSCLAS) == 24 && offsetof(Info, SSDCDT) == 72 && offsetof(Info, SSTRUCT) == 164);
static_assert(offsetof(Info, locationA) == 176 && offsetof(Info, SCOLOR) == 192 && offsetof(Info, SXSHD) == 220);
static_assert(offsetof(Info, SSCLAS) + sizeof(SegmentSecurityInfo) == offsetof(Info, ENCRYP));

#define BOTH(member) INFO_BOTH(Info, Record, member)
#define PAIR(first, text) offsetof(Info, first), offsetof(Record, text), sizeof(Record::text)

constexpr InfoRow kRows[] = {
    InfoText(BOTH(SY)),
    InfoText(BOTH(SID)),
    InfoText(BOTH(SNAME)),
    InfoGroup(offsetof(Info, SSCLAS), offsetof(Record, security), kSecurityTexts<SegmentSecurityInfo>),
    InfoNumber(BOTH(ENCRYP)),
    InfoText(BOTH(SFMT)),
    InfoNumber(BOTH(SSTRUCT)),
    InfoNumber(BOTH(SDLVL)).Also(offsetof(Record, displayLevel)),
    InfoNumber(BOTH(SALVL)).Also(offsetof(Record, attachmentLevel)),
    InfoLocation(PAIR(locationA, SLOC), true, AnyRecord<GraphicSetLocation>::Call),
    InfoLocation(PAIR(bound1First, SBND1), false, AnyRecord<GraphicSetBound1>::Call),
    InfoLocation(PAIR(bound2First, SBND2), false, AnyRecord<GraphicSetBound2>::Call),
    InfoText(BOTH(SCOLOR)),
    InfoNumber(BOTH(SRES2)),
    InfoExtension(offsetof(Info, SXSHDL), offsetof(Record, SXSHDL), offsetof(Record, SXSOFL),
                  offsetof(Record, extendedData), 0),
    InfoGroup(offsetof(Info, SSCLAS), offsetof(Record, security), kSecurityDates),
};

}  // namespace

const InfoTable kGraphicInfo = {kRows};

}  // namespace ksntfx
