#include "create.h"

#include "field_change.h"
#include "input_file.h"
#include "load_headers.h"
#include "picture_input.h"
#include "rewriting.h"
#include "saving.h"
#include "status_words.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
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

/** A quality as the library counts it: from 2, the best, to 255. */
std::uint32_t LibraryQuality(int quality) {
  constexpr int kBest = 2;
  constexpr int kWorst = 255;
  constexpr int kSteps = kBestQuality - kWorstQuality;
  return static_cast<std::uint32_t>(kBest + ((kBestQuality - quality) * (kWorst - kBest) + kSteps / 2) / kSteps);
}

Outcome AppendImage(NitfHandle handle, const Item &item) {
  KsLocalBitmap bitmap;
  if (Outcome unreadable = ReadPicture(item.file, bitmap)) return unreadable;
  const std::uint32_t bits = bitmap->bitsPerPixel == 24 ? 24 : 8;
  const std::int32_t status =
      K_NITFAppendImageSegment(handle, bitmap.Get(), KS_FORMAT_JPEG, bits, LibraryQuality(item.quality));
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
  const std::int32_t status = K_NITFAppendTextSegment(handle, Widen(item.file).c_str());
  return OutcomeOf(item.file, status);
}

// ---- levels -------------------------------------------------------------------------------------------------------

/** The display levels of the images and graphics of one or two files. */
struct Stack {
  bool any = false;
  std::uint32_t lowest = 0;
  std::uint32_t highest = 0;

  void Add(std::uint32_t level) {
    lowest = any ? std::min(lowest, level) : level;
    highest = any ? std::max(highest, level) : level;
    any = true;
  }
};

void AddLevels(const FileView &file, Stack &stack) {
  for (const SegmentKind kind : {SegmentKind::Image, SegmentKind::Graphic}) {
    for (std::uint32_t index = 0; index < file.Count(kind); ++index) stack.Add(file.LevelOf(kind, index).level);
  }
}

/** A new segment goes above all others, which needs a level above theirs. */
Outcome CheckRoomAbove(const Stack &stack, const Item &item) {
  constexpr std::uint32_t kHighest = 999;
  if (item.kind == ItemKind::Text || item.level || stack.highest < kHighest) return {};
  return Problem{item.file, "there is no display level above 999; choose one with --level", ERROR_INVALID_VALUE, true};
}

/** A field of a new segment. */
struct ItemField {
  std::string name;
  std::optional<std::string> value;
};

/** The levels and the location of a new segment: those that were given, or above all others at their lowest level. */
std::vector<ItemField> FieldsOf(const Item &item, const Stack &stack) {
  const std::optional<std::string> lowest = stack.any ? std::optional(std::to_string(stack.lowest)) : std::nullopt;
  if (item.kind == ItemKind::Text) return {{"TXTALVL", lowest}};
  const bool isImage = item.kind == ItemKind::Image;
  const std::string prefix = isImage ? "I" : "S";
  const std::string level = item.level.value_or(std::to_string(stack.highest + 1));
  // Nothing is attached to itself.
  const std::optional<std::string> base = lowest == level ? std::optional<std::string>("0") : lowest;
  return {{prefix + "LOC", item.location},
          {prefix + "DLVL", level},
          {prefix + "ALVL", item.attachment || isImage ? item.attachment : base}};
}

SegmentKind KindOf(const Item &item) {
  if (item.kind == ItemKind::Text) return SegmentKind::Text;
  return item.kind == ItemKind::Image ? SegmentKind::Image : SegmentKind::Graphic;
}

Outcome AppendSegment(NitfHandle handle, const Item &item) {
  if (item.kind == ItemKind::Image) return AppendImage(handle, item);
  return item.kind == ItemKind::Graphic ? AppendGraphic(handle, item) : AppendText(handle, item);
}

/** The halves of a location or a bound. */
struct Halves {
  int first;
  int second;
};

Halves HalvesOf(const std::string &text) {
  const auto number = [&](std::size_t at) {
    return static_cast<int>(std::strtol(text.substr(at, kLocationHalf).c_str(), nullptr, 10));
  };
  return {number(0), number(kLocationHalf)};
}

/**
 * The library stores the bounds of a drawing as column and row, counted from its location, where the format has row and
 * column, counted like the location.
 */
