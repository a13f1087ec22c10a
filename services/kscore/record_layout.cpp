// The records that clients share with the framework byte for byte.
#include "kskernel.h"

static_assert(sizeof(KsPaletteEntry) == 4);

static_assert(sizeof(KsBitmap) == 284);
static_assert(offsetof(KsBitmap, structureSize) == 0);
static_assert(offsetof(KsBitmap, kind) == 4);
static_assert(offsetof(KsBitmap, pixels) == 8);
static_assert(offsetof(KsBitmap, memory) == 16);
static_assert(offsetof(KsBitmap, width) == 20);
static_assert(offsetof(KsBitmap, height) == 24);
static_assert(offsetof(KsBitmap, bitsPerPixel) == 28);
static_assert(offsetof(KsBitmap, bytesPerLine) == 32);
static_assert(offsetof(KsBitmap, storageBytes) == 36);
static_assert(offsetof(KsBitmap, accessCount) == 44);
static_assert(offsetof(KsBitmap, flags) == 48);
static_assert(offsetof(KsBitmap, colorCount) == 52);
static_assert(offsetof(KsBitmap, palette) == 56);
static_assert(offsetof(KsBitmap, paletteCapacity) == 64);
static_assert(offsetof(KsBitmap, order) == 68);
static_assert(offsetof(KsBitmap, reserved) == 72);

static_assert(sizeof(KsLoadOptions) == 84);
static_assert(offsetof(KsLoadOptions, loadFlags) == 12);
static_assert(offsetof(KsLoadOptions, bands) == 36);

static_assert(sizeof(KsSaveOptions) == 1610);
static_assert(offsetof(KsSaveOptions, saveFlags) == 1606);

static_assert(sizeof(KsFileInfo) == 2316);
static_assert(offsetof(KsFileInfo, formatId) == 4);
static_assert(offsetof(KsFileInfo, width) == 1032);
static_assert(offsetof(KsFileInfo, height) == 1036);
static_assert(offsetof(KsFileInfo, bitsPerPixel) == 1040);
static_assert(offsetof(KsFileInfo, imageBytes) == 1052);
static_assert(offsetof(KsFileInfo, pageCount) == 1100);
static_assert(offsetof(KsFileInfo, pageNumber) == 1104);

static_assert(sizeof(KsRawFormatInfo) == 64);
static_assert(offsetof(KsRawFormatInfo, format) == 4);
static_assert(offsetof(KsRawFormatInfo, width) == 8);
static_assert(offsetof(KsRawFormatInfo, height) == 12);
static_assert(offsetof(KsRawFormatInfo, bits) == 16);
static_assert(offsetof(KsRawFormatInfo, offset) == 28);
static_assert(offsetof(KsRawFormatInfo, pages) == 36);
