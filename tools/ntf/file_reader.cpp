#include "file_reader.h"

#include "input_file.h"
#include "load_headers.h"

namespace ntf {

Outcome FileReader::Open(const std::string &fileName) {
  name = fileName;
  if (Outcome unreadable = CheckInput(fileName)) return unreadable;
  const std::u16string wide = Widen(fileName);
  const std::int32_t status = NitfReaderOpenUtf16(wide.c_str(), &reader);
  if (status == SUCCESS) return {};
  // The field that the headers can't be read beyond has words of its own.
  LoadedFile loaded;
  const Outcome failed = LoadHeaders(fileName, loaded, Door::Wide);
  return failed && failed->status == status ? failed : Failed(status);
}

Problem FileReader::Failed(std::int32_t status) const {
  const std::string words = NitfReaderProblem(reader);
  return words.empty() ? StatusProblem(name, status) : Problem{name, words, status};
}

std::uint32_t FileReader::Background() const {
  char color[4] = {};
  if (NitfReaderGetField(reader, NITF_SEGMENT_FILE, 0, "FBKGC", color, sizeof color) != SUCCESS) return 0;
  const auto part = [&](int at) { return static_cast<std::uint32_t>(static_cast<unsigned char>(color[at])); };
  return part(0) << 16 | part(1) << 8 | part(2);
}

void FileReader::WarnOfNotes() const {
  for (std::uint32_t index = 0; index < NitfReaderNoteCount(reader); ++index) {
    NitfNote note = {};
    if (NitfReaderGetNote(reader, index, &note) == SUCCESS) Warn(name, note.text);
  }
}

}  // namespace ntf
