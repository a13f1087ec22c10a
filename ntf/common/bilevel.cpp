#include "imgmodes.h"
#include "samples.h"

#include <algorithm>
#include <new>

namespace {

/** Blocks of one bit a pixel: bands and rows of a block follow each other without fill bits. */
class BilevelReader final : public BlockReader {
 public:
  explicit BilevelReader(const ImageSource &data)
      : BlockReader(data, data.image->bandCount == 2 ? data.image->bitsPerPixel : TargetDepth(*data.image)),
        planeBits(std::uint64_t{grid.width} * grid.height),
        blockBytes((planeBits * std::max(image.bandCount, 1U) + 7) / 8) {}

 private:
  /** Of two bands one is shown. More have no bi-level picture. */
  std::int32_t Prepare() override {
    if (image.maskDataOffset > source.dataLength) return ERROR_FILE_FORMAT;
    if (!source.Holds(source.dataLength)) return ERROR_FILE_READ;
    if (image.bandCount < 2) return SUCCESS;
    const bool planesFollow = image.mode == kBlockInterleaved || (image.mode == kBandSequential && grid.IsSingle());
    if (image.bandCount > 2 || !planesFollow) return ERROR_NOT_SUPPORTED;
    BandOrder order{};
    ChooseBands(image, &order);
    band = order.first;
    return SUCCESS;
  }

  /** Without an entry in the masks a block follows the one before it; a blank entry of TMR counts from the start. */
  std::int64_t StartOf(std::uint64_t block) override {
    if (mask.IsAbsent(block)) return kAbsent;
    const std::uint64_t next = mask.HasPadMask() ? consumed : offsetBefore + consumed;
    offsetBefore = mask.Offset(block).value_or(next);
    consumed = blockBytes;
    return static_cast<std::int64_t>(offsetBefore);
  }

  void Rewind() override { offsetBefore = consumed = 0; }

  std::int32_t Check(std::int64_t start) const override {
    return static_cast<std::uint64_t>(start) + blockBytes > source.dataLength ? ERROR_FILE_FORMAT : SUCCESS;
  }

  std::int32_t ReadRows(std::int64_t start, std::uint32_t first, std::uint32_t rows) override {
    const std::uint64_t from = band * planeBits + std::uint64_t{first} * grid.width;
    const std::uint64_t end = from + std::uint64_t{rows} * grid.width;
    const std::uint64_t bytes = (end + 7) / 8 - from / 8;
    std::uint8_t *packed = Buffer(bytes);
    if (packed == nullptr) return ERROR_NO_MEMORY;
    const std::int32_t status = source.Read(start + static_cast<std::int64_t>(from / 8), packed, bytes);
    if (status != SUCCESS) return status;
    for (std::uint32_t row = 0; row < rows; ++row) {
      UnpackBits(packed, from % 8 + std::uint64_t{row} * grid.width, grid.width, out.Row(row));
    }
    return SUCCESS;
  }

  std::uint64_t planeBits;
  std::uint64_t blockBytes;
  std::uint32_t band = 0;
  std::uint64_t offsetBefore = 0;
  std::uint64_t consumed = 0;
};

}  // namespace

std::unique_ptr<BlockReader> MakeBilevelReader(const ImageSource &source) {
  return std::unique_ptr<BlockReader>(new (std::nothrow) BilevelReader(source));
}
