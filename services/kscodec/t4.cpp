// Bi-level streams of ITU-T T.4, one- and two-dimensional (MIL-STD-188-196 in NITF), with libtiff.
#include "internal/ksclasses_.h"
#include "kscodec/codecs.h"
#include "kscore/bitmap.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <memory>

#include <tiffio.h>

namespace kscodec {
namespace {

/**
 * The start of a TIFF file in memory, whose one strip is the stream. Its directory holds the decoder's parameters.
 */
class Directory {
 public:
  Directory(const KsRawFormatInfo &info, Stream stream, std::uint16_t fillOrder) {
    Put16(0x4949);  // "II": numbers are little-endian
    Put16(42);
    Put32(8);
    Put16(kEntries);
    PutEntry(TIFFTAG_IMAGEWIDTH, info.width);
    PutEntry(TIFFTAG_IMAGELENGTH, info.height);
    PutEntry(TIFFTAG_BITSPERSAMPLE, 1);
    PutEntry(TIFFTAG_COMPRESSION, COMPRESSION_CCITTFAX3);
    PutEntry(TIFFTAG_PHOTOMETRIC, PHOTOMETRIC_MINISWHITE);
    PutEntry(TIFFTAG_FILLORDER, fillOrder);
    PutEntry(TIFFTAG_STRIPOFFSETS, kBytes);
    PutEntry(TIFFTAG_ROWSPERSTRIP, info.height);
    PutEntry(TIFFTAG_STRIPBYTECOUNTS, static_cast<std::uint32_t>(stream.size()));
    PutEntry(TIFFTAG_GROUP3OPTIONS, info.format == KS_FORMAT_T4_2D ? GROUP3OPT_2DENCODING : 0);
    Put32(0);  // no further directory
  }

  static constexpr std::uint16_t kEntries = 10;
  static constexpr std::uint32_t kBytes = 8 + 2 + 12 * kEntries + 4;

  const std::array<std::uint8_t, kBytes> &Bytes() const { return bytes; }

 private:
  void Put16(std::uint32_t value) {
    bytes[used++] = static_cast<std::uint8_t>(value);
    bytes[used++] = static_cast<std::uint8_t>(value >> 8);
  }
  void Put32(std::uint32_t value) {
    Put16(value & 0xFFFF);
    Put16(value >> 16);
  }
  /** An entry of one 32-bit number. */
  void PutEntry(std::uint32_t tag, std::uint32_t value) {
    Put16(tag);
    Put16(TIFF_LONG);
    Put32(1);
    Put32(value);
  }

  std::array<std::uint8_t, kBytes> bytes{};
  std::size_t used = 0;
};

/** Directory and stream, one after the other, as a file. */
struct MemoryFile {
  const Directory &directory;
  Stream stream;
  std::uint64_t position = 0;

  std::uint64_t Size() const { return Directory::kBytes + stream.size(); }

