#include "handlimg.h"

#include "imgmodes.h"
#include "internal/ksclasses_.h"
#include "strips.h"
#include "tiles.h"
#include "vq.h"

#include <algorithm>

namespace {

/** The tags that belong together for the three channels, in the order of preference. */
struct BandGroup {
  std::uint32_t tags[3];
  bool keepsStart; /**< a missing tag leaves the caller's number; else it means the last band */
};

constexpr BandGroup kBandGroups[] = {
    {{kBandRed, kBandGreen, kBandBlue}, true},
    {{kBandY, kBandCb, kBandCr}, false},
    {{kBandLut, kBandLut, kBandLut}, false},
    {{kBandMono, kBandMono, kBandMono}, false},
};

/** The first band with a tag, or the band count. */
std::uint32_t FindBand(const ImageSubheader &image, std::uint32_t tag) {
  for (std::uint32_t band = 0; band < image.bandsHeld; ++band) {
    if (image.bandRepresentation[band] == tag) return band;
  }
  return image.bandCount;
}

bool TakeGroup(const ImageSubheader &image, const BandGroup &group, std::uint32_t (&bands)[3]) {
  std::uint32_t found[3];
  std::transform(group.tags, group.tags + 3, found, [&](std::uint32_t tag) { return FindBand(image, tag); });
  if (std::all_of(found, found + 3, [&](std::uint32_t band) { return band >= image.bandCount; })) return false;
  for (std::size_t channel = 0; channel < 3; ++channel) {
    if (found[channel] < image.bandCount || !group.keepsStart) bands[channel] = found[channel];
  }
  return true;
}

/** The bands of an image without tags: those that were stored, or the first three. */
void TakeUntagged(const ImageSubheader &image, std::uint32_t (&bands)[3]) {
  const bool stored =
      std::all_of(image.displayBands, image.displayBands + 3, [](std::int32_t band) { return band >= 0; });
  for (std::uint32_t channel = 0; channel < 3; ++channel) {
    bands[channel] = stored ? static_cast<std::uint32_t>(image.displayBands[channel]) : channel;
  }
}

std::uint32_t TargetOrder(const ImageSubheader &image, std::uint32_t depth) {
  if (depth == 1 || depth == 8) return KS_ORDER_PALETTE;
  return image.representation == kMono ? KS_ORDER_GRAY : KS_ORDER_BGR;
}

/** The entries of the lookup table that a palette is made of: the first band's count, as far as the table goes. */
std::uint32_t LutEntries(const ImageSubheader &image) {
  if (image.bandsHeld == 0 || image.bandLutEntries == nullptr) return 0;
  return std::min(image.bandLutEntries[0], image.lutCount);
}

bool IsUncompressed(const ImageSubheader &image) {
  return image.compression == kNC || image.compression == kNM;
}

ImageSource OpenSource(const NitfFile *file, ImageSubheader *image, std::uint32_t index) {
  const std::int64_t end = KsSeek(file->fileHandle, 0, KS_SEEK_END);
  return {file, image, DataLength(file, SegmentKind::Image, index), SeekSegmentData(file, SegmentKind::Image, index),
          static_cast<std::uint64_t>(std::max<std::int64_t>(end, 0))};
}

std::int32_t DecodeUncompressed(const ImageSource &source, KsBitmap *target) {
  std::unique_ptr<BlockReader> reader;
  const std::int32_t status = MakeBlockReader(source, &reader);
  return status == SUCCESS ? ReadWhole(*reader, target) : status;
}

/** The codec gives 1 for white, where the format counts black as 1: the colours of the image's table change places. */
void CrossPalette(const ImageSubheader &image, KsBitmap *target) {
  constexpr std::uint32_t kColors = 2;
  if (image.lut == nullptr || image.lutCount < kColors) return;
  KsPaletteEntry entries[kColors] = {};
  KsBitmapGetPalette(target, 0, kColors, entries);
  for (std::uint32_t color = 0; color < kColors; ++color) {
    const std::uint32_t entry = image.lut[color];
    KsPaletteEntry &other = entries[kColors - 1 - color];
    other.blue = static_cast<std::uint8_t>(entry);
    other.green = static_cast<std::uint8_t>(entry >> 8);
    other.red = static_cast<std::uint8_t>(entry >> 16);
  }
  KsBitmapSetPalette(target, 0, kColors, entries);
}

/** The pad value stays on its colour: it becomes its logical inverse, once for each decoding. */
void InvertPadCode(ImageSubheader &image) {
  if (image.padCode == nullptr) return;
  const bool wasZero = image.padCode[0] == 0;
  KsFreeAndClear(image.padCode);
  KsArray<std::uint8_t> inverse;
  if (!inverse.Allocate(PadCodeBytes(image) + 2)) return;
  inverse[0] = wasZero ? 1 : 0;
  image.padCode = inverse.Release();
}

std::int32_t DecodeBilevel(FilterLoadRecord *loadContext, const ImageSource &source, KsBitmap *target) {
  const std::int32_t status = DecodeBilevelStream(loadContext, source, target);
  if (status != SUCCESS) return status;
  CrossPalette(*source.image, target);
  InvertPadCode(*source.image);
  return SUCCESS;
}

std::int32_t Decode(FilterLoadRecord *loadContext, const ImageSource &source, KsBitmap *target) {
  switch (source.image->compression) {
    case kNC:
    case kNM:
      return DecodeUncompressed(source, target);
    case kC1:
    case kM1:
      return DecodeBilevel(loadContext, source, target);
    default:
      return HasCodec(*source.image) ? DecodeCodecImage(loadContext, source, target)
                                     : static_cast<std::int32_t>(ERROR_NOT_SUPPORTED);
  }
}

}  // namespace

