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

}  // namespace

Status CodecStream::Read(const ImageSource &source, std::int64_t offset, std::uint32_t count) {
  size = count;
  if (!source.Holds(offset + count)) return ERROR_FILE_READ;
  if (!bytes.Allocate(count)) return ERROR_NO_MEMORY;
  return source.Read(offset, bytes.Get(), count);
}

Status CodecStream::ReadAll(const ImageSource &source) {
  const std::uint32_t offset = source.image->maskDataOffset;
  return offset > source.dataLength ? ERROR_FILE_FORMAT : Read(source, offset, source.dataLength - offset);
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
    options.loadFlags |= KS_LOAD_BANDS;
    options.bands[0] = order.first;
    options.bands[1] = order.second;
    options.bands[2] = order.third;
  }
  return options;
}

}  // namespace ksntfx
