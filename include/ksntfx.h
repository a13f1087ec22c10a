/**
 * @file
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

/** Marks what the library shows. */
#if defined(_WIN32)
#if defined(KSNTFX_BUILD)
#define KSNTFX_API __declspec(dllexport)
#else
#define KSNTFX_API __declspec(dllimport)
#endif
#else
#define KSNTFX_API __attribute__((visibility("default")))
#endif

/** The version of the library that this header belongs to, as a text, and behind it in numbers for `#if`. */
#define KSNTFX_VERSION "0.9.0"
#define KSNTFX_VERSION_MAJOR 0 /**< the first number of KSNTFX_VERSION */
#define KSNTFX_VERSION_MINOR 9 /**< the second */
#define KSNTFX_VERSION_PATCH 0 /**< the third */

#ifdef __cplusplus
extern "C" {
#endif

/** Results that are the format's own; the others are those of KsStatus. */
enum NitfStatus {
  NITF_NO_HANDLE = 0,                /**< a null NitfHandle, from the functions on headers */
  NITF_TOO_MANY_SEGMENTS = 0,        /**< there are 999 segments of the kind already */
  NITF_OUT_OF_RANGE = 87,            /**< no segment of that index, or a null record; neither SUCCESS nor negative */
  NITF_NO_TEXT_FILE = -14,           /**< a text file that can't be opened */
  NITF_NULL_HANDLE = -261,           /**< a null NitfHandle, from all others; a null rectangle */
  NITF_EMPTY_DRAWING = -501,         /**< a drawing that holds nothing */
  NITF_NULL_DATA = -814,             /**< a null drawing or null data */
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
enum NitfRowFlags {
  NITF_ROW_VALID = 3, /**< the row holds pixels */
  NITF_ROW_FIRST = 4, /**< it is row 0 */
  NITF_ROW_LAST = 8   /**< it is the last one */
};

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
 * Receives one row of the composed picture. `row` holds the pixels in the canvas's own format and lives until the
 * callback returns; `rowIndex` counts from 0 at the top, `rowCount` is always 1. SUCCESS goes on to the next row; any
 * other result ends the load and becomes its result.
 */
typedef int32_t (*NitfRowCallback)(uint64_t rowContext, KsBitmap *canvas, void *row, uint32_t rowFlags,
                                   uint32_t rowIndex, uint32_t rowCount, uint64_t rowUserData);

/** Decodes a compressed stream, as KsLoadMemory does. */
typedef int32_t (*NitfLoadFromMemory)(const void *buffer, KsBitmap *bitmap, uint32_t bitmapSize, int32_t bits,
                                      int32_t order, uint64_t size, const KsLoadOptions *options, void *reserved);
/** Sets who answers for streams without a header, as KsSetRedirect does. */
typedef KsRedirectCallback (*NitfSetRedirect)(KsRedirectCallback callback, void *userData);

#pragma pack(push, 1)

/** What fltInfo is asked. Byte-packed; members not named are the framework's own and not looked at. */
typedef struct FilterInfoRecord {
  const char16_t *fileName; /**< 0: UTF-16, zero-terminated */
  uint8_t reserved8[4];
  KsHandle inputHandle; /**< 12: a handle that the caller has open on the file, or KS_INVALID_HANDLE; put back to 0 */
  KsFileInfo *fileInfo; /**< 20: receives the answer */
  uint8_t reserved28[28];
  KsLoadOptions *loadOptions; /**< 56: 0x80000001 is or-ed into its flags */
} FilterInfoRecord;

/** The depth of the canvas that fltLoad is to make. */
typedef struct FilterTargetInfo {
  uint8_t reserved0[28];
  uint32_t bitsPerPixel; /**< 28: 8, 24 or 32 */
} FilterTargetInfo;

/** What fltLoad is asked. Byte-packed; members not named are the framework's own and not looked at. */
typedef struct FilterLoadRecord {
  const char16_t *fileName;           /**< 0: UTF-16, zero-terminated */
  const FilterTargetInfo *targetInfo; /**< 8: the depth of the canvas */
  uint8_t reserved16[4];
  NitfRowCallback rowCallback; /**< 20: takes the rows; not null unless skipRows is set */
  uint64_t rowUserData;        /**< 28: the callback's last argument */
  uint8_t reserved36[36];
  uint64_t rowContext; /**< 72: the callback's first argument */
  uint8_t reserved80[1920];
  KsLoadOptions *loadOptions; /**< 2000: 0x80000001 is or-ed into its flags */
  uint8_t reserved2008[48];
  NitfLoadFromMemory loadFromMemory; /**< 2056: decodes compressed streams; not null (KsLoadMemory will do) */
  NitfSetRedirect setRedirect;       /**< 2064: not null (KsSetRedirect will do) */
  uint8_t reserved2072[48];
  void (*requiredEntry)(void); /**< 2120: not null, never called */
  uint8_t reserved2128[232];
  uint64_t skipRows; /**< 2360: when not 0 the file is composed and no row is delivered */
} FilterLoadRecord;

#pragma pack(pop)

/* ---- filter ------------------------------------------------------------------------------------------------------ */

/**
 * Tells how large the picture of a file is: fills formatId, width, height, bitsPerPixel (always 24), imageBytes and the
 * two page members of request->fileInfo. Reads headers only, and the drawings that decide the size. SUCCESS, or what
 * a load fails with: ERROR_FILE_READ (also for a file that can't be opened), ERROR_FILE_FORMAT, ERROR_NO_MEMORY, one of
 * NitfStatus. `request` and what it points to stay the caller's.
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

/**
 * The size of a loaded file's canvas in pixels. `width` and `height` are set on SUCCESS. ERROR_NO_MEMORY, and what a
 * drawing that decides on it fails with.
 */
KSNTFX_API int32_t GetActual_Width_Height(NitfFile *file, uint32_t *width, uint32_t *height);

/**
 * Draws images, graphics and labels on `canvas` from the lowest display level (IDLVL, SDLVL) to the highest.
 * `loadContext` is the request of fltLoad, or null for the framework's own codecs; `deviceContext` is a context on
 * `canvas`, needed by graphics, labels and images with a pad value (TPXCD), else null. The first failure ends the
 * drawing.
 */
KSNTFX_API int32_t K_NitfDrawObjects(FilterLoadRecord *loadContext, KsDeviceContext *deviceContext, KsBitmap *canvas,
                                     NitfFile *file);

/**
 * Makes `bitmap`, which was initialised, a new 24-bit canvas with the picture of a loaded file; the caller frees it
 * with KsBitmapFree. ERROR_INVALID_VALUE for null, ERROR_NO_MEMORY for a canvas above the bitmap limit, the first
 * failure of a segment. It is empty after a failure.
 */
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
/** The same with a name in UTF-8. */
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
/** The same with a name in UTF-8; ERROR_NO_MEMORY also for one that is none. */
KSNTFX_API int32_t K_NITFSaveFileA(NitfHandle handle, const char *name);

/* ---- header records -----------------------------------------------------------------------------------------------
 *
 * What the Get functions fill and the Set functions store: fields under the names that the standard gives them
 * (MIL-STD-2500C, tables ). Byte-packed: no gap between members.
 *
 * A text member is zero-terminated. One that Get filled belongs to the record until the matching Free; one that a
 * caller fills for a Set stays the caller's, and such a record is not to be given to Free. Where a Set finds a null
 * text it leaves the field as it is. The number behind a text is the most characters that it may have; a file may keep
 * fewer of them. Numbers say how many digits their field has; one with more is stored as zeros. Dates are groups of two
 * characters, century first, and have no terminator.
 *
 * A data member (UDID, IXSHD and their kin) holds 3 bytes less than the length member in front of it says. In a Set
 * with another length and a null pointer the data that are held are cut, or go on in zeros.
 */

#pragma pack(push, 1)

/** The file header (MIL-STD-2500C, table A-1). Get doesn't fill what is marked "set only"; Set stores it all the same.
 */
typedef struct NitfHeaderInfo {
  char *FHDR;        /**< 4 */
  uint32_t CLEVEL;   /**< 1 to 7, or 99; others are not stored */
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
  uint32_t NUMI;     /**< images; a Set passes over a count above that of the segments, and its two tables */
  uint32_t *LISH;    /**< NUMI lengths of subheaders, in bytes */
  uint32_t *LI;      /**< NUMI lengths of data */
  uint32_t NUMS;     /**< graphics, likewise */
  uint32_t *LSSH;    /**< NUMS */
  uint32_t *LS;      /**< NUMS */
  uint32_t NUMX;     /**< 3 digits; set only */
  uint32_t NUMT;     /**< texts, likewise */
  uint32_t *LTSH;    /**< NUMT */
  uint32_t *LT;      /**< NUMT */
  uint32_t NUMDES;   /**< data extensions, likewise; set only */
  uint32_t *LDSH;    /**< NUMDES; set only */
  uint32_t *LD;      /**< NUMDES; set only */
  uint32_t NUMRES;   /**< reserved extensions, likewise; set only */
  uint32_t *LRESH;   /**< NUMRES; set only */
  uint32_t *LRE;     /**< NUMRES; set only */
  uint32_t UDHDL;    /**< 5 digits; 0 is without user data, else 3 and the bytes of UDHD; set only */
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
  float FVER;        /**< two decimals: 2.1 is 02.10; what takes more than five characters is not stored */
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
  char *ICORDS;       /**< 1: blank where there is no IGEOLO */
  char *IGEOLO;       /**< 60 */
  uint32_t NICOM;     /**< 1 digit, not above the comments that the image has */
  char **ICOM;        /**< NICOM texts of 80 */
  char *IC;           /**< 2: one of the compressions */
  char *COMRAT;       /**< 4 */
  uint32_t NBANDS;    /**< 1 digit, 0 where XBANDS counts; a Set makes the band group anew */
  uint32_t XBANDS;    /**< 5 digits; counts from the next Set on */
  char **IREPBAND;    /**< neither filled nor stored, as the three behind it; Free releases NBANDS texts of each */
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
  uint32_t UDIDL;     /**< 5 digits; 0 is without user data, else 3 and the bytes of UDID */
  uint32_t UDOFL;     /**< 3 digits */
  char *UDID;         /**< UDIDL - 3 bytes and a zero */
  uint32_t IXSHDL;    /**< 5 digits, as UDIDL for IXSHD */
  uint32_t IXSOFL;    /**< 3 digits */
  uint8_t *IXSHD;     /**< Get gives IXSHDL bytes, zero behind the data */
  uint32_t IMDATOFF;  /**< bytes */
  uint16_t BMRLNTH;   /**< bytes */
  uint16_t TMRLNTH;   /**< bytes */
  uint16_t TPXCDLNTH; /**< bits */
  uint8_t *TPXCD;     /**< (TPXCDLNTH + 7) / 8 bytes; Get gives TPXCDLNTH bytes, zero behind them */
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
  uint32_t SSTRUCT;      /**< 13 digits, of which those of 32 bits go through here */
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
  uint32_t SXSHDL;       /**< 5 digits; 0 is without data, else 3 and the bytes of SXSHD */
  uint32_t SXSOFL;       /**< 3 digits */
  uint8_t *SXSHD;        /**< Get gives SXSHDL bytes, zero behind the data */
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
  uint32_t TXSHDL;   /**< 5 digits; 0 is without data, else 3 and the bytes of TXSHD */
  uint32_t TXSOFL;   /**< 3 digits */
  uint8_t *TXSHD;    /**< Get gives TXSHDL - 3 bytes */
} NitfTextHeaderInfo;

#pragma pack(pop)

/**
 * Fills a record, which was cleared, with the file header, but for the members that are marked "set only". SUCCESS;
 * NITF_NO_HANDLE for a null handle, NITF_OUT_OF_RANGE for a null record.
 */
KSNTFX_API int32_t K_NITFGetNITFHeader(NitfHandle handle, NitfHeaderInfo *record);
/**
 * Stores every member and passes over what a field doesn't take; nothing is checked against the segments. SUCCESS;
 * NITF_NO_HANDLE for a null handle, NITF_OUT_OF_RANGE for a null record.
 */
KSNTFX_API int32_t K_NITFSetNITFHeader(NitfHandle handle, const NitfHeaderInfo *record);
/** Releases what Get allocated and sets the pointers to null; may be called twice, and for a null record. SUCCESS. */
KSNTFX_API int32_t K_NITFFreeNITFHeader(NitfHeaderInfo *record);

/** The images; 0 for a null handle. */
KSNTFX_API int32_t K_NITFGetImageHeaderCount(NitfHandle handle);
/**
 * The subheader of an image, for a record that was cleared. SUCCESS; NITF_NO_HANDLE; NITF_OUT_OF_RANGE for an index
 * that is not below the number of images; ERROR_INVALID_VALUE for a null record.
 */
KSNTFX_API int32_t K_NITFGetImageHeader(NitfHandle handle, uint32_t index, NitfImageHeaderInfo *record);
/**
 * Stores all members in turn, and stops at the first that a field doesn't take (ERROR_INVALID_VALUE) or that there is
 * no memory for (ERROR_NO_MEMORY): what was stored before stands. A change of ICORDS or IC that makes the subheader
 * longer or shorter is carried into the file header; other lengths are the caller's to keep. SUCCESS, NITF_NO_HANDLE,
 * NITF_OUT_OF_RANGE also for a null record.
 */
KSNTFX_API int32_t K_NITFSetImageHeader(NitfHandle handle, uint32_t index, const NitfImageHeaderInfo *record);
/** As K_NITFFreeNITFHeader. */
KSNTFX_API int32_t K_NITFFreeImageHeader(NitfImageHeaderInfo *record);

/** The graphics; 0 for a null handle. */
KSNTFX_API int32_t K_NITFGetGraphicHeaderCount(NitfHandle handle);
/** As K_NITFGetImageHeader, with NITF_OUT_OF_RANGE also for a null record. */
KSNTFX_API int32_t K_NITFGetGraphicHeader(NitfHandle handle, uint32_t index, NitfGraphicHeaderInfo *record);
/** As K_NITFSetImageHeader; no lengths follow. */
KSNTFX_API int32_t K_NITFSetGraphicHeader(NitfHandle handle, uint32_t index, const NitfGraphicHeaderInfo *record);
/** As K_NITFFreeNITFHeader. */
KSNTFX_API int32_t K_NITFFreeGraphicHeader(NitfGraphicHeaderInfo *record);

/** The texts; 0 for a null handle. */
KSNTFX_API int32_t K_NITFGetTextHeaderCount(NitfHandle handle);
/** As K_NITFGetGraphicHeader. ERROR_NO_MEMORY where there is none for TXSHD. */
KSNTFX_API int32_t K_NITFGetTextHeader(NitfHandle handle, uint32_t index, NitfTextHeaderInfo *record);
/** As K_NITFSetImageHeader; no lengths follow. */
KSNTFX_API int32_t K_NITFSetTextHeader(NitfHandle handle, uint32_t index, const NitfTextHeaderInfo *record);
/** As K_NITFFreeNITFHeader. */
KSNTFX_API int32_t K_NITFFreeTextHeader(NitfTextHeaderInfo *record);

/**
 * A text, as its bytes, with a zero behind it. `size`, if not null, takes its length without the zero; `buffer`, if not
 * null, must hold one byte more. SUCCESS, NITF_NO_HANDLE, NITF_OUT_OF_RANGE, ERROR_FILE_READ for a text that the file
 * doesn't hold to its end.
 */
KSNTFX_API int32_t K_NITFGetTextSegment(NitfHandle handle, uint32_t index, char *buffer, uint32_t *size);

/* ---- appending ----------------------------------------------------------------------------------------------------
 *
 * Segments are added behind those of their kind, to a file that was opened as to one that was made. What is added is
 * encoded at once and stays in memory; K_NITFSaveFile writes it. The subheader gets fields that suit it, which the Set
 * functions change, and the lengths in the file header follow. An image or a graphic gets the display level above the
 * highest in the file; a graphic or a text is attached to the lowest. The date of an image or a text lies before FDT.
 *
 * On a failure the file is as it was. NITF_TOO_MANY_SEGMENTS (0) is one.
 */

/**
 * Adds an image: the bitmap, of whatever depth, as a JPEG stream in one block (IC C3). `format` is KS_FORMAT_JPEG
 * (IREP YCbCr601) or KS_FORMAT_JPEG_RGB (IREP RGB); `bits` is 24, or 8 for a gray (IREP MONO) in either; `quality` runs
 * from 2, the best, to 255. The bitmap is neither changed nor kept. In this order: NITF_NULL_HANDLE, ERROR_NO_STORAGE
 * also for a null bitmap, NITF_TOO_MANY_SEGMENTS, ERROR_BITS_PER_PIXEL, ERROR_QUALITY, ERROR_FILE_FORMAT for another
 * format, ERROR_BITMAP_SIZE; then what KsSaveMemory fails with, ERROR_NO_MEMORY, and ERROR_INVALID_VALUE for a stream
 * of 2 GiB.
 */
KSNTFX_API int32_t K_NITFAppendImageSegment(NitfHandle handle, const KsBitmap *bitmap, uint32_t format, uint32_t bits,
                                            uint32_t quality);

/**
 * Adds a drawing as a metafile, laid onto a rectangle of the canvas, in pixels, which becomes its bounds. The drawing
 * stays the caller's. It is changed: it gets the rectangle as its viewport and its objects' bounds as its window, and
 * one that reaches above the x axis is moved to end a unit below it. In this order: NITF_NULL_HANDLE also for a null
 * rectangle, NITF_TOO_MANY_SEGMENTS, NITF_NULL_DATA, NITF_EMPTY_DRAWING, ERROR_INVALID_VALUE for a drawing that reaches
 * beyond 99999 to the right, to the top or to the bottom, y downwards; then what KsVectorSaveMemory fails with,
 * ERROR_INVALID_VALUE for a metafile above 999999 bytes, ERROR_NO_MEMORY.
 */
KSNTFX_API int32_t K_NITFAppendGraphicSegment(NitfHandle handle, KsVector *vector, const KsRect *rectangle);

/**
 * Adds a text: the bytes of a file, as they are. `path` is UTF-16 (UTF-8 in the narrow form). NITF_NULL_HANDLE,
 * NITF_TOO_MANY_SEGMENTS, NITF_NO_TEXT_FILE also for a null path, ERROR_INVALID_VALUE above 99999 bytes,
 * ERROR_NO_MEMORY, which is also that of a narrow path that is no UTF-8.
 */
KSNTFX_API int32_t K_NITFAppendTextSegment(NitfHandle handle, const char16_t *path);
/** The same with a path in UTF-8. */
KSNTFX_API int32_t K_NITFAppendTextSegmentA(NitfHandle handle, const char *path);

/* ---- drawings ---------------------------------------------------------------------------------------------------- */

/**
 * The drawing of a graphic, read anew from the opened file at each call: what was set or added is not read back. It
 * belongs to the handle, and is good until the next Get or Set of the same graphic. Null for a null handle, an index
 * that is not below the number of graphics, and a drawing that can't be read.
 */
KSNTFX_API KsVector *K_NITFGetVectorHandle(NitfHandle handle, uint32_t index);

/**
 * Puts a drawing in the place of a graphic's data; a save writes it as a metafile. The handle keeps a copy. The
 * drawing is written as it stands, neither moved nor laid onto the bounds, and the subheader's fields stay. In this
 * order: NITF_NULL_HANDLE, ERROR_INVALID_VALUE for an index that is not below the number of graphics, NITF_NULL_DATA,
 * NITF_EMPTY_DRAWING; then what KsVectorSaveMemory fails with, ERROR_INVALID_VALUE for a metafile above 999999 bytes,
 * ERROR_NO_MEMORY. On a failure the graphic is as it was.
 */
KSNTFX_API int32_t K_NITFSetVectorHandle(NitfHandle handle, uint32_t index, const KsVector *vector);

#ifdef __cplusplus
}
#endif

#endif
