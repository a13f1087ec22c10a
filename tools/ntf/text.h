// ntf text: the texts of a file.
#pragma once

#include "core.h"
#include "problem.h"

#include <cstdint>
#include <optional>
#include <string>

namespace ntf {

struct TextOptions {
  std::string file;
  std::optional<std::uint32_t> text; /* only this text, from 0, without a heading */
  Door door = Door::Wide;
};

/** Prints texts unchanged. A text with control characters is not sent to a terminal. */
Outcome PrintTexts(const TextOptions &options);

}  // namespace ntf
