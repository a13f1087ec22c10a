// A segment that a command names by its kind and number.
#pragma once

#include "core.h"
#include "problem.h"

#include <string>

namespace ntf {

/** What a kind of segments is called: "image", "data extension". */
const char *KindWord(SegmentKind kind);

/** Whether a file has segment `index` of a kind, counted from 0. */
Outcome CheckSegment(const std::string &fileName, const FileView &file, SegmentKind kind, std::uint32_t index);

}  // namespace ntf
