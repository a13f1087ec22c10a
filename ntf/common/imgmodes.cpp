#include "imgmodes.h"

#include "blocks.h"
#include "samples.h"

#include <algorithm>
#include <cstring>
#include <optional>

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
  if (!mask.HasBlockMask()) return blockBytes * static_cast<std::int64_t>(grid.count);
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

/** The offset of a block behind IMDATOFF, or nothing where it isn't there. */
std::optional<std::int64_t> BlockOffset(const ModeLayout &layout, const BlockMask &mask, std::uint64_t block) {
  if (layout.masked && mask.IsAbsent(block)) return std::nullopt;
  const std::int64_t inOrder = static_cast<std::int64_t>(block) * layout.block;
  return layout.masked ? std::int64_t{mask.Offset(block).value_or(inOrder)} : inOrder;
}

// ---- one band, or one of two --------------------------------------------------------------------------------------

/** Reads one band of an image into rows of its own depth. */
class PlaneReader {
 public:
  PlaneReader(const ImageSource &data, KsBitmap *bitmap)
      : source(data),
        image(*data.image),
        target(bitmap),
        grid(image),
        mask(data),
        rowBytes(RowBytes(image.bitsPerPixel, grid.width)),
        layout(LayoutOf(image, grid, mask, rowBytes)),
        convert(ChooseConversion(image.bitsPerPixel, image.actualBits)) {}

  std::int32_t Decode() {
    const std::uint32_t depth = image.bandCount == 2 ? image.bitsPerPixel : target->bitsPerPixel;
    std::int32_t status = rows.Create(target, image, grid, depth);
    if (status != SUCCESS) return status;
    if (image.bandCount == 2) status = ChoosePlane();
    const std::uint64_t blocks = grid.IsSingle() ? grid.count : mask.Visited(grid.count);
    for (std::uint64_t block = 0; block < blocks && status == SUCCESS; ++block) {
      const std::optional<std::int64_t> start = StartOf(block);
      if (start) status = ReadBlock(block, *start);
    }
    return status;
  }

 private:
  /** The band that ChooseBands puts first stands for a two-band image. */
  std::int32_t ChoosePlane() {
    if (image.mode == kPixelInterleaved && image.bitsPerPixel != 8) return ERROR_NOT_SUPPORTED;
    BandOrder order{};
    ChooseBands(image, &order);
    band = order.first;
    return run.Allocate(rowBytes * layout.pixel) ? static_cast<std::int32_t>(SUCCESS) : ERROR_NO_MEMORY;
  }

  /**
   * One band: the recorded blocks follow each other, whatever offsets the mask gives, and a single block is always
   * there.
   */
  std::optional<std::int64_t> StartOf(std::uint64_t block) {
    if (image.bandCount == 2) return BlockOffset(layout, mask, block);
    if (!grid.IsSingle() && mask.IsAbsent(block)) return std::nullopt;
    return static_cast<std::int64_t>(ordinal++) * static_cast<std::int64_t>(rowBytes) * grid.height;
  }

  std::int32_t ReadBlock(std::uint64_t block, std::int64_t start) {
    const bool twoBands = image.bandCount == 2;
    const auto step = twoBands ? layout.row : static_cast<std::int64_t>(rowBytes);
    const std::int64_t origin = start + image.maskDataOffset + (layout.pixel == 1 ? band * layout.band : 0);
    const std::uint64_t bytes = twoBands ? rowBytes * layout.pixel : rowBytes;
    if (!source.Holds(origin + step * (grid.height - std::int64_t{1}) + static_cast<std::int64_t>(bytes))) {
      return ERROR_FILE_READ;
    }
    rows.Begin(grid.Left(block), grid.Top(block));
    for (std::uint32_t row = 0; row < grid.height; ++row) {
      const std::int32_t status = ReadRow(origin + step * row, rows.Row(row));
      if (status != SUCCESS) return status;
    }
    return rows.End();
  }

  std::int32_t ReadRow(std::int64_t offset, std::uint8_t *row) {
    if (image.bandCount == 2 && layout.pixel != 1) {
      const std::int32_t status = source.Read(offset, run.Get(), rowBytes * layout.pixel);
      for (std::uint64_t x = 0; x < rowBytes; ++x) row[x] = run[x * layout.pixel + band];
      return status;
    }
    const std::int32_t status = source.Read(offset, row, rowBytes);
    if (status == SUCCESS && convert != nullptr) convert(row, rowBytes, image.bitsPerPixel, image.actualBits, {});
    return status;
  }

