#include "tiles.h"

#include "blocks.h"
#include "tilesearch.h"

#include <algorithm>
#include <cstring>
#include <iterator>

namespace {

constexpr std::uint32_t kMostSeparateBands = 4;

/** The kinds of streams that an image segment may hold. */
constexpr std::uint32_t kTileFormats[] = {KS_FORMAT_JP2,           KS_FORMAT_JPEG,      KS_FORMAT_JPEG_12,
                                          KS_FORMAT_JPEG_422,      KS_FORMAT_JPEG_420,  KS_FORMAT_JPEG_PROGRESSIVE,
                                          KS_FORMAT_JPEG_LOSSLESS, KS_FORMAT_JPEG_MANY, KS_FORMAT_J2K};

/**
 * What every tile of a MULTI image but the first is put behind: a start of image and an APP6 segment of the JPEG
 * profile of NITF (MIL-STD-188-198A), whose declared length reaches over the tile's own start of image.
 */
constexpr std::uint8_t kMultiBandPrefix[] = {0xFF, 0xD8, 0xFF, 0xE6, 0x00, 0x19, 0x4E, 0x49, 0x54,
                                             0x46, 0x00, 0x02, 0x00, 0x42, 0x00, 0x02, 0x00, 0x02,
                                             0x03, 0x08, 0x00, 0x01, 0x00, 0x03, 0x08, 0x01, 0x01};

/** The framework's functions, or those that the caller of a load brought. */
struct LoadFunctions {
  explicit LoadFunctions(const FilterLoadRecord *context)
      : load(context == nullptr ? KsLoadMemory : context->loadFromMemory),
        setRedirect(context == nullptr ? KsSetRedirect : context->setRedirect) {}

  /** The framework can do more than a caller's function: decode into pixels that are there. */
  bool IsFramework() const { return load == KsLoadMemory; }

  NitfLoadFromMemory load;
  NitfSetRedirect setRedirect;
};

KsLoadOptions OptionsFor(ImageSubheader &image) {
  KsLoadOptions options;
  KsLoadOptionsInit(&options, sizeof options);
  if (image.representation == kRgb) options.loadFlags |= KS_LOAD_COLOR;
  if (image.representation == kMulti) {
    BandOrder order{};
    ChooseBands(image, &order);
    options.loadFlags |= KS_LOAD_BANDS;
    options.bands[0] = order.first;
    options.bands[1] = order.second;
    options.bands[2] = order.third;
  }
  return options;
}

bool IsAccepted(const Tile &tile) {
  KsFileInfo info{};
  if (tile.size == 0 || KsFileInfoMemory(tile.bytes.Get(), &info, sizeof info, tile.size, 0, 0) != SUCCESS)
    return false;
  return std::find(std::begin(kTileFormats), std::end(kTileFormats), info.formatId) != std::end(kTileFormats);
}

/** One stream is the whole image: the codec makes the bitmap, in its own size and depth. */
std::int32_t DecodeSingleStream(const LoadFunctions &functions, const ImageSource &source, KsBitmap *target) {
  const std::uint32_t offset = source.image->maskDataOffset;
  if (offset > source.dataLength) return ERROR_FILE_FORMAT;
  Tile stream;
  std::int32_t status = stream.Read(source, offset, source.dataLength - offset);
  if (status != SUCCESS) return status;
  const KsLoadOptions options = OptionsFor(*source.image);
  if ((target->flags & KS_BITMAP_ALLOCATED) != 0) KsBitmapFree(target);
  status =
      functions.load(stream.bytes.Get(), target, sizeof *target, 0, KS_ORDER_CODEC, stream.size, &options, nullptr);
  // The codec's grays are the indices of an image with a lookup table.
  if (status != SUCCESS) return status;
  SetImagePalette(target, *source.image);
  // A picture that was made smaller covers the place that its header tells.
  if (source.image->compression == kI1) target->flags |= KS_BITMAP_ENLARGED;
  return SUCCESS;
}

/** What the two walks over the blocks of an image have in common. */
class TileDecoder {
 public:
  TileDecoder(const LoadFunctions &loadFunctions, const ImageSource &data, KsBitmap *bitmap)
      : functions(loadFunctions), source(data), image(*data.image), target(bitmap), grid(image), mask(data) {}

