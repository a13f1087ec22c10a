/**
 * @file
 * libksntfx: reads and writes the National Imagery Transmission Format (NITF 2.1, MIL-STD-2500; and NSIF 1.0 files with
 * version 02.10). Usable from C11 and C++.
 *
 * The filter entries plug the library into the imaging framework; the composition functions draw a loaded file. Unless
 * documented otherwise, a function returns a signed 32-bit status: SUCCESS (1) or an error of KsStatus or NitfStatus.
 * Most errors are negative, but 0 and 87 are errors too, so compare with SUCCESS.
 *
 * The library has no global state. A NitfFile must not be used by two threads at the same time.
 */
#ifndef KSNTFX_H
#define KSNTFX_H

#include "kskernel.h"

/** Marks the functions that the library exports. */
#if defined(_WIN32)
#if defined(KSNTFX_BUILD)
#define KSNTFX_API __declspec(dllexport)
#else
#define KSNTFX_API __declspec(dllimport)
#endif
#else
#define KSNTFX_API __attribute__((visibility("default")))
#endif

/** The version of the library that this header belongs to, as a string, and as numbers for `#if`. */
#define KSNTFX_VERSION "0.9.0"
#define KSNTFX_VERSION_MAJOR 0 /**< the first number of KSNTFX_VERSION */
#define KSNTFX_VERSION_MINOR 9 /**< the second */
#define KSNTFX_VERSION_PATCH 0 /**< the third */

