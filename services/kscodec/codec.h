// What stands behind the front: one codec a file, each with the three operations of this record.
#pragma once

#include "kskernel.h"

#include <cstdint>
#include <span>

namespace kscodec {

using Stream = std::span<const std::uint8_t>;

/** What a stream's own header says of its picture. */
struct PictureInfo {
  std::uint32_t format = 0;     /**< KsFormat */
  std::uint32_t width = 0;      /**< pixels */
  std::uint32_t height = 0;     /**< rows */
  std::uint32_t components = 0; /**< as many as the stream has */
  std::uint32_t bits = 0;       /**< bits of a component */
};

/** Bits of a pixel of the bitmap that a codec makes. */
constexpr std::uint32_t DepthOfBitmap(const PictureInfo &info) {
  if (info.components != 1) return 24;
  if (info.bits <= 8) return 8;
  const bool isJpeg2000 = info.format == KS_FORMAT_JP2 || info.format == KS_FORMAT_J2K;
  return info.bits <= 12 && !isJpeg2000 ? 12 : 16;
}

/** One codec. The operations take streams that may be damaged in any way. */
struct Codec {
  /** Whether a stream begins like one of this codec's. */
  bool (*recognises)(Stream stream);
  /**
   * Reads the header: SUCCESS with all of `info` filled and a picture of at least one pixel, ERROR_FILE_FORMAT, or
   * ERROR_NOT_SUPPORTED for a kind that has no format number. A kind that has one may still be more than `load` knows.
   */
  std::int32_t (*inform)(Stream stream, PictureInfo *info);
  /**
   * Decodes a stream that `inform` gave SUCCESS for into `target`, which comes empty and is created by the codec with
   * DepthOfBitmap. Grays (KS_ORDER_PALETTE at 8 bits, else KS_ORDER_GRAY) have no palette: levels shown as the gray
   * ramp, which are copied as they are onto a bitmap of the same depth, so that the levels of an image with a lookup
   * table stay its indices. Colour has KS_ORDER_BGR. `options` is never null. On failure `target` is left empty.
   */
  std::int32_t (*load)(Stream stream, const KsLoadOptions &options, KsBitmap *target);
  /**
   * Decodes such a stream into pixels of its size and of DepthOfBitmap, all of which are written; they are undefined
   * after a failure. Null for a codec that has its pixels elsewhere first.
   */
  std::int32_t (*loadInPlace)(Stream stream, const KsLoadOptions &options, const KsBitmap &place);
};

#ifdef KSNTFX_CODEC_JPEG
extern const Codec kJpegCodec;
#endif

}  // namespace kscodec
