// Raw samples of JPEG 2000.
#pragma once

#include "kscodec/samples.h"

#include <memory>

namespace kscodec::jpeg2000 {

/** Opens a JP2 file or a code stream: the function of the codec. */
Status OpenForSamples(const ByteSource &source, const KsSamplesOptions &options, std::unique_ptr<SampleStream> *opened);

}  // namespace kscodec::jpeg2000
