// What the front asks of a codec: it opens a stream, and decodes what it opened.
#pragma once

#include "internal/status.h"
#include "kssamples.h"

#include <cstdint>
#include <memory>
#include <span>

namespace kscodec {

using Stream = std::span<const std::uint8_t>;

/** What the header of a stream says about its picture. */
struct PictureInfo {
  std::uint32_t format = 0;     /**< KsFormat */
  std::uint32_t width = 0;      /**< pixels */
  std::uint32_t height = 0;     /**< rows */
  std::uint32_t components = 0; /**< all that the stream has */
  std::uint32_t bits = 0;       /**< bits of a component */
};

/** Bits of a pixel of the bitmap that a picture is decoded into. */
constexpr std::uint32_t DepthOfBitmap(const PictureInfo &info) {
  if (info.components != 1) return 24;
  if (info.bits <= 8) return 8;
  const bool isJpeg2000 = info.format == KS_FORMAT_JP2 || info.format == KS_FORMAT_J2K;
  return info.bits <= 12 && !isJpeg2000 ? 12 : 16;
}

/** Whether a bitmap is within the limit: SUCCESS or ERROR_NO_MEMORY. Nothing is allocated. */
Status CheckBitmapLimit(std::uint32_t width, std::uint64_t height, std::uint32_t bits);

/**
 * Creates the bitmap of a decoded picture, all of 0. Grays of 8, 12 and 16 bits have no palette and show as a gray
 * ramp: their levels are copied unchanged onto a bitmap of the same depth, so that the levels of an image with a lookup
 * table remain its indices. 24 bits are blue, green, red.
 */
Status CreateBitmap(std::uint32_t width, std::uint32_t height, std::uint32_t bits, KsBitmap *target);

/** A stream whose header has been read. It refers to the bytes of the stream, which must outlive it. */
class OpenedStream {
 public:
  explicit OpenedStream(const PictureInfo &picture) : info(picture) {}
  virtual ~OpenedStream() = default;
  OpenedStream(const OpenedStream &) = delete;
  OpenedStream &operator=(const OpenedStream &) = delete;

  const PictureInfo &Info() const { return info; }

  /** Decodes into `target`, an empty bitmap that the codec creates. It may hold anything after a failure. */
  virtual Status Load(const KsLoadOptions &options, KsBitmap *target) const = 0;

  /**
   * Decodes into the pixels of a bitmap of the picture's size and DepthOfBitmap. All of them are written on SUCCESS,
   * and undefined after a failure.
   */
  virtual Status LoadInPlace(const KsLoadOptions &, const KsBitmap &) const { return ERROR_NOT_SUPPORTED; }

 private:
  PictureInfo info;
};

class ByteSource;
class SampleStream;

/** One codec. Its functions accept streams that are damaged in any way, and may throw std::bad_alloc. */
struct Codec {
  /** Whether the stream begins like one of this codec's. */
  bool (*recognises)(Stream stream);
  /**
   * Reads the header of a recognised stream.
   *   SUCCESS              `opened` is set, with a picture of at least one pixel
   *   ERROR_FILE_FORMAT    the header is damaged
   *   ERROR_NOT_SUPPORTED  there is no format number for this kind; one that has a number may still fail to load
   */
  Status (*open)(Stream stream, std::unique_ptr<OpenedStream> *opened);
  /** Opens a recognised stream for its samples: SUCCESS, or the status of KsSamplesOpen. */
  Status (*openSamples)(const ByteSource &source, const KsSamplesOptions &options,
                        std::unique_ptr<SampleStream> *opened);
  bool loadsInPlace;
};

}  // namespace kscodec
