#include "info.h"

#include "info_json.h"
#include "info_text.h"
#include "input_file.h"
#include "ksntfx.h"
#include "load_headers.h"
#include "problem.h"

#include <cstdio>

namespace ntf {
namespace {

/** Adds the size of the picture, or the status if it can't be determined. */
void AddCanvas(const std::string &fileName, Json &description) {
  const WideName name = Widen(fileName);
  KsFileInfo answer = {};
  KsLoadOptions loadOptions = {};
  FilterInfoRecord request = {};
  request.fileName = name.get();
  request.inputHandle = KS_INVALID_HANDLE;
  request.fileInfo = &answer;
  request.loadOptions = &loadOptions;
  const std::int32_t status = fltInfo(&request);
  Json &canvas = description["canvas"];
  if (status == SUCCESS) {
    canvas = {{"width", std::uint32_t{answer.width}}, {"height", std::uint32_t{answer.height}}};
  } else {
    description["canvasStatus"] = status;
  }
}

Outcome Describe(const std::string &fileName, Json &description) {
  LoadedFile file;
  if (Outcome failed = LoadHeaders(fileName, file)) return failed;
  description["name"] = fileName;
  description.update(DescribeHeaders(file.View()));
  AddCanvas(fileName, description);
  return {};
}

bool Print(const std::string &text) {
  if (std::fwrite(text.data(), 1, text.size(), stdout) == text.size() && std::fflush(stdout) == 0) return true;
  Report({"standard output", "could not be written completely", ERROR_FILE_WRITE});
  return false;
}

}  // namespace

bool Info(const InfoOptions &options) {
  bool allRead = true;
  Json all = Json::array();
  for (const std::string &fileName : options.files) {
    Json description;
    if (const Outcome failed = Describe(fileName, description)) {
      Report(*failed);
      allRead = false;
    } else if (options.json) {
      all.push_back(std::move(description));
    } else if (!Print(Summarize(fileName, description))) {
      return false;
    }
  }
  if (!options.json) return allRead;
  const bool single = options.files.size() == 1;
  if (single && all.empty()) return allRead;
  return Print((single ? all[0] : all).dump(2) + '\n') && allRead;
}

}  // namespace ntf
