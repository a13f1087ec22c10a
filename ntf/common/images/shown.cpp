#include "images/shown.h"

#include "images/band_choice.h"
#include "images/image_target.h"
#include "images/interleave.h"
#include "table/big_endian.h"

#include <algorithm>
#include <cstring>

namespace ksntfx {

namespace {

/** Least and greatest word of all image data, from their first byte on. A failed read ends the scan. */
SampleRange ScanRange(const ImageSource &source) {
  constexpr std::uint32_t kPiece = 50000;
  SampleRange found;
  KsArray<std::uint8_t> piece;
  if (!piece.Allocate(kPiece)) return found;
  bool none = true;
  for (std::uint64_t at = 0; at < source.dataLength; at += kPiece) {
    const std::uint64_t bytes = std::min<std::uint64_t>(kPiece, source.dataLength - at);
    if (source.Read(static_cast<std::int64_t>(at), piece.Get(), bytes) != SUCCESS) break;
    for (std::uint64_t word = 0; word + 4 <= bytes; word += 4) {
      const auto value = static_cast<std::int32_t>(BigEndian32(piece.Get() + word));
      found.minimum = none ? value : std::min(found.minimum, value);
      found.maximum = none ? value : std::max(found.maximum, value);
      none = false;
    }
  }
  return found;
}

BandSelection SelectBands(ImageSubheader &image, std::uint32_t count, BandOrder start) {
  ChooseBands(image, &start);
  return {{start.first, start.second, start.third}, count};
}

/** Packed blocks: one of two bands is shown, and the first plane of bits of all others. */
Status ChoosePacked(ImageSubheader &image, ShownRows *shown) {
  shown->depth = image.bandCount == 2 ? image.bitsPerPixel : TargetDepth(image);
  if (image.bandCount == 2) shown->bands = SelectBands(image, 1, {});
  return SUCCESS;
}

/** Three bands of 8 bits. */
Status ChooseColor(ImageSubheader &image, ShownRows *shown) {
  if (image.bitsPerPixel != 8) return ERROR_NOT_SUPPORTED;
  const bool fromFirst = image.mode == kBlockInterleaved;
  shown->depth = 24;
  shown->bands = SelectBands(image, 3, fromFirst ? BandOrder{0, 0, 0} : BandOrder{0, 1, 2});
  shown->repeatsLastRow = image.mode == kPixelInterleaved;
  return SUCCESS;
}

/** One band, or the first that is chosen of two. */
Status ChooseGray(ImageSubheader &image, ShownRows *shown) {
  const std::uint32_t bits = image.bitsPerPixel;
  const bool isSingleBlock = BlockGrid(image).IsSingle();
  shown->convert = ChooseConversion(bits, image.actualBits, isSingleBlock || image.bandCount == 2);
  shown->depth = bits;
  if (bits == 1 || bits == 8 || bits == 12 || bits == 16) {
    if (image.bandCount != 2) return SUCCESS;
    if (image.mode == kPixelInterleaved && bits != 8) return ERROR_NOT_SUPPORTED;
    shown->bands = SelectBands(image, 1, {});
    return SUCCESS;
  }
  shown->spreads = bits == 32 && image.bandCount < 2 && image.representation == kMono && isSingleBlock;
  shown->depth = 8;
  return shown->spreads ? SUCCESS : ERROR_NOT_SUPPORTED;
}

}  // namespace

Status ChooseShown(ImageSubheader &image, ShownRows *shown) {
  if (image.pixelValueType == 1) return ChoosePacked(image, shown);
  return image.bandCount >= 3 ? ChooseColor(image, shown) : ChooseGray(image, shown);
}

ShownImage::ShownImage(const ImageSource &source, ImageReader &imageReader, const ShownRows &shownRows)
    : reader(imageReader), shape(imageReader.Shape()), image(*source.image), shown(shownRows) {
  if (shown.spreads) range = ScanRange(source);
}

Status ShownImage::FillStrip(KsBitmap *strip, std::uint32_t blockRow, std::uint32_t first, std::uint32_t rows) {
  place.strip = strip;
  overhang.DropAbove(std::uint64_t{blockRow} * shape.blockHeight + first);
  for (std::uint32_t column = 0; column < shape.across; ++column) {
    place.left = column * shape.blockWidth;
    const Status status = FillBlock({std::uint64_t{blockRow} * shape.gridAcross + column, first, rows});
    if (status != SUCCESS) return status;
  }
  return SUCCESS;
}

Status ShownImage::FillBlock(const BlockRows &which) {
  // A block of one row that would repeat the one before it has none to repeat.
  if (shown.repeatsLastRow && shape.blockHeight == 1) return Blank(which);
  BlockRows read = which;
  if (shown.repeatsLastRow) {
    const std::uint32_t lastRead = shape.blockHeight - 2;
    read.first = std::min(which.first, lastRead);
    read.rows = std::min(which.first + which.rows - 1, lastRead) + 1 - read.first;
  }
  Status status = shown.depth != 0 ? BeginPlace(which.rows) : SUCCESS;
  if (status == SUCCESS && shape.hasHoles) status = Blank(which);
  StoredRows stored;
  if (status == SUCCESS) status = reader.Read(read, place, &stored);
  if (status != SUCCESS) return status;
  switch (stored.form) {
    case StoredRows::Form::Absent:
      return Blank(which);
    case StoredRows::Form::Bitmap:
      return ShowBitmap(which, stored.bitmap);
    case StoredRows::Form::Samples:
      ShowSamples(which, read, stored);
      break;
    case StoredRows::Form::Placed:
      break;
  }
  return shown.depth != 0 ? EndPlace(which.rows) : SUCCESS;
}

/** The rows go right into the strip where they are whole bytes of its depth, else into a bitmap of their own. */
Status ShownImage::BeginPlace(std::uint32_t rows) {
  place.depth = shown.depth;
  if (shown.depth == place.strip->bitsPerPixel && shown.depth % 8 == 0) {
    place.bytes = place.strip->pixels + std::uint64_t{place.left} * (shown.depth / 8);
    place.step = place.strip->bytesPerLine;
    return SUCCESS;
  }
  if (own->height < rows) {
    KsBitmapFree(own.Get());
    const Status status = KsBitmapCreate(own.Get(), sizeof(KsBitmap), KS_BITMAP_OWN, shape.blockWidth, rows,
                                         shown.depth, place.strip->order, nullptr, 1, nullptr, 0);
    if (status != SUCCESS) return status;
    if (shown.depth != place.strip->bitsPerPixel) SetImagePalette(own.Get(), image);
    // The rows are written as they come, from here on.
    KsBitmapAccess(own.Get(), 0);
  }
  place.bytes = own->pixels;
  place.step = own->bytesPerLine;
  return SUCCESS;
}

Status ShownImage::EndPlace(std::uint32_t rows) {
  if (place.bytes != own->pixels) return SUCCESS;
  return KsCombine(place.strip, static_cast<std::int32_t>(place.left), 0, static_cast<std::int32_t>(shape.blockWidth),
                   static_cast<std::int32_t>(rows), own.Get(), 0, 0, KS_COMBINE_COPY, 0);
}

ImagePart ShownImage::PartOf(const BlockRows &which) const {
  const std::uint64_t blockRow = which.block / shape.gridAcross;
  return {place.left, blockRow * shape.blockHeight + which.first, shape.blockWidth, which.rows};
}

/** Clears the place of rows, but for what reaches into it from another block. */
Status ShownImage::Blank(const BlockRows &which) {
  const KsBitmap &strip = *place.strip;
  const std::uint64_t bits = strip.bitsPerPixel;
  if (bits % 8 == 0) {
    std::uint8_t *row = strip.pixels + place.left * bits / 8;
    for (std::uint32_t at = 0; at < which.rows; ++at, row += strip.bytesPerLine) {
      std::memset(row, 0, shape.blockWidth * bits / 8);
    }
  } else {
    KsLocalBitmap empty;
    Status status = KsBitmapCreate(empty.Get(), sizeof(KsBitmap), KS_BITMAP_OWN, shape.blockWidth, which.rows,
                                   strip.bitsPerPixel, strip.order, nullptr, 1, nullptr, 0);
    if (status == SUCCESS) {
      status =
          KsCombine(place.strip, static_cast<std::int32_t>(place.left), 0, static_cast<std::int32_t>(shape.blockWidth),
                    static_cast<std::int32_t>(which.rows), empty.Get(), 0, 0, KS_COMBINE_COPY, 0);
    }
    if (status != SUCCESS) return status;
  }
  return overhang.Draw(place.strip, place.left, 0, PartOf(which));
}

void ShownImage::ShowSamples(const BlockRows &which, const BlockRows &read, const StoredRows &stored) {
  const std::uint32_t last = read.first + read.rows - 1;
  for (std::uint32_t row = 0; row < which.rows; ++row) {
    const std::uint32_t from = std::min(which.first + row, last) - read.first;
    ShowRow(stored, from * stored.rowStep, place.bytes + row * place.step);
  }
}

void ShownImage::ShowRow(const StoredRows &stored, std::uint64_t offset, std::uint8_t *row) const {
  const std::uint8_t *samples = stored.bands[0] + offset;
  if (shown.bands.count == 3) {
    InterleaveRow(row, shape.blockWidth,
                  {samples, stored.bands[1] + offset, stored.bands[2] + offset, stored.sampleStep});
    return;
  }
  const std::uint64_t bytes = shown.spreads ? shape.blockWidth : RowBytes(image.bitsPerPixel, shape.blockWidth);
  if (stored.sampleStep > 1) {
    for (std::uint64_t x = 0; x < bytes; ++x) row[x] = samples[x * stored.sampleStep];
    samples = row;
  }
  if (shown.convert != nullptr) {
    shown.convert(samples, row, bytes, image.bitsPerPixel, image.actualBits, range);
  } else if (samples != row) {
    std::memcpy(row, samples, bytes);
  }
}

/** Puts what a codec made into its block's place, which it may not fill, or reach beyond. */
Status ShownImage::ShowBitmap(const BlockRows &which, KsBitmap *bitmap) {
  if (bitmap->width < shape.blockWidth || bitmap->height < which.rows) {
    const Status status = Blank(which);
    if (status != SUCCESS) return status;
  }
  bitmap->order = place.strip->order;
  const Status status =
      KsCombine(place.strip, static_cast<std::int32_t>(place.left), 0, static_cast<std::int32_t>(bitmap->width),
                static_cast<std::int32_t>(bitmap->height), bitmap, 0, 0, KS_COMBINE_COPY, 0);
  if (status != SUCCESS) return status;
  if (bitmap->width <= shape.blockWidth && bitmap->height <= which.rows) return SUCCESS;
  const ImagePart part = PartOf(which);
  return overhang.Keep(bitmap, part.left, part.top);
}

}  // namespace ksntfx
