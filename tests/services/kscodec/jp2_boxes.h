// JP2 files with boxes that OpenJPEG doesn't write.
#pragma once

#include "jpeg2000_encoder.h"

#include <algorithm>
#include <cstring>
#include <string>

#include <gtest/gtest.h>

inline void PutBig(Bytes &bytes, size_t at, uint64_t value, int count) {
  for (int i = 0; i < count; ++i) bytes[at + i] = static_cast<uint8_t>(value >> 8 * (count - 1 - i));
}

inline Bytes Box(const char *type, const Bytes &contents) {
  Bytes box(8);
  PutBig(box, 0, 8 + contents.size(), 4);
  std::memcpy(box.data() + 4, type, 4);
  box.insert(box.end(), contents.begin(), contents.end());
  return box;
}

/** Where a box with a 32-bit length begins; the names of boxes occur nowhere else in what is made here. */
inline size_t BoxAt(const Bytes &file, const std::string &type) {
  const auto found = std::search(file.begin(), file.end(), type.begin(), type.end());
  EXPECT_NE(found, file.end());
  return static_cast<size_t>(found - file.begin()) - 4;
}

inline void Insert(Bytes &file, size_t at, const Bytes &bytes) {
  file.insert(file.begin() + static_cast<std::ptrdiff_t>(at), bytes.begin(), bytes.end());
}

/** Adds boxes at the end of the header box, which has the code stream's box behind it. */
inline Bytes WithHeaderBoxes(Bytes file, const Bytes &boxes) {
  const size_t header = BoxAt(file, "jp2h");
  const size_t end = BoxAt(file, "jp2c");
  Insert(file, end, boxes);
  PutBig(file, header, end - header + boxes.size(), 4);
  return file;
}

/** A JP2 file of the four indices 0 to 3, and a palette of three columns. */
inline Bytes PaletteFile() {
  const Jpeg2000Spec recipe = {.components = {{2}}, .width = 4, .height = 1, .isJp2 = true};
  const Bytes palette = {0, 4, 3, 7, 7, 7, 10, 20, 30, 40, 50, 60, 70, 80, 90, 100, 110, 120};
  const Bytes mapping = {0, 0, 1, 0, 0, 0, 1, 1, 0, 0, 1, 2};
  Bytes boxes = Box("pclr", palette);
  Insert(boxes, boxes.size(), Box("cmap", mapping));
  return WithHeaderBoxes(EncodeJpeg2000(recipe, {{0, 3, 2, 1}}), boxes);
}
