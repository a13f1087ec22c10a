/**
 * @file
 * The imaging framework as its clients see it: files, memory, bitmaps, palettes, device contexts, and the operations on
 * pixels that the NITF library is built on. Usable from C11 and C++.
 *
 * Results: unless documented otherwise, a function returns a signed 32-bit status: SUCCESS (1) or a negative KsStatus.
 *
 * Functions that create or receive a bitmap expect sizeof(KsBitmap), and return ERROR_INVALID_VALUE for another size,
 * so that a caller built against another layout is detected.
 *
 * Colours are u32 with red in the low byte, then green, then blue; the top byte is ignored.
 *
 * Pixels: rows are stored from top to bottom.
 *   - 1 bit: the leftmost pixel in the most significant bit.
 *   - 12 bits: two samples p and q in three bytes: the low eight bits of p; the high four bits of p in the low nibble
 *     and the low four of q in the high nibble; the high eight bits of q.
 *   - 16 bits: gray in native byte order.
 *   - 24 bits: blue, green, red.
 *   - 32 bits: blue, green, red, unused.
 *
 * Threads: a file, bitmap or context must not be used by two threads at the same time. Different objects are
 * independent.
 */
#ifndef KSKERNEL_H
#define KSKERNEL_H

#include <stddef.h>
#include <stdint.h>
#ifndef __cplusplus
#include <uchar.h>
#endif

/** Marks the functions that the library exports. */
#if defined(_WIN32)
#if defined(KSKERNEL_BUILD)
#define KS_API __declspec(dllexport)
#else
#define KS_API __declspec(dllimport)
#endif
#else
#define KS_API __attribute__((visibility("default")))
#endif

/* The Windows headers define another ERROR_NOT_SUPPORTED; users of this header mean the framework's. */
#ifdef ERROR_NOT_SUPPORTED
#undef ERROR_NOT_SUPPORTED
#endif

