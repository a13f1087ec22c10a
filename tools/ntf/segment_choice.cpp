#include "segment_choice.h"

namespace ntf {

const char *KindWord(SegmentKind kind) {
  switch (kind) {
    case SegmentKind::Image:
      return "image";
    case SegmentKind::Graphic:
      return "graphic";
    case SegmentKind::Label:
      return "label";
    case SegmentKind::Text:
      return "text";
    case SegmentKind::DataExtension:
      break;
  }
  return "data extension";
}

std::string NameIn(const HeaderChoice &header, const std::string &field) {
  if (!header.kind) return field;
  return KindWord(*header.kind) + (" " + std::to_string(header.index)) + (field.empty() ? "" : " " + field);
}

Problem MissingSegment(const std::string &fileName, SegmentKind kind, std::uint32_t index, std::uint32_t count) {
  const std::string word = KindWord(kind);
  const std::string held = count == 0 ? "no " + word : std::to_string(count) + " " + word + (count == 1 ? "" : "s");
  return {fileName, "there is no " + word + " " + std::to_string(index) + ": the file has " + held, NITF_OUT_OF_RANGE,
          true};
}

Outcome CheckSegment(const std::string &fileName, const FileView &file, SegmentKind kind, std::uint32_t index) {
  if (file.Has(kind, index)) return {};
  return MissingSegment(fileName, kind, index, file.Count(kind));
}

}  // namespace ntf
