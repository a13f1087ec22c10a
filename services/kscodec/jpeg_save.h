// What writes JPEG streams, for the front.
#pragma once

#include "kskernel.h"

#include <cstdint>

namespace kscodec::jpeg {

/** How a picture is to be written. */
struct SaveOrder {
  bool isGray;           /**< one component of 8 bits, else three */
  bool isRgb;            /**< of three components: R, G, B as they are, else Y, Cb, Cr */
  std::uint32_t quality; /**< from kBestQuality to kSmallestQuality */
};

/** The scale of KsSaveMemory. */
constexpr std::uint32_t kBestQuality = 2;
constexpr std::uint32_t kSmallestQuality = 255;

/**
 * Encodes a bitmap of any depth that converts to the one ordered into a new global block. SUCCESS, ERROR_BITMAP_SIZE
 * for one that is larger than a stream can tell, ERROR_NO_MEMORY, or what the conversion fails with.
 */
std::int32_t Save(const KsBitmap &bitmap, const SaveOrder &order, void **handle, std::uint64_t *size);

}  // namespace kscodec::jpeg
