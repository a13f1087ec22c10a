#include "kscodec/redirect.h"

namespace {

thread_local kscodec::Redirect redirect = {nullptr, nullptr};

}  // namespace

namespace kscodec {

Redirect CurrentRedirect() {
  return redirect;
}

}  // namespace kscodec

KsRedirectCallback KsSetRedirect(KsRedirectCallback callback, void *userData) {
  const KsRedirectCallback before = redirect.callback;
  redirect = {callback, userData};
  return before;
}

int32_t KsLoadMemory(const void *buffer, KsBitmap *bitmap, uint32_t bitmapSize, int32_t, int32_t, uint64_t size,
                     const KsLoadOptions *, void *) {
  const bool hasStream = buffer != nullptr && size != 0;
  if (!hasStream || bitmap == nullptr || bitmapSize != sizeof(KsBitmap)) return ERROR_INVALID_VALUE;
  return ERROR_NOT_SUPPORTED;
}
