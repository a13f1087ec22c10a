// Drawings and text onto bitmaps.
#pragma once

#include "internal/status.h"
#include "kskernel.h"
#include "ksvect/paint/mapping.h"

#include <string_view>

namespace ksvect {

/**
 * Paints a drawing onto a bitmap of 8, 24 or 32 bits. An extent of no width or height is laid onto the rectangle
 * unscaled in that direction. SUCCESS, ERROR_NO_STORAGE, ERROR_NOT_SUPPORTED for other depths, ERROR_NO_MEMORY. May
 * throw std::bad_alloc.
 */
Status PaintDrawing(const Drawing &drawing, const Placement &placement, KsBitmap &bitmap);

/** A text of a device context: pixels, with the upper left corner of its first character's cell at `x` and `y`. */
struct ScreenText {
  std::int32_t x = 0;
  std::int32_t y = 0;
  std::string_view text; /**< Latin 1 */
  Color color = 0;
  bool opaque = false; /**< fills the box behind the text with `background` */
  Color background = 0xFFFFFF;
};

/** Writes text in the stock font of device contexts. Results as PaintDrawing. */
Status PaintScreenText(const ScreenText &text, KsBitmap &bitmap);

}  // namespace ksvect
