// OpenJPEG, as the codec uses it: one decoding of a stream in memory.
#pragma once

#include "kscodec/codec.h"

#include <memory>
#include <vector>

#include <openjpeg.h>

namespace kscodec::jpeg2000 {

/** A decoder is good for one call of Decode. */
class Decoder {
 public:
  Decoder(Stream stream, bool isJp2);
  Decoder(const Decoder &) = delete;
  Decoder &operator=(const Decoder &) = delete;

  /** Comes first: SUCCESS, ERROR_NO_MEMORY or ERROR_FILE_FORMAT. */
  Status ReadHeader();

  /** Leaves out all but some rows of the picture; components are then counted from the first of them. */
  Status TakeRows(std::uint32_t first, std::uint32_t end);

  /** Decodes the components with these numbers, which must rise, or all where there are none. */
  Status Decode(const std::vector<std::uint32_t> &components);

  /** What the calls above found. */
  const opj_image_t &Image() const { return *image; }

  /** A stream in memory. */
  struct Source {
    Stream bytes;
    std::uint64_t at = 0;
  };

 private:
  template <auto kDestroy>
  struct Deleter {
    template <class Object>
    void operator()(Object *object) const {
      kDestroy(object);
    }
  };

  Source source;
  std::unique_ptr<opj_stream_t, Deleter<opj_stream_destroy>> input;
  std::unique_ptr<opj_codec_t, Deleter<opj_destroy_codec>> codec;
  std::unique_ptr<opj_image_t, Deleter<opj_image_destroy>> image;
};

}  // namespace kscodec::jpeg2000
