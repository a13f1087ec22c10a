#include "images/plain_samples.h"

#include "headers/mask_table.h"
#include "images/block_grid.h"
#include "images/block_starts.h"
#include "images/sample_unpack.h"

#include <algorithm>
#include <new>

namespace ksntfx {

namespace {

/** The type that samples have in memory; false for sizes that PVTYPE doesn't allow. */
bool FindType(const ImageSubheader &image, SampleType *type) {
  const std::uint32_t bits = image.bitsPerPixel;
  switch (image.pixelValueType) {
    case kReal:
      *type = bits == 32 ? SampleType::Float32 : SampleType::Float64;
      return bits == 32 || bits == 64;
    case kComplex:
      *type = SampleType::Complex64;
      return bits == 64;
    default:
      *type = IntegerType(bits, image.pixelValueType == kSigned);
      return bits >= 1 && bits <= 64;
  }
}

/** How far apart things lie in a block, in bits. */
struct BitSteps {
  std::uint64_t column;
  std::uint64_t row;
  std::uint64_t band;
};

class PlainSamples final : public SampleReader {
 public:
  explicit PlainSamples(const ImageData &source)
      : data(source), image(*source.image), grid(image), mask(image, source.length) {}

  Status Open() override {
    SampleType type{};
    if (!FindType(image, &type)) return ERROR_NOT_SUPPORTED;
    if (grid.width == 0 || grid.height == 0 || image.bandCount == 0) return ERROR_FILE_FORMAT;
    shape = {image.rows, image.columns, image.bandCount, type, image.bitsPerPixel, grid.width, grid.height};
    if (grid.across < shape.Across() || grid.down < shape.Down()) return ERROR_FILE_FORMAT;
    unpack = ChooseUnpacking(image.bitsPerPixel, type);
    steps = StepsOf();
    return SUCCESS;
  }

  Status Read(const BlockPart &part, std::span<const std::uint32_t> bands, const SampleTarget &target,
              bool *recorded) override {
    *recorded = false;
    if (image.mode == kBandSequential) return ReadFromPlanes(part, bands, target, recorded);
    std::uint64_t start = 0;
    if (!FindStart(part.block, BlockBits(image.bandCount), &start)) return SUCCESS;
    *recorded = true;
    if (image.mode == kBlockInterleaved) return ReadFromBands(part, bands, target, start);
    return IsWholePixels(bands, target) ? ReadWholePixels(part, target, start)
                                        : ReadInterleaved(part, bands, target, start);
  }

 private:
  BitSteps StepsOf() const {
    const std::uint64_t bits = image.bitsPerPixel;
    const std::uint64_t row = bits * grid.width;
    switch (image.mode) {
      case kPixelInterleaved:
        return {bits * image.bandCount, row * image.bandCount, bits};
      case kRowInterleaved:
        return {bits, row * image.bandCount, row};
      case kBandSequential:
        return {bits, row, 0};
      default:
        return {bits, row, row * grid.height};
    }
  }

  /** Bits of so many bands of a block; its last byte may have some more. */
  std::uint64_t BlockBits(std::uint32_t bands) const {
    return std::uint64_t{image.bitsPerPixel} * grid.width * grid.height * bands;
  }

  /** Where an entry of the mask table says that a block begins, or its place in the order of all; false if absent. */
  bool FindStart(std::uint64_t entry, std::uint64_t blockBits, std::uint64_t *start) const {
    *start = entry * ((blockBits + 7) / 8);
    if (!mask.HasBlockMask()) return true;
    const std::uint32_t word = mask.BlockWord(entry);
    *start = word;
    return word != kNotRecorded;
  }

  /** In mode S each band is a plane of all blocks, and the mask has an entry for each block of each plane. */
  Status ReadFromPlanes(const BlockPart &part, std::span<const std::uint32_t> bands, const SampleTarget &target,
                        bool *recorded) {
    for (std::size_t at = 0; at < bands.size(); ++at) {
      std::uint64_t start = 0;
      if (!FindStart(bands[at] * grid.count + part.block, BlockBits(1), &start)) continue;
      *recorded = true;
      const Status status = ReadRows(part, start * 8, target, at);
      if (status != SUCCESS) return status;
    }
    return SUCCESS;
  }

  Status ReadFromBands(const BlockPart &part, std::span<const std::uint32_t> bands, const SampleTarget &target,
                       std::uint64_t start) {
    for (std::size_t at = 0; at < bands.size(); ++at) {
      const Status status = ReadRows(part, start * 8 + bands[at] * steps.band, target, at);
      if (status != SUCCESS) return status;
    }
    return SUCCESS;
  }

  /** Rows of one band, all of whose samples lie side by side. `from` is the bit of the band's first sample. */
  Status ReadRows(const BlockPart &part, std::uint64_t from, const SampleTarget &target, std::size_t band) {
    const std::uint64_t columnBits = part.columns * steps.column;
    from += part.firstRow * steps.row + part.firstColumn * steps.column;
    const bool inPlace = CanReadInPlace(target);
    // Whole rows follow each other, and are read in runs.
    const bool wholeRows = part.columns == grid.width;
    const std::uint32_t run = wholeRows ? RowsPerRun(columnBits) : 1;
    for (std::uint32_t row = 0; row < part.rows; row += run, from += run * steps.row) {
      const std::uint32_t rows = std::min(run, part.rows - row);
      std::uint8_t *const to = target.Row(band, row);
      const bool follow = rows == 1 || target.rowStep == static_cast<std::int64_t>(part.columns);
      Status status = SUCCESS;
      if (inPlace && follow) {
        status = data.Read(from / 8, to, std::uint64_t{rows} * part.columns);
      } else {
        const std::uint8_t *bytes = nullptr;
        status = Fetch(from, columnBits * rows, &bytes);
        for (std::uint32_t at = 0; at < rows && status == SUCCESS; ++at) {
          unpack({bytes, from % 8 + at * columnBits, steps.column, part.columns, image.bitsPerPixel},
                 to + at * target.rowStep, target.columnStep);
        }
      }
      if (status != SUCCESS) return status;
    }
    return SUCCESS;
  }

