// What each element does to the picture: tables for the reader.
#pragma once

#include "ksvect/cgm/elements.h"
#include "ksvect/cgm/picture.h"

namespace ksvect::cgm {

/** Applies an element's parameters to the picture. Bad parameters change nothing. */
using Handler = void (*)(Picture &picture, Parameters &parameters);

struct HandlerRow {
  unsigned group;
  unsigned number;
  Handler handler;
};

std::span<const HandlerRow> DescriptorHandlers();
std::span<const HandlerRow> AttributeHandlers();
std::span<const HandlerRow> PrimitiveHandlers();

}  // namespace ksvect::cgm
