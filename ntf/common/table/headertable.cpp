#include "table/headertable.h"

#include "internal/ksclasses_.h"
#include "table/fields.h"

#include <algorithm>
#include <cstring>

namespace ksntfx {

namespace {

void SetRowDefault(const HeaderRow &row, char *base) {
  char *text = base + row.place;
  std::memset(text, row.initial == Initial::Blanks ? ' ' : '\0', row.capacity - 1U);
  text[row.capacity - 1U] = '\0';
  if (row.initial == Initial::Text) std::memcpy(text, row.initialText.data(), row.initialText.size());
}

}  // namespace

bool IsCalledFor(const HeaderRow &row, const char *base, bool nitf20, std::uint8_t securityRules) {
  if (row.countedBy != HeaderRow::kNowhere && LengthAt(base, row.countedBy) == 0) return false;
  if ((securityRules & row.presentByRule) != 0) return true;
  return row.present == nullptr || row.present(base, nitf20);
}

std::int32_t LengthAt(const char *base, std::uint32_t place) {
  constexpr std::size_t kLongestLength = 5;  // such a text may lack a NUL of its own; a shorter one ends at its NUL
  return ParseNumber({base + place, kLongestLength});
}

char *DataAt(const char *base, std::uint32_t place) {
  char *data = nullptr;
  std::memcpy(&data, base + place, sizeof data);
  return data;
}

void SetDataAt(char *base, std::uint32_t place, char *data) {
  std::memcpy(base + place, &data, sizeof data);
}

void FreeDataAt(char *base, std::uint32_t place) {
  char *data = DataAt(base, place);
  KsFreeAndClear(data);
  SetDataAt(base, place, data);
}

void SetDefaults(const HeaderTable &table, void *record) {
  auto *base = static_cast<char *>(record);
  for (const HeaderRow &row : table.rows) {
    if (row.kind == HeaderRow::Kind::Text) SetRowDefault(row, base);
    if (row.kind != HeaderRow::Kind::Security) continue;
    for (const HeaderRow &field : row.fields->rows) SetRowDefault(field, base + row.place);
  }
}

namespace {

bool IsListed(const HeaderRow &row, const char *base, bool nitf20) {
  if (row.kind == HeaderRow::Kind::Data && DataAt(base, row.place) == nullptr) return false;
  return IsPresent(row, base, nitf20, 0);
}

std::string_view FieldBytes(const HeaderRow &row, const char *base, bool nitf20) {
  if (row.kind == HeaderRow::Kind::Text) return {base + row.place, WidthOf(row, nitf20)};
  return {DataAt(base, row.place), static_cast<std::size_t>(std::max(LengthAt(base, row.countedBy) - row.overhead, 0))};
}

void ListRows(std::span<const HeaderRow> rows, const char *base, bool nitf20, std::string_view prefix,
              const std::function<void(const FieldView &)> &visit) {
  for (const HeaderRow &row : rows) {
    if (row.kind == HeaderRow::Kind::Group) continue;
    if (row.kind == HeaderRow::Kind::Security) {
      ListRows(row.fields->rows, base + row.place, nitf20, row.name, visit);
    } else if (IsListed(row, base, nitf20)) {
      visit({std::string(prefix).append(row.name), FieldBytes(row, base, nitf20), row.content});
    }
  }
}

}  // namespace

void ListFields(const HeaderTable &table, const void *record, bool nitf20,
                const std::function<void(const FieldView &)> &visit) {
  ListRows(table.rows, static_cast<const char *>(record), nitf20, {}, visit);
}

}  // namespace ksntfx