  const ImageSource &source;
  ImageSubheader &image;
  KsBitmap *target;
  BlockGrid grid;
  BlockMask mask;
  std::uint64_t rowBytes;
  ModeLayout layout;
  SampleConversion convert;
  BlockRows rows;
  KsArray<std::uint8_t> run;
  std::uint32_t band = 0;
  std::uint64_t ordinal = 0;
};

// ---- one block of 32-bit samples ----------------------------------------------------------------------------------

/** Least and greatest word of all image data, from their first byte on. A failed read ends the scan. */
SampleRange ScanRange(const ImageSource &source) {
  constexpr std::uint32_t kPiece = 50000;
  SampleRange range;
  KsArray<std::uint8_t> piece;
  if (!piece.Allocate(kPiece)) return range;
  bool first = true;
  for (std::uint64_t at = 0; at < source.dataLength; at += kPiece) {
    const std::uint64_t bytes = std::min<std::uint64_t>(kPiece, source.dataLength - at);
    if (source.Read(static_cast<std::int64_t>(at), piece.Get(), bytes) != SUCCESS) break;
    for (std::uint64_t word = 0; word + 4 <= bytes; word += 4) {
      const std::uint8_t *b = piece.Get() + word;
      const auto value = static_cast<std::int32_t>(std::uint32_t{b[0]} << 24 | std::uint32_t{b[1]} << 16 |
                                                   std::uint32_t{b[2]} << 8 | b[3]);
      range.minimum = first ? value : std::min(range.minimum, value);
      range.maximum = first ? value : std::max(range.maximum, value);
      first = false;
    }
  }
  return range;
}

/** A gray image of one block with 32 bits a sample comes down to 8 bits, its own range spread over them. */
std::int32_t DecodeSpread(const ImageSource &source, KsBitmap *target) {
  const ImageSubheader &image = *source.image;
  const std::uint64_t bytes = std::uint64_t{target->width} * 4;
  const std::int64_t origin = image.maskDataOffset;
  if (!source.Holds(origin + static_cast<std::int64_t>(bytes * target->height))) return ERROR_FILE_READ;
  const SampleRange range = ScanRange(source);
  const SampleConversion convert = ChooseConversion(image.bitsPerPixel, image.actualBits);
  KsArray<std::uint8_t> samples;
  if (!samples.Allocate(bytes)) return ERROR_NO_MEMORY;
  for (std::uint32_t row = 0; row < target->height; ++row) {
    const std::int32_t status = source.Read(origin + static_cast<std::int64_t>(bytes * row), samples.Get(), bytes);
    if (status != SUCCESS) return status;
    convert(samples.Get(), target->width, image.bitsPerPixel, image.actualBits, range);
    KsBitmapPutRow(target, samples.Get(), row, target->width);
  }
  return SUCCESS;
}

// ---- three bands or more ------------------------------------------------------------------------------------------

/** One row of three samples a pixel, `step` bytes from one pixel to the next, as blue, green and red. */
void InterleaveRow(std::uint8_t *pixel, std::uint32_t width, const std::uint8_t *red, const std::uint8_t *green,
                   const std::uint8_t *blue, std::uint32_t step) {
  for (std::uint64_t x = 0; x < width; ++x, pixel += 3) {
    pixel[0] = blue[x * step];
    pixel[1] = green[x * step];
    pixel[2] = red[x * step];
  }
}

/** Reads three bands of 8 bits, in any image mode. */
class ColorReader {
 public:
  ColorReader(const ImageSource &data, KsBitmap *bitmap)
      : source(data),
        image(*data.image),
        target(bitmap),
        grid(image),
        mask(data),
        layout(LayoutOf(image, grid, mask, grid.width)) {}

  std::int32_t Decode() {
    if (image.mode != kBlockInterleaved) order = {0, 1, 2};
    ChooseBands(image, &order);
    std::int32_t status = rows.Create(target, image, grid, 24);
    const std::uint64_t blocks = mask.Visited(grid.count);
    for (std::uint64_t block = 0; block < blocks && status == SUCCESS; ++block) {
      const std::optional<std::int64_t> start = BlockOffset(layout, mask, block);
      if (start) status = ReadBlock(block, *start + image.maskDataOffset);
    }
    return status;
  }

