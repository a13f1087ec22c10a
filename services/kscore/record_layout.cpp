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

static_assert(sizeof(KsVector) == 1056);
static_assert(offsetof(KsVector, flags) == 916);
static_assert(offsetof(KsVector, options) == 1048);

static_assert(sizeof(KsVectorLayer) == 148);
static_assert(offsetof(KsVectorLayer, name) == 4);
static_assert(offsetof(KsVectorLayer, visible) == 132);
static_assert(offsetof(KsVectorLayer, reserved140) == 140);

static_assert(sizeof(KsVectorPen) == 68);
static_assert(sizeof(KsVectorBrush) == 292);
static_assert(sizeof(KsVectorVertex) == 28);

static_assert(sizeof(KsVectorLine) == 156);
static_assert(offsetof(KsVectorLine, first) == 32);
static_assert(offsetof(KsVectorLine, second) == 60);
static_assert(offsetof(KsVectorLine, pen) == 88);

static_assert(sizeof(KsVectorOval) == 448);
static_assert(offsetof(KsVectorOval, first) == 32);
static_assert(offsetof(KsVectorOval, second) == 60);
static_assert(offsetof(KsVectorOval, pen) == 88);
static_assert(offsetof(KsVectorOval, brush) == 156);

static_assert(sizeof(KsVectorPolygon) == 408);
static_assert(offsetof(KsVectorPolygon, points) == 32);
static_assert(offsetof(KsVectorPolygon, count) == 40);
static_assert(offsetof(KsVectorPolygon, pen) == 44);
static_assert(offsetof(KsVectorPolygon, brush) == 112);

static_assert(sizeof(KsVectorBox) == 436);
static_assert(offsetof(KsVectorBox, corner) == 32);
static_assert(offsetof(KsVectorBox, pen) == 60);
static_assert(offsetof(KsVectorBox, brush) == 128);
static_assert(offsetof(KsVectorBox, width) == 420);
static_assert(offsetof(KsVectorBox, height) == 428);
