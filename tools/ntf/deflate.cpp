#include "deflate.h"

#include <iterator>
#include <memory>
#include <new>
#include <utility>

#ifdef NTF_WITH_ISAL
#include <isa-l.h>
#endif
#include <zlib.h>

namespace ntf {
namespace {

/** Room in the output for one call of a compressor. */
constexpr std::size_t kRoom = 256 * 1024;

/** Appends the output of `fill` to the part; it receives a place and its size, and returns the size that is left. */
template <class Fill>
void Append(DeflatedPart &part, const Fill &fill) {
  if (part.room.size() - part.size < kRoom) part.room.resize(part.size + kRoom);
  part.size = part.room.size() - fill(part.room.data() + part.size, part.room.size() - part.size);
}

#ifdef NTF_WITH_ISAL

/** The window for repetitions, as a power of 2; runs of a byte or a pixel need only a small one. */
enum Search : std::uint16_t { kFar = 15, kNear = 2 };

/** Several times as fast as the fastest level of zlib, for files of the same size. */
void DeflateFast(std::span<const std::uint8_t> bytes, Search search, bool isLast, DeflatedPart &part) {
  const auto stream = std::make_unique<isal_zstream>();
  std::vector<std::uint8_t> working(ISAL_DEF_LVL1_DEFAULT);
  isal_deflate_init(stream.get());
  stream->level = 1;
  stream->hist_bits = search;
  stream->level_buf = working.data();
  stream->level_buf_size = static_cast<std::uint32_t>(working.size());
  stream->flush = FULL_FLUSH;
  stream->end_of_stream = isLast ? 1 : 0;
  stream->next_in = const_cast<std::uint8_t *>(bytes.data());  // NOLINT: the library only reads there
  stream->avail_in = static_cast<std::uint32_t>(bytes.size());
  do {
    Append(part, [&](std::uint8_t *to, std::size_t room) {
      stream->next_out = to;
      stream->avail_out = static_cast<std::uint32_t>(room);
      isal_deflate(stream.get());
      return stream->avail_out;
    });
  } while (stream->avail_out == 0);
}

/**
 * Drawings and texts repeat themselves far back. Photographs don't: there a search takes more than half of the time,
 * and finds short accidents that cost more than they save. A sample distinguishes them.
 */
Search BestSearch(std::span<const std::uint8_t> bytes, DeflatedPart &part) {
  constexpr std::size_t kSample = 32 * 1024;
  if (bytes.size() < 2 * kSample) return kFar;
  const auto sample = bytes.subspan((bytes.size() - kSample) / 2, kSample);
  DeflateFast(sample, kNear, false, part);
  const std::size_t near = std::exchange(part.size, 0);
  DeflateFast(sample, kFar, false, part);
  const std::size_t far = std::exchange(part.size, 0);
  const bool searchPays = far + far / 32 < near;
  return searchPays ? kFar : kNear;
}

void DeflateFast(std::span<const std::uint8_t> bytes, bool isLast, DeflatedPart &part) {
  DeflateFast(bytes, BestSearch(bytes, part), isLast, part);
}

std::uint32_t CheckSumOf(std::span<const std::uint8_t> bytes) {
  return isal_adler32(kCheckSumOfNothing, bytes.data(), bytes.size());
}

constexpr bool kHasFastDeflate = true;

#else

void DeflateFast(std::span<const std::uint8_t>, bool, DeflatedPart &) {}

std::uint32_t CheckSumOf(std::span<const std::uint8_t> bytes) {
  return static_cast<std::uint32_t>(adler32_z(kCheckSumOfNothing, bytes.data(), bytes.size()));
}

constexpr bool kHasFastDeflate = false;

#endif

void DeflateWithZlib(std::span<const std::uint8_t> bytes, CompressionLevel level, bool isLast, DeflatedPart &part) {
  z_stream stream = {};
  if (deflateInit2(&stream, level, Z_DEFLATED, -MAX_WBITS, MAX_MEM_LEVEL, Z_DEFAULT_STRATEGY) != Z_OK) {
    throw std::bad_alloc();
  }
  const std::unique_ptr<z_stream, int (*)(z_stream *)> owner(&stream, deflateEnd);
  stream.next_in = const_cast<std::uint8_t *>(bytes.data());  // NOLINT: the library only reads there
  stream.avail_in = static_cast<uInt>(bytes.size());
  do {
    Append(part, [&](std::uint8_t *to, std::size_t room) {
      stream.next_out = to;
      stream.avail_out = static_cast<uInt>(room);
      deflate(&stream, isLast ? Z_FINISH : Z_FULL_FLUSH);
      return stream.avail_out;
    });
  } while (stream.avail_out == 0);
}

}  // namespace

void DeflatePart(std::span<const std::uint8_t> bytes, CompressionLevel level, bool isLast, DeflatedPart &part) {
  part.size = 0;
  part.length = bytes.size();
  part.checkSum = CheckSumOf(bytes);
  if (level == kFastest && kHasFastDeflate) {
    DeflateFast(bytes, isLast, part);
  } else {
    DeflateWithZlib(bytes, level, isLast, part);
  }
}

void ZlibStream::Add(DeflatedPart &part) {
  constexpr std::uint8_t kDeflateWith32KiB[] = {0x78, 0x01};
  if (!begun) {
    part.room.insert(part.room.begin(), std::begin(kDeflateWith32KiB), std::end(kDeflateWith32KiB));
    part.size += std::size(kDeflateWith32KiB);
  }
  begun = true;
  checkSum = static_cast<std::uint32_t>(adler32_combine(checkSum, part.checkSum, static_cast<z_off_t>(part.length)));
}

std::array<std::uint8_t, 4> ZlibStream::Trailer() const {
  return {static_cast<std::uint8_t>(checkSum >> 24), static_cast<std::uint8_t>(checkSum >> 16),
          static_cast<std::uint8_t>(checkSum >> 8), static_cast<std::uint8_t>(checkSum)};
}

}  // namespace ntf
