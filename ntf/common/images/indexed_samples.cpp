#include "images/indexed_samples.h"

#include "images/block_grid.h"
#include "images/block_starts.h"
#include "images/codec_streams.h"
#include "images/image_source.h"
#include "images/streams.h"
#include "images/vq.h"

#include <algorithm>
#include <cstring>
#include <new>

namespace ksntfx {

namespace {

/** The same bytes as the readers of bitmaps know them. Their data end at 4 GiB, and so do those of these kinds. */
ImageSource SourceOf(const ImageData &data) {
  const auto length = static_cast<std::uint32_t>(std::min<std::uint64_t>(data.length, UINT32_MAX));
  return {data.file, data.image, length, static_cast<std::int64_t>(data.start), data.fileSize};
}

/** The stream is decoded whole, once. */
class BilevelSamples final : public SampleReader {
 public:
  explicit BilevelSamples(const ImageData &source) : data(source), image(*source.image) {}

  Status Open() override {
    if (image.bandCount != 1 || image.rows == 0 || image.columns == 0) return ERROR_FILE_FORMAT;
    shape = {image.rows, image.columns, 1, SampleType::Uint8, 1, image.columns, image.rows};
    return data.SampleBytes() > UINT32_MAX ? ERROR_NOT_SUPPORTED : SUCCESS;
  }

  Status Read(const BlockPart &part, std::span<const std::uint32_t> bands, const SampleTarget &target,
              bool *recorded) override {
    *recorded = true;
    if (!isDecoded) {
      const Status status = Decode();
      if (status != SUCCESS) return status;
      isDecoded = true;
    }
    for (std::size_t band = 0; band < bands.size(); ++band) {
      for (std::uint32_t row = 0; row < part.rows; ++row) ReadRow(part, row, target.Row(band, row), target.columnStep);
    }
    return SUCCESS;
  }

 private:
  Status Decode() {
    KsArray<std::uint8_t> stream;
    const std::uint64_t bytes = data.HeldBytes();
    if (bytes < data.SampleBytes() && !data.fillsMissing) return ERROR_FILE_READ;
    if (!stream.Allocate(bytes)) return ERROR_NO_MEMORY;
    Status status = data.Read(0, stream.Get(), bytes);
    if (status == SUCCESS) {
      KsBitmapFree(bitmap.Get());  // what a call that failed has left
      status = KsBitmapCreate(bitmap.Get(), sizeof(KsBitmap), KS_BITMAP_OWN, image.columns, image.rows, 1,
                              KS_ORDER_PALETTE, nullptr, 1, nullptr, 0);
    }
    if (status != SUCCESS) return status;
    return DecodeBilevel(LoadFunctions(nullptr), image, stream.Get(), static_cast<std::uint32_t>(bytes), bitmap.Get());
  }

  /** The codec's 1 is white, where the format's is black. */
  void ReadRow(const BlockPart &part, std::uint32_t row, std::uint8_t *to, std::int64_t step) const {
    const std::uint8_t *const bits = bitmap->pixels + std::uint64_t{part.firstRow + row} * bitmap->bytesPerLine;
    for (std::uint32_t at = 0; at < part.columns; ++at, to += step) {
      const std::uint32_t column = part.firstColumn + at;
      *to = (bits[column / 8] >> (7 - column % 8) & 1) == 0 ? 1 : 0;
    }
  }

  const ImageData &data;
  const ImageSubheader &image;
  KsLocalBitmap bitmap;
  bool isDecoded = false;
};

/** Whole blocks through the reader of their bitmaps, whose pixels are the samples. */
class VqSamples final : public SampleReader {
 public:
  explicit VqSamples(const ImageData &data) : image(*data.image), source(SourceOf(data)) {}

  Status Open() override {
    reader = MakeVqReader(source);
    if (reader == nullptr) return ERROR_NO_MEMORY;
    if (image.bandCount != 1) return ERROR_NOT_SUPPORTED;
    const Status status = reader->Open();
    if (status != SUCCESS) return status;
    const BlockGrid grid(image);
    shape = {image.rows, image.columns, 1, SampleType::Uint8, kVqDepth, grid.width, grid.height};
    return grid.across < shape.Across() || grid.down < shape.Down() ? ERROR_FILE_FORMAT : SUCCESS;
  }

  Status Read(const BlockPart &part, std::span<const std::uint32_t> bands, const SampleTarget &target,
              bool *recorded) override {
    const std::uint32_t unit = reader->Shape().rowUnit;
    const std::uint32_t first = part.firstRow / unit * unit;
    const std::uint32_t rows = part.firstRow + part.rows - first;
    std::uint8_t *const pixels = buffer.AtLeast(std::uint64_t{rows} * shape.blockWidth);
    if (pixels == nullptr) return ERROR_NO_MEMORY;
    std::memset(pixels, 0, std::uint64_t{rows} * shape.blockWidth);
    StoredRows stored;
    const Status status =
        reader->Read({part.block, first, rows}, {nullptr, 0, pixels, shape.blockWidth, kVqDepth}, &stored);
    *recorded = status == SUCCESS && stored.form != StoredRows::Form::Absent;
    if (!*recorded) return status;
    for (std::size_t band = 0; band < bands.size(); ++band) {
      for (std::uint32_t row = 0; row < part.rows; ++row) {
        const std::uint8_t *const from = pixels + std::uint64_t{part.firstRow - first + row} * shape.blockWidth;
        std::uint8_t *to = target.Row(band, row);
        for (std::uint32_t column = 0; column < part.columns; ++column, to += target.columnStep) {
          *to = from[part.firstColumn + column];
        }
      }
    }
    return SUCCESS;
  }

 private:
  const ImageSubheader &image;
  ImageSource source;
  std::unique_ptr<ImageReader> reader;
  RowBuffer buffer;
};

}  // namespace

std::unique_ptr<SampleReader> MakeBilevelSamples(const ImageData &data) {
  return std::unique_ptr<SampleReader>(new (std::nothrow) BilevelSamples(data));
}

std::unique_ptr<SampleReader> MakeVqSamples(const ImageData &data) {
  return std::unique_ptr<SampleReader>(new (std::nothrow) VqSamples(data));
}

}  // namespace ksntfx
