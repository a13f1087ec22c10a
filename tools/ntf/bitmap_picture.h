// Bitmaps of the framework as pictures.
#pragma once

#include "kskernel.h"
#include "picture.h"

#include <cstdint>
#include <optional>

namespace ntf {

/** The form of the upper left `width` by `height` pixels of a bitmap; empty for a depth that no picture has. */
std::optional<PictureShape> ShapeOfBitmap(const KsBitmap &bitmap, std::uint32_t width, std::uint32_t height);

/**
 * Turns the first shape.width pixels of a row of `bitmap` into a row of the picture; `picture` takes shape.RowBytes()
 * bytes. Grays of 12 bits are spread over 16.
 */
void ConvertRow(const KsBitmap &bitmap, const std::uint8_t *row, const PictureShape &shape, std::uint8_t *picture);

}  // namespace ntf
