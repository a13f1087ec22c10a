#include "kscore/bitmap.h"

#include "kscore/allocation.h"
#include "kscore/pages.h"
#include "kscore/palette.h"

#include <algorithm>
#include <atomic>
#include <cstring>
#include <limits>

namespace {

using kscore::IsBitmap;

constexpr uint64_t kFirstBitmapLimit = uint64_t{4} << 30;
constexpr uint32_t kMostBitsPerPixel = 255;

std::atomic<uint64_t> bitmapLimit{kFirstBitmapLimit};

bool IsShape(uint32_t kind, uint32_t width, uint32_t height, uint32_t bits) {
  const bool knownKind = kind == KS_BITMAP_OWN || kind == KS_BITMAP_CALLER;
  return knownKind && width != 0 && height != 0 && bits != 0 && bits <= kMostBitsPerPixel;
}

/** False where `bytes` per row times `height` is above the limit, also where the product overflows 64 bits. */
bool IsWithinLimit(uint64_t bytes, uint32_t height) {
  return bytes <= bitmapLimit.load(std::memory_order_relaxed) / height;
}

bool CopyPalette(KsBitmap &bitmap, const KsPaletteEntry *palette) {
  const uint32_t entries = kscore::EntriesOfDepth(bitmap.bitsPerPixel);
  bitmap.palette = kscore::AllocatePalette(entries);
  if (bitmap.palette == nullptr) return false;
  std::memcpy(bitmap.palette, palette, entries * sizeof(KsPaletteEntry));
  bitmap.colorCount = entries;
  bitmap.paletteCapacity = entries;
  return true;
}

bool MakeStorage(KsBitmap &bitmap) {
  const uint64_t bytes = uint64_t{bitmap.bytesPerLine} * bitmap.height;
  bitmap.pixels = static_cast<uint8_t *>(kscore::AllocateZeroed(KS_MEMORY_PIXELS, 1, bytes));
  if (bitmap.pixels == nullptr) return false;
  kscore::ExpectWholeUse(bitmap.pixels, bytes);
  bitmap.storageBytes = bytes;
  bitmap.flags |= KS_BITMAP_ALLOCATED | kscore::kBitmapUntouched;
  return true;
}

/** Storage, or the caller's data where it gave some already. */
Status AttachPixels(KsBitmap &bitmap, void *data, uint64_t size) {
  if (bitmap.kind == KS_BITMAP_OWN) return MakeStorage(bitmap) ? SUCCESS : ERROR_NO_MEMORY;
  return data == nullptr ? SUCCESS : KsBitmapSetData(&bitmap, data, size, 0);
}

}  // namespace

void KsBitmapInit(KsBitmap *bitmap, uint32_t bitmapSize, uint32_t, uint32_t, uint32_t) {
  if (bitmap == nullptr || bitmapSize != sizeof(KsBitmap)) return;
  *bitmap = {};
  bitmap->structureSize = sizeof(KsBitmap);
}

int32_t KsBitmapCreate(KsBitmap *bitmap, uint32_t bitmapSize, uint32_t kind, uint32_t width, uint32_t height,
                       uint32_t bits, uint32_t order, const KsPaletteEntry *palette, uint32_t memory, void *data,
                       uint64_t size) {
  if (bitmap == nullptr || bitmapSize != sizeof(KsBitmap)) return ERROR_INVALID_VALUE;
  KsBitmapInit(bitmap, bitmapSize, 0, 0, 0);
  if (!IsShape(kind, width, height, bits)) return ERROR_INVALID_VALUE;
  const uint64_t bytesPerLine = kscore::BytesPerLine(bits, width);
  if (!IsWithinLimit(bytesPerLine, height)) return ERROR_NO_MEMORY;
  if (bytesPerLine > std::numeric_limits<uint32_t>::max()) return ERROR_INVALID_VALUE;
  bitmap->kind = kind;
  bitmap->memory = memory;
  bitmap->width = width;
  bitmap->height = height;
  bitmap->bitsPerPixel = bits;
  bitmap->bytesPerLine = static_cast<uint32_t>(bytesPerLine);
  bitmap->order = order;
  Status status = SUCCESS;
  if (palette != nullptr && bits <= kscore::kDeepestPalette && !CopyPalette(*bitmap, palette)) status = ERROR_NO_MEMORY;
  if (status == SUCCESS) status = AttachPixels(*bitmap, data, size);
  if (status != SUCCESS) KsBitmapFree(bitmap);
  return status.Code();
}

