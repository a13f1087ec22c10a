#include "comparing.h"

#include "load_headers.h"
#include "segment_choice.h"

#include <algorithm>
#include <cstdint>
#include <vector>

namespace ntf {
namespace {

constexpr SegmentKind kKinds[] = {SegmentKind::Image, SegmentKind::Graphic, SegmentKind::Text,
                                  SegmentKind::DataExtension};

/** Compares `bytes` bytes of two files, each from its own offset. */
bool SameBytes(const FileView &original, std::uint64_t offset, const FileView &saved, std::uint64_t savedOffset,
               std::uint32_t bytes) {
  constexpr std::uint32_t kPiece = 1U << 20;
  std::vector<char> one(std::min(kPiece, bytes));
  std::vector<char> other(one.size());
  for (std::uint32_t done = 0; done < bytes;) {
    const std::uint32_t count = std::min(kPiece, bytes - done);
    if (original.ReadAt(offset + done, one.data(), count) != count) return false;
    if (saved.ReadAt(savedOffset + done, other.data(), count) != count) return false;
    if (!std::equal(one.begin(), one.begin() + count, other.begin())) return false;
    done += count;
  }
  return true;
}

bool SameBody(const FileView &original, const FileView &saved, SegmentKind kind, std::uint32_t index) {
  const SegmentPlace before = original.Place(kind, index);
  const SegmentPlace after = saved.Place(kind, index);
  // What masked vector-quantised data have behind their last code is not copied.
  const std::uint32_t needed = kind == SegmentKind::Image ? original.NeededBytes(index) : before.dataLength;
  const bool fits = needed <= after.dataLength && after.dataLength <= before.dataLength;
  return fits && SameBytes(original, before.data, saved, after.data, after.dataLength);
}

/** Fails unless all segments exist, and those of the source have the same data. */
Outcome CompareSegments(const std::string &name, const FileView &original, const FileView &saved) {
  for (const SegmentKind kind : kKinds) {
    const std::string word = KindWord(kind);
    if (saved.Count(kind) != original.Count(kind)) {
      return Problem{name, "the number of " + word + "s differs from the original", ERROR_FILE_WRITE};
    }
    const std::uint32_t count = std::min(original.Count(kind), original.CountInSource(kind));
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
    LoadedFile saved;
    if (Outcome unreadable = LoadHeaders(savedName, saved)) {
      return Problem{name, "the saved file can't be read: " + unreadable->words, unreadable->status};
    }
    return CompareSegments(name, handle.View(), saved.View());
  });
}

}  // namespace ntf
