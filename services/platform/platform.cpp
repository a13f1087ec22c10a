#include "platform/platform.h"

#include "kscore/context.h"
#include "ksvect/paint/painter.h"

#include <cstdio>
#include <new>
#include <utility>

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

void *GlobalLock(void *handle) {
  return handle;
}

void GlobalUnlock(void *) {}

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

std::uint32_t SetTextColor(KsDeviceContext *context, std::uint32_t color) {
  return context == nullptr ? CLR_INVALID : std::exchange(context->state.textColor, color);
}

std::uint32_t SetBkColor(KsDeviceContext *context, std::uint32_t color) {
  return context == nullptr ? CLR_INVALID : std::exchange(context->state.backgroundColor, color);
}

int SetBkMode(KsDeviceContext *context, int mode) {
  if (context == nullptr || (mode != TRANSPARENT && mode != OPAQUE)) return 0;
  return static_cast<int>(std::exchange(context->state.backgroundMode, static_cast<kscore::BackgroundMode>(mode)));
}

bool TextOutA(KsDeviceContext *context, std::int32_t x, std::int32_t y, const char *text, std::int32_t length) try {
  if (context == nullptr || text == nullptr || length < 0) return false;
  const kscore::ContextState &state = context->state;
  const bool opaque = state.backgroundMode == kscore::BackgroundMode::opaque;
  const std::string_view characters(text, static_cast<std::size_t>(length));
  const ksvect::ScreenText line = {x, y, characters, state.textColor, opaque, state.backgroundColor};
  return ksvect::PaintScreenText(line, *context->bitmap) == SUCCESS;
} catch (const std::bad_alloc &) {
  return false;
}

}  // namespace platform
