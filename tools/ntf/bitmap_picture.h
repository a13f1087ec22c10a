// Bitmaps of the framework as pictures.
#pragma once

#include "kskernel.h"
#include "picture.h"

#include <cstdint>
#include <optional>

namespace ntf {

/** The format of the upper left `width` by `height` pixels of a bitmap; none for an unsupported depth. */
std::optional<PictureShape> ShapeOfBitmap(const KsBitmap &bitmap, std::uint32_t width, std::uint32_t height);

/**
 * Converts the first shape.width pixels of a row of `bitmap` to a row of the picture, shape.RowBytes() bytes. Grays of
 * 12 bits are scaled to 16.
 */
void ConvertRow(const KsBitmap &bitmap, const std::uint8_t *row, const PictureShape &shape, std::uint8_t *picture);

}  // namespace ntf
