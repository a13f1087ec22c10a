// The stream file header (MIL-STD-2500C, table A-8(B)): a file that was written before its lengths were known carries
// nines in its length fields, and near its end a copy of its headers with the true values.
#pragma once

#include "headers/dexsbhdr.h"

namespace ksntfx {

struct StreamFileHeader : DataExtensionSubheader {
  std::uint32_t streamLengthFirst; /**< SFH_L1: bytes of the replacement data */
  std::uint32_t streamLengthLast;  /**< SFH_L2: the same */
  char SFH_DELIM1[5];
  char SFH_DELIM2[5];
  char *replacementData; /**< SFH_DR */
};

/**
 * Finds and reads the stream file header: the last SFH_DELIM1 of the file, searched backward from its end.
 * `*streamBytesLeft` becomes the distance from the end of the file to the replacement data. SUCCESS with the file at
 * SFH_L1; ERROR_INVALID_VALUE where there is none, ERROR_FILE_FORMAT where delimiters or lengths don't agree,
 * ERROR_FILE_READ, ERROR_NO_MEMORY.
 */
Status ReadStreamFileHeader(KsHandle handle, StreamFileHeader *stream, std::uint32_t *streamBytesLeft);

/** Releases the replacement data; may be called twice. */
void StreamFileHeaderFree(StreamFileHeader *stream);

}  // namespace ksntfx
