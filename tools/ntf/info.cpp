#include "info.h"

#include "info_json.h"
#include "info_text.h"
#include "input_file.h"
#include "ksntfx.h"
#include "load_fault.h"
#include "load_headers.h"
#include "printable.h"
#include "problem.h"
#include "standard_output.h"

namespace ntf {
namespace {

/** Adds the size of the picture: null if there is nothing to draw, or, with the status, if it can't be determined. */
void AddCanvas(const std::string &fileName, Json &description) {
  Json &canvas = description["canvas"];
  if (!IsDrawn(description)) return;
  const std::u16string name = Widen(fileName);
  KsFileInfo answer = {};
  KsLoadOptions loadOptions = {};
  FilterInfoRecord request = {};
  request.fileName = name.c_str();
  request.inputHandle = KS_INVALID_HANDLE;
  request.fileInfo = &answer;
  request.loadOptions = &loadOptions;
  const std::int32_t status = fltInfo(&request);
  if (status == SUCCESS) {
    canvas = {{"width", std::uint32_t{answer.width}}, {"height", std::uint32_t{answer.height}}};
  } else {
    description["canvasStatus"] = status;
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

Outcome Describe(const std::string &fileName, Json &description) {
  LoadedFile file;
  description["name"] = fileName;
  if (Outcome failed = LoadHeaders(fileName, file)) {
    description.update(DescribeProblem(*failed, file.View()));
    return failed;
  }
  description.update(DescribeHeaders(file.View()));
  AddCanvas(fileName, description);
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
    const Outcome failed = Describe(fileName, description);
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
