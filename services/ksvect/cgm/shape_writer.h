// From objects to the primitives of a metafile.
#pragma once

#include "ksvect/cgm/encoder.h"

namespace ksvect::cgm {

/** Whether there is nothing to an object at all, neither points nor text: what no metafile has. */
bool IsBlank(const Shape &shape);

/** Writes an object that isn't blank, in the attributes in force. */
void WriteShape(Encoder &encoder, const Shape &shape);

}  // namespace ksvect::cgm