 protected:
  /** The next offset of BMR behind a block's own, or nothing where no block follows. */
  std::optional<std::uint32_t> NextOffset(std::uint64_t block) const {
    for (std::uint64_t later = block + 1; later < mask.Visited(grid.count); ++later) {
      if (mask.BlockWord(later) != kNotRecorded) return mask.BlockWord(later);
    }
    return std::nullopt;
  }

  std::int32_t Load(const Tile &tile, const KsLoadOptions &options, KsBitmap *bitmap) const {
    return functions.load(tile.bytes.Get(), bitmap, sizeof *bitmap, 0, KS_ORDER_CODEC, tile.size, &options, nullptr);
  }

  /**
   * Gives a target of a depth that only its like combines with, such as 12 or 16 bits, that of the first tile: the
   * header may count bits that the stream doesn't have.
   */
  std::int32_t TakeDepthOf(const KsBitmap &first) {
    const std::uint32_t bits = target->bitsPerPixel;
    if (bits == 8 || bits == 24 || bits == first.bitsPerPixel) return SUCCESS;
    const std::uint32_t width = target->width;
    const std::uint32_t height = target->height;
    KsBitmapFree(target);
    const std::int32_t status = KsBitmapCreate(target, sizeof *target, KS_BITMAP_OWN, width, height, first.bitsPerPixel,
                                               first.order, nullptr, 1, nullptr, 0);
    if (status == SUCCESS) SetImagePalette(target, image);
    return status;
  }

  /** Where a block begins in the target. */
  std::uint32_t LeftOf(std::uint64_t block) const {
    return static_cast<std::uint32_t>(block % grid.across * grid.width);
  }
  std::uint32_t TopOf(std::uint64_t block) const {
    return static_cast<std::uint32_t>(block / grid.across * grid.height - targetTop);
  }

  /** Puts a block into its place and releases its pixels. */
  std::int32_t Place(KsLocalBitmap &bitmap, std::uint64_t block) {
    bitmap->order = target->order;
    const std::int32_t status =
        KsCombine(target, static_cast<std::int32_t>(LeftOf(block)), static_cast<std::int32_t>(TopOf(block)),
                  static_cast<std::int32_t>(bitmap->width), static_cast<std::int32_t>(bitmap->height), bitmap.Get(), 0,
                  0, KS_COMBINE_COPY, 0);
    KsBitmapFree(bitmap.Get());
    return status;
  }

  const LoadFunctions &functions;
  const ImageSource &source;
  ImageSubheader &image;
  KsBitmap *target;
  std::uint64_t targetTop = 0; /**< the row of the image that the target begins with */
  BlockGrid grid;
  BlockMask mask;
};

/** A stream a block. */
class TileWalk : public TileDecoder {
 public:
  using TileDecoder::TileDecoder;

  /** With a sink the target holds one row of blocks, and goes there when it is complete. */
  std::int32_t Run(ImagePartSink *partSink) {
    sink = partSink;
    TileCursor cursor(source);
    std::int32_t status = SUCCESS;
    for (std::uint64_t block = 0; block < grid.count; ++block) {
      if (block % grid.across == 0) BeginRow(block / grid.across);
      const bool isAbsent = mask.HasBlockMask() && mask.BlockWord(block) == kNotRecorded;
      if (isAbsent) {
        const std::int32_t blanked = Blank(block);
        if (blanked != SUCCESS) return blanked;
      } else {
        Tile tile;
        const std::int32_t read = mask.HasBlockMask() ? ReadMasked(block, &tile) : ReadNext(cursor, block, &tile);
        if (read != SUCCESS) return read;
        status = IsAccepted(tile) ? Draw(tile, block) : Refuse(block);
        if (status != SUCCESS && status != NITF_UNSUPPORTED_TILE) return status;
      }
      // A tile that is refused is forgiven when a later one of its round can be drawn.
      const bool endsRound = (block + 1) % grid.down == 0;
      if (endsRound && status != SUCCESS) return status;
      const bool endsRow = (block + 1) % grid.across == 0;
      const std::int32_t ended = endsRow ? EndRow() : static_cast<std::int32_t>(SUCCESS);
      if (ended != SUCCESS) return ended;
    }
    return status;
  }

