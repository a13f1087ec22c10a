#include "headers/wide_file.h"

#include "table/fields.h"

#include <algorithm>
#include <utility>

namespace ksntfx {

namespace {

/**
 * The bounds of a drawing are row and column in the file, counted like its location (MIL-STD-2500C, table A-5, SBND1).
 * The strict interfaces, for which drawings are painted, read column and row, counted from the location.
 */
void TurnBounds(GraphicSubheader &graphic) {
  if (graphic.SFMT[0] != 'C') return;
  for (auto *const bound : {&graphic.firstBound, &graphic.secondBound}) {
    const std::int32_t row = (*bound)[0] - graphic.locationRow;
    (*bound)[0] = (*bound)[1] - graphic.locationColumn;
    (*bound)[1] = row;
  }
}

}  // namespace

Status WideFile::Open(KsHandle handle) {
  file->fileHandle = handle;
  file->notes = &notes;
  file->longPlaces = 1;
  size = static_cast<std::uint64_t>(std::max<std::int64_t>(KsSeek(handle, 0, KS_SEEK_END), 0));
  Status status = ChooseLayout();
  if (status == SUCCESS) status = ReadFileHeader(file.Get(), &stream);
  NoteValues(std::nullopt, 0);
  if (status != SUCCESS) return status;
  CopyCounts(file.Get());
  status = AllocateObjects(file.Get());
  if (status != SUCCESS) return status;
  Locate();
  for (const SegmentKind kind : kSegmentKinds) ReadSubheaders(kind);
  return SUCCESS;
}

/** The version decides the layout of the file header, which begins with it. */
Status WideFile::ChooseLayout() {
  char start[9];
  KsSeek(file->fileHandle, 0, KS_SEEK_START);
  if (KsRead(file->fileHandle, start, sizeof start) != sizeof start) return ERROR_FILE_FORMAT;
  KsSeek(file->fileHandle, 0, KS_SEEK_START);
  const std::string_view prefix(start, 4);
  const std::string_view version(start + 4, 5);
  if (prefix != "NITF" && prefix != "NSIF") return ERROR_FILE_FORMAT;
  // Before 02.00 the headers were others. Versions to come are read like the last one.
  if (prefix == "NITF" && version < "02.00") return NITF_UNSUPPORTED_VERSION;
  file->nitf20Layout = prefix == "NITF" && version < "02.10" ? 1 : 0;
  return SUCCESS;
}

void WideFile::Locate() {
  for (const SegmentKind kind : kSegmentKinds) {
    std::vector<SegmentSpan> &of = spans.Of(kind);
    if (kind == SegmentKind::Label && file->nitf20Layout == 0) continue;
    of.resize(file->header.*LengthsOf(kind).count);
    std::uint64_t position = StartOfKind(file.Get(), kind);
    for (std::uint32_t index = 0; index < of.size(); ++index) {
      SegmentSpan &span = of[index];
      span.subheader = position;
      span.subheaderBytes = SubheaderLength(file.Get(), kind, index);
      span.data = span.subheader + span.subheaderBytes;
      span.dataBytes = LongDataLength(file.Get(), kind, index);
      position = span.End();
    }
  }
}

void WideFile::ReadSubheaders(SegmentKind kind) {
  std::uint32_t index = 0;
  for (SegmentSpan &span : spans.Of(kind)) {
    KsSeek(file->fileHandle, static_cast<std::int64_t>(span.subheader), KS_SEEK_START);
    const Status status = ReadSubheader(file.Get(), kind, FindSubheader(file.Get(), kind, index), &stream);
    span.hasSubheader = status == SUCCESS;
    if (kind == SegmentKind::Graphic && span.hasSubheader) TurnBounds(*FindGraphic(file.Get(), index));
    NoteValues(kind, index);
    if (!span.hasSubheader) found.push_back({kind, index, {"", "", span.subheader, status.Code()}});
    if (span.End() > size) NoteLength(kind, index, span);
    ++index;
  }
}

/** Moves the notes of the header that was read to those of the file. */
void WideFile::NoteValues(std::optional<SegmentKind> kind, std::uint32_t index) {
  for (HeaderNote &note : std::exchange(notes.list, {})) found.push_back({kind, index, std::move(note)});
}

/** The data end behind the end of the file. */
void WideFile::NoteLength(SegmentKind kind, std::uint32_t index, const SegmentSpan &span) {
  found.push_back({kind, index, {"", std::to_string(span.dataBytes), span.data, ERROR_FILE_READ}});
}

}  // namespace ksntfx
