// ntf set: changing header fields.
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
  // The segment, counted from 0; the file header if none is chosen.
  std::optional<std::uint32_t> image;
  std::optional<std::uint32_t> graphic;
  std::optional<std::uint32_t> text;
};

Outcome Set(const SetOptions &options);

}  // namespace ntf
