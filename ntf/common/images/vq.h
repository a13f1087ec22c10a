// Vector-quantised image data (MIL-STD-188-199): each small kernel of pixels is a code, and the codebook in front of
// the codes has the kernel's pixels.
#pragma once

#include "images/image_reader.h"
#include "images/image_source.h"

namespace ksntfx {

/** Bits of a pixel of vector-quantised images. */
constexpr std::uint32_t kVqDepth = 8;

/**
 * Makes the reader of a vector-quantised image, which has the extent of the recorded blocks from the image's corner on.
 * It opens with ERROR_NOT_SUPPORTED for other depths than 8 bits, and ERROR_FILE_FORMAT for a header without a kernel
 * or a code without an entry. `source` must outlive it. Null without memory.
 */
std::unique_ptr<ImageReader> MakeVqReader(const ImageSource &source);

}  // namespace ksntfx
