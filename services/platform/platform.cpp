#include "platform/platform.h"

#include "kscore/context.h"

#include <cstdio>

namespace {

constexpr int kAnswerOk = 1;

KsPlatformHandlers handlers = {};

const char *TextOrNothing(const char *text) {
  return text != nullptr ? text : "";
}

}  // namespace

void KsSetPlatformHandlers(const KsPlatformHandlers *replacement) {
  handlers = replacement != nullptr ? *replacement : KsPlatformHandlers{};
}

namespace platform {

int MessageBoxA(Window, const char *text, const char *caption, std::uint32_t type) {
  if (handlers.messageBox != nullptr) return handlers.messageBox(text, caption, type, handlers.userData);
  std::fprintf(stderr, "%s: %s\n", TextOrNothing(caption), TextOrNothing(text));
  return kAnswerOk;
}

void OutputDebugStringA(const char *text) {
  if (handlers.debugOutput != nullptr) handlers.debugOutput(text, handlers.userData);
}

void SetRect(KsRect *rectangle, std::int32_t left, std::int32_t top, std::int32_t right, std::int32_t bottom) {
  if (handlers.setRect != nullptr) {
    handlers.setRect(rectangle, left, top, right, bottom, handlers.userData);
  } else if (rectangle != nullptr) {
    *rectangle = {left, top, right, bottom};
  }
}

KsPalette *SelectPalette(KsDeviceContext *context, KsPalette *palette, bool) {
  if (context == nullptr || palette == nullptr) return nullptr;
  KsPalette *const before = context->state.palette;
  context->state.palette = palette;
  context->state.paletteColors = palette->count;
  return before;
}

std::uint32_t RealizePalette(KsDeviceContext *context) {
  return context == nullptr ? 0 : context->state.paletteColors;
}

int SaveDC(KsDeviceContext *context) {
  return context == nullptr ? 0 : kscore::SaveState(*context);
}

bool RestoreDC(KsDeviceContext *context, int saved) {
  if (context == nullptr) return false;
  return kscore::RestoreState(*context, saved == -1 ? static_cast<int>(context->savedCount) : saved);
}

}  // namespace platform
