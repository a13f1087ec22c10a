// Where a decoded image goes.
#pragma once

#include "internal/status.h"
#include "kskernel.h"

namespace ksntfx {

/** Takes an image strip by strip, from the top down. */
class ImageSink {
 public:
  ImageSink() = default;
  ImageSink(const ImageSink &) = delete;
  ImageSink &operator=(const ImageSink &) = delete;
  virtual ~ImageSink() = default;

  /**
   * Takes the first `rows` rows of `part`, which belong at row `top` of the image. The bitmap is used again afterwards.
   * A result other than SUCCESS ends the decoding.
   */
  virtual Status Place(KsBitmap *part, std::uint32_t top, std::uint32_t rows) = 0;

  /**
   * Lends the place itself, where its pixels are the image's own of `depth` bits: a view on `rows` rows from row `top`
   * of the image, every pixel of which is then written. False where the rows have to go through Place.
   */
  virtual bool Lend(KsBitmap *view, std::uint32_t top, std::uint32_t rows, std::uint32_t depth) = 0;
};

}  // namespace ksntfx
