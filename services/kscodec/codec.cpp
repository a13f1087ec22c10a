#include "kscodec/codec.h"

#include "kscore/bitmap.h"

namespace kscodec {

namespace {

Status Create(KsBitmap *bitmap, std::uint32_t storage, std::uint32_t width, std::uint32_t height, std::uint32_t bits) {
  std::uint32_t order = KS_ORDER_BGR;
  if (bits < 24) order = bits == 8 ? KS_ORDER_PALETTE : KS_ORDER_GRAY;
  return KsBitmapCreate(bitmap, sizeof(KsBitmap), storage, width, height, bits, order, nullptr, 1, nullptr, 0);
}

}  // namespace

Status CheckBitmapLimit(std::uint32_t width, std::uint64_t height, std::uint32_t bits) {
  if (height > UINT32_MAX) return ERROR_NO_MEMORY;
  KsBitmap shape;
  return Create(&shape, KS_BITMAP_CALLER, width, static_cast<std::uint32_t>(height), bits);
}

Status CreateBitmap(std::uint32_t width, std::uint32_t height, std::uint32_t bits, KsBitmap *target) {
  const Status status = Create(target, KS_BITMAP_OWN, width, height, bits);
  if (status == SUCCESS) kscore::MarkWritten(*target);
  return status;
}

}  // namespace kscodec
