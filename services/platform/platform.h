// The window system's calls that the library names, on the framework's own device contexts. They carry the names of the
// system that the library is at home on; the namespace keeps them apart from it.
#pragma once

#include "kskernel.h"

#include <cstdint>

namespace platform {

/** A window, of which the library never has one. */
using Window = void *;

/** The OK button, the only style in use. */
constexpr std::uint32_t MB_OK = 0;

/** Shows a message and waits for the answer. The handler of KsPlatformHandlers decides how. */
KS_API int MessageBoxA(Window owner, const char *text, const char *caption, std::uint32_t type);

/** Writes a line to the debug output. */
KS_API void OutputDebugStringA(const char *text);

/** The bytes of a global block, which stay where they are: its handle is their address. Null for a null handle. */
KS_API void *GlobalLock(void *handle);

/** Ends what GlobalLock began. Null is none. */
KS_API void GlobalUnlock(void *handle);

/** Sets the four edges of a rectangle. */
KS_API void SetRect(KsRect *rectangle, std::int32_t left, std::int32_t top, std::int32_t right, std::int32_t bottom);

/**
 * Selects a palette into a context: the palette before, to be selected back before the new one is released, or null for
 * a null argument. A new context has a stock palette. `background` is whether the palette yields to others.
 */
KS_API KsPalette *SelectPalette(KsDeviceContext *context, KsPalette *palette, bool background);

/** Maps the selected palette to the device: the number of its colours. */
KS_API std::uint32_t RealizePalette(KsDeviceContext *context);

/** Keeps the context's state: a number for RestoreDC, from 1, or 0 without memory. */
KS_API int SaveDC(KsDeviceContext *context);

/** Brings back a kept state and drops those kept after it; -1 is the last one. False where there is no such state. */
KS_API bool RestoreDC(KsDeviceContext *context, int saved);

// What texts on a context look like. A new context has black text on white, and fills the background.

/** The background modes. */
constexpr int TRANSPARENT = 1;
constexpr int OPAQUE = 2;

/** The result of the colour calls for a null context. */
constexpr std::uint32_t CLR_INVALID = 0xFFFFFFFF;

/** Sets the colour of texts: the one before. */
KS_API std::uint32_t SetTextColor(KsDeviceContext *context, std::uint32_t color);

/** Sets the colour behind texts: the one before. */
KS_API std::uint32_t SetBkColor(KsDeviceContext *context, std::uint32_t color);

/** Sets whether the box behind texts is filled: the mode before, or 0 for a null context or an unknown mode. */
KS_API int SetBkMode(KsDeviceContext *context, int mode);

/**
 * Writes `length` bytes of Latin 1 with the upper left corner of the first character's cell at (x, y). False where it
 * can't be done: a null argument, a negative length, or a bitmap that texts can't be written on.
 */
KS_API bool TextOutA(KsDeviceContext *context, std::int32_t x, std::int32_t y, const char *text, std::int32_t length);

}  // namespace platform
