#include "info.h"

#include "file_reader.h"
#include "info_json.h"
#include "info_text.h"
#include "input_file.h"
#include "ksntfx.h"
#include "load_fault.h"
#include "load_headers.h"
#include "printable.h"
#include "problem.h"
#include "segment_choice.h"
#include "standard_output.h"

namespace ntf {
namespace {

/** The size of the picture through the filter, with a status. */
std::int32_t MeasureStrictly(const std::string &fileName, std::uint64_t *rows, std::uint64_t *columns) {
  const std::u16string name = Widen(fileName);
  KsFileInfo answer = {};
  KsLoadOptions loadOptions = {};
  FilterInfoRecord request = {};
  request.fileName = name.c_str();
  request.inputHandle = KS_INVALID_HANDLE;
  request.fileInfo = &answer;
  request.loadOptions = &loadOptions;
  const std::int32_t status = fltInfo(&request);
  *rows = answer.height;
  *columns = answer.width;
  return status;
}

std::int32_t Measure(const std::string &fileName, std::uint64_t *rows, std::uint64_t *columns) {
  FileReader reader;
  if (const Outcome failed = reader.Open(fileName)) return failed->status;
  NitfReaderSetOptions(reader.Get(), NITF_READER_KEEP_GOING);
  const std::int32_t status = NitfReaderGetCanvas(reader.Get(), rows, columns);
  if (status != SUCCESS || *rows != 0) return status;
  // All that there is to draw is among the notes.
  NitfNote note = {};
  const std::uint32_t notes = NitfReaderNoteCount(reader.Get());
  return NitfReaderGetNote(reader.Get(), notes - 1, &note) == SUCCESS ? note.status : status;
}

/** Adds the size of the picture: null if there is nothing to draw, or, with the status, if it can't be determined. */
void AddCanvas(const std::string &fileName, Door door, Json &description) {
  Json &canvas = description["canvas"];
  if (!IsDrawn(description)) return;
  std::uint64_t rows = 0;
  std::uint64_t columns = 0;
  const std::int32_t status =
      door == Door::Wide ? Measure(fileName, &rows, &columns) : MeasureStrictly(fileName, &rows, &columns);
  if (status == SUCCESS) {
    canvas = {{"width", columns}, {"height", rows}};
  } else {
    description["canvasStatus"] = status;
  }
}

/** What the reading of the headers has noted. */
void AddNotes(const LoadedFile &file, Json &description) {
  const std::vector<FileNote> notes = file.Notes();
  if (notes.empty()) return;
  Json &list = description["notes"] = Json::array();
  for (const FileNote &note : notes) {
    list.push_back({{"field", NameIn(note.header, note.field)}, {"offset", note.offset}, {"note", note.words}});
  }
}

/** What is known of a file that can't be read. */
Json DescribeProblem(const Problem &problem, const FileView &file) {
  Json description = {{"status", problem.status}, {"error", problem.words}};
  if (const auto fault = FindLoadFault(file, problem.status)) {
    description["field"] = fault->field;
    description["offset"] = fault->offset;
    description["value"] = Latin1ToUtf8(file.Fault().text);
  }
  return description;
}

Outcome Describe(const std::string &fileName, Door door, Json &description) {
  LoadedFile file;
  description["name"] = fileName;
  if (Outcome failed = LoadHeaders(fileName, file, door)) {
    description.update(DescribeProblem(*failed, file.View()));
    return failed;
  }
  description.update(DescribeHeaders(file.View()));
  AddCanvas(fileName, door, description);
  AddNotes(file, description);
  return {};
}

bool Print(const std::string &text) {
  Outcome failed = PrintOutput(text);
  if (!failed) failed = FlushOutput();
  if (failed) Report(*failed);
  return !failed;
}

}  // namespace

bool Info(const InfoOptions &options) {
  bool allRead = true;
  Json all = Json::array();
  for (const std::string &fileName : options.files) {
    Json description;
    const Outcome failed = Describe(fileName, options.door, description);
    if (failed) {
      Report(*failed);
      allRead = false;
    }
    if (options.json) {
      all.push_back(std::move(description));
    } else if (!failed && !Print(Summarize(fileName, description))) {
      return false;
    }
  }
  if (!options.json) return allRead;
  return Print(TextOf(all.size() == 1 ? all[0] : all)) && allRead;
}

}  // namespace ntf
