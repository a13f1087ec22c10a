// Bi-level streams of ITU-T T.4, one- and two-dimensional (MIL-STD-188-196 in NITF), which have no header of their own.
#pragma once

#include "kscodec/codec.h"

namespace kscodec {

/**
 * Decodes a stream of `info.format` KS_FORMAT_T4_1D or KS_FORMAT_T4_2D into `target`, a bitmap of 1 bit a pixel that is
 * there already: white is 1, black is 0. A stream that breaks off, or goes wrong, gives the rows before; the others
 * stay white. SUCCESS; ERROR_FILE_FORMAT where not one row can be decoded; ERROR_NOT_SUPPORTED for another format or
 * another target, or without this codec; ERROR_NO_MEMORY.
 */
std::int32_t LoadT4(Stream stream, const KsRawFormatInfo &info, KsBitmap *target);

}  // namespace kscodec
