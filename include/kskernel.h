/**
 * @file
 * The imaging framework as its clients see it: files, memory, bitmaps, palettes, device contexts, and the operations on
 * pixels that the NITF library is built on. Usable from C11 and C++.
 *
 * Results: a signed 32-bit status unless told otherwise: SUCCESS (1), or a negative KsStatus.
 *
 * Bitmaps go with their size, sizeof(KsBitmap), so that a caller built against another layout is refused (-13).
 *
 * Colours are u32 with red in the low byte, then green, then blue; the top byte is ignored.
 *
 * Pixels: rows run from the top down.
 *   - 1 bit: the leftmost pixel in the top bit.
 *   - 12 bits: two samples p, q in three bytes, the low eight bits of p, then the high four bits of p (low nibble) with
 *     the low four of q (high nibble), then the high eight bits of q.
 *   - 16 bits: gray in the machine's order.
 *   - 24 bits: blue, green, red.
 *   - 32 bits: blue, green, red, unused.
 *
 * Threads: no operation may run twice on one file, bitmap or context at a time; different ones are independent.
 */
#ifndef KSKERNEL_H
#define KSKERNEL_H

#include <stddef.h>
#include <stdint.h>
#ifndef __cplusplus
#include <uchar.h>
#endif

/** Marks what the library shows. */
#if defined(_WIN32)
#if defined(KSKERNEL_BUILD)
#define KS_API __declspec(dllexport)
#else
#define KS_API __declspec(dllimport)
#endif
#else
#define KS_API __attribute__((visibility("default")))
#endif

/* The Windows headers have another ERROR_NOT_SUPPORTED; the framework's own value is meant wherever this file is used.
 */
#ifdef ERROR_NOT_SUPPORTED
#undef ERROR_NOT_SUPPORTED
#endif

