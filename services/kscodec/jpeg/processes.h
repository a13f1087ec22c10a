// Which decoder reads a JPEG stream.
#pragma once

#include "kscodec/codecs.h"
#include "kscodec/jpeg/markers.h"

namespace kscodec::jpeg {

/** Whether our own decoder reads the stream: libjpeg-turbo has no 12 bits and no lossless process. */
inline bool IsOwn(const PictureInfo &info) {
  const bool isOwnProcess = info.format == KS_FORMAT_JPEG_12 || info.format == KS_FORMAT_JPEG_LOSSLESS;
  // Nor does it find components in a scan that are not among the first four.
  return isOwnProcess || (info.components > kMostScanComponents && info.format != KS_FORMAT_JPEG_PROGRESSIVE);
}

inline bool IsSupported(const PictureInfo &info) {
  if (IsOwn(info)) return true;
  return kLibraries.decodeJpeg != nullptr && info.components <= kMostScanComponents;
}

}  // namespace kscodec::jpeg
