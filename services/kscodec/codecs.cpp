#include "kscodec/codecs.h"

namespace kscodec {

constinit const Libraries kLibraries = {
#ifdef KSNTFX_CODEC_JPEG
    .decodeJpeg = jpeg::Decode,
    .readJpegSamples = jpeg::ReadSamples,
    .encodeJpeg = jpeg::Encode,
#endif
#ifdef KSNTFX_CODEC_JPEG2000
    .jpeg2000 = &kJpeg2000Codec,
#endif
#ifdef KSNTFX_CODEC_T4
    .loadT4 = LoadT4,
    .startTiff = StartTiff,
#endif
};

}  // namespace kscodec
