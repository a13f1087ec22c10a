#include "table/header_reader.h"

#include "internal/ksclasses_.h"

namespace ksntfx {

HeaderReader::HeaderReader(const HeaderSource &source, void *target)
    : file(source.file), record(target), limit(source.limit), nitf20(source.nitf20), notes(source.notes) {
  const std::int64_t here = KsSeek(file, 0, KS_SEEK_CURRENT);
  start = aheadPosition = static_cast<std::uint64_t>(std::max<std::int64_t>(here, 0));
}

Status HeaderReader::Read(const HeaderTable &table) {
  const Status status = table.read(*this, static_cast<char *>(record));
  aheadPosition = Position();
  aheadStart = aheadEnd = 0;
  KsSeek(file, static_cast<std::int64_t>(aheadPosition), KS_SEEK_START);
  return status;
}

bool HeaderReader::NoteFault(const HeaderRow &row, const char *base, Status &status) {
  // A field of the security group was noted before the group.
  if (row.kind == HeaderRow::Kind::Security) {
    fault.group = row.name;
    return false;
  }
  fault.name = row.name;
  fault.offset = Position();
  const bool isValue = status != ERROR_FILE_READ && status != ERROR_NO_MEMORY && status != kBudgetSpent;
  if (row.kind != HeaderRow::Kind::Text || !isValue) return false;
  fault.text = {base + row.place, WidthOf(row, nitf20)};
  fault.offset -= fault.text.size();
  // A header without its marker is none.
  if (notes == nullptr || !row.marker.empty()) return false;
  notes->list.push_back({std::string(group).append(row.name), std::string(fault.text), fault.offset, status.Code()});
  fault = {};
  status = SUCCESS;
  return true;
}

Status HeaderReader::ReadSecurity(const HeaderRow &row, char *base) {
  securityRules = row.securityRules;
  group = row.name;
  const Status status = row.fields->read(*this, base + row.place);
  group = {};
  return status;
}

Status HeaderReader::ReadData(const HeaderRow &row, char *base) {
  const std::int32_t length = LengthAt(base, row.countedBy);
  if (length < row.overhead) return ERROR_FILE_FORMAT;
  if (length <= row.emptyUpTo) {
    FreeDataAt(base, row.place);
    return SUCCESS;
  }
  const auto bytes = static_cast<std::uint32_t>(length - row.overhead);
  char *data = nullptr;
  const Status status = TakeNew(&data, bytes);
  if (status == SUCCESS) SetDataAt(base, row.place, data, bytes);
  return status;
}

/** Takes what is read ahead, and the rest from the file: right into the buffer where it is long. */
Status HeaderReader::TakeBeyond(char *buffer, std::uint64_t bytes) {
  if (bytes > limit - Taken()) return kBudgetSpent;
  const std::uint32_t held = Ready();
  std::memcpy(buffer, ahead + aheadStart, held);
  aheadStart = aheadEnd = 0;
  const std::uint64_t missing = bytes - held;
  std::uint64_t taken = 0;
  if (missing >= kReadAhead) {
    taken = KsRead(file, buffer + held, missing);
    aheadPosition += taken;
  } else {
    const std::uint64_t left = limit - (aheadPosition - start);
    aheadEnd = static_cast<std::uint32_t>(KsRead(file, ahead, std::min<std::uint64_t>(kReadAhead, left)));
    aheadPosition += aheadEnd;
    taken = std::min<std::uint64_t>(missing, aheadEnd);
    std::memcpy(buffer + held, ahead, taken);
    aheadStart = static_cast<std::uint32_t>(taken);
  }
  return taken == missing ? SUCCESS : ERROR_FILE_READ;
}

Status HeaderReader::TakeNew(char **buffer, std::uint64_t bytes) {
  if (bytes > limit - Taken()) return kBudgetSpent;
  if (!Holds(bytes, 1)) return ERROR_FILE_READ;
  KsArray<char> taken;
  if (!taken.Allocate(bytes + 1)) return ERROR_NO_MEMORY;
  const Status status = Take(taken.Get(), bytes);
  if (status != SUCCESS) return status;
  KsFreeAndClear(*buffer);
  *buffer = taken.Release();
  return SUCCESS;
}

bool HeaderReader::Holds(std::uint64_t count, std::uint64_t bytes) const {
  // What is read ahead is there, and the system need not be asked.
  if (bytes == 0 || count <= Ready() / bytes) return true;
  const std::int64_t here = KsSeek(file, 0, KS_SEEK_CURRENT);
  const std::int64_t end = KsSeek(file, 0, KS_SEEK_END);
  KsSeek(file, here, KS_SEEK_START);
  const auto fileSize = static_cast<std::uint64_t>(std::max<std::int64_t>(end, 0));
  const std::uint64_t left = fileSize > Position() ? fileSize - Position() : 0;
  return count <= left / bytes;
}

}  // namespace ksntfx
