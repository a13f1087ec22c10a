// The public record of the file header.
#include "access/header_info.h"
#include "headers/length_tables.h"
#include "internal/ksclasses_.h"
#include "ksntfx.h"
#include "table/fields.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace ksntfx {

namespace {

using Info = NitfHeaderInfo;
using Record = NitfHeader;

static_assert(sizeof(Info) == 358);
static_assert(offsetof(Info, CLEVEL) == 8 && offsetof(Info, FSCTLN) == 132 && offsetof(Info, HL) == 156);
static_assert(offsetof(Info, NUMI) == 176 && offsetof(Info, LT) == 232 && offsetof(Info, LRE) == 272);
static_assert(offsetof(Info, UDHD) == 288 && offsetof(Info, XHD) == 304 && offsetof(Info, FBKGC) == 312);
static_assert(offsetof(Info, FSSRDT) == 316 && offsetof(Info, FDT) == 340 && offsetof(Info, FVER) == 354);
static_assert(offsetof(Info, FSCLAS) + sizeof(FileSecurityInfo) == offsetof(Info, ONAME));

Record &Header(void *record) {
  return *static_cast<Record *>(record);
}

Status SetComplianceLevel(void *record, std::uint32_t level) {
  constexpr std::uint32_t kHighest = 7;
  constexpr std::uint32_t kBeyondLevels = 99;
  if ((level < 1 || level > kHighest) && level != kBeyondLevels) return ERROR_INVALID_VALUE;
  Header(record).complianceLevel = level;
  SetNumberField(Header(record).CLEVEL, 2, level);
  return SUCCESS;
}

Status SetHeaderLength(void *record, std::uint32_t length) {
  Header(record).headerLength = Header(record).headerLengthOut = length;
  SetNumberField(Header(record).HL, 6, length);
  return SUCCESS;
}

Status SetFileLength(void *record, std::uint32_t length) {
  Header(record).fileLength = Header(record).fileLengthOut = length;
  SetNumberField(Header(record).FL, 12, length);
  return SUCCESS;
}

// ---- the length tables: a count, and behind it the pointers to the lengths of subheaders and data

constexpr std::size_t kSubheaderLengths = sizeof(std::uint32_t);
constexpr std::size_t kDataLengths = kSubheaderLengths + sizeof(std::uint32_t *);

void GetLengths(const std::uint32_t *lengths, std::uint32_t entries, std::uint32_t count, char *place) {
  constexpr std::uint32_t kMost = std::numeric_limits<std::int32_t>::max();
  KsArray<std::uint32_t> table;
  if (count != 0 && table.Allocate(count) && lengths != nullptr) {
    for (std::uint32_t i = 0; i < std::min(count, entries); ++i) table[i] = std::min(lengths[i], kMost);
  }
  StoreInfo(place, table.Release());
}

template <const LengthTable &lengths, char (Record::*text)[4]>
Status GetTables(const void *record, char *info) {
  const Record &header = *static_cast<const Record *>(record);
  const std::int32_t count = ParseNumber(BufferText(header.*text, 3));
  StoreInfo(info, count);
  const auto rows = static_cast<std::uint32_t>(std::max(count, 0));
  GetLengths(header.*lengths.subheader.table, header.*lengths.count, rows, info + kSubheaderLengths);
  GetLengths(header.*lengths.data.table, header.*lengths.count, rows, info + kDataLengths);
  return SUCCESS;
}

void SetLengths(Record &header, const LengthColumn &column, std::uint32_t count, const char *place) {
  const auto *const lengths = LoadInfo<const std::uint32_t *>(place);
  if (lengths == nullptr) return;
  for (std::uint32_t *Record::*const table : {column.table, column.outTable}) {
    if (table != nullptr && header.*table != nullptr) std::copy_n(lengths, count, header.*table);
  }
}

/** Stores a count that the tables have room for, and their entries. */
template <const LengthTable &lengths, char (Record::*text)[4]>
Status SetTables(void *record, const char *info) {
  Record &header = Header(record);
  const auto count = LoadInfo<std::uint32_t>(info);
  if (count > header.*lengths.held) return ERROR_INVALID_VALUE;
  header.*lengths.count = count;
  SetNumberField(header.*text, 3, count);
  SetLengths(header, lengths.subheader, count, info + kSubheaderLengths);
  SetLengths(header, lengths.data, count, info + kDataLengths);
  return SUCCESS;
}

void FreeTables(char *info) {
  FreeInfoBlock(info + kSubheaderLengths);
  FreeInfoBlock(info + kDataLengths);
}

template <const LengthTable &lengths, char (Record::*text)[4]>
constexpr InfoRow Tables(std::size_t info) {
  return InfoSpecial(info, GetTables<lengths, text>, SetTables<lengths, text>, FreeTables);
}

// ---- colour and version

Status SetBackground(void *record, const char *info) {
  const auto color = LoadInfo<std::uint32_t>(info);
  for (unsigned byte = 0; byte < 3; ++byte) Header(record).FBKGC[byte] = static_cast<char>(color >> 8 * byte);
  Header(record).backgroundColorValue = color & 0xFFFFFF;
  return SUCCESS;
}

Status GetVersion(const void *record, char *info) {
  const char *const text = static_cast<const Record *>(record)->FVER;
  StoreInfo(info, static_cast<float>(ParseFraction(BufferText(text, 5))));
  return SUCCESS;
}

Status SetVersion(void *record, const char *info) {
  char digits[6];
  const auto version = LoadInfo<float>(info);
  const int length = FormatFraction(digits, sizeof digits, version, 2);
  if (length < 0 || !std::isfinite(version)) return ERROR_INVALID_VALUE;
  std::memset(Header(record).FVER, '0', 5);
  std::memcpy(Header(record).FVER + 5 - length, digits, static_cast<std::size_t>(length));
  return SUCCESS;
}

#define BOTH(member) INFO_BOTH(Info, Record, member)
#define SECURITY_DATE(member) \
  offsetof(Info, FS##member), offsetof(Record, security.member), sizeof(SecurityFields::member)

constexpr InfoRow kRows[] = {
    InfoText(BOTH(FHDR)),
    InfoNumber(BOTH(CLEVEL), SetComplianceLevel),
    InfoText(BOTH(STYPE)),
    InfoText(BOTH(OSTAID)),
    InfoText(BOTH(FTITLE)),
    InfoGroup(offsetof(Info, FSCLAS), offsetof(Record, security), kSecurityTexts<FileSecurityInfo>),
    InfoText(BOTH(ONAME)),
    InfoText(BOTH(OPHONE)),
    InfoNumber(BOTH(HL), SetHeaderLength),
    InfoNumber(BOTH(FL), SetFileLength),
    InfoNumber(BOTH(FSCOP)),
    InfoNumber(BOTH(FSCPYS)),
    InfoNumber(BOTH(ENCRYP)),
    Tables<kImageLengths, &Record::NUMI>(offsetof(Info, NUMI)),
    Tables<kGraphicLengths, &Record::NUMS>(offsetof(Info, NUMS)),
    InfoNumber(BOTH(NUMX)).SetOnly(),
    Tables<kTextLengths, &Record::NUMT>(offsetof(Info, NUMT)),
    Tables<kDataExtensionLengths, &Record::NUMDES>(offsetof(Info, NUMDES)).SetOnly(),
    Tables<kReservedLengths, &Record::NUMRES>(offsetof(Info, NUMRES)).SetOnly(),
    InfoExtension(offsetof(Info, UDHDL), offsetof(Record, UDHDL), offsetof(Record, UDHOFL),
                  offsetof(Record, userHeaderData), 3)
        .SetOnly(),
    InfoExtension(offsetof(Info, XHDL), offsetof(Record, XHDL), offsetof(Record, XHDLOFL),
                  offsetof(Record, extendedHeaderData), 3)
        .SetOnly(),
    InfoSpecial(offsetof(Info, FBKGC), nullptr, SetBackground, nullptr),
    InfoDate(SECURITY_DATE(SRDT)),
    InfoDate(SECURITY_DATE(DGDT)),
    InfoDate(SECURITY_DATE(DCDT)),
    InfoDate(BOTH(FDT)),
    InfoSpecial(offsetof(Info, FVER), GetVersion, SetVersion, nullptr),
};

}  // namespace

const InfoTable kFileHeaderInfo = {kRows, true};

}  // namespace ksntfx
