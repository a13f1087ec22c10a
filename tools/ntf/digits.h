// Decimal numbers in fields.
#pragma once

#include <algorithm>
#include <cstdint>
#include <string_view>

namespace ntf {

/** Whether a text has no characters but decimal digits; an empty one has none. */
inline bool IsAllDigits(std::string_view text) {
  return std::all_of(text.begin(), text.end(), [](char character) { return character >= '0' && character <= '9'; });
}

/** The number that up to 18 digits make. */
inline std::uint64_t NumberOf(std::string_view digits) {
  std::uint64_t number = 0;
  for (const char digit : digits) number = number * 10 + static_cast<std::uint64_t>(digit - '0');
  return number;
}

}  // namespace ntf