int32_t KsBitmapSetData(KsBitmap *bitmap, void *data, uint64_t bytes, uint32_t) {
  if (!IsBitmap(bitmap) || bitmap->kind != KS_BITMAP_CALLER || data == nullptr) return ERROR_INVALID_VALUE;
  if (bytes < uint64_t{bitmap->bytesPerLine} * bitmap->height) return ERROR_INVALID_VALUE;
  bitmap->pixels = static_cast<uint8_t *>(data);
  bitmap->storageBytes = bytes;
  bitmap->flags |= KS_BITMAP_ALLOCATED;
  return SUCCESS;
}

int32_t KsBitmapView(KsBitmap *view, uint32_t bitmapSize, const KsBitmap *whole, uint32_t left, uint32_t top,
                     uint32_t width, uint32_t height) {
  if (view == nullptr || bitmapSize != sizeof(KsBitmap)) return ERROR_INVALID_VALUE;
  KsBitmapInit(view, bitmapSize, 0, 0, 0);
  const Status status = kscore::CheckPixels(whole);
  if (status != SUCCESS) return status.Code();
  const uint64_t firstBit = uint64_t{left} * whole->bitsPerPixel;
  const bool inside = uint64_t{left} + width <= whole->width && uint64_t{top} + height <= whole->height;
  if (!inside || width == 0 || height == 0 || firstBit % 8 != 0) return ERROR_INVALID_VALUE;
  view->kind = KS_BITMAP_CALLER;
  view->width = width;
  view->height = height;
  view->bitsPerPixel = whole->bitsPerPixel;
  view->bytesPerLine = whole->bytesPerLine;
  view->order = whole->order;
  view->pixels = whole->pixels + uint64_t{top} * whole->bytesPerLine + firstBit / 8;
  view->storageBytes = uint64_t{height - 1} * view->bytesPerLine + (uint64_t{width} * view->bitsPerPixel + 7) / 8;
  view->flags |= KS_BITMAP_ALLOCATED;
  return SUCCESS;
}

void KsBitmapFree(KsBitmap *bitmap) {
  if (!IsBitmap(bitmap)) return;
  if (bitmap->kind == KS_BITMAP_OWN) kscore::Release(KS_MEMORY_PIXELS, bitmap->pixels);
  kscore::Release(KS_MEMORY_PIXELS, bitmap->palette);
  KsBitmapInit(bitmap, sizeof(KsBitmap), 0, 0, 0);
}

int32_t KsBitmapAccess(KsBitmap *bitmap, uint32_t) {
  const Status status = kscore::CheckPixels(bitmap);
  if (status != SUCCESS) return status.Code();
  kscore::MarkWritten(*bitmap);
  ++bitmap->accessCount;
  return SUCCESS;
}

void KsBitmapRelease(KsBitmap *bitmap, uint32_t, uint32_t) {
  if (IsBitmap(bitmap) && bitmap->accessCount != 0) --bitmap->accessCount;
}

int64_t KsBitmapGetRow(const KsBitmap *bitmap, void *buffer, uint32_t row, uint64_t bytes) {
  const Status status = kscore::CheckPixels(bitmap);
  if (status != SUCCESS) return status.Code();
  if (buffer == nullptr || row >= bitmap->height) return ERROR_INVALID_VALUE;
  const uint64_t count = std::min<uint64_t>(bytes, bitmap->bytesPerLine);
  std::memcpy(buffer, kscore::RowOf(*bitmap, row), count);
  return static_cast<int64_t>(count);
}

int64_t KsBitmapPutRow(KsBitmap *bitmap, const void *buffer, uint32_t row, uint64_t bytes) {
  const Status status = kscore::CheckPixels(bitmap);
  if (status != SUCCESS) return status.Code();
  if (buffer == nullptr || row >= bitmap->height) return ERROR_INVALID_VALUE;
  const uint64_t count = std::min<uint64_t>(bytes, bitmap->bytesPerLine);
  kscore::MarkWritten(*bitmap);
  std::memcpy(kscore::RowOf(*bitmap, row), buffer, count);
  return static_cast<int64_t>(count);
}

uint64_t KsSetBitmapLimit(uint64_t bytes) {
  return bitmapLimit.exchange(bytes == 0 ? kFirstBitmapLimit : bytes);
}