#ifdef __cplusplus
extern "C" {
#endif

/** Status values. Compare with SUCCESS: some errors are not negative. */
enum KsStatus {
  SUCCESS = 1,
  ERROR_NO_MEMORY = -1,      /**< an allocation failed, or a bitmap exceeds the limit of KsSetBitmapLimit */
  ERROR_NO_STORAGE = -2,     /**< the bitmap has no storage */
  ERROR_FILE_WRITE = -5,     /**< a write failed or was incomplete */
  ERROR_FILE_READ = -7,      /**< a read failed or was incomplete */
  ERROR_FILE_FORMAT = -9,    /**< malformed data */
  ERROR_NO_FILE = -10,       /**< the file doesn't exist */
  ERROR_BITMAP_SIZE = -11,   /**< the bitmap is too wide or too high for the format */
  ERROR_INVALID_VALUE = -13, /**< null or invalid argument */
  ERROR_NOT_SUPPORTED = -16, /**< no codec, or no conversion between two bit depths */
  ERROR_QUALITY = -21,       /**< quality outside 2 to 255 */
  ERROR_BITS_PER_PIXEL = -27 /**< unsupported number of bits per pixel */
};

#pragma pack(push, 1)

/** A colour of a palette, in the byte order of a 24-bit pixel. */
typedef struct KsPaletteEntry {
  uint8_t blue;  /**< 0 to 255 */
  uint8_t green; /**< 0 to 255 */
  uint8_t red;   /**< 0 to 255 */
  uint8_t reserved;
} KsPaletteEntry;

/** A palette object, from KsPaletteFromLut or KsPaintPalette. Release it with KsObjectFree. */
typedef struct KsPalette KsPalette;

/** A device context on a bitmap. */
typedef struct KsDeviceContext KsDeviceContext;

/** A rectangle of pixels. `right` and `bottom` are exclusive. */
typedef struct KsRect {
  int32_t left;   /**< the first column */
  int32_t top;    /**< the first row */
  int32_t right;  /**< one past the last column */
  int32_t bottom; /**< one past the last row */
} KsRect;

/** The meaning of a bitmap's pixels: values of KsBitmap::order. */
enum KsColorOrder {
  KS_ORDER_PALETTE = 0, /**< palette indices, or levels of the gray ramp if there is no palette */
  KS_ORDER_BGR = 1,     /**< blue, green, red */
  KS_ORDER_GRAY = 2,    /**< grays */
  KS_ORDER_CODEC = 4    /**< for loads: whatever the codec produces */
};

/** The owner of a bitmap's pixels: values of KsBitmap::kind. */
enum KsBitmapKind {
  KS_BITMAP_OWN = 1,   /**< the bitmap; released by KsBitmapFree */
  KS_BITMAP_CALLER = 2 /**< the caller, who must keep them valid */
};

/** Bit 0 of KsBitmap::flags: the bitmap has storage. */
#define KS_BITMAP_ALLOCATED 1u
/**
 * Bit 2 of KsBitmap::flags: the bitmap is a reduced picture, and is enlarged (bilinearly) to the rectangle that it is
 * combined or painted into. May be set by the caller.
 */
#define KS_BITMAP_ENLARGED 4u

/** A bitmap. Callers may read the documented members. KsBitmapInit creates an empty one. */
typedef struct KsBitmap {
  uint32_t structureSize;   /**< 0: 284 */
  uint32_t kind;            /**< 4: KsBitmapKind */
  uint8_t *pixels;          /**< 8: first row; owned by the bitmap for KS_BITMAP_OWN */
  uint32_t memory;          /**< 16: the memory kind passed to KsBitmapCreate */
  uint32_t width;           /**< 20: pixels */
  uint32_t height;          /**< 24: rows */
  uint32_t bitsPerPixel;    /**< 28: 1 to 255 */
  uint32_t bytesPerLine;    /**< 32: bytes from one row to the next, a multiple of 4 */
  uint64_t storageBytes;    /**< 36: bytes at `pixels` */
  uint32_t accessCount;     /**< 44: calls of KsBitmapAccess without KsBitmapRelease */
  uint32_t flags;           /**< 48: KS_BITMAP_ALLOCATED, KS_BITMAP_ENLARGED, and internal bits */
  uint32_t colorCount;      /**< 52: colours of the palette, 0 without one */
  KsPaletteEntry *palette;  /**< 56: at least 2^bitsPerPixel entries up to 8 bits; owned by the bitmap */
  uint32_t paletteCapacity; /**< 64: entries at `palette` */
  uint32_t order;           /**< 68: KsColorOrder; may be set by the caller */
  uint8_t reserved[212];    /* 72 */
} KsBitmap;

/** Options for loading. Clients of the filter set only `loadFlags`. */
typedef struct KsLoadOptions {
  uint8_t reserved0[12];
  uint32_t loadFlags; /**< 12: bits of KsLoadFlags and NitfLoadFlags */
  uint8_t reserved16[20];
  uint32_t bands[3]; /**< 36, 40, 44: bands for the red, green and blue channel, counted from 0 */
  uint8_t reserved48[36];
} KsLoadOptions;

/** Options for saving. KsSaveOptionsInit sets the size. */
typedef struct KsSaveOptions {
  uint32_t structureSize; /**< 0: 1610 */
  uint8_t reserved4[1602];
  uint32_t saveFlags; /**< 1606: bit 0 is set by the writer of NITF files */
} KsSaveOptions;

/** A description of a file, from a filter or codec. */
typedef struct KsFileInfo {
  uint8_t reserved0[4];
  uint32_t formatId; /**< 4: the framework's number for the format */
  uint8_t reserved8[1024];
  uint32_t width;        /**< 1032: pixels */
  uint32_t height;       /**< 1036: rows */
  uint32_t bitsPerPixel; /**< 1040: of all components */
  uint8_t reserved1044[8];
  uint64_t imageBytes; /**< 1052: bytes of the picture with rows padded to 4 bytes */
  uint8_t reserved1060[40];
  uint32_t pageCount;  /**< 1100: always 1 */
  uint32_t pageNumber; /**< 1104: always 1 */
  uint8_t reserved1108[1208];
} KsFileInfo;

#pragma pack(pop)

/* ---- files ------------------------------------------------------------------------------------------------------- */

/** An open file, or KS_INVALID_HANDLE. Reads and writes are buffered, so small ones are cheap. */
typedef int64_t KsHandle;

#define KS_INVALID_HANDLE ((KsHandle)-1) /**< not a file */
#define KS_OPEN_READ 0x8000u             /**< flags of KsOpen: read-only, binary */
#define KS_MODE_READ 0x100u              /**< the mode for KS_OPEN_READ */
#define KS_OPEN_CREATE 0x8302u           /**< flags of KsOpen: read and write, binary, created or truncated */
#define KS_MODE_CREATE 0x80u             /**< the mode for KS_OPEN_CREATE */

/** The origin of KsSeek. */
enum KsSeekOrigin {
  KS_SEEK_START = 0,   /**< the start of the file */
  KS_SEEK_CURRENT = 1, /**< the current position */
  KS_SEEK_END = 2      /**< the end of the file */
};

/**
 * Opens a file. `name` is zero-terminated UTF-16; `flags` and `mode` are KS_OPEN_READ with KS_MODE_READ, or
 * KS_OPEN_CREATE with KS_MODE_CREATE. Returns KS_INVALID_HANDLE on error, and for a directory. Close the file with
 * KsClose.
 */
KS_API KsHandle KsOpen(const char16_t *name, uint32_t flags, uint32_t mode);

/**
 * Opens `count` bytes of memory for reading, as a file. They are not copied: they must stay unchanged until the file is
 * closed. Returns KS_INVALID_HANDLE if `bytes` is null, or out of memory.
 */
KS_API KsHandle KsOpenMemory(const void *bytes, uint64_t count);

/** Flushes and closes a file. Returns ERROR_FILE_WRITE if this or an earlier write failed, or for an invalid handle. */
KS_API int32_t KsClose(KsHandle handle);

/** Reads up to `bytes` bytes at the position. Returns the number of bytes read: fewer at the end or on error. */
KS_API uint64_t KsRead(KsHandle handle, void *buffer, uint64_t bytes);

/**
 * Reads up to `bytes` bytes of a file that is open for reading, at `position` from its start. The file's own position
 * is neither used nor changed, so several threads may read at once. Returns the number of bytes read.
 */
KS_API uint64_t KsReadAt(KsHandle handle, int64_t position, void *buffer, uint64_t bytes);

/** Writes `bytes` bytes at the position. Returns the number of bytes written. KsClose reports delayed errors. */
KS_API uint64_t KsWrite(KsHandle handle, const void *buffer, uint64_t bytes);

/** As KsWrite, for the data of segments. */
KS_API uint64_t KsWriteBlock(KsHandle handle, const void *buffer, uint64_t bytes);

/**
 * Copies `bytes` bytes from the position of `source` to that of `target`, and advances both positions.
 *
 * @retval SUCCESS
 * @retval ERROR_FILE_READ `source` has fewer bytes, in which case nothing is copied, or can't be read
 * @retval ERROR_FILE_WRITE `target` can't be written
 * @retval ERROR_NO_MEMORY out of memory
 */
KS_API int32_t KsCopyBytes(KsHandle target, KsHandle source, uint64_t bytes);

/** Returns SUCCESS if a file of any kind with that name exists, otherwise ERROR_NO_FILE. */
KS_API int32_t KsFileExists(const char16_t *name);

/** Returns SUCCESS if `name` refers, by any path or link, to the open file, otherwise ERROR_NO_FILE. */
KS_API int32_t KsIsSameFile(KsHandle handle, const char16_t *name);

/** Sets the position to `offset` bytes from `origin` (KsSeekOrigin). Returns it, or -1 with the position unchanged. */
KS_API int64_t KsSeek(KsHandle handle, int64_t offset, uint32_t origin);

/** Converts UTF-8 to UTF-16. Returns null if `name` isn't UTF-8, or out of memory. Free it with KsToWideFree. */
KS_API char16_t *KsToWide(const char *name);
/** Frees a name from KsToWide. Null is ignored. */
KS_API void KsToWideFree(char16_t *name);

/* ---- memory ------------------------------------------------------------------------------------------------------ */

/** The kind of a traced block. */
enum KsMemoryKind {
  KS_MEMORY_BLOCK = 1,  /**< KsCalloc, KsAllocBlock, KsRealloc */
  KS_MEMORY_PIXELS = 2, /**< pixels and palettes of bitmaps */
  KS_MEMORY_GLOBAL = 3, /**< global blocks, from KsTrackAlloc to KsFreeGlobal */
  KS_MEMORY_OBJECT = 4, /**< palettes and device contexts */
  KS_MEMORY_ARRAY = 5,  /**< reported blocks of the C++ heap */
  KS_MEMORY_FILE = 6,   /**< open files and their buffers */
  KS_MEMORY_KINDS = 7   /**< the number of kinds, including 0 */
};

/** Allocates `count` times `size` zeroed bytes, at least one. Returns null if out of memory. Free it with KsFree. */
KS_API void *KsCalloc(uint64_t count, uint64_t size, int32_t line, const char *file);
/** KsCalloc without zeroing. */
KS_API void *KsAllocBlock(uint64_t count, uint64_t size, int32_t line, const char *file);
/** Resizes a block, or allocates one if `block` is null. Returns null if out of memory; `block` is then unchanged. */
KS_API void *KsRealloc(void *block, uint64_t bytes, int32_t line, const char *file);
/** Frees a block of KsCalloc, KsAllocBlock or KsRealloc. Null is ignored. `line` and `file` identify the caller. */
KS_API void KsFree(void *block, int32_t line, const char *file);
/** Frees a global block, such as one from KsSaveMemory. Null is ignored. */
KS_API void KsFreeGlobal(void *handle, int32_t line, const char *file);
/** Releases a palette object. Null and a context's stock palette are ignored. */
KS_API void KsObjectFree(void *object, int32_t line, const char *file);
/** Reports an allocation on the C++ heap. `kind` is a KsMemoryKind. Null is ignored. */
KS_API void KsTrackAlloc(uint32_t kind, const void *block, int32_t line, const char *file);
/** Reports that such a block was freed. */
KS_API void KsTrackFree(uint32_t kind, const void *block, int32_t line, const char *file);

/** Returns the number of live blocks of a KsMemoryKind in this process; always 0 without tracing (release builds). */
KS_API int64_t KsLiveBlocks(uint32_t kind);

/**
 * For tests: after `successes` more allocations, all further ones fail. A negative number ends this. Without tracing
 * (release builds) it has no effect.
 */
KS_API void KsFailAllocationsAfter(int64_t successes);

/* ---- bitmaps ----------------------------------------------------------------------------------------------------- */

/** Initialises an empty bitmap. Previous contents are not released. The last three arguments are 0. */
KS_API void KsBitmapInit(KsBitmap *bitmap, uint32_t bitmapSize, uint32_t, uint32_t, uint32_t);

/**
 * Creates a bitmap. Previous contents of `bitmap` are not released. After an error it is empty. Free it with
 * KsBitmapFree.
 *
 * @param bitmap receives the bitmap
 * @param bitmapSize sizeof(KsBitmap)
 * @param kind KS_BITMAP_OWN allocates zeroed pixels; KS_BITMAP_CALLER uses those at `data`
 * @param width pixels
 * @param height rows
 * @param bits per pixel, 1 to 255. Depths other than 1, 8, 12, 16, 24 and 32 can only be combined with their like.
 * @param order KsColorOrder
 * @param palette 2^bits entries, which are copied; may be null. Only for up to 8 bits.
 * @param memory 1, or 4 for a canvas
 * @param data for KS_BITMAP_CALLER: rows of bytesPerLine bytes, which the caller keeps valid; null to set them later
 *        with KsBitmapSetData
 * @param size bytes at `data`
 * @retval SUCCESS
 * @retval ERROR_NO_MEMORY out of memory, or above the limit of KsSetBitmapLimit
 * @retval ERROR_INVALID_VALUE the arguments don't describe a bitmap
 */
KS_API int32_t KsBitmapCreate(KsBitmap *bitmap, uint32_t bitmapSize, uint32_t kind, uint32_t width, uint32_t height,
                              uint32_t bits, uint32_t order, const KsPaletteEntry *palette, uint32_t memory, void *data,
                              uint64_t size);

/** Sets the pixels of a KS_BITMAP_CALLER bitmap. ERROR_INVALID_VALUE if `bytes` is below height times bytesPerLine. */
KS_API int32_t KsBitmapSetData(KsBitmap *bitmap, void *data, uint64_t bytes, uint32_t);

/**
 * Makes `view` a KS_BITMAP_CALLER bitmap on a part of `whole`, with the same depth, colour order and distance between
 * rows, and without a palette. Use it to combine and to write pixels; don't clear or fill it. `whole` must stay open by
 * KsBitmapAccess and valid as long as the view is used.
 *
 * @retval SUCCESS
 * @retval ERROR_INVALID_VALUE the part isn't inside `whole`, or `left` isn't at a byte boundary
 * @retval ERROR_NO_STORAGE `whole` has no storage
 */
KS_API int32_t KsBitmapView(KsBitmap *view, uint32_t bitmapSize, const KsBitmap *whole, uint32_t left, uint32_t top,
                            uint32_t width, uint32_t height);

/** Releases pixels and palette, and leaves an empty bitmap. Calling it for an empty bitmap is safe. */
KS_API void KsBitmapFree(KsBitmap *bitmap);

/** Sets all pixels to 0, including those of the caller for KS_BITMAP_CALLER. */
KS_API void KsBitmapClear(KsBitmap *bitmap);

/**
 * Sets all pixels to a colour: the colour itself for 24 and 32 bits, its brightness for grays, or the nearest entry of
 * the palette.
 *
 * @retval SUCCESS
 * @retval ERROR_NO_STORAGE the bitmap has no storage
 * @retval ERROR_BITS_PER_PIXEL there is no conversion to its depth
 */
KS_API int32_t KsBitmapFill(KsBitmap *bitmap, uint32_t color);

/**
 * Opens a bitmap for reading and writing rows, and for writing to KsBitmap::pixels directly. Each successful call needs
 * a KsBitmapRelease. ERROR_NO_STORAGE if the bitmap has no storage.
 */
KS_API int32_t KsBitmapAccess(KsBitmap *bitmap, uint32_t);
/** Ends a KsBitmapAccess. The last two arguments are 1. */
KS_API void KsBitmapRelease(KsBitmap *bitmap, uint32_t, uint32_t);

/**
 * Copies up to `bytes` bytes of a row, counted from 0 at the top, from the bitmap to `buffer`. Returns the number of
 * bytes copied, ERROR_INVALID_VALUE if there is no such row, or ERROR_NO_STORAGE.
 */
KS_API int64_t KsBitmapGetRow(const KsBitmap *bitmap, void *buffer, uint32_t row, uint64_t bytes);
/** As KsBitmapGetRow, from `buffer` to the bitmap. */
KS_API int64_t KsBitmapPutRow(KsBitmap *bitmap, const void *buffer, uint32_t row, uint64_t bytes);

/** Copies palette entries to `entries`, as far as there are any. ERROR_INVALID_VALUE without a palette. */
KS_API int32_t KsBitmapGetPalette(const KsBitmap *bitmap, uint32_t first, uint32_t count, KsPaletteEntry *entries);

/**
 * Sets `count` palette entries from `first`, as far as the depth has them. A bitmap without a palette first gets the
 * gray ramp of its depth. ERROR_BITS_PER_PIXEL above 8 bits per pixel.
 */
KS_API int32_t KsBitmapSetPalette(KsBitmap *bitmap, uint32_t first, uint32_t count, const KsPaletteEntry *entries);

/** Returns the gray ramp for 1 to 8 bits, with 2^bits entries, or null. Free it with KsPaletteFree. */
KS_API KsPaletteEntry *KsDefaultPalette(uint32_t bits);
/** Frees a palette from KsDefaultPalette. Null is ignored. */
KS_API void KsPaletteFree(KsPaletteEntry *palette);

/** Creates a palette of up to 65536 entries 0x00RRGGBB. Returns null on error. Free it with KsObjectFree. */
KS_API KsPalette *KsPaletteFromLut(const uint32_t *table, uint32_t count);

/**
 * Attaches a copy of a palette to a bitmap of up to 16 bits per pixel. Indices beyond its end are black. At 12 and 16
 * bits the pixels are still shown as grays. ERROR_BITS_PER_PIXEL above 16 bits.
 */
KS_API int32_t KsBitmapSetLut(KsBitmap *bitmap, const KsPalette *palette);

/**
 * Sets the maximum size of a bitmap's pixels in bytes, above which KsBitmapCreate returns ERROR_NO_MEMORY. The default
 * is 4 GiB; 0 restores it. Returns the previous limit.
 */
KS_API uint64_t KsSetBitmapLimit(uint64_t bytes);

/* ---- combining and painting -------------------------------------------------------------------------------------- */

#define KS_COMBINE_COPY 288u /**< the operation of KsCombine: copy */

/**
 * Copies `source`, starting at its pixel (`sourceLeft`, `sourceTop`), to the rectangle of `target` at (`left`, `top`),
 * unscaled. The rectangle is clipped to both bitmaps; positions may be negative. A source with KS_BITMAP_ENLARGED is
 * stretched to the whole rectangle instead, in 24-bit colour. `operation` is KS_COMBINE_COPY, `flags` 0.
 *
 * Colours are converted to the target's depth:
 *   - equal depths are copied unchanged; 8-bit indices only if the source has no palette, or the target's palette
 *   - indices of 1 and 8 bits become the colours of their palette, or of the gray ramp without one
 *   - grays of 12 and 16 bits are reduced to their high eight bits
 *   - colours become grays, (77 red + 151 green + 28 blue) / 256, or the nearest colour of the target's palette
 *
 * @retval SUCCESS
 * @retval ERROR_NO_STORAGE a bitmap has no storage
 * @retval ERROR_NOT_SUPPORTED there is no conversion between the depths, or `operation` is another one
 */
KS_API int32_t KsCombine(KsBitmap *target, int32_t left, int32_t top, int32_t width, int32_t height,
                         const KsBitmap *source, int32_t sourceLeft, int32_t sourceTop, uint32_t operation,
                         uint32_t flags);

/** Creates a context on a bitmap, which must outlive it. Returns null on error. Free it with KsBitmapDCFree. */
KS_API KsDeviceContext *KsBitmapDC(KsBitmap *bitmap);
/** Releases a context and its palette. Null is ignored. */
KS_API void KsBitmapDCFree(KsDeviceContext *context);

/** Returns a copy of a bitmap's palette, or null if it has none. Free it with KsObjectFree. */
KS_API KsPalette *KsPaintPalette(KsDeviceContext *context, const KsBitmap *bitmap);

#define KS_ROP_COPY 0xCC0020u /**< raster operation: copy */

/**
 * Paints a bitmap at the upper left corner of `rectangle`, unscaled, clipped to it, and converted as by KsCombine. A
 * bitmap with KS_BITMAP_ENLARGED is stretched to the rectangle instead.
 *
 * @param context the context to paint on
 * @param bitmap the bitmap to paint
 * @param source the part of the bitmap to paint, or null for all; for an enlarged bitmap only its corner is used
 * @param clip the part of the canvas that may change, or null for all
 * @param rectangle where to paint
 * @param reserved null
 * @param rasterOperation KS_ROP_COPY
 * @retval SUCCESS
 * @retval ERROR_INVALID_VALUE the context or the rectangle is null
 * @retval ERROR_NOT_SUPPORTED another operation
 */
KS_API int32_t KsPaintBitmap(KsDeviceContext *context, const KsBitmap *bitmap, const KsRect *source, const KsRect *clip,
                             const KsRect *rectangle, const void *reserved, uint32_t rasterOperation);

/**
 * As KsPaintBitmap, except that pixels whose colour is exactly `color` are transparent. Grays of 12 and 16 bits are
 * compared in all their bits: level 0x13 means 0x131 and 0x1313. `scale` is 1000, and the seven numbers after it are 1.
 * ERROR_NOT_SUPPORTED also for depths without conversion.
 */
KS_API int32_t KsPaintTransparent(KsDeviceContext *context, const KsBitmap *bitmap, const KsRect *source,
                                  const KsRect *clip, const KsRect *rectangle, const void *reserved, uint32_t scale,
                                  uint32_t, uint32_t, uint32_t, uint32_t, uint32_t, uint32_t, uint32_t, uint32_t color,
                                  uint32_t, uint32_t, uint32_t rasterOperation);

/* ---- tone and bands ---------------------------------------------------------------------------------------------- */

/**
 * Adds the number of pixels of each brightness to `counters`, which has `count` (256) entries. The brightness is the
 * high byte of 12- and 16-bit grays, and the gray of KsCombine for palettes and colours.
 *
 * @retval SUCCESS
 * @retval ERROR_INVALID_VALUE `counters` is null, or `count` isn't 256
 * @retval ERROR_NO_STORAGE the bitmap has no storage
 * @retval ERROR_BITS_PER_PIXEL there is no conversion from its depth
 */
KS_API int32_t KsHistogram(const KsBitmap *bitmap, uint64_t *counters, uint32_t count, uint32_t);

/**
 * Stretches the range of values in use to the full range. With `low` and `high` the least and greatest value in use in
 * all channels, each value v becomes (v - low) * full / (high - low), rounded down, where full is 255, 4095 or 65535
 * depending on the depth. If the bitmap has a palette, the colours in use are stretched, not the pixels. A bitmap with
 * a single value is unchanged. `amount` is 350. ERROR_BITS_PER_PIXEL for depths without conversion.
 */
KS_API int32_t KsToneAdjust(KsBitmap *bitmap, uint32_t amount, uint32_t);

/**
 * Merges one to four 8-bit bitmaps of equal size, the bands, into a 24-bit bitmap. The previous contents of `target`
 * are released. `bands` is ordered from the last band to the first and ends with a null pointer, or after four: the
 * last entry is red, the one before it green, and the one before that blue. One or two bands result in a gray, of the
 * last entry.
 *
 * @retval SUCCESS
 * @retval ERROR_INVALID_VALUE there are no bands, or bands of different size
 * @retval ERROR_BITS_PER_PIXEL a band doesn't have 8 bits
 * @retval ERROR_NO_STORAGE a band has no storage
 * @retval ERROR_NO_MEMORY out of memory
 */
KS_API int32_t KsBandsMerge(KsBitmap *target, KsBitmap *const *bands, uint32_t bitmapSize, uint32_t);

/* ---- codecs ------------------------------------------------------------------------------------------------------ */

/** The framework's numbers for stream formats. docs/formats.md has a table of them. */
enum KsFormat {
  KS_FORMAT_JP2 = 5,       /**< JPEG 2000 in a JP2 file */
  KS_FORMAT_JPEG = 10,     /**< JPEG, 8 bits, sequential, one or three components without subsampling; saved as YCbCr */
  KS_FORMAT_JPEG_12 = 11,  /**< JPEG, 12 bits, extended sequential */
  KS_FORMAT_JPEG_422 = 21, /**< as 10, chroma halved horizontally */
  KS_FORMAT_JPEG_420 = 22, /**< as 10, any other subsampling */
  KS_FORMAT_JPEG_PROGRESSIVE = 23, /**< JPEG, 8 bits, progressive, any components */
  KS_FORMAT_JPEG_LOSSLESS = 24,    /**< JPEG, process 14 */
  KS_FORMAT_JPEG_MANY = 26,        /**< JPEG, 8 bits, sequential, two components, or more than three */
  KS_FORMAT_CGM = 62,              /**< drawing, for KsVectorLoadMemory and KsVectorSaveMemory */
  KS_FORMAT_T4_1D = 66,            /**< bi-level, T.4 one-dimensional, without a header */
  KS_FORMAT_T4_2D = 67,            /**< bi-level, T.4 two-dimensional, without a header */
  KS_FORMAT_J2K = 165,             /**< JPEG 2000, a bare codestream */
  KS_FORMAT_JPEG_RGB = 182         /**< for saving: JPEG, 8 bits, with RGB components */
};

/** Bits of KsLoadOptions::loadFlags that codecs use. */
enum KsLoadFlags {
  /**
   * Take the three components of a JPEG stream that names no colours as red, green and blue. Without this flag they are
   * Y, Cb and Cr.
   */
  KS_LOAD_COLOR = 0x4000,
  /**
   * Return the components in KsLoadOptions::bands as red, green and blue, without colour conversion. A number beyond
   * the last component means the last one.
   */
  KS_LOAD_BANDS = 0x8000,
  /**
   * With KS_LOAD_BANDS: the bands are those that a file names beside a JPEG 2000 stream. A stream that defines its
   * channels or has a palette is decoded as without KS_LOAD_BANDS.
   */
  KS_LOAD_NAMED_BANDS = 0x10000,
  /**
   * With KS_LOAD_NAMED_BANDS: the bands are Y, Cb and Cr, and are converted. A stream whose colours are others, by its
   * colour box or because it mixes its components itself, is decoded as without KS_LOAD_BANDS.
   */
  KS_LOAD_YCBCR = 0x20000
};

#pragma pack(push, 1)

/** The description of a stream without a header, filled by a redirect callback. */
typedef struct KsRawFormatInfo {
  uint8_t reserved0[4];
  uint32_t format; /**< 4: KS_FORMAT_T4_1D or KS_FORMAT_T4_2D */
  uint32_t width;  /**< 8: pixels */
  uint32_t height; /**< 12: rows */
  uint32_t bits;   /**< 16: 1 */
  uint8_t reserved20[8];
  uint64_t offset; /**< 28: start of the stream in the buffer, 0 */
  uint32_t pages;  /**< 36: 1 */
  uint8_t reserved40[24];
} KsRawFormatInfo;

#pragma pack(pop)

/** Describes a stream without a header: fills `info`, which is cleared before the call, and returns SUCCESS. */
typedef int32_t (*KsRedirectCallback)(KsRawFormatInfo *info, void *userData);

/** Clears load options. ERROR_INVALID_VALUE if `bytes` isn't sizeof(KsLoadOptions), 84. */
KS_API int32_t KsLoadOptionsInit(KsLoadOptions *options, uint32_t bytes);

/** Clears save options and sets their size. ERROR_INVALID_VALUE if `bytes` isn't sizeof(KsSaveOptions), 1610. */
KS_API int32_t KsSaveOptionsInit(KsSaveOptions *options, uint32_t bytes);

/**
 * Identifies a stream without decoding it. Sets formatId, width, height, bitsPerPixel (of all components together),
 * imageBytes, and pageCount and pageNumber (1) of `info`, whose size `infoBytes` is 2316; other members are unchanged.
 * KsLoadMemory can't decode every stream that is identified. The last two arguments are 0.
 *
 * @retval SUCCESS
 * @retval ERROR_NOT_SUPPORTED no codec recognises the stream
 * @retval ERROR_FILE_FORMAT its header is damaged
 * @retval ERROR_INVALID_VALUE null or empty buffer, or another size of `info`
 */
KS_API int32_t KsFileInfoMemory(const void *buffer, KsFileInfo *info, uint32_t infoBytes, uint64_t size, uint32_t,
                                uint32_t);

/**
 * Decodes a stream into a bitmap, whose previous contents are released. After an error other than ERROR_INVALID_VALUE
 * the bitmap is empty. While a redirect is set (KsSetRedirect), `bitmap` is passed to the decoder of the raw stream
 * unchanged.
 *
 * One component becomes a gray bitmap of 8, 12 or 16 bits without a palette; more become a 24-bit bitmap. Without
 * KS_LOAD_BANDS, it shows the colours of three components, the first three of more, and the first of two as a gray. Of
 * a stream that is truncated after its headers, the available part is decoded.
 *
 * @param buffer the stream
 * @param bitmap an initialised bitmap
 * @param bitmapSize sizeof(KsBitmap)
 * @param bits 0: the codec chooses. Other values are for raw streams only.
 * @param order KS_ORDER_CODEC: the codec chooses. Other values are for raw streams only.
 * @param size bytes at `buffer`
 * @param options may be null
 * @param reserved null
 * @retval SUCCESS
 * @retval ERROR_NOT_SUPPORTED no codec recognises or decodes the stream, or `bits` or `order` is another one
 * @retval ERROR_FILE_FORMAT the stream is damaged
 * @retval ERROR_NO_MEMORY out of memory, or the picture exceeds the bitmap limit
 * @retval ERROR_INVALID_VALUE null or empty buffer, or another bitmap size
 */
KS_API int32_t KsLoadMemory(const void *buffer, KsBitmap *bitmap, uint32_t bitmapSize, int32_t bits, int32_t order,
                            uint64_t size, const KsLoadOptions *options, void *reserved);

/**
 * Encodes a picture as a baseline JPEG stream without subsampling, which begins with the application segment of NITF
 * files. The result is a global block: report it with KsTrackAlloc, and free it with KsFreeGlobal.
 *
 * @param handle receives the block
 * @param bitmap the picture. Another depth than `bits` is converted as by KsCombine; the bitmap is not modified.
 * @param format KS_FORMAT_JPEG (YCbCr) or KS_FORMAT_JPEG_RGB
 * @param bits 24 for colour, 8 for gray
 * @param quality 2 (best) to 255 (smallest)
 * @param size receives the size of the block in bytes
 * @param options may be null
 * @retval SUCCESS
 * @retval ERROR_INVALID_VALUE `handle` or `size` is null
 * @retval ERROR_NO_STORAGE the bitmap has no storage
 * @retval ERROR_NOT_SUPPORTED another format, a depth without conversion, or a build without the codec
 * @retval ERROR_BITS_PER_PIXEL `bits` is neither 8 nor 24
 * @retval ERROR_QUALITY `quality` is out of range
 * @retval ERROR_BITMAP_SIZE more than 65500 pixels or rows
 * @retval ERROR_NO_MEMORY out of memory
 */
KS_API int32_t KsSaveMemory(void **handle, const KsBitmap *bitmap, uint32_t format, uint32_t bits, uint32_t quality,
                            uint64_t *size, const KsSaveOptions *options);

/**
 * Decodes as KsLoadMemory, into the pixels of `place`, which may be a view. After an error, the pixels are undefined.
 *
 * @retval SUCCESS
 * @retval ERROR_NOT_SUPPORTED the picture has another size or depth, the codec can't decode in place, or a redirect is
 *         set. KsLoadMemory may still be able to decode the stream.
 * @return otherwise an error of KsLoadMemory
 */
KS_API int32_t KsLoadMemoryInPlace(const void *buffer, const KsBitmap *place, uint32_t bitmapSize, uint64_t size,
                                   const KsLoadOptions *options);

/**
 * Sets the callback that describes the streams of all further loads in this thread, which are then decoded as raw
 * streams; null ends this. Returns the previous callback, or null.
 */
KS_API KsRedirectCallback KsSetRedirect(KsRedirectCallback callback, void *userData);

/* ---- drawings ---------------------------------------------------------------------------------------------------- */

/** A point of a drawing, in its units: x to the right, y upwards (see KsVectorSetMode). */
typedef struct KsVectorPoint {
  double x; /**< to the right */
  double y; /**< upwards */
} KsVectorPoint;

#pragma pack(push, 1)

/** A drawing. Callers set `options` before KsVectorInit and `flags` after it; the other members are internal. */
typedef struct KsVector {
  void *drawing;         /**< 0: null if empty */
  uint32_t mode;         /**< 8: KsVectorMode */
  uint32_t hasViewport;  /**< 12: 1 if there is a viewport */
  KsRect viewport;       /**< 16: see KsVectorSetViewport */
  KsVectorPoint pending; /**< 32: a move that hasn't been applied yet */
  uint8_t reserved48[868];
  uint32_t flags; /**< 916: preserved, no effect */
  uint8_t reserved920[128];
  uint32_t options; /**< 1048: preserved, no effect */
  uint32_t reserved1052;
} KsVector;

/** The description of a layer. */
typedef struct KsVectorLayer {
  uint32_t structureSize; /**< 0: 148 */
  char16_t name[64];      /**< 4: zero-terminated */
  uint64_t visible;       /**< 132: 1 */
  uint64_t reserved140;   /* 140 */
} KsVectorLayer;

/** The kinds of objects for KsVectorAddObject. */
enum KsVectorKind {
  KS_VECTOR_LINE = 2,    /**< KsVectorLine */
  KS_VECTOR_OVAL = 3,    /**< KsVectorOval */
  KS_VECTOR_POLYGON = 6, /**< KsVectorPolygon */
  KS_VECTOR_BOX = 7      /**< KsVectorBox */
};

/** Line styles: values of KsVectorPen::style. Other values are dashed, too. */
enum KsVectorPenStyle {
  KS_PEN_SOLID = 0, /**< solid */
  KS_PEN_DASH = 1   /**< dashed */
};

/** The pen of a line or outline. */
typedef struct KsVectorPen {
  uint32_t structureSize; /**< 0: 68 */
  uint32_t style;         /**< 4: KsVectorPenStyle */
  uint32_t width;         /**< 8: units of the drawing; a line is at least one pixel wide */
  uint32_t reserved12;    /* 12 */
  uint32_t color;         /**< 16: red in the low byte */
  uint8_t reserved20[48];
} KsVectorPen;

/** The fill of an object. A cleared brush, with or without its size, leaves it hollow. */
typedef struct KsVectorBrush {
  uint32_t structureSize; /**< 0: 292 */
  uint32_t solid;         /**< 4: 1 fills with `color` */
  uint32_t color;         /**< 8: red in the low byte */
  uint8_t reserved12[280];
} KsVectorBrush;

/** A point of an object. */
typedef struct KsVectorVertex {
  double x; /**< to the right */
  double y; /**< upwards */
  double z; /**< 0 */
  uint32_t reserved24;
} KsVectorVertex;

/** A straight line. */
typedef struct KsVectorLine {
  uint32_t structureSize; /**< 0: 156 */
  uint32_t kind;          /**< 4: KS_VECTOR_LINE */
  uint8_t reserved8[24];
  KsVectorVertex first;  /**< 32: start */
  KsVectorVertex second; /**< 60: end */
  KsVectorPen pen;       /**< 88: what draws it */
} KsVectorLine;

/** An ellipse in the box between two corners. */
typedef struct KsVectorOval {
  uint32_t structureSize; /**< 0: 448 */
  uint32_t kind;          /**< 4: KS_VECTOR_OVAL */
  uint8_t reserved8[24];
  KsVectorVertex first;  /**< 32: one corner of the box */
  KsVectorVertex second; /**< 60: the opposite corner */
  KsVectorPen pen;       /**< 88: what draws the outline */
  KsVectorBrush brush;   /**< 156: what fills it */
} KsVectorOval;

/** A closed polygon. */
typedef struct KsVectorPolygon {
  uint32_t structureSize; /**< 0: 408 */
  uint32_t kind;          /**< 4: KS_VECTOR_POLYGON */
  uint8_t reserved8[24];
  const KsVectorVertex *points; /**< 32: the corners, which are copied */
  uint32_t count;               /**< 40: number of corners, 1 to 16777216 */
  KsVectorPen pen;              /**< 44: what draws the outline */
  KsVectorBrush brush;          /**< 112: what fills it */
  uint32_t reserved404;         /* 404 */
} KsVectorPolygon;

/** A rectangle, parallel to the axes. */
typedef struct KsVectorBox {
  uint32_t structureSize; /**< 0: 436 */
  uint32_t kind;          /**< 4: KS_VECTOR_BOX */
  uint8_t reserved8[24];
  KsVectorVertex corner; /**< 32: the corner that width and height start from */
  KsVectorPen pen;       /**< 60: what draws the outline */
  KsVectorBrush brush;   /**< 128: what fills it */
  double width;          /**< 420: units of the drawing */
  double height;         /**< 428: units of the drawing */
} KsVectorBox;

/** The description of an object of any kind. */
typedef union KsVectorObject {
  KsVectorLine line;       /**< for KS_VECTOR_LINE */
  KsVectorOval oval;       /**< for KS_VECTOR_OVAL */
  KsVectorPolygon polygon; /**< for KS_VECTOR_POLYGON */
  KsVectorBox box;         /**< for KS_VECTOR_BOX */
} KsVectorObject;

#pragma pack(pop)

/** Initialises an empty drawing. Previous contents are not released. `options` is preserved. */
KS_API void KsVectorInit(KsVector *vector);

/** Releases a drawing and leaves an empty one. Calling it for an empty one is safe. */
KS_API void KsVectorFree(KsVector *vector);

/** Returns 0 for a drawing, even one without objects, and 1 for an empty record and null. */
KS_API int32_t KsVectorIsEmpty(const KsVector *vector);

/** Replaces `target` by a copy of `source`. `flags` is 0. Returns SUCCESS, ERROR_INVALID_VALUE or ERROR_NO_MEMORY. */
KS_API int32_t KsVectorCopy(KsVector *target, const KsVector *source, uint32_t flags);

/**
 * Adds a layer above the others and stores its number in `layer`, which has `layerBytes` (4) bytes.
 *
 * @retval SUCCESS
 * @retval ERROR_INVALID_VALUE another size of the description or the number, or too many layers
 * @retval ERROR_NO_MEMORY out of memory
 */
KS_API int32_t KsVectorAddLayer(KsVector *vector, const KsVectorLayer *description, uint32_t *layer,
                                uint32_t layerBytes);

/** Selects the layer that objects are added to. ERROR_INVALID_VALUE if there is no such layer. */
KS_API int32_t KsVectorSetLayer(KsVector *vector, uint32_t layer);

/** Clears an object description. */
KS_API void KsVectorObjectInit(KsVectorObject *description);

/**
 * Adds an object to the current layer, which is created if there is none. `description` is the record of `kind`
 * (KsVectorKind), with its size and kind set; it is copied. The unnamed arguments are 0.
 *
 * @retval SUCCESS
 * @retval ERROR_INVALID_VALUE the description is invalid, or has a number that isn't finite
 * @retval ERROR_NO_MEMORY out of memory
 */
KS_API int32_t KsVectorAddObject(KsVector *vector, uint32_t, uint32_t kind, const void *description, uint32_t);

/** Returns the bounds of all objects in pixels, one per unit, y downwards, rounded outwards. ERROR_INVALID_VALUE: none.
 */
KS_API int32_t KsVectorBounds(const KsVector *vector, uint32_t, KsRect *bounds, uint32_t);

/** Returns the lower left and upper right corner of all objects. ERROR_INVALID_VALUE if there are none. */
KS_API int32_t KsVectorExtents(const KsVector *vector, KsVectorPoint *low, KsVectorPoint *high);

/**
 * Returns the window: the part of the drawing that is mapped to the painted rectangle, by its lower left and upper
 * right corner. A metafile specifies it as its extent. ERROR_INVALID_VALUE if no window was set; the extents of the
 * objects are mapped then.
 */
KS_API int32_t KsVectorWindow(const KsVector *vector, KsVectorPoint *low, KsVectorPoint *high);

/** Sets the window. ERROR_INVALID_VALUE for an empty drawing, and if the corners are exchanged. */
KS_API int32_t KsVectorSetWindow(KsVector *vector, const KsVectorPoint *low, const KsVectorPoint *high);

/**
 * Moves a drawing by `offset`, with the next KsVectorApply. The last two arguments are 0. ERROR_INVALID_VALUE for an
 * empty drawing, and for an offset that isn't finite.
 */
KS_API int32_t KsVectorMove(KsVector *vector, const KsVectorPoint *offset, uint32_t, uint32_t);
/** Applies all calls of KsVectorMove. ERROR_INVALID_VALUE for an empty drawing. */
KS_API int32_t KsVectorApply(KsVector *vector);

/** Sets the rectangle of the canvas that KsVectorSaveMemory maps the window to. ERROR_INVALID_VALUE for null. */
KS_API int32_t KsVectorSetViewport(KsVector *vector, const KsRect *viewport);

/**
 * Sets the colour of the canvas behind the drawing. It isn't painted: areas without objects show the canvas.
 * ERROR_INVALID_VALUE for an empty drawing.
 */
KS_API int32_t KsVectorSetBackground(KsVector *vector, uint32_t color);

/** The direction of a drawing's y axis. */
enum KsVectorMode {
  KS_VECTOR_DOWNWARDS = 0, /**< y increases downwards, as on the canvas; the default */
  KS_VECTOR_UPWARDS = 1    /**< y increases upwards, as in the drawing of a metafile */
};
/** Sets the direction of the y axis, a KsVectorMode. ERROR_INVALID_VALUE for null and other numbers. */
KS_API int32_t KsVectorSetMode(KsVector *vector, uint32_t mode);

/**
 * Fits the window to the objects. This and the next two functions are for clients that update the views of a drawing
 * before they paint or save it. ERROR_INVALID_VALUE for an empty drawing.
 */
KS_API int32_t KsVectorViewA(KsVector *vector, uint32_t);
/** Does nothing. Returns SUCCESS, or ERROR_INVALID_VALUE for an empty drawing. */
KS_API int32_t KsVectorViewB(KsVector *vector, uint32_t);
/** As KsVectorViewB. */
KS_API int32_t KsVectorViewC(KsVector *vector, uint32_t, uint32_t);

/**
 * Paints a drawing, with its window mapped to `rectangle`. It is not clipped to the rectangle. `width` and `height`
 * have no effect; the other arguments are 0 and null. An empty drawing paints nothing.
 *
 * @retval SUCCESS
 * @retval ERROR_INVALID_VALUE an argument is null
 * @retval ERROR_NOT_SUPPORTED the bitmap has other than 8, 24 or 32 bits
 * @retval ERROR_NO_MEMORY out of memory
 */
KS_API int32_t KsVectorPaint(KsDeviceContext *context, KsVector *vector, int32_t width, int32_t height, int32_t,
                             int32_t, const KsRect *rectangle, const KsRect *reserved, uint32_t);

/**
 * Returns the part of a metafile's drawing that belongs on its bounds: left, top, right and bottom in pixels, with y
 * downwards, as the file that holds the metafile gives them. It is the bounds themselves if the units of the metafile
 * are pixels, otherwise its extent, which is then scaled. The descriptors of the metafile decide, not its objects.
 * ERROR_INVALID_VALUE for an empty drawing.
 */
KS_API int32_t KsVectorWindowOnBounds(const KsVector *vector, const KsRect *bounds, KsVectorPoint *low,
                                      KsVectorPoint *high);

/**
 * Paints a drawing like KsVectorPaint, with the part of it that KsVectorWindowOnBounds returns mapped to `rectangle`,
 * which is `bounds` at its place on the canvas. The drawing's own window has no effect and isn't changed.
 */
KS_API int32_t KsVectorPaintOnBounds(KsDeviceContext *context, const KsVector *vector, const KsRect *bounds,
                                     const KsRect *rectangle);

/**
 * Reads a metafile (CGM, binary encoding) into `vector`, whose previous contents are released; after an error it is
 * empty. y increases upwards: it is negated if that of the metafile increases downwards. `options` may be null.
 *
 * @retval SUCCESS
 * @retval ERROR_FILE_FORMAT the data has nothing to draw
 * @retval ERROR_NO_MEMORY out of memory
 */
KS_API int32_t KsVectorLoadMemory(const void *buffer, KsVector *vector, uint64_t size, const KsLoadOptions *options,
                                  void *reserved);

/** An element of a metafile that KsVectorLoadMemory skips. */
typedef struct KsVectorSkipped {
  uint32_t elementClass; /**< 0: the element's class (ISO/IEC 8632-3, table 1) */
  uint32_t element;      /**< 4: its number within the class */
  uint64_t offset;       /**< 8: the place of its header in the metafile, in bytes */
  const char *reason;    /**< 16: why, in a few words; valid during the call only */
} KsVectorSkipped;

/** Receives one skipped element. */
typedef void (*KsVectorSkippedCallback)(const KsVectorSkipped *skipped, void *userData);

/**
 * Reports the elements of a metafile that KsVectorLoadMemory skips because of their parameters, in the order of the
 * metafile, up to 1000 of them. All others are drawn.
 *
 * @return the number of all skipped elements, or a negative status:
 * @retval ERROR_INVALID_VALUE the data or the callback is null
 * @retval ERROR_NO_MEMORY out of memory
 */
KS_API int32_t KsVectorFindSkipped(const void *buffer, uint64_t size, KsVectorSkippedCallback callback, void *userData);

/**
 * Encodes a drawing as a metafile (CGM, binary encoding). The result is a global block of `*size` bytes: report it with
 * KsTrackAlloc, and free it with KsFreeGlobal. In the metafile y increases downwards. If there is a viewport, the
 * window is mapped to it, one unit per pixel.
 *
 * @retval SUCCESS
 * @retval ERROR_NOT_SUPPORTED `format` isn't KS_FORMAT_CGM, or the drawing can't be encoded
 * @retval ERROR_INVALID_VALUE null, or an empty drawing
 * @retval ERROR_NO_MEMORY out of memory
 */
KS_API int32_t KsVectorSaveMemory(void **handle, const KsVector *vector, uint32_t format, uint64_t *size,
                                  const KsSaveOptions *options);

/* ---- platform and start ------------------------------------------------------------------------------------------ */

/**
 * Replacements for functions of the window system. A null member selects the default: the message box writes a line to
 * standard error and returns OK (1), debug output is discarded, and a rectangle gets its four edges.
 */
typedef struct KsPlatformHandlers {
  /** Shows a message and returns the chosen button. The texts are zero-terminated. */
  int32_t (*messageBox)(const char *text, const char *caption, uint32_t type, void *userData);
  /** Receives a line of debug output. */
  void (*debugOutput)(const char *text, void *userData);
  /** Sets the four edges of a rectangle. */
  void (*setRect)(KsRect *rectangle, int32_t left, int32_t top, int32_t right, int32_t bottom, void *userData);
  void *userData; /**< the last argument of the handlers */
} KsPlatformHandlers;

/** Sets the handlers of the process; null restores the defaults. No other thread may be using the library meanwhile. */
KS_API void KsSetPlatformHandlers(const KsPlatformHandlers *handlers);

/** Receives a filter entry: the entry's address, followed by the caller's other arguments. */
typedef intptr_t (*KsFilterHandler)(void *entry, ...);

/** Registers a filter with the framework: jumps to the handler with all arguments unchanged. Returns 1 without one. */
KS_API intptr_t KsFilterEntry(void *entry, ...);

/** Sets the handler of KsFilterEntry; null restores the default. */
KS_API void KsSetFilterHandler(KsFilterHandler handler);

#ifdef __cplusplus
}
#endif

#endif
