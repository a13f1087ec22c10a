#include "strips.h"

#include <algorithm>

namespace {

/** The bytes of a strip: little enough to stay in a processor's cache while it is filled, converted and placed. */
constexpr std::uint64_t kStripBytes = 512 * 1024;

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

/** The rows of `target` from `top` on, as a bitmap. */
std::int32_t ViewRows(KsBitmap *target, std::uint32_t top, std::uint32_t rows, KsBitmap *view) {
  const std::uint64_t bytes = std::uint64_t{rows} * target->bytesPerLine;
  return KsBitmapCreate(view, sizeof *view, KS_BITMAP_CALLER, target->width, rows, target->bitsPerPixel, target->order,
                        nullptr, 1, target->pixels + std::uint64_t{top} * target->bytesPerLine, bytes);
}

/** An image that would make no bitmap by itself is refused in strips too. */
std::int32_t CheckImageSize(const ImageSubheader &image) {
  KsLocalBitmap whole;
  const std::uint64_t width = PaddedWidth(image);
  const std::uint64_t height = PaddedHeight(image);
  if (width > UINT32_MAX || height > UINT32_MAX) return ERROR_NO_MEMORY;
  return KsBitmapCreate(whole.Get(), sizeof(KsBitmap), KS_BITMAP_CALLER, static_cast<std::uint32_t>(width),
                        static_cast<std::uint32_t>(height), TargetDepth(image), KS_ORDER_BGR, nullptr, 1, nullptr, 0);
}

}  // namespace

std::int32_t ReadWhole(BlockReader &reader, KsBitmap *target) {
  std::int32_t status = reader.Open();
  if (status == SUCCESS) status = KsBitmapAccess(target, 0);
  if (status != SUCCESS) return status;
  const BlockGrid &grid = reader.Grid();
  status = ForEachStrip(grid, RowsPerStrip(grid, target->bytesPerLine),
                        [&](std::uint32_t blockRow, std::uint32_t first, std::uint32_t rows) {
                          KsLocalBitmap view;
                          const std::int32_t made = ViewRows(target, blockRow * grid.height + first, rows, view.Get());
                          return made == SUCCESS ? reader.ReadStrip(view.Get(), blockRow, first, rows) : made;
                        });
  KsBitmapRelease(target, 1, 1);
  return status;
}

std::int32_t ReadInStrips(BlockReader &reader, const ImageSubheader &image, const ImagePartSink &sink) {
  KsLocalBitmap strip;
  std::int32_t status = CheckImageSize(image);
  if (status == SUCCESS) status = reader.Open();
  if (status != SUCCESS) return status;
  const BlockGrid &grid = reader.Grid();
  const std::uint32_t rowsPerStrip = RowsPerStrip(grid, PaddedWidth(image) * TargetDepth(image) / 8);
  status = CreateTarget(strip.Get(), image, rowsPerStrip);
  if (status == SUCCESS) status = KsBitmapAccess(strip.Get(), 0);
  if (status != SUCCESS) return status;
  status = ForEachStrip(grid, rowsPerStrip, [&](std::uint32_t blockRow, std::uint32_t first, std::uint32_t rows) {
    if (reader.HasGaps()) KsBitmapClear(strip.Get());
    const std::int32_t read = reader.ReadStrip(strip.Get(), blockRow, first, rows);
    return read == SUCCESS ? sink(strip.Get(), blockRow * grid.height + first, rows) : read;
  });
  KsBitmapRelease(strip.Get(), 1, 1);
  return status;
}
