// JPEG streams of 8 bits as libjpeg-turbo writes them; what it doesn't write is in jpeg_builder.h.
#pragma once

#include "files.h"
#include "jpeg_builder.h"

#include <array>
#include <optional>
#include <string_view>

struct JpegEncoding {
  int components = 3;
  std::vector<JpegSampling> sampling = {}; /**< 1 by 1 for the components without one */
  bool progressive = false;
  bool eachAlone = false; /**< a scan a component */
  std::uint32_t restart = 0;
  bool jfif = false;
  std::optional<std::uint8_t> adobe = {};               /**< its transform */
  std::optional<std::array<std::uint8_t, 2>> nitf = {}; /**< quality level and colour of the stream */
  std::string_view ids = "\1\2\3\4";
  bool isFitted = false; /**< Huffman tables made for the picture */
  int quality = 100;
  std::uint32_t width = 52;
  std::uint32_t height = 37;
};

/** Components are encoded as `sample` has them, without a change of colours. */
Bytes EncodeByLibrary(const JpegEncoding &encoding, const JpegSample &sample);

struct JpegPixels {
  std::uint32_t width;
  std::uint32_t height;
  Bytes samples; /**< all components of one pixel after the other */
};

/** The library by itself, at 1/2^n of the size: components as they are stored, or YCbCr as RGB. */
JpegPixels DecodeByLibrary(const Bytes &stream, bool convertsToRgb, std::uint32_t level);