#ifdef __cplusplus
extern "C" {
#endif

/** What an operation answers. Compare with SUCCESS: some results are neither SUCCESS nor negative. */
enum KsStatus {
  SUCCESS = 1,
  ERROR_NO_MEMORY = -1,      /**< an allocation failed, or a bitmap above the limit of KsSetBitmapLimit */
  ERROR_NO_STORAGE = -2,     /**< a bitmap without storage */
  ERROR_FILE_WRITE = -5,     /**< a short write */
  ERROR_FILE_READ = -7,      /**< a short read */
  ERROR_FILE_FORMAT = -9,    /**< data that is not what it should be */
  ERROR_NO_FILE = -10,       /**< no file of that name */
  ERROR_BITMAP_SIZE = -11,   /**< a bitmap wider or higher than the format can tell */
  ERROR_INVALID_VALUE = -13, /**< a null or unusable argument */
  ERROR_NOT_SUPPORTED = -16, /**< no codec for it, or no conversion between two bit depths */
  ERROR_QUALITY = -21,       /**< a quality outside 2 to 255 */
  ERROR_BITS_PER_PIXEL = -27 /**< a number of bits per pixel that the operation doesn't take */
};

#pragma pack(push, 1)

/** A colour of a palette, in the byte order of a 24-bit pixel. */
typedef struct KsPaletteEntry {
  uint8_t blue;  /**< 0 to 255 */
  uint8_t green; /**< 0 to 255 */
  uint8_t red;   /**< 0 to 255 */
  uint8_t reserved;
} KsPaletteEntry;

/** A palette as a system object: what KsPaletteFromLut and KsPaintPalette give and KsObjectFree releases. */
typedef struct KsPalette KsPalette;

/** A device context on a bitmap. */
typedef struct KsDeviceContext KsDeviceContext;

/** Pixels lie from `left` and `top` up to, and without, `right` and `bottom`. */
typedef struct KsRect {
  int32_t left;   /**< the first column */
  int32_t top;    /**< the first row */
  int32_t right;  /**< the column behind the last */
  int32_t bottom; /**< the row behind the last */
} KsRect;

/** How the pixels of a bitmap are to be read, the values of KsBitmap::order. */
enum KsColorOrder {
  KS_ORDER_PALETTE = 0, /**< indices of a palette, or of the gray ramp without one */
  KS_ORDER_BGR = 1,     /**< blue, green, red */
  KS_ORDER_GRAY = 2,    /**< grays */
  KS_ORDER_CODEC = 4    /**< asked of a load: what the codec makes of the stream */
};

/** Whose pixels a bitmap shows, the values of KsBitmap::kind. */
enum KsBitmapKind {
  KS_BITMAP_OWN = 1,   /**< its own, released by KsBitmapFree */
  KS_BITMAP_CALLER = 2 /**< the caller's, who keeps them alive and releases them */
};

/** Bit 0 of KsBitmap::flags: the bitmap has storage. */
#define KS_BITMAP_ALLOCATED 1u
/**
 * Bit 2 of KsBitmap::flags: a picture that was made smaller, and is enlarged to the rectangle that it is combined or
 * painted into (bilinear). A caller may set it.
 */
#define KS_BITMAP_ENLARGED 4u

/** A bitmap. Callers read the documented members and leave the others alone; KsBitmapInit makes an empty one. */
typedef struct KsBitmap {
  uint32_t structureSize;   /**< 0: 284 */
  uint32_t kind;            /**< 4: KsBitmapKind */
  uint8_t *pixels;          /**< 8: first row; owned by the bitmap for KS_BITMAP_OWN */
  uint32_t memory;          /**< 16: the memory kind given to KsBitmapCreate */
  uint32_t width;           /**< 20: pixels */
  uint32_t height;          /**< 24: rows */
  uint32_t bitsPerPixel;    /**< 28: 1 to 255 */
  uint32_t bytesPerLine;    /**< 32: bytes from one row to the next, a multiple of 4 */
  uint64_t storageBytes;    /**< 36: bytes at `pixels` */
  uint32_t accessCount;     /**< 44: KsBitmapAccess calls not yet released */
  uint32_t flags;           /**< 48: KS_BITMAP_ALLOCATED, KS_BITMAP_ENLARGED, and bits of the framework's own */
  uint32_t colorCount;      /**< 52: colours of the palette, 0 without one */
  KsPaletteEntry *palette;  /**< 56: at least 2^bitsPerPixel entries up to 8 bits; owned by the bitmap */
  uint32_t paletteCapacity; /**< 64: entries at `palette` */
  uint32_t order;           /**< 68: KsColorOrder; a caller may set it */
  uint8_t reserved[212];    /* 72 */
} KsBitmap;

/** Options of a load. `loadFlags` is the only word that clients of the filter set. */
typedef struct KsLoadOptions {
  uint8_t reserved0[12];
  uint32_t loadFlags; /**< 12: bits of KsLoadFlags and NitfLoadFlags */
  uint8_t reserved16[20];
  uint32_t bands[3]; /**< 36, 40, 44: band numbers of the red, green and blue channel, from 0 */
  uint8_t reserved48[36];
} KsLoadOptions;

/** Options of a save. The first word tells that the record is initialised; qualities are among what is reserved. */
typedef struct KsSaveOptions {
  uint32_t structureSize; /**< 0: 1610 */
  uint8_t reserved4[1602];
  uint32_t saveFlags; /**< 1606: bit 0 is set by the writer of NITF files */
} KsSaveOptions;

/** What a filter or a codec tells of a file. */
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

/** An open file; -1 is none. Files are buffered both ways: small reads and writes are cheap. */
typedef int64_t KsHandle;

#define KS_INVALID_HANDLE ((KsHandle)-1) /**< no file */
#define KS_OPEN_READ 0x8000u             /**< flags of KsOpen: read only, binary */
#define KS_MODE_READ 0x100u              /**< the mode that goes with KS_OPEN_READ */
#define KS_OPEN_CREATE 0x8302u           /**< flags of KsOpen: read and write, binary, created or emptied */
#define KS_MODE_CREATE 0x80u             /**< the mode that goes with KS_OPEN_CREATE */

/** What KsSeek counts from. */
enum KsSeekOrigin {
  KS_SEEK_START = 0,   /**< the first byte */
  KS_SEEK_CURRENT = 1, /**< the position */
  KS_SEEK_END = 2      /**< behind the last byte */
};

/**
 * Opens a file. `name` is UTF-16 and zero-terminated; `flags` and `mode` are KS_OPEN_READ with KS_MODE_READ or
 * KS_OPEN_CREATE with KS_MODE_CREATE. A folder is not opened. KS_INVALID_HANDLE where it fails. The caller closes it.
 */
KS_API KsHandle KsOpen(const char16_t *name, uint32_t flags, uint32_t mode);

/** Writes what is still held back and closes. SUCCESS, or ERROR_FILE_WRITE after a failed write or without a file. */
KS_API int32_t KsClose(KsHandle handle);

/** Moves up to `bytes` bytes from the position into `buffer`: the bytes moved, fewer at the end or on an error. */
KS_API uint64_t KsRead(KsHandle handle, void *buffer, uint64_t bytes);

/** Moves `bytes` bytes to the position: the bytes moved. Errors may show later, at the latest at KsClose. */
KS_API uint64_t KsWrite(KsHandle handle, const void *buffer, uint64_t bytes);

/** As KsWrite, for bodies of segments. */
KS_API uint64_t KsWriteBlock(KsHandle handle, const void *buffer, uint64_t bytes);

/**
 * Copies `bytes` bytes from the position of `source` to that of `target`, in pieces, and moves both positions. SUCCESS;
 * ERROR_FILE_READ where `source` holds fewer, with nothing copied, or can't be read; ERROR_FILE_WRITE; ERROR_NO_MEMORY.
 */
KS_API int32_t KsCopyBytes(KsHandle target, KsHandle source, uint64_t bytes);

/** SUCCESS where there is a file, of whatever kind, of that name; else ERROR_NO_FILE. */
KS_API int32_t KsFileExists(const char16_t *name);

/** SUCCESS where `name` leads, by whatever path or link, to the open file; else ERROR_NO_FILE. */
KS_API int32_t KsIsSameFile(KsHandle handle, const char16_t *name);

/** Moves the position by `offset` bytes from `origin` (KsSeekOrigin): the new position, or -1 with nothing moved. */
KS_API int64_t KsSeek(KsHandle handle, int64_t offset, uint32_t origin);

/** Turns a UTF-8 name into UTF-16. Null where it is no UTF-8 or memory runs out. Freed with KsToWideFree. */
KS_API char16_t *KsToWide(const char *name);
/** Frees what KsToWide gave. Null is none. */
KS_API void KsToWideFree(char16_t *name);

/* ---- memory ------------------------------------------------------------------------------------------------------ */

/** What a traced block is. */
enum KsMemoryKind {
  KS_MEMORY_BLOCK = 1,  /**< KsCalloc, KsAllocBlock, KsRealloc */
  KS_MEMORY_PIXELS = 2, /**< storage and palettes of bitmaps */
  KS_MEMORY_GLOBAL = 3, /**< global blocks, from their report with KsTrackAlloc to KsFreeGlobal */
  KS_MEMORY_OBJECT = 4, /**< palettes and device contexts */
  KS_MEMORY_ARRAY = 5,  /**< blocks of the plain heap that were reported */
  KS_MEMORY_FILE = 6,   /**< open files and their buffers */
  KS_MEMORY_KINDS = 7   /**< the number of kinds, 0 included */
};

/** A zeroed block of `count` times `size` bytes (one byte at least), or null. Freed with KsFree. */
KS_API void *KsCalloc(uint64_t count, uint64_t size, int32_t line, const char *file);
/** The same without zeroing. */
KS_API void *KsAllocBlock(uint64_t count, uint64_t size, int32_t line, const char *file);
/** Resizes a block of KsCalloc or KsAllocBlock, or makes one where `block` is null. Null leaves `block` as it was. */
KS_API void *KsRealloc(void *block, uint64_t bytes, int32_t line, const char *file);
/** Frees a block of KsCalloc, KsAllocBlock or KsRealloc. Null is none. `line` and `file` tell who asks. */
KS_API void KsFree(void *block, int32_t line, const char *file);
/** Frees a global block, such as KsSaveMemory gives. Null is none. */
KS_API void KsFreeGlobal(void *handle, int32_t line, const char *file);
/** Releases a palette object. Null is none, and a context's stock palette stays with its context. */
KS_API void KsObjectFree(void *object, int32_t line, const char *file);
/** Reports that a block of the plain heap was taken. Null is none. `kind` is a KsMemoryKind. */
KS_API void KsTrackAlloc(uint32_t kind, const void *block, int32_t line, const char *file);
/** Reports that it was given back. */
KS_API void KsTrackFree(uint32_t kind, const void *block, int32_t line, const char *file);

/** Live blocks of a KsMemoryKind in this process. A build without tracing (release) always gives 0. */
KS_API int64_t KsLiveBlocks(uint32_t kind);

/**
 * For tests: lets the framework's allocations succeed `successes` more times and then fail, until the call is made
 * again; a negative number ends it. A build without tracing ignores it.
 */
KS_API void KsFailAllocationsAfter(int64_t successes);

/* ---- bitmaps ----------------------------------------------------------------------------------------------------- */

/** Makes `bitmap` an empty one. Whatever it held is forgotten, not released. The last three arguments are 0. */
KS_API void KsBitmapInit(KsBitmap *bitmap, uint32_t bitmapSize, uint32_t, uint32_t, uint32_t);

/**
 * Creates a bitmap in `bitmap`, whatever that held before being forgotten; it is empty after a failure. It has `width`
 * by `height` pixels of 1 to 255 `bits`. Conversions know 1, 8, 12, 16, 24 and 32 bits; others are storage that
 * combines with its like. `palette` may be null; otherwise 2^bits entries are copied, for up to 8 bits. `memory` is 1,
 * or 4 for a canvas. KS_BITMAP_OWN has zeroed storage of its own; KS_BITMAP_CALLER shows `data`, of `size` bytes, that
 * the caller keeps alive (null: see KsBitmapSetData), with rows of bytesPerLine bytes. -1 above the limit or without
 * memory, -13 for arguments that make no bitmap. Freed with KsBitmapFree.
 */
KS_API int32_t KsBitmapCreate(KsBitmap *bitmap, uint32_t bitmapSize, uint32_t kind, uint32_t width, uint32_t height,
                              uint32_t bits, uint32_t order, const KsPaletteEntry *palette, uint32_t memory, void *data,
                              uint64_t size);

/** Gives a KS_BITMAP_CALLER bitmap its pixels: `bytes` at `data`, at least height times bytesPerLine, else -13. */
KS_API int32_t KsBitmapSetData(KsBitmap *bitmap, void *data, uint64_t bytes, uint32_t);

/**
 * Makes `view` a KS_BITMAP_CALLER bitmap on a part of the pixels of `whole`, with its depth and colour order and
 * without a palette. The part lies inside `whole`, and `left` begins a byte of its rows, else -13. The view's rows are
 * as far apart as those of `whole`, and only `width` pixels of each are its own: it serves combining and writing at its
 * pixels, no clearing and no filling. `whole` must outlive it and be open by KsBitmapAccess. -2 without storage.
 */
KS_API int32_t KsBitmapView(KsBitmap *view, uint32_t bitmapSize, const KsBitmap *whole, uint32_t left, uint32_t top,
                            uint32_t width, uint32_t height);

/** Releases storage and palette and leaves an empty bitmap. Harmless on an empty one. */
KS_API void KsBitmapFree(KsBitmap *bitmap);

/** Sets all pixels to 0, in the caller's buffer for KS_BITMAP_CALLER. */
KS_API void KsBitmapClear(KsBitmap *bitmap);

/**
 * Sets all pixels to a colour: as it is for 24 and 32 bits, its brightness for grays, the nearest entry with a palette.
 * -2 without storage, -27 for depths without conversion.
 */
KS_API int32_t KsBitmapFill(KsBitmap *bitmap, uint32_t color);

/**
 * Opens the pixels for row calls, and once before a caller first writes at KsBitmap::pixels itself; `bitmap` must have
 * storage, else -2. Each success is paired with KsBitmapRelease.
 */
KS_API int32_t KsBitmapAccess(KsBitmap *bitmap, uint32_t);
/** Closes what KsBitmapAccess opened. The last two arguments are 1. */
KS_API void KsBitmapRelease(KsBitmap *bitmap, uint32_t, uint32_t);

/**
 * Copies up to `bytes` bytes of a row, counted from 0 at the top, out of the bitmap. The bytes moved; -13 for a row
 * that isn't there, -2 without storage.
 */
KS_API int64_t KsBitmapGetRow(const KsBitmap *bitmap, void *buffer, uint32_t row, uint64_t bytes);
/** The same into the bitmap. */
KS_API int64_t KsBitmapPutRow(KsBitmap *bitmap, const void *buffer, uint32_t row, uint64_t bytes);

/** Copies palette entries out. Entries beyond the palette are not touched. -13 without a palette. */
KS_API int32_t KsBitmapGetPalette(const KsBitmap *bitmap, uint32_t first, uint32_t count, KsPaletteEntry *entries);

/**
 * Sets `count` palette entries from `first`, cut to what the depth has. A bitmap without a palette gets one first, in
 * which the entries that are not set stand for the gray ramp of its depth. -27 above 8 bits per pixel.
 */
KS_API int32_t KsBitmapSetPalette(KsBitmap *bitmap, uint32_t first, uint32_t count, const KsPaletteEntry *entries);

/** The gray ramp for 1 to 8 bits, 2^bits entries, or null. Freed with KsPaletteFree. */
KS_API KsPaletteEntry *KsDefaultPalette(uint32_t bits);
/** Frees what KsDefaultPalette gave. Null is none. */
KS_API void KsPaletteFree(KsPaletteEntry *palette);

/** A palette of `count` (up to 65536) entries of 0x00RRGGBB, or null. Freed with KsObjectFree. */
KS_API KsPalette *KsPaletteFromLut(const uint32_t *table, uint32_t count);

/**
 * Attaches a copy of a palette to a bitmap of up to 16 bits per pixel; -27 above. Indices beyond its end are black. At
 * 12 and 16 bits the palette is carried, and the pixels are still shown as grays.
 */
KS_API int32_t KsBitmapSetLut(KsBitmap *bitmap, const KsPalette *palette);

/**
 * The bound on the bytes of one bitmap's pixels, 4 GiB at first, above which KsBitmapCreate gives -1. Set gives the
 * bound before; 0 restores the first one.
 */
KS_API uint64_t KsSetBitmapLimit(uint64_t bytes);

/* ---- combining and painting -------------------------------------------------------------------------------------- */

#define KS_COMBINE_COPY 288u /**< the operation that copies */

/**
 * Copies `source`, from its pixel (`sourceLeft`, `sourceTop`), over the rectangle of `target` with its upper left
 * corner at (`left`, `top`), unscaled, as far as both reach: the rectangle is clipped on all sides, positions may be
 * negative, and a source smaller than the rectangle covers only its own size. One with KS_BITMAP_ENLARGED is spread
 * from there over all of the rectangle instead, in colours of 24 bits. Colours are converted to the target's depth:
 *   - equal depths are copied bit by bit; 8-bit indices too, where the source has no palette or the same as the target;
 *   - indices of 1 and 8 bits become their palette's colours, and the gray ramp without a palette;
 *   - grays of 12 and 16 bits give their high eight bits;
 *   - colours become grays by (77 red + 151 green + 28 blue) / 256, or the nearest colour of a target's palette.
 * `operation` is KS_COMBINE_COPY, `flags` 0. -2 without storage, -16 where there is no conversion, or for another
 * operation.
 */
KS_API int32_t KsCombine(KsBitmap *target, int32_t left, int32_t top, int32_t width, int32_t height,
                         const KsBitmap *source, int32_t sourceLeft, int32_t sourceTop, uint32_t operation,
                         uint32_t flags);

/** A context on the bitmap's own pixels, or null. The bitmap must outlive it. Freed with KsBitmapDCFree. */
KS_API KsDeviceContext *KsBitmapDC(KsBitmap *bitmap);
/** Releases a context, and the palette that belongs to it. Null is none. */
KS_API void KsBitmapDCFree(KsDeviceContext *context);

/** A palette object with the bitmap's palette, or null where it has none. Freed with KsObjectFree. */
KS_API KsPalette *KsPaintPalette(KsDeviceContext *context, const KsBitmap *bitmap);

#define KS_ROP_COPY 0xCC0020u /**< the raster operation that copies */

/**
 * Paints a bitmap at the upper left corner of `rectangle`, unscaled and clipped to it, converted as in KsCombine.
 * A bitmap with KS_BITMAP_ENLARGED is spread over the rectangle instead.
 * `source`, where given, is the part of the bitmap that is painted (of an enlarged one its upper left corner), and
 * `clip` the part of the canvas that may change. -13 without a context or rectangle, -16 for another operation than
 * KS_ROP_COPY.
 */
KS_API int32_t KsPaintBitmap(KsDeviceContext *context, const KsBitmap *bitmap, const KsRect *source, const KsRect *clip,
                             const KsRect *rectangle, const void *reserved, uint32_t rasterOperation);

/**
 * As KsPaintBitmap, and leaves the canvas alone under pixels whose colour is exactly `color`. A gray of 12 or 16 bits
 * is of that colour where all its bits are, not the high eight alone: 0x13 stands for 0x131 and 0x1313. `scale` is
 * 1000, the seven numbers after it are 1. -16 for depths without conversion, too.
 */
KS_API int32_t KsPaintTransparent(KsDeviceContext *context, const KsBitmap *bitmap, const KsRect *source,
                                  const KsRect *clip, const KsRect *rectangle, const void *reserved, uint32_t scale,
                                  uint32_t, uint32_t, uint32_t, uint32_t, uint32_t, uint32_t, uint32_t, uint32_t color,
                                  uint32_t, uint32_t, uint32_t rasterOperation);

/* ---- tone and bands ---------------------------------------------------------------------------------------------- */

/**
 * Adds to `counters[level]` the number of pixels of each of the 256 levels: the brightness that a pixel shows, which is
 * the high byte of a 12 or 16 bit gray, and the gray of KsCombine for palettes and colours. `count` is 256.
 * -13 for another count and null counters, -2 without storage, -27 for depths without conversion.
 */
KS_API int32_t KsHistogram(const KsBitmap *bitmap, uint64_t *counters, uint32_t count, uint32_t);

/**
 * Spreads the occupied range of values over the full one. With `low` and `high` the least and greatest value in use,
 * over all channels, each value v becomes (v - low) * full / (high - low), rounded down, where full is 255, 4095 or
 * 65535 by depth. With a palette the colours in use are spread and the pixels stay. A bitmap of one single value stays
 * as it is. `amount` is 350. -27 for other depths than those of the conversions.
 */
KS_API int32_t KsToneAdjust(KsBitmap *bitmap, uint32_t amount, uint32_t);

/**
 * Makes `target` (empty, or released first) a 24-bit bitmap from one to four band bitmaps of 8 bits and equal size.
 * `bands` runs from the last band to the first and ends at a null pointer or after four: its last entry is red, the one
 * before it green, the one before that blue, and one or two bands repeat the last entry as a gray. -13 for none, or for
 * bands of different size, -27 for one of another depth, -2 for one without storage, -1.
 */
KS_API int32_t KsBandsMerge(KsBitmap *target, KsBitmap *const *bands, uint32_t bitmapSize, uint32_t);

/* ---- codecs ------------------------------------------------------------------------------------------------------ */

/** The framework's numbers for what a stream is. docs/formats.md has them as a table. */
enum KsFormat {
  KS_FORMAT_JP2 = 5,               /**< JPEG 2000 in a JP2 file */
  KS_FORMAT_JPEG = 10,             /**< JPEG, 8 bits, sequential, one or three components of one size; saved as YCbCr */
  KS_FORMAT_JPEG_12 = 11,          /**< JPEG, 12 bits, extended sequential */
  KS_FORMAT_JPEG_422 = 21,         /**< as 10, chroma halved across */
  KS_FORMAT_JPEG_420 = 22,         /**< as 10, components of other sizes in any other way */
  KS_FORMAT_JPEG_PROGRESSIVE = 23, /**< JPEG, 8 bits, progressive, of any number and size of components */
  KS_FORMAT_JPEG_LOSSLESS = 24,    /**< JPEG, process 14 */
  KS_FORMAT_JPEG_MANY = 26,        /**< JPEG, 8 bits, sequential, of two components, or of more than three */
  KS_FORMAT_CGM = 62,              /**< drawing: KsVectorLoadMemory reads it, KsVectorSaveMemory writes it */
  KS_FORMAT_T4_1D = 66,            /**< bi-level, T.4 one-dimensional, without a header of its own */
  KS_FORMAT_T4_2D = 67,            /**< bi-level, T.4 two-dimensional, likewise */
  KS_FORMAT_J2K = 165,             /**< JPEG 2000, the bare code stream */
  KS_FORMAT_JPEG_RGB = 182         /**< for saving: JPEG, 8 bits, with RGB components */
};

/** Flags of KsLoadOptions::loadFlags that codecs look at. */
enum KsLoadFlags {
  /** Three components of a JPEG stream that doesn't say which colours they are: red, green, blue. Else Y, Cb, Cr. */
  KS_LOAD_COLOR = 0x4000,
  /**
   * The bands of KsLoadOptions::bands are wanted as red, green and blue, unconverted. A number beyond the last band
   * means the last.
   */
  KS_LOAD_BANDS = 0x8000
};

#pragma pack(push, 1)

/** What a redirect callback fills for a stream that has no header of its own. */
typedef struct KsRawFormatInfo {
  uint8_t reserved0[4];
  uint32_t format; /**< 4: KS_FORMAT_T4_1D or KS_FORMAT_T4_2D */
  uint32_t width;  /**< 8: pixels */
  uint32_t height; /**< 12: rows */
  uint32_t bits;   /**< 16: 1 */
  uint8_t reserved20[8];
  uint64_t offset; /**< 28: where the stream begins in the buffer, 0 */
  uint32_t pages;  /**< 36: 1 */
  uint8_t reserved40[24];
} KsRawFormatInfo;

#pragma pack(pop)

/** Answers for a stream without a header: fills `info`, which comes cleared, and gives SUCCESS. */
typedef int32_t (*KsRedirectCallback)(KsRawFormatInfo *info, void *userData);

/** Clears load options; -13 where `bytes` is not sizeof(KsLoadOptions), 84. */
KS_API int32_t KsLoadOptionsInit(KsLoadOptions *options, uint32_t bytes);

/** Clears save options and sets their size; -13 where `bytes` is not sizeof(KsSaveOptions), 1610. */
KS_API int32_t KsSaveOptionsInit(KsSaveOptions *options, uint32_t bytes);

/**
 * Tells what the `size` bytes at `buffer` are without decoding them: fills formatId, width, height, bitsPerPixel (those
 * of all components), imageBytes and, with 1, pageCount and pageNumber of `info`, whose size `infoBytes` is 2316, and
 * leaves the other members alone. A stream that is told may still be of a kind that KsLoadMemory has no decoder for.
 * ERROR_NOT_SUPPORTED where no codec knows the stream, ERROR_FILE_FORMAT for a damaged header. The last two arguments
 * are 0.
 */
KS_API int32_t KsFileInfoMemory(const void *buffer, KsFileInfo *info, uint32_t infoBytes, uint64_t size, uint32_t,
                                uint32_t);

/**
 * Decodes `size` bytes at `buffer` into `bitmap`, which is released first and empty after a failure other than -13;
 * while a redirect is set it goes to the decoder of the raw stream as it is. `bits` 0 and `order` KS_ORDER_CODEC leave
 * the form to the codec, and others are for raw streams only (-16): one component becomes a gray bitmap without a
 * palette, of 8, 12 or 16 bits, more become 24 bits. Without KS_LOAD_BANDS these are the colours of three components,
 * the first three of more, and the first of two as a gray. A stream that breaks off behind its headers gives what it
 * has. `options` may be null; `reserved` is null. ERROR_NOT_SUPPORTED where no codec knows the stream,
 * ERROR_FILE_FORMAT for a damaged one, ERROR_NO_MEMORY for a picture above the bitmap limit, before it is decoded.
 */
KS_API int32_t KsLoadMemory(const void *buffer, KsBitmap *bitmap, uint32_t bitmapSize, int32_t bits, int32_t order,
                            uint64_t size, const KsLoadOptions *options, void *reserved);

/**
 * Encodes a picture into a global block, `*handle` with `*size` bytes, which the caller reports with KsTrackAlloc and
 * gives back with KsFreeGlobal. `format` is KS_FORMAT_JPEG (colours become Y, Cb, Cr) or KS_FORMAT_JPEG_RGB (they stay
 * R, G, B), `bits` of a pixel 24, or 8 for a gray in either; a bitmap of another depth is converted as by KsCombine,
 * and isn't changed. `quality` runs from 2, the best, to 255, the smallest. `options` may be null. The stream is
 * baseline, with all components of one size, and begins with the application segment of NITF files. ERROR_NO_STORAGE,
 * ERROR_NOT_SUPPORTED (another format, a build without the codec, a depth that doesn't convert), ERROR_BITS_PER_PIXEL,
 * ERROR_QUALITY, ERROR_BITMAP_SIZE (above 65500 pixels or rows), ERROR_NO_MEMORY, ERROR_INVALID_VALUE for null.
 */
KS_API int32_t KsSaveMemory(void **handle, const KsBitmap *bitmap, uint32_t format, uint32_t bits, uint32_t quality,
                            uint64_t *size, const KsSaveOptions *options);

/**
 * Decodes as KsLoadMemory does, but into the pixels of `place`, which may be a view, where the picture has its size and
 * depth. ERROR_NOT_SUPPORTED where it hasn't, where the codec can't, and while a redirect is set: KsLoadMemory may know
 * the stream all the same. Pixels are undefined after a failure.
 */
KS_API int32_t KsLoadMemoryInPlace(const void *buffer, const KsBitmap *place, uint32_t bitmapSize, uint64_t size,
                                   const KsLoadOptions *options);

/**
 * Sets who answers for the streams of all further loads, which are then taken as raw, until the call is made with null.
 * Gives the callback before, or null. One per thread.
 */
KS_API KsRedirectCallback KsSetRedirect(KsRedirectCallback callback, void *userData);

/* ---- drawings ---------------------------------------------------------------------------------------------------- */

/** A place in a drawing, in its units: x to the right, y upwards (see KsVectorSetMode). */
typedef struct KsVectorPoint {
  double x; /**< to the right */
  double y; /**< upwards */
} KsVectorPoint;

#pragma pack(push, 1)

/** A drawing. Callers set `options` before KsVectorInit and `flags` behind it; the other members are the framework's.
 */
typedef struct KsVector {
  void *drawing;         /**< 0: null in an empty one */
  uint32_t mode;         /**< 8: KsVectorMode */
  uint32_t hasViewport;  /**< 12: 1 with a viewport */
  KsRect viewport;       /**< 16: see KsVectorSetViewport */
  KsVectorPoint pending; /**< 32: a move that is not yet applied */
  uint8_t reserved48[868];
  uint32_t flags; /**< 916: kept, and without effect here */
  uint8_t reserved920[128];
  uint32_t options; /**< 1048: kept, and without effect here */
  uint32_t reserved1052;
} KsVector;

/** The description of a layer. */
typedef struct KsVectorLayer {
  uint32_t structureSize; /**< 0: 148 */
  char16_t name[64];      /**< 4: ends at a zero */
  uint64_t visible;       /**< 132: 1 */
  uint64_t reserved140;   /* 140 */
} KsVectorLayer;

/** The kinds of objects that KsVectorAddObject takes. */
enum KsVectorKind {
  KS_VECTOR_LINE = 2,    /**< KsVectorLine */
  KS_VECTOR_OVAL = 3,    /**< KsVectorOval */
  KS_VECTOR_POLYGON = 6, /**< KsVectorPolygon */
  KS_VECTOR_BOX = 7      /**< KsVectorBox */
};

/** How a pen draws, the values of KsVectorPen::style. Others are dashed, too. */
enum KsVectorPenStyle {
  KS_PEN_SOLID = 0, /**< without gaps */
  KS_PEN_DASH = 1   /**< dashed */
};

/** What draws a line, or the outline of an object. */
typedef struct KsVectorPen {
  uint32_t structureSize; /**< 0: 68 */
  uint32_t style;         /**< 4: KsVectorPenStyle */
  uint32_t width;         /**< 8: units of the drawing; a line is a pixel wide at least */
  uint32_t reserved12;    /* 12 */
  uint32_t color;         /**< 16: red in the low byte */
  uint8_t reserved20[48];
} KsVectorPen;

/** What fills an object. A cleared one, with or without its size, leaves it hollow. */
typedef struct KsVectorBrush {
  uint32_t structureSize; /**< 0: 292 */
  uint32_t solid;         /**< 4: 1 fills with `color` */
  uint32_t color;         /**< 8: red in the low byte */
  uint8_t reserved12[280];
} KsVectorBrush;

/** A point of an object description. */
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
  KsVectorVertex first;  /**< 32: where it begins */
  KsVectorVertex second; /**< 60: where it ends */
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
  const KsVectorVertex *points; /**< 32: the corners, the caller's; copied */
  uint32_t count;               /**< 40: corners, 1 to 16777216 */
  KsVectorPen pen;              /**< 44: what draws the outline */
  KsVectorBrush brush;          /**< 112: what fills it */
  uint32_t reserved404;         /* 404 */
} KsVectorPolygon;

