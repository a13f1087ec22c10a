// Raw samples of JPEG.
#pragma once

#include "kscodec/samples.h"

#include <memory>

namespace kscodec::jpeg {

/** Opens a JPEG stream: the function of the codec. */
Status OpenForSamples(const ByteSource &source, const KsSamplesOptions &options, std::unique_ptr<SampleStream> *opened);

}  // namespace kscodec::jpeg
