// Compression of a part of a stream by itself, so that several parts can be compressed at once.
#pragma once

#include <array>
#include <cstdint>
#include <span>
#include <vector>

namespace ntf {

/** How much of its time a picture may spend on being small: 0 stores it, 9 is the smallest. */
using CompressionLevel = int;
constexpr CompressionLevel kStored = 0;
constexpr CompressionLevel kFastest = 1;
constexpr CompressionLevel kSmallest = 9;

/** Where the check sum of a zlib stream starts (RFC 1950, section 2.2). */
constexpr std::uint32_t kCheckSumOfNothing = 1;

/** A part of a stream, compressed. */
struct DeflatedPart {
  std::vector<std::uint8_t> room; /* the part at the front, and memory behind it that the next one may need */
  std::size_t size = 0;           /* bytes of the part */
  std::uint32_t checkSum = 0;     /* of what was compressed */
  std::uint64_t length = 0;       /* likewise */

  std::span<const std::uint8_t> Bytes() const { return std::span(room).first(size); }
};

/**
 * Compresses a part into `part`, whose memory it uses again. The parts of a stream are put one behind the other; the
 * last one ends it.
 */
void DeflatePart(std::span<const std::uint8_t> bytes, CompressionLevel level, bool isLast, DeflatedPart &part);

/** What makes parts a zlib stream (RFC 1950): two bytes in front of the first one, and the check sum of all behind. */
class ZlibStream {
 public:
  /** Takes the next part; the first one gets the two bytes. */
  void Add(DeflatedPart &part);
  /** What stands behind the last part. */
  std::array<std::uint8_t, 4> Trailer() const;

 private:
  bool begun = false;
  std::uint32_t checkSum = kCheckSumOfNothing;
};

}  // namespace ntf
