#include "headers/note_words.h"

#include "table/fields.h"

#include <algorithm>

namespace ksntfx {

namespace {

constexpr const char *kNames[] = {"image", "graphic", "label", "text", "data extension"};

std::string Printable(std::string_view value) {
  std::string text(value);
  std::replace_if(
      text.begin(), text.end(), [](char byte) { return byte < ' ' || byte > '~'; }, '?');
  return text;
}

}  // namespace

const char *MeaningOf(std::int32_t status) {
  switch (status) {
    case ERROR_NO_MEMORY:
      return "out of memory, or larger than the limit";
    case ERROR_FILE_READ:
      return "the file ends before its data";
    case ERROR_FILE_FORMAT:
      return "malformed";
    case ERROR_NO_FILE:
      return "can't be opened";
    case ERROR_INVALID_VALUE:
      return "invalid argument";
    case ERROR_NOT_SUPPORTED:
      return "not supported";
    case NITF_UNSUPPORTED_VERSION:
      return "unsupported version";
    case NITF_UNSUPPORTED_PVTYPE:
      return "not one of INT, B, SI, R and C";
    case NITF_UNSUPPORTED_CLEVEL:
      return "not a compliance level";
    default:
      return "can't be read";
  }
}

std::string WordsOf(std::optional<SegmentKind> kind, std::uint32_t index) {
  if (!kind) return "file header";
  return std::string(kNames[static_cast<std::size_t>(*kind)]) + " " + std::to_string(index);
}

std::string WordsOf(const FileNote &found) {
  const HeaderNote &note = found.note;
  const std::string segment = WordsOf(found.kind, found.index);
  if (!note.field.empty()) {
    return segment + ": " + note.field + " at byte " + std::to_string(note.offset) + " is '" + Printable(note.value) +
           "': " + MeaningOf(note.status);
  }
  if (!note.value.empty()) {
    return segment + ": the file ends before its data, " + note.value + " bytes from byte " +
           std::to_string(note.offset);
  }
  return segment + ": the subheader at byte " + std::to_string(note.offset) +
         " can't be read: " + MeaningOf(note.status);
}

std::string WordsOf(WideFile &file, SegmentKind kind, std::uint32_t index, Status status) {
  std::string words = WordsOf(kind, index) + ": ";
  const bool isImage = kind == SegmentKind::Image && file.Spans().Of(kind)[index].hasSubheader;
  if (isImage && status == ERROR_NOT_SUPPORTED) {
    const ImageSubheader &image = *FindImage(file.Get(), index);
    const std::string kindOfData = !HasSamples(KindOf(image)) ? "IC '" + Printable({image.IC, 2}) + "'"
                                                              : "IC '" + Printable({image.IC, 2}) + "' with PVTYPE '" +
                                                                    Printable({image.PVTYPE, 3}) + "' and NBPP '" +
                                                                    Printable({image.NBPP, 2}) + "'";
    return words + kindOfData + " is not supported";
  }
  return words + MeaningOf(status.Code());
}

}  // namespace ksntfx
