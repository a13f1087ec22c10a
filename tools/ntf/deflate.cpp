#include "deflate.h"

#include <iterator>
#include <memory>
#include <new>

#ifdef NTF_WITH_ISAL
#include <isa-l.h>
#endif
#include <zlib.h>

namespace ntf {
namespace {

/** Room in the output for one call of a compressor. */
constexpr std::size_t kRoom = 256 * 1024;

/** Grows `bytes` by what `fill` puts behind them; it is told the room, and tells what it left of that. */
template <class Fill>
void Append(std::vector<std::uint8_t> &bytes, const Fill &fill) {
  const std::size_t before = bytes.size();
  bytes.resize(before + kRoom);
  const std::size_t left = fill(bytes.data() + before, kRoom);
  bytes.resize(before + kRoom - left);
}

#ifdef NTF_WITH_ISAL

/** Some times faster than the fastest level of zlib, for files of the same size. */
void DeflateFast(std::span<const std::uint8_t> bytes, bool isLast, std::vector<std::uint8_t> &out) {
  const auto stream = std::make_unique<isal_zstream>();
  std::vector<std::uint8_t> working(ISAL_DEF_LVL1_DEFAULT);
  isal_deflate_init(stream.get());
  stream->level = 1;
  stream->level_buf = working.data();
  stream->level_buf_size = static_cast<std::uint32_t>(working.size());
  stream->flush = FULL_FLUSH;
  stream->end_of_stream = isLast ? 1 : 0;
  stream->next_in = const_cast<std::uint8_t *>(bytes.data());  // NOLINT: the library only reads there
  stream->avail_in = static_cast<std::uint32_t>(bytes.size());
  do {
    Append(out, [&](std::uint8_t *to, std::size_t room) {
      stream->next_out = to;
      stream->avail_out = static_cast<std::uint32_t>(room);
      isal_deflate(stream.get());
      return stream->avail_out;
    });
  } while (stream->avail_out == 0);
}

constexpr bool kHasFastDeflate = true;

#else

void DeflateFast(std::span<const std::uint8_t>, bool, std::vector<std::uint8_t> &) {}

constexpr bool kHasFastDeflate = false;

#endif

void DeflateWithZlib(std::span<const std::uint8_t> bytes, CompressionLevel level, bool isLast,
                     std::vector<std::uint8_t> &out) {
  z_stream stream = {};
  if (deflateInit2(&stream, level, Z_DEFLATED, -MAX_WBITS, MAX_MEM_LEVEL, Z_DEFAULT_STRATEGY) != Z_OK) {
    throw std::bad_alloc();
  }
  const std::unique_ptr<z_stream, int (*)(z_stream *)> owner(&stream, deflateEnd);
  stream.next_in = const_cast<std::uint8_t *>(bytes.data());  // NOLINT: the library only reads there
  stream.avail_in = static_cast<uInt>(bytes.size());
  do {
    Append(out, [&](std::uint8_t *to, std::size_t room) {
      stream.next_out = to;
      stream.avail_out = static_cast<uInt>(room);
      deflate(&stream, isLast ? Z_FINISH : Z_FULL_FLUSH);
      return stream.avail_out;
    });
  } while (stream.avail_out == 0);
}

}  // namespace

DeflatedPart DeflatePart(std::span<const std::uint8_t> bytes, CompressionLevel level, bool isLast) {
  DeflatedPart part;
  part.length = bytes.size();
  part.checkSum = static_cast<std::uint32_t>(adler32_z(adler32_z(0, nullptr, 0), bytes.data(), bytes.size()));
  part.bytes.reserve(bytes.size() / 2 + kRoom);
  if (level == kFastest && kHasFastDeflate) {
    DeflateFast(bytes, isLast, part.bytes);
  } else {
    DeflateWithZlib(bytes, level, isLast, part.bytes);
  }
  return part;
}

void ZlibStream::Add(DeflatedPart &part) {
  constexpr std::uint8_t kDeflateWith32KiB[] = {0x78, 0x01};
  if (!begun) part.bytes.insert(part.bytes.begin(), std::begin(kDeflateWith32KiB), std::end(kDeflateWith32KiB));
  begun = true;
  checkSum = static_cast<std::uint32_t>(adler32_combine(checkSum, part.checkSum, static_cast<z_off_t>(part.length)));
}

std::array<std::uint8_t, 4> ZlibStream::Trailer() const {
  return {static_cast<std::uint8_t>(checkSum >> 24), static_cast<std::uint8_t>(checkSum >> 16),
          static_cast<std::uint8_t>(checkSum >> 8), static_cast<std::uint8_t>(checkSum)};
}

}  // namespace ntf
