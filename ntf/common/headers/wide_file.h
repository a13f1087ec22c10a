// A NITF file of any version, read as far as it goes: values that the strict interfaces refuse, and segments that are
// cut off, are noted and do not end the reading.
#pragma once

#include "headers/nitffile.h"
#include "headers/segment_spans.h"

#include <optional>
#include <string>

namespace ksntfx {

/** Something about a file that its reader should know. */
struct FileNote {
  std::optional<SegmentKind> kind; /**< none for the file header */
  std::uint32_t index = 0;         /**< of the segment among those of its kind */
  HeaderNote note;
};

class WideFile {
 public:
  WideFile() = default;
  ~WideFile() { StreamFileHeaderFree(&stream); }
  WideFile(const WideFile &) = delete;
  WideFile &operator=(const WideFile &) = delete;

  /**
   * Reads all headers of an open file, and owns the handle from then on. ERROR_FILE_FORMAT for what is no NITF file,
   * NITF_UNSUPPORTED_VERSION for a version whose layout isn't known, ERROR_FILE_READ where the file header is cut off,
   * ERROR_NO_MEMORY. May throw std::bad_alloc.
   */
  Status Open(KsHandle handle);

  NitfFile *Get() { return file.Get(); }
  const SegmentSpans &Spans() const { return spans; }
  std::uint64_t Size() const { return size; }
  const std::vector<FileNote> &Notes() const { return found; }

 private:
  Status ChooseLayout();
  void Locate();
  void ReadSubheaders(SegmentKind kind);
  void NoteValues(std::optional<SegmentKind> kind, std::uint32_t index);
  void NoteLength(SegmentKind kind, std::uint32_t index, const SegmentSpan &span);

  LocalNitfFile file;
  StreamFileHeader stream{};
  HeaderNotes notes; /**< of the header that is being read */
  SegmentSpans spans;
  std::vector<FileNote> found;
  std::uint64_t size = 0;
};

}  // namespace ksntfx