/** A rectangle along the axes. */
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

/** The description of an object, of whichever kind. */
typedef union KsVectorObject {
  KsVectorLine line;       /**< for KS_VECTOR_LINE */
  KsVectorOval oval;       /**< for KS_VECTOR_OVAL */
  KsVectorPolygon polygon; /**< for KS_VECTOR_POLYGON */
  KsVectorBox box;         /**< for KS_VECTOR_BOX */
} KsVectorObject;

#pragma pack(pop)

/** Makes `vector` an empty drawing. Whatever it held is forgotten, not released; `options` stays. */
KS_API void KsVectorInit(KsVector *vector);

/** Releases the drawing and leaves an empty one. Harmless on an empty one. */
KS_API void KsVectorFree(KsVector *vector);

/** 0 where it holds a drawing, also one without objects; 1 for an empty one, and for null. */
KS_API int32_t KsVectorIsEmpty(const KsVector *vector);

/** Gives `target`, whose drawing is released, a copy of all that `source` holds. -13 for null, -1. `flags` is 0. */
KS_API int32_t KsVectorCopy(KsVector *target, const KsVector *source, uint32_t flags);

/**
 * Adds a layer in front of the others and gives its number, `layerBytes` (4) bytes, in `layer`. -13 for another size of
 * description or number, -1.
 */
