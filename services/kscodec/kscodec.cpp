#include "kscodec/codec.h"
#include "kscodec/jpeg2000.h"
#include "kscodec/jpeg_save.h"
#include "kscodec/t4.h"
#include "kscore/bitmap.h"

#include <limits>

namespace {

using kscodec::Codec;
using kscodec::PictureInfo;
using kscodec::Stream;

/** Who answers for a stream that has no header of its own: what KsSetRedirect set in this thread. */
struct Redirect {
  KsRedirectCallback callback;
  void *userData;
};
thread_local Redirect redirect = {nullptr, nullptr};

/** The codecs of this build, for streams that tell by their first bytes what they are. */
constexpr const Codec *kCodecs[] = {
#ifdef KSNTFX_CODEC_JPEG
    &kscodec::kJpegCodec,
#endif
#ifdef KSNTFX_CODEC_JPEG2000
    &kscodec::kJpeg2000Codec,
#endif
    nullptr,  // stands in a build without codecs, too
};

const Codec *CodecOf(Stream stream) {
  for (const Codec *codec : kCodecs) {
    if (codec != nullptr && codec->recognises(stream)) return codec;
  }
  return nullptr;
}

/** Whether the picture may become a bitmap: SUCCESS, or ERROR_NO_MEMORY above the limit. Nothing is allocated. */
int32_t CheckLimit(const PictureInfo &info) {
  KsBitmap shape;
  return KsBitmapCreate(&shape, sizeof shape, KS_BITMAP_CALLER, info.width, info.height, kscodec::DepthOfBitmap(info),
                        KS_ORDER_BGR, nullptr, 1, nullptr, 0);
}

/** A stream that says what it is: its codec makes the bitmap. */
int32_t LoadWithHeader(Stream stream, const KsLoadOptions &options, KsBitmap *bitmap) {
  const Codec *codec = CodecOf(stream);
  if (codec == nullptr) return ERROR_NOT_SUPPORTED;
  PictureInfo info;
  int32_t status = codec->inform(stream, &info);
  if (status == SUCCESS) status = CheckLimit(info);
  return status == SUCCESS ? codec->load(stream, options, bitmap) : status;
}

/** A stream without a header: the redirect tells its form, and the pixels go into the bitmap that is there. */
int32_t LoadRaw(Stream stream, KsBitmap *bitmap) {
  KsRawFormatInfo info = {};
  const int32_t status = redirect.callback(&info, redirect.userData);
  return status == SUCCESS ? kscodec::LoadT4(stream, info, bitmap) : status;
}

/** Releases what the record holds; one that was never initialised holds nothing. */
void MakeEmpty(KsBitmap *bitmap) {
  if (kscore::IsBitmap(bitmap)) {
    KsBitmapFree(bitmap);
  } else {
    KsBitmapInit(bitmap, sizeof(KsBitmap), 0, 0, 0);
  }
}

/** Bytes of a picture with rows padded to four bytes, or the greatest number where it can't be told in 64 bits. */
uint64_t PaddedBytes(uint64_t bitsPerPixel, uint32_t width, uint32_t height) {
  const uint64_t row = kscore::BytesPerLine(bitsPerPixel, width);
  constexpr uint64_t kMost = std::numeric_limits<uint64_t>::max();
  return row > kMost / height ? kMost : row * height;
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
  const Codec *codec = CodecOf(stream);
  if (codec == nullptr) return ERROR_NOT_SUPPORTED;
  PictureInfo picture;
  const int32_t status = codec->inform(stream, &picture);
  if (status != SUCCESS) return status;
  info->formatId = picture.format;
  info->width = picture.width;
  info->height = picture.height;
  info->bitsPerPixel = picture.components * picture.bits;
  info->imageBytes = PaddedBytes(info->bitsPerPixel, picture.width, picture.height);
  info->pageCount = 1;
  info->pageNumber = 1;
  return SUCCESS;
}

int32_t KsLoadMemory(const void *buffer, KsBitmap *bitmap, uint32_t bitmapSize, int32_t bits, int32_t order,
                     uint64_t size, const KsLoadOptions *options, void *) {
  const bool hasStream = buffer != nullptr && size != 0;
  if (!hasStream || bitmap == nullptr || bitmapSize != sizeof(KsBitmap)) return ERROR_INVALID_VALUE;
  const Stream stream(static_cast<const uint8_t *>(buffer), size);
  if (redirect.callback != nullptr) return LoadRaw(stream, bitmap);
  MakeEmpty(bitmap);
  if (bits != 0 || order != KS_ORDER_CODEC) return ERROR_NOT_SUPPORTED;
  const KsLoadOptions none = {};
  return LoadWithHeader(stream, options != nullptr ? *options : none, bitmap);
}

int32_t KsSaveMemory(void **handle, const KsBitmap *bitmap, uint32_t format, uint32_t bits, uint32_t quality,
                     uint64_t *size, const KsSaveOptions *) {
  if (handle == nullptr || size == nullptr) return ERROR_INVALID_VALUE;
  const int32_t status = kscore::CheckPixels(bitmap).Code();
  if (status != SUCCESS) return status;
  if (!IsSaved(format)) return ERROR_NOT_SUPPORTED;
  if (bits != kGrayBits && bits != kColorBits) return ERROR_BITS_PER_PIXEL;
  if (quality < kscodec::jpeg::kBestQuality || quality > kscodec::jpeg::kSmallestQuality) return ERROR_QUALITY;
#ifdef KSNTFX_CODEC_JPEG
  return kscodec::jpeg::Save(*bitmap, {bits == kGrayBits, format == KS_FORMAT_JPEG_RGB, quality}, handle, size);
#else
  return ERROR_NOT_SUPPORTED;
#endif
}

int32_t KsLoadMemoryInPlace(const void *buffer, const KsBitmap *place, uint32_t bitmapSize, uint64_t size,
                            const KsLoadOptions *options) {
  const bool hasStream = buffer != nullptr && size != 0;
  if (!hasStream || place == nullptr || bitmapSize != sizeof(KsBitmap)) return ERROR_INVALID_VALUE;
  int32_t status = kscore::CheckPixels(place).Code();
  if (status != SUCCESS) return status;
  const Stream stream(static_cast<const uint8_t *>(buffer), size);
  const Codec *codec = redirect.callback == nullptr ? CodecOf(stream) : nullptr;
  if (codec == nullptr || codec->loadInPlace == nullptr) return ERROR_NOT_SUPPORTED;
  PictureInfo info;
  status = codec->inform(stream, &info);
  if (status != SUCCESS) return status;
  const bool fits =
      info.width == place->width && info.height == place->height && kscodec::DepthOfBitmap(info) == place->bitsPerPixel;
  const KsLoadOptions none = {};
  return fits ? codec->loadInPlace(stream, options != nullptr ? *options : none, *place) : ERROR_NOT_SUPPORTED;
}
