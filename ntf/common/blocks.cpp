#include "blocks.h"

#include "imgmodes.h"

std::int32_t BlockRows::Begin(KsBitmap *stripBitmap, std::int32_t left, std::uint32_t rows) {
  strip = stripBitmap;
  stripLeft = left;
  rowCount = rows;
  direct = rowDepth == strip->bitsPerPixel && rowDepth % 8 == 0;
  if (!direct) return BeginBlock(rows);
  firstRow = strip->pixels + static_cast<std::uint64_t>(left) * (rowDepth / 8);
  rowStep = strip->bytesPerLine;
  return SUCCESS;
}

std::int32_t BlockRows::BeginBlock(std::uint32_t rows) {
  if (block->height < rows) {
    KsBitmapFree(block.Get());
    const std::int32_t status = KsBitmapCreate(block.Get(), sizeof(KsBitmap), KS_BITMAP_OWN, blockWidth, rows, rowDepth,
                                               strip->order, nullptr, 1, nullptr, 0);
    if (status != SUCCESS) return status;
    if (rowDepth != strip->bitsPerPixel) SetImagePalette(block.Get(), image);
    // The rows are written as they come, from here on.
    KsBitmapAccess(block.Get(), 0);
  }
  firstRow = block->pixels;
  rowStep = block->bytesPerLine;
  return SUCCESS;
}

std::int32_t BlockRows::End() {
  if (direct) return SUCCESS;
  return KsCombine(strip, stripLeft, 0, static_cast<std::int32_t>(blockWidth), static_cast<std::int32_t>(rowCount),
                   block.Get(), 0, 0, KS_COMBINE_COPY, 0);
}

std::int32_t BlockReader::Open() {
  std::int32_t status = Prepare();
  const std::uint64_t blocks = grid.IsSingle() ? grid.count : mask.Visited(grid.count);
  for (std::uint64_t block = 0; block < blocks && status == SUCCESS; ++block) {
    const std::int64_t start = StartOf(block);
    if (start != kAbsent) status = Check(start + image.maskDataOffset);
  }
  Rewind();
  return status;
}

std::int32_t BlockReader::ReadStrip(KsBitmap *strip, std::uint32_t blockRow, std::uint32_t first, std::uint32_t rows) {
  std::int32_t status = LocateRow(blockRow);
  for (std::uint32_t column = 0; column < grid.across && status == SUCCESS; ++column) {
    if (starts[column] == kAbsent) continue;
    status = out.Begin(strip, static_cast<std::int32_t>(column * grid.width), rows);
    if (status == SUCCESS) status = ReadRows(starts[column] + image.maskDataOffset, first, rows);
    if (status == SUCCESS) status = out.End();
  }
  return status;
}

std::int32_t BlockReader::LocateRow(std::uint32_t blockRow) {
  if (locatedRow == blockRow) return SUCCESS;
  if (!starts && !starts.Allocate(grid.across)) return ERROR_NO_MEMORY;
  for (std::uint32_t column = 0; column < grid.across; ++column) {
    starts[column] = StartOf(std::uint64_t{blockRow} * grid.across + column);
  }
  locatedRow = blockRow;
  return SUCCESS;
}

std::uint8_t *BlockReader::Buffer(std::uint64_t bytes) {
  if (bytes > bufferBytes) bufferBytes = buffer.Allocate(bytes) ? bytes : 0;
  return buffer.Get();
}
