#include "imgmodes.h"

#include "interleave.h"
#include "samples.h"

#include <algorithm>
#include <cstring>
#include <new>

namespace {

/** Bytes of a row of samples, which begins on a byte of its own. */
std::uint64_t RowBytes(std::uint32_t bits, std::uint32_t width) {
  return (std::uint64_t{bits} * width + 7) / 8;
}

/** How far apart things lie in the data of one image mode, in bytes. */
struct ModeLayout {
  std::int64_t block;
  std::int64_t band;
  std::int64_t row;
  std::uint32_t pixel; /**< bands between two samples of a band; more than 1 in mode P alone */
  bool masked;         /**< BMR and TMR are looked at */
};

/**
 * The distance between two bands of mode S. With a BMR only the blocks of the smallest stretch of rounds and places
 * that holds the first and the last recorded block count.
 */
std::int64_t BandDistance(const BlockGrid &grid, const BlockMask &mask, std::int64_t blockBytes) {
  if (!mask.HasBlockMask() || grid.count == 0) return blockBytes * static_cast<std::int64_t>(grid.count);
  std::optional<std::uint64_t> first;
  std::uint64_t last = 0;
  for (std::uint64_t block = 0; block < mask.Visited(grid.count); ++block) {
    if (mask.BlockWord(block) == kNotRecorded) continue;
    if (!first) first = block;
    last = block;
  }
  const auto round = [&](std::uint64_t block) { return static_cast<std::int64_t>(block / grid.down); };
  const auto place = [&](std::uint64_t block) { return static_cast<std::int64_t>(block % grid.down); };
  const std::uint64_t begin = first.value_or(0);
  return blockBytes * (place(last) - place(begin) + 1) * (round(last) - round(begin) + 1);
}

/** `rowBytes` are those of one band's row of a block. */
ModeLayout LayoutOf(const ImageSubheader &image, const BlockGrid &grid, const BlockMask &mask, std::uint64_t rowBytes) {
  const auto row = static_cast<std::int64_t>(rowBytes);
  const std::int64_t plane = row * grid.height;
  const std::int64_t bands = image.bandCount;
  switch (image.mode) {
    case kPixelInterleaved:
      return {plane * bands, 1, row * bands, image.bandCount, true};
    case kRowInterleaved:
      return {plane * bands, row, row * bands, 1, false};
    case kBandSequential:
      return {plane, BandDistance(grid, mask, plane), row, 1, true};
    default: {
      // More than three bands of a MULTI image without a pad mask lie one block after the other. All others are counted
      // as if they had the three bands of a pixel.
      const bool allBands = bands < 3 || (image.representation == kMulti && !mask.HasPadMask());
      return {plane * (allBands ? bands : 3), plane, row, 1, true};
    }
  }
}

/** Moves every `step`-th byte of a row of `count` samples. */
void GatherRow(const std::uint8_t *samples, std::uint32_t step, std::uint64_t count, std::uint8_t *row) {
  for (std::uint64_t x = 0; x < count; ++x) row[x] = samples[x * step];
}

/** One band of 1, 8, 12 or 16 bits. */
class PlaneReader final : public BlockReader {
 public:
  explicit PlaneReader(const ImageSource &data)
      : BlockReader(data, data.image->bitsPerPixel),
        rowBytes(RowBytes(image.bitsPerPixel, grid.width)),
        convert(ChooseConversion(image.bitsPerPixel, image.actualBits)) {}

 private:
  std::int32_t Prepare() override { return SUCCESS; }

  /** The recorded blocks follow each other, whatever offsets the mask gives, and a single block is always there. */
  std::int64_t StartOf(std::uint64_t block) override {
    if (!grid.IsSingle() && mask.IsAbsent(block)) return kAbsent;
    return static_cast<std::int64_t>(ordinal++ * rowBytes * grid.height);
  }

  void Rewind() override { ordinal = 0; }

  std::int32_t Check(std::int64_t start) const override {
    return source.Holds(start + static_cast<std::int64_t>(rowBytes * grid.height)) ? SUCCESS : ERROR_FILE_READ;
  }

