#include "images/tiles.h"

#include "headers/mask_table.h"
#include "images/image_target.h"
#include "images/tile_search.h"

#include <cstring>
#include <new>
#include <optional>

namespace ksntfx {

namespace {

constexpr std::uint32_t kMostSeparateBands = 4;

/**
 * What every tile of a MULTI image but the first is put behind: a start of image and an APP6 segment of the JPEG
 * profile of NITF (MIL-STD-188-198A), whose declared length reaches over the tile's own start of image.
 */
constexpr std::uint8_t kMultiBandPrefix[] = {0xFF, 0xD8, 0xFF, 0xE6, 0x00, 0x19, 0x4E, 0x49, 0x54,
                                             0x46, 0x00, 0x02, 0x00, 0x42, 0x00, 0x02, 0x00, 0x02,
                                             0x03, 0x08, 0x00, 0x01, 0x00, 0x03, 0x08, 0x01, 0x01};

bool AddPrefix(CodecStream &tile) {
  KsArray<std::uint8_t> longer;
  if (!longer.Allocate(std::uint64_t{tile.size} + sizeof kMultiBandPrefix)) return false;
  std::memcpy(longer.Get(), kMultiBandPrefix, sizeof kMultiBandPrefix);
  std::memcpy(longer.Get() + sizeof kMultiBandPrefix, tile.bytes.Get(), tile.size);
  tile.bytes = std::move(longer);
  tile.size += static_cast<std::uint32_t>(sizeof kMultiBandPrefix);
  return true;
}

/** What the readers of tiles have in common. */
class BlockStreamsReader : public ImageReader {
 public:
  BlockStreamsReader(const LoadFunctions &loadFunctions, const ImageSource &data)
      : functions(loadFunctions), source(data), image(*data.image), grid(image), mask(image, data.dataLength) {}

  Status MakeBitmap(KsBitmap *bitmap, std::uint64_t rows) override {
    return CreateTarget(bitmap, image, shape.Width(), rows);
  }

 protected:
  bool IsAbsent(std::uint64_t block) const { return mask.HasBlockMask() && mask.BlockWord(block) == kNotRecorded; }

  /** The next offset of BMR behind a block's own, or nothing where no block follows. */
  std::optional<std::uint32_t> NextOffset(std::uint64_t block) const {
    for (std::uint64_t later = block + 1; later < mask.Visited(grid.count); ++later) {
      if (mask.BlockWord(later) != kNotRecorded) return mask.BlockWord(later);
    }
    return std::nullopt;
  }

  static void Hand(KsLocalBitmap &bitmap, StoredRows *stored) {
    stored->form = StoredRows::Form::Bitmap;
    stored->bitmap = bitmap.Get();
  }

  const LoadFunctions &functions;
  const ImageSource &source;
  ImageSubheader &image;
  BlockGrid grid;
  BlockMask mask;
  KsLocalBitmap decoded;
};

/** A stream a block. */
class TileReader final : public BlockStreamsReader {
 public:
  TileReader(const LoadFunctions &loadFunctions, const ImageSource &data)
      : BlockStreamsReader(loadFunctions, data), cursor(data) {}

  Status Open() override {
    shape = ShapeOf(grid, TargetDepth(image));
    order = KS_ORDER_CODEC;
    return shape.depth == 8 || shape.depth == 24 ? SUCCESS : TakeDepthOfFirst();
  }

  Status MakeBitmap(KsBitmap *bitmap, std::uint64_t rows) override {
    if (order == KS_ORDER_CODEC) return BlockStreamsReader::MakeBitmap(bitmap, rows);
    const Status status =
        KsBitmapCreate(bitmap, sizeof *bitmap, KS_BITMAP_OWN, static_cast<std::uint32_t>(shape.Width()),
                       static_cast<std::uint32_t>(rows), shape.depth, order, nullptr, 1, nullptr, 0);
    if (status == SUCCESS) SetImagePalette(bitmap, image);
    return status;
  }