#ifdef __cplusplus
extern "C" {
#endif

/** Status values of the format. All others are in KsStatus. */
enum NitfStatus {
  NITF_NO_HANDLE = 0,                /**< null NitfHandle, from the header functions */
  NITF_TOO_MANY_SEGMENTS = 0,        /**< the file already has 999 segments of the kind */
  NITF_OUT_OF_RANGE = 87,            /**< no segment with that index, or null record; an error, although positive */
  NITF_NO_TEXT_FILE = -14,           /**< the text file can't be opened */
  NITF_NULL_HANDLE = -261,           /**< null NitfHandle, from all other functions; null rectangle */
  NITF_EMPTY_DRAWING = -501,         /**< the drawing has no objects */
  NITF_NULL_DATA = -814,             /**< null drawing or null data */
  NITF_UNSUPPORTED_VERSION = -78,    /**< FVER is not 02.10 */
  NITF_UNSUPPORTED_PVTYPE = -700000, /**< PVTYPE is neither INT nor B */
  NITF_UNSUPPORTED_CLEVEL = -700001, /**< CLEVEL is not 03 */
  NITF_UNSUPPORTED_BPP = -700002,    /**< NBPP is 16 with more than one band */
  NITF_UNSUPPORTED_TILE = -700003    /**< a compressed tile is neither JPEG nor JPEG 2000 */
};

/** The framework's number for this format, which fltInfo stores in KsFileInfo::formatId. */
#define NITF_FORMAT_ID 248u

/** Bits of KsLoadOptions::loadFlags that the filter entries use. */
enum NitfLoadFlags {
  NITF_LOAD_FIXED_CANVAS = 0x40000,  /**< use a canvas of 2048 x 2048 pixels, whatever the segments say */
  NITF_LOAD_TONE_CHECK = 0x80000,    /**< stretch images with no level above 19 to the full range */
  NITF_LOAD_VECTOR_RENDER = 0x100000 /**< paint object symbols immediately */
};

/** Bits of the row callback's `rowFlags`. NITF_ROW_VALID is always set. */
enum NitfRowFlags {
  NITF_ROW_VALID = 3, /**< the row has pixels */
  NITF_ROW_FIRST = 4, /**< first row */
  NITF_ROW_LAST = 8   /**< last row */
};

/** One file. Opaque. */
typedef struct NitfFile NitfFile;

/** A file from K_NITFCreate. The caller owns it and releases it with K_NITFDestroy. */
typedef NitfFile *NitfHandle;

/** Bits that K_NITFGetStatus returns. */
enum NitfHandleStatus {
  NITF_STATUS_EMPTY = 1, /**< the file has no images, graphics, labels or texts */
  NITF_STATUS_HEADER = 2 /**< the file has a header */
};

/**
 * Receives one row of the composed picture. `row` has the pixels in the canvas's format and is valid until the callback
 * returns. `rowIndex` counts from 0 at the top; `rowCount` is always 1.
 *
 * Return SUCCESS to receive the next row. Any other value ends the load, which then returns it.
 */
typedef int32_t (*NitfRowCallback)(uint64_t rowContext, KsBitmap *canvas, void *row, uint32_t rowFlags,
                                   uint32_t rowIndex, uint32_t rowCount, uint64_t rowUserData);

/** Decodes a compressed stream. KsLoadMemory is such a function. */
typedef int32_t (*NitfLoadFromMemory)(const void *buffer, KsBitmap *bitmap, uint32_t bitmapSize, int32_t bits,
                                      int32_t order, uint64_t size, const KsLoadOptions *options, void *reserved);
/** Sets the callback that describes streams without a header. KsSetRedirect is such a function. */
typedef KsRedirectCallback (*NitfSetRedirect)(KsRedirectCallback callback, void *userData);

#pragma pack(push, 1)

/** The request of fltInfo. Byte-packed; reserved members belong to the framework and are ignored. */
typedef struct FilterInfoRecord {
  const char16_t *fileName; /**< 0: UTF-16, zero-terminated */
  uint8_t reserved8[4];
  KsHandle inputHandle; /**< 12: the caller's open handle on the file, rewound to 0, or KS_INVALID_HANDLE */
  KsFileInfo *fileInfo; /**< 20: receives the result */
  uint8_t reserved28[28];
  KsLoadOptions *loadOptions; /**< 56: 0x80000001 is ORed into its flags */
} FilterInfoRecord;

/** The canvas that fltLoad creates. */
typedef struct FilterTargetInfo {
  uint8_t reserved0[28];
  uint32_t bitsPerPixel; /**< 28: 8, 24 or 32 */
} FilterTargetInfo;

/** The request of fltLoad. Byte-packed; reserved members belong to the framework and are ignored. */
typedef struct FilterLoadRecord {
  const char16_t *fileName;           /**< 0: UTF-16, zero-terminated */
  const FilterTargetInfo *targetInfo; /**< 8: the depth of the canvas */
  uint8_t reserved16[4];
  NitfRowCallback rowCallback; /**< 20: receives the rows; may be null only if skipRows is set */
  uint64_t rowUserData;        /**< 28: the callback's last argument */
  uint8_t reserved36[36];
  uint64_t rowContext; /**< 72: the callback's first argument */
  uint8_t reserved80[1920];
  KsLoadOptions *loadOptions; /**< 2000: 0x80000001 is ORed into its flags */
  uint8_t reserved2008[48];
  NitfLoadFromMemory loadFromMemory; /**< 2056: decodes compressed streams, usually KsLoadMemory; not null */
  NitfSetRedirect setRedirect;       /**< 2064: usually KsSetRedirect; not null */
  uint8_t reserved2072[48];
  void (*requiredEntry)(void); /**< 2120: not null, never called */
  uint8_t reserved2128[232];
  uint64_t skipRows; /**< 2360: if not 0, compose the file and deliver no rows */
} FilterLoadRecord;

#pragma pack(pop)

/* ---- filter ------------------------------------------------------------------------------------------------------ */

/**
 * Determines the size of a file's picture. Sets formatId, width, height, bitsPerPixel (always 24), imageBytes and the
 * two page members of request->fileInfo. Only headers are read, and drawings that the size depends on. The caller keeps
 * ownership of `request` and everything that it points to.
 *
 * @retval SUCCESS request->fileInfo is filled
 * @retval ERROR_FILE_READ the file can't be opened, or is truncated
 * @retval ERROR_FILE_FORMAT the file is malformed
 * @retval ERROR_NO_MEMORY out of memory
 * @retval NITF_UNSUPPORTED_VERSION or another value of NitfStatus: the file is not supported
 */
KSNTFX_API int32_t fltInfo(FilterInfoRecord *request);

/**
 * Composes a file on a canvas of the requested depth, filled with FBKGC, and passes it to the callback row by row. If a
 * segment can't be drawn, its status is returned and no row is delivered.
 *
 * @retval SUCCESS all rows were delivered
 * @retval ERROR_FILE_FORMAT a required function of the request is null, or the file is malformed
 * @retval ERROR_NO_MEMORY out of memory, or the canvas exceeds the bitmap limit
 * @return otherwise an error of fltInfo, of the first segment that failed, or the callback's result
 */
KSNTFX_API int32_t fltLoad(FilterLoadRecord *request);

/** Always returns ERROR_NOT_SUPPORTED. The functions below K_NITFCreate write files. */
KSNTFX_API int32_t fltSave(void);

/** Registers the library with the framework: calls KsFilterEntry with this function's address as first argument. */
KSNTFX_API intptr_t KORVA_Load(void *, ...);

/* ---- composition ------------------------------------------------------------------------------------------------- */

/**
 * Returns the size of a loaded file's canvas, in pixels. `width` and `height` are set only on success.
 *
 * @retval SUCCESS
 * @retval ERROR_NO_MEMORY out of memory, or the size exceeds 32 bits
 * @return otherwise the error of a drawing that the size depends on
 */
KSNTFX_API int32_t GetActual_Width_Height(NitfFile *file, uint32_t *width, uint32_t *height);

/**
 * Draws images, graphics and labels on `canvas`, from the lowest display level (IDLVL, SDLVL) to the highest. The first
 * error ends the drawing.
 *
 * @param loadContext the request of fltLoad, or null to use the framework's codecs
 * @param deviceContext a context on `canvas`. Required if the file has graphics, labels or images with a pad value
 *        (TPXCD); may be null otherwise.
 * @param canvas the bitmap to draw on
 * @param file a loaded file
 * @retval SUCCESS
 * @return otherwise the error of the first segment that failed
 */
KSNTFX_API int32_t K_NitfDrawObjects(FilterLoadRecord *loadContext, KsDeviceContext *deviceContext, KsBitmap *canvas,
                                     NitfFile *file);

/**
 * Draws a loaded file on a new 24-bit canvas, which replaces `bitmap`. Initialise `bitmap` before the call, and free it
 * with KsBitmapFree. It is empty after an error.
 *
 * @retval SUCCESS
 * @retval ERROR_INVALID_VALUE an argument is null
 * @retval ERROR_NO_MEMORY out of memory, or the canvas exceeds the bitmap limit
 * @return otherwise the error of the first segment that failed
 */
KSNTFX_API int32_t K_NtfRenderBitmap(KsBitmap *bitmap, NitfFile *file);

/* ---- handles ----------------------------------------------------------------------------------------------------- */

/**
 * Opens a file and stores a handle for it at `address`. If `name` is null, creates a file in memory instead, with a
 * header of 388 bytes and no segments. An opened file stays open until K_NITFDestroy.
 *
 * `name` is zero-terminated UTF-16. After an error, the handle is null.
 *
 * @retval SUCCESS
 * @retval ERROR_NO_FILE the file doesn't exist
 * @retval ERROR_FILE_READ the file can't be read, or is truncated
 * @retval ERROR_FILE_FORMAT the file is malformed
 * @retval ERROR_NO_MEMORY out of memory, or `address` is null
 * @retval NITF_UNSUPPORTED_VERSION or another value of NitfStatus: the file is not supported
 */
KSNTFX_API int32_t K_NITFCreate(NitfHandle *address, const char16_t *name);
/** K_NITFCreate with a name in UTF-8. A name that isn't UTF-8: ERROR_NO_MEMORY, and the handle is left unchanged. */
KSNTFX_API int32_t K_NITFCreateA(NitfHandle *address, const char *name);

/**
 * Closes a file, releases everything that belongs to it, and sets the handle to null.
 *
 * @retval SUCCESS
 * @retval NITF_NULL_HANDLE the handle is null
 */
KSNTFX_API int32_t K_NITFDestroy(NitfHandle *address);

/** Returns bits of NitfHandleStatus, or NITF_NULL_HANDLE. */
KSNTFX_API int32_t K_NITFGetStatus(NitfHandle handle);

/**
 * Writes a file: headers from memory, and bodies from memory or copied byte for byte from the opened file. The handle
 * doesn't change and can be saved again. An output that can't be written completely is left incomplete.
 *
 * @retval SUCCESS
 * @retval NITF_NULL_HANDLE the handle is null
 * @retval ERROR_INVALID_VALUE a number of an image is too wide for its field; nothing is written
 * @retval ERROR_FILE_WRITE the output can't be written, or is the opened file itself, which is left untouched
 * @retval ERROR_FILE_READ the opened file is truncated
 * @retval ERROR_NO_MEMORY out of memory
 */
KSNTFX_API int32_t K_NITFSaveFile(NitfHandle handle, const char16_t *name);
/** K_NITFSaveFile with a name in UTF-8. A name that isn't UTF-8: ERROR_NO_MEMORY. */
KSNTFX_API int32_t K_NITFSaveFileA(NitfHandle handle, const char *name);

/* ---- header records -----------------------------------------------------------------------------------------------
 *
 * The records that the Get functions fill and the Set functions store. Members have the names of the standard's fields
 * (MIL-STD-2500C, tables ). Byte-packed: there are no gaps between members.
 *
 * Texts are zero-terminated. A text from Get belongs to the record and is released by the matching Free. A text for Set
 * belongs to the caller; don't pass such a record to Free. A null text leaves the field unchanged. The number in a
 * text's comment is its maximum length in characters. Numbers have the documented number of digits; a number with more
 * digits is stored as zeros. Dates consist of groups of two characters, century first, without a terminator.
 *
 * Data members (UDID, IXSHD and others) have 3 bytes less than their length member, which precedes them. If a Set
 * changes the length and the data pointer is null, the existing data is truncated, or extended with zeros.
 */

#pragma pack(push, 1)

/** The file header (MIL-STD-2500C, table A-1). Members marked "set only" are stored by Set and not filled by Get. */
typedef struct NitfHeaderInfo {
  char *FHDR;        /**< 4 */
  uint32_t CLEVEL;   /**< 1 to 7, or 99; other values are not stored */
  char *STYPE;       /**< 4 */
  char *OSTAID;      /**< 10 */
  char *FTITLE;      /**< 80 */
  char *FSCLAS;      /**< 1: T, S, C, R or U */
  char *FSCLSY;      /**< 2 */
  char *FSCODE;      /**< 40 */
  char *FSCTLH;      /**< 40 */
  char *FSREL;       /**< 40 */
  char *FSDCTP;      /**< 2 */
  char *FSDCXM;      /**< 4 */
  char *FSDG;        /**< 1 */
  char *FSCLTX;      /**< 43 */
  char *FSCATP;      /**< 1 */
  char *FSCAUT;      /**< 40 */
  char *FSCRSN;      /**< 1 */
  char *FSCTLN;      /**< 20 */
  char *ONAME;       /**< 27 */
  char *OPHONE;      /**< 18 */
  uint32_t HL;       /**< 6 digits, bytes of the header */
  uint32_t FL;       /**< 12 digits, bytes of the file */
  uint32_t FSCOP;    /**< 5 digits */
  uint32_t FSCPYS;   /**< 5 digits */
  uint32_t ENCRYP;   /**< 1 digit */
  uint32_t NUMI;     /**< images; Set ignores a count above the number of segments, and its two tables */
  uint32_t *LISH;    /**< NUMI lengths of subheaders, in bytes */
  uint32_t *LI;      /**< NUMI lengths of data */
  uint32_t NUMS;     /**< graphics, as NUMI */
  uint32_t *LSSH;    /**< NUMS */
  uint32_t *LS;      /**< NUMS */
  uint32_t NUMX;     /**< 3 digits; set only */
  uint32_t NUMT;     /**< texts, as NUMI */
  uint32_t *LTSH;    /**< NUMT */
  uint32_t *LT;      /**< NUMT */
  uint32_t NUMDES;   /**< data extensions, as NUMI; set only */
  uint32_t *LDSH;    /**< NUMDES; set only */
  uint32_t *LD;      /**< NUMDES; set only */
  uint32_t NUMRES;   /**< reserved extensions, as NUMI; set only */
  uint32_t *LRESH;   /**< NUMRES; set only */
  uint32_t *LRE;     /**< NUMRES; set only */
  uint32_t UDHDL;    /**< 5 digits; 0 without user data, otherwise 3 plus the bytes of UDHD; set only */
  uint32_t UDHOFL;   /**< 3 digits; set only */
  void *UDHD;        /**< set only */
  uint32_t XHDL;     /**< 5 digits, as UDHDL for XHD; set only */
  uint32_t XHDLOFL;  /**< 3 digits; set only */
  void *XHD;         /**< set only */
  uint32_t FBKGC;    /**< background colour, red in the low byte; set only */
  char FSSRDT[4][2]; /**< CCYYMMDD */
  char FSDGDT[4][2]; /**< CCYYMMDD */
  char FSDCDT[4][2]; /**< CCYYMMDD */
  char FDT[7][2];    /**< CCYYMMDDhhmmss */
  float FVER;        /**< two decimals: 2.1 is 02.10; a value of more than five characters is not stored */
} NitfHeaderInfo;

/** An image subheader (MIL-STD-2500C, table A-3). */
typedef struct NitfImageHeaderInfo {
  char *IM;           /**< 2 */
  char *IID1;         /**< 10 */
  char IDATIM[7][2];  /**< CCYYMMDDhhmmss */
  char *TGTID;        /**< 17 */
  char *IID2;         /**< 80 */
  char *ISCLAS;       /**< 1 */
  char *ISCLSY;       /**< 2 */
  char *ISCODE;       /**< 40 */
  char *ISCTLH;       /**< 40 */
  char *ISREL;        /**< 40 */
  char *ISDCTP;       /**< 2 */
  char ISDCDT[4][2];  /**< CCYYMMDD */
  char *ISDCXM;       /**< 4 */
  char *ISDG;         /**< 1 */
  char ISDGDT[4][2];  /**< CCYYMMDD */
  char *ISCLTX;       /**< 43 */
  char *ISCATP;       /**< 1 */
  char *ISCAUT;       /**< 40 */
  char *ISCRSN;       /**< 1 */
  char ISSRDT[4][2];  /**< CCYYMMDD */
  char *ISCTLN;       /**< 20 */
  uint32_t ENCRYP;    /**< 1 digit */
  char *ISORCE;       /**< 42 */
  uint32_t NROWS;     /**< 8 digits, pixels */
  uint32_t NCOLS;     /**< 8 digits, pixels */
  char *PVTYPE;       /**< 3: begins with I or B */
  char *IREP;         /**< 8: begins with MONO, RGB, RGB/LUT, MULTI, NODISPLY, NVECTOR, POLAR, VPH or YCbCr601 */
  char *ICAT;         /**< 8 */
  uint32_t ABPP;      /**< 2 digits, bits */
  char *PJUST;        /**< 1: L or R */
  char *ICORDS;       /**< 1: blank if there is no IGEOLO */
  char *IGEOLO;       /**< 60 */
  uint32_t NICOM;     /**< 1 digit, at most the number of comments that the image has */
  char **ICOM;        /**< NICOM texts of 80 */
  char *IC;           /**< 2: one of the compression codes */
  char *COMRAT;       /**< 4 */
  uint32_t NBANDS;    /**< 1 digit, 0 if XBANDS has the count; Set resets the fields of the bands */
  uint32_t XBANDS;    /**< 5 digits; takes effect with the next Set */
  char **IREPBAND;    /**< neither filled nor stored, nor are the next three; Free releases NBANDS texts of each */
  char **ISUBCAT;     /**< as IREPBAND */
  char **IFC;         /**< as IREPBAND */
  char **IMFLT;       /**< as IREPBAND */
  uint32_t ISYNC;     /**< 1 digit */
  char *IMODE;        /**< 1: B, P, R or S */
  uint32_t NBPR;      /**< 4 digits, blocks */
  uint32_t NBPC;      /**< 4 digits, blocks */
  uint32_t NPPBH;     /**< up to 8192 pixels; 0 is NCOLS */
  uint32_t NPPBV;     /**< up to 8192 pixels; 0 is NROWS */
  uint32_t NBPP;      /**< 2 digits, bits */
  uint32_t IDLVL;     /**< 1 to 999 */
  uint32_t IALVL;     /**< 3 digits */
  int32_t locationA;  /**< ILOC: from Get the column, to Set the row, in pixels */
  int32_t locationB;  /**< ILOC: from Get the row, to Set the column */
  char *IMAG;         /**< 4: a decimal fraction, or a slash and the divisor */
  uint32_t UDIDL;     /**< 5 digits; 0 without user data, otherwise 3 plus the bytes of UDID */
  uint32_t UDOFL;     /**< 3 digits */
  char *UDID;         /**< UDIDL - 3 bytes, and a terminating zero */
  uint32_t IXSHDL;    /**< 5 digits, as UDIDL for IXSHD */
  uint32_t IXSOFL;    /**< 3 digits */
  uint8_t *IXSHD;     /**< Get returns IXSHDL bytes, zeros after the data */
  uint32_t IMDATOFF;  /**< bytes */
  uint16_t BMRLNTH;   /**< bytes */
  uint16_t TMRLNTH;   /**< bytes */
  uint16_t TPXCDLNTH; /**< bits */
  uint8_t *TPXCD;     /**< (TPXCDLNTH + 7) / 8 bytes; Get returns TPXCDLNTH bytes, zeros after them */
} NitfImageHeaderInfo;

/** A graphic subheader (MIL-STD-2500C, table A-5). */
typedef struct NitfGraphicHeaderInfo {
  char *SY;              /**< 2 */
  char *SID;             /**< 10 */
  char *SNAME;           /**< 20 */
  char *SSCLAS;          /**< 1 */
  char *SSCLSY;          /**< 2 */
  char *SSCODE;          /**< 40 */
  char *SSCTLH;          /**< 40 */
  char *SSREL;           /**< 40 */
  char *SSDCTP;          /**< 2 */
  char SSDCDT[4][2];     /**< CCYYMMDD */
  char *SSDCXM;          /**< 4 */
  char *SSDG;            /**< 1 */
  char SSDGDT[4][2];     /**< CCYYMMDD */
  char *SSCLTX;          /**< 43 */
  char *SSCATP;          /**< 1 */
  char *SSCAUT;          /**< 40 */
  char *SSCRSN;          /**< 1 */
  char SSSRDT[4][2];     /**< CCYYMMDD */
  char *SSCTLN;          /**< 20 */
  uint32_t ENCRYP;       /**< 1 digit */
  char *SFMT;            /**< 1 */
  uint32_t SSTRUCT;      /**< 13 digits, of which this member has 32 bits */
  uint32_t SDLVL;        /**< 3 digits */
  uint32_t SALVL;        /**< 3 digits */
  int32_t locationA;     /**< SLOC: from Get the column, to Set the row, in pixels */
  int32_t locationB;     /**< SLOC: from Get the row, to Set the column */
  uint32_t bound1First;  /**< SBND1, five digits each */
  uint32_t bound1Second; /**< the second number of SBND1 */
  char *SCOLOR;          /**< 1 */
  uint32_t bound2First;  /**< SBND2, five digits each */
  uint32_t bound2Second; /**< the second number of SBND2 */
  uint32_t SRES2;        /**< 2 digits */
  uint32_t SXSHDL;       /**< 5 digits; 0 without data, otherwise 3 plus the bytes of SXSHD */
  uint32_t SXSOFL;       /**< 3 digits */
  uint8_t *SXSHD;        /**< Get returns SXSHDL bytes, zeros after the data */
} NitfGraphicHeaderInfo;

/** A text subheader (MIL-STD-2500C, table A-6). */
typedef struct NitfTextHeaderInfo {
  char *TE;          /**< 2 */
  char *TEXTID;      /**< 10 */
  uint32_t TXTALVL;  /**< 3 digits */
  char TXTDT[7][2];  /**< CCYYMMDDhhmmss */
  char *TXTITL;      /**< 80 */
  char *TSCLAS;      /**< 1 */
  char *TSCLSY;      /**< 2 */
  char *TSCODE;      /**< 40 */
  char *TSCTLH;      /**< 40 */
  char *TSREL;       /**< 40 */
  char *TSDCTP;      /**< 2 */
  char TSDCDT[4][2]; /**< CCYYMMDD */
  char *TSDCXM;      /**< 4 */
  char *TSDG;        /**< 1 */
  char TSDGDT[4][2]; /**< CCYYMMDD */
  char *TSCLTX;      /**< 43 */
  char *TSCATP;      /**< 1 */
  char *TSCAUT;      /**< 40 */
  char *TSCRSN;      /**< 1 */
  char TSSRDT[4][2]; /**< CCYYMMDD */
  char *TSCTLN;      /**< 20 */
  uint32_t ENCRYP;   /**< 1 digit */
  char *TXTFMT;      /**< 3 */
  uint32_t TXSHDL;   /**< 5 digits; 0 without data, otherwise 3 plus the bytes of TXSHD */
  uint32_t TXSOFL;   /**< 3 digits */
  uint8_t *TXSHD;    /**< Get returns TXSHDL - 3 bytes */
} NitfTextHeaderInfo;

#pragma pack(pop)

/**
 * Fills a record with the file header, except for the members marked "set only". Clear the record before the call.
 *
 * @retval SUCCESS
 * @retval NITF_NO_HANDLE the handle is null
 * @retval NITF_OUT_OF_RANGE the record is null
 */
KSNTFX_API int32_t K_NITFGetNITFHeader(NitfHandle handle, NitfHeaderInfo *record);
/**
 * Stores every member, and skips values that their field can't hold. The values are not checked against the segments.
 *
 * @retval SUCCESS
 * @retval NITF_NO_HANDLE the handle is null
 * @retval NITF_OUT_OF_RANGE the record is null
 */
KSNTFX_API int32_t K_NITFSetNITFHeader(NitfHandle handle, const NitfHeaderInfo *record);
/** Releases what Get allocated and sets the pointers to null. Calling it twice, or for null, is safe. Returns SUCCESS.
 */
KSNTFX_API int32_t K_NITFFreeNITFHeader(NitfHeaderInfo *record);

/** Returns the number of images, or 0 for a null handle. */
KSNTFX_API int32_t K_NITFGetImageHeaderCount(NitfHandle handle);
/**
 * Fills a record with the subheader of an image. Clear the record before the call.
 *
 * @retval SUCCESS
 * @retval NITF_NO_HANDLE the handle is null
 * @retval NITF_OUT_OF_RANGE there is no image with that index, counted from 0
 * @retval ERROR_INVALID_VALUE the record is null
 */
KSNTFX_API int32_t K_NITFGetImageHeader(NitfHandle handle, uint32_t index, NitfImageHeaderInfo *record);
/**
 * Stores all members in order, and stops at the first error; members before it stay stored. If a change of ICORDS or IC
 * changes the subheader's length, the file header is updated. The caller is responsible for all other lengths.
 *
 * @retval SUCCESS
 * @retval NITF_NO_HANDLE the handle is null
 * @retval NITF_OUT_OF_RANGE there is no image with that index, or the record is null
 * @retval ERROR_INVALID_VALUE a field can't hold its value
 * @retval ERROR_NO_MEMORY out of memory
 */
KSNTFX_API int32_t K_NITFSetImageHeader(NitfHandle handle, uint32_t index, const NitfImageHeaderInfo *record);
/** As K_NITFFreeNITFHeader. */
KSNTFX_API int32_t K_NITFFreeImageHeader(NitfImageHeaderInfo *record);

/** Returns the number of graphics, or 0 for a null handle. */
KSNTFX_API int32_t K_NITFGetGraphicHeaderCount(NitfHandle handle);
/** As K_NITFGetImageHeader; for a null record, NITF_OUT_OF_RANGE. */
KSNTFX_API int32_t K_NITFGetGraphicHeader(NitfHandle handle, uint32_t index, NitfGraphicHeaderInfo *record);
/** As K_NITFSetImageHeader; no lengths follow. */
KSNTFX_API int32_t K_NITFSetGraphicHeader(NitfHandle handle, uint32_t index, const NitfGraphicHeaderInfo *record);
/** As K_NITFFreeNITFHeader. */
KSNTFX_API int32_t K_NITFFreeGraphicHeader(NitfGraphicHeaderInfo *record);

/** Returns the number of texts, or 0 for a null handle. */
KSNTFX_API int32_t K_NITFGetTextHeaderCount(NitfHandle handle);
/** As K_NITFGetGraphicHeader. ERROR_NO_MEMORY if there is no memory for TXSHD. */
KSNTFX_API int32_t K_NITFGetTextHeader(NitfHandle handle, uint32_t index, NitfTextHeaderInfo *record);
/** As K_NITFSetImageHeader; no lengths follow. */
KSNTFX_API int32_t K_NITFSetTextHeader(NitfHandle handle, uint32_t index, const NitfTextHeaderInfo *record);
/** As K_NITFFreeNITFHeader. */
KSNTFX_API int32_t K_NITFFreeTextHeader(NitfTextHeaderInfo *record);

/**
 * Returns the bytes of a text, and a terminating zero. Call it first with a null buffer to get the size.
 *
 * @param handle the file
 * @param index the text, counted from 0
 * @param buffer receives size + 1 bytes; may be null
 * @param size receives the length without the terminating zero; may be null
 * @retval SUCCESS
 * @retval NITF_NO_HANDLE the handle is null
 * @retval NITF_OUT_OF_RANGE there is no text with that index
 * @retval ERROR_FILE_READ the text is truncated
 */
KSNTFX_API int32_t K_NITFGetTextSegment(NitfHandle handle, uint32_t index, char *buffer, uint32_t *size);

/* ---- appending ----------------------------------------------------------------------------------------------------
 *
 * A segment can be appended to an opened file and to a new one; it follows the other segments of its kind. It is
 * encoded immediately and kept in memory until K_NITFSaveFile writes it. Its subheader gets suitable values, which the
 * Set functions can change, and the lengths in the file header are updated. An image or graphic gets the display level
 * above the highest in the file; a graphic or text is attached to the lowest. The date of an image or text is before
 * FDT.
 *
 * After an error, the file is unchanged. NITF_TOO_MANY_SEGMENTS (0) is an error.
 */

/**
 * Appends an image, encoded as one JPEG stream in one block (IC C3). The bitmap may have any depth. It is not modified,
 * and not referenced after the call.
 *
 * @param handle the file
 * @param bitmap the picture
 * @param format KS_FORMAT_JPEG (IREP YCbCr601) or KS_FORMAT_JPEG_RGB (IREP RGB)
 * @param bits 24 for colour, 8 for gray (IREP MONO)
 * @param quality 2 (best) to 255 (smallest)
 *
 * The first of these that applies is returned:
 * @retval NITF_NULL_HANDLE the handle is null
 * @retval ERROR_NO_STORAGE the bitmap is null or has no pixels
 * @retval NITF_TOO_MANY_SEGMENTS the file already has 999 images
 * @retval ERROR_BITS_PER_PIXEL `bits` is neither 8 nor 24
 * @retval ERROR_QUALITY `quality` is out of range
 * @retval ERROR_FILE_FORMAT `format` is another one
 * @retval ERROR_BITMAP_SIZE the bitmap is too wide or too high
 * @retval ERROR_NO_MEMORY out of memory
 * @retval ERROR_INVALID_VALUE the stream has 2 GiB or more
 * @retval SUCCESS
 */
KSNTFX_API int32_t K_NITFAppendImageSegment(NitfHandle handle, const KsBitmap *bitmap, uint32_t format, uint32_t bits,
                                            uint32_t quality);

/**
 * Appends a drawing, encoded as a CGM metafile and fitted to a rectangle of the canvas, in pixels, which becomes its
 * bounds. The caller keeps ownership of the drawing, but it is modified: the rectangle becomes its viewport and the
 * bounds of its objects its window, and a drawing that extends above the x axis is moved to end one unit below it.
 *
 * The first of these that applies is returned:
 * @retval NITF_NULL_HANDLE the handle or the rectangle is null
 * @retval NITF_TOO_MANY_SEGMENTS the file already has 999 graphics
 * @retval NITF_NULL_DATA the drawing is null
 * @retval NITF_EMPTY_DRAWING the drawing has no objects
 * @retval ERROR_INVALID_VALUE the drawing extends beyond 99999 to the right, the top or the bottom (y downwards), or
 *         the metafile exceeds 999999 bytes
 * @retval ERROR_NO_MEMORY out of memory
 * @return otherwise SUCCESS, or an error of KsVectorSaveMemory
 */
KSNTFX_API int32_t K_NITFAppendGraphicSegment(NitfHandle handle, KsVector *vector, const KsRect *rectangle);

/**
 * Appends a text: the bytes of a file, unchanged. `path` is zero-terminated UTF-16.
 *
 * @retval SUCCESS
 * @retval NITF_NULL_HANDLE the handle is null
 * @retval NITF_TOO_MANY_SEGMENTS the file already has 999 texts
 * @retval NITF_NO_TEXT_FILE the path is null, or the text file can't be opened
 * @retval ERROR_INVALID_VALUE the text exceeds 99999 bytes
 * @retval ERROR_NO_MEMORY out of memory
 */
KSNTFX_API int32_t K_NITFAppendTextSegment(NitfHandle handle, const char16_t *path);
/** K_NITFAppendTextSegment with a path in UTF-8. A path that isn't UTF-8: ERROR_NO_MEMORY. */
KSNTFX_API int32_t K_NITFAppendTextSegmentA(NitfHandle handle, const char *path);

/* ---- drawings ---------------------------------------------------------------------------------------------------- */

/**
 * Returns the drawing of a graphic. Each call reads it again from the opened file, so a drawing that was set or
 * appended is not returned. The drawing belongs to the handle, and is valid until the next Get or Set for the same
 * graphic.
 *
 * Returns null if the handle is null, there is no graphic with that index, or the drawing can't be read.
 */
KSNTFX_API KsVector *K_NITFGetVectorHandle(NitfHandle handle, uint32_t index);

/**
 * Replaces the drawing of a graphic; a save writes it as a CGM metafile. The handle keeps a copy. The drawing is
 * written unchanged, neither moved nor fitted to the bounds, and the fields of the subheader are kept. After an error,
 * the graphic is unchanged.
 *
 * The first of these that applies is returned:
 * @retval NITF_NULL_HANDLE the handle is null
 * @retval ERROR_INVALID_VALUE there is no graphic with that index, or the metafile exceeds 999999 bytes
 * @retval NITF_NULL_DATA the drawing is null
 * @retval NITF_EMPTY_DRAWING the drawing has no objects
 * @retval ERROR_NO_MEMORY out of memory
 * @return otherwise SUCCESS, or an error of KsVectorSaveMemory
 */
KSNTFX_API int32_t K_NITFSetVectorHandle(NitfHandle handle, uint32_t index, const KsVector *vector);

#ifdef __cplusplus
}
#endif

#endif
