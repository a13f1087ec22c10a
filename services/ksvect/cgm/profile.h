// The elements of MIL-STD-2301A, the profile of CGM for NITF files.
#pragma once

#include "ksvect/cgm/elements.h"

namespace ksvect::cgm {

bool IsInProfile(ElementCode code);

}  // namespace ksvect::cgm