  Status Read(const BlockRows &which, const StripPlace &place, StoredRows *stored) override {
    *stored = {};
    if (!IsAbsent(which.block)) {
      CodecStream tile;
      Status status = ReadStream(which.block, &tile);
      if (status == SUCCESS && tile.IsAccepted()) {
        status = Decode(tile, place, stored);
        round = SUCCESS;
      } else {
        round = NITF_UNSUPPORTED_TILE;
      }
      if (status != SUCCESS) return status;
    }
    // A tile that is refused is forgiven when a later one of its round can be drawn.
    const bool endsRound = (which.block + 1) % grid.down == 0 || which.block + 1 == grid.count;
    return endsRound ? round : SUCCESS;
  }

 private:
  /**
   * Gives the image the depth of its first tile, where that of the header is one that only its like combines with, such
   * as 12 or 16 bits: the header may count bits that the stream doesn't have.
   */
  Status TakeDepthOfFirst() {
    Status status = SUCCESS;
    for (std::uint64_t block = 0; block < grid.count && status == SUCCESS; ++block) {
      if (IsAbsent(block)) continue;
      CodecStream tile;
      status = ReadStream(block, &tile);
      if (status != SUCCESS || !tile.IsAccepted()) continue;
      KsLocalBitmap first;
      status = tile.Load(functions, LoadOptionsFor(image), first.Get());
      if (status == SUCCESS && first->bitsPerPixel != shape.depth) {
        shape.depth = first->bitsPerPixel;
        order = first->order;
      }
      break;
    }
    cursor.Rewind();
    return status;
  }

  Status ReadStream(std::uint64_t block, CodecStream *tile) {
    if (mask.HasBlockMask()) return ReadMasked(block, tile);
    std::int64_t offset = 0;
    std::uint32_t size = 0;
    const Status status = cursor.Next(block + 1 == grid.count, false, &offset, &size);
    return status == SUCCESS ? tile->Read(source, offset, size) : status;
  }

  /** With a mask table a tile ends where the next recorded one begins, and the last one with the data. */
  Status ReadMasked(std::uint64_t block, CodecStream *tile) const {
    const std::uint32_t start = mask.BlockWord(block);
    if (const std::optional<std::uint32_t> next = NextOffset(block)) {
      return tile->Read(source, std::int64_t{image.maskDataOffset} + start, *next - start);
    }
    const std::uint32_t size = FindLastTile(source);
    return tile->Read(source, std::int64_t{source.dataLength} - size, size);
  }

  /** Right into its place where the tile has the block's size and depth, else into a bitmap of its own. */
  Status Decode(CodecStream &tile, const StripPlace &place, StoredRows *stored) {
    const KsLoadOptions options = LoadOptionsFor(image);
    if (image.representation == kMulti && drawn != 0 && !AddPrefix(tile)) return ERROR_NO_MEMORY;
    Status status = LoadInPlace(tile, options, place);
    if (status == SUCCESS) {
      stored->form = StoredRows::Form::Placed;
    } else if (status == ERROR_NOT_SUPPORTED) {
      KsBitmapFree(decoded.Get());
      status = tile.Load(functions, options, decoded.Get());
      Hand(decoded, stored);
    }
    if (status == SUCCESS) ++drawn;
    return status;
  }

  Status LoadInPlace(const CodecStream &tile, const KsLoadOptions &options, const StripPlace &place) const {
    if (!functions.IsFramework()) return ERROR_NOT_SUPPORTED;
    Status status = KsBitmapAccess(place.strip, 0);
    if (status != SUCCESS) return status;
    KsLocalBitmap view;
    status =
        KsBitmapView(view.Get(), sizeof(KsBitmap), place.strip, place.left, 0, shape.blockWidth, shape.blockHeight);
    status = status == SUCCESS
                 ? Status(KsLoadMemoryInPlace(tile.bytes.Get(), view.Get(), sizeof(KsBitmap), tile.size, &options))
                 : ERROR_NOT_SUPPORTED;
    KsBitmapRelease(place.strip, 1, 1);
    return status;
  }

