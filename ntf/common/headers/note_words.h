// Notes and errors in words.
#pragma once

#include "headers/wide_file.h"

#include <string>

namespace ksntfx {

/** A segment as a person names it: "image 3", or "file header". Control characters of values become '?'. */
std::string WordsOf(std::optional<SegmentKind> kind, std::uint32_t index);

/** What is wrong with a field or a segment: "is '77', not a compliance level". */
std::string FaultOf(const HeaderNote &note);

/** What a note says, in one line. */
std::string WordsOf(const FileNote &note);

/** Why a segment of a file can't be read, in one line. */
std::string WordsOf(WideFile &file, SegmentKind kind, std::uint32_t index, Status status);

/** What a status means, in a few words. */
const char *MeaningOf(std::int32_t status);

}  // namespace ksntfx
