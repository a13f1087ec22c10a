// ntf set: header fields changed.
#pragma once

#include "problem.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace ntf {

struct SetOptions {
  std::string input;
  std::string output;
  bool force = false;              /* overwrites a file */
  std::vector<std::string> fields; /* FIELD=VALUE */
  // Whose fields, counted from 0; the file header's where none is named.
  std::optional<std::uint32_t> image;
  std::optional<std::uint32_t> graphic;
  std::optional<std::uint32_t> text;
};

Outcome Set(const SetOptions &options);

}  // namespace ntf
