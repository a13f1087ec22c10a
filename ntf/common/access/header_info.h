// The public header records. Each is a table over the fields of a header: a row a member, in the order in which a Set
// stores them, with its place in the public record and in the header, how a Get fills it and how a Set stores it. Get,
// Set and Free are walks over the table.
#pragma once

#include "table/security_fields.h"

#include <algorithm>
#include <array>
#include <cstring>

namespace ksntfx {

/** One member of a public record, or a few that belong together. Made by the functions below. */
struct InfoRow {
  enum class Kind : std::uint8_t { Text, Number, Characters, Location, Extension, Group, Special };
  static constexpr std::uint32_t kNowhere = HeaderRow::kNowhere;

  Kind kind = Kind::Special;
  std::uint16_t info = 0;              /**< offset in the public record */
  std::uint16_t width = 0;             /**< characters of the field's text */
  std::uint32_t field = kNowhere;      /**< offset of the text in the header */
  std::uint32_t number = kNowhere;     /**< offset of the u32 in the header that takes the value too */
  std::uint32_t dataLength = kNowhere; /**< of Extension: offset of the length's text */
  std::uint32_t data = kNowhere;       /**< of Extension: offset of the data's pointer */
  std::uint8_t dataOverhead = 0;       /**< of Extension: what a Get's block has less than the length says */
  std::uint32_t least = 0;
  std::uint32_t most = UINT32_MAX;
  bool filled = true; /**< by a Get */
  Status (*setText)(void *record, const char *text) = nullptr;
  Status (*setNumber)(void *record, std::uint32_t value) = nullptr;
  void (*setPair)(void *record, std::int32_t first, std::int32_t second) = nullptr;
  bool crossed = false; /**< of Location: a Get gives the second half first */
  std::span<const InfoRow> rows{};
  Status (*get)(const void *record, char *info) = nullptr;
  Status (*set)(void *record, const char *info) = nullptr;
  void (*release)(char *info) = nullptr;

