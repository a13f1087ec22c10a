#include "headertable.h"

#include "fields.h"
#include "internal/ksclasses_.h"
#include "nitffile.h"
#include "strmfhdr.h"

#include <algorithm>
#include <cstring>

namespace {

/** The downgrade field's value that a downgrade event goes with (MIL-STD-2500A, table A-1, FSDWNG). */
constexpr std::string_view kDowngradeByEvent = "999998";

bool DowngradeByEvent(const void *security, bool) {
  const char *text = static_cast<const SecurityFields *>(security)->DWNG;
  return BufferText(text, sizeof(SecurityFields::DWNG)) == kDowngradeByEvent;
}

std::int32_t CheckClassification(HeaderReader &, std::string_view text) {
  return std::string_view("CRSTU").find(text[0]) == std::string_view::npos ? ERROR_FILE_FORMAT : SUCCESS;
}

#define SECURITY(member) "S" #member, offsetof(SecurityFields, member), sizeof(SecurityFields::member)

constexpr HeaderRow kSecurityRows[] = {
    TextRow(SECURITY(CLAS), 1).Default("U").Then(CheckClassification),
    TextRow(SECURITY(CLSY), 2).Only21().Blank(),
    TextRow(SECURITY(CODE), 11).In20(40).Blank(),
    TextRow(SECURITY(CTLH), 2).In20(40).Blank(),
    TextRow(SECURITY(REL), 20).In20(40).Blank(),
    TextRow(SECURITY(DCTP), 2).Only21().Blank(),
    TextRow(SECURITY(DCDT), 8).Only21().Blank(),
    TextRow(SECURITY(DCXM), 4).Only21().Blank(),
    TextRow(SECURITY(DG), 1).Only21().Blank(),
    TextRow(SECURITY(DGDT), 8).Only21().Blank(),
    TextRow(SECURITY(CLTX), 43).Only21().Blank(),
    TextRow(SECURITY(CATP), 1).Only21().Blank(),
    TextRow(SECURITY(CAUT), 40).In20(20).Blank(),
    TextRow(SECURITY(CRSN), 1).Only21().Blank(),
    TextRow(SECURITY(SRDT), 8).Only21().Blank(),
    TextRow(SECURITY(CTLN), 15).In20(20).Blank(),
    TextRow(SECURITY(DWNG), 6).Only20().Blank(),
    TextRow(SECURITY(DEVT), 40).Only20().Blank().If(DowngradeByEvent),
};

#undef SECURITY

void SetRowDefault(const HeaderRow &row, char *base) {
  char *text = base + row.place;
  std::memset(text, row.initial == Initial::Blanks ? ' ' : '\0', row.capacity - 1U);
  text[row.capacity - 1U] = '\0';
  if (row.initial == Initial::Text) std::memcpy(text, row.initialText.data(), row.initialText.size());
}

void SetDataAt(char *base, std::uint32_t place, char *data) {
  std::memcpy(base + place, &data, sizeof data);
}

void FreeDataAt(char *base, std::uint32_t place) {
  char *data = DataAt(base, place);
  KsFreeAndClear(data);
  SetDataAt(base, place, data);
}

bool AllNines(std::string_view text) {
  return std::all_of(text.begin(), text.end(), [](char digit) { return digit == '9'; });
}

}  // namespace

std::span<const HeaderRow> SecurityRows() {
  return kSecurityRows;
}

bool IsCalledFor(const HeaderRow &row, const char *base, bool nitf20, std::uint8_t securityRules) {
  if (row.countedBy != HeaderRow::kNowhere && LengthAt(base, row.countedBy) == 0) return false;
  if ((securityRules & kEventAlways) != 0 && row.present == DowngradeByEvent) return true;
  return row.present == nullptr || row.present(base, nitf20);
}

std::int32_t LengthAt(const char *base, std::uint32_t place) {
  constexpr std::size_t kLongestLength = 5;  // such a text may lack a NUL of its own
  return ParseNumber(BufferText(base + place, kLongestLength));
}

char *DataAt(const char *base, std::uint32_t place) {
  char *data = nullptr;
  std::memcpy(&data, base + place, sizeof data);
  return data;
}

void SetDefaults(const HeaderTable &table, void *record) {
  auto *base = static_cast<char *>(record);
  for (const HeaderRow &row : table.rows) {
    if (row.kind == HeaderRow::Kind::Text) SetRowDefault(row, base);
    if (row.kind != HeaderRow::Kind::Security) continue;
    for (const HeaderRow &security : kSecurityRows) SetRowDefault(security, base + row.place);
  }
}

HeaderReader::HeaderReader(NitfFile &source, void *target)
    : file(&source), record(target), nitf20(source.nitf20Layout != 0) {
  const std::int64_t here = KsSeek(file->fileHandle, 0, KS_SEEK_CURRENT);
  position = static_cast<std::uint64_t>(std::max<std::int64_t>(here, 0));
}

void HeaderReader::ReplayFrom(const StreamFileHeader &stream) {
  const std::uint32_t consumed = file->streamBytesConsumed;
  budget = stream.streamLengthFirst > consumed ? stream.streamLengthFirst - consumed : 0;
}

void HeaderReader::CountReplayed() {
  const auto count = static_cast<std::uint32_t>(used);
  file->streamBytesConsumed += count;
  file->streamBytesLeft -= count;
}

std::int32_t HeaderReader::Read(const HeaderTable &table) {
  const std::int32_t status = ReadRows(table);
  KsSeek(file->fileHandle, static_cast<std::int64_t>(position), KS_SEEK_START);
  aheadStart = aheadEnd = 0;
  return status;
}

