// Label segments on the canvas.
#pragma once

#include "compose.h"

/** Draws a label. ERROR_NOT_SUPPORTED: labels have no text drawing yet. */
std::int32_t DrawLabel(KsDeviceContext *context, NitfFile *file, std::uint32_t index, const DisplayOffset &offset);