 private:
  /** Full colour goes right into its place where that can be had. */
  void BeginRow(std::uint64_t row) {
    if (sink == nullptr) return;
    targetTop = row * grid.height;
    isLent = TargetDepth(image) == 24 && sink->Lend(lent.Get(), static_cast<std::uint32_t>(targetTop), grid.height);
    target = isLent ? lent.Get() : held;
  }

  std::int32_t EndRow() {
    if (sink == nullptr || isLent) return SUCCESS;
    return sink->Place(target, static_cast<std::uint32_t>(targetTop), target->height);
  }

  /** Clears the place of a block that no tile covers: a target of one row has that of the row before. */
  std::int32_t Blank(std::uint64_t block) {
    if (sink == nullptr) return SUCCESS;
    KsLocalBitmap empty;
    const std::int32_t status = KsBitmapCreate(empty.Get(), sizeof(KsBitmap), KS_BITMAP_OWN, grid.width, grid.height,
                                               target->bitsPerPixel, target->order, nullptr, 1, nullptr, 0);
    return status == SUCCESS ? Place(empty, block) : status;
  }

  bool Covers(const KsBitmap &bitmap) const { return bitmap.width >= grid.width && bitmap.height >= grid.height; }

  std::int32_t ReadNext(TileCursor &cursor, std::uint64_t block, Tile *tile) {
    std::int64_t offset = 0;
    std::uint32_t size = 0;
    const std::int32_t status = cursor.Next(block + 1 == grid.count, false, &offset, &size);
    return status == SUCCESS ? tile->Read(source, offset, size) : status;
  }

  /** With a mask table a tile ends where the next recorded one begins, and the last one with the data. */
  std::int32_t ReadMasked(std::uint64_t block, Tile *tile) {
    const std::uint32_t start = mask.BlockWord(block);
    if (const std::optional<std::uint32_t> next = NextOffset(block)) {
      return tile->Read(source, std::int64_t{image.maskDataOffset} + start, *next - start);
    }
    std::uint32_t size = 0;
    FindLastTile(source, &size);
    return tile->Read(source, std::int64_t{source.dataLength} - size, size);
  }

  std::int32_t Draw(Tile &tile, std::uint64_t block) {
    const KsLoadOptions options = OptionsFor(image);
    if (image.representation == kMulti && drawn != 0 && !AddPrefix(tile)) return ERROR_NO_MEMORY;
    std::int32_t status = LoadInPlace(tile, options, block);
    if (status == ERROR_NOT_SUPPORTED) status = LoadAndPlace(tile, options, block);
    if (status == SUCCESS) ++drawn;
    return status;
  }

  /** By way of a bitmap of the tile's own, which may have another size and depth. */
  std::int32_t LoadAndPlace(const Tile &tile, const KsLoadOptions &options, std::uint64_t block) {
    KsLocalBitmap bitmap;
    std::int32_t status = Load(tile, options, bitmap.Get());
    if (status == SUCCESS && drawn == 0) status = TakeDepthOf(*bitmap.Get());
    if (status == SUCCESS && !Covers(*bitmap.Get())) status = Blank(block);
    return status == SUCCESS ? Place(bitmap, block) : status;
  }

  /** Right into its place; ERROR_NOT_SUPPORTED where the tile has another size or depth. */
  std::int32_t LoadInPlace(const Tile &tile, const KsLoadOptions &options, std::uint64_t block) const {
    if (!functions.IsFramework()) return ERROR_NOT_SUPPORTED;
    std::int32_t status = KsBitmapAccess(target, 0);
    if (status != SUCCESS) return status;
    KsLocalBitmap place;
    status = KsBitmapView(place.Get(), sizeof(KsBitmap), target, LeftOf(block), TopOf(block), grid.width, grid.height);
    status = status == SUCCESS
                 ? KsLoadMemoryInPlace(tile.bytes.Get(), place.Get(), sizeof(KsBitmap), tile.size, &options)
                 : static_cast<std::int32_t>(ERROR_NOT_SUPPORTED);
    KsBitmapRelease(target, 1, 1);
    return status;
  }

