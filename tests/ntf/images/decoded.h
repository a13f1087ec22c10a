// The image of a file, decoded as the composition does it.
#pragma once

#include "harness.h"
#include "images/handlimg.h"
#include "internal/ksclasses_.h"

#include <gtest/gtest.h>

/** The one image of a file. */
struct Decoded {
  explicit Decoded(const ImageSpec &image) : file(NitfBuilder().Image(image)) {
    EXPECT_EQ(file.status, SUCCESS);
    status = DecodeImageSegment(nullptr, file.Get(), 0, bitmap.Get()).Code();
  }
  std::uint32_t At(std::uint32_t row, std::uint32_t byte) const {
    return bitmap->pixels[std::size_t{row} * bitmap->bytesPerLine + byte];
  }
  /** The first `count` bytes of a row. */
  Bytes Row(std::uint32_t row, std::size_t count) const {
    const std::uint8_t *const first = bitmap->pixels + std::size_t{row} * bitmap->bytesPerLine;
    return {first, first + count};
  }

  LoadedFile file;
  KsLocalBitmap bitmap;
  std::int32_t status;
};
