// The body of a segment, whole in memory.
#pragma once

#include "internal/ksclasses_.h"
#include "nitffile.h"

struct SegmentData {
  KsArray<char> bytes; /**< and a zero behind them; null where there are none */
  std::uint32_t length = 0;
};

/** Reads a body; what the file doesn't hold is not allocated. SUCCESS, ERROR_FILE_READ or ERROR_NO_MEMORY. */
std::int32_t ReadSegmentData(const NitfFile *file, SegmentKind kind, std::uint32_t index, SegmentData *data);
