// The format as data. Every header is a table: a row a field, in file order, with its name, its place in the record,
// its width in either layout, when it is present, and what becomes of it.
#pragma once

#include "internal/status.h"
#include "kskernel.h"

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <functional>
#include <span>
#include <string>
#include <string_view>

namespace ksntfx {

class HeaderReader;
class HeaderWriter;

struct HeaderTable;

/** What a text field holds before anything was read. */
enum class Initial : std::uint8_t { Empty, Blanks, Text };

/** What the bytes of a field are. */
enum class FieldContent : std::uint8_t { Text, Digits, Binary };

/** How a header treats its security group. */
enum SecurityRule : std::uint8_t {
  kAnyClassification = 0,
  kCheckClassification = 1, /**< the classification is one of C, R, S, T, U, else ERROR_FILE_FORMAT */
  kEventAlways = 2,         /**< in the 2.0 layout the downgrade event is there whatever the downgrade field holds */
  kCheckOnly21 = 4          /**< kCheckClassification has no effect in the 2.0 layout */
};

/** Where a member of a type is in its record. Made by NITF_MEMBER. */
template <class Member>
struct MemberPlace {
  std::uint32_t offset;
};
#define NITF_MEMBER(Record, member)                 \
  ::ksntfx::MemberPlace<decltype(Record::member)> { \
    offsetof(Record, member)                        \
  }

/** One row of a format table. Made by the functions below, refined by its members. */
struct HeaderRow {
  enum class Kind : std::uint8_t { Text, Security, Data, Group };
  static constexpr std::uint32_t kNowhere = 0xFFFFFFFF;

  Kind kind = Kind::Text;
  std::string_view name{};
  std::uint32_t place = kNowhere; /**< offset of the text, the security group or the data pointer in the record */
  std::uint16_t capacity = 0;     /**< bytes of the text's buffer, the NUL included */
  std::uint16_t width21 = 0;      /**< bytes in the file, 0 where the layout hasn't the field */
  std::uint16_t width20 = 0;
  FieldContent content = FieldContent::Text;
  bool allNinesUnknown = false;        /**< a text of nines says that the value was not known when it was written */
  const HeaderTable *fields = nullptr; /**< of Security: the fields of the group, with places from its start */
  std::uint8_t securityRules = 0;      /**< of Security: SecurityRule bits */
  std::uint8_t presentByRule = 0;      /**< SecurityRule bits under which the row is always present */
  std::uint8_t overhead = 0;           /**< of Data: what its length field counts beside the bytes */
  std::uint8_t emptyUpTo = 0;          /**< of Data: the length up to which there is no buffer */
  std::uint32_t number = kNowhere;     /**< offset of the u32 that takes the value */
  std::uint32_t accepted = kNowhere;   /**< offset of the u32 that says that the marker was read */
  std::uint32_t halves = kNowhere;     /**< offset of two i32 that take the halves of a location */
  std::uint32_t countedBy = kNowhere;  /**< offset of a length text; the row is present where its number is not 0 */
  std::string_view marker{};           /**< the only text that is accepted, where there is one */
  bool (*present)(const void *record, bool nitf20) = nullptr;
  Status (*decode)(HeaderReader &reader, std::string_view text) = nullptr;
  Status (*group)(HeaderReader &reader) = nullptr;
  Status (*write)(HeaderWriter &writer) = nullptr; /**< writes what neither the text nor the number is */
  char fill = '\0';                                /**< of a text shorter than its field; 0 for that of the table */
  bool rendered = false;                           /**< is written from `number`, not from the text */
  bool writtenAsText = false;                      /**< of Data: ends at a zero byte and is filled up */
  std::string_view groupFills{}; /**< of Security: for the classification, the downgrade field, and all others */
  Initial initial = Initial::Empty;
  std::string_view initialText{};

  /** A copy of the row, changed. */
  template <class Change>
  constexpr HeaderRow With(Change change) const {
    HeaderRow row = *this;
    change(row);
    return row;
  }

