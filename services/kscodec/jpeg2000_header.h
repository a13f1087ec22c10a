// What the headers of a JPEG 2000 stream say before anything is decoded, and what the stream may cost.
#pragma once

#include "kscodec/codec.h"

#include <cstdint>
#include <optional>

namespace kscodec {

/** The image and tile sizes of the SIZ marker segment (ISO/IEC 15444-1, A.5.1). */
struct Jpeg2000Size {
  std::uint32_t width = 0;
  std::uint32_t height = 0;
  std::uint32_t tileWidth = 0; /**< cut to the image */
  std::uint32_t tileHeight = 0;
  std::uint64_t tiles = 0;
  std::uint32_t components = 0;
  std::uint32_t bits = 0; /**< of the first component */
};

/** What the boxes of a JP2 file say of its colours (ISO/IEC 15444-1, I.5.3). */
struct Jp2Colors {
  std::uint32_t paletteColumns = 0; /**< 0 without a palette */
  std::uint32_t paletteBits = 0;    /**< of the first column */
  bool hasChannelDefinition = false;
  bool isSycc = false;
};

struct Jpeg2000Header {
  bool isJp2 = false;
  Stream codeStream; /**< from SOC */
  Jpeg2000Size size;
  Jp2Colors colors;
};

bool IsJp2(Stream stream);
bool IsCodeStream(Stream stream);

/** Nothing where the stream has no sound header. */
std::optional<Jpeg2000Header> ReadJpeg2000Header(Stream stream);

/** What the marker segments in front of the compressed data ask for. */
struct Jpeg2000Coding {
  bool mixesComponents = false; /**< the first three components of some tile are stored as mixtures of each other */
  double packets = 0;           /**< about as many as the stream should have; no fewer than half of them */
  double codeBlocks = 0;        /**< about as many as a decoder keeps account of */
};

Jpeg2000Coding ReadJpeg2000Coding(const Jpeg2000Header &header);

/**
 * Whether a stream is long enough for what it claims, so that a few bytes can't ask for much memory and time:
 *   - no more than 1024 samples for each byte, and 64 Mi for none, far beyond what pictures are compressed to;
 *   - the tiles each have their header, of 14 bytes, and a byte for each component;
 *   - no more than 8 packets for each byte, and 65536 for none, where sound streams have one byte for each at least;
 *   - no more than 8 code blocks for each byte, and 262144 for none, which are four times those of 8192 by 8192 pixels
 *     of one colour in blocks of 32 by 32.
 */
bool IsPlausible(const Jpeg2000Header &header, const Jpeg2000Coding &coding);

}  // namespace kscodec
