#include "create.h"

#include "comparing.h"
#include "field_change.h"
#include "input_file.h"
#include "picture_input.h"
#include "saving.h"
#include "status_words.h"

#include <chrono>
#include <cstdio>
#include <filesystem>
#include <system_error>

namespace ntf {
namespace {

/** Sets the file's date, from which new segments derive theirs, to the current time in UTC. */
Outcome Date(const std::string &name, const FileView &file) {
  using namespace std::chrono;
  const auto now = floor<seconds>(system_clock::now());
  const year_month_day date(floor<days>(now));
  const hh_mm_ss time(now - floor<days>(now));
  char text[32];
  std::snprintf(text, sizeof text, "%04d%02u%02u%02d%02d%02d", static_cast<int>(date.year()),
                static_cast<unsigned>(date.month()), static_cast<unsigned>(date.day()),
                static_cast<int>(time.hours().count()), static_cast<int>(time.minutes().count()),
                static_cast<int>(time.seconds().count()));
  return ChangeField(name, file, {}, "FDT", text);
}

Outcome AppendImage(NitfHandle handle, const Item &item) {
  KsLocalBitmap bitmap;
  if (Outcome unreadable = ReadPicture(item.file, bitmap)) return unreadable;
  const std::uint32_t bits = bitmap->bitsPerPixel == 24 ? 24 : 8;
  const std::int32_t status = K_NITFAppendImageSegment(handle, bitmap.Get(), KS_FORMAT_JPEG, bits, item.quality);
  return OutcomeOf(item.file, status);
}

const char *WordsOf(std::int32_t status) {
  return status == ERROR_FILE_FORMAT ? "it is another format, or malformed" : StatusWords(status);
}

Outcome AppendGraphic(NitfHandle handle, const Item &item) {
  std::vector<std::uint8_t> bytes;
  if (Outcome unreadable = ReadFileBytes(item.file, bytes)) return unreadable;
  KsLocalVector vector;
  std::int32_t status = KsVectorLoadMemory(bytes.data(), vector.Get(), bytes.size(), nullptr, nullptr);
  if (status != SUCCESS) {
    return Problem{item.file, std::string("can't be read as a CGM drawing: ") + WordsOf(status), status};
  }
  KsRect box = {};
  if (item.box) {
    box = *item.box;
  } else if (KsVectorBounds(vector.Get(), 0, &box, 0) != SUCCESS) {
    return Problem{item.file, "the drawing has no objects", ERROR_FILE_FORMAT};
  }
  status = K_NITFAppendGraphicSegment(handle, vector.Get(), &box);
  return OutcomeOf(item.file, status);
}

Outcome AppendText(NitfHandle handle, const Item &item) {
  constexpr std::uintmax_t kMostBytes = 99999;
  if (Outcome unreadable = CheckInput(item.file)) return unreadable;
  std::error_code unknown;
  const std::uintmax_t bytes = std::filesystem::file_size(item.file, unknown);
  if (!unknown && bytes > kMostBytes) {
    return Problem{item.file, "has " + std::to_string(bytes) + " bytes, but a text segment holds at most 99999",
                   ERROR_INVALID_VALUE};
  }
  const std::int32_t status = K_NITFAppendTextSegmentA(handle, item.file.c_str());
  return OutcomeOf(item.file, status);
}

/** Stores the location and the levels that were given for the segment appended last. */
Outcome Place(NitfHandle handle, const Item &item) {
  const bool isImage = item.kind == ItemKind::Image;
  const FileView file(handle);
  const SegmentKind kind = isImage ? SegmentKind::Image : SegmentKind::Graphic;
  const HeaderChoice header = {kind, file.Count(kind) - 1};
  const std::string prefix = isImage ? "I" : "S";
  const std::pair<const char *, const std::optional<std::string> &> fields[] = {
      {"LOC", item.location}, {"DLVL", item.level}, {"ALVL", item.attachment}};
  for (const auto &[name, value] : fields) {
    if (!value) continue;
    if (Outcome refused = ChangeField(item.file, file, header, prefix + name, *value)) return refused;
  }
  return {};
}

/** A new segment goes above all others, which needs a level above theirs. */
Outcome CheckRoomAbove(const FileView &file, const Item &item) {
  constexpr std::uint32_t kHighest = 999;
  if (item.kind == ItemKind::Text || item.level) return {};
  for (const SegmentKind kind : {SegmentKind::Image, SegmentKind::Graphic}) {
    for (std::uint32_t index = 0; index < file.Count(kind); ++index) {
      if (file.LevelOf(kind, index).level < kHighest) continue;
      return Problem{item.file, "there is no display level above 999; choose one with --level", ERROR_INVALID_VALUE,
                     true};
    }
  }
  return {};
}

Outcome Append(NitfHandle handle, const Item &item) {
  if (Outcome full = CheckRoomAbove(FileView(handle), item)) return full;
  switch (item.kind) {
    case ItemKind::Image:
      if (Outcome failed = AppendImage(handle, item)) return failed;
      return Place(handle, item);
    case ItemKind::Graphic:
      if (Outcome failed = AppendGraphic(handle, item)) return failed;
      return Place(handle, item);
    case ItemKind::Text:
      break;
  }
  return AppendText(handle, item);
}

}  // namespace

Outcome Create(const CreateOptions &options) {
  LocalHandle handle;
  std::vector<std::string> inputs;
  for (const Item &item : options.items) inputs.push_back(item.file);
  if (Outcome same = CheckNotInput(options.output, inputs)) return same;
  if (Outcome failed = options.input ? handle.Open(*options.input) : handle.Make(options.output)) return failed;
  if (Outcome taken = CheckOutput(options.output, options.force)) return taken;
  if (!options.input) {
    if (Outcome failed = Date(options.output, handle.View())) return failed;
  }
  for (const auto &[name, value] : options.fields) {
    if (Outcome refused = ChangeField(options.output, handle.View(), {}, name, value)) return refused;
  }
  for (const Item &item : options.items) {
    if (Outcome failed = Append(handle.Get(), item)) return failed;
  }
  return SaveCompared(handle, options.output);
}

}  // namespace ntf
