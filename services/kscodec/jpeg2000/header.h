// What the headers of a JPEG 2000 stream say before anything is decoded, and what the stream may cost.
#pragma once

#include "kscodec/codec.h"

#include <cstdint>

namespace kscodec::jpeg2000 {

/** The image and tile sizes of the SIZ marker segment (ISO/IEC 15444-1, A.5.1). */
struct Size {
  std::uint32_t width = 0;
  std::uint32_t height = 0;
  std::uint32_t tileWidth = 0; /**< cut to the image */
  std::uint32_t tileHeight = 0;
  std::uint64_t tiles = 0;
  std::uint32_t components = 0;
  std::uint32_t bits = 0; /**< of the first component */
};

/** What the boxes of a JP2 file say of its colours (ISO/IEC 15444-1, I.5.3). */
struct Colors {
  std::uint32_t paletteColumns = 0; /**< 0 without a palette */
  std::uint32_t paletteBits = 0;    /**< of the first column */
  bool hasChannelDefinition = false;
  bool isSycc = false;
};

/** A JP2 file whose image header box contradicts its code stream counts as the bare stream. */
struct Header {
  bool isJp2 = false;
  Stream stream;     /**< the JP2 file, or the code stream */
  Stream codeStream; /**< from SOC */
  Size size;
  Colors colors;
};

bool IsJp2(Stream stream);
bool IsCodeStream(Stream stream);

/** SUCCESS, or ERROR_FILE_FORMAT. */
Status ReadHeader(Stream stream, Header *header);

/** What the marker segments before the compressed data ask for. */
struct Coding {
  bool mixesComponents = false; /**< the first three components of some tile are stored as mixtures of each other */
  double packets = 0;           /**< about as many as the stream should have; no fewer than half of them */
  double codeBlocks = 0;        /**< about as many as a decoder keeps account of */
};

Coding ReadCoding(const Header &header);

/**
 * Whether a stream is long enough for what it claims, so that a few bytes can't ask for much memory and time:
 *   - no more than 1024 samples for each byte, and 64 Mi for none, far beyond what pictures are compressed to;
 *   - the tiles each have their header, of 14 bytes, and a byte for each component;
 *   - no more than 8 packets for each byte, and 65536 for none, where sound streams have one byte for each at least;
 *   - no more than 8 code blocks for each byte, and 262144 for none, which are four times those of 8192 by 8192 pixels
 *     of one colour in blocks of 32 by 32.
 */
bool IsPlausible(const Header &header, const Coding &coding);

}  // namespace kscodec::jpeg2000
