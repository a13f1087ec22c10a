// TIFF files, with libtiff.
#include "kscodec/tiff_writer.h"

#include "kscodec/codecs.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstring>
#include <limits>
#include <vector>

#include <tiffio.h>

namespace kscodec {
namespace {

/** The file as libtiff sees it: with a position, and no more to be written after an error. */
struct TargetFile {
  KsTiffTarget target;
  std::uint64_t position = 0;
  std::uint64_t size = 0;
  bool isClosed = false; /**< nothing more is written */
  bool hasFailed = false;

  tmsize_t Write(const void *bytes, tmsize_t count) {
    if (isClosed || !FillGap()) return 0;
    if (!Put(position, bytes, static_cast<std::uint64_t>(count))) return 0;
    position += static_cast<std::uint64_t>(count);
    return count;
  }

 private:
  /** A directory starts at an even place, which may be one byte behind the end. */
  bool FillGap() {
    constexpr std::uint8_t kZero = 0;
    while (size < position) {
      if (!Put(size, &kZero, 1)) return false;
    }
    return true;
  }

  bool Put(std::uint64_t offset, const void *bytes, std::uint64_t count) {
    if (target.write(target.user, offset, bytes, count) != static_cast<std::int64_t>(count)) {
      isClosed = hasFailed = true;
      return false;
    }
    size = std::max(size, offset + count);
    return true;
  }
};

tmsize_t ReadNothing(thandle_t, void *, tmsize_t) {
  return 0;
}

tmsize_t WriteFile(thandle_t file, void *bytes, tmsize_t count) {
  return static_cast<TargetFile *>(file)->Write(bytes, count);
}

toff_t SeekFile(thandle_t file, toff_t offset, int origin) {
  auto &target = *static_cast<TargetFile *>(file);
  if (origin == SEEK_CUR) offset += target.position;
  if (origin == SEEK_END) offset += target.size;
  target.position = offset;
  return offset;
}

int CloseFile(thandle_t) {
  return 0;
}

toff_t SizeOfFile(thandle_t file) {
  return static_cast<TargetFile *>(file)->size;
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

/** Whether places in the file may need more than 32 bits. Compressed samples may be slightly larger than others. */
bool MayExceed32Bits(const KsTiffShape &shape) {
  constexpr std::uint64_t kMost = UINT32_MAX;
  constexpr std::uint64_t kMargin = std::uint64_t{1} << 20;
  constexpr std::uint64_t kBytesPerStrip = 64; /**< its place and size, and the frame of compressed samples */
  const std::uint64_t rowBytes = shape.columns * shape.samples * (shape.bits / 8);
  if (shape.rows > kMost / rowBytes) return true;
  const std::uint64_t bytes = shape.rows * rowBytes;
  const std::uint64_t planes = shape.isSeparate != 0 ? shape.samples : 1;
  const std::uint64_t strips = (shape.rows / shape.rowsPerStrip + 1) * planes;
  const std::uint64_t words = shape.description != nullptr ? std::strlen(shape.description) : 0;
  return bytes + bytes / 256 + strips * kBytesPerStrip + words + kMargin > kMost;
}

/** Sets the tags of a directory, and remembers whether all of them could be set. */
class Directory {
 public:
  explicit Directory(TIFF *directoryOf) : tiff(directoryOf) {}

  template <class... Values>
  void Set(std::uint32_t tag, Values... values) {
    isComplete = isComplete && TIFFSetField(tiff, tag, values...) == 1;
  }

  bool IsComplete() const { return isComplete; }

 private:
  TIFF *tiff;
  bool isComplete = true;
};

/** Differences of neighbours compress better than samples, except those of indices and of complex numbers. */
int PredictorOf(const KsTiffShape &shape) {
  if (shape.colors == KS_TIFF_PALETTE || shape.sampleFormat == KS_TIFF_COMPLEX) return PREDICTOR_NONE;
  if (shape.sampleFormat == KS_TIFF_REAL) return PREDICTOR_FLOATINGPOINT;
  return shape.bits <= 32 ? PREDICTOR_HORIZONTAL : PREDICTOR_NONE;
}

int PhotometricOf(const KsTiffShape &shape) {
  if (shape.colors == KS_TIFF_RGB) return PHOTOMETRIC_RGB;
  return shape.colors == KS_TIFF_PALETTE ? PHOTOMETRIC_PALETTE : PHOTOMETRIC_MINISBLACK;
}

void SetPalette(Directory &directory, const std::uint32_t *colors) {
  constexpr std::size_t kColors = 256;
  constexpr unsigned k16BitsOf8 = 257;
  std::array<std::array<std::uint16_t, kColors>, 3> table{};
  for (std::size_t part = 0; part < table.size(); ++part) {
    for (std::size_t color = 0; color < kColors; ++color) {
      const std::uint32_t value = colors[color] >> (16 - 8 * part) & 0xFF;
      table[part][color] = static_cast<std::uint16_t>(value * k16BitsOf8);
    }
  }
  directory.Set(TIFFTAG_COLORMAP, table[0].data(), table[1].data(), table[2].data());
}

bool SetTags(TIFF *tiff, const KsTiffShape &shape) {
  Directory directory(tiff);
  directory.Set(TIFFTAG_IMAGEWIDTH, static_cast<std::uint32_t>(shape.columns));
  directory.Set(TIFFTAG_IMAGELENGTH, static_cast<std::uint32_t>(shape.rows));
  directory.Set(TIFFTAG_BITSPERSAMPLE, static_cast<int>(shape.bits));
  directory.Set(TIFFTAG_SAMPLESPERPIXEL, static_cast<int>(shape.samples));
  directory.Set(TIFFTAG_SAMPLEFORMAT, static_cast<int>(shape.sampleFormat));
  directory.Set(TIFFTAG_PLANARCONFIG, shape.isSeparate != 0 ? PLANARCONFIG_SEPARATE : PLANARCONFIG_CONTIG);
  directory.Set(TIFFTAG_PHOTOMETRIC, PhotometricOf(shape));
  directory.Set(TIFFTAG_ROWSPERSTRIP, static_cast<std::uint32_t>(std::min(shape.rowsPerStrip, shape.rows)));
  if (shape.colors == KS_TIFF_PALETTE) SetPalette(directory, shape.colorTable);
  const std::uint32_t shown = shape.colors == KS_TIFF_RGB ? 3 : 1;
  if (shape.samples > shown) {
    const std::vector<std::uint16_t> extra(shape.samples - shown, std::uint16_t{EXTRASAMPLE_UNSPECIFIED});
    directory.Set(TIFFTAG_EXTRASAMPLES, static_cast<int>(extra.size()), extra.data());
  }
  if (shape.description != nullptr) directory.Set(TIFFTAG_IMAGEDESCRIPTION, shape.description);
  const bool isCompressed = shape.compression == KS_TIFF_DEFLATE;
  directory.Set(TIFFTAG_COMPRESSION, isCompressed ? COMPRESSION_ADOBE_DEFLATE : COMPRESSION_NONE);
  if (isCompressed) directory.Set(TIFFTAG_PREDICTOR, PredictorOf(shape));
  return directory.IsComplete();
}

class LibtiffWriter : public TiffWriter {
 public:
  explicit LibtiffWriter(const KsTiffTarget &target) : file{target} {}
  /** What libtiff would still write makes no file complete. */
  ~LibtiffWriter() override { file.isClosed = true; }

  Status Open(const KsTiffShape &shape) {
    const bool canCompress = TIFFIsCODECConfigured(COMPRESSION_ADOBE_DEFLATE) != 0;
    if (shape.compression == KS_TIFF_DEFLATE && !canCompress) return ERROR_NOT_SUPPORTED;
    const std::unique_ptr<TIFFOpenOptions, FreeOptions> options(TIFFOpenOptionsAlloc());
    if (!options) return ERROR_NO_MEMORY;
    TIFFOpenOptionsSetErrorHandlerExtR(options.get(), Silent, nullptr);
    TIFFOpenOptionsSetWarningHandlerExtR(options.get(), Silent, nullptr);
    const char *const mode = MayExceed32Bits(shape) ? "w8" : "w";
    tiff.reset(TIFFClientOpenExt("file", mode, &file, ReadNothing, WriteFile, SeekFile, CloseFile, SizeOfFile, nullptr,
                                 nullptr, options.get()));
    return StatusOf(tiff != nullptr && SetTags(tiff.get(), shape));
  }

  Status WriteStrip(std::uint32_t strip, const void *samples, std::uint64_t bytes) override {
    // The samples stay as they are; the library's declaration is older than const.
    void *const from = const_cast<void *>(samples);  // NOLINT(cppcoreguidelines-pro-type-const-cast)
    const auto count = static_cast<tmsize_t>(bytes);
    return StatusOf(TIFFWriteEncodedStrip(tiff.get(), strip, from, count) == count);
  }

  Status Finish() override { return StatusOf(TIFFWriteDirectory(tiff.get()) == 1 && !file.hasFailed); }

 private:
  /** libtiff fails for want of memory, or because the file does. */
  Status StatusOf(bool isDone) const {
    if (isDone) return SUCCESS;
    return file.hasFailed ? ERROR_FILE_WRITE : ERROR_NO_MEMORY;
  }

  TargetFile file;
  std::unique_ptr<TIFF, CloseTiff> tiff; /* is closed before the file is gone */
};

}  // namespace

Status StartTiff(const KsTiffTarget &target, const KsTiffShape &shape, std::unique_ptr<TiffWriter> *writer) {
  auto opened = std::make_unique<LibtiffWriter>(target);
  const Status status = opened->Open(shape);
  if (status == SUCCESS) *writer = std::move(opened);
  return status;
}

}  // namespace kscodec
