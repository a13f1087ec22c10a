// Bi-level streams of T.4, by libtiff.
#pragma once

#include "files.h"

#include <cstdint>
#include <functional>
#include <string>

struct T4Picture {
  std::uint32_t width;
  std::uint32_t height;
  std::function<bool(std::uint32_t row, std::uint32_t column)> isBlack;
};

/** Leaves a TIFF file of the picture at `path`. */
Bytes EncodeT4(const T4Picture &picture, bool twoDimensional, const std::string &path);
