// A PNG file as it is, without any conversion, to compare with what should have been written.
#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <vector>

struct PngFile {
  std::uint32_t width = 0;
  std::uint32_t height = 0;
  int bits = 0;
  int colorType = 0; /**< PNG_COLOR_TYPE_... */
  std::vector<std::array<int, 3>> palette;
  std::vector<std::vector<std::uint8_t>> rows;

  /** Sample `x` of a row, a gray, an index, or one of the three parts of each pixel. */
  int Sample(std::uint32_t y, std::uint32_t x) const;
};

/** Decodes a PNG file; throws where it is none or damaged. */
PngFile DecodePng(const std::string &bytes);
