// The walk that reads a header by its table, for the first pass over a file and for the replay from a stream file
// header alike. Files may have thousands of headers of some 60 fields each, therefore each row of a table is read by
// code of its own, in which its width and its conditions are constants.
#pragma once

#include "table/fields.h"
#include "table/header_fault.h"
#include "table/header_notes.h"
#include "table/header_table.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>
#include <utility>

namespace ksntfx {

/** A result of reading beside the status values: the bytes that may be taken are used up. */
constexpr std::int32_t kBudgetSpent = 2;

/** Where the bytes of a header come from. */
struct HeaderSource {
  KsHandle file;                    /**< at the header's first byte */
  bool nitf20;                      /**< the header has the layout of NITF 2.0 */
  std::uint64_t limit = UINT64_MAX; /**< bytes that may be taken: those that a replay has left */
  HeaderNotes *notes = nullptr;     /**< receives the values that would otherwise end the reading; may be null */
};

/**
 * Reads one header into its record. Fields are a few bytes each, so they are taken out of a piece of the file that is
 * read ahead; Read leaves the file behind the last byte that was taken.
 */
class HeaderReader {
 public:
  HeaderReader(const HeaderSource &source, void *target);

  /** Reads all rows in order: SUCCESS, kBudgetSpent, or the failure, with what was read so far in the record. */
  Status Read(const HeaderTable &table);

  /** The field at which Read failed. */
  const HeaderFault &Fault() const { return fault; }

  /** The bytes that were taken so far. */
  std::uint64_t Taken() const { return Position() - start; }

  /** Reads exactly `bytes` bytes: SUCCESS, kBudgetSpent or ERROR_FILE_READ. */
  [[gnu::always_inline]] Status Take(void *buffer, std::uint64_t bytes) {
    if (bytes > Ready()) return TakeBeyond(static_cast<char *>(buffer), bytes);
    std::memcpy(buffer, ahead + aheadStart, bytes);
    aheadStart += static_cast<std::uint32_t>(bytes);
    return SUCCESS;
  }
  /** Reads a decimal number of `width` digits; nines mark an unknown length where `nineIsUnknown`. */
  Status TakeNumber(std::uint32_t width, bool nineIsUnknown, std::uint32_t *number) {
    char digits[16];
    const Status taken = Take(digits, width);
    if (taken != SUCCESS) return taken;
    const std::string_view text(digits, width);
    if (nineIsUnknown && AllNines(text)) sawUnknown = true;
    *number = static_cast<std::uint32_t>(ParseNumber(text));
    longNumber = width > kAlwaysFit ? ParseLongNumber(text) : static_cast<std::int32_t>(*number);
    return SUCCESS;
  }
  /** Reads `bytes` bytes into a new buffer with a NUL behind them, which takes the place of `*buffer`. */
  Status TakeNew(char **buffer, std::uint64_t bytes);
  /** Whether the file holds `count` times `bytes` from here: ask before taking memory for what it claims. */
  bool Holds(std::uint64_t count, std::uint64_t bytes) const;

  template <class Record>
  Record &As() const {
    return *static_cast<Record *>(record);
  }
  bool Nitf20() const { return nitf20; }
  /** A length or size was given as unknown. */
  bool SawUnknown() const { return sawUnknown; }
  /** The last number of TakeNumber was more than 32 bits can tell, and is their limit. */
  bool SawBeyond() const { return longNumber > INT32_MAX; }
  /** That number in full. */
  std::int64_t LongNumber() const { return longNumber; }
  /** Null where values that aren't supported end the reading. */
  HeaderNotes *Notes() const { return notes; }
  /** SecurityRule bits of the group that is being read. */
  unsigned SecurityRules() const { return securityRules; }

  /** Reads the rows of a table into the part of the record at `base`. */
  template <const auto &rows, bool terminates, std::size_t... index>
  Status ReadRows(char *base, std::index_sequence<index...>) {
    Status status = SUCCESS;
    static_cast<void>((
        ((status = ReadRow<terminates>(rows[index], base)) == SUCCESS || NoteFault(rows[index], base, status)) && ...));
    return status;
  }