  tmsize_t Read(void *buffer, tmsize_t bytes) {
    const std::uint64_t count =
        std::min<std::uint64_t>(static_cast<std::uint64_t>(bytes), Size() - std::min(Size(), position));
    auto *to = static_cast<std::uint8_t *>(buffer);
    for (std::uint64_t done = 0; done < count;) {
      const bool inDirectory = position < Directory::kBytes;
      const std::uint8_t *from =
          inDirectory ? directory.Bytes().data() + position : stream.data() + (position - Directory::kBytes);
      const std::uint64_t run = inDirectory ? std::min(count - done, Directory::kBytes - position) : count - done;
      std::memcpy(to + done, from, run);
      done += run;
      position += run;
    }
    return static_cast<tmsize_t>(count);
  }
};

tmsize_t ReadFile(thandle_t file, void *buffer, tmsize_t bytes) {
  return static_cast<MemoryFile *>(file)->Read(buffer, bytes);
}

tmsize_t WriteNothing(thandle_t, void *, tmsize_t) {
  return 0;
}

toff_t SeekFile(thandle_t file, toff_t offset, int origin) {
  auto &memory = *static_cast<MemoryFile *>(file);
  if (origin == SEEK_CUR) offset += memory.position;
  if (origin == SEEK_END) offset += memory.Size();
  memory.position = offset;
  return offset;
}

int CloseFile(thandle_t) {
  return 0;
}

toff_t SizeOfFile(thandle_t file) {
  return static_cast<MemoryFile *>(file)->Size();
}

int Silent(TIFF *, void *, const char *, const char *, va_list) {
  return 1;
}

struct CloseTiff {
  void operator()(TIFF *tiff) const { TIFFClose(tiff); }
};

struct FreeOptions {
  void operator()(TIFFOpenOptions *options) const { TIFFOpenOptionsFree(options); }
};

using OpenTiff = std::unique_ptr<TIFF, CloseTiff>;

OpenTiff Open(MemoryFile *file) {
  const std::unique_ptr<TIFFOpenOptions, FreeOptions> options(TIFFOpenOptionsAlloc());
  if (!options) return nullptr;
  TIFFOpenOptionsSetErrorHandlerExtR(options.get(), Silent, nullptr);
  TIFFOpenOptionsSetWarningHandlerExtR(options.get(), Silent, nullptr);
  // "m": the file has no memory map of its own.
  return OpenTiff(TIFFClientOpenExt("stream", "rm", file, ReadFile, WriteNothing, SeekFile, CloseFile, SizeOfFile,
                                    nullptr, nullptr, options.get()));
}

/** Zeros before the first one, in the bit order of `fillOrder`, among the first four bytes. */
unsigned LeadingZeros(Stream stream, std::uint16_t fillOrder) {
  constexpr std::size_t kBytesLookedAt = 4;
  unsigned zeros = 0;
  for (const std::uint8_t byte : stream.first(std::min(stream.size(), kBytesLookedAt))) {
    for (unsigned bit = 0; bit < 8; ++bit, ++zeros) {
      const unsigned mask = fillOrder == FILLORDER_MSB2LSB ? 0x80U >> bit : 1U << bit;
      if ((byte & mask) != 0) return zeros;
    }
  }
  return zeros;
}

/**
 * The order of bits in a byte. The format puts the top one first; a stream that begins with an end-of-line code (eleven
 * zeros and a one) only in the opposite order is read in that order.
 */
std::uint16_t FillOrderOf(Stream stream) {
  constexpr unsigned kZerosOfEndOfLine = 11;
  const bool topFirst = LeadingZeros(stream, FILLORDER_MSB2LSB) >= kZerosOfEndOfLine;
  const bool lowFirst = LeadingZeros(stream, FILLORDER_LSB2MSB) >= kZerosOfEndOfLine;
  return !topFirst && lowFirst ? FILLORDER_LSB2MSB : FILLORDER_MSB2LSB;
}

/**
 * Whether a stream is long enough for the picture that it claims: a picture of more than 64 MiB has no more than 16384
 * pixels for each byte. The longest code, of 12 bits, stands for 2560 pixels; one row in four at least is made of such
 * codes, and the rows between them may be coded in a few bits each.
 */
bool IsPlausible(Stream stream, const KsBitmap &target) {
  constexpr std::uint64_t kPixelsOfNone = std::uint64_t{64} << 23;
  constexpr std::uint64_t kPixelsOfAByte = 16384;
  const std::uint64_t pixels = std::uint64_t{target.width} * target.height;
  return pixels <= kPixelsOfNone || pixels / kPixelsOfAByte <= stream.size();
}

/** The decoder has black as 1; the pad bits of the last byte stay 0. */
void PutInverse(const std::uint8_t *decoded, std::uint32_t width, std::uint8_t *row) {
  const std::uint32_t bytes = (width + 7) / 8;
  std::uint32_t at = 0;
  for (std::uint64_t eight = 0; at + sizeof eight <= bytes; at += sizeof eight) {
    std::memcpy(&eight, decoded + at, sizeof eight);
    eight = ~eight;
    std::memcpy(row + at, &eight, sizeof eight);
  }
  for (; at < bytes; ++at) row[at] = static_cast<std::uint8_t>(~decoded[at]);
  if (width % 8 != 0) row[bytes - 1] = static_cast<std::uint8_t>(row[bytes - 1] & (0xFF00U >> (width % 8)));
}

Status DecodeRows(TIFF *tiff, KsBitmap *target) {
  const auto bytes = static_cast<std::size_t>(TIFFScanlineSize(tiff));
  KsArray<std::uint8_t> decoded;
  if (bytes < (target->width + std::size_t{7}) / 8) return ERROR_FILE_FORMAT;
  if (!decoded.Allocate(bytes)) return ERROR_NO_MEMORY;
  std::uint32_t row = 0;
  while (row < target->height && TIFFReadScanline(tiff, decoded.Get(), row, 0) == 1) {
    PutInverse(decoded.Get(), target->width, kscore::RowOf(*target, row));
    ++row;
  }
  if (row == 0) return ERROR_FILE_FORMAT;
  std::fill_n(decoded.Get(), bytes, std::uint8_t{0});
  for (; row < target->height; ++row) PutInverse(decoded.Get(), target->width, kscore::RowOf(*target, row));
  return SUCCESS;
}

}  // namespace

Status LoadT4(Stream stream, const KsRawFormatInfo &info, KsBitmap *target) {
  const bool known = info.format == KS_FORMAT_T4_1D || info.format == KS_FORMAT_T4_2D;
  if (!known || target->bitsPerPixel != 1) return ERROR_NOT_SUPPORTED;
  const Status status = KsBitmapAccess(target, 0);
  if (status != SUCCESS) return status;
  KsBitmapRelease(target, 1, 1);
  if (info.width != target->width || info.height != target->height) return ERROR_INVALID_VALUE;
  if (stream.size() > UINT32_MAX - Directory::kBytes) return ERROR_NOT_SUPPORTED;
  if (!IsPlausible(stream, *target)) return ERROR_FILE_FORMAT;
  const Directory directory(info, stream, FillOrderOf(stream));
  MemoryFile file{directory, stream};
  const OpenTiff tiff = Open(&file);
  return tiff ? DecodeRows(tiff.get(), target) : ERROR_FILE_FORMAT;
}

}  // namespace kscodec
