// Pixels in memory to draw on: the one door to the drawing library.
#pragma once

#include "kskernel.h"
#include "ksvect/model/drawing.h"

#include <cstdint>

namespace ksvect {

enum class Join : std::uint8_t { Round, Miter };

/** How far a mitred corner reaches beyond the line at most, in half widths. */
constexpr double kMiterLimit = 4;

/** Draws, anti-aliased, on pixels of blue, green, red and an unused byte. Coordinates stay within about 10^6. */
class Surface {
 public:
  /** On pixels that outlive it; `rowBytes` a multiple of 4. Throws std::bad_alloc. */
  Surface(std::uint32_t *pixels, std::int32_t width, std::int32_t height, std::int32_t rowBytes);
  Surface(const Surface &) = delete;
  Surface &operator=(const Surface &) = delete;
  ~Surface();

  // The path, which the next drawing operation uses up.
  void MoveTo(Point point);
  void LineTo(Point point);
  void Close();
  void Rectangle(const KsRect &rectangle);

  void Fill(Color color, bool byParity);
  /** Fills with pixels of their own, premultiplied with the alpha of their top byte, that begin at (left, top). */
  void Fill(const std::uint32_t *pixels, const KsRect &place, std::int32_t rowBytes, bool byParity);
  /** Lines end bluntly where they end. */
  void Stroke(Color color, double width, Join join);

  /** Keeps drawing within a rectangle, until the next call. */
  void Clip(const KsRect &rectangle);

 private:
  void SetColor(Color color);

  void *canvas;  // the library's own objects, which nobody else is to know
  void *context;
};

}  // namespace ksvect
