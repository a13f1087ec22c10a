#include "images/raw_image.h"

#include "images/block_grid.h"
#include "images/indexed_samples.h"
#include "images/pad_value.h"
#include "images/plain_samples.h"
#include "images/stream_samples.h"

#include <algorithm>
#include <cstring>

namespace ksntfx {

Status RawImage::MakeReader() {
  switch (KindOf(*data.image).layout) {
    case ImageLayout::None:
      return ERROR_NOT_SUPPORTED;
    case ImageLayout::PlainBlocks:
      reader = MakePlainSamples(data);
      break;
    case ImageLayout::BilevelStream:
      reader = MakeBilevelSamples(data);
      break;
    case ImageLayout::VectorQuantised:
      reader = MakeVqSamples(data);
      break;
    case ImageLayout::Tiles:
      reader = BlockGrid(*data.image).IsSingle() && data.image->mode != kBandSequential ? MakeStreamSamples(data)
                                                                                        : MakeTileSamples(data);
      break;
    case ImageLayout::OneStream:
      reader = MakeStreamSamples(data);
      break;
  }
  return reader == nullptr ? ERROR_NO_MEMORY : SUCCESS;
}

Status RawImage::Open() {
  Status status = MakeReader();
  if (status == SUCCESS) status = reader->Open();
  if (status != SUCCESS) return status;
  const SampleShape &shape = reader->Shape();
  return shape.rows == 0 || shape.columns == 0 || shape.bands == 0 ? ERROR_FILE_FORMAT : SUCCESS;
}

Status RawImage::Read(const PixelWindow &window, std::span<const std::uint32_t> bands, const SampleTarget &target,
                      AbsentPixels *absent) {
  const SampleShape &shape = reader->Shape();
  const std::uint64_t endRow = window.firstRow + window.rows;
  const std::uint64_t endColumn = window.firstColumn + window.columns;
  for (std::uint64_t row = window.firstRow; row < endRow;) {
    const std::uint64_t blockRow = row / shape.blockHeight;
    const auto firstRow = static_cast<std::uint32_t>(row % shape.blockHeight);
    const auto rows = static_cast<std::uint32_t>(std::min<std::uint64_t>(endRow - row, shape.blockHeight - firstRow));
    for (std::uint64_t column = window.firstColumn; column < endColumn;) {
      const auto firstColumn = static_cast<std::uint32_t>(column % shape.blockWidth);
      const auto columns =
          static_cast<std::uint32_t>(std::min<std::uint64_t>(endColumn - column, shape.blockWidth - firstColumn));
      const BlockPart part = {blockRow * shape.Across() + column / shape.blockWidth, firstRow, firstColumn, rows,
                              columns};
      const PixelWindow place = {row - window.firstRow, column - window.firstColumn, rows, columns};
      const SampleTarget to = target.At(place.firstRow, place.firstColumn);
      bool recorded = false;
      const Status status = ReadBlock(part, bands, to, &recorded);
      if (status != SUCCESS) return status;
      if (!recorded && absent != nullptr) absent->Add(place);
      column += columns;
    }
    row += rows;
  }
  return SUCCESS;
}

/** In mode S a block may be recorded in some of the bands alone, so they are read one by one. */
Status RawImage::ReadBlock(const BlockPart &part, std::span<const std::uint32_t> bands, const SampleTarget &target,
                           bool *recorded) {
  const ImageLayout layout = KindOf(*data.image).layout;
  const bool hasPlanes =
      data.image->mode == kBandSequential && (layout == ImageLayout::PlainBlocks || layout == ImageLayout::Tiles);
  const std::size_t step = hasPlanes ? 1 : bands.size();
  for (std::size_t at = 0; at < bands.size(); at += step) {
    SampleTarget plane = target;
    plane.samples = target.Row(at, 0);
    bool isHeld = false;
    const Status status = reader->Read(part, bands.subspan(at, step), plane, &isHeld);
    if (status != SUCCESS) return status;
    if (!isHeld) Fill(plane, step, part);
    *recorded = *recorded || isHeld;
  }
  return SUCCESS;
}

void RawImage::Fill(const SampleTarget &target, std::size_t bands, const BlockPart &part) const {
  const PadValue pad(*data.image, reader->Shape());
  const std::uint32_t bytes = BytesOf(reader->Shape().type);
  for (std::size_t band = 0; band < bands; ++band) {
    for (std::uint32_t row = 0; row < part.rows; ++row) {
      std::uint8_t *to = target.Row(band, row);
      for (std::uint32_t column = 0; column < part.columns; ++column, to += target.columnStep) {
        std::memcpy(to, pad.Sample(), bytes);
      }
    }
  }
}

}  // namespace ksntfx
