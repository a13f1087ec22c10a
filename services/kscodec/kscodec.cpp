#include "kscodec/redirect.h"
#include "kscodec/t4.h"

namespace {

thread_local kscodec::Redirect redirect = {nullptr, nullptr};

}  // namespace

namespace kscodec {

Redirect CurrentRedirect() {
  return redirect;
}

}  // namespace kscodec

namespace {

/** A stream without a header, of which the redirect tells what it is. */
int32_t LoadRedirected(const kscodec::Redirect &redirected, kscodec::Stream stream, KsBitmap *bitmap) {
  KsRawFormatInfo info = {};
  const int32_t status = redirected.callback(&info, redirected.userData);
  return status == SUCCESS ? kscodec::LoadT4(stream, info, bitmap) : status;
}

}  // namespace

KsRedirectCallback KsSetRedirect(KsRedirectCallback callback, void *userData) {
  const KsRedirectCallback before = redirect.callback;
  redirect = {callback, userData};
  return before;
}

int32_t KsLoadMemory(const void *buffer, KsBitmap *bitmap, uint32_t bitmapSize, int32_t, int32_t, uint64_t size,
                     const KsLoadOptions *, void *) {
  const bool hasStream = buffer != nullptr && size != 0;
  if (!hasStream || bitmap == nullptr || bitmapSize != sizeof(KsBitmap)) return ERROR_INVALID_VALUE;
  const kscodec::Stream stream(static_cast<const uint8_t *>(buffer), size);
  if (redirect.callback != nullptr) return LoadRedirected(redirect, stream, bitmap);
  return ERROR_NOT_SUPPORTED;
}

int32_t KsLoadOptionsInit(KsLoadOptions *options, uint32_t bytes) {
  if (options == nullptr || bytes != sizeof(KsLoadOptions)) return ERROR_INVALID_VALUE;
  *options = {};
  return SUCCESS;
}

int32_t KsFileInfoMemory(const void *, KsFileInfo *, uint32_t, uint64_t, uint32_t, uint32_t) {
  return ERROR_NOT_SUPPORTED;
}
