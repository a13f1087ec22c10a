#include "strips.h"

#include <algorithm>

namespace {

std::uint32_t RowsPerStrip(const BlockGrid &grid, std::uint64_t bytesPerLine) {
  const std::uint64_t rows = std::max<std::uint64_t>(kStripBytes / std::max<std::uint64_t>(bytesPerLine, 1), 1);
  return static_cast<std::uint32_t>(std::min<std::uint64_t>(rows, grid.height));
}

/** Does `work` for each strip of an image: the row of blocks, the first row of it, the number of rows. */
template <class Work>
std::int32_t ForEachStrip(const BlockGrid &grid, std::uint32_t rowsPerStrip, Work work) {
  for (std::uint32_t blockRow = 0; blockRow < grid.down; ++blockRow) {
    for (std::uint32_t first = 0; first < grid.height; first += rowsPerStrip) {
      const std::int32_t status = work(blockRow, first, std::min(rowsPerStrip, grid.height - first));
      if (status != SUCCESS) return status;
    }
  }
  return SUCCESS;
}

/** Fills one strip after the other and hands them on. */
class StripPass {
 public:
  StripPass(BlockReader &blockReader, const ImageSubheader &header, ImagePartSink &partSink)
      : reader(blockReader), image(header), sink(partSink) {}

  std::int32_t Run() {
    const BlockGrid &grid = reader.Grid();
    rowsPerStrip = RowsPerStrip(grid, PaddedWidth(image) * TargetDepth(image) / 8);
    return ForEachStrip(grid, rowsPerStrip, [&](std::uint32_t blockRow, std::uint32_t first, std::uint32_t rows) {
      const std::uint32_t top = blockRow * grid.height + first;
      KsLocalBitmap lent;
      const bool direct = TargetDepth(image) == kFullColour && !reader.HasGaps() && sink.Lend(lent.Get(), top, rows);
      return direct ? reader.ReadStrip(lent.Get(), blockRow, first, rows) : ThroughStrip(blockRow, first, top, rows);
    });
  }

 private:
  static constexpr std::uint32_t kFullColour = 24;

  std::int32_t ThroughStrip(std::uint32_t blockRow, std::uint32_t first, std::uint32_t top, std::uint32_t rows) {
    std::int32_t status = PrepareStrip();
    if (status == SUCCESS) status = reader.ReadStrip(strip.Get(), blockRow, first, rows);
    return status == SUCCESS ? sink.Place(strip.Get(), top, rows) : status;
  }

  std::int32_t PrepareStrip() {
    if ((strip->flags & KS_BITMAP_ALLOCATED) == 0) {
      const std::int32_t status = CreateTarget(strip.Get(), image, PaddedWidth(image), rowsPerStrip);
      return status == SUCCESS ? KsBitmapAccess(strip.Get(), 0) : status;
    }
    if (reader.HasGaps()) KsBitmapClear(strip.Get());
    return SUCCESS;
  }

  BlockReader &reader;
  const ImageSubheader &image;
  ImagePartSink &sink;
  KsLocalBitmap strip{};
  std::uint32_t rowsPerStrip = 0;
};

}  // namespace

std::int32_t ReadWhole(BlockReader &reader, KsBitmap *target) {
  std::int32_t status = reader.Open();
  if (status == SUCCESS) status = KsBitmapAccess(target, 0);
  if (status != SUCCESS) return status;
  const BlockGrid &grid = reader.Grid();
  status = ForEachStrip(grid, RowsPerStrip(grid, target->bytesPerLine),
                        [&](std::uint32_t blockRow, std::uint32_t first, std::uint32_t rows) {
                          KsLocalBitmap view;
                          const std::int32_t made = KsBitmapView(view.Get(), sizeof(KsBitmap), target, 0,
                                                                 blockRow * grid.height + first, target->width, rows);
                          return made == SUCCESS ? reader.ReadStrip(view.Get(), blockRow, first, rows) : made;
                        });
  KsBitmapRelease(target, 1, 1);
  return status;
}

std::int32_t ReadInStrips(BlockReader &reader, const ImageSubheader &image, ImagePartSink &sink) {
  // An image that would make no bitmap by itself is refused in strips too.
  std::int32_t status = CheckTargetSize(image);
  if (status == SUCCESS) status = reader.Open();
  return status == SUCCESS ? StripPass(reader, image, sink).Run() : status;
}