  /** The width in the 2.0 layout, where it is another one. */
  constexpr HeaderRow In20(std::uint16_t width) const {
    return With([&](HeaderRow &row) { row.width20 = width; });
  }
  constexpr HeaderRow Only21() const { return In20(0); }
  constexpr HeaderRow Only20() const {
    return With([](HeaderRow &row) { row.width21 = 0; });
  }
  /** The value is a number, and nothing computes with it. */
  constexpr HeaderRow Digits() const {
    return With([](HeaderRow &row) { row.content = FieldContent::Digits; });
  }
  /** The bytes are no text. */
  constexpr HeaderRow Binary() const {
    return With([](HeaderRow &row) { row.content = FieldContent::Binary; });
  }
  /** The value goes to a number of the record too. */
  constexpr HeaderRow Number(MemberPlace<std::uint32_t> value) const {
    return Digits().With([&](HeaderRow &row) { row.number = value.offset; });
  }
  /** Two signed numbers of half the width each go to this number and to the one behind it. */
  constexpr HeaderRow Halves(MemberPlace<std::int32_t> first) const {
    return With([&](HeaderRow &row) { row.halves = first.offset; });
  }
  constexpr HeaderRow Halves(MemberPlace<std::int32_t[2]> both) const {
    return Halves(MemberPlace<std::int32_t>{both.offset});
  }
  constexpr HeaderRow AllNinesUnknown() const {
    return With([](HeaderRow &row) { row.allNinesUnknown = true; });
  }
  constexpr HeaderRow If(bool (*condition)(const void *, bool)) const {
    return With([&](HeaderRow &row) { row.present = condition; });
  }
  constexpr HeaderRow CountedBy(std::size_t offset) const {
    return With([&](HeaderRow &row) { row.countedBy = static_cast<std::uint32_t>(offset); });
  }
  constexpr HeaderRow Then(Status (*action)(HeaderReader &, std::string_view)) const {
    return With([&](HeaderRow &row) { row.decode = action; });
  }
  constexpr HeaderRow AlwaysUnder(unsigned rule) const {
    return With([&](HeaderRow &row) { row.presentByRule = static_cast<std::uint8_t>(rule); });
  }
  /** A text that is written has blanks behind it, or zeros in front of it. */
  constexpr HeaderRow FillBlanks() const {
    return With([](HeaderRow &row) { row.fill = ' '; });
  }
  constexpr HeaderRow FillZeros() const {
    return With([](HeaderRow &row) { row.fill = '0'; });
  }
  constexpr HeaderRow GroupFills(std::string_view fills) const {
    return With([&](HeaderRow &row) { row.groupFills = fills; });
  }
  /** As Number, and written from there. */
  constexpr HeaderRow Rendered(MemberPlace<std::uint32_t> value) const {
    return Number(value).With([](HeaderRow &row) { row.rendered = true; });
  }
  constexpr HeaderRow Writes(Status (*action)(HeaderWriter &)) const {
    return With([&](HeaderRow &row) { row.write = action; });
  }
  constexpr HeaderRow WrittenAsText() const {
    return With([](HeaderRow &row) { row.writtenAsText = true; });
  }
  constexpr HeaderRow Default(std::string_view text) const {
    return With([&](HeaderRow &row) {
      row.initial = Initial::Text;
      row.initialText = text;
    });
  }
  constexpr HeaderRow NoDefault() const {
    return With([](HeaderRow &row) { row.initial = Initial::Empty; });
  }
  constexpr HeaderRow Blank() const {
    return With([](HeaderRow &row) { row.initial = Initial::Blanks; });
  }
};

/** A text field of the same width in both layouts. */
constexpr HeaderRow TextRow(std::string_view name, std::size_t place, std::size_t capacity, std::uint16_t width) {
  HeaderRow row;
  row.name = name;
  row.place = static_cast<std::uint32_t>(place);
  row.capacity = static_cast<std::uint16_t>(capacity);
  row.width21 = row.width20 = width;
  return row;
}

/**
 * Bytes whose number stands in the text at `lengthPlace`, less `overhead`, into a new buffer with a NUL behind them,
 * whose pointer goes to `place`, and their number to the u32 behind it. A length up to `emptyUpTo` leaves the pointer
 * null; one above 0 and below the overhead is malformed.
 */
constexpr HeaderRow BytesRow(std::string_view name, std::size_t place, std::size_t lengthPlace, unsigned overhead,
                             unsigned emptyUpTo = 0) {
  HeaderRow row;
  row.kind = HeaderRow::Kind::Data;
  row.name = name;
  row.place = static_cast<std::uint32_t>(place);
  row.countedBy = static_cast<std::uint32_t>(lengthPlace);
  row.overhead = static_cast<std::uint8_t>(overhead);
  row.emptyUpTo = static_cast<std::uint8_t>(emptyUpTo);
  return row;
}

/** What fits no row: a function that reads it, and one that writes it. `first` is the first of its fields. */
constexpr HeaderRow GroupRow(std::string_view first, Status (*read)(HeaderReader &), Status (*write)(HeaderWriter &)) {
  HeaderRow row;
  row.name = first;
  row.kind = HeaderRow::Kind::Group;
  row.group = read;
  row.write = write;
  return row;
}

/** The place and capacity of a text member, for the functions above. */
#define NITF_TEXT(Record, member) #member, offsetof(Record, member), sizeof(Record::member)

/** The text that a header of its kind begins with; the number of the record becomes 1 once it was read. */
constexpr HeaderRow MarkerRow(std::string_view name, std::size_t place, std::size_t capacity, std::string_view marker,
                              MemberPlace<std::uint32_t> accepted) {
  HeaderRow row = TextRow(name, place, capacity, static_cast<std::uint16_t>(marker.size())).Default(marker);
  row.marker = marker;
  row.accepted = accepted.offset;
  return row;
}

/** A header's format. Made by TableOf. */
struct HeaderTable {
  std::span<const HeaderRow> rows;
  Status (*read)(HeaderReader &reader, char *record) = nullptr; /**< reads all rows in order */
  char fill = '0';                                              /**< of rows that say nothing else */
};

/** Whether the record calls for a row that has a condition. `securityRules` are those of the group that it is in. */
bool IsCalledFor(const HeaderRow &row, const char *base, bool nitf20, std::uint8_t securityRules);

/** The number in the length text at `place` of a record. */
std::int32_t LengthAt(const char *base, std::uint32_t place);

/**
 * The data that the pointer member at `place` leads to. The u32 behind the pointer says how many bytes are held: a
 * caller may give a header another length than its data have.
 */
char *DataAt(const char *base, std::uint32_t place);
std::uint32_t HeldAt(const char *base, std::uint32_t place);
/** Puts `bytes` bytes of data in the place of those before, which are released. */
void SetDataAt(char *base, std::uint32_t place, char *data, std::uint32_t bytes);
/** Releases the data, and sets the pointer to null. */
void FreeDataAt(char *base, std::uint32_t place);

[[gnu::always_inline]] inline std::uint32_t WidthOf(const HeaderRow &row, bool nitf20) {
  return nitf20 ? row.width20 : row.width21;
}

/** Whether a layout has a row, and the record calls for it. */
[[gnu::always_inline]] inline bool IsPresent(const HeaderRow &row, const char *base, bool nitf20,
                                             std::uint8_t securityRules) {
  if (row.kind == HeaderRow::Kind::Text && WidthOf(row, nitf20) == 0) return false;
  const bool always = row.countedBy == HeaderRow::kNowhere && row.present == nullptr;
  return always || IsCalledFor(row, base, nitf20, securityRules);
}

/** Gives all text fields of a record their defaults. */
void SetDefaults(const HeaderTable &table, void *record);

/** One field of a header as a person may see it. */
struct FieldView {
  std::string name;      /**< the standard's name */
  std::string_view text; /**< the field's bytes at its width in the layout */
  FieldContent content;
};

/** Visits all fields of a record that its layout has and that hold something, in file order; groups are left out. */
void ListFields(const HeaderTable &table, const void *record, bool nitf20,
                const std::function<void(const FieldView &)> &visit);

}  // namespace ksntfx
