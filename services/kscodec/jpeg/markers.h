// The markers of a JPEG stream (ITU-T T.81, annex B), up to its first scan: what the picture is, without decoding it.
#pragma once

#include "kscodec/codec.h"

#include <cstddef>
#include <cstdint>

namespace kscodec::jpeg {

/** Second bytes of the markers that the walk distinguishes. */
enum Marker : std::uint8_t {
  kTemporary = 0x01,
  kSof0 = 0xC0, /**< baseline sequential */
  kSof1 = 0xC1, /**< extended sequential */
  kSof2 = 0xC2, /**< progressive */
  kSof3 = 0xC3, /**< lossless, process 14 */
  kDht = 0xC4,
  kJpg = 0xC8, /**< reserved, between the frame headers */
  kDac = 0xCC,
  kSof15 = 0xCF,
  kRst0 = 0xD0,
  kRst7 = 0xD7,
  kSoi = 0xD8,
  kEoi = 0xD9,
  kSos = 0xDA,
  kDqt = 0xDB,
  kDri = 0xDD,
  kApp0 = 0xE0,
  kApp6 = 0xE6,
  kApp14 = 0xEE
};

/** Components of one scan (B.2.3). */
constexpr std::uint32_t kMostScanComponents = 4;

/** A marker with what its segment holds after the length; nothing for a marker without a segment. */
struct Segment {
  std::uint8_t marker = 0;
  Stream body;
};

/** Goes from marker to marker by the lengths of their segments. */
class MarkerWalk {
 public:
  explicit MarkerWalk(Stream stream) : rest(stream) {}

  /** The next segment: SUCCESS, or ERROR_FILE_FORMAT where no whole one is left. Fill bytes are skipped. */
  Status Next(Segment *segment);

  /** What follows the segment that Next returned last. */
  Stream Rest() const { return rest; }

 private:
  Status SkipToMarker(std::uint8_t *marker);

  Stream rest;
};

/** One component of a frame: its identifier, and its samples across and down beside those of the others. */
struct Component {
  std::uint8_t id = 0;
  std::uint8_t across = 0;
  std::uint8_t down = 0;
  std::uint8_t quantisation = 0; /**< the number of its table */
};

/** A frame header: process, size, components. */
struct Frame {
  std::uint8_t marker = 0; /**< kSof0 and on; 0 is none */
  std::uint8_t bits = 0;
  std::uint16_t width = 0;
  std::uint16_t height = 0;
  std::uint8_t components = 0;
  Stream specifications; /**< three bytes a component */

  Component ComponentAt(std::size_t index) const;
};

/** How the NITF segment (MIL-STD-188-198A) says that a stream is coloured; other numbers are of no use here. */
enum NitfColor : std::uint8_t { kNitfUnknown = 0xFF, kNitfRgb = 1, kNitfYCbCr = 2 };

/** What a decoder needs of all that comes before the first scan. The spans look into the stream. */
struct Header {
  Frame frame;
  bool hasJfif = false;
  bool hasAdobe = false;
  std::uint8_t adobeTransform = 0; /**< with hasAdobe: 0 none, 1 YCbCr, 2 YCCK */
  std::uint8_t nitfColor = kNitfUnknown;
  std::uint8_t nitfQuality = 0; /**< 1 to 5: which tables a stream without its own has */
  Stream scan;                  /**< the body of the first scan header */
  Stream entropy;               /**< what follows it */
};

/** The stream without the bytes FF that may precede its start of image. */
Stream WithoutFill(Stream stream);

/**
 * Walks from the start of image to the first scan. ERROR_FILE_FORMAT where that isn't reached, and for a picture
 * without pixels or components.
 *
 * Readers of tiles prefix a whole tile with a start of image and an APP6 segment, with a length of two bytes more
 * than the segment has: the tile's own start of image belongs to the segment then, and its other markers follow.
 */
Status ReadHeader(Stream stream, Header *header);

/**
 * The stream without its last segment, where that one is cut off and follows the first scan: the rest is a picture with
 * fewer scans. A stream of one scan is returned unchanged.
 */
Stream WithWholeSegments(Stream stream, const Header &header);

/** The picture of a frame. ERROR_NOT_SUPPORTED for a process without a format number. */
Status Describe(const Frame &frame, PictureInfo *info);

/**
 * Whether a stream is long enough for the picture that it claims, so that a few bytes can't ask for much memory: a
 * bitmap of more than 64 MiB (32 MiB in several scans, whose coefficients are held as well) needs a bit for each block
 * of 8 by 8 samples, or for each sample of a lossless picture. No Huffman code is shorter.
 */
bool IsPlausible(const Header &header, std::uint64_t entropyBytes, const PictureInfo &info);

/** Whether the first scan has all components and all of their coefficients. */
bool IsInOneScan(const Header &header);

/**
 * Whether three components are red, green and blue rather than luminance and chrominance. `isWanted` decides where the
 * stream doesn't.
 */
bool IsRgb(const Header &header, bool isWanted);

}  // namespace kscodec::jpeg
