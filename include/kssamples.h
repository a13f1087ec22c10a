/**
 * @file
 * Raw samples of compressed pictures: any window of a JPEG or JPEG 2000 stream, at full or reduced resolution, with the
 * values that the stream holds. KsLoadMemory in kskernel.h decodes the same streams into bitmaps for display. Usable
 * from C11 and C++.
 *
 * A stream is opened once, which reads its headers, and read any number of times. Windows are independent of each
 * other: a window has the samples that the same part of the whole picture has, and only what the window needs is read
 * and decoded, as far as the format allows:
 *   - JPEG 2000: the tiles that the window touches, and within a tile the code blocks. A window of many tiles is
 * decoded a few tiles at a time, so that memory beside the result stays within some tiles. A stream of one tile is
 * decoded at once, with four bytes for each sample of the window.
 *   - JPEG: the rows above the window are skipped, and those below it are not read. A picture in several scans is held
 *     completely, with two bytes for each sample.
 *
 * Levels: at level n, the picture has 1/2^n of its rows and columns, rounded up. Levels are those of the stream:
 * resolutions of JPEG 2000, scaled transforms of JPEG. They may be fewer than a caller needs.
 *
 * Threads: different streams may be used by different threads at the same time, one stream by one thread at a time.
 */
#ifndef KSSAMPLES_H
#define KSSAMPLES_H

#include "kskernel.h"

