#include "headers/mask_table.h"
#include "images/block_grid.h"
#include "images/stream_samples.h"
#include "images/tile_index.h"

#include <algorithm>
#include <new>
#include <optional>

namespace ksntfx {

namespace {

/** A stream for each block, or in mode S for each block of each band. */
class TileSamples final : public SampleReader {
 public:
  explicit TileSamples(const ImageData &source) : data(source), image(*source.image), grid(image) {}

  /** The first stream that is recorded says of which type the samples are. */
  Status Open() override {
    if (grid.width == 0 || grid.height == 0 || image.bandCount == 0) return ERROR_FILE_FORMAT;
    shape = {image.rows, image.columns, image.bandCount, SampleType::Uint8, 8, grid.width, grid.height};
    shape.readsWholeBlocks = true;
    if (grid.across < shape.Across() || grid.down < shape.Down()) return ERROR_FILE_FORMAT;
    const std::uint64_t tiles = grid.count * (HasStreamForEachBand() ? image.bandCount : 1);
    Status status = index.Build(data, tiles);
    if (status != SUCCESS) return status;
    std::optional<StreamPlace> first;
    for (std::uint64_t tile = 0; tile < tiles && !first; ++tile) first = index.Find(tile);
    if (!first) return index.IsComplete() ? SUCCESS : ERROR_FILE_FORMAT;
    OpenStream stream;
    status = stream.Open(data, *first);
    if (status != SUCCESS) return status;
    shape.isRgb = stream.Info().isConverted != 0 || stream.Info().color == KS_SAMPLES_COLOR_RGB;
    if (stream.Info().components < BandsOfStream()) return ERROR_FILE_FORMAT;
    return stream.FindType(&shape.type, &shape.bits) ? SUCCESS : ERROR_NOT_SUPPORTED;
  }

  Status Read(const BlockPart &part, std::span<const std::uint32_t> bands, const SampleTarget &target,
              bool *recorded) override {
    *recorded = false;
    if (!HasStreamForEachBand()) return ReadTile(part.block, part, bands, target, recorded);
    constexpr std::uint32_t kOnly[] = {0};
    for (std::size_t at = 0; at < bands.size(); ++at) {
      SampleTarget plane = target;
      plane.samples = target.Row(at, 0);
      const Status status = ReadTile(bands[at] * grid.count + part.block, part, kOnly, plane, recorded);
      if (status != SUCCESS) return status;
    }
    return SUCCESS;
  }

 private:
  bool HasStreamForEachBand() const { return image.mode == kBandSequential && image.bandCount > 1; }
  std::uint32_t BandsOfStream() const { return HasStreamForEachBand() ? 1 : image.bandCount; }

  /** A tile may be smaller than its block; the rest of the block is 0. */
  Status ReadTile(std::uint64_t tile, const BlockPart &part, std::span<const std::uint32_t> bands,
                  const SampleTarget &target, bool *recorded) {
    const std::optional<StreamPlace> place = index.Find(tile);
    if (!place) return index.IsComplete() || data.fillsMissing ? SUCCESS : ERROR_FILE_FORMAT;
    *recorded = true;
    OpenStream stream;
    const Status status = stream.Open(data, *place);
    if (status != SUCCESS) return status;
    const KsSamplesInfo &info = stream.Info();
    if (info.components < BandsOfStream()) return ERROR_FILE_FORMAT;
    const std::uint32_t rows = part.firstRow < info.rows ? std::min(part.rows, info.rows - part.firstRow) : 0;
    const std::uint32_t columns =
        part.firstColumn < info.columns ? std::min(part.columns, info.columns - part.firstColumn) : 0;
    if (rows < part.rows || columns < part.columns)
      ClearSamples(target, bands.size(), part.rows, part.columns, shape.type);
    if (rows == 0 || columns == 0) return SUCCESS;
    return stream.Read({part.firstRow, part.firstColumn, rows, columns, 0}, bands, target, shape.type);
  }

  const ImageData &data;
  const ImageSubheader &image;
  BlockGrid grid;
  TileIndex index;
};

}  // namespace

std::unique_ptr<SampleReader> MakeTileSamples(const ImageData &data) {
  return std::unique_ptr<SampleReader>(new (std::nothrow) TileSamples(data));
}

}  // namespace ksntfx
