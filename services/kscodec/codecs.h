// What this build decodes and encodes. codecs.cpp alone knows what was left out of it.
#pragma once

#include "kscodec/codec.h"
#include "kstiff.h"

namespace kscodec {

struct SampleOrder;
class TiffWriter;

namespace jpeg {
struct Plan;

/** A JPEG stream: in memory, or from a place of a source on. */
struct JpegInput {
  Stream bytes;
  const ByteSource *source; /**< null for `bytes` */
  std::uint64_t start;
};
}  // namespace jpeg

/** How a picture is to be encoded. */
struct SaveOrder {
  bool isGray;           /**< one component of 8 bits, else three */
  bool isRgb;            /**< of three components: R, G, B as they are, else Y, Cb, Cr */
  std::uint32_t quality; /**< from kBestQuality to kSmallestQuality */
};

/** The scale of KsSaveMemory. */
constexpr std::uint32_t kBestQuality = 2;
constexpr std::uint32_t kSmallestQuality = 255;

/** What depends on another library. A CMake option leaves each of them out; it is null then. */
struct Libraries {
  /**
   * Decodes a JPEG stream of 8 bits, sequential or progressive, with up to four components, into a bitmap of its size.
   * KSNTFX_CODEC_JPEG, with libjpeg-turbo.
   */
  Status (*decodeJpeg)(Stream stream, const jpeg::Plan &plan, const KsBitmap &target) = nullptr;

  /**
   * Decodes a window of such a stream at a level of 0 to 3. KSNTFX_CODEC_JPEG likewise.
   */
  Status (*readJpegSamples)(const jpeg::JpegInput &input, const jpeg::Plan &plan, const SampleOrder &order) = nullptr;

  /**
   * Encodes a bitmap of any depth that converts to the one ordered as JPEG, into a new global block. SUCCESS,
   * ERROR_BITMAP_SIZE above the 65500 pixels or rows of a stream, ERROR_NO_MEMORY, or the failure of the conversion.
   * KSNTFX_CODEC_JPEG likewise.
   */
  Status (*encodeJpeg)(const KsBitmap &bitmap, const SaveOrder &order, void **handle, std::uint64_t *size) = nullptr;

  /**
   * JPEG 2000 of up to 16 bits a component. KSNTFX_CODEC_JPEG2000, with OpenJPEG.
   *
   * One component becomes a gray bitmap: 8 bits for up to 8 bits, with the values of the stream, since they may be
   * indices or have a table of their own; 16 bits for more, spread over the full range. Two and more become 24 bits,
   * each component scaled to 8: the three bands asked for with KS_LOAD_BANDS, else the first three, and of two
   * components the first as a gray. The palette of a JP2 file is applied before components are counted.
   */
  const Codec *jpeg2000 = nullptr;

  /**
   * Decodes a bi-level stream of ITU-T T.4, which has no header of its own, into `target`, an existing bitmap of 1 bit
   * a pixel: white is 1, black is 0. `info.format` is KS_FORMAT_T4_1D or KS_FORMAT_T4_2D. KSNTFX_CODEC_T4, with
   * libtiff.
   *   SUCCESS              some rows; those after the place where the stream ends or goes wrong are white
   *   ERROR_FILE_FORMAT    not one row can be decoded
   *   ERROR_NOT_SUPPORTED  another format or another target
   *   ERROR_INVALID_VALUE  the sizes of `info` and `target` differ
   *   ERROR_NO_MEMORY
   */
  Status (*loadT4)(Stream stream, const KsRawFormatInfo &info, KsBitmap *target) = nullptr;

  /**
   * Starts a TIFF file, whose shape has been checked. KSNTFX_CODEC_T4 likewise.
   */
  Status (*startTiff)(const KsTiffTarget &target, const KsTiffShape &shape,
                      std::unique_ptr<TiffWriter> *writer) = nullptr;
};

extern const Libraries kLibraries;

/** JPEG. 12 bits, lossless, and more than four components are decoded in every build. */
extern const Codec kJpegCodec;

// The members of kLibraries, for codecs.cpp; others must go through the table.
namespace jpeg {
Status Decode(Stream stream, const Plan &plan, const KsBitmap &target);
Status ReadSamples(const JpegInput &input, const Plan &plan, const SampleOrder &order);
Status Encode(const KsBitmap &bitmap, const SaveOrder &order, void **handle, std::uint64_t *size);
}  // namespace jpeg
extern const Codec kJpeg2000Codec;
Status LoadT4(Stream stream, const KsRawFormatInfo &info, KsBitmap *target);
Status StartTiff(const KsTiffTarget &target, const KsTiffShape &shape, std::unique_ptr<TiffWriter> *writer);

}  // namespace kscodec
