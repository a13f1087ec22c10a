#include "comparing.h"

#include "load_headers.h"
#include "segment_choice.h"

#include <algorithm>
#include <vector>

namespace ntf {
namespace {

constexpr SegmentKind kKinds[] = {SegmentKind::Image, SegmentKind::Graphic, SegmentKind::Text,
                                  SegmentKind::DataExtension};

/** Vector-quantised data end with their last row of codes, whatever stands behind it in the original. */
bool MayEndEarlier(const NitfFile &file, SegmentKind kind, std::uint32_t index) {
  return kind == SegmentKind::Image && IsVectorQuantised(*FindImage(&file, index));
}

bool SameBytes(const NitfFile &original, const NitfFile &saved, SegmentKind kind, std::uint32_t index,
               std::uint32_t bytes) {
  constexpr std::uint32_t kPiece = 1U << 20;
  std::vector<char> one(std::min(kPiece, bytes));
  std::vector<char> other(one.size());
  SeekSegmentData(&original, kind, index);
  SeekSegmentData(&saved, kind, index);
  for (std::uint32_t left = bytes; left > 0;) {
    const std::uint32_t count = std::min(kPiece, left);
    if (KsRead(original.fileHandle, one.data(), count) != count) return false;
    if (KsRead(saved.fileHandle, other.data(), count) != count) return false;
    if (!std::equal(one.begin(), one.begin() + count, other.begin())) return false;
    left -= count;
  }
  return true;
}

bool SameBody(const NitfFile &original, const NitfFile &saved, SegmentKind kind, std::uint32_t index) {
  const std::uint32_t before = DataLength(&original, kind, index);
  const std::uint32_t after = DataLength(&saved, kind, index);
  const bool fits = MayEndEarlier(original, kind, index) ? after <= before : after == before;
  return fits && SameBytes(original, saved, kind, index, after);
}

/** All segments are there, and those that were in the file have the same data. */
Outcome CompareSegments(const std::string &name, const NitfFile &original, const NitfFile &saved) {
  for (const SegmentKind kind : kKinds) {
    const std::string word = KindWord(kind);
    if (CountSegments(&saved, kind) != CountSegments(&original, kind)) {
      return Problem{name, "the number of " + word + "s differs from the original", ERROR_FILE_WRITE};
    }
    const std::uint32_t count = std::min(CountSegments(&original, kind), CountInFile(&original, kind));
    for (std::uint32_t index = 0; index < count; ++index) {
      if (SameBody(original, saved, kind, index)) continue;
      return Problem{name, word + " " + std::to_string(index) + " differs from the original", ERROR_FILE_WRITE};
    }
  }
  return {};
}

}  // namespace

Outcome SaveCompared(const LocalHandle &handle, const std::string &name) {
  return SaveChecked(handle, name, [&](const std::string &savedName) -> Outcome {
    LocalNitfFile saved;
    if (Outcome unreadable = LoadHeaders(savedName, *saved.Get())) {
      return Problem{name, "what was written can't be read: " + unreadable->words, unreadable->status};
    }
    return CompareSegments(name, *handle.Get(), *saved.Get());
  });
}

}  // namespace ntf
