// Segments chosen on the command line by kind and number.
#pragma once

#include "core.h"
#include "problem.h"

#include <string>

namespace ntf {

/** The name of a kind of segments: "image", "data extension". */
const char *KindWord(SegmentKind kind);

/** The name of a header's field: "image 0 IDLVL"; that of the file header alone. Without a field, of the segment. */
std::string NameIn(const HeaderChoice &header, const std::string &field);

/** The problem of a segment that a file with `count` segments of its kind doesn't have. */
Problem MissingSegment(const std::string &fileName, SegmentKind kind, std::uint32_t index, std::uint32_t count);

/** Fails if a file has no segment `index` of a kind, counted from 0. */
Outcome CheckSegment(const std::string &fileName, const FileView &file, SegmentKind kind, std::uint32_t index);

}  // namespace ntf
