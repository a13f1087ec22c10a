#include "headers/mask_table.h"
#include "images/block_starts.h"
#include "images/image_target.h"
#include "images/imgmodes.h"
#include "table/bits.h"

#include <algorithm>
#include <new>

namespace ksntfx {

namespace {

/** Finds packed blocks, one after the other. */
class PackedPlaces {
 public:
  static constexpr std::int64_t kAbsent = -1;

  PackedPlaces(const BlockMask &blockMask, std::uint64_t bytes) : mask(blockMask), blockBytes(bytes) {}

  /** Without an entry in the masks a block follows the one before it; a blank entry of TMR counts from the start. */
  std::int64_t StartOf(std::uint64_t block) {
    if (mask.IsAbsent(block)) return kAbsent;
    const std::uint64_t next = mask.HasPadMask() ? consumed : offsetBefore + consumed;
    offsetBefore = mask.Offset(block).value_or(next);
    consumed = blockBytes;
    return static_cast<std::int64_t>(offsetBefore);
  }

  void Rewind() { offsetBefore = consumed = 0; }

 private:
  const BlockMask &mask;
  std::uint64_t blockBytes;
  std::uint64_t offsetBefore = 0;
  std::uint64_t consumed = 0;
};

/** Blocks of one bit a pixel: bands and rows of a block follow each other without fill bits. */
class BilevelReader final : public ImageReader {
 public:
  BilevelReader(const ImageSource &data, const BandSelection &selection)
      : source(data),
        image(*data.image),
        band(selection.bands[0]),
        grid(image),
        mask(image, data.dataLength),
        planeBits(std::uint64_t{grid.width} * grid.height),
        blockBytes((planeBits * std::max(image.bandCount, 1U) + 7) / 8),
        places(mask, blockBytes),
        starts(grid) {}

  /** Of two bands one is shown. More have no bi-level picture. */
  Status Open() override {
    if (image.maskDataOffset > source.dataLength) return ERROR_FILE_FORMAT;
    if (!source.Holds(source.dataLength)) return ERROR_FILE_READ;
    const bool planesFollow = image.mode == kBlockInterleaved || (image.mode == kBandSequential && grid.IsSingle());
    if (image.bandCount > 2 || (image.bandCount == 2 && !planesFollow)) return ERROR_NOT_SUPPORTED;
    shape = ShapeOf(grid, TargetDepth(image));
    shape.stripBytes = kStripBytes;
    const std::uint64_t blocks = grid.IsSingle() ? grid.count : mask.Visited(grid.count);
    for (std::uint64_t block = 0; block < blocks; ++block) {
      const std::int64_t start = places.StartOf(block);
      if (start != PackedPlaces::kAbsent && End(start) > source.dataLength) return ERROR_FILE_FORMAT;
    }
    places.Rewind();
    return SUCCESS;
  }

  Status MakeBitmap(KsBitmap *bitmap, std::uint64_t rows) override {
    return CreateTarget(bitmap, image, shape.Width(), rows);
  }

  Status Read(const BlockRows &which, const StripPlace &place, StoredRows *stored) override {
    *stored = {};
    Status status = starts.Locate(places, which.block);
    if (status != SUCCESS) return status;
    const std::int64_t start = starts.Of(which.block);
    if (start == PackedPlaces::kAbsent) return SUCCESS;
    const std::uint64_t from = band * planeBits + std::uint64_t{which.first} * grid.width;
    const std::uint64_t end = from + std::uint64_t{which.rows} * grid.width;
    const std::uint64_t bytes = (end + 7) / 8 - from / 8;
    std::uint8_t *const packed = buffer.AtLeast(bytes);
    if (packed == nullptr) return ERROR_NO_MEMORY;
    status = source.Read(start + image.maskDataOffset + static_cast<std::int64_t>(from / 8), packed, bytes);
    if (status != SUCCESS) return status;
    for (std::uint32_t row = 0; row < which.rows; ++row) {
      UnpackBits(packed, from % 8 + std::uint64_t{row} * grid.width, grid.width, place.bytes + row * place.step);
    }
    stored->form = StoredRows::Form::Placed;
    return SUCCESS;
  }

 private:
  std::uint64_t End(std::int64_t start) const {
    return static_cast<std::uint64_t>(start + image.maskDataOffset) + blockBytes;
  }

  const ImageSource &source;
  ImageSubheader &image;
  std::uint32_t band;
  BlockGrid grid;
  BlockMask mask;
  std::uint64_t planeBits;
  std::uint64_t blockBytes;
  PackedPlaces places;
  BlockStarts starts;
  RowBuffer buffer;
};

}  // namespace

std::unique_ptr<ImageReader> MakeBilevelReader(const ImageSource &source, const BandSelection &bands) {
  return std::unique_ptr<ImageReader>(new (std::nothrow) BilevelReader(source, bands));
}

}  // namespace ksntfx