KS_API int32_t KsVectorAddLayer(KsVector *vector, const KsVectorLayer *description, uint32_t *layer,
                                uint32_t layerBytes);

/** Makes a layer the one that objects are added to; -13 where there is no such layer. */
KS_API int32_t KsVectorSetLayer(KsVector *vector, uint32_t layer);

/** Clears an object description. */
KS_API void KsVectorObjectInit(KsVectorObject *description);

/**
 * Adds an object to the current layer, and a layer where there is none. `description` is the record of `kind`
 * (KsVectorKind), with its size and kind at its start, and is not needed any more afterwards. The zeros are 0. -13 for
 * a description that isn't one, or that holds numbers that are none, -1.
 */
KS_API int32_t KsVectorAddObject(KsVector *vector, uint32_t, uint32_t kind, const void *description, uint32_t);

/** The bounds of all objects in canvas pixels, y downwards, of one pixel a unit, rounded outwards. -13 for none. */
KS_API int32_t KsVectorBounds(const KsVector *vector, uint32_t, KsRect *bounds, uint32_t);

/** The lower left and upper right corner of all objects. -13 where there are none. */
KS_API int32_t KsVectorExtents(const KsVector *vector, KsVectorPoint *low, KsVectorPoint *high);

/**
 * The part of the drawing's space that a painted rectangle shows, by its lower left and upper right corner: what a
 * metafile tells as its extent. -13 where nobody has told one, and the objects' extents are shown.
 */
