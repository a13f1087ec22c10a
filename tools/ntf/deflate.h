// Compressing parts of a stream independently, so that several can be compressed at once.
#pragma once

#include <array>
#include <cstdint>
#include <span>
#include <vector>

namespace ntf {

/** 0 none, 1 fastest, 9 smallest. */
using CompressionLevel = int;
constexpr CompressionLevel kStored = 0;
constexpr CompressionLevel kFastest = 1;
constexpr CompressionLevel kSmallest = 9;

/** The initial checksum of a zlib stream (RFC 1950, section 2.2). */
constexpr std::uint32_t kCheckSumOfNothing = 1;

/** A part of a stream, compressed. */
struct DeflatedPart {
  std::vector<std::uint8_t> room; /* the part, followed by spare memory for the next one */
  std::size_t size = 0;           /* bytes of the part */
  std::uint32_t checkSum = 0;     /* of the uncompressed bytes */
  std::uint64_t length = 0;       /* number of uncompressed bytes */

  std::span<const std::uint8_t> Bytes() const { return std::span(room).first(size); }
};

/**
 * Compresses a part of a stream into `part`, whose memory is reused. A stream is the concatenation of its parts; the
 * last part ends it.
 */
void DeflatePart(std::span<const std::uint8_t> bytes, CompressionLevel level, bool isLast, DeflatedPart &part);

/** Makes a zlib stream (RFC 1950) of parts: two bytes before the first one, and the checksum of all after the last. */
class ZlibStream {
 public:
  /** Adds the next part; the first one gets the two bytes. */
  void Add(DeflatedPart &part);
  /** The bytes after the last part. */
  std::array<std::uint8_t, 4> Trailer() const;

 private:
  bool begun = false;
  std::uint32_t checkSum = kCheckSumOfNothing;
};

}  // namespace ntf
