/**
 * @file
 * Writes samples as a TIFF file, strip by strip, with memory for one strip. Usable from C11 and C++.
 *
 * A file is opened with its shape, which decides everything in its directory. Strips may be written in any order, each
 * of them once. Files that might exceed 4 GiB are BigTIFF. Numbers are in the machine's byte order.
 *
 * Threads: different files may be written by different threads at the same time, one file by one thread at a time.
 */
#ifndef KSTIFF_H
#define KSTIFF_H

#include "kskernel.h"

#ifdef __cplusplus
extern "C" {
#endif

/** What the bits of a sample are: values of KsTiffShape::sampleFormat. */
enum KsTiffSampleFormat {
  KS_TIFF_UNSIGNED = 1, /**< 8, 16, 32 or 64 bits */
  KS_TIFF_SIGNED = 2,   /**< 8, 16, 32 or 64 bits, two's complement */
  KS_TIFF_REAL = 3,     /**< IEEE 754, 32 or 64 bits */
  KS_TIFF_COMPLEX = 6   /**< the real part, then the imaginary one; 64 or 128 bits together */
};

/** How a viewer shows the samples: values of KsTiffShape::colors. */
enum KsTiffColors {
  KS_TIFF_GRAY = 0,   /**< the first sample of a pixel is a gray, 0 is black */
  KS_TIFF_RGB = 1,    /**< the first three samples are red, green and blue */
  KS_TIFF_PALETTE = 2 /**< one unsigned sample of 8 bits is an index into the palette */
};

/** How samples are stored: values of KsTiffShape::compression. */
enum KsTiffCompression { KS_TIFF_UNCOMPRESSED = 0, KS_TIFF_DEFLATE = 1 };

/** The shape of a file. */
typedef struct KsTiffShape {
  uint64_t rows;         /**< 1 to 4294967295 */
  uint64_t columns;      /**< 1 to 4294967295 */
  uint32_t samples;      /**< of a pixel, 1 to 65535 */
  uint32_t bits;         /**< of a sample */
  uint32_t sampleFormat; /**< KsTiffSampleFormat */
  uint32_t isSeparate; /**< 1: each sample of a pixel has a plane of its own; 0: the samples of a pixel are together */
  uint64_t rowsPerStrip;      /**< 1 and more */
  uint32_t colors;            /**< KsTiffColors */
  uint32_t compression;       /**< KsTiffCompression */
  const uint32_t *colorTable; /**< 0xRRGGBB of the 256 colours of the palette; null without one */
  const char *description;    /**< ImageDescription, ASCII; null for none */
} KsTiffShape;

/** Where the bytes of a file go. */
typedef struct KsTiffTarget {
  /**
   * Writes `bytes` bytes at `offset` of the file, over what is there. `offset` is at most the size of the file so far.
   * Returns their number; any other number is an error, after which nothing more is written.
   */
  int64_t (*write)(void *user, uint64_t offset, const void *buffer, uint64_t bytes);
  void *user; /**< the first argument of `write` */
} KsTiffTarget;

/** A file that is being written. */
typedef struct KsTiff KsTiff;

/**
 * Starts a file.
 *
 * @param target is copied; what it writes to must stay until KsTiffClose.
 * @param shape  is copied, with its palette and description.
 * @param file   is set to the file, for KsTiffClose; null after a failure.
 *
 * @retval SUCCESS
 * @retval ERROR_INVALID_VALUE a null argument, or a value out of its range
 * @retval ERROR_NOT_SUPPORTED a build without libtiff, or whose libtiff has no Deflate
 * @retval ERROR_FILE_WRITE the target failed
 * @retval ERROR_NO_MEMORY out of memory
 */
KS_API int32_t KsTiffOpen(const KsTiffTarget *target, const KsTiffShape *shape, KsTiff **file);

/**
 * Writes a strip: `rowsPerStrip` rows, or fewer at the lower end of the picture.
 *
 * @param plane   the sample of a pixel, from 0, if planes are separate; otherwise 0
 * @param strip   number of the strip in its plane, from 0 at the top
 * @param samples the rows of the strip without gaps, pixel by pixel
 *
 * @retval SUCCESS
 * @retval ERROR_INVALID_VALUE a null argument, or there is no such strip
 * @retval ERROR_FILE_WRITE the target failed
 * @retval ERROR_NO_MEMORY out of memory
 */
KS_API int32_t KsTiffWriteStrip(KsTiff *file, uint32_t plane, uint64_t strip, const void *samples);

/**
 * Writes the directory, without which the file can't be read. The file must still be closed.
 *
 * @retval SUCCESS
 * @retval ERROR_INVALID_VALUE a null argument, or a second call
 * @retval ERROR_FILE_WRITE the target failed, now or before
 */
KS_API int32_t KsTiffFinish(KsTiff *file);

/** Releases a file, which is left as it is. Nothing is written. Null is ignored. */
KS_API void KsTiffClose(KsTiff *file);

#ifdef __cplusplus
}
#endif

#endif
