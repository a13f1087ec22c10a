#include "save/splice.h"

#include "table/fields.h"
#include "table/header_writer.h"

#include <algorithm>
#include <cstring>
#include <map>
#include <utility>

namespace ksntfx {

namespace {

/** The bytes that are compared at once. */
constexpr std::uint64_t kPiece = 1U << 20;

// ---- segments -----------------------------------------------------------------------------------------------------

/** The kinds that can be added, and the fields that count them. */
struct CountedKind {
  SegmentKind kind;
  std::string_view field;
};

constexpr CountedKind kCountedKinds[] = {
    {SegmentKind::Image, "NUMI"}, {SegmentKind::Graphic, "NUMS"}, {SegmentKind::Text, "NUMT"}};
constexpr std::uint32_t kCountDigits = 3;

/** A segment in memory. */
struct NewSegment {
  std::string subheader;
  std::string_view data;
};

template <class Record>
std::string_view HeldData(const NitfFile *file, SegmentKind kind, std::uint32_t index) {
  const auto &record = *static_cast<const Record *>(FindSubheader(file, kind, index));
  return {static_cast<const char *>(record.memoryData), record.memoryBytes};
}

NewSegment SegmentOf(const NitfFile *file, SegmentKind kind, std::uint32_t index) {
  NewSegment segment;
  HeaderSink sink = SinkFor(file, KS_INVALID_HANDLE);
  sink.memory = &segment.subheader;
  // Writing to memory can't fail.
  static_cast<void>(HeaderWriter(sink, FindSubheader(file, kind, index)).Write(SubheaderTable(file, kind)));
  if (kind == SegmentKind::Image) segment.data = HeldData<ImageSubheader>(file, kind, index);
  if (kind == SegmentKind::Graphic) segment.data = HeldData<GraphicSubheader>(file, kind, index);
  if (kind == SegmentKind::Text) segment.data = HeldData<TextSubheader>(file, kind, index);
  return segment;
}

/** A number with zeros in front; longer than `width` if it doesn't fit. */
std::string Digits(std::uint64_t number, std::size_t width) {
  const std::string digits = std::to_string(number);
  return std::string(width - std::min(width, digits.size()), '0') + digits;
}

/** The new texts of the header fields that depend on the segments. */
struct HeaderChange {
  std::map<std::string, std::uint64_t> offsets{};
  std::uint64_t headerBytes = 0; /* the length of the header */
  std::uint64_t rowBytes = 0;    /* added to the length tables */
  std::uint64_t segmentBytes = 0;
};

HeaderChange ChangeOf(const NitfFile *file) {
  HeaderChange change;
  change.headerBytes =
      VisitFields(kFileHeaderTable, &file->header, SinkFor(file, KS_INVALID_HANDLE),
                  [&](const std::string &name, std::uint64_t offset) { change.offsets[name] = offset; });
  return change;
}

Status CheckSource(const NitfFile *file, const HeaderChange &change) {
  if (file->streamHeaderLoaded != 0) return ERROR_NOT_SUPPORTED;
  if (file->header.headerLength < change.headerBytes) return ERROR_FILE_FORMAT;
  const std::int64_t size = KsSeek(file->fileHandle, 0, KS_SEEK_END);
  const std::uint64_t needed = EndOfKind(file, SegmentKind::Text);
  return size >= 0 && needed <= static_cast<std::uint64_t>(size) ? SUCCESS : ERROR_FILE_READ;
}

/** Inserts the segments of a kind, and their rows of the length table. */
void InsertSegments(const NitfFile *file, const NitfFile *added, const CountedKind &counted, HeaderChange *change,
                    Splice *splice) {
  const std::uint32_t held = CountInFile(file, counted.kind);
  const std::uint32_t count = CountSegments(added, counted.kind);
  if (count == 0) return;
  const LengthTable &lengths = LengthsOf(counted.kind);
  std::string rows;
  for (std::uint32_t index = 0; index < count; ++index) {
    NewSegment segment = SegmentOf(added, counted.kind, index);
    rows += Digits(segment.subheader.size(), lengths.subheader.width);
    rows += Digits(segment.data.size(), lengths.data.width);
    change->segmentBytes += segment.subheader.size() + segment.data.size();
    const std::uint64_t end = EndOfKind(file, counted.kind);
    splice->Insert(end, std::move(segment.subheader));
    splice->InsertHeld(end, segment.data);
  }
  const std::uint64_t countPlace = change->offsets[std::string(counted.field)];
  const std::uint64_t rowBytes = std::uint64_t{lengths.subheader.width} + lengths.data.width;
  splice->Replace(countPlace, Digits(held + count, kCountDigits));
  change->rowBytes += rows.size();
  splice->Insert(countPlace + kCountDigits + held * rowBytes, std::move(rows));
}

}  // namespace

// ---- pieces -------------------------------------------------------------------------------------------------------

Splice::Splice(KsHandle file)
    : source(file), sourceBytes(static_cast<std::uint64_t>(std::max<std::int64_t>(KsSeek(file, 0, KS_SEEK_END), 0))) {}

void Splice::Add(Change change) {
  // Insertions come before a replacement of the byte that they are in front of.
  const auto place = [](const Change &one) { return std::pair(one.offset, one.removed != 0); };
  const auto behind =
      std::upper_bound(changes.begin(), changes.end(), change,
                       [&](const Change &one, const Change &other) { return place(one) < place(other); });
  changes.insert(behind, std::move(change));
}

void Splice::Replace(std::uint64_t offset, std::string bytes) {
  const std::uint64_t removed = bytes.size();
  Add({offset, removed, std::move(bytes), {}});
}

void Splice::Insert(std::uint64_t offset, std::string bytes) {
  Add({offset, 0, std::move(bytes), {}});
}

void Splice::InsertHeld(std::uint64_t offset, std::string_view bytes) {
  Add({offset, 0, {}, bytes});
}

std::uint64_t Splice::Length() const {
  std::uint64_t length = sourceBytes;
  for (const Change &change : changes) length += change.Bytes().size() - change.removed;
  return length;
}

template <class VisitRun, class VisitBytes>
Status Splice::Walk(const VisitRun &visitRun, const VisitBytes &visitBytes) const {
  std::uint64_t place = 0;
  const auto visitUpTo = [&](std::uint64_t end) -> Status {
    if (end < place || end > sourceBytes) return ERROR_FILE_READ;
    return end == place ? Status(SUCCESS) : visitRun(place, end - place);
  };
  for (const Change &change : changes) {
    Status status = visitUpTo(change.offset);
    if (status == SUCCESS) status = visitBytes(change.Bytes());
    if (status != SUCCESS) return status;
    place = change.offset + change.removed;
  }
  return visitUpTo(sourceBytes);
}

Status Splice::WriteTo(KsHandle out) const {
  return Walk(
      [&](std::uint64_t start, std::uint64_t bytes) -> Status {
        KsSeek(source, static_cast<std::int64_t>(start), KS_SEEK_START);
        return KsCopyBytes(out, source, bytes);
      },
      [&](std::string_view bytes) -> Status {
        return KsWrite(out, bytes.data(), bytes.size()) == bytes.size() ? SUCCESS : ERROR_FILE_WRITE;
      });
}

Status Splice::Read(std::uint64_t offset, char *buffer, std::uint64_t bytes) const {
  std::uint64_t skipped = 0;  // bytes of the new file in front of the run in hand, up to `offset`
  std::uint64_t done = 0;
  // Of a run of `held` bytes, how many to leave out, and how many to take.
  const auto part = [&](std::uint64_t held) {
    const std::uint64_t left = std::min(held, offset - skipped);
    skipped += left;
    return std::pair(left, std::min(held - left, bytes - done));
  };
  const Status status = Walk(
      [&](std::uint64_t start, std::uint64_t held) -> Status {
        const auto [left, count] = part(held);
        if (count == 0) return SUCCESS;
        KsSeek(source, static_cast<std::int64_t>(start + left), KS_SEEK_START);
        done += count;
        return KsRead(source, buffer + done - count, count) == count ? SUCCESS : ERROR_FILE_READ;
      },
      [&](std::string_view held) -> Status {
        const auto [left, count] = part(held.size());
        std::copy_n(held.data() + left, count, buffer + done);
        done += count;
        return SUCCESS;
      });
  return status != SUCCESS || done == bytes ? status : ERROR_FILE_READ;
}

Status Splice::CompareWith(KsHandle written) const {
  const std::int64_t size = KsSeek(written, 0, KS_SEEK_END);
  if (size < 0 || static_cast<std::uint64_t>(size) != Length()) return ERROR_FILE_WRITE;
  KsSeek(written, 0, KS_SEEK_START);
  std::vector<char> expected(kPiece);
  std::vector<char> found(kPiece);
  for (std::uint64_t done = 0; done < Length();) {
    const std::uint64_t count = std::min(Length() - done, kPiece);
    const Status status = Read(done, expected.data(), count);
    if (status != SUCCESS) return status;
    if (KsRead(written, found.data(), count) != count) return ERROR_FILE_READ;
    if (std::memcmp(expected.data(), found.data(), count) != 0) return ERROR_FILE_WRITE;
    done += count;
  }
  return SUCCESS;
}

// ---- appending ----------------------------------------------------------------------------------------------------

Status SpliceSegments(const NitfFile *file, const NitfFile *added, Splice *splice, std::string_view *field) {
  constexpr std::size_t kHeaderLengthDigits = 6;
  constexpr std::size_t kFileLengthDigits = 12;
  HeaderChange change = ChangeOf(file);
  const Status status = CheckSource(file, change);
  if (status != SUCCESS) return status;
  Splice changed = *splice;
  for (const CountedKind &counted : kCountedKinds) {
    *field = counted.field;
    if (CountInFile(file, counted.kind) + CountSegments(added, counted.kind) > kMostSegments) {
      return NITF_TOO_MANY_SEGMENTS;
    }
    InsertSegments(file, added, counted, &change, &changed);
  }
  const auto fileLength = static_cast<std::uint64_t>(ParseLongNumber(BufferText(file->header.FL, kFileLengthDigits)));
  const std::string newFileLength = Digits(fileLength + change.rowBytes + change.segmentBytes, kFileLengthDigits);
  const std::string newHeaderLength = Digits(file->header.headerLength + change.rowBytes, kHeaderLengthDigits);
  *field = newHeaderLength.size() > kHeaderLengthDigits ? "HL" : "FL";
  if (newHeaderLength.size() > kHeaderLengthDigits || newFileLength.size() > kFileLengthDigits) {
    return ERROR_INVALID_VALUE;
  }
  *field = {};
  changed.Replace(change.offsets["FL"], newFileLength);
  changed.Replace(change.offsets["HL"], newHeaderLength);
  *splice = std::move(changed);
  return SUCCESS;
}

}  // namespace ksntfx
