#include "access/header_info.h"

#include "internal/ksclasses_.h"
#include "table/fields.h"

namespace ksntfx {

namespace {

/** Digits of the length and of the overflow number in front of data; the length counts the latter. */
constexpr std::uint32_t kLengthDigits = 5;
constexpr std::uint32_t kOverflowDigits = 3;

std::uint32_t NumberIn(const char *text, std::size_t width) {
  return static_cast<std::uint32_t>(ParseNumber(BufferText(text, width)));
}

// ---- get

void GetText(const InfoRow &row, const char *record, char *info) {
  char *text = nullptr;
  CopyOutString(&text, BufferText(record + row.field, row.width));
  StoreInfo(info, text);
}

void GetLocation(const InfoRow &row, const char *record, char *info) {
  const char *const field = record + row.field;
  const std::int32_t first = ParseNumber({field, kLocationHalf});
  const std::int32_t second = ParseNumber({field + kLocationHalf, kLocationHalf});
  StoreInfo(info, row.crossed ? second : first);
  StoreInfo(info + sizeof first, row.crossed ? first : second);
}

/** Length, overflow number, and a block of the data that is big enough for a Set of the same length. */
Status GetExtension(const InfoRow &row, const char *record, char *info) {
  const std::int32_t length = LengthAt(record, row.dataLength);
  char *const place = info + 2 * sizeof(std::uint32_t);
  StoreInfo(info, length);
  StoreInfo(info + sizeof(std::uint32_t), NumberIn(record + row.field, kOverflowDigits));
  FreeInfoBlock(place);
  const auto overflow = static_cast<std::int32_t>(kOverflowDigits);
  if (length < overflow || length == row.dataOverhead) return SUCCESS;
  KsArray<char> block;
  if (!block.Allocate(static_cast<std::uint32_t>(length - row.dataOverhead))) return ERROR_NO_MEMORY;
  const std::uint32_t held = std::min(HeldAt(record, row.data), static_cast<std::uint32_t>(length - overflow));
  if (held != 0) std::memcpy(block.Get(), DataAt(record, row.data), held);
  StoreInfo(place, block.Release());
  return SUCCESS;
}

Status GetRow(const InfoRow &row, const char *record, char *info) {
  if (!row.filled) return SUCCESS;
  switch (row.kind) {
    case InfoRow::Kind::Text:
      GetText(row, record, info);
      return SUCCESS;
    case InfoRow::Kind::Number:
      StoreInfo(info, NumberIn(record + row.field, row.width));
      return SUCCESS;
    case InfoRow::Kind::Characters:
      std::memcpy(info, record + row.field, row.width);
      return SUCCESS;
    case InfoRow::Kind::Location:
      GetLocation(row, record, info);
      return SUCCESS;
    case InfoRow::Kind::Extension:
      return GetExtension(row, record, info);
    case InfoRow::Kind::Group:
      return GetInfo({row.rows}, record + row.field, info);
    case InfoRow::Kind::Special:
      break;
  }
  return row.get == nullptr ? SUCCESS : row.get(record, info);
}

// ---- set

Status SetText(const InfoRow &row, char *record, const char *info) {
  const char *const text = LoadInfo<const char *>(info);
  if (text == nullptr) return SUCCESS;
  return row.setText != nullptr ? row.setText(record, text) : SetField(record + row.field, row.width, text);
}

Status SetNumber(const InfoRow &row, char *record, const char *info) {
  const auto value = LoadInfo<std::uint32_t>(info);
  if (value < row.least || value > row.most) return ERROR_INVALID_VALUE;
  if (row.setNumber != nullptr) return row.setNumber(record, value);
  if (row.number != InfoRow::kNowhere) StoreInfo(record + row.number, value);
  SetNumberField(record + row.field, row.width, value);
  return SUCCESS;
}

void SetCharacters(const InfoRow &row, char *record, const char *info) {
  std::memcpy(record + row.field, info, row.width);
  record[row.field + row.width] = '\0';
}

/** Takes as many bytes of data as their length says. */
Status SetData(const InfoRow &row, char *record, const char *data) {
  const std::int32_t bytes = LengthAt(record, row.dataLength) - static_cast<std::int32_t>(kOverflowDigits);
  if (bytes < 0) return ERROR_INVALID_VALUE;
  KsArray<char> fresh;
  const bool made = fresh.Allocate(static_cast<std::uint32_t>(bytes) + 1);
  if (made) std::memcpy(fresh.Get(), data, static_cast<std::uint32_t>(bytes));
  SetDataAt(record, row.data, fresh.Release(), static_cast<std::uint32_t>(bytes));
  return made ? SUCCESS : ERROR_NO_MEMORY;
}

Status SetExtension(const InfoRow &row, char *record, const char *info) {
  const auto length = LoadInfo<std::uint32_t>(info);
  const auto *const data = LoadInfo<const char *>(info + 2 * sizeof length);
  SetNumberField(record + row.dataLength, kLengthDigits, length);
  SetNumberField(record + row.field, kOverflowDigits, LoadInfo<std::uint32_t>(info + sizeof length));
  return data == nullptr ? SUCCESS : SetData(row, record, data);
}

Status SetRow(const InfoTable &table, const InfoRow &row, char *record, const char *info) {
  switch (row.kind) {
    case InfoRow::Kind::Text:
      return SetText(row, record, info);
    case InfoRow::Kind::Number:
      return SetNumber(row, record, info);
    case InfoRow::Kind::Characters:
      SetCharacters(row, record, info);
      return SUCCESS;
    case InfoRow::Kind::Location:
      row.setPair(record, LoadInfo<std::int32_t>(info), LoadInfo<std::int32_t>(info + sizeof(std::int32_t)));
      return SUCCESS;
    case InfoRow::Kind::Extension:
      return SetExtension(row, record, info);
    case InfoRow::Kind::Group:
      return SetInfo({row.rows, table.skipsRefused}, record + row.field, info);
    case InfoRow::Kind::Special:
      break;
  }
  return row.set == nullptr ? SUCCESS : row.set(record, info);
}

}  // namespace

void FreeInfoBlock(char *place) {
  void *block = LoadInfo<void *>(place);
  KsFreeAndClear(block);
  StoreInfo(place, block);
}

Status GetInfo(const InfoTable &table, const void *record, void *info) {
  Status first = SUCCESS;
  for (const InfoRow &row : table.rows) {
    const Status status = GetRow(row, static_cast<const char *>(record), static_cast<char *>(info) + row.info);
    if (first == SUCCESS) first = status;
  }
  return first;
}

Status SetInfo(const InfoTable &table, void *record, const void *info) {
  for (const InfoRow &row : table.rows) {
    const char *const member = static_cast<const char *>(info) + row.info;
    const Status status = SetRow(table, row, static_cast<char *>(record), member);
    if (status != SUCCESS && !table.skipsRefused) return status;
  }
  return SUCCESS;
}

void FreeInfo(const InfoTable &table, void *info) {
  for (const InfoRow &row : table.rows) {
    char *const member = static_cast<char *>(info) + row.info;
    if (row.kind == InfoRow::Kind::Text) FreeInfoBlock(member);
    if (row.kind == InfoRow::Kind::Extension) FreeInfoBlock(member + 2 * sizeof(std::uint32_t));
    if (row.kind == InfoRow::Kind::Group) FreeInfo({row.rows}, member);
    if (row.release != nullptr) row.release(member);
  }
}

}  // namespace ksntfx
