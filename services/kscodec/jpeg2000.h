// JPEG 2000 (ISO/IEC 15444-1): bare code streams, and code streams in JP2 files.
#pragma once

#include "kscodec/codec.h"

namespace kscodec {

/**
 * Up to 16 bits a component; beyond that ERROR_NOT_SUPPORTED.
 *
 * One component becomes a gray bitmap: 8 bits for up to 8 bits, with the values as they are in the stream, since they
 * may be indices or have a table of their own; 16 bits for more, spread over the full range. Two and more become 24
 * bits, each component scaled to 8: the three bands asked for with KS_LOAD_BANDS, else the first three, and of two
 * components the first as a gray. The palette of a JP2 file is applied before components are counted.
 */
extern const Codec kJpeg2000Codec;

}  // namespace kscodec
