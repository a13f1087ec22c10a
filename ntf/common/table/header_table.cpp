#include "table/header_table.h"

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

std::uint32_t HeldAt(const char *base, std::uint32_t place) {
  std::uint32_t held = 0;
  std::memcpy(&held, base + place + sizeof(char *), sizeof held);
  return DataAt(base, place) == nullptr ? 0 : held;
}

void SetDataAt(char *base, std::uint32_t place, char *data, std::uint32_t bytes) {
  char *before = DataAt(base, place);
  KsFreeAndClear(before);
  std::memcpy(base + place, &data, sizeof data);
  std::memcpy(base + place + sizeof data, &bytes, sizeof bytes);
}

void FreeDataAt(char *base, std::uint32_t place) {
  SetDataAt(base, place, nullptr, 0);
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

bool IsListed(const HeaderRow &row, const char *base, bool nitf20, std::uint8_t securityRules) {
  if (row.kind == HeaderRow::Kind::Data && DataAt(base, row.place) == nullptr) return false;
  return IsPresent(row, base, nitf20, securityRules);
}

std::string_view FieldBytes(const HeaderRow &row, const char *base, bool nitf20) {
  if (row.kind == HeaderRow::Kind::Text) return {base + row.place, WidthOf(row, nitf20)};
  const auto length = static_cast<std::uint32_t>(std::max(LengthAt(base, row.countedBy) - row.overhead, 0));
  return {DataAt(base, row.place), std::min(length, HeldAt(base, row.place))};
}

/** `group` is the row of the security group that the rows are in, or null. */
void ListRows(std::span<const HeaderRow> rows, const char *base, bool nitf20, const HeaderRow *group,
              const std::function<void(const FieldView &)> &visit) {
  for (const HeaderRow &row : rows) {
    if (row.kind == HeaderRow::Kind::Group) continue;
    if (row.kind == HeaderRow::Kind::Security) {
      ListRows(row.fields->rows, base + row.place, nitf20, &row, visit);
    } else if (IsListed(row, base, nitf20, group != nullptr ? group->securityRules : 0)) {
      visit({std::string(group != nullptr ? group->name : "").append(row.name), FieldBytes(row, base, nitf20),
             row.content});
    }
  }
}

}  // namespace

void ListFields(const HeaderTable &table, const void *record, bool nitf20,
                const std::function<void(const FieldView &)> &visit) {
  ListRows(table.rows, static_cast<const char *>(record), nitf20, nullptr, visit);
}

}  // namespace ksntfx
