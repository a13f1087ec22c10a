// A file's headers as JSON.
#pragma once

#include "core.h"

#include <string>

#include <nlohmann/json.hpp>

namespace ntf {

/** JSON with its members in the order of the header. */
using Json = nlohmann::ordered_json;

/**
 * All header fields of a loaded file under their names in the standard: an object `file`, and an array of objects for
 * each kind of segment. Texts are trimmed and converted from Latin-1 to UTF-8. Decimal fields are numbers if they have
 * digits only. FBKGC is an array of three numbers.
 */
Json DescribeHeaders(const FileView &file);

/** Whether a described file has segments that can be drawn. */
bool IsDrawn(const Json &description);

/** JSON as text. File names may be no UTF-8; such bytes become replacement characters. */
std::string TextOf(const Json &json);

}  // namespace ntf