  template <class Change>
  constexpr InfoRow With(Change change) const {
    InfoRow row = *this;
    change(row);
    return row;
  }
  /** A Get leaves the member alone. */
  constexpr InfoRow SetOnly() const {
    return With([](InfoRow &row) { row.filled = false; });
  }
  /** The value goes to the u32 at `offset` of the header too. */
  constexpr InfoRow Also(std::size_t offset) const {
    return With([&](InfoRow &row) { row.number = static_cast<std::uint32_t>(offset); });
  }
  /** Other values are refused. */
  constexpr InfoRow Within(std::uint32_t lowest, std::uint32_t highest) const {
    return With([&](InfoRow &row) {
      row.least = lowest;
      row.most = highest;
    });
  }
};

/** How the values of a public record go in and out of a header. */
struct InfoTable {
  std::span<const InfoRow> rows;
  bool skipsRefused = false; /**< a Set passes over what it refuses; otherwise it ends there */
};

extern const InfoTable kFileHeaderInfo;
extern const InfoTable kImageInfo;
extern const InfoTable kGraphicInfo;
extern const InfoTable kTextInfo;

/** Fills a public record. Without memory a text or block is null: ERROR_NO_MEMORY where that hides data. */
Status GetInfo(const InfoTable &table, const void *record, void *info);

/** Stores a public record: SUCCESS, or the first refusal. */
Status SetInfo(const InfoTable &table, void *record, const void *info);

/** Releases what Get allocated and sets its pointers to null. */
void FreeInfo(const InfoTable &table, void *info);

/** A setter of a record's own type, as rows keep it. */
template <auto setter>
struct AnyRecord;
template <class Result, class Record, class... Arguments, Result (*setter)(Record *, Arguments...)>
struct AnyRecord<setter> {
  static Result Call(void *record, Arguments... arguments) {
    return setter(static_cast<Record *>(record), arguments...);
  }
};

/** The values of a packed record, whose members stand on any address. */
template <class Value>
Value LoadInfo(const char *place) {
  Value value;
  std::memcpy(&value, place, sizeof value);
  return value;
}
template <class Value>
void StoreInfo(char *place, Value value) {
  std::memcpy(place, &value, sizeof value);
}

/** Releases the block that a pointer of a packed record leads to, and sets the pointer to null. */
void FreeInfoBlock(char *place);

// ---- rows

constexpr InfoRow InfoMember(InfoRow::Kind kind, std::size_t info, std::size_t field, std::size_t capacity) {
  InfoRow row;
  row.kind = kind;
  row.info = static_cast<std::uint16_t>(info);
  row.field = static_cast<std::uint32_t>(field);
  row.width = static_cast<std::uint16_t>(capacity - 1);
  return row;
}

/** A text of up to the field's capacity; `setter` stores more than the text. */
constexpr InfoRow InfoText(std::size_t info, std::size_t field, std::size_t capacity,
                           Status (*setter)(void *, const char *) = nullptr) {
  return InfoMember(InfoRow::Kind::Text, info, field, capacity).With([&](InfoRow &row) { row.setText = setter; });
}

/** A u32 that stands in the header as digits. */
constexpr InfoRow InfoNumber(std::size_t info, std::size_t field, std::size_t capacity,
                             Status (*setter)(void *, std::uint32_t) = nullptr) {
  return InfoMember(InfoRow::Kind::Number, info, field, capacity).With([&](InfoRow &row) { row.setNumber = setter; });
}

/** A date: the characters of the field without a terminator. */
constexpr InfoRow InfoDate(std::size_t info, std::size_t field, std::size_t capacity) {
  return InfoMember(InfoRow::Kind::Characters, info, field, capacity);
}

/** Two numbers, one behind the other, that share a field of ten characters. */
constexpr InfoRow InfoLocation(std::size_t info, std::size_t field, std::size_t capacity, bool crossed,
                               void (*setter)(void *, std::int32_t, std::int32_t)) {
  return InfoMember(InfoRow::Kind::Location, info, field, capacity).With([&](InfoRow &row) {
    row.setPair = setter;
    row.crossed = crossed;
  });
}

/**
 * A length, an overflow number and data, one behind the other: `length` and `overflow` are the header's texts, `data`
 * its pointer. A Get gives a block of the length less `overhead` bytes.
 */
constexpr InfoRow InfoExtension(std::size_t info, std::size_t length, std::size_t overflow, std::size_t data,
                                unsigned overhead) {
  InfoRow row;
  row.kind = InfoRow::Kind::Extension;
  row.info = static_cast<std::uint16_t>(info);
  row.dataLength = static_cast<std::uint32_t>(length);
  row.field = static_cast<std::uint32_t>(overflow);
  row.data = static_cast<std::uint32_t>(data);
  row.dataOverhead = static_cast<std::uint8_t>(overhead);
  return row;
}

/** Rows whose places count from `info` in the public record and from `record` in the header. */
constexpr InfoRow InfoGroup(std::size_t info, std::size_t record, std::span<const InfoRow> rows) {
  InfoRow row;
  row.kind = InfoRow::Kind::Group;
  row.info = static_cast<std::uint16_t>(info);
  row.field = static_cast<std::uint32_t>(record);
  row.rows = rows;
  return row;
}

/** What fits no other row. The functions get the header and the member at `info`; each may be null. */
constexpr InfoRow InfoSpecial(std::size_t info, Status (*get)(const void *, char *),
                              Status (*set)(void *, const char *), void (*release)(char *)) {
  InfoRow row;
  row.info = static_cast<std::uint16_t>(info);
  row.get = get;
  row.set = set;
  row.release = release;
  return row;
}

/** The places of a member that both records name alike. */
#define INFO_BOTH(Info, Record, member) offsetof(Info, member), offsetof(Record, member), sizeof(Record::member)

// ---- the security group

#pragma pack(push, 1)
/** The security members as the public records of segments have them. */
struct SegmentSecurityInfo {
  char *CLAS, *CLSY, *CODE, *CTLH, *REL, *DCTP;
  char DCDT[4][2];
  char *DCXM, *DG;
  char DGDT[4][2];
  char *CLTX, *CATP, *CAUT, *CRSN;
  char SRDT[4][2];
  char *CTLN;
};
/** And the one of the file header, which has the dates elsewhere. */
struct FileSecurityInfo {
  char *CLAS, *CLSY, *CODE, *CTLH, *REL, *DCTP, *DCXM, *DG, *CLTX, *CATP, *CAUT, *CRSN, *CTLN;
};
#pragma pack(pop)

/** Its texts, in the order that all records share. */
template <class Info>
inline constexpr std::array<InfoRow, 13> kSecurityTexts = {
    InfoText(INFO_BOTH(Info, SecurityFields, CLAS)), InfoText(INFO_BOTH(Info, SecurityFields, CLSY)),
    InfoText(INFO_BOTH(Info, SecurityFields, CODE)), InfoText(INFO_BOTH(Info, SecurityFields, CTLH)),
    InfoText(INFO_BOTH(Info, SecurityFields, REL)),  InfoText(INFO_BOTH(Info, SecurityFields, DCTP)),
    InfoText(INFO_BOTH(Info, SecurityFields, DCXM)), InfoText(INFO_BOTH(Info, SecurityFields, DG)),
    InfoText(INFO_BOTH(Info, SecurityFields, CLTX)), InfoText(INFO_BOTH(Info, SecurityFields, CATP)),
    InfoText(INFO_BOTH(Info, SecurityFields, CAUT)), InfoText(INFO_BOTH(Info, SecurityFields, CRSN)),
    InfoText(INFO_BOTH(Info, SecurityFields, CTLN))};

/** Its dates: of declassification, of downgrading, of the source. */
inline constexpr std::array<InfoRow, 3> kSecurityDates = {
    InfoDate(INFO_BOTH(SegmentSecurityInfo, SecurityFields, DCDT)),
    InfoDate(INFO_BOTH(SegmentSecurityInfo, SecurityFields, DGDT)),
    InfoDate(INFO_BOTH(SegmentSecurityInfo, SecurityFields, SRDT))};

/** Texts and dates in the order of the members. */
constexpr std::array<InfoRow, 16> SecurityInMemberOrder() {
  std::array<InfoRow, 16> rows{};
  const auto behind =
      std::copy(kSecurityTexts<SegmentSecurityInfo>.begin(), kSecurityTexts<SegmentSecurityInfo>.end(), rows.begin());
  std::copy(kSecurityDates.begin(), kSecurityDates.end(), behind);
  std::sort(rows.begin(), rows.end(), [](const InfoRow &a, const InfoRow &b) { return a.info < b.info; });
  return rows;
}
inline constexpr std::array<InfoRow, 16> kSecurityInOrder = SecurityInMemberOrder();

}  // namespace ksntfx