  /** Samples of all bands lie between each other, so they are read together and then told apart. */
  Status ReadInterleaved(const BlockPart &part, std::span<const std::uint32_t> bands, const SampleTarget &target,
                         std::uint64_t start) {
    const bool byPixel = image.mode == kPixelInterleaved;
    const auto [first, last] = std::minmax_element(bands.begin(), bands.end());
    const std::uint64_t skipped = part.firstColumn * steps.column + *first * steps.band;
    const std::uint64_t rowBits =
        (part.columns - std::uint64_t{1}) * steps.column + (*last - *first) * steps.band + image.bitsPerPixel;
    const std::uint32_t run = byPixel && part.columns == grid.width ? RowsPerRun(steps.row) : 1;
    std::uint64_t from = start * 8 + part.firstRow * steps.row + skipped;
    for (std::uint32_t row = 0; row < part.rows; row += run, from += run * steps.row) {
      const std::uint32_t rows = std::min(run, part.rows - row);
      const std::uint8_t *bytes = nullptr;
      const Status status = Fetch(from, (rows - 1) * steps.row + rowBits, &bytes);
      if (status != SUCCESS) return status;
      for (std::uint32_t at = 0; at < rows; ++at) {
        for (std::size_t band = 0; band < bands.size(); ++band) {
          const std::uint64_t bit = from % 8 + at * steps.row + (bands[band] - *first) * steps.band;
          unpack({bytes, bit, steps.column, part.columns, image.bitsPerPixel}, target.Row(band, row + at),
                 target.columnStep);
        }
      }
    }
    return SUCCESS;
  }

  /** Whether the caller wants pixels just as mode P has them: all bands, side by side. */
  bool IsWholePixels(std::span<const std::uint32_t> bands, const SampleTarget &target) const {
    const std::int64_t bytes = BytesOf(shape.type);
    if (image.mode != kPixelInterleaved || bands.size() != image.bandCount) return false;
    if (target.bandStep != bytes || target.columnStep != bytes * image.bandCount) return false;
    for (std::uint32_t band = 0; band < image.bandCount; ++band) {
      if (bands[band] != band) return false;
    }
    return true;
  }

  /** Then a pixel is as good as so many columns of one band. */
  Status ReadWholePixels(const BlockPart &part, const SampleTarget &target, std::uint64_t start) {
    const std::uint64_t rowBits = part.columns * steps.column;
    const std::uint32_t run = part.columns == grid.width ? RowsPerRun(rowBits) : 1;
    std::uint64_t from = start * 8 + part.firstRow * steps.row + part.firstColumn * steps.column;
    for (std::uint32_t row = 0; row < part.rows; row += run, from += run * steps.row) {
      const std::uint32_t rows = std::min(run, part.rows - row);
      const std::uint8_t *bytes = nullptr;
      const Status status = Fetch(from, rowBits * rows, &bytes);
      if (status != SUCCESS) return status;
      for (std::uint32_t at = 0; at < rows; ++at) {
        unpack({bytes, from % 8 + at * rowBits, image.bitsPerPixel, std::uint64_t{part.columns} * image.bandCount,
                image.bitsPerPixel},
               target.Row(0, row + at), target.bandStep);
      }
    }
    return SUCCESS;
  }

  /** Bytes that need no change may go right into the target. */
  bool CanReadInPlace(const SampleTarget &target) const { return image.bitsPerPixel == 8 && target.columnStep == 1; }

  std::uint32_t RowsPerRun(std::uint64_t rowBits) const {
    const std::uint64_t rows = std::max<std::uint64_t>(kStripBytes * 8 / std::max<std::uint64_t>(rowBits, 1), 1);
    return static_cast<std::uint32_t>(std::min<std::uint64_t>(rows, grid.height));
  }

  /** Reads the bytes that hold `count` bits from bit `from` of the data; the first of them has that bit. */
  Status Fetch(std::uint64_t from, std::uint64_t count, const std::uint8_t **bytes) {
    const std::uint64_t needed = (from % 8 + count + 7) / 8;
    std::uint8_t *const held = buffer.AtLeast(needed);
    if (held == nullptr) return ERROR_NO_MEMORY;
    *bytes = held;
    return data.Read(from / 8, held, needed);
  }

  const ImageData &data;
  const ImageSubheader &image;
  BlockGrid grid;
  BlockMask mask;
  BitSteps steps{};
  UnpackSamples unpack = nullptr;
  RowBuffer buffer;
};

}  // namespace

std::unique_ptr<SampleReader> MakePlainSamples(const ImageData &data) {
  return std::unique_ptr<SampleReader>(new (std::nothrow) PlainSamples(data));
}

}  // namespace ksntfx
