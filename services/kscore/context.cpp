#include "kscore/context.h"

#include "kscore/allocation.h"
#include "kscore/bitmap.h"

#include <limits>

namespace kscore {
namespace {

constexpr std::uint32_t kWhite = 0xFFFFFF;

/** Doubles the room for saved states where it is used up. */
bool MakeRoom(KsDeviceContext &context) {
  if (context.savedCount < context.savedCapacity) return true;
  if (context.savedCount > std::numeric_limits<int>::max() / 2) return false;
  const std::uint32_t capacity = context.savedCapacity == 0 ? 4 : context.savedCapacity * 2;
  void *const grown = Reallocate(KS_MEMORY_OBJECT, context.saved, std::uint64_t{capacity} * sizeof(ContextState));
  if (grown == nullptr) return false;
  context.saved = static_cast<ContextState *>(grown);
  context.savedCapacity = capacity;
  return true;
}

}  // namespace

int SaveState(KsDeviceContext &context) {
  if (!MakeRoom(context)) return 0;
  context.saved[context.savedCount++] = context.state;
  return static_cast<int>(context.savedCount);
}

bool RestoreState(KsDeviceContext &context, int number) {
  if (number < 1 || static_cast<std::uint32_t>(number) > context.savedCount) return false;
  context.savedCount = static_cast<std::uint32_t>(number) - 1;
  context.state = context.saved[context.savedCount];
  return true;
}

}  // namespace kscore

KsDeviceContext *KsBitmapDC(KsBitmap *bitmap) {
  if (kscore::CheckPixels(bitmap) != SUCCESS) return nullptr;
  kscore::Block<KsDeviceContext, KS_MEMORY_OBJECT> context(1);
  if (!context) return nullptr;
  KsDeviceContext *const made = context.Release();
  made->bitmap = bitmap;
  made->stockPalette.stock = true;
  made->state = {&made->stockPalette, 0, 0, kscore::kWhite, kscore::BackgroundMode::opaque};
  return made;
}

void KsBitmapDCFree(KsDeviceContext *context) {
  if (context == nullptr) return;
  kscore::Release(KS_MEMORY_OBJECT, context->saved);
  kscore::Release(KS_MEMORY_OBJECT, context);
}
