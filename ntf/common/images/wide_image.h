// The images of a file of any version.
#pragma once

#include "headers/wide_file.h"
#include "images/raw_image.h"

namespace ksntfx {

/**
 * The data of image `index`, which must be there, with its subheader read. `fillsMissing`: what is cut off is read as
 * 0.
 */
ImageData DataOfImage(WideFile &file, std::uint32_t index, bool fillsMissing);

}  // namespace ksntfx
