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

/** One codec. The operations take streams that may be damaged in any way. */
struct Codec {
  /** Whether a stream begins like one of this codec's. */
  bool (*recognises)(Stream stream);
  /** Reads the header: SUCCESS, ERROR_FILE_FORMAT, or ERROR_NOT_SUPPORTED for a kind that it doesn't decode. */
  std::int32_t (*inform)(Stream stream, PictureInfo *info);
  /**
   * Decodes into `target`, which comes empty and is created by the codec: 8, 12 or 16 bits of gray for one component,
   * 24 bits for more. `options` is never null. On failure `target` is left empty.
   */
  std::int32_t (*load)(Stream stream, const KsLoadOptions &options, KsBitmap *target);
};

}  // namespace kscodec
