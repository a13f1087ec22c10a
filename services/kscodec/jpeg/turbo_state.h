// libjpeg-turbo, as both decoders of 8 bits use it: from where a stream is to its header.
#pragma once

#include "kscodec/codecs.h"
#include "kscodec/jpeg/colors.h"
#include "kscodec/jpeg/turbo_errors.h"

namespace kscodec::jpeg {

/**
 * What the library's calls work on. It is plain data, all of 0 at first, and its state is released with
 * jpeg_destroy_decompress.
 */
struct TurboDecoder {
  jpeg_decompress_struct state;
  ErrorExit errors;
  jpeg_progress_mgr progress;
  jpeg_source_mgr source;
  JpegInput input;
  std::uint64_t at; /**< what is read next of the input's source */
  JOCTET buffer[1 << 14];

  /** Reads the header, and installs the tables that the stream lacks. Failures leave through `errors`. */
  void ReadHeader(const JpegInput &from, const Plan &plan);
};

}  // namespace kscodec::jpeg