 private:
  std::uint32_t LastBand() const { return std::max({order.first, order.second, order.third}); }
  std::uint64_t RunBytes() const { return std::uint64_t{grid.width} * image.bandCount; }

  std::int32_t ReadBlock(std::uint64_t block, std::int64_t start) {
    if (!Holds(start)) return ERROR_FILE_READ;
    const std::uint64_t bytes = layout.pixel == 1 ? 3 * std::uint64_t{grid.width} : RunBytes() + LastBand();
    if (!samples && !samples.Allocate(bytes)) return ERROR_NO_MEMORY;
    rows.Begin(grid.Left(block), grid.Top(block));
    const bool pixelInterleaved = layout.pixel != 1;
    for (std::uint32_t row = 0; row < grid.height; ++row) {
      const std::int64_t offset = start + layout.row * row;
      const std::int32_t status = pixelInterleaved ? ReadPixels(offset, row) : ReadPlanes(offset, row);
      if (status != SUCCESS) return status;
    }
    return rows.End();
  }

  /** Whether all that is read of a block is in the file. */
  bool Holds(std::int64_t start) const {
    if (layout.pixel != 1) {
      if (grid.height == 1) return true;
      return source.Holds(start + layout.row * (grid.height - std::int64_t{1}) + LastBand());
    }
    const std::int64_t lastRow = start + layout.row * (grid.height - std::int64_t{1}) + grid.width;
    return source.Holds(lastRow + order.first * layout.band) && source.Holds(lastRow + order.second * layout.band) &&
           source.Holds(lastRow + order.third * layout.band);
  }

  std::int32_t ReadPlanes(std::int64_t offset, std::uint32_t row) {
    const std::uint32_t bands[3] = {order.first, order.second, order.third};
    for (std::uint32_t channel = 0; channel < 3; ++channel) {
      std::uint8_t *to = samples.Get() + std::uint64_t{channel} * grid.width;
      const std::int32_t status = source.Read(offset + bands[channel] * layout.band, to, grid.width);
      if (status != SUCCESS) return status;
    }
    const std::uint8_t *red = samples.Get();
    InterleaveRow(rows.Row(row), grid.width, red, red + grid.width, red + 2 * std::uint64_t{grid.width}, 1);
    return SUCCESS;
  }

  /**
   * The last row of a block in mode P is taken to repeat the one before it, and a block of one row to be black: the run
   * of a band reaches beyond its row, which in the last row would be beyond the block.
   */
  std::int32_t ReadPixels(std::int64_t offset, std::uint32_t row) {
    std::uint8_t *pixels = rows.Row(row);
    if (row + 1 == grid.height) {
      if (row == 0) {
        std::memset(pixels, 0, std::size_t{grid.width} * 3);
      } else {
        std::memcpy(pixels, rows.Row(row - 1), std::size_t{grid.width} * 3);
      }
      return SUCCESS;
    }
    const std::int32_t status = source.Read(offset, samples.Get(), RunBytes() + LastBand());
    if (status != SUCCESS) return status;
    const std::uint8_t *run = samples.Get();
    if (layout.pixel == 3) {
      InterleaveRow(pixels, grid.width, run + order.first, run + order.second, run + order.third, 3);
    } else {
      InterleaveRow(pixels, grid.width, run + order.first, run + order.second, run + order.third, layout.pixel);
    }
    return SUCCESS;
  }

  const ImageSource &source;
  ImageSubheader &image;
  KsBitmap *target;
  BlockGrid grid;
  BlockMask mask;
  ModeLayout layout;
  BandOrder order{};
  KsArray<std::uint8_t> samples;
  BlockRows rows;
};

// ---- packed bi-level ----------------------------------------------------------------------------------------------

/** Moves `count` bits from bit `from` of `source` to the front of `row`, the top bit of a byte first. */
void UnpackBits(const std::uint8_t *source, std::uint64_t from, std::uint32_t count, std::uint8_t *row) {
  const std::uint8_t *bytes = source + from / 8;
  const auto shift = static_cast<unsigned>(from % 8);
  const std::uint64_t whole = count / 8;
  if (shift == 0) {
    std::memcpy(row, bytes, whole);
  } else {
    for (std::uint64_t at = 0; at < whole; ++at) {
      row[at] = static_cast<std::uint8_t>(bytes[at] << shift | bytes[at + 1] >> (8 - shift));
    }
  }
  const unsigned rest = count % 8;
  if (rest == 0) return;
  unsigned last = static_cast<unsigned>(bytes[whole]) << shift;
  if (shift + rest > 8) last |= static_cast<unsigned>(bytes[whole + 1]) >> (8 - shift);
  row[whole] = static_cast<std::uint8_t>(last & (0xFF00U >> rest));
}

