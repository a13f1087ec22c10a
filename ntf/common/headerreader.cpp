#include "headerreader.h"

#include "internal/ksclasses_.h"
#include "nitffile.h"
#include "strmfhdr.h"

HeaderReader::HeaderReader(NitfFile &source, void *target)
    : file(&source), record(target), nitf20(source.nitf20Layout != 0) {
  const std::int64_t here = KsSeek(file->fileHandle, 0, KS_SEEK_CURRENT);
  start = aheadPosition = static_cast<std::uint64_t>(std::max<std::int64_t>(here, 0));
}

void HeaderReader::ReplayFrom(const StreamFileHeader &stream) {
  const std::uint32_t consumed = file->streamBytesConsumed;
  limit = stream.streamLengthFirst > consumed ? stream.streamLengthFirst - consumed : 0;
}

void HeaderReader::CountReplayed() {
  const auto count = static_cast<std::uint32_t>(Position() - start);
  file->streamBytesConsumed += count;
  file->streamBytesLeft -= count;
}

std::int32_t HeaderReader::Read(const HeaderTable &table) {
  const std::int32_t status = table.read(*this, static_cast<char *>(record));
  const bool lacksData = status != SUCCESS && failed->countedBy != HeaderRow::kNowhere;
  if (lacksData) DropData(table, failed->countedBy);
  aheadPosition = Position();
  aheadStart = aheadEnd = 0;
  KsSeek(file->fileHandle, static_cast<std::int64_t>(aheadPosition), KS_SEEK_START);
  return status;
}

void HeaderReader::DropData(const HeaderTable &table, std::uint32_t countedBy) {
  // The length is new and its data were not reached: data of another length must not stand beside it.
  for (const HeaderRow &row : table.rows) {
    if (row.kind == HeaderRow::Kind::Data && row.countedBy == countedBy)
      FreeDataAt(static_cast<char *>(record), row.place);
  }
}

std::int32_t HeaderReader::ReadSecurity(const HeaderRow &row, char *base, bool terminates) {
  securityRules = row.securityRules;
  return ReadSecurityGroup(*this, base + row.place, terminates);
}

std::int32_t HeaderReader::ReadData(const HeaderRow &row, char *base) {
  const std::int32_t length = LengthAt(base, row.countedBy);
  if (length < row.overhead) return ERROR_FILE_FORMAT;
  if (length <= row.emptyUpTo) {
    FreeDataAt(base, row.place);
    return SUCCESS;
  }
  char *data = DataAt(base, row.place);
  const std::int32_t status = TakeNew(&data, static_cast<std::uint32_t>(length - row.overhead));
  SetDataAt(base, row.place, data);
  return status;
}

/** Takes what is read ahead, and the rest from the file: right into the buffer where it is long. */
std::int32_t HeaderReader::TakeBeyond(char *buffer, std::uint64_t bytes) {
  if (bytes > limit - (Position() - start)) return kBudgetSpent;
  const std::uint32_t held = Ready();
  std::memcpy(buffer, ahead + aheadStart, held);
  aheadStart = aheadEnd = 0;
  const std::uint64_t missing = bytes - held;
  std::uint64_t taken = 0;
  if (missing >= kReadAhead) {
    taken = KsRead(file->fileHandle, buffer + held, missing);
    aheadPosition += taken;
  } else {
    const std::uint64_t left = limit - (aheadPosition - start);
    aheadEnd = static_cast<std::uint32_t>(KsRead(file->fileHandle, ahead, std::min<std::uint64_t>(kReadAhead, left)));
    aheadPosition += aheadEnd;
    taken = std::min<std::uint64_t>(missing, aheadEnd);
    std::memcpy(buffer + held, ahead, taken);
    aheadStart = static_cast<std::uint32_t>(taken);
  }
  return taken == missing ? SUCCESS : ERROR_FILE_READ;
}

std::int32_t HeaderReader::TakeNew(char **buffer, std::uint64_t bytes) {
  if (bytes > limit - (Position() - start)) return kBudgetSpent;
  if (!Holds(bytes, 1)) return ERROR_FILE_READ;
  KsFreeAndClear(*buffer);
  *buffer = static_cast<char *>(KsCalloc(bytes + 1, 1, __LINE__, __FILE__));
  return *buffer == nullptr ? static_cast<std::int32_t>(ERROR_NO_MEMORY) : Take(*buffer, bytes);
}

bool HeaderReader::Holds(std::uint64_t count, std::uint64_t bytes) const {
  // What is read ahead is there, and the system need not be asked.
  if (bytes == 0 || count <= Ready() / bytes) return true;
  const std::int64_t here = KsSeek(file->fileHandle, 0, KS_SEEK_CURRENT);
  const std::int64_t end = KsSeek(file->fileHandle, 0, KS_SEEK_END);
  KsSeek(file->fileHandle, here, KS_SEEK_START);
  const auto fileSize = static_cast<std::uint64_t>(std::max<std::int64_t>(end, 0));
  const std::uint64_t left = fileSize > Position() ? fileSize - Position() : 0;
  return count <= left / bytes;
}

std::int32_t ReadSubheader(HeaderReader &reader, const HeaderTable &table, NitfFile &file,
                           const StreamFileHeader &stream, bool replay) {
  const std::int64_t start = KsSeek(file.fileHandle, 0, KS_SEEK_CURRENT);
  if (replay) reader.ReplayFrom(stream);
  const std::int32_t status = reader.Read(table);
  if (status == kBudgetSpent) return SUCCESS;
  if (status != SUCCESS) return status;
  if (replay) reader.CountReplayed();
  KsSeek(file.fileHandle, start, KS_SEEK_START);
  return SUCCESS;
}
