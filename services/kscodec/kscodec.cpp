// The exports: which codec a stream belongs to, and what its bitmap must be.
#include "kscodec/codecs.h"
#include "kscore/bitmap.h"

#include <limits>
#include <new>

namespace {

using kscodec::Codec;
using kscodec::kLibraries;
using kscodec::OpenedStream;
using kscodec::PictureInfo;
using kscodec::Stream;

/** Describes a stream that has no header of its own: the last call of KsSetRedirect in this thread. */
struct Redirect {
  KsRedirectCallback callback;
  void *userData;
};
thread_local Redirect redirect = {nullptr, nullptr};

const Codec *CodecOf(Stream stream) {
  for (const Codec *codec : {&kscodec::kJpegCodec, kLibraries.jpeg2000}) {
    if (codec != nullptr && codec->recognises(stream)) return codec;
  }
  return nullptr;
}

/** Nothing may be thrown out of an export. */
template <class Work>
Status WithoutExceptions(const Work &work) {
  try {
    return work();
  } catch (const std::bad_alloc &) {
    return ERROR_NO_MEMORY;
  }
}

/** A stream with a header. */
Status LoadWithHeader(Stream stream, const KsLoadOptions &options, KsBitmap *bitmap) {
  const Codec *codec = CodecOf(stream);
  if (codec == nullptr) return ERROR_NOT_SUPPORTED;
  std::unique_ptr<OpenedStream> opened;
  Status status = codec->open(stream, &opened);
  if (status != SUCCESS) return status;
  const PictureInfo &info = opened->Info();
  status = kscodec::CheckBitmapLimit(info.width, info.height, DepthOfBitmap(info));
  return status == SUCCESS ? opened->Load(options, bitmap) : status;
}

/** A stream without a header: the redirect describes it, and the pixels go into the existing bitmap. */
Status LoadRaw(Stream stream, KsBitmap *bitmap) {
  KsRawFormatInfo info = {};
  const Status status = redirect.callback(&info, redirect.userData);
  if (status != SUCCESS) return status;
  return kLibraries.loadT4 != nullptr ? kLibraries.loadT4(stream, info, bitmap) : ERROR_NOT_SUPPORTED;
}

Status LoadInPlace(const Codec &codec, Stream stream, const KsLoadOptions &options, const KsBitmap &place) {
  std::unique_ptr<OpenedStream> opened;
  const Status status = codec.open(stream, &opened);
  if (status != SUCCESS) return status;
  const PictureInfo &info = opened->Info();
  const bool fits =
      info.width == place.width && info.height == place.height && DepthOfBitmap(info) == place.bitsPerPixel;
  return fits ? opened->LoadInPlace(options, place) : ERROR_NOT_SUPPORTED;
}

/** Releases what the record holds; one that was never initialised holds nothing. */
void MakeEmpty(KsBitmap *bitmap) {
  if (kscore::IsBitmap(bitmap)) {
    KsBitmapFree(bitmap);
  } else {
    KsBitmapInit(bitmap, sizeof(KsBitmap), 0, 0, 0);
  }
}

/** Bytes of a picture with rows padded to four bytes, or the greatest number where 64 bits can't hold them. */
uint64_t PaddedBytes(uint64_t bitsPerPixel, uint32_t width, uint32_t height) {
  const uint64_t row = kscore::BytesPerLine(bitsPerPixel, width);
  constexpr uint64_t kMost = std::numeric_limits<uint64_t>::max();
  return row > kMost / height ? kMost : row * height;
}

Status ReadInfo(Stream stream, KsFileInfo *info) {
  const Codec *codec = CodecOf(stream);
  if (codec == nullptr) return ERROR_NOT_SUPPORTED;
  std::unique_ptr<OpenedStream> opened;
  const Status status = codec->open(stream, &opened);
  if (status != SUCCESS) return status;
  const PictureInfo &picture = opened->Info();
  info->formatId = picture.format;
  info->width = picture.width;
  info->height = picture.height;
  info->bitsPerPixel = picture.components * picture.bits;
  info->imageBytes = PaddedBytes(info->bitsPerPixel, picture.width, picture.height);
  info->pageCount = 1;
  info->pageNumber = 1;
  return SUCCESS;
}

/** Bits of a pixel that pictures are saved with. */
constexpr uint32_t kGrayBits = 8;
constexpr uint32_t kColorBits = 24;

bool IsSaved(uint32_t format) {
  return format == KS_FORMAT_JPEG || format == KS_FORMAT_JPEG_RGB;
}

}  // namespace

