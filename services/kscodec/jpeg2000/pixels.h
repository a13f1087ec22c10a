// From decoded components to the pixels of a bitmap.
#pragma once

#include "kscodec/codec.h"

#include <array>

#include <openjpeg.h>

namespace kscodec::jpeg2000 {

/** The components for red, green and blue, by number. */
using Channels = std::array<std::uint32_t, 3>;

/** Writes the first component into a bitmap of 8 bits, unchanged, or of 16, spread over the full range. */
void WriteGray(const opj_image_t &image, KsBitmap &bitmap);

/** Writes three components, each spread over 8 bits, into a bitmap of 24. */
void WriteColors(const opj_image_t &image, const Channels &components, bool isSycc, KsBitmap &bitmap);

}  // namespace kscodec::jpeg2000
