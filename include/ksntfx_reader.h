/**
 * @file
 * The wide reader of libksntfx: opens NITF 02.00 and 02.10 and NSIF 01.00 files of any compliance level, reads samples
 * of any type as they are stored, and draws images and whole compositions. Usable from C11 and C++.
 *
 * It accepts everything that the interfaces of ksntfx.h refuse but a reader can make sense of, and describes each such
 * value in a note. Functions return a signed 32-bit status: SUCCESS (1) or an error of KsStatus or NitfStatus.
 * NitfReaderProblem returns the last error in words.
 *
 * Rows and columns count from 0 at the upper left corner. A reader must not be used by two threads at the same time;
 * different readers of the same file may.
 */
#ifndef KSNTFX_READER_H
#define KSNTFX_READER_H

#include "ksntfx.h"

#ifdef __cplusplus
extern "C" {
#endif

/** An open file. Opaque. */
typedef struct NitfReader NitfReader;

/** The kinds of segments, in the order of the file. */
enum NitfSegmentKind {
  NITF_SEGMENT_IMAGE = 0,
  NITF_SEGMENT_GRAPHIC = 1, /**< symbols, in a file of version 02.00 */
  NITF_SEGMENT_LABEL = 2,   /**< version 02.00 only */
  NITF_SEGMENT_TEXT = 3,
  NITF_SEGMENT_DATA_EXTENSION = 4,
  NITF_SEGMENT_FILE = 5 /**< the file header: for fields and notes */
};

/** The types of samples in memory, in the machine's byte order. */
enum NitfSampleType {
  NITF_SAMPLE_UINT8 = 0,
  NITF_SAMPLE_UINT16 = 1,
  NITF_SAMPLE_UINT32 = 2,
  NITF_SAMPLE_UINT64 = 3,
  NITF_SAMPLE_INT8 = 4,
  NITF_SAMPLE_INT16 = 5,
  NITF_SAMPLE_INT32 = 6,
  NITF_SAMPLE_INT64 = 7,
  NITF_SAMPLE_FLOAT32 = 8,
  NITF_SAMPLE_FLOAT64 = 9,
  NITF_SAMPLE_COMPLEX64 = 10 /**< two 32-bit numbers: the real part, then the imaginary one */
};

/* ---- opening ----------------------------------------------------------------------------------------------------- */

/**
 * Opens a file and reads all of its headers.
 *
 * @param path UTF-8, or on Linux any name
 * @param reader receives the reader, which the caller releases with NitfReaderClose; also after an error, for
 * NitfReaderProblem. Null only if out of memory.
 * @retval SUCCESS
 * @retval ERROR_NO_FILE the file doesn't exist or can't be opened
 * @retval ERROR_FILE_FORMAT not a NITF file
 * @retval ERROR_FILE_READ the file ends within its header
 * @retval NITF_UNSUPPORTED_VERSION a version before 02.00
 * @retval ERROR_NO_MEMORY out of memory
 * @retval ERROR_INVALID_VALUE null argument
 */
KSNTFX_API int32_t NitfReaderOpen(const char *path, NitfReader **reader);

/** As NitfReaderOpen; `path` is UTF-16. */
KSNTFX_API int32_t NitfReaderOpenUtf16(const char16_t *path, NitfReader **reader);

/** As NitfReaderOpen, for `size` bytes of memory, which must stay unchanged until NitfReaderClose. */
KSNTFX_API int32_t NitfReaderOpenMemory(const void *bytes, uint64_t size, NitfReader **reader);

/** Closes a file. Null is ignored. */
KSNTFX_API void NitfReaderClose(NitfReader *reader);

/** Returns the last error in words, with segment, field and value where there are any. Empty if there was none. */
KSNTFX_API const char *NitfReaderProblem(const NitfReader *reader);

/** Bits of `options` of NitfReaderSetOptions. */
enum NitfReaderOptions {
  /**
   * Read samples that are cut off or absent as 0, and draw what can be drawn: a segment that can't be decoded becomes a
   * note, not an error.
   */
  NITF_READER_KEEP_GOING = 1
};

/** Sets the options for all later calls; 0 is the default. */
KSNTFX_API void NitfReaderSetOptions(NitfReader *reader, uint32_t options);

/* ---- headers ----------------------------------------------------------------------------------------------------- */

/** Returns the number of segments of a kind (NitfSegmentKind). */
KSNTFX_API uint32_t NitfReaderCount(const NitfReader *reader, uint32_t kind);

/** Something about a file: a value that the format doesn't allow, or a segment that is cut off. */
typedef struct NitfNote {
  uint32_t kind;     /**< NitfSegmentKind */
  uint32_t index;    /**< of the segment among those of its kind */
  const char *field; /**< the standard's name of the field, such as "CLEVEL"; empty for the whole segment */
  const char *value; /**< what it holds */
  uint64_t offset;   /**< of the field, or of the segment's subheader or data, in the file */
  int32_t status;    /**< what the interfaces of ksntfx.h return for it */
  const char *text;  /**< the note in words */
} NitfNote;

/** Returns the number of notes, which grows as segments are drawn. */
KSNTFX_API uint32_t NitfReaderNoteCount(const NitfReader *reader);

/** Describes a note. Its texts are valid until the next call with this reader. ERROR_INVALID_VALUE if there is none. */
KSNTFX_API int32_t NitfReaderGetNote(NitfReader *reader, uint32_t index, NitfNote *note);

/** Receives one field of a header. `value` has `bytes` bytes and no terminator. Returns SUCCESS to continue. */
typedef int32_t (*NitfFieldCallback)(const char *name, const char *value, uint64_t bytes, void *userData);

/**
 * Lists the fields of a header in file order, with the standard's names.
 *
 * @param kind NitfSegmentKind; NITF_SEGMENT_FILE for the file header, with `index` 0
 * @retval SUCCESS
 * @retval ERROR_INVALID_VALUE there is no such segment, or null callback
 * @retval ERROR_FILE_READ the subheader is cut off
 * @return otherwise what the callback returned
 */
KSNTFX_API int32_t NitfReaderListFields(NitfReader *reader, uint32_t kind, uint32_t index, NitfFieldCallback callback,
                                        void *userData);

/**
 * Copies one field, zero-terminated, to `value`, at most `capacity` bytes with the terminator.
 *
 * @retval SUCCESS
 * @retval ERROR_INVALID_VALUE there is no such segment or field, or the field doesn't fit
 */
KSNTFX_API int32_t NitfReaderGetField(NitfReader *reader, uint32_t kind, uint32_t index, const char *name, char *value,
                                      uint64_t capacity);

/** Where a segment is in the file, in bytes. */
typedef struct NitfPlace {
  uint64_t subheader;      /**< position of the subheader */
  uint64_t subheaderBytes; /**< its length, as the file header declares it */
  uint64_t data;           /**< position of the data */
  uint64_t dataBytes;      /**< their length, as the file header declares it */
} NitfPlace;

/** Returns the place of a segment. ERROR_INVALID_VALUE if there is no such segment. */
KSNTFX_API int32_t NitfReaderGetPlace(const NitfReader *reader, uint32_t kind, uint32_t index, NitfPlace *place);

/**
 * Reads the data of a segment of any kind as they are: the text of a text, the metafile of a graphic, the bytes of an
 * image.
 *
 * @param offset of the first byte to read in the data
 * @param buffer receives `bytes` bytes
 * @retval SUCCESS
 * @retval ERROR_INVALID_VALUE there is no such segment, or its declared data end before `offset` + `bytes`
 * @retval ERROR_FILE_READ the file ends before that
 */
KSNTFX_API int32_t NitfReaderReadData(NitfReader *reader, uint32_t kind, uint32_t index, uint64_t offset, void *buffer,
                                      uint64_t bytes);

/* ---- samples ----------------------------------------------------------------------------------------------------- */

/** The shape of an image. */
typedef struct NitfImageShape {
  uint64_t rows;            /**< NROWS */
  uint64_t columns;         /**< NCOLS */
  uint32_t bands;           /**< NBANDS or XBANDS */
  uint32_t sampleType;      /**< NitfSampleType of samples in memory */
  uint32_t sampleBytes;     /**< bytes of one */
  uint32_t bits;            /**< bits of a sample: NBPP, or those of the compressed stream */
  uint32_t actualBits;      /**< ABPP */
  uint32_t blockRows;       /**< rows of a block */
  uint32_t blockColumns;    /**< columns of a block */
  char compression[3];      /**< IC */
  char representation[9];   /**< IREP */
  char mode[2];             /**< IMODE */
  uint32_t displayLevel;    /**< IDLVL */
  uint32_t attachmentLevel; /**< IALVL */
  int32_t locationRow;      /**< ILOC, relative to the segment that this one is attached to */
  int32_t locationColumn;
} NitfImageShape;

/** A band of an image. */
typedef struct NitfBand {
  char representation[3]; /**< IREPBAND */
  char subcategory[7];    /**< ISUBCAT */
  uint32_t tableColumns;  /**< NLUTS: lookup tables of the band */
  uint32_t tableEntries;  /**< NELUT */
} NitfBand;

/**
 * Describes image `image`. This opens its data, so it may be an error of them.
 *
 * @retval SUCCESS
 * @retval ERROR_INVALID_VALUE there is no such image, or null shape
 * @retval ERROR_NOT_SUPPORTED a compression, or samples, that can't be read
 * @retval ERROR_FILE_READ the subheader or the data are cut off
 * @retval ERROR_FILE_FORMAT the subheader or the data are damaged
 * @retval ERROR_NO_MEMORY out of memory
 */
KSNTFX_API int32_t NitfReaderGetImage(NitfReader *reader, uint32_t image, NitfImageShape *shape);

/** Describes a band. ERROR_INVALID_VALUE if there is no such image or band. */
KSNTFX_API int32_t NitfReaderGetBand(NitfReader *reader, uint32_t image, uint32_t band, NitfBand *description);

/**
 * Copies the lookup table of a band: the colour of each sample value, gray if the band has one table instead of three.
 *
 * @param red receives `capacity` entries, of which those beyond the table are 0; likewise `green` and `blue`
 * @retval SUCCESS
 * @retval ERROR_INVALID_VALUE there is no such image or band, the band has no table, or a null argument
 * @retval ERROR_NOT_SUPPORTED the table isn't kept: it has two or more than three columns, or a later band has one too
 */
KSNTFX_API int32_t NitfReaderGetTable(NitfReader *reader, uint32_t image, uint32_t band, uint8_t *red, uint8_t *green,
                                      uint8_t *blue, uint64_t capacity);

/** A rectangle of pixels. */
typedef struct NitfWindow {
  uint64_t firstRow;
  uint64_t firstColumn;
  uint64_t rows;
  uint64_t columns;
} NitfWindow;

/**
 * Where samples are stored: that of row r and column c of the window, of the band at place k of the list, is at
 * `samples` + r * `rowStep` + c * `columnStep` + k * `bandStep`. Steps are in bytes. No alignment is required.
 */
typedef struct NitfSampleTarget {
  void *samples;
  int64_t rowStep;
  int64_t columnStep;
  int64_t bandStep;
} NitfSampleTarget;

/**
 * Reads samples of an image as they are stored, in the type of NitfImageShape::sampleType. Nothing is scaled, whatever
 * ABPP and PJUST are. JPEG streams in YCbCr become red, green and blue. Blocks that aren't recorded have the pad value
 * of the mask table, or 0.
 *
 * @param window the rectangle to read, or null for the whole image
 * @param bands the numbers of the bands to read, in the order of the result; null for all
 * @param bandCount length of `bands`; ignored if that is null
 * @param target has room for all samples, which are undefined after an error
 * @retval SUCCESS
 * @retval ERROR_INVALID_VALUE there is no such image or band, the window isn't within the image, or null target
 * @return otherwise an error of NitfReaderGetImage
 */
KSNTFX_API int32_t NitfReaderReadSamples(NitfReader *reader, uint32_t image, const NitfWindow *window,
                                         const uint32_t *bands, uint32_t bandCount, const NitfSampleTarget *target);

/* ---- pictures ---------------------------------------------------------------------------------------------------- */

/** How samples of more than 8 bits become the 8 bits of a screen: values of NitfShowOptions::stretch. */
enum NitfStretch {
  NITF_STRETCH_PERCENT = 0, /**< from percentile `low` to percentile `high`, which are 2 and 98 by default */
  NITF_STRETCH_MINMAX = 1,  /**< from the least to the greatest */
  NITF_STRETCH_NONE = 2     /**< the high 8 of ABPP bits; of real numbers, 0 to 255 as they are */
};

/** How an image is shown. Cleared, it has the defaults. */
typedef struct NitfShowOptions {
  uint32_t stretch;      /**< NitfStretch; samples of up to 8 bits are stretched only if `stretchesAll` */
  uint32_t stretchesAll; /**< 1: also samples of 8 bits and fewer */
  double low;            /**< percentile, 0 to 100; with `high` 0, 2 */
  double high;           /**< percentile, above `low`, up to 100; 0: 98 */
  uint32_t hasBands;     /**< 1: show `bands` as red, green and blue; 0: choose by IREPBAND */
  uint32_t bands[3];     /**< numbers of bands; the same one three times is a gray */
} NitfShowOptions;

/**
 * Draws a window of an image as it is shown: lookup tables applied, YCbCr converted, samples of more than 8 bits
 * stretched, complex numbers by their magnitude. The stretch is that of the whole image.
 *
 * @param options null for the defaults
 * @param window null for the whole image
 * @param pixels receives red, green, blue and opacity, one byte each; the opacity is 0 where a pixel is a pad pixel or
 * isn't recorded, otherwise 255
 * @param rowStep bytes from one row to the next, at least four times the columns
 * @return a status of NitfReaderReadSamples
 */
KSNTFX_API int32_t NitfReaderShowImage(NitfReader *reader, uint32_t image, const NitfShowOptions *options,
                                       const NitfWindow *window, void *pixels, uint64_t rowStep);

/** Measures the canvas that all images, graphics and labels are composed on. */
KSNTFX_API int32_t NitfReaderGetCanvas(NitfReader *reader, uint64_t *rows, uint64_t *columns);

/** Receives rows of a composition, in order from the top. `pixels` has three bytes per pixel. SUCCESS to continue. */
typedef int32_t (*NitfRowsCallback)(const uint8_t *pixels, uint64_t firstRow, uint64_t rows, uint64_t columns,
                                    void *userData);

/**
 * Composes all images, graphics and labels by display level and attachment.
 *
 * @param options how images are shown; null for the defaults
 * @param background 0xRRGGBB of pixels that nothing covers
 * @param callback receives the rows
 * @retval SUCCESS
 * @retval ERROR_NO_MEMORY the canvas is too large
 * @return otherwise an error of the segment that can't be drawn, or what the callback returned
 */
KSNTFX_API int32_t NitfReaderCompose(NitfReader *reader, const NitfShowOptions *options, uint32_t background,
                                     NitfRowsCallback callback, void *userData);

#ifdef __cplusplus
}
#endif

#endif
