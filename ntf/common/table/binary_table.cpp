#include "table/binary_table.h"

namespace ksntfx {

namespace {

std::uint32_t Take(const std::uint8_t *bytes, std::uint32_t count) {
  std::uint32_t value = 0;
  for (std::uint32_t at = 0; at < count; ++at) value = value << 8 | bytes[at];
  return value;
}

template <class Member>
void Store(char *place, std::uint32_t value) {
  const auto member = static_cast<Member>(value);
  std::memcpy(place, &member, sizeof member);
}

template <class Member>
std::uint32_t Load(const char *place) {
  Member member{};
  std::memcpy(&member, place, sizeof member);
  return member;
}

}  // namespace

Status ReadBinary(KsHandle file, std::span<const BinaryRow> rows, void *record) {
  std::uint8_t bytes[kMostBinaryBytes];
  const std::uint32_t count = BytesOf(rows);
  if (KsRead(file, bytes, count) != count) return ERROR_FILE_READ;
  const std::uint8_t *from = bytes;
  for (const BinaryRow &row : rows) {
    char *const place = static_cast<char *>(record) + row.place;
    const std::uint32_t value = Take(from, row.bytes);
    from += row.bytes;
    if (row.bytes == 1) Store<std::uint8_t>(place, value);
    if (row.bytes == 2) Store<std::uint16_t>(place, value);
    if (row.bytes == 4) Store<std::uint32_t>(place, value);
  }
  return SUCCESS;
}

Status WriteBinary(KsHandle file, std::span<const BinaryRow> rows, const void *record) {
  std::uint8_t bytes[kMostBinaryBytes];
  std::uint8_t *to = bytes;
  for (const BinaryRow &row : rows) {
    const char *const place = static_cast<const char *>(record) + row.place;
    const std::uint32_t value = row.bytes == 1   ? Load<std::uint8_t>(place)
                                : row.bytes == 2 ? Load<std::uint16_t>(place)
                                                 : Load<std::uint32_t>(place);
    PutBigEndian(to, value, row.bytes);
    to += row.bytes;
  }
  const std::uint32_t count = BytesOf(rows);
  return KsWrite(file, bytes, count) == count ? SUCCESS : ERROR_FILE_WRITE;
}

}  // namespace ksntfx
