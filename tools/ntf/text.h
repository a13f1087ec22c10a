// ntf text: the texts of a file.
#pragma once

#include "problem.h"

#include <cstdint>
#include <optional>
#include <string>

namespace ntf {

struct TextOptions {
  std::string file;
  std::optional<std::uint32_t> text; /* only this segment, from 0, without a heading */
};

/** Prints texts as the bytes they are. Control bytes are not sent to a terminal. */
Outcome PrintTexts(const TextOptions &options);

}  // namespace ntf
