// Elements that the reader leaves out.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace ksvect::cgm {

enum class SkipReason : std::uint8_t {
  TooShort, /**< a parameter is missing, or the element is longer than the data */
  BadValue, /**< a parameter has a value that means nothing, or is no number */
  TooLarge  /**< it has more cells than a metafile of this length may have */
};

/** For people, in a few words. */
const char *TextOf(SkipReason reason);

/** An element that was read as if it had not been there: what it would have set keeps its value. */
struct SkippedElement {
  unsigned group = 0;     /**< the element's class */
  unsigned number = 0;    /**< the element's number within the class */
  std::size_t offset = 0; /**< of its header, in bytes; of METAFILE DEFAULTS REPLACEMENT for an element within that */
  SkipReason reason = SkipReason::TooShort;

  bool operator==(const SkippedElement &) const = default;
};

/** More than these are counted and not kept. */
constexpr std::size_t kMostSkippedKept = 1000;

struct SkippedElements {
  std::vector<SkippedElement> elements; /**< the first ones, in the metafile's order */
  std::size_t count = 0;                /**< of all */
};

}  // namespace ksvect::cgm
