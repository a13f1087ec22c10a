// How a JPEG 2000 stream is coded, where its tiles are, and what it may cost to decode it.
#pragma once

#include "kscodec/jpeg2000/header.h"

#include <cstdint>
#include <vector>

namespace kscodec::jpeg2000 {

/** One part of a tile (ISO/IEC 15444-1, A.4.2). */
struct TilePart {
  std::uint64_t at = 0;      /**< of its SOT marker, in the code stream */
  std::uint64_t bytes = 0;   /**< from there on, as far as the code stream goes */
  std::uint32_t length = 0;  /**< the bytes that it should have */
  std::uint16_t tile = 0;    /**< the number of its tile */
  std::uint8_t number = 0;   /**< among the parts of the tile */
  std::uint8_t ofNumber = 0; /**< the number of these parts, 0 if it isn't said */
};

/** What the marker segments before the compressed data ask for. */
struct Coding {
  bool mixesComponents = false; /**< the first three components of some tile are stored as mixtures of each other */
  double packets = 0;           /**< about as many as the stream should have; no fewer than half of them */
  double codeBlocks = 0;        /**< about as many as a decoder keeps account of */
  std::uint32_t levels = 32;    /**< decompositions that all components of all tiles have */
  bool packsHeaders = false;    /**< the headers of packets are in the main header, for all tiles in their order */
  bool partsAreKnown = false;   /**< they follow each other up to the end of the code stream, or beyond it */
  std::uint64_t mainHeaderBytes = 0;
  std::vector<TilePart> parts; /**< in the order of the stream; of a stream that breaks off, the last may be cut */
};

Coding ReadCoding(const ByteSource &source, const Header &header);

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