void ChooseBands(ImageSubheader &image, BandOrder *order) {
  std::uint32_t bands[3] = {order->first, order->second, order->third};
  const bool tagged = std::any_of(std::begin(kBandGroups), std::end(kBandGroups),
                                  [&](const BandGroup &group) { return TakeGroup(image, group, bands); });
  if (!tagged) TakeUntagged(image, bands);
  const std::uint32_t last = image.bandCount == 0 ? 0 : image.bandCount - 1;
  for (std::uint32_t &band : bands) band = std::min(band, last);
  *order = {bands[0], bands[1], bands[2]};
  const bool different = bands[0] != bands[1] && bands[1] != bands[2] && bands[0] != bands[2];
  if (tagged && !different) std::copy(bands, bands + 3, image.displayBands);
}

std::uint32_t TargetDepth(const ImageSubheader &image) {
  if (image.bandCount == 2) return 24;
  const std::uint32_t depth = image.bandCount > 1 ? 3 * image.bitsPerPixel : image.bitsPerPixel;
  return image.representation == kMono && (depth == 32 || depth == 64) ? 8 : depth;
}

std::int32_t CreateTarget(KsBitmap *target, const ImageSubheader &image, std::uint64_t width, std::uint64_t rows) {
  if (width > UINT32_MAX || rows > UINT32_MAX) return ERROR_NO_MEMORY;
  const std::uint32_t depth = TargetDepth(image);
  const std::int32_t status =
      KsBitmapCreate(target, sizeof *target, KS_BITMAP_OWN, static_cast<std::uint32_t>(width),
                     static_cast<std::uint32_t>(rows), depth, KS_ORDER_BGR, nullptr, 1, nullptr, 0);
  if (status != SUCCESS) return status;
  target->order = TargetOrder(image, depth);
  SetImagePalette(target, image);
  return SUCCESS;
}

