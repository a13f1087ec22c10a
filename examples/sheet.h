// A sheet of one bit a pixel to draw lines and letters on.
#pragma once

#include <cstdint>
#include <string_view>
#include <vector>

class Sheet {
 public:
  Sheet(int columns, int rows) : width(columns), height(rows), marks(static_cast<std::size_t>(columns) * rows) {}

  /** Marks a pixel; those beyond the edges are dropped. */
  void Mark(int x, int y);
  bool IsMarked(int x, int y) const;

  /** A line of one pixel's width; of `period` pixels along it the first `drawn` are marked. */
  void Line(int x0, int y0, int x1, int y1, int drawn = 1, int period = 1);
  void Box(int left, int top, int columns, int rows);
  void Fill(int left, int top, int columns, int rows);
  /** Capital letters and figures with the upper left corner at a place; those without a drawing stay blank. */
  void Text(int left, int top, std::string_view text, int scale = 1);
  static int TextWidth(std::string_view text, int scale = 1);

  /** The pixels around the marks of this sheet, without the marks themselves. */
  Sheet Halo() const;

  const int width;
  const int height;

 private:
  std::vector<bool> marks;
};