#ifdef __cplusplus
extern "C" {
#endif

/** Where the bytes of a stream are. */
typedef struct KsSampleSource {
  /**
   * Reads `bytes` bytes of the stream at `offset`, which are within its size. Returns their number; any other number is
   * an error. It is called by the thread that opens or reads the stream.
   */
  int64_t (*read)(void *user, uint64_t offset, void *buffer, uint64_t bytes);
  void *user;    /**< the first argument of `read` */
  uint64_t size; /**< bytes of the stream; others may follow its end */
} KsSampleSource;

/** Bits of KsSamplesOptions::flags. */
enum KsSamplesFlags {
  /** JPEG: components as they are stored. Without it, YCbCr in three components becomes red, green and blue. */
  KS_SAMPLES_AS_STORED = 1,
  /** JPEG: three components are red, green and blue where nothing in the stream says which colours they are. */
  KS_SAMPLES_RGB_IF_UNSAID = 2,
  /** JP2: the channels that the palette produces are the components. Without it, indices are. */
  KS_SAMPLES_EXPAND_PALETTE = 4,
  /**
   * JPEG 2000: what is there of a stream that breaks off or lacks tiles is decoded; other samples are 0 or have less
   * detail. Without it, a window with such samples has the status ERROR_FILE_FORMAT. JPEG is always decoded as far as
   * it goes.
   */
  KS_SAMPLES_PARTIAL = 8
};

/** How a stream is read. */
typedef struct KsSamplesOptions {
  uint32_t flags;   /**< bits of KsSamplesFlags */
  uint32_t threads; /**< JPEG 2000: threads that decode a window; 0 and 1: the caller's alone */
} KsSamplesOptions;

/** What a stream says about its colours: values of KsSamplesInfo::color. */
enum KsSamplesColor {
  KS_SAMPLES_COLOR_UNSAID = 0, /**< nothing; three components of a JPEG stream are mostly YCbCr then */
  KS_SAMPLES_COLOR_RGB = 1,    /**< red, green, blue */
  KS_SAMPLES_COLOR_YCBCR = 2,  /**< luminance and chrominance, ITU-R BT.601 in full range */
  KS_SAMPLES_COLOR_GRAY = 3,   /**< grays */
  KS_SAMPLES_COLOR_CMYK = 4,   /**< four inks */
  KS_SAMPLES_COLOR_YCCK = 5,   /**< four inks, of which three are stored like YCbCr */
  KS_SAMPLES_COLOR_OTHER = 6   /**< a profile, or another number in `colorSpace` */
};

/** What the headers of a stream say. */
typedef struct KsSamplesInfo {
  uint32_t format;       /**< KsFormat */
  uint32_t rows;         /**< of the picture, 1 and more */
  uint32_t columns;      /**< of the picture, 1 and more */
  uint32_t components;   /**< 1 to 16384 */
  uint32_t levels;       /**< the greatest level that can be read: 0 if there is full resolution only */
  uint32_t tileRows;     /**< rows of a tile at full resolution; all of the picture without tiles */
  uint32_t tileColumns;  /**< columns of a tile, likewise */
  uint32_t tileTop;      /**< rows of the first tiles that are above the picture: mostly 0 */
  uint32_t tileLeft;     /**< columns of the first tiles that are left of the picture: mostly 0 */
  uint32_t color;        /**< KsSamplesColor, as stored */
  uint32_t isConverted;  /**< 1: samples are red, green and blue although `color` is another */
  uint32_t isMixed;      /**< 1: JPEG 2000 whose first three components are stored as mixtures, which are undone */
  uint32_t colorSpace;   /**< JP2: the enumerated colour space, such as 16 (sRGB), 17 (gray), 18 (sYCC); 0 for none */
  uint32_t paletteSize;  /**< JP2: colours of the palette, 0 without one */
  uint32_t paletteParts; /**< JP2: columns of the palette, 0 without one */
  uint32_t hasChannels;  /**< JP2: 1 if the channels are defined; see KsSamplesComponent */
} KsSamplesInfo;

/** A component of a stream. */
typedef struct KsSamplesComponent {
  uint32_t bits;        /**< of a sample, 1 to 38; those above 31 can't be read */
  uint32_t isSigned;    /**< 1: samples are from -2^(bits - 1) to 2^(bits - 1) - 1, otherwise from 0 to 2^bits - 1 */
  uint32_t rowStep;     /**< rows of the picture for one row of samples, 1 without subsampling */
  uint32_t columnStep;  /**< columns of the picture for one sample; of JPEG rounded down */
  uint32_t channelType; /**< JP2 with definitions: 0 colour, 1 opacity, 2 premultiplied opacity, 65535 unspecified */
  uint32_t channelOf;   /**< JP2 with definitions: 0 the whole picture, 1, 2, ... its colours in order, 65535 none */
} KsSamplesComponent;

/** A rectangle of pixels at a level, whose picture it must be within. */
typedef struct KsSamplesWindow {
  uint32_t firstRow;    /**< from 0, in the picture of the level */
  uint32_t firstColumn; /**< from 0, likewise */
  uint32_t rows;        /**< 1 and more */
  uint32_t columns;     /**< 1 and more */
  uint32_t level;       /**< 0 for full resolution, up to KsSamplesInfo::levels */
} KsSamplesWindow;

/** The type of a sample in memory, in the machine's byte order: values of KsSamplesTarget::container. */
enum KsSamplesContainer {
  KS_SAMPLES_U8 = 0,  /**< uint8_t */
  KS_SAMPLES_I8 = 1,  /**< int8_t */
  KS_SAMPLES_U16 = 2, /**< uint16_t */
  KS_SAMPLES_I16 = 3, /**< int16_t */
  KS_SAMPLES_U32 = 4, /**< uint32_t */
  KS_SAMPLES_I32 = 5, /**< int32_t */
  KS_SAMPLES_U64 = 6, /**< uint64_t */
  KS_SAMPLES_I64 = 7  /**< int64_t */
};

/**
 * Where samples are stored. The sample of row r and column c of the window, of the component at place k of the list, is
 * at `samples` + r * `rowStep` + c * `columnStep` + k * `componentStep`. Steps are in bytes, and may be negative. No
 * alignment is required.
 */
typedef struct KsSamplesTarget {
  void *samples;         /**< of the first pixel and component */
  int64_t rowStep;       /**< from one row to the next */
  int64_t columnStep;    /**< from one pixel of a row to the next */
  int64_t componentStep; /**< from one component to the next */
  uint32_t container;    /**< KsSamplesContainer */
} KsSamplesTarget;

/** An open stream. */
typedef struct KsSamples KsSamples;

/**
 * Opens a stream: JPEG, a JP2 file, or a bare code stream of JPEG 2000, also of high throughput. A JP2 file whose
 * headers contradict its code stream counts as the bare stream. Nothing is decoded.
 *
 * @param source is copied; what it reads from must stay until KsSamplesClose.
 * @param options are copied; null: the defaults, all 0.
 * @param stream is set to the open stream, for KsSamplesClose; null after a failure.
 *
 * @retval SUCCESS
 * @retval ERROR_INVALID_VALUE a null argument
 * @retval ERROR_FILE_READ the source failed
 * @retval ERROR_FILE_FORMAT the headers are damaged
 * @retval ERROR_NOT_SUPPORTED no codec of this build recognises the stream, or decodes its process
 * @retval ERROR_NO_MEMORY out of memory
 */
KS_API int32_t KsSamplesOpen(const KsSampleSource *source, const KsSamplesOptions *options, KsSamples **stream);

/** The same for `size` bytes in memory, which must stay unchanged until KsSamplesClose. */
KS_API int32_t KsSamplesOpenMemory(const void *bytes, uint64_t size, const KsSamplesOptions *options,
                                   KsSamples **stream);

/** Releases a stream. Null is ignored. */
KS_API void KsSamplesClose(KsSamples *stream);

/** Returns the description of an open stream, which is valid until KsSamplesClose. */
KS_API const KsSamplesInfo *KsSamplesDescribe(const KsSamples *stream);

/** Returns one component of an open stream, counted from 0, likewise. Null if there is no such component. */
KS_API const KsSamplesComponent *KsSamplesDescribeComponent(const KsSamples *stream, uint32_t component);

/**
 * Decodes a window. Samples of subsampled components are repeated for all their pixels; those of 8-bit JPEG are
 * interpolated, as its decoders commonly do.
 *
 * @param components the components to decode, in the order of the result; null: all
 * @param count      length of `components`; ignored if that is null
 * @param target     has room for all samples, which are undefined after a failure
 *
 * @retval SUCCESS
 * @retval ERROR_INVALID_VALUE null, a window that is empty or not within the picture, a level that the stream hasn't,
 * or a component that it hasn't
 * @retval ERROR_BITS_PER_PIXEL the container can't hold all values of a component
 * @retval ERROR_FILE_READ the source failed
 * @retval ERROR_FILE_FORMAT the stream is damaged, or too short for the picture that it claims
 * @retval ERROR_NOT_SUPPORTED the codec's library doesn't decode the stream: more than 31 bits, or a process
 * @retval ERROR_NO_MEMORY out of memory
 */
KS_API int32_t KsSamplesRead(KsSamples *stream, const KsSamplesWindow *window, const uint32_t *components,
                             uint32_t count, const KsSamplesTarget *target);

#ifdef __cplusplus
}
#endif

#endif
