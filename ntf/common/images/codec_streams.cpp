#include "images/codec_streams.h"

#include "images/band_choice.h"

#include <algorithm>
#include <iterator>

namespace ksntfx {

namespace {

/** The kinds of streams that an image segment may hold. */
constexpr std::uint32_t kFormats[] = {KS_FORMAT_JP2,           KS_FORMAT_JPEG,      KS_FORMAT_JPEG_12,
                                      KS_FORMAT_JPEG_422,      KS_FORMAT_JPEG_420,  KS_FORMAT_JPEG_PROGRESSIVE,
                                      KS_FORMAT_JPEG_LOSSLESS, KS_FORMAT_JPEG_MANY, KS_FORMAT_J2K};

void SetBands(const BandOrder &order, std::uint32_t flags, KsLoadOptions *options) {
  options->loadFlags |= flags;
  options->bands[0] = order.first;
  options->bands[1] = order.second;
  options->bands[2] = order.third;
}

/** A JPEG 2000 stream needn't say which of its components is which: IREPBAND does. */
void NameBands(const ImageSubheader &image, KsLoadOptions *options) {
  constexpr std::uint32_t kNamed = KS_LOAD_BANDS | KS_LOAD_NAMED_BANDS;
  BandOrder order{};
  if (FindTaggedBands(image, {kBandRed, kBandGreen, kBandBlue}, &order)) {
    SetBands(order, kNamed, options);
  } else if (image.representation == kYCbCr601 && FindTaggedBands(image, {kBandY, kBandCb, kBandCr}, &order)) {
    SetBands(order, kNamed | KS_LOAD_YCBCR, options);
  }
}

}  // namespace

Status CodecStream::Read(const ImageSource &source, std::int64_t offset, std::uint32_t count) {
  size = count;
  if (!source.Holds(offset + count)) return ERROR_FILE_READ;
  if (!bytes.Allocate(count)) return ERROR_NO_MEMORY;
  return source.Read(offset, bytes.Get(), count);
}

Status CodecStream::ReadAll(const ImageSource &source) {
  const std::uint32_t offset = source.image->maskDataOffset;
  return offset > source.dataLength ? ERROR_FILE_READ : Read(source, offset, source.dataLength - offset);
}

bool CodecStream::IsAccepted() const {
  KsFileInfo info{};
  if (size == 0 || KsFileInfoMemory(bytes.Get(), &info, sizeof info, size, 0, 0) != SUCCESS) return false;
  return std::find(std::begin(kFormats), std::end(kFormats), info.formatId) != std::end(kFormats);
}

Status CodecStream::Load(const LoadFunctions &functions, const KsLoadOptions &options, KsBitmap *bitmap) const {
  return functions.load(bytes.Get(), bitmap, sizeof *bitmap, 0, KS_ORDER_CODEC, size, &options, nullptr);
}

KsLoadOptions LoadOptionsFor(ImageSubheader &image) {
  KsLoadOptions options;
  KsLoadOptionsInit(&options, sizeof options);
  if (image.representation == kRgb) options.loadFlags |= KS_LOAD_COLOR;
  if (image.representation == kMulti) {
    BandOrder order{};
    ChooseBands(image, &order);
    SetBands(order, KS_LOAD_BANDS, &options);
  } else if (KindOf(image).layout == ImageLayout::OneStream) {
    NameBands(image, &options);
  }
  return options;
}

}  // namespace ksntfx