Outcome TurnBounds(const Item &item, const FileView &file, const HeaderChoice &header) {
  const Halves location = HalvesOf(file.FieldText(header, "SLOC"));
  for (const char *const name : {"SBND1", "SBND2"}) {
    const Halves bound = HalvesOf(file.FieldText(header, name));
    const std::string turned =
        std::to_string(bound.second + location.first) + "," + std::to_string(bound.first + location.second);
    if (Outcome refused = ChangeField(item.file, file, header, name, turned)) return refused;
  }
  return {};
}

/** Adds a segment to the new file `added`, whose levels continue those of `base`. */
Outcome Append(const LocalHandle &added, const Stack &base, const Item &item) {
  Stack stack = base;
  AddLevels(added.View(), stack);
  if (Outcome full = CheckRoomAbove(stack, item)) return full;
  if (Outcome failed = AppendSegment(added.Get(), item)) return failed;
  const SegmentKind kind = KindOf(item);
  const HeaderChoice header = {kind, added.View().Count(kind) - 1};
  for (const auto &[name, value] : FieldsOf(item, stack)) {
    if (!value) continue;
    if (Outcome refused = ChangeField(item.file, added.View(), header, name, *value)) return refused;
    if (Outcome refused = CheckAttachment(item.file, added.View(), header, name)) return refused;
  }
  return kind == SegmentKind::Graphic ? TurnBounds(item, added.View(), header) : Outcome();
}

Outcome AppendAll(const LocalHandle &added, const Stack &base, const std::vector<Item> &items) {
  for (const Item &item : items) {
    if (Outcome failed = Append(added, base, item)) return failed;
  }
  return {};
}

// ---- files --------------------------------------------------------------------------------------------------------

Outcome CreateNew(const CreateOptions &options) {
  LocalHandle file;
  if (Outcome failed = file.Make(options.output)) return failed;
  if (Outcome taken = CheckOutput(options.output, options.force)) return taken;
  if (Outcome failed = Date(options.output, file.View())) return failed;
  for (const FieldValue &field : options.fields) {
    if (Outcome refused = ChangeField(options.output, file.View(), {}, field.name, field.value)) return refused;
  }
  if (Outcome failed = AppendAll(file, {}, options.items)) return failed;
  const auto write = [&](const std::string &place) { return K_NITFSaveFile(file.Get(), Widen(place).c_str()); };
  return SaveChecked(options.output, options.output, write, [&](const std::string &place) -> Outcome {
    LoadedFile saved;
    return LoadHeaders(place, saved, Door::Wide);
  });
}

Problem AppendProblem(const std::string &fileName, std::int32_t status, const std::string &field) {
  if (status == ERROR_NOT_SUPPORTED) {
    return {fileName, "segments can't be appended to a file with a stream file header", status};
  }
  if (field.empty()) return StatusProblem(fileName, status);
  return {fileName, "the new segments don't fit: " + field + " would exceed its digits", status};
}

Outcome AppendToFile(const CreateOptions &options) {
  const std::string &input = *options.input;
  LoadedFile loaded;
  if (Outcome failed = LoadHeaders(input, loaded, Door::Wide)) return failed;
  if (loaded.View().Numbers().isNitf20) {
    return Problem{input, "segments can't be appended to a file of NITF 02.00", NITF_UNSUPPORTED_VERSION};
  }
  if (Outcome taken = CheckOutput(options.output, options.force)) return taken;
  const FileView file = loaded.View();
  FileRewrite rewrite(file);
  if (Outcome refused = RewriteFields(input, file, {}, options.fields, rewrite)) return refused;
  LocalHandle added;
  if (Outcome failed = added.Make(options.output)) return failed;
  // The dates of new segments derive from that of the file.
  static_cast<void>(added.View().Store({}, "FDT", file.FieldText({}, "FDT")));
  Stack base;
  AddLevels(file, base);
  if (Outcome failed = AppendAll(added, base, options.items)) return failed;
  std::string field;
  const std::int32_t status = rewrite.Append(added.View(), field);
  if (status != SUCCESS) return AppendProblem(input, status, field);
  WarnOfLength(input, file);
  return SaveRewritten(input, file, rewrite, options.output, {}, options.fields);
}

}  // namespace

Outcome Create(const CreateOptions &options) {
  std::vector<std::string> inputs;
  for (const Item &item : options.items) inputs.push_back(item.file);
  if (Outcome same = CheckNotInput(options.output, inputs)) return same;
  return options.input ? AppendToFile(options) : CreateNew(options);
}

}  // namespace ntf
