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
    default:
      return "can't be read";
  }
}

std::string WordsOf(std::optional<SegmentKind> kind, std::uint32_t index) {
  if (!kind) return "file header";
  return std::string(kNames[static_cast<std::size_t>(*kind)]) + " " + std::to_string(index);
}

std::string FaultOf(const HeaderNote &note) {
  if (note.field.empty()) {
    if (note.value.empty()) return std::string("has a subheader that can't be read: ") + MeaningOf(note.status);
    return "has " + note.value + " bytes of data, which are not all in the file";
  }
  const std::string value = "is '" + Printable(note.value) + "', ";
  switch (note.status) {
    case NITF_UNSUPPORTED_VERSION:
      return value + "not a known version";
    case NITF_UNSUPPORTED_CLEVEL:
      return value + "not a compliance level";
    case NITF_UNSUPPORTED_PVTYPE:
      return value + "not one of INT, B, SI, R, C";
    default:
      return value + "which is not allowed";
  }
}

std::string WordsOf(const FileNote &found) {
  const std::string field = found.note.field.empty() ? "" : ": " + found.note.field;
  return WordsOf(found.kind, found.index) + field + " at byte " + std::to_string(found.note.offset) + " " +
         FaultOf(found.note);
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
  if (isImage && status == ERROR_INVALID_VALUE) {
    return words + "the bands to show are not all there: it has " +
           std::to_string(FindImage(file.Get(), index)->bandCount);
  }
  return words + MeaningOf(status.Code());
}

}  // namespace ksntfx
