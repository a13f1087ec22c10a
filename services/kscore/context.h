// A device context: a bitmap to paint on, and the state that painting goes by.
#pragma once

#include "kscore/palette.h"

namespace kscore {

enum class BackgroundMode : std::uint32_t { transparent = 1, opaque = 2 };

struct ContextState {
  KsPalette *palette;
  std::uint32_t paletteColors;  // of `palette`, which its owner may have released in the meantime
  std::uint32_t textColor;
  std::uint32_t backgroundColor;
  BackgroundMode backgroundMode;
};

}  // namespace kscore

struct KsDeviceContext {
  KsBitmap *bitmap;
  KsPalette stockPalette;  // selected where no other is, so that there is always one to select back
  kscore::ContextState state;
  kscore::ContextState *saved;
  std::uint32_t savedCount;
  std::uint32_t savedCapacity;
};

namespace kscore {

/** Puts the current state on the stack: its number from 1, or 0 without memory. */
int SaveState(KsDeviceContext &context);
/** Brings state `number` back and drops it and those above it; false where there is no such state. */
bool RestoreState(KsDeviceContext &context, int number);

}  // namespace kscore
