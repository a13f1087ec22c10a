#include "headers/mask_table.h"
#include "images/block_starts.h"
#include "images/image_target.h"
#include "images/imgmodes.h"
#include "table/bits.h"

#include <algorithm>
#include <cstring>
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

/**
 * Blocks of one bit a pixel: the rows of a block, and its bands where they are two, follow each other without fill
 * bits. In a bitmap of more bits the bits are the first bytes of each row, and the rest of it is 0.
 */
class BilevelReader final : public ImageReader {
 public:
  BilevelReader(const ImageSource &data, const BandSelection &selection)
      : source(data),
        image(*data.image),
        band(selection.bands[0]),
        grid(image),
        mask(image, data.dataLength),
        planeBits(std::uint64_t{grid.width} * grid.height),
        blockBytes((planeBits * (image.bandCount == 2 ? 2 : 1) + 7) / 8),
        places(mask, blockBytes),
        starts(grid) {}

  /** Blocks lie within LI bytes behind IMDATOFF; those that the data don't reach to are 0. */
  Status Open() override {
    if (image.maskDataOffset > source.dataLength || !source.Holds(source.dataLength)) return ERROR_FILE_READ;
    const bool planesFollow = image.mode == kBlockInterleaved || (image.mode == kBandSequential && grid.IsSingle());
    if (image.bandCount == 2 && !planesFollow) return ERROR_NOT_SUPPORTED;
    shape = ShapeOf(grid, TargetDepth(image));
    shape.stripBytes = kStripBytes;
    const std::uint64_t blocks = grid.IsSingle() ? grid.count : mask.Visited(grid.count);
    for (std::uint64_t block = 0; block < blocks; ++block) {
      const std::int64_t start = places.StartOf(block);
      if (start != PackedPlaces::kAbsent && static_cast<std::uint64_t>(start) + blockBytes > source.dataLength) {
        return ERROR_FILE_FORMAT;
      }
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
    status = ReadPacked(static_cast<std::uint64_t>(start) + from / 8, packed, bytes);
    if (status != SUCCESS) return status;
    const std::uint64_t filled = RowBytes(1, grid.width);
    const std::uint64_t rowBytes = RowBytes(place.depth, grid.width);
    for (std::uint32_t row = 0; row < which.rows; ++row) {
      std::uint8_t *const shown = place.bytes + row * place.step;
      UnpackBits(packed, from % 8 + std::uint64_t{row} * grid.width, grid.width, shown);
      std::memset(shown + filled, 0, rowBytes - filled);
    }
    stored->form = StoredRows::Form::Placed;
    return SUCCESS;
  }

 private:
  /** Reads bytes at `offset` behind IMDATOFF; what lies behind LI is 0. */
  Status ReadPacked(std::uint64_t offset, std::uint8_t *packed, std::uint64_t bytes) const {
    const std::uint64_t held = source.dataLength - image.maskDataOffset;
    const std::uint64_t read = offset < held ? std::min(bytes, held - offset) : 0;
    std::memset(packed + read, 0, bytes - read);
    return read == 0 ? SUCCESS : source.Read(static_cast<std::int64_t>(image.maskDataOffset + offset), packed, read);
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
