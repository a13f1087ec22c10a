// A file's headers in a few lines for a reader.
#pragma once

#include "info_json.h"

#include <string>

namespace ntf {

/** A summary of what DescribeHeaders and the canvas make of a file: a few lines on the file, one on each segment. */
std::string Summarize(const std::string &fileName, const Json &description);

}  // namespace ntf