KS_API int32_t KsVectorWindow(const KsVector *vector, KsVectorPoint *low, KsVectorPoint *high);

/** Sets that part. -13 for an empty drawing, and for corners the wrong way round. */
KS_API int32_t KsVectorSetWindow(KsVector *vector, const KsVectorPoint *low, const KsVectorPoint *high);

/**
 * Notes that the drawing is to move by `offset`; KsVectorApply moves it. The last two arguments are 0. -13 for
 * an empty drawing, and for an offset that is no number.
 */
KS_API int32_t KsVectorMove(KsVector *vector, const KsVectorPoint *offset, uint32_t, uint32_t);
/** Moves the drawing by all that KsVectorMove noted. -13 for an empty one. */
KS_API int32_t KsVectorApply(KsVector *vector);

/**
 * The rectangle of a canvas that a saved drawing is to fill: KsVectorSaveMemory lays the window onto it. -13 for
 * null.
 */
KS_API int32_t KsVectorSetViewport(KsVector *vector, const KsRect *viewport);

/**
 * Tells the colour of the canvas behind the drawing. What the drawing leaves open shows the canvas itself. -13
 * for an empty drawing.
 */
KS_API int32_t KsVectorSetBackground(KsVector *vector, uint32_t color);

/** How a painted drawing stands on the canvas. */
enum KsVectorMode {
  KS_VECTOR_DOWNWARDS = 0, /**< y runs down, as on the canvas; the mode of a new drawing */
  KS_VECTOR_UPWARDS = 1    /**< y runs up, as in a metafile's drawing */
};
/** Sets it: a KsVectorMode. -13 for null, and for another number. */
KS_API int32_t KsVectorSetMode(KsVector *vector, uint32_t mode);