std::int32_t HeaderReader::ReadRows(const HeaderTable &table) {
  for (const HeaderRow &row : table.rows) {
    const std::int32_t status = ReadRow(row, static_cast<char *>(record), table.terminates);
    if (status == SUCCESS) continue;
    if (row.countedBy != HeaderRow::kNowhere) DropData(table, row.countedBy);
    return status;
  }
  return SUCCESS;
}

void HeaderReader::DropData(const HeaderTable &table, std::uint32_t countedBy) {
  // The length is new and its data were not reached: data of another length must not stand beside it.
  for (const HeaderRow &row : table.rows) {
    if (row.kind == HeaderRow::Kind::Data && row.countedBy == countedBy)
      FreeDataAt(static_cast<char *>(record), row.place);
  }
}

std::int32_t HeaderReader::ReadDecodedRow(const HeaderRow &row, char *base, bool terminates) {
  switch (row.kind) {
    case HeaderRow::Kind::Text:
      return IsPresent(row, base, nitf20, securityRules) ? ReadText(row, base, terminates) : SUCCESS;
    case HeaderRow::Kind::Security:
      return ReadSecurity(row, terminates);
    case HeaderRow::Kind::Data:
      return IsPresent(row, base, nitf20, securityRules) ? ReadData(row, base) : SUCCESS;
    case HeaderRow::Kind::Group:
      return row.group(*this);
  }
  return ERROR_FILE_FORMAT;
}

std::int32_t HeaderReader::ReadText(const HeaderRow &row, char *base, bool terminates) {
  const std::int32_t taken = TakeText(row, base, terminates);
  if (taken != SUCCESS) return taken;
  const std::string_view text(base + row.place, WidthOf(row, nitf20));
  StoreNumbers(row, base, text);
  if (row.decode == nullptr) return SUCCESS;
  if (row.decode == CheckClassification && (securityRules & kCheckClassification) == 0) return SUCCESS;
  return row.decode(*this, text);
}

/** What the field says as a number, beside its text. */
void HeaderReader::StoreNumbers(const HeaderRow &row, char *base, std::string_view field) {
  if (row.allNinesUnknown && AllNines(field)) sawUnknown = true;
  if (row.number != HeaderRow::kNowhere) {
    const std::int32_t number = ParseNumber(field);
    std::memcpy(base + row.number, &number, sizeof number);
  }
  if (row.halves != HeaderRow::kNowhere) {
    const std::size_t half = field.size() / 2;
    const std::int32_t halves[2] = {ParseNumber(field.substr(0, half)), ParseNumber(field.substr(half))};
    std::memcpy(base + row.halves, halves, sizeof halves);
  }
}

std::int32_t HeaderReader::ReadSecurity(const HeaderRow &row, bool terminates) {
  securityRules = row.securityRules;
  for (const HeaderRow &security : kSecurityRows) {
    const std::int32_t status = ReadRow(security, static_cast<char *>(record) + row.place, terminates);
    if (status != SUCCESS) return status;
  }
  return SUCCESS;
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
  const std::uint32_t held = aheadEnd - aheadStart;
  std::memcpy(buffer, ahead + aheadStart, held);
  aheadStart = aheadEnd = 0;
  const std::uint64_t missing = bytes - held;
  std::uint64_t taken = 0;
  if (missing >= kReadAhead) {
    taken = KsRead(file->fileHandle, buffer + held, missing);
  } else {
    aheadEnd = static_cast<std::uint32_t>(KsRead(file->fileHandle, ahead, kReadAhead));
    taken = std::min<std::uint64_t>(missing, aheadEnd);
    std::memcpy(buffer + held, ahead, taken);
    aheadStart = static_cast<std::uint32_t>(taken);
  }
  if (taken != missing) return ERROR_FILE_READ;
  position += bytes;
  return SUCCESS;
}

std::int32_t HeaderReader::TakeNumber(std::uint32_t width, bool nineIsUnknown, std::uint32_t *number) {
  char digits[16];
  const std::int32_t taken = Take(digits, width);
  if (taken != SUCCESS) return taken;
  const std::string_view text(digits, width);
  if (nineIsUnknown && AllNines(text)) sawUnknown = true;
  *number = static_cast<std::uint32_t>(ParseNumber(text));
  return SUCCESS;
}

std::int32_t HeaderReader::TakeNew(char **buffer, std::uint64_t bytes) {
  if (bytes > budget - used) return kBudgetSpent;
  if (!Holds(bytes, 1)) return ERROR_FILE_READ;
  KsFreeAndClear(*buffer);
  *buffer = static_cast<char *>(KsCalloc(bytes + 1, 1, __LINE__, __FILE__));
  return *buffer == nullptr ? static_cast<std::int32_t>(ERROR_NO_MEMORY) : Take(*buffer, bytes);
}

bool HeaderReader::Holds(std::uint64_t count, std::uint64_t bytes) const {
  // What is read ahead is there, and the system need not be asked.
  const std::uint64_t ready = aheadEnd - aheadStart;
  if (bytes == 0 || count <= ready / bytes) return true;
  const std::int64_t here = KsSeek(file->fileHandle, 0, KS_SEEK_CURRENT);
  const std::int64_t end = KsSeek(file->fileHandle, 0, KS_SEEK_END);
  KsSeek(file->fileHandle, here, KS_SEEK_START);
  const auto fileSize = static_cast<std::uint64_t>(std::max<std::int64_t>(end, 0));
  const std::uint64_t left = fileSize > position ? fileSize - position : 0;
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
      ListRows(kSecurityRows, base + row.place, nitf20, row.name, visit);
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
