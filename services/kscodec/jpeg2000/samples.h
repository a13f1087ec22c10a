// Raw samples of JPEG 2000.
#pragma once

#include "kscodec/samples.h"

#include <memory>

namespace kscodec::jpeg2000 {

/** Opens a JP2 file or a code stream: the function of the codec. */
Status OpenForSamples(const ByteSource &source, const KsSamplesOptions &options, std::unique_ptr<SampleStream> *opened);

/**
 * Rows that are decoded at a time, of a picture with `decoded` components, so that a short stream costs little memory:
 * what the decoder holds is within the limit for a bitmap, and within a 1024th of that or 64 samples for each byte of
 * the stream. A long stream has few parts, each of which has to read it from its start.
 */
std::uint32_t RowsAtOnce(std::uint64_t streamBytes, std::uint32_t width, std::uint32_t height, std::uint64_t decoded);

}  // namespace kscodec::jpeg2000
