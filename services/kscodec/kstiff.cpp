// The exports for TIFF files: whether a shape and a strip are possible.
#include "kstiff.h"

#include "kscodec/codecs.h"
#include "kscodec/tiff_writer.h"

#include <algorithm>
#include <memory>
#include <new>

/** A file with the figures that strips are checked against. */
struct KsTiff {
  std::unique_ptr<kscodec::TiffWriter> writer;
  std::uint64_t rows = 0;
  std::uint64_t rowsPerStrip = 0;
  std::uint64_t rowBytes = 0; /**< of a row of a strip */
  std::uint32_t planes = 0;
  std::uint64_t stripsPerPlane = 0;
  bool isFinished = false;
};

namespace {

constexpr std::uint64_t kLongestSide = UINT32_MAX;
constexpr std::uint64_t kMostStrips = INT32_MAX; /**< far more than there is memory for their places */
constexpr std::uint64_t kMostStripBytes = std::uint64_t{1} << 40;

bool IsSampleType(std::uint32_t format, std::uint32_t bits) {
  if (format == KS_TIFF_COMPLEX) return bits == 64 || bits == 128;
  if (format == KS_TIFF_REAL) return bits == 32 || bits == 64;
  const bool isInteger = format == KS_TIFF_UNSIGNED || format == KS_TIFF_SIGNED;
  return isInteger && (bits == 8 || bits == 16 || bits == 32 || bits == 64);
}

bool AreColorsPossible(const KsTiffShape &shape) {
  switch (shape.colors) {
    case KS_TIFF_GRAY:
      return true;
    case KS_TIFF_RGB:
      return shape.samples >= 3;
    case KS_TIFF_PALETTE:
      return shape.samples == 1 && shape.bits == 8 && shape.sampleFormat == KS_TIFF_UNSIGNED &&
             shape.colorTable != nullptr;
    default:
      return false;
  }
}

bool IsPossible(const KsTiffShape &shape) {
  const bool hasPixels = shape.rows != 0 && shape.rows <= kLongestSide && shape.columns != 0 &&
                         shape.columns <= kLongestSide && shape.rowsPerStrip != 0;
  const bool hasSamples =
      shape.samples != 0 && shape.samples <= UINT16_MAX && IsSampleType(shape.sampleFormat, shape.bits);
  return hasPixels && hasSamples && AreColorsPossible(shape) && shape.compression <= KS_TIFF_DEFLATE;
}

Status Open(const KsTiffTarget &target, const KsTiffShape &shape, KsTiff **file) {
  if (!IsPossible(shape)) return ERROR_INVALID_VALUE;
  if (kscodec::kLibraries.startTiff == nullptr) return ERROR_NOT_SUPPORTED;
  auto opened = std::make_unique<KsTiff>();
  opened->rows = shape.rows;
  opened->rowsPerStrip = std::min(shape.rowsPerStrip, shape.rows);
  opened->planes = shape.isSeparate != 0 ? shape.samples : 1;
  opened->rowBytes = shape.columns * (shape.bits / 8) * (shape.samples / opened->planes);
  opened->stripsPerPlane = (shape.rows + opened->rowsPerStrip - 1) / opened->rowsPerStrip;
  if (opened->stripsPerPlane > kMostStrips / opened->planes) return ERROR_INVALID_VALUE;
  if (opened->rowsPerStrip > kMostStripBytes / opened->rowBytes) return ERROR_INVALID_VALUE;
  const Status status = kscodec::kLibraries.startTiff(target, shape, &opened->writer);
  if (status == SUCCESS) *file = opened.release();
  return status;
}

/** Nothing may be thrown out of an export. */
template <class Work>
int32_t WithoutExceptions(const Work &work) {
  try {
    return Status(work()).Code();
  } catch (const std::bad_alloc &) {
    return ERROR_NO_MEMORY;
  }
}

}  // namespace

int32_t KsTiffOpen(const KsTiffTarget *target, const KsTiffShape *shape, KsTiff **file) {
  if (file == nullptr) return ERROR_INVALID_VALUE;
  *file = nullptr;
  if (target == nullptr || target->write == nullptr || shape == nullptr) return ERROR_INVALID_VALUE;
  return WithoutExceptions([&] { return Open(*target, *shape, file); });
}

int32_t KsTiffWriteStrip(KsTiff *file, uint32_t plane, uint64_t strip, const void *samples) {
  if (file == nullptr || samples == nullptr || file->isFinished) return ERROR_INVALID_VALUE;
  if (plane >= file->planes || strip >= file->stripsPerPlane) return ERROR_INVALID_VALUE;
  const std::uint64_t rows = std::min(file->rowsPerStrip, file->rows - strip * file->rowsPerStrip);
  const auto number = static_cast<std::uint32_t>(plane * file->stripsPerPlane + strip);
  return WithoutExceptions([&] { return file->writer->WriteStrip(number, samples, rows * file->rowBytes); });
}

int32_t KsTiffFinish(KsTiff *file) {
  if (file == nullptr || file->isFinished) return ERROR_INVALID_VALUE;
  file->isFinished = true;
  return WithoutExceptions([&] { return file->writer->Finish(); });
}

void KsTiffClose(KsTiff *file) {
  const std::unique_ptr<KsTiff> closed(file);
}