std::int32_t CheckTargetSize(const ImageSubheader &image) {
  KsLocalBitmap whole;
  const std::uint64_t width = PaddedWidth(image);
  const std::uint64_t height = PaddedHeight(image);
  if (width > UINT32_MAX || height > UINT32_MAX) return ERROR_NO_MEMORY;
  return KsBitmapCreate(whole.Get(), sizeof(KsBitmap), KS_BITMAP_CALLER, static_cast<std::uint32_t>(width),
                        static_cast<std::uint32_t>(height), TargetDepth(image), KS_ORDER_BGR, nullptr, 1, nullptr, 0);
}

void SetImagePalette(KsBitmap *bitmap, const ImageSubheader &image) {
  // A palette that can't be made leaves the bitmap without one, and the image is still shown.
  if (image.lut != nullptr && bitmap->bitsPerPixel <= 16) {
    KsPalette *palette = KsPaletteFromLut(image.lut, LutEntries(image));
    if (palette == nullptr) return;
    KsBitmapSetLut(bitmap, palette);
    KsObjectFree(palette, __LINE__, __FILE__);
    return;
  }
  const bool reduced = image.bitsPerPixel == 32 || image.bitsPerPixel == 64;
  if (image.bitsPerPixel > 8 && !reduced) return;
  KsPaletteEntry *ramp = KsDefaultPalette(reduced ? 8 : image.bitsPerPixel);
  if (ramp == nullptr) return;
  KsBitmapSetPalette(bitmap, 0, std::min(255U, 1U << (reduced ? 8 : image.bitsPerPixel)), ramp);
  KsPaletteFree(ramp);
}

std::int32_t ImageSource::Read(std::int64_t offset, void *buffer, std::uint64_t bytes) const {
  if (offset < 0 || KsSeek(file->fileHandle, dataStart + offset, KS_SEEK_START) < 0) return ERROR_FILE_READ;
  return KsRead(file->fileHandle, buffer, bytes) == bytes ? SUCCESS : ERROR_FILE_READ;
}

bool ImageSource::Holds(std::int64_t end) const {
  return end >= 0 && dataStart >= 0 &&
         static_cast<std::uint64_t>(dataStart) + static_cast<std::uint64_t>(end) <= fileSize;
}

std::int32_t DecodeImageSegment(FilterLoadRecord *loadContext, const NitfFile *file, std::uint32_t index,
                                KsBitmap *target) {
  ImageSubheader *image = FindImage(file, index);
  if (image == nullptr) return ERROR_INVALID_VALUE;
  if (IsVectorQuantised(*image)) return DecodeVqImage(OpenSource(file, image, index), target);
  std::int32_t status = CreateTarget(target, *image, PaddedWidth(*image), PaddedHeight(*image));
  if (status != SUCCESS) return status;
  status = Decode(loadContext, OpenSource(file, image, index), target);
  if (status != SUCCESS && (target->flags & KS_BITMAP_ALLOCATED) != 0) KsBitmapFree(target);
  return status;
}

std::int32_t DecodeImageInParts(FilterLoadRecord *loadContext, const NitfFile *file, std::uint32_t index,
                                ImagePartSink &sink) {
  ImageSubheader *image = FindImage(file, index);
  if (image != nullptr && IsUncompressed(*image)) {
    const ImageSource source = OpenSource(file, image, index);
    std::unique_ptr<BlockReader> reader;
    const std::int32_t status = MakeBlockReader(source, &reader);
    return status == SUCCESS ? ReadInStrips(*reader, *image, sink) : status;
  }
  if (image != nullptr && IsVectorQuantised(*image)) return DecodeVqInParts(OpenSource(file, image, index), sink);
  if (image != nullptr && IsTiled(*image)) return DecodeTilesInParts(loadContext, OpenSource(file, image, index), sink);
  KsLocalBitmap whole;
  const std::int32_t status = DecodeImageSegment(loadContext, file, index, whole.Get());
  return status == SUCCESS ? sink.Place(whole.Get(), 0, whole->height) : status;
}
