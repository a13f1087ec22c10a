// The kinds of image data: one row a compression (IC, MIL-STD-2500C, table A-3), which all that depends on it asks. A
// new compression is a row here, and a reader in images/ where its layout is a new one.
#pragma once

#include <cstdint>
#include <string_view>

namespace ksntfx {

/** IC, in the order of its stored numbers. */
enum ImageCompression : std::uint32_t {
  kNC,
  kNM,
  kC0,
  kC1,
  kC2,
  kC3,
  kC4,
  kC5,
  kC6,
  kC8,
  kI1,
  kM0,
  kM1,
  kM2,
  kM3,
  kM4,
  kM5,
  kM6,
  kM8,
  kUnknownCompression,
  kCD, /**< this and what follows is known to the wide reader alone */
  kMD
};

/** How the data of an image are laid out, which decides their reader. */
enum class ImageLayout : std::uint8_t {
  None,            /**< there is no reader for it */
  PlainBlocks,     /**< blocks of samples, by IMODE */
  BilevelStream,   /**< one T.4 stream */
  VectorQuantised, /**< a codebook, and codes of kernels */
  Tiles,           /**< a stream of a codec for each block, or one for the only block */
  OneStream        /**< one stream of a codec, whatever blocks the header counts */
};

/** What follows from an IC. */
struct ImageKind {
  std::string_view text; /**< IC; empty for a code that isn't known */
  std::uint32_t compression;
  ImageLayout layout;
  bool hasRate;           /**< COMRAT is there */
  bool hasMaskTable;      /**< an image data mask table stands in front of the data */
  bool isReduced = false; /**< the stream holds the picture made smaller: it is enlarged to its place */
};

/** The row of a stored IC; that of an unknown one for any other number. */
const ImageKind &ImageKindOf(std::uint32_t compression);

/**
 * Whether samples of an IC can be read. C6 and M6 are reserved: the strict interfaces look for JPEG streams in their
 * data, which the format doesn't say are there.
 */
bool HasSamples(const ImageKind &kind);

/** The row of a text of two characters, or null. With `isWide`, also of those that the wide reader alone knows. */
const ImageKind *FindImageKind(std::string_view text, bool isWide = false);

}  // namespace ksntfx
