// Tables of binary numbers, the highest byte first, such as those in front of vector-quantised data.
#pragma once

#include "internal/status.h"
#include "table/big_endian.h"
#include "table/header_table.h"

#include <cstring>
#include <span>

namespace ksntfx {

/** One number of a record, which has 1, 2 or 4 bytes, in the file as in the record. */
struct BinaryRow {
  std::uint32_t place;
  std::uint32_t bytes;
};

template <class Member>
constexpr BinaryRow BinaryNumber(MemberPlace<Member> member) {
  static_assert(sizeof(Member) == 1 || sizeof(Member) == 2 || sizeof(Member) == 4);
  return {member.offset, sizeof(Member)};
}

/** The bytes of all rows in the file. */
constexpr std::uint32_t BytesOf(std::span<const BinaryRow> rows) {
  std::uint32_t bytes = 0;
  for (const BinaryRow &row : rows) bytes += row.bytes;
  return bytes;
}

/** The most that the rows of a table may be. */
constexpr std::uint32_t kMostBinaryBytes = 64;

/** Reads a record from the file's position: SUCCESS, or ERROR_FILE_READ with the record as it was. */
Status ReadBinary(KsHandle file, std::span<const BinaryRow> rows, void *record);

/** Writes a record at the file's position: SUCCESS or ERROR_FILE_WRITE. */
Status WriteBinary(KsHandle file, std::span<const BinaryRow> rows, const void *record);

}  // namespace ksntfx