KsRedirectCallback KsSetRedirect(KsRedirectCallback callback, void *userData) {
  const KsRedirectCallback before = redirect.callback;
  redirect = {callback, userData};
  return before;
}

int32_t KsLoadOptionsInit(KsLoadOptions *options, uint32_t bytes) {
  if (options == nullptr || bytes != sizeof(KsLoadOptions)) return ERROR_INVALID_VALUE;
  *options = {};
  return SUCCESS;
}

int32_t KsSaveOptionsInit(KsSaveOptions *options, uint32_t bytes) {
  if (options == nullptr || bytes != sizeof(KsSaveOptions)) return ERROR_INVALID_VALUE;
  *options = {};
  options->structureSize = sizeof(KsSaveOptions);
  return SUCCESS;
}

int32_t KsFileInfoMemory(const void *buffer, KsFileInfo *info, uint32_t infoBytes, uint64_t size, uint32_t, uint32_t) {
  const bool hasStream = buffer != nullptr && size != 0;
  if (!hasStream || info == nullptr || infoBytes != sizeof(KsFileInfo)) return ERROR_INVALID_VALUE;
  const Stream stream(static_cast<const uint8_t *>(buffer), size);
  return WithoutExceptions([&] { return ReadInfo(stream, info); }).Code();
}

int32_t KsLoadMemory(const void *buffer, KsBitmap *bitmap, uint32_t bitmapSize, int32_t bits, int32_t order,
                     uint64_t size, const KsLoadOptions *options, void *) {
  const bool hasStream = buffer != nullptr && size != 0;
  if (!hasStream || bitmap == nullptr || bitmapSize != sizeof(KsBitmap)) return ERROR_INVALID_VALUE;
  const Stream stream(static_cast<const uint8_t *>(buffer), size);
  if (redirect.callback != nullptr) return WithoutExceptions([&] { return LoadRaw(stream, bitmap); }).Code();
  MakeEmpty(bitmap);
  if (bits != 0 || order != KS_ORDER_CODEC) return ERROR_NOT_SUPPORTED;
  const KsLoadOptions none = {};
  const KsLoadOptions &wanted = options != nullptr ? *options : none;
  const Status status = WithoutExceptions([&] { return LoadWithHeader(stream, wanted, bitmap); });
  if (status != SUCCESS) KsBitmapFree(bitmap);
  return status.Code();
}

int32_t KsLoadMemoryInPlace(const void *buffer, const KsBitmap *place, uint32_t bitmapSize, uint64_t size,
                            const KsLoadOptions *options) {
  const bool hasStream = buffer != nullptr && size != 0;
  if (!hasStream || place == nullptr || bitmapSize != sizeof(KsBitmap)) return ERROR_INVALID_VALUE;
  const Status status = kscore::CheckPixels(place);
  if (status != SUCCESS) return status.Code();
  const Stream stream(static_cast<const uint8_t *>(buffer), size);
  const Codec *codec = redirect.callback == nullptr ? CodecOf(stream) : nullptr;
  if (codec == nullptr || !codec->loadsInPlace) return ERROR_NOT_SUPPORTED;
  const KsLoadOptions none = {};
  const KsLoadOptions &wanted = options != nullptr ? *options : none;
  return WithoutExceptions([&] { return LoadInPlace(*codec, stream, wanted, *place); }).Code();
}

int32_t KsSaveMemory(void **handle, const KsBitmap *bitmap, uint32_t format, uint32_t bits, uint32_t quality,
                     uint64_t *size, const KsSaveOptions *) {
  if (handle == nullptr || size == nullptr) return ERROR_INVALID_VALUE;
  const Status status = kscore::CheckPixels(bitmap);
  if (status != SUCCESS) return status.Code();
  if (!IsSaved(format)) return ERROR_NOT_SUPPORTED;
  if (bits != kGrayBits && bits != kColorBits) return ERROR_BITS_PER_PIXEL;
  if (quality < kscodec::kBestQuality || quality > kscodec::kSmallestQuality) return ERROR_QUALITY;
  if (kLibraries.encodeJpeg == nullptr) return ERROR_NOT_SUPPORTED;
  return kLibraries.encodeJpeg(*bitmap, {bits == kGrayBits, format == KS_FORMAT_JPEG_RGB, quality}, handle, size)
      .Code();
}
