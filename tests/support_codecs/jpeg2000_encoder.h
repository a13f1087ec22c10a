// JPEG 2000 streams, by OpenJPEG.
#pragma once

#include "files.h"

#include <cstddef>
#include <cstdint>
#include <vector>

#include <openjpeg.h>

struct Jpeg2000Component {
  std::uint32_t bits = 8;
  bool isSigned = false;
  std::uint32_t dx = 1;
  std::uint32_t dy = 1;
};

struct Jpeg2000Spec {
  const char *name = "";
  std::vector<Jpeg2000Component> components = {};
  std::uint32_t width = 37;
  std::uint32_t height = 29;
  std::uint32_t left = 0;
  std::uint32_t top = 0;
  std::uint32_t tile = 0; /**< 0: one */
  bool isJp2 = false;
  bool mixes = false; /**< by the reversible transformation of the first three components */
  bool hasAlpha = false;
  OPJ_COLOR_SPACE space = OPJ_CLRSPC_UNSPECIFIED;
  float rate = 0; /**< compression; 0: without loss */
  int resolutions = 3;
  bool irreversible = false; /**< by the transform in floating point */
};

/** Where the samples of a component lie on its own grid. */
struct Jpeg2000Extent {
  std::uint32_t left;
  std::uint32_t top;
  std::uint32_t width;
  std::uint32_t height;
};

Jpeg2000Extent ExtentOf(const Jpeg2000Spec &spec, const Jpeg2000Component &component);

/** The samples of each component, row by row. */
using Jpeg2000Samples = std::vector<std::vector<std::int32_t>>;

Bytes EncodeJpeg2000(const Jpeg2000Spec &spec, const Jpeg2000Samples &samples);

/** A component as the library decodes it. */
struct Jpeg2000Plane {
  std::uint32_t width;
  std::uint32_t height;
  std::vector<std::int32_t> samples;
};

/** The library by itself: all components at a level. */
std::vector<Jpeg2000Plane> DecodeJpeg2000(const Bytes &stream, bool isJp2, std::uint32_t level);

/** Bytes in memory, as the library reads and writes them. */
struct Jpeg2000Memory {
  Bytes bytes = {};
  std::size_t at = 0;
};

/** Is released with opj_stream_destroy. */
opj_stream_t *OpenJpeg2000Memory(Jpeg2000Memory *memory, bool reads);
