#include "text.h"

#include "host.h"
#include "load_headers.h"
#include "printable.h"
#include "segment_choice.h"
#include "standard_output.h"

#include <string>

namespace ntf {
namespace {

std::string Heading(const FileView &file, std::uint32_t index, std::size_t length) {
  const HeaderChoice text = {SegmentKind::Text, index};
  const std::string title = Printable(file.FieldText(text, "TXTITL"));
  return "== text " + std::to_string(index) + (title.empty() ? "" : ": " + title) + " (" +
         Printable(file.FieldText(text, "TXTFMT")) + ", " + std::to_string(length) + " bytes)\n";
}

Outcome PrintText(const std::string &fileName, const FileView &file, std::uint32_t index, bool withHeading) {
  std::string text;
  const std::int32_t status = file.ReadData(SegmentKind::Text, index, text);
  if (status != SUCCESS) return StatusProblem(fileName, status);
  if (StandardOutputIsTerminal() && HasControls(text)) {
    return Problem{fileName,
                   "text " + std::to_string(index) + " has control characters, which are not sent to a terminal",
                   ERROR_INVALID_VALUE};
  }
  if (!withHeading) return PrintOutput(text);
  if (Outcome failed = PrintOutput(Heading(file, index, text.size()))) return failed;
  if (Outcome failed = PrintOutput(text)) return failed;
  const bool endsLine = text.empty() || text.back() == '\n' || text.back() == '\r';
  return endsLine ? Outcome() : PrintOutput("\n");
}

}  // namespace

Outcome PrintTexts(const TextOptions &options) {
  LoadedFile loaded;
  if (Outcome failed = LoadHeaders(options.file, loaded, options.door)) return failed;
  const FileView file = loaded.View();
  MakeStandardOutputBinary();
  if (options.text) {
    if (Outcome missing = CheckSegment(options.file, file, SegmentKind::Text, *options.text)) return missing;
    if (Outcome failed = PrintText(options.file, file, *options.text, false)) return failed;
  } else {
    const std::uint32_t count = file.Count(SegmentKind::Text);
    for (std::uint32_t index = 0; index < count; ++index) {
      if (Outcome failed = PrintText(options.file, file, index, true)) return failed;
    }
  }
  return FlushOutput();
}

}  // namespace ntf