/** Reads blocks of one bit a pixel, whose rows follow each other without fill bits. */
class PackedReader {
 public:
  PackedReader(const ImageSource &data, KsBitmap *bitmap)
      : source(data),
        image(*data.image),
        target(bitmap),
        grid(image),
        mask(data),
        planeBits(std::uint64_t{grid.width} * grid.height),
        blockBytes((planeBits * std::max(image.bandCount, 1U) + 7) / 8) {}

  std::int32_t Decode() {
    std::int32_t status = ChoosePlane();
    if (status != SUCCESS) return status;
    if (image.maskDataOffset > source.dataLength) return ERROR_FILE_FORMAT;
    if (!source.Holds(source.dataLength)) return ERROR_FILE_READ;
    const std::uint32_t depth = image.bandCount == 2 ? image.bitsPerPixel : target->bitsPerPixel;
    status = rows.Create(target, image, grid, depth);
    const std::uint64_t blocks = mask.Visited(grid.count);
    for (std::uint64_t block = 0; block < blocks && status == SUCCESS; ++block) {
      if (!mask.IsAbsent(block)) status = ReadBlock(block, StartOf(block));
    }
    return status;
  }

 private:
  /** Of two bands, whose bits follow each other in a block, one is shown. More have no bi-level picture. */
  std::int32_t ChoosePlane() {
    if (image.bandCount < 2) return SUCCESS;
    const bool planesFollow = image.mode == kBlockInterleaved || (image.mode == kBandSequential && grid.IsSingle());
    if (image.bandCount > 2 || !planesFollow) return ERROR_NOT_SUPPORTED;
    BandOrder order{};
    ChooseBands(image, &order);
    band = order.first;
    return SUCCESS;
  }

  /** Without an entry in the masks a block follows the one before it; a blank entry of TMR counts from the start. */
  std::uint64_t StartOf(std::uint64_t block) const {
    if (const std::optional<std::uint32_t> offset = mask.Offset(block)) return *offset;
    return mask.HasPadMask() ? consumed : offsetBefore + consumed;
  }

  std::int32_t ReadBlock(std::uint64_t block, std::uint64_t start) {
    if (start + blockBytes > source.dataLength - image.maskDataOffset) return ERROR_FILE_FORMAT;
    if (!packed && !packed.Allocate(blockBytes)) return ERROR_NO_MEMORY;
    const std::int32_t status =
        source.Read(static_cast<std::int64_t>(image.maskDataOffset + start), packed.Get(), blockBytes);
    if (status != SUCCESS) return status;
    offsetBefore = start;
    consumed = blockBytes;
    rows.Begin(grid.Left(block), grid.Top(block));
    for (std::uint32_t row = 0; row < grid.height; ++row) {
      UnpackBits(packed.Get(), band * planeBits + std::uint64_t{row} * grid.width, grid.width, rows.Row(row));
    }
    return rows.End();
  }

  const ImageSource &source;
  ImageSubheader &image;
  KsBitmap *target;
  BlockGrid grid;
  BlockMask mask;
  std::uint64_t planeBits;
  std::uint64_t blockBytes;
  BlockRows rows;
  KsArray<std::uint8_t> packed;
  std::uint32_t band = 0;
  std::uint64_t offsetBefore = 0;
  std::uint64_t consumed = 0;
};

}  // namespace

std::int32_t DecodeSamples(const ImageSource &source, KsBitmap *target) {
  const ImageSubheader &image = *source.image;
  const std::uint32_t bits = image.bitsPerPixel;
  if (image.bandCount >= 3) return bits == 8 ? ColorReader(source, target).Decode() : ERROR_NOT_SUPPORTED;
  if (bits == 1 || bits == 8 || bits == 12 || bits == 16) return PlaneReader(source, target).Decode();
  const bool spreads =
      bits == 32 && image.bandCount < 2 && image.representation == kMono && BlockGrid(image).IsSingle();
  return spreads ? DecodeSpread(source, target) : ERROR_NOT_SUPPORTED;
}

std::int32_t DecodePackedBilevel(const ImageSource &source, KsBitmap *target) {
  return PackedReader(source, target).Decode();
}