  std::int32_t Refuse(std::uint64_t block) {
    const std::int32_t status = Blank(block);
    return status == SUCCESS ? static_cast<std::int32_t>(NITF_UNSUPPORTED_TILE) : status;
  }

  static bool AddPrefix(Tile &tile) {
    KsArray<std::uint8_t> longer;
    if (!longer.Allocate(std::uint64_t{tile.size} + sizeof kMultiBandPrefix)) return false;
    std::memcpy(longer.Get(), kMultiBandPrefix, sizeof kMultiBandPrefix);
    std::memcpy(longer.Get() + sizeof kMultiBandPrefix, tile.bytes.Get(), tile.size);
    tile.bytes = std::move(longer);
    tile.size += static_cast<std::uint32_t>(sizeof kMultiBandPrefix);
    return true;
  }

  ImagePartSink *sink = nullptr;
  KsBitmap *held = target; /**< the target that is the caller's */
  KsLocalBitmap lent;
  bool isLent = false;
  std::uint64_t drawn = 0;
};

/** A stream for each band of a block: band after band in the data. */
class BandWalk : public TileDecoder {
 public:
  using TileDecoder::TileDecoder;

  std::int32_t Run() {
    if (image.bandCount > kMostSeparateBands) return ERROR_NOT_SUPPORTED;
    std::int32_t status = mask.HasBlockMask() ? static_cast<std::int32_t>(SUCCESS) : LocateTiles();
    for (std::uint64_t block = 0; block < grid.count && status == SUCCESS; ++block) {
      if (mask.HasBlockMask() && mask.BlockWord(block) == kNotRecorded) continue;
      status = DrawBlock(block);
    }
    return status;
  }

 private:
  struct Place {
    std::int64_t offset;
    std::uint32_t size;
  };

  /** Band b of block n is tile b times the number of blocks plus n. */
  std::int32_t LocateTiles() {
    const std::uint64_t tiles = grid.count * image.bandCount;
    // No stream is shorter than its mark.
    if (tiles > source.dataLength / 3) return ERROR_FILE_READ;
    if (!places.Allocate(tiles)) return ERROR_NO_MEMORY;
    TileCursor cursor(source);
    for (std::uint64_t tile = 0; tile < tiles; ++tile) {
      const std::int32_t status = cursor.Next(false, tile + 1 == tiles, &places[tile].offset, &places[tile].size);
      if (status != SUCCESS) return status;
    }
    return SUCCESS;
  }

  Place PlaceOf(std::uint64_t block, std::uint32_t band) const {
    if (!mask.HasBlockMask()) return places[band * grid.count + block];
    const std::uint32_t start = mask.BlockWord(block);
    const std::uint32_t end = NextOffset(block).value_or(source.dataLength);
    return {std::int64_t{image.maskDataOffset} + start, end - start};
  }

  std::int32_t DrawBlock(std::uint64_t block) {
    KsLocalBitmap bands[kMostSeparateBands];
    KsBitmap *lastToFirst[kMostSeparateBands] = {};
    std::int32_t status = SUCCESS;
    for (std::uint32_t band = 0; band < image.bandCount; ++band) {
      KsLocalBitmap &bitmap = bands[image.bandCount - 1 - band];
      const std::int32_t loaded = LoadBand(PlaceOf(block, band), bitmap.Get());
      if (loaded != SUCCESS && loaded != NITF_UNSUPPORTED_TILE) return loaded;
      if (loaded != SUCCESS) status = loaded;
    }
    if (status != SUCCESS) return status;
    for (std::uint32_t band = 0; band < image.bandCount; ++band) lastToFirst[band] = bands[band].Get();
    KsLocalBitmap merged;
    status = KsBandsMerge(merged.Get(), lastToFirst, sizeof(KsBitmap), 0);
    return status == SUCCESS ? TileDecoder::Place(merged, block) : status;
  }