 private:
  template <bool terminates>
  [[gnu::always_inline]] Status ReadRow(const HeaderRow &row, char *base) {
    if (row.kind == HeaderRow::Kind::Group) return row.group(*this);
    if (row.kind == HeaderRow::Kind::Security) return ReadSecurity(row, base);
    if (!IsPresent(row, base, nitf20, securityRules)) return SUCCESS;
    if (row.kind == HeaderRow::Kind::Data) return ReadData(row, base);
    return row.width20 != row.width21 && nitf20 ? ReadText<terminates>(row, row.width20, base)
                                                : ReadText<terminates>(row, row.width21, base);
  }

  template <bool terminates>
  [[gnu::always_inline]] Status ReadText(const HeaderRow &row, std::uint32_t width, char *base) {
    char *const field = base + row.place;
    const Status taken = Take(field, width);
    if (taken != SUCCESS) return taken;
    if (terminates) field[width] = '\0';
    const std::string_view text(field, width);
    if (!row.marker.empty()) return CheckMarker(row, base, text);
    StoreNumbers(row, base, text);
    return row.decode == nullptr ? SUCCESS : row.decode(*this, text);
  }

  static Status CheckMarker(const HeaderRow &row, char *base, std::string_view text) {
    constexpr std::uint32_t kAccepted = 1;
    if (text != row.marker) return ERROR_FILE_FORMAT;
    std::memcpy(base + row.accepted, &kAccepted, sizeof kAccepted);
    return SUCCESS;
  }

  /** What the field says as a number, beside its text. */
  [[gnu::always_inline]] void StoreNumbers(const HeaderRow &row, char *base, std::string_view field) {
    if (row.allNinesUnknown && AllNines(field)) sawUnknown = true;
    if (row.number != HeaderRow::kNowhere) {
      const std::int32_t number = ParseNumber(field);
      std::memcpy(base + row.number, &number, sizeof number);
    }
    if (row.halves != HeaderRow::kNowhere) {
      const std::size_t half = field.size() / 2;
      const std::int32_t halves[2] = {ParseNumber(field.substr(0, half)), ParseNumber(field.substr(half))};
      std::memcpy(base + row.halves, halves, sizeof halves);
    }
  }

  [[gnu::always_inline]] static bool AllNines(std::string_view text) {
    return std::all_of(text.begin(), text.end(), [](char digit) { return digit == '9'; });
  }

  /**
   * Remembers where a read failed, and returns false; or, where values are noted, notes that of a field, makes the
   * status SUCCESS, and returns true.
   */
  [[gnu::cold, gnu::noinline]] bool NoteFault(const HeaderRow &row, const char *base, Status &status);
  Status ReadSecurity(const HeaderRow &row, char *base);
  Status ReadData(const HeaderRow &row, char *base);
  Status TakeBeyond(char *buffer, std::uint64_t bytes);

  /** Bytes that are read ahead. */
  std::uint32_t Ready() const { return aheadEnd - aheadStart; }
  /** Where the next byte stands in the file. */
  std::uint64_t Position() const { return aheadPosition - Ready(); }

  /** About what a subheader takes. */
  static constexpr std::uint32_t kReadAhead = 512;

  /** As many digits are never more than 32 bits can tell. */
  static constexpr std::uint32_t kAlwaysFit = 9;

  KsHandle file;
  void *record;
  char ahead[kReadAhead];
  std::uint32_t aheadStart = 0; /**< the first byte of `ahead` that was not taken yet */
  std::uint32_t aheadEnd = 0;
  std::uint64_t aheadPosition; /**< of the end of what is read ahead */
  std::uint64_t start;         /**< position of the header */
  std::uint64_t limit;         /**< bytes that may be taken */
  std::int64_t longNumber = 0; /**< the last number of TakeNumber */
  bool nitf20;
  bool sawUnknown = false;
  HeaderNotes *notes;
  std::string_view group{}; /**< the name of the security group that is being read */
  std::uint8_t securityRules = 0;
  HeaderFault fault{};
};

/** The format that `rows` describe. `terminates`: a NUL is put behind each text that is read. */
template <const auto &rows, bool terminates = true>
constexpr HeaderTable TableOf(char fill = '0') {
  const auto read = [](HeaderReader &reader, char *record) {
    return reader.ReadRows<rows, terminates>(record, std::make_index_sequence<std::size(rows)>());
  };
  return {rows, read, fill};
}

}  // namespace ksntfx
