// Where reading a header ended early.
#pragma once

#include <cstdint>
#include <string_view>

namespace ksntfx {

/** The field that ended a read. Without a name, something else did. */
struct HeaderFault {
  std::string_view group{}; /**< in front of the name: of the security group that the field is in */
  std::string_view name{};  /**< the standard's name; of a group of fields, that of its first one */
  std::string_view text{};  /**< the field's bytes in the record; empty if they are not all in the file */
  std::uint64_t offset = 0; /**< in the file: of the text, or where the bytes end */
};

}  // namespace ksntfx
