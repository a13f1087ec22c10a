// The body of a segment, whole in memory.
#pragma once

#include "headers/nitffile.h"
#include "internal/ksclasses_.h"

namespace ksntfx {

struct SegmentData {
  KsArray<char> bytes; /**< and a zero behind them; null where there are none */
  std::uint32_t length = 0;
};

/** Reads a body; what the file doesn't hold is not allocated. SUCCESS, ERROR_FILE_READ or ERROR_NO_MEMORY. */
Status ReadSegmentData(const NitfFile *file, SegmentKind kind, std::uint32_t index, SegmentData *data);

/**
 * Copies a text into `buffer`: from memory, up to and with its first zero byte, whatever TextDataLength says; or from
 * the file, as many bytes as that, with a zero behind them. ERROR_FILE_READ with what came where the file ends before
 * the text.
 */
Status ReadText(const NitfFile *file, std::uint32_t index, char *buffer);

}  // namespace ksntfx
