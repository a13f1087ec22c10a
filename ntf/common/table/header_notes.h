// What the headers of a file hold that isn't supported or allowed. With notes, a header is read on past such a value;
// without them, the value ends the reading with its status.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace ksntfx {

/** One value that the format doesn't allow, or that the strict interfaces don't support. */
struct HeaderNote {
  std::string field;    /**< the standard's name, such as "PVTYPE" */
  std::string value;    /**< the field's bytes */
  std::uint64_t offset; /**< of the field in the file */
  std::int32_t status;  /**< the status of the strict interfaces */
};

struct HeaderNotes {
  std::vector<HeaderNote> list;
};

}  // namespace ksntfx
