/*
 * libksntfx: reads and writes the National Imagery Transmission Format (NITF 2.1, MIL-STD-2500; NSIF 1.0 files that
 * carry version 02.10). Usable from C11 and C++.
 *
 * The filter entries plug the library into the imaging framework; the composition functions draw a file that is already
 * loaded. All functions return a signed 32-bit status: SUCCESS (1), a negative code, or, where told, another number.
 * The library has no state of its own; a NitfFile is used by one thread at a time.
 */
#ifndef KSNTFX_H
#define KSNTFX_H

#include "kskernel.h"

#if defined(_WIN32)
#if defined(KSNTFX_BUILD)
#define KSNTFX_API __declspec(dllexport)
#else
#define KSNTFX_API __declspec(dllimport)
#endif
#else
#define KSNTFX_API __attribute__((visibility("default")))
#endif

#ifdef __cplusplus
extern "C" {
#endif

/** Results that are the format's own; the others are those of KsStatus. */
enum NitfStatus {
  NITF_NULL_HANDLE = -261,           /**< a null NitfHandle */
  NITF_UNSUPPORTED_VERSION = -78,    /**< FVER is not 02.10 */
  NITF_UNSUPPORTED_PVTYPE = -700000, /**< PVTYPE is neither INT nor B */
  NITF_UNSUPPORTED_CLEVEL = -700001, /**< CLEVEL is not 03 */
  NITF_UNSUPPORTED_BPP = -700002,    /**< NBPP is 16 with more than one band */
  NITF_UNSUPPORTED_TILE = -700003    /**< compressed data of a kind that NITF doesn't hold */
};

/** The framework's number for this format, what fltInfo stores in KsFileInfo::formatId. */
#define NITF_FORMAT_ID 248u

/** Bits of KsLoadOptions::loadFlags that the filter entries look at. */
enum NitfLoadFlags {
  NITF_LOAD_FIXED_CANVAS = 0x40000,  /**< the canvas is 2048 by 2048, whatever the segments say */
  NITF_LOAD_TONE_CHECK = 0x80000,    /**< images whose levels all lie below 20 are spread over the full range */
  NITF_LOAD_VECTOR_RENDER = 0x100000 /**< object symbols are painted at once */
};

/** Bits of the row callback's `rowFlags`. NITF_ROW_VALID is always set. */
enum NitfRowFlags { NITF_ROW_VALID = 3, NITF_ROW_FIRST = 4, NITF_ROW_LAST = 8 };

/** One file: opaque here. */
typedef struct NitfFile NitfFile;

/** A file that was opened or made through K_NITFCreate, and belongs to the caller until K_NITFDestroy. */
typedef NitfFile *NitfHandle;

/** Bits that K_NITFGetStatus gives. */
enum NitfHandleStatus {
  NITF_STATUS_EMPTY = 1, /**< there are no images, graphics, labels and texts */
  NITF_STATUS_HEADER = 2 /**< there is a file header */
};

/**
 * Receives one row of the composed picture. `row` holds the pixels in the canvas's own format, is the canvas's own row,
 * and lives until the callback returns; `rowIndex` counts from 0 at the top, `rowCount` is always 1. SUCCESS goes on to
 * the next row; any other result ends the load and becomes its result.
 */
typedef int32_t (*NitfRowCallback)(uint64_t rowContext, KsBitmap *canvas, void *row, uint32_t rowFlags,
                                   uint32_t rowIndex, uint32_t rowCount, uint64_t rowUserData);

typedef int32_t (*NitfLoadFromMemory)(const void *buffer, KsBitmap *bitmap, uint32_t bitmapSize, int32_t bits,
                                      int32_t order, uint64_t size, const KsLoadOptions *options, void *reserved);
typedef KsRedirectCallback (*NitfSetRedirect)(KsRedirectCallback callback, void *userData);

#pragma pack(push, 1)

/** What fltInfo is asked. Byte-packed; members not named are the framework's own and not looked at. */
typedef struct FilterInfoRecord {
  const char16_t *fileName; /* 0: UTF-16, zero-terminated */
  uint8_t reserved8[4];
  KsHandle inputHandle; /* 12: a handle that the caller has open on the file, or KS_INVALID_HANDLE; put back to 0 */
  KsFileInfo *fileInfo; /* 20: receives the answer */
  uint8_t reserved28[28];
  KsLoadOptions *loadOptions; /* 56: 0x80000001 is or-ed into its flags */
} FilterInfoRecord;

/** The depth of the canvas that fltLoad is to make. */
typedef struct FilterTargetInfo {
  uint8_t reserved0[28];
  uint32_t bitsPerPixel; /* 28: 8, 24 or 32 */
} FilterTargetInfo;

/** What fltLoad is asked. Byte-packed; members not named are the framework's own and not looked at. */
typedef struct FilterLoadRecord {
  const char16_t *fileName;           /* 0: UTF-16, zero-terminated */
  const FilterTargetInfo *targetInfo; /* 8 */
  uint8_t reserved16[4];
  NitfRowCallback rowCallback; /* 20 */
  uint64_t rowUserData;        /* 28: the callback's last argument */
  uint8_t reserved36[36];
  uint64_t rowContext; /* 72: the callback's first argument */
  uint8_t reserved80[1920];
  KsLoadOptions *loadOptions; /* 2000: 0x80000001 is or-ed into its flags */
  uint8_t reserved2008[48];
  NitfLoadFromMemory loadFromMemory; /* 2056: decodes compressed streams; not null (KsLoadMemory will do) */
  NitfSetRedirect setRedirect;       /* 2064: not null (KsSetRedirect will do) */
  uint8_t reserved2072[48];
  void (*requiredEntry)(void); /* 2120: not null, never called */
  uint8_t reserved2128[232];
  uint64_t skipRows; /* 2360: when not 0 the file is composed and no row is delivered */
} FilterLoadRecord;

#pragma pack(pop)

/* ---- filter ------------------------------------------------------------------------------------------------------ */

/**
 * Tells how large the picture of a file is: fills formatId, width, height, bitsPerPixel (always 24), imageBytes and the
 * two page members of request->fileInfo. Reads headers only, and the drawings that decide the size.
 */
KSNTFX_API int32_t fltInfo(FilterInfoRecord *request);

/**
 * Composes a file on a canvas of the depth asked for, filled with FBKGC, and hands it row by row to the callback.
 * ERROR_FILE_FORMAT where a required function of the request is null; ERROR_NO_MEMORY where the canvas is above the
 * bitmap limit; the first failure of a segment, with nothing delivered.
 */
KSNTFX_API int32_t fltLoad(FilterLoadRecord *request);

/** Declines: ERROR_NOT_SUPPORTED. Files are written through the authoring functions. */
KSNTFX_API int32_t fltSave(void);

/** Hands the library to the framework: KsFilterEntry, with this function's address in place of the first argument. */
KSNTFX_API intptr_t KORVA_Load(void *, ...);

/* ---- composition ------------------------------------------------------------------------------------------------- */

/** The size of a loaded file's canvas in pixels. `width` and `height` are set on SUCCESS. */
KSNTFX_API int32_t GetActual_Width_Height(NitfFile *file, uint32_t *width, uint32_t *height);

/**
 * Draws images, graphics and labels on `canvas` from the lowest display level (IDLVL, SDLVL) to the highest.
 * `loadContext` is the request of fltLoad, or null for the framework's own codecs; `deviceContext` is a context on
 * `canvas`, needed by graphics, labels and images with a pad value (TPXCD), else null. The first failure ends the
 * drawing.
 */
KSNTFX_API int32_t K_NitfDrawObjects(FilterLoadRecord *loadContext, KsDeviceContext *deviceContext, KsBitmap *canvas,
                                     NitfFile *file);

/** Makes `bitmap` a new 24-bit canvas with the picture of a loaded file; the caller frees it with KsBitmapFree. */
KSNTFX_API int32_t K_NtfRenderBitmap(KsBitmap *bitmap, NitfFile *file);

/* ---- handles ----------------------------------------------------------------------------------------------------- */

/**
 * Opens a file, or, where `name` is null, makes one that holds a header of 388 bytes and nothing else, and stores the
 * handle at `address`. The file stays open until K_NITFDestroy. `name` is UTF-16 (UTF-8 in the narrow form) and
 * zero-terminated. ERROR_NO_FILE where there is no such file; ERROR_NO_MEMORY also for a null address and a narrow name
 * that is no UTF-8; what a load fails with: ERROR_FILE_READ, ERROR_FILE_FORMAT, one of NitfStatus. The handle is null
 * after a failure of the wide form, and of the narrow one but for its name.
 */
KSNTFX_API int32_t K_NITFCreate(NitfHandle *address, const char16_t *name);
KSNTFX_API int32_t K_NITFCreateA(NitfHandle *address, const char *name);

/** Closes the file, releases everything and sets the handle to null. NITF_NULL_HANDLE where it is null already. */
KSNTFX_API int32_t K_NITFDestroy(NitfHandle *address);

/** Bits of NitfHandleStatus, or NITF_NULL_HANDLE. */
KSNTFX_API int32_t K_NITFGetStatus(NitfHandle handle);

/**
 * Writes the file that the handle stands for: headers from memory, bodies from memory or as copies of the opened
 * file's, byte for byte. The handle stays as it is and may be saved again. An output that can't be written is left as
 * far as it came: ERROR_FILE_WRITE, as for one that is the opened file itself, which is not touched. ERROR_FILE_READ
 * where the opened file is cut off, ERROR_INVALID_VALUE for a number of an image that is wider than its field (nothing
 * is written then), ERROR_NO_MEMORY, NITF_NULL_HANDLE.
 */
KSNTFX_API int32_t K_NITFSaveFile(NitfHandle handle, const char16_t *name);
KSNTFX_API int32_t K_NITFSaveFileA(NitfHandle handle, const char *name);

#ifdef __cplusplus
}
#endif

#endif
