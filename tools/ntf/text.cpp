#include "text.h"

#include "host.h"
#include "load_headers.h"
#include "printable.h"
#include "segment_choice.h"
#include "segment_data.h"

#include <cerrno>
#include <cstdio>
#include <string_view>

namespace ntf {
namespace {

Outcome Write(std::string_view bytes) {
  if (std::fwrite(bytes.data(), 1, bytes.size(), stdout) == bytes.size()) return {};
  return SystemProblem("standard output", errno, ERROR_FILE_WRITE);
}

std::string Heading(const TextSubheader &text, std::uint32_t index, std::uint32_t length) {
  const std::string title = Printable(text.TXTITL);
  return "== text " + std::to_string(index) + (title.empty() ? "" : ": " + title) + " (" + Printable(text.TXTFMT) +
         ", " + std::to_string(length) + " bytes)\n";
}

Outcome PrintText(const std::string &fileName, const NitfFile &file, std::uint32_t index, bool withHeading) {
  SegmentData data;
  const std::int32_t status = ReadSegmentData(&file, SegmentKind::Text, index, &data);
  if (status != SUCCESS) return StatusProblem(fileName, status);
  const std::string_view text(data.bytes.Get(), data.length);
  if (StandardOutputIsTerminal() && HasControls(text)) {
    return Problem{fileName, "text " + std::to_string(index) + " holds control bytes, which are not sent to a terminal",
                   ERROR_INVALID_VALUE};
  }
  if (!withHeading) return Write(text);
  if (Outcome failed = Write(Heading(*FindText(&file, index), index, data.length))) return failed;
  if (Outcome failed = Write(text)) return failed;
  const bool endsLine = text.empty() || text.back() == '\n' || text.back() == '\r';
  return endsLine ? Outcome() : Write("\n");
}

}  // namespace

Outcome PrintTexts(const TextOptions &options) {
  LocalNitfFile file;
  if (Outcome failed = LoadHeaders(options.file, *file.Get())) return failed;
  MakeStandardOutputBinary();
  if (options.text) {
    if (Outcome missing = CheckSegment(options.file, *file.Get(), SegmentKind::Text, *options.text)) return missing;
    if (Outcome failed = PrintText(options.file, *file.Get(), *options.text, false)) return failed;
  } else {
    const std::uint32_t count = CountTexts(file.Get());
    for (std::uint32_t index = 0; index < count; ++index) {
      if (Outcome failed = PrintText(options.file, *file.Get(), index, true)) return failed;
    }
  }
  return std::fflush(stdout) == 0 ? Outcome() : SystemProblem("standard output", errno, ERROR_FILE_WRITE);
}

}  // namespace ntf
