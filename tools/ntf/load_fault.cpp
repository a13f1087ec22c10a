#include "load_fault.h"

#include "digits.h"
#include "ksntfx.h"
#include "printable.h"
#include "segment_choice.h"

#include <algorithm>
#include <iterator>
#include <string_view>

namespace ntf {
namespace {

/** What a field has to be. */
struct Expected {
  std::string_view field;
  std::string_view words;
};

constexpr Expected kExpected[] = {
    {"FHDR", "NITF or NSIF"},
    {"FVER", "02.10"},
    {"CLEVEL", "03"},
    {"NUMX", "000"},
    {"PVTYPE", "INT or B"},
    {"IMODE", "B, P, R or S"},
    {"SFMT", "C, B or O"},
    {"IM", "IM"},
    {"SY", "SY"},
    {"TE", "TE"},
    {"DE", "DE"},
    {"DESVER", "00 to 99"},
};

std::string Quoted(std::string_view text) {
  return "'" + Latin1ToUtf8(text) + "'";
}

std::string WordsOf(const LoadFault &fault, const FileView &file, std::int32_t status) {
  if (status == NITF_UNSUPPORTED_BPP) return "is 16, but the image has several bands";
  if (status == ERROR_FILE_READ || fault.text.empty()) {
    return "is not complete: the file has " + std::to_string(file.SourceBytes()) + " bytes";
  }
  if (fault.field.ends_with("SCLAS")) return "is " + Quoted(fault.text) + ", not one of T, S, C, R, U";
  const auto *const expected = std::find_if(std::begin(kExpected), std::end(kExpected),
                                            [&](const Expected &one) { return one.field == fault.field; });
  if (expected == std::end(kExpected)) return "is " + Quoted(fault.text) + ", which is not valid";
  return "is " + Quoted(fault.text) + ", not " + std::string(expected->words);
}

// ---- lengths that are not known -----------------------------------------------------------------------------------

/** A count in the file header, and the lengths behind it. */
struct LengthRows {
  const char *count;
  const char *subheaderLength;
  const char *dataLength;
  std::size_t subheaderDigits;
  std::size_t dataDigits;
};

constexpr std::size_t kCountDigits = 3;
constexpr LengthRows kLengthRows[] = {
    {"NUMI", "LISH", "LI", 6, 10}, {"NUMS", "LSSH", "LS", 4, 6},   {"NUMX", "", "", 0, 0},
    {"NUMT", "LTSH", "LT", 4, 5},  {"NUMDES", "LDSH", "LD", 4, 9},
};

bool IsAllNines(std::string_view text) {
  return !text.empty() && text.find_first_not_of('9') == std::string_view::npos;
}

/** A field, and where it is in the file. */
struct FieldPlace {
  std::string name;
  std::uint64_t offset;
};

/** The file header's bytes from an offset on; fewer at the end of the file. */
std::string BytesAt(const FileView &file, std::uint64_t offset, std::size_t bytes) {
  std::string text(bytes, '\0');
  text.resize(file.ReadAt(offset, text.data(), bytes));
  return text;
}

std::optional<FieldPlace> FindUnknownLength(const FileView &file) {
  std::uint64_t place = file.Layout({}).offsets["NUMI"];
  for (const LengthRows &rows : kLengthRows) {
    const std::string count = BytesAt(file, place, kCountDigits);
    place += kCountDigits;
    for (std::uint64_t row = 1; IsAllDigits(count) && row <= NumberOf(count); ++row) {
      const std::string number = std::to_string(row);
      const std::string suffix = std::string(kCountDigits - number.size(), '0') + number;
      if (IsAllNines(BytesAt(file, place, rows.subheaderDigits)))
        return FieldPlace{rows.subheaderLength + suffix, place};
      place += rows.subheaderDigits;
      if (IsAllNines(BytesAt(file, place, rows.dataDigits))) return FieldPlace{rows.dataLength + suffix, place};
      place += rows.dataDigits;
    }
  }
  return {};
}

/** The first number of a header that is all nines, for which the stream file header has the value. */
std::optional<FieldPlace> FindUnknownField(const FileView &file, const HeaderChoice &header) {
  std::string name;
  file.ListFields(header, [&](const Field &field) {
    const bool isUnknown = field.content == FieldContent::Digits && field.text.size() > 1 && IsAllNines(field.text);
    if (name.empty() && isUnknown) name = field.name;
  });
  if (!name.empty()) {
    const std::uint64_t start = header.kind ? file.Place(*header.kind, header.index).subheader : std::uint64_t{0};
    return FieldPlace{NameIn(header, name), start + file.Layout(header).offsets[name]};
  }
  return header.kind ? std::nullopt : FindUnknownLength(file);
}

std::optional<Finding> FindUnknown(const FileView &file, const LoadFault &fault, std::int32_t status) {
  const std::optional<FieldPlace> place = FindUnknownField(file, fault.header);
  if (!place) return {};
  const char *const reason =
      status == ERROR_INVALID_VALUE ? "the file has no stream file header" : "the stream file header is damaged";
  return Finding{place->name, place->offset, std::string("is unknown (all nines), and ") + reason};
}

/** A length of extended data that doesn't cover the field between both. */
std::optional<Finding> FindLengthOfData(const FileView &file, const LoadFault &fault, std::int32_t status) {
  constexpr std::string_view kData[] = {"UDHD", "XHD", "UDID", "IXSHD", "SXSHD", "TXSHD"};
  constexpr std::uint64_t kLengthDigits = 5;
  constexpr std::uint64_t kOverflowDigits = 3;
  const bool isData = std::find(std::begin(kData), std::end(kData), fault.field) != std::end(kData);
  if (!isData || status != ERROR_FILE_FORMAT) return {};
  const std::string name = fault.field + "L";
  return Finding{NameIn(fault.header, name), fault.offset - kOverflowDigits - kLengthDigits,
                 "is " + Quoted(file.FieldText(fault.header, name)) + ", not 00000 or at least 00003"};
}

/** A count with a minus sign. */
std::optional<Finding> FindCount(const FileView &file, const LoadFault &fault, std::int32_t status) {
  const auto *const rows = std::find_if(std::begin(kLengthRows), std::end(kLengthRows), [&](const LengthRows &one) {
    return status == ERROR_NO_MEMORY && !fault.header.kind && fault.field == one.subheaderLength;
  });
  if (rows == std::end(kLengthRows)) return {};
  return Finding{rows->count, fault.offset - kCountDigits,
                 "is " + Quoted(file.FieldText({}, rows->count)) + ", not a number from 000 to 999"};
}

}  // namespace

std::optional<Finding> FindLoadFault(const FileView &file, std::int32_t status) {
  const LoadFault fault = file.Fault();
  if (fault.field.empty()) return FindUnknown(file, fault, status);
  if (auto length = FindLengthOfData(file, fault, status)) return length;
  if (auto count = FindCount(file, fault, status)) return count;
  return Finding{NameIn(fault.header, fault.field), fault.offset, WordsOf(fault, file, status)};
}

Problem LoadProblem(const std::string &fileName, const FileView &file, std::int32_t status) {
  if (status == ERROR_FILE_READ && file.SourceBytes() == 0) return {fileName, "the file is empty", status};
  const std::optional<Finding> fault = FindLoadFault(file, status);
  if (!fault) return StatusProblem(fileName, status);
  return {fileName, fault->field + " at byte " + std::to_string(fault->offset) + " " + fault->words, status};
}

}  // namespace ntf