  std::int32_t ReadRows(std::int64_t start, std::uint32_t first, std::uint32_t rows) override {
    const std::uint64_t bytes = rowBytes * rows;
    const bool inPlace = out.RowStep() == rowBytes;
    std::uint8_t *samples = inPlace ? out.Row(0) : Buffer(bytes);
    if (samples == nullptr) return ERROR_NO_MEMORY;
    const std::int32_t status = source.Read(start + static_cast<std::int64_t>(rowBytes * first), samples, bytes);
    if (status != SUCCESS) return status;
    for (std::uint32_t row = 0; row < rows; ++row) {
      if (!inPlace) std::memcpy(out.Row(row), samples + row * rowBytes, rowBytes);
      if (convert != nullptr) convert(out.Row(row), rowBytes, image.bitsPerPixel, image.actualBits, {});
    }
    return SUCCESS;
  }

  std::uint64_t rowBytes;
  SampleConversion convert;
  std::uint64_t ordinal = 0;
};

/** What images of two and of more bands have in common: blocks whose places the mode's layout tells. */
class LaidOutReader : public BlockReader {
 protected:
  LaidOutReader(const ImageSource &data, std::uint32_t rowDepth)
      : BlockReader(data, rowDepth),
        rowBytes(RowBytes(image.bitsPerPixel, grid.width)),
        layout(LayoutOf(image, grid, mask, rowBytes)) {}

  std::int64_t StartOf(std::uint64_t block) final {
    if (layout.masked && mask.IsAbsent(block)) return kAbsent;
    const std::int64_t inOrder = static_cast<std::int64_t>(block) * layout.block;
    return layout.masked ? mask.Offset(block).value_or(inOrder) : inOrder;
  }

  /** Whether the file holds the rows of a block up to `row`, in one band. */
  bool HoldsBand(std::int64_t start, std::uint32_t band) const {
    const std::int64_t lastRow = start + band * layout.band + layout.row * (grid.height - std::int64_t{1});
    return source.Holds(lastRow + static_cast<std::int64_t>(rowBytes));
  }

  /** Reads rows of one band, in a mode that keeps the samples of a row together: one after the other into `samples`. */
  std::int32_t ReadBandRows(std::int64_t start, std::uint32_t band, std::uint32_t first, std::uint32_t rows,
                            std::uint8_t *samples) const {
    const std::int64_t from = start + band * layout.band + layout.row * first;
    if (layout.row == static_cast<std::int64_t>(rowBytes)) return source.Read(from, samples, rowBytes * rows);
    for (std::uint32_t row = 0; row < rows; ++row) {
      const std::int32_t status = source.Read(from + layout.row * row, samples + row * rowBytes, rowBytes);
      if (status != SUCCESS) return status;
    }
    return SUCCESS;
  }

  std::uint64_t rowBytes;
  ModeLayout layout;
};

/** Two bands: the one that ChooseBands puts first is shown. */
class TwoBandReader final : public LaidOutReader {
 public:
  explicit TwoBandReader(const ImageSource &data)
      : LaidOutReader(data, data.image->bitsPerPixel),
        convert(ChooseConversion(image.bitsPerPixel, image.actualBits)) {}

 private:
  std::int32_t Prepare() override {
    if (layout.pixel != 1 && image.bitsPerPixel != 8) return ERROR_NOT_SUPPORTED;
    BandOrder order{};
    ChooseBands(image, &order);
    band = order.first;
    return SUCCESS;
  }

  std::int32_t Check(std::int64_t start) const override {
    const std::int64_t end = start + layout.row * grid.height;
    const bool held = layout.pixel == 1 ? HoldsBand(start, band) : source.Holds(end);
    return held ? SUCCESS : ERROR_FILE_READ;
  }

  std::int32_t ReadRows(std::int64_t start, std::uint32_t first, std::uint32_t rows) override {
    const std::uint64_t step = rowBytes * layout.pixel;
    std::uint8_t *samples = Buffer(step * rows);
    if (samples == nullptr) return ERROR_NO_MEMORY;
    const std::int32_t status = layout.pixel == 1 ? ReadBandRows(start, band, first, rows, samples)
                                                  : source.Read(start + layout.row * first, samples, step * rows);
    if (status != SUCCESS) return status;
    for (std::uint32_t row = 0; row < rows; ++row) {
      GatherRow(samples + row * step + (layout.pixel == 1 ? 0 : band), layout.pixel, rowBytes, out.Row(row));
      if (convert != nullptr) convert(out.Row(row), rowBytes, image.bitsPerPixel, image.actualBits, {});
    }
    return SUCCESS;
  }

