// A file's headers as JSON.
#pragma once

#include "core.h"

#include <nlohmann/json.hpp>

namespace ntf {

/** Keeps its members in the order of the header. */
using Json = nlohmann::ordered_json;

/**
 * All header fields of a loaded file under their names in the standard: `file`, and an array of objects for each kind
 * of segment. Texts are trimmed and come as UTF-8 whatever bytes they hold (bytes above 127 are taken as Latin-1),
 * decimal fields are numbers where they hold digits only, FBKGC is an array of three.
 */
Json DescribeHeaders(const FileView &file);

}  // namespace ntf
