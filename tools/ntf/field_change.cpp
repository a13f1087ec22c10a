#include "field_change.h"

#include "fields.h"
#include "headertable.h"

#include <algorithm>
#include <cstring>
#include <iterator>
#include <string_view>

namespace ntf {
namespace {

/** What follows from the data and from other fields. */
constexpr std::string_view kKept[] = {"FHDR",   "FVER",   "CLEVEL",  "FL",     "HL",     "NUMI",   "NUMS",   "NUMX",
                                      "NUMT",   "NUMDES", "NUMRES",  "UDHDL",  "XHDL",   "IM",     "SY",     "TE",
                                      "NROWS",  "NCOLS",  "PVTYPE",  "IREP",   "ABPP",   "PJUST",  "ICORDS", "NICOM",
                                      "IC",     "COMRAT", "NBANDS",  "XBANDS", "IMODE",  "NBPR",   "NBPC",   "NPPBH",
                                      "NPPBV",  "NBPP",   "IMAG",    "UDIDL",  "IXSHDL", "SFMT",   "SCOLOR", "SXSHDL",
                                      "TXSHDL", "UDHOFL", "XHDLOFL", "UDOFL",  "IXSOFL", "SXSOFL", "TXSOFL"};

/** A row of a table and the record that its place counts from. */
struct FieldPlace {
  const HeaderRow *row = nullptr;
  char *base = nullptr;
};

FieldPlace FindRow(std::span<const HeaderRow> rows, char *base, std::string_view prefix, std::string_view name) {
  for (const HeaderRow &row : rows) {
    if (row.kind == HeaderRow::Kind::Security) {
      const FieldPlace found = FindRow(SecurityRows(), base + row.place, row.name, name);
      if (found.row != nullptr) return found;
    } else if (row.kind == HeaderRow::Kind::Text && row.width21 != 0 && std::string(prefix).append(row.name) == name) {
      return {&row, base};
    }
  }
  return {};
}

/** Two numbers of five characters, "ROW,COLUMN" or as the field holds them. */
bool StoreHalves(const FieldPlace &place, const std::string &value) {
  const std::size_t comma = value.find(',');
  const bool split = comma != std::string::npos;
  if (!split && value.size() != 2 * kLocationHalf) return false;
  const std::int32_t halves[] = {ParseNumber(value.substr(0, split ? comma : kLocationHalf)),
                                 ParseNumber(value.substr(split ? comma + 1 : kLocationHalf))};
  std::string text;
  for (const std::int32_t half : halves) {
    char digits[16];
    FormatBounded(digits, sizeof digits, half < 0 ? "-%04d" : "%05d", half < 0 ? -half : half);
    text += digits;
  }
  if (text.size() != 2 * kLocationHalf) return false;
  std::memcpy(place.base + place.row->place, text.data(), text.size());
  std::memcpy(place.base + place.row->halves, halves, sizeof halves);
  return true;
}

bool StoreDigits(const FieldPlace &place, const std::string &value) {
  if (value.empty() || value.size() > place.row->width21 || !IsAllDigits(value)) return false;
  const std::string text = std::string(place.row->width21 - value.size(), '0') + value;
  std::memcpy(place.base + place.row->place, text.data(), text.size());
  if (place.row->number == HeaderRow::kNowhere) return true;
  const std::int32_t number = ParseNumber(value);
  std::memcpy(place.base + place.row->number, &number, sizeof number);
  return true;
}

bool Store(const FieldPlace &place, const std::string &value) {
  if (place.row->halves != HeaderRow::kNowhere) return StoreHalves(place, value);
  if (place.row->content == FieldContent::Digits) return StoreDigits(place, value);
  return SetField(place.base + place.row->place, place.row->width21, value.c_str()) == SUCCESS;
}

/** Three bytes as six hexadecimal digits: red, green, blue. */
bool StoreBackground(NitfFile &file, const std::string &value) {
  const bool known = value.size() == 6 && value.find_first_not_of("0123456789abcdefABCDEF") == std::string::npos;
  if (!known) return false;
  const auto color = static_cast<std::uint32_t>(std::stoul(value, nullptr, 16));
  file.backgroundColor = file.header.backgroundColorValue = color >> 16 | (color & 0xFF00U) | (color & 0xFFU) << 16;
  return true;
}

}  // namespace

Outcome ChangeField(const std::string &fileName, NitfFile &file, const HeaderChoice &header, const std::string &name,
                    const std::string &value) {
  const Problem refused = {fileName, name + " can't hold '" + value + "'", ERROR_INVALID_VALUE};
  if (std::find(std::begin(kKept), std::end(kKept), name) != std::end(kKept)) {
    return Problem{fileName, name + " follows from the data and can't be changed", ERROR_INVALID_VALUE};
  }
  if (!header.kind && name == "FBKGC") return StoreBackground(file, value) ? Outcome() : Outcome(refused);
  void *const record = header.kind ? FindSubheader(&file, *header.kind, header.index) : &file.header;
  const HeaderTable &table = header.kind ? SubheaderTable(*header.kind) : kFileHeaderTable;
  const FieldPlace place = FindRow(table.rows, static_cast<char *>(record), {}, name);
  if (place.row == nullptr) return Problem{fileName, "there is no field " + name + " here", ERROR_INVALID_VALUE};
  return Store(place, value) ? Outcome() : Outcome(refused);
}

}  // namespace ntf