  SampleConversion convert;
  std::uint32_t band = 0;
};

/** Three bands of 8 bits or more bands, of which three are shown. */
class ColorReader final : public LaidOutReader {
 public:
  explicit ColorReader(const ImageSource &data) : LaidOutReader(data, 24) {}

 private:
  std::int32_t Prepare() override {
    BandOrder order{};
    if (image.mode != kBlockInterleaved) order = {0, 1, 2};
    ChooseBands(image, &order);
    bands[0] = order.first;
    bands[1] = order.second;
    bands[2] = order.third;
    lastBand = *std::max_element(bands, bands + 3);
    return SUCCESS;
  }

  std::int32_t Check(std::int64_t start) const override {
    if (layout.pixel != 1) {
      const std::int64_t end = start + layout.row * (grid.height - std::int64_t{1}) + lastBand;
      return grid.height == 1 || source.Holds(end) ? SUCCESS : ERROR_FILE_READ;
    }
    const bool held = std::all_of(bands, bands + 3, [&](std::uint32_t band) { return HoldsBand(start, band); });
    return held ? SUCCESS : ERROR_FILE_READ;
  }

  std::int32_t ReadRows(std::int64_t start, std::uint32_t first, std::uint32_t rows) override {
    return layout.pixel == 1 ? ReadPlanes(start, first, rows) : ReadPixels(start, first, rows);
  }

  /** Reads the rows of all bands in one go where they lie side by side and most of them are shown. */
  std::int32_t ReadRuns(std::int64_t start, std::uint32_t first, std::uint32_t rows) {
    const auto runBytes = static_cast<std::uint64_t>(layout.row);
    std::uint8_t *samples = Buffer(runBytes * rows);
    if (samples == nullptr) return ERROR_NO_MEMORY;
    const std::int32_t status = source.Read(start + layout.row * first, samples, runBytes * rows);
    if (status != SUCCESS) return status;
    for (std::uint32_t row = 0; row < rows; ++row) {
      const std::uint8_t *run = samples + runBytes * row;
      InterleaveRow(out.Row(row), grid.width,
                    {run + bands[0] * rowBytes, run + bands[1] * rowBytes, run + bands[2] * rowBytes, 1});
    }
    return SUCCESS;
  }

  std::int32_t ReadPlanes(std::int64_t start, std::uint32_t first, std::uint32_t rows) {
    if (image.mode == kRowInterleaved && image.bandCount == 3) return ReadRuns(start, first, rows);
    const std::uint64_t planeBytes = rowBytes * rows;
    std::uint8_t *samples = Buffer(3 * planeBytes);
    if (samples == nullptr) return ERROR_NO_MEMORY;
    for (std::uint32_t channel = 0; channel < 3; ++channel) {
      const std::int32_t status = ReadBandRows(start, bands[channel], first, rows, samples + channel * planeBytes);
      if (status != SUCCESS) return status;
    }
    for (std::uint32_t row = 0; row < rows; ++row) {
      const std::uint8_t *red = samples + row * rowBytes;
      InterleaveRow(out.Row(row), grid.width, {red, red + planeBytes, red + 2 * planeBytes, 1});
    }
    return SUCCESS;
  }

  /**
   * The last row of a block in mode P is taken to repeat the one before it, and a block of one row to be black: the run
   * of a band reaches beyond its row, which in the last row would be beyond the block.
   */
  std::int32_t ReadPixels(std::int64_t start, std::uint32_t first, std::uint32_t rows) {
    if (grid.height == 1) {
      std::memset(out.Row(0), 0, std::size_t{grid.width} * 3);
      return SUCCESS;
    }
    const std::uint32_t lastRead = grid.height - 2;
    const std::uint32_t begin = std::min(first, lastRead);
    const std::uint32_t end = std::min(first + rows - 1, lastRead) + 1;
    const auto runBytes = static_cast<std::uint64_t>(layout.row);
    const std::uint64_t bytes = runBytes * (end - begin) + lastBand;
    std::uint8_t *samples = Buffer(bytes);
    if (samples == nullptr) return ERROR_NO_MEMORY;
    const std::int32_t status = source.Read(start + layout.row * begin, samples, bytes);
    if (status != SUCCESS) return status;
    for (std::uint32_t row = 0; row < rows; ++row) {
      const std::uint8_t *run = samples + runBytes * (std::min(first + row, lastRead) - begin);
      InterleaveRow(out.Row(row), grid.width, {run + bands[0], run + bands[1], run + bands[2], layout.pixel});
    }
    return SUCCESS;
  }

