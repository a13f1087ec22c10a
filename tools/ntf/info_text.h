// A summary of a file's headers.
#pragma once

#include "info_json.h"

#include <string>

namespace ntf {

/** Summarises the output of DescribeHeaders and the canvas: a few lines for the file, and one for each segment. */
std::string Summarize(const std::string &fileName, const Json &description);

}  // namespace ntf
