#include "ksvect/cgm/skipped.h"

namespace ksvect::cgm {

const char *TextOf(SkipReason reason) {
  switch (reason) {
    case SkipReason::BadValue:
      return "a parameter has no valid value";
    case SkipReason::TooLarge:
      return "too many cells";
    default:
      return "parameters are missing";
  }
}

}  // namespace ksvect::cgm