/**
 * Fits the window to the objects. It and the two behind it are for clients that bring the views of a drawing up to date
 * before they paint or save. SUCCESS, or -13 for an empty one.
 */
KS_API int32_t KsVectorViewA(KsVector *vector, uint32_t);
/** Has nothing left to do, and only tells whether there is a drawing: SUCCESS, or -13 for an empty one. */
KS_API int32_t KsVectorViewB(KsVector *vector, uint32_t);
/** As KsVectorViewB. */
KS_API int32_t KsVectorViewC(KsVector *vector, uint32_t, uint32_t);

/**
 * Paints the drawing: its window is laid onto `rectangle`, to which it isn't clipped. `width` and `height` are those of
 * the window that it is seen in, and have no effect on the picture; the other arguments are 0 and null. An empty
 * drawing paints nothing. -13 for null, -16 for a bitmap of other than 8, 24 or 32 bits, -1.
 */
KS_API int32_t KsVectorPaint(KsDeviceContext *context, KsVector *vector, int32_t width, int32_t height, int32_t,
                             int32_t, const KsRect *rectangle, const KsRect *reserved, uint32_t);

/**
 * Reads a metafile (CGM, binary encoding) into `vector`, whose drawing is released first; it is empty after a failure.
 * Its y runs upwards: where that of the metafile runs down, all are negated. `options` may be null. -9 for data that
 * hold nothing to draw, -1.
 */