  TileCursor cursor;
  std::uint32_t order = KS_ORDER_CODEC; /**< of the image's bitmap, where a tile decides it */
  Status round = SUCCESS;               /**< of the last tile of the round of blocks */
  std::uint64_t drawn = 0;
};

/** A stream for each band of a block: band after band in the data. */
class BandStreamsReader final : public BlockStreamsReader {
 public:
  using BlockStreamsReader::BlockStreamsReader;

  Status Open() override {
    shape = ShapeOf(grid, TargetDepth(image));
    if (image.bandCount > kMostSeparateBands) return ERROR_NOT_SUPPORTED;
    return mask.HasBlockMask() ? SUCCESS : LocateTiles();
  }

  Status Read(const BlockRows &which, const StripPlace &, StoredRows *stored) override {
    *stored = {};
    if (IsAbsent(which.block)) return SUCCESS;
    KsLocalBitmap bands[kMostSeparateBands];
    KsBitmap *lastToFirst[kMostSeparateBands] = {};
    Status status = SUCCESS;
    for (std::uint32_t band = 0; band < image.bandCount; ++band) {
      KsLocalBitmap &bitmap = bands[image.bandCount - 1 - band];
      const Status loaded = LoadBand(PlaceOf(which.block, band), bitmap.Get());
      if (loaded != SUCCESS && loaded != NITF_UNSUPPORTED_TILE) return loaded;
      if (loaded != SUCCESS) status = loaded;
    }
    if (status != SUCCESS) return status;
    for (std::uint32_t band = 0; band < image.bandCount; ++band) lastToFirst[band] = bands[band].Get();
    KsBitmapFree(decoded.Get());
    status = KsBandsMerge(decoded.Get(), lastToFirst, sizeof(KsBitmap), 0);
    Hand(decoded, stored);
    return status;
  }

 private:
  struct Place {
    std::int64_t offset;
    std::uint32_t size;
  };

  /** Band b of block n is tile b times the number of blocks plus n. */
  Status LocateTiles() {
    const std::uint64_t tiles = grid.count * image.bandCount;
    // No stream is shorter than its mark, and so most of these tiles are none.
    if (tiles > source.dataLength / 3) return NITF_UNSUPPORTED_TILE;
    if (!places.Allocate(tiles)) return ERROR_NO_MEMORY;
    TileCursor cursor(source);
    for (std::uint64_t tile = 0; tile < tiles; ++tile) {
      const Status status = cursor.Next(false, true, &places[tile].offset, &places[tile].size);
      if (status != SUCCESS) return status;
    }
    return SUCCESS;
  }

  Place PlaceOf(std::uint64_t block, std::uint32_t band) const {
    if (!mask.HasBlockMask()) return places[band * grid.count + block];
    // The data end at LI, which counts the mask table too.
    const std::uint32_t start = mask.BlockWord(block);
    const std::uint32_t end = NextOffset(block).value_or(source.dataLength - image.maskDataOffset);
    return {std::int64_t{image.maskDataOffset} + start, end - start};
  }

  Status LoadBand(const Place &place, KsBitmap *bitmap) const {
    CodecStream tile;
    const Status status = tile.Read(source, place.offset, place.size);
    if (status != SUCCESS) return status;
    if (!tile.IsAccepted()) return NITF_UNSUPPORTED_TILE;
    KsLoadOptions options;
    KsLoadOptionsInit(&options, sizeof options);
    if (image.representation == kRgb || image.representation == kMulti) options.loadFlags |= KS_LOAD_COLOR;
    return tile.Load(functions, options, bitmap);
  }

  KsArray<Place> places;
};

}  // namespace

std::unique_ptr<ImageReader> MakeTileReader(const LoadFunctions &functions, const ImageSource &source) {
  return std::unique_ptr<ImageReader>(new (std::nothrow) TileReader(functions, source));
}

std::unique_ptr<ImageReader> MakeBandStreamsReader(const LoadFunctions &functions, const ImageSource &source) {
  return std::unique_ptr<ImageReader>(new (std::nothrow) BandStreamsReader(functions, source));
}

}  // namespace ksntfx
