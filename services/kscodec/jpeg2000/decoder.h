// OpenJPEG, as the codec uses it: one decoding of a stream.
#pragma once

#include "kscodec/source.h"

#include <memory>
#include <vector>

#include <openjpeg.h>

namespace kscodec::jpeg2000 {

/** What a decoder does. */
struct DecoderOptions {
  bool isJp2 = false;        /**< the stream is a JP2 file, whose palette and channel definitions are applied */
  std::uint32_t level = 0;   /**< resolutions to leave out */
  std::uint32_t threads = 0; /**< that help the caller's */
  bool isStrict = true;      /**< a stream that breaks off is an error */
};

/** A rectangle of pixels on the reference grid. */
struct Area {
  std::uint32_t left;
  std::uint32_t top;
  std::uint32_t right; /**< exclusive */
  std::uint32_t bottom;

  bool operator==(const Area &) const = default;
};

/** A decoder is good for one call of Decode. */
class Decoder {
 public:
  /** The source must outlive the decoder. */
  Decoder(const ByteSource &source, const DecoderOptions &wanted);
  Decoder(const Decoder &) = delete;
  Decoder &operator=(const Decoder &) = delete;

  /** Comes first: SUCCESS, ERROR_NO_MEMORY, ERROR_FILE_READ or ERROR_FILE_FORMAT. */
  Status ReadHeader();

  /** Leaves out all but an area of the picture, whose components then begin with its first pixel. */
  Status TakeArea(const Area &area);

  /** Decodes the components with these numbers, which must rise, or all where there are none. */
  Status Decode(const std::vector<std::uint32_t> &components);

  /** What the calls above found. */
  const opj_image_t &Image() const { return *image; }

  /** The bytes as the library reads them. */
  struct Input {
    const ByteSource *source;
    std::uint64_t at = 0;
    bool hasFailed = false;
  };

 private:
  template <auto kDestroy>
  struct Deleter {
    template <class Object>
    void operator()(Object *object) const {
      kDestroy(object);
    }
  };

  /** Why a call of the library failed. */
  Status Failure() const { return input.hasFailed ? ERROR_FILE_READ : ERROR_FILE_FORMAT; }

  DecoderOptions options;
  Input input;
  std::unique_ptr<opj_stream_t, Deleter<opj_stream_destroy>> stream;
  std::unique_ptr<opj_codec_t, Deleter<opj_destroy_codec>> codec;
  std::unique_ptr<opj_image_t, Deleter<opj_image_destroy>> image;
};

}  // namespace kscodec::jpeg2000