KS_API int32_t KsVectorLoadMemory(const void *buffer, KsVector *vector, uint64_t size, const KsLoadOptions *options,
                                  void *reserved);

/**
 * Writes the drawing as a metafile into a global block, `*handle` with `*size` bytes, which the caller reports with
 * KsTrackAlloc and gives back with KsFreeGlobal. Its y runs downwards, and with a viewport the window is laid onto it,
 * a unit being a pixel. `format` is KS_FORMAT_CGM, else -16; -13 for null or an empty drawing, -1.
 */
KS_API int32_t KsVectorSaveMemory(void **handle, const KsVector *vector, uint32_t format, uint64_t *size,
                                  const KsSaveOptions *options);

/* ---- platform and start ------------------------------------------------------------------------------------------ */

/**
 * What a program may take over of the window system. A null member stands for the default: the message box writes one
 * line to the standard error output and answers OK (1), debug output is dropped, a rectangle is filled with its four
 * edges.
 */
typedef struct KsPlatformHandlers {
  /** Shows a message, for which zero-terminated texts are given, and answers the button that was chosen. */
  int32_t (*messageBox)(const char *text, const char *caption, uint32_t type, void *userData);
  /** Takes a line for whoever looks for faults. */
  void (*debugOutput)(const char *text, void *userData);
  /** Fills a rectangle with its four edges. */
  void (*setRect)(KsRect *rectangle, int32_t left, int32_t top, int32_t right, int32_t bottom, void *userData);
  void *userData; /**< what the handlers get as their last argument */
} KsPlatformHandlers;

/**
 * Sets the handlers of the process; null restores the defaults. Not to be called while another thread is in the
 * library.
 */
KS_API void KsSetPlatformHandlers(const KsPlatformHandlers *handlers);

/**
 * A function that a filter entry is handed to, with the entry's address first and the caller's other arguments behind.
 */
typedef intptr_t (*KsFilterHandler)(void *entry, ...);

/**
 * Hands a filter to the framework: jumps to the handler with all arguments and the stack as they came. 1 by default.
 */
KS_API intptr_t KsFilterEntry(void *entry, ...);

/** Sets what KsFilterEntry jumps to; null restores the default. */
KS_API void KsSetFilterHandler(KsFilterHandler handler);

#ifdef __cplusplus
}
#endif

#endif
