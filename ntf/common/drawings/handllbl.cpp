#include "drawings/handllbl.h"

#include "headers/segment_data.h"
#include "platform.h"

#include <algorithm>
#include <string_view>

namespace ksntfx {

namespace {

constexpr std::int32_t kLineStep = 20;

void WriteLines(KsDeviceContext *context, std::string_view text, std::int32_t x, std::int32_t y) {
  constexpr std::string_view kLineEnds = "\r\n";
  std::size_t start = text.find_first_not_of(kLineEnds);
  while (start != std::string_view::npos) {
    const std::size_t end = std::min(text.find_first_of(kLineEnds, start), text.size());
    platform::TextOutA(context, x, y, text.data() + start, static_cast<int>(end - start));
    y = Add(y, kLineStep);
    start = text.find_first_not_of(kLineEnds, end);
  }
}

}  // namespace

Status DrawLabel(KsDeviceContext *context, NitfFile *file, std::uint32_t index, const DisplayOffset &offset) {
  const LabelSubheader &label = *FindLabel(file, index);
  SegmentData data;
  const Status status = ReadSegmentData(file, SegmentKind::Label, index, &data);
  if (status != SUCCESS) return status;
  const int saved = platform::SaveDC(context);
  platform::SetTextColor(context, label.textColor);
  platform::SetBkColor(context, label.backgroundColor);
  platform::SetBkMode(context, label.backgroundColor != 0 ? platform::OPAQUE : platform::TRANSPARENT);
  const std::string_view text(data.bytes.Get(), data.length);
  WriteLines(context, text.substr(0, text.find('\0')), Add(label.locationColumn, offset.column),
             Add(label.locationRow, offset.row));
  platform::RestoreDC(context, saved);
  return SUCCESS;
}

}  // namespace ksntfx
