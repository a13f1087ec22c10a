#include "headerwriter.h"

#include "fields.h"
#include "nitffile.h"
#include "savenitf.h"

#include <algorithm>
#include <cstring>

namespace {

/** The fill of a row of the security group: GroupFills tells those of the classification, the downgrade, the others. */
char GroupFill(const HeaderRow &group, const HeaderRow &row) {
  if (row.name == "SCLAS") return group.groupFills[0];
  return row.name == "SDWNG" ? group.groupFills[1] : group.groupFills[2];
}

}  // namespace

HeaderWriter::HeaderWriter(KNitfSaveFile &saving, KsHandle output, NitfFile &source, const void *sourceRecord)
    : save(saving), out(output), file(source), record(sourceRecord), nitf20(source.nitf20Layout != 0) {}

std::int32_t HeaderWriter::Write(const HeaderTable &table) {
  return WriteRows(table.rows, static_cast<const char *>(record), table.fill, nullptr);
}

std::int32_t HeaderWriter::WriteRows(std::span<const HeaderRow> rows, const char *base, char fill,
                                     const HeaderRow *group) {
  for (const HeaderRow &row : rows) {
    std::int32_t status = SUCCESS;
    if (row.kind == HeaderRow::Kind::Security) {
      status = WriteRows(SecurityRows(), base + row.place, fill, &row);
    } else {
      const bool filledByGroup = group != nullptr && !group->groupFills.empty();
      const char rowFill = filledByGroup ? GroupFill(*group, row) : row.fill != '\0' ? row.fill : fill;
      status = WriteRow(row, base, rowFill, group);
    }
    if (status != SUCCESS) return status;
  }
  return SUCCESS;
}

std::int32_t HeaderWriter::WriteRow(const HeaderRow &row, const char *base, char fill, const HeaderRow *group) {
  if (!IsPresent(row, base, nitf20, group != nullptr ? group->securityRules : 0)) return SUCCESS;
  const bool named = visit && row.kind != HeaderRow::Kind::Group;
  if (named) visit(std::string(group != nullptr ? group->name : "").append(row.name), written);
  if (row.write != nullptr) return row.write(*this);
  if (row.kind == HeaderRow::Kind::Data) return WriteData(row, base);
  if (!row.rendered) return Text(base + row.place, WidthOf(row, nitf20), fill);
  std::int32_t number = 0;
  std::memcpy(&number, base + row.number, sizeof number);
  return Number(number, WidthOf(row, nitf20));
}

std::int32_t HeaderWriter::WriteData(const HeaderRow &row, const char *base) {
  const std::int32_t count = LengthAt(base, row.countedBy) - row.overhead;
  if (count <= 0) return SUCCESS;
  const char *const data = DataAt(base, row.place);
  if (row.writtenAsText) return Text(data != nullptr ? data : "", static_cast<std::uint32_t>(count), '0');
  return Bytes(data, static_cast<std::uint32_t>(count));
}

std::int32_t HeaderWriter::Text(const char *text, std::uint32_t width, char fill) {
  const char fills[] = {fill, '\0'};
  written += width;
  return visit ? static_cast<std::int32_t>(SUCCESS) : WriteField(nullptr, out, text, width, fills);
}

std::int32_t HeaderWriter::Number(std::int64_t value, std::uint32_t width) {
  char digits[24];
  FormatBounded(digits, sizeof digits, "%lld", static_cast<long long>(value));
  return Text(digits, width, '0');
}

std::int32_t HeaderWriter::Bytes(const void *bytes, std::uint64_t count) {
  if (bytes == nullptr && count != 0) return Zeros(count);
  written += count;
  const bool done = visit || count == 0 || KsWrite(out, bytes, count) == count;
  return done ? SUCCESS : ERROR_FILE_WRITE;
}

std::int32_t HeaderWriter::Zeros(std::uint64_t count) {
  static constexpr std::uint8_t kZeros[256] = {};
  for (; count != 0; count -= std::min<std::uint64_t>(count, sizeof kZeros)) {
    const std::int32_t status = Bytes(kZeros, std::min<std::uint64_t>(count, sizeof kZeros));
    if (status != SUCCESS) return status;
  }
  return SUCCESS;
}

std::int32_t HeaderWriter::BigEndian(std::uint32_t value, std::uint32_t bytes) {
  std::uint8_t encoded[4];
  for (std::uint32_t i = 0; i < bytes; ++i) encoded[i] = static_cast<std::uint8_t>(value >> 8 * (bytes - 1 - i));
  return Bytes(encoded, bytes);
}

std::uint64_t VisitFields(const HeaderTable &table, const void *record, NitfFile &file,
                          const HeaderWriter::Visitor &visitor) {
  KNitfSaveFile nowhere;
  HeaderWriter writer(nowhere, KS_INVALID_HANDLE, file, record);
  writer.OnlyVisit(visitor);
  writer.Write(table);
  return writer.Written();
}
