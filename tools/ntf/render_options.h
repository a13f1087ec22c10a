// What `ntf render` is to draw, and how.
#pragma once

#include "core.h"
#include "deflate.h"
#include "ksntfx_reader.h"

#include <cstdint>
#include <optional>
#include <string>

namespace ntf {

struct RenderOptions {
  std::string file;
  std::string output; /* the suffix selects the format; "-" is PNG on standard output */
  bool force = false; /* overwrites a file */
  Door door = Door::Wide;
  NitfShowOptions show = {};            /* how the wide door shows images */
  bool keepsGoing = false;              /* segments that can't be drawn are left out */
  std::uint32_t depth = 24;             /* of the canvas: 8 or 24 bits */
  std::uint32_t loadFlags = 0;          /* NitfLoadFlags */
  std::optional<std::uint32_t> image;   /* only this image, from 0 */
  std::optional<std::uint32_t> graphic; /* only this graphic, from 0, on white */
  bool padded = false;                  /* with the pad pixels of its last blocks */
  CompressionLevel compression = kFastest;
};

}  // namespace ntf
