#include "table/header_writer.h"

#include "table/big_endian.h"
#include "table/fields.h"

#include <algorithm>
#include <cstring>

namespace ksntfx {

namespace {

/** The fill of a row of the security group: GroupFills tells those of the classification, the downgrade, the others. */
char GroupFill(const HeaderRow &group, const HeaderRow &row) {
  if (row.name == "SCLAS") return group.groupFills[0];
  return row.name == "SDWNG" ? group.groupFills[1] : group.groupFills[2];
}

}  // namespace

Status HeaderWriter::Write(const HeaderTable &table) {
  return WriteRows(table.rows, static_cast<const char *>(record), table.fill, nullptr);
}

Status HeaderWriter::WriteRows(std::span<const HeaderRow> rows, const char *base, char fill, const HeaderRow *group) {
  for (const HeaderRow &row : rows) {
    Status status = SUCCESS;
    if (row.kind == HeaderRow::Kind::Security) {
      status = WriteRows(row.fields->rows, base + row.place, fill, &row);
    } else {
      const bool filledByGroup = group != nullptr && !group->groupFills.empty();
      const char rowFill = filledByGroup ? GroupFill(*group, row) : row.fill != '\0' ? row.fill : fill;
      status = WriteRow(row, base, rowFill, group);
    }
    if (status != SUCCESS) return status;
  }
  return SUCCESS;
}

Status HeaderWriter::WriteRow(const HeaderRow &row, const char *base, char fill, const HeaderRow *group) {
  if (!IsPresent(row, base, sink.nitf20, group != nullptr ? group->securityRules : 0)) return SUCCESS;
  const bool named = visit && row.kind != HeaderRow::Kind::Group;
  if (named) visit(std::string(group != nullptr ? group->name : "").append(row.name), written);
  if (row.write != nullptr) return row.write(*this);
  if (row.kind == HeaderRow::Kind::Data) return WriteData(row, base);
  if (!row.rendered) return Text(base + row.place, WidthOf(row, sink.nitf20), fill);
  std::int32_t number = 0;
  std::memcpy(&number, base + row.number, sizeof number);
  return Number(number, WidthOf(row, sink.nitf20));
}

Status HeaderWriter::WriteData(const HeaderRow &row, const char *base) {
  const std::int32_t count = LengthAt(base, row.countedBy) - row.overhead;
  if (count <= 0) return SUCCESS;
  const char *const data = DataAt(base, row.place);
  if (row.writtenAsText) return Text(data != nullptr ? data : "", static_cast<std::uint32_t>(count), '0');
  // What the length counts beyond the data is zeros.
  const std::uint32_t held = std::min(HeldAt(base, row.place), static_cast<std::uint32_t>(count));
  const Status status = Bytes(data, held);
  return status == SUCCESS ? Bytes(nullptr, static_cast<std::uint32_t>(count) - held) : status;
}

Status HeaderWriter::Text(const char *text, std::uint32_t width, char fill) {
  const char fills[] = {fill, '\0'};
  written += width;
  if (sink.memory != nullptr && !visit) {
    HoldText(text, width, fill);
    return SUCCESS;
  }
  return visit ? SUCCESS : WriteField(nullptr, sink.out, text, width, fills);
}

/** The text as WriteField writes it. */
void HeaderWriter::HoldText(const char *text, std::uint32_t width, char fill) {
  const std::string_view held = BufferText(text, width);
  const std::string filling(width - held.size(), fill);
  sink.memory->append(fill == ' ' ? held : filling).append(fill == ' ' ? filling : held);
}

Status HeaderWriter::Number(std::int64_t value, std::uint32_t width) {
  char digits[24];
  FormatBounded(digits, sizeof digits, "%lld", static_cast<long long>(value));
  return Text(digits, width, '0');
}

Status HeaderWriter::Bytes(const void *bytes, std::uint64_t count) {
  if (bytes == nullptr && count != 0) return Zeros(count);
  written += count;
  if (sink.memory != nullptr && !visit) {
    sink.memory->append(static_cast<const char *>(bytes), count);
    return SUCCESS;
  }
  const bool done = visit || count == 0 || KsWrite(sink.out, bytes, count) == count;
  return done ? SUCCESS : ERROR_FILE_WRITE;
}

Status HeaderWriter::Zeros(std::uint64_t count) {
  static constexpr std::uint8_t kZeros[256] = {};
  for (; count != 0; count -= std::min<std::uint64_t>(count, sizeof kZeros)) {
    const Status status = Bytes(kZeros, std::min<std::uint64_t>(count, sizeof kZeros));
    if (status != SUCCESS) return status;
  }
  return SUCCESS;
}

Status HeaderWriter::BigEndian(std::uint32_t value, std::uint32_t bytes) {
  std::uint8_t encoded[4];
  PutBigEndian(encoded, value, bytes);
  return Bytes(encoded, bytes);
}

std::uint64_t VisitFields(const HeaderTable &table, const void *record, HeaderSink sink,
                          const HeaderWriter::Visitor &visitor) {
  HeaderWriter writer(sink, record);
  writer.OnlyVisit(visitor);
  // A walk that only visits can't fail.
  static_cast<void>(writer.Write(table));
  return writer.Written();
}

}  // namespace ksntfx
