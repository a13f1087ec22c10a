// What a composition is drawn on.
#pragma once

#include "kskernel.h"

namespace ksntfx {

/** Where objects are drawn. */
struct Canvas {
  KsBitmap *bitmap;
  KsDeviceContext *context; /**< on the bitmap, or null */
  bool isDiscarded;         /**< after a failure: a part of an image may then be on it */
};

}  // namespace ksntfx