  std::uint32_t bands[3] = {};
  std::uint32_t lastBand = 0;
};

/** A gray image of one block with 32 bits a sample comes down to 8 bits, its own range spread over them. */
class SpreadReader final : public BlockReader {
 public:
  explicit SpreadReader(const ImageSource &data)
      : BlockReader(data, 8), convert(ChooseConversion(image.bitsPerPixel, image.actualBits)) {}

 private:
  std::int32_t Prepare() override { return SUCCESS; }
  std::int64_t StartOf(std::uint64_t) override { return 0; }

  std::int32_t Check(std::int64_t start) const override {
    return source.Holds(start + static_cast<std::int64_t>(RowBytes(32, grid.width) * grid.height)) ? SUCCESS
                                                                                                   : ERROR_FILE_READ;
  }

  std::int32_t ReadRows(std::int64_t start, std::uint32_t first, std::uint32_t rows) override {
    if (first == 0) range = ScanRange();
    const std::uint64_t rowBytes = RowBytes(32, grid.width);
    std::uint8_t *samples = Buffer(rowBytes * rows);
    if (samples == nullptr) return ERROR_NO_MEMORY;
    const std::int32_t status =
        source.Read(start + static_cast<std::int64_t>(rowBytes * first), samples, rowBytes * rows);
    if (status != SUCCESS) return status;
    for (std::uint32_t row = 0; row < rows; ++row) {
      std::uint8_t *levels = samples + rowBytes * row;
      convert(levels, grid.width, image.bitsPerPixel, image.actualBits, range);
      std::memcpy(out.Row(row), levels, grid.width);
    }
    return SUCCESS;
  }

  /** Least and greatest word of all image data, from their first byte on. A failed read ends the scan. */
  SampleRange ScanRange() {
    constexpr std::uint32_t kPiece = 50000;
    SampleRange found;
    KsArray<std::uint8_t> piece;
    if (!piece.Allocate(kPiece)) return found;
    bool none = true;
    for (std::uint64_t at = 0; at < source.dataLength; at += kPiece) {
      const std::uint64_t bytes = std::min<std::uint64_t>(kPiece, source.dataLength - at);
      if (source.Read(static_cast<std::int64_t>(at), piece.Get(), bytes) != SUCCESS) break;
      for (std::uint64_t word = 0; word + 4 <= bytes; word += 4) {
        const auto value = static_cast<std::int32_t>(BigEndian32(piece.Get() + word));
        found.minimum = none ? value : std::min(found.minimum, value);
        found.maximum = none ? value : std::max(found.maximum, value);
        none = false;
      }
    }
    return found;
  }

  SampleConversion convert;
  SampleRange range;
};

template <class Reader>
std::unique_ptr<BlockReader> Make(const ImageSource &source) {
  return std::unique_ptr<BlockReader>(new (std::nothrow) Reader(source));
}

using ReaderMaker = std::unique_ptr<BlockReader> (*)(const ImageSource &source);

/** What makes the reader for an image, or null for samples that make no picture. */
ReaderMaker ChooseReader(const ImageSubheader &image) {
  const std::uint32_t bits = image.bitsPerPixel;
  if (image.pixelValueType == 1) return MakeBilevelReader;
  if (image.bandCount >= 3) return bits == 8 ? Make<ColorReader> : nullptr;
  if (bits == 1 || bits == 8 || bits == 12 || bits == 16) {
    return image.bandCount == 2 ? Make<TwoBandReader> : Make<PlaneReader>;
  }
  const bool spreads =
      bits == 32 && image.bandCount < 2 && image.representation == kMono && BlockGrid(image).IsSingle();
  return spreads ? Make<SpreadReader> : nullptr;
}

}  // namespace

std::int32_t MakeBlockReader(const ImageSource &source, std::unique_ptr<BlockReader> *reader) {
  const ReaderMaker make = ChooseReader(*source.image);
  if (make == nullptr) return ERROR_NOT_SUPPORTED;
  *reader = make(source);
  return *reader == nullptr ? ERROR_NO_MEMORY : SUCCESS;
}