  std::int32_t LoadBand(const Place &place, KsBitmap *bitmap) const {
    Tile tile;
    const std::int32_t status = tile.Read(source, place.offset, place.size);
    if (status != SUCCESS) return status;
    if (!IsAccepted(tile)) return NITF_UNSUPPORTED_TILE;
    KsLoadOptions options;
    KsLoadOptionsInit(&options, sizeof options);
    if (image.representation == kRgb || image.representation == kMulti) options.loadFlags |= KS_LOAD_COLOR;
    return Load(tile, options, bitmap);
  }

  KsArray<Place> places;
};

/** What the redirect callback tells of a bi-level stream. */
struct RawPicture {
  std::uint32_t format;
  std::uint32_t width;
  std::uint32_t height;
};

std::int32_t DescribeRaw(KsRawFormatInfo *info, void *userData) {
  const auto &picture = *static_cast<const RawPicture *>(userData);
  info->format = picture.format;
  info->width = picture.width;
  info->height = picture.height;
  info->bits = 1;
  info->offset = 0;
  info->pages = 1;
  return SUCCESS;
}

/** A stream of JPEG 2000 is the whole image, whatever blocks the header tells. */
bool IsOneStream(const ImageSubheader &image) {
  return image.compression == kC8 || image.compression == kM8 || BlockGrid(image).IsSingle();
}

bool HasStreamsOfBands(const ImageSubheader &image) {
  return image.bandCount > 1 && image.mode == kBandSequential;
}

}  // namespace

bool HasCodec(const ImageSubheader &image) {
  constexpr std::uint32_t kCodes[] = {kC3, kC5, kC6, kC8, kI1, kM3, kM5, kM6, kM8};
  return std::find(std::begin(kCodes), std::end(kCodes), image.compression) != std::end(kCodes);
}

std::int32_t DecodeCodecImage(FilterLoadRecord *loadContext, const ImageSource &source, KsBitmap *target) {
  const LoadFunctions functions(loadContext);
  const ImageSubheader &image = *source.image;
  if (IsOneStream(image)) return DecodeSingleStream(functions, source, target);
  if (HasStreamsOfBands(image)) return BandWalk(functions, source, target).Run();
  return TileWalk(functions, source, target).Run(nullptr);
}

bool IsTiled(const ImageSubheader &image) {
  return HasCodec(image) && !IsOneStream(image) && !HasStreamsOfBands(image);
}

std::int32_t DecodeTilesInParts(FilterLoadRecord *loadContext, const ImageSource &source, ImagePartSink &sink) {
  const ImageSubheader &image = *source.image;
  std::int32_t status = CheckTargetSize(image);
  KsLocalBitmap row;
  if (status == SUCCESS) status = CreateTarget(row.Get(), image, PaddedWidth(image), BlockHeight(image));
  if (status != SUCCESS) return status;
  const LoadFunctions functions(loadContext);
  return TileWalk(functions, source, row.Get()).Run(&sink);
}

std::int32_t DecodeBilevelStream(FilterLoadRecord *loadContext, const ImageSource &source, KsBitmap *target) {
  const LoadFunctions functions(loadContext);
  const ImageSubheader &image = *source.image;
  const bool twoDimensional = image.rateKind == kRate2DS || image.rateKind == kRate2DH;
  RawPicture picture{twoDimensional ? KS_FORMAT_T4_2D : KS_FORMAT_T4_1D, target->width, target->height};
  if (image.maskDataOffset > source.dataLength) return ERROR_FILE_FORMAT;
  Tile stream;
  std::int32_t status = stream.Read(source, image.maskDataOffset, source.dataLength - image.maskDataOffset);
  if (status != SUCCESS) return status;
  const KsRedirectCallback before = functions.setRedirect(DescribeRaw, &picture);
  status = functions.load(stream.bytes.Get(), target, sizeof *target, static_cast<std::int32_t>(target->bitsPerPixel),
                          KS_ORDER_BGR, stream.size, nullptr, nullptr);
  functions.setRedirect(before, nullptr);
  return status;
}
