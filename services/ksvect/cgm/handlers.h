// What each element does to the picture, as tables that the reader looks into.
#pragma once

#include "ksvect/cgm/elements.h"
#include "ksvect/cgm/picture.h"

namespace ksvect::cgm {

/** Takes an element's parameters over into the picture; nothing changes where they turn out bad. */
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
