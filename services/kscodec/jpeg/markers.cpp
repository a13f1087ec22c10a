#include "kscodec/jpeg/markers.h"

#include <algorithm>
#include <array>
#include <string_view>

namespace kscodec::jpeg {

namespace {

constexpr uint8_t kMarkerPrefix = 0xFF;
constexpr size_t kLengthBytes = 2;
constexpr size_t kFrameBytes = 6; /**< before the components */
constexpr size_t kSpecificationBytes = 3;
constexpr uint8_t kMostSamples = 4; /**< of a component across or down */

uint16_t WordAt(Stream bytes, size_t position) {
  return static_cast<uint16_t>(bytes[position] << 8 | bytes[position + 1]);
}

bool StandsAlone(uint8_t marker) {
  return marker == kSoi || marker == kEoi || marker == kTemporary || (marker >= kRst0 && marker <= kRst7);
}

bool IsFrame(uint8_t marker) {
  return marker >= kSof0 && marker <= kSof15 && marker != kDht && marker != kJpg && marker != kDac;
}

bool BeginsWith(Stream body, std::string_view identifier) {
  return body.size() >= identifier.size() && std::equal(identifier.begin(), identifier.end(), body.begin());
}

Status ReadFrame(const Segment &segment, Frame *frame) {
  const Stream body = segment.body;
  if (frame->marker != 0 || body.size() < kFrameBytes) return ERROR_FILE_FORMAT;
  *frame = {segment.marker, body[0], WordAt(body, 3), WordAt(body, 1), body[5], body.subspan(kFrameBytes)};
  const bool hasPixels = frame->width != 0 && frame->height != 0 && frame->components != 0;
  if (!hasPixels || frame->specifications.size() != frame->components * kSpecificationBytes) return ERROR_FILE_FORMAT;
  for (size_t i = 0; i < frame->components; ++i) {
    const Component component = frame->ComponentAt(i);
    if (component.across == 0 || component.across > kMostSamples) return ERROR_FILE_FORMAT;
    if (component.down == 0 || component.down > kMostSamples) return ERROR_FILE_FORMAT;
  }
  return SUCCESS;
}

void ReadAdobe(Stream body, Header *header) {
  constexpr size_t kTransformPosition = 11;
  if (!BeginsWith(body, "Adobe") || body.size() <= kTransformPosition) return;
  header->hasAdobe = true;
  header->adobeTransform = body[kTransformPosition];
}

void ReadNitf(Stream body, Header *header) {
  using std::string_view_literals::operator""sv;
  constexpr size_t kQualityPosition = 16;
  constexpr size_t kColorPosition = 17;
  if (!BeginsWith(body, "NITF\0"sv) || body.size() <= kColorPosition) return;
  header->nitfQuality = body[kQualityPosition];
  header->nitfColor = body[kColorPosition];
}

/** Reads a segment before the first scan. */
Status TakeSegment(const Segment &segment, Header *header) {
  using std::string_view_literals::operator""sv;
  if (IsFrame(segment.marker)) return ReadFrame(segment, &header->frame);
  switch (segment.marker) {
    case kSoi:  // a second one
    case kEoi:
      return ERROR_FILE_FORMAT;
    case kDri:
      return segment.body.size() == sizeof(uint16_t) ? SUCCESS : ERROR_FILE_FORMAT;
    case kApp0:
      if (BeginsWith(segment.body, "JFIF\0"sv)) header->hasJfif = true;
      return SUCCESS;
    case kApp6:
      ReadNitf(segment.body, header);
      return SUCCESS;
    case kApp14:
      ReadAdobe(segment.body, header);
      return SUCCESS;
    default:
      return SUCCESS;
  }
}

bool AllOfOneSize(const Frame &frame) {
  const Component first = frame.ComponentAt(0);
  for (size_t i = 1; i < frame.components; ++i) {
    const Component other = frame.ComponentAt(i);
    if (other.across != first.across || other.down != first.down) return false;
  }
  return true;
}

/** Whether the second and third component have half the samples of the first in each row, and as many rows. */
bool ChromaIsHalvedAcross(const Frame &frame) {
  const Component luma = frame.ComponentAt(0);
  for (size_t i = 1; i < frame.components; ++i) {
    const Component chroma = frame.ComponentAt(i);
    if (luma.across != 2 * chroma.across || luma.down != chroma.down) return false;
  }
  return true;
}

uint32_t FormatOfSequential(const Frame &frame) {
  if (frame.components != 1 && frame.components != 3) return KS_FORMAT_JPEG_MANY;
  if (AllOfOneSize(frame)) return KS_FORMAT_JPEG;
  return ChromaIsHalvedAcross(frame) ? KS_FORMAT_JPEG_422 : KS_FORMAT_JPEG_420;
}

/** Blocks of 8 by 8 samples in all components, or samples where the picture is lossless. */
uint64_t CodedUnits(const Frame &frame) {
  const uint32_t side = frame.marker == kSof3 ? 1 : 8;
  uint32_t mostAcross = 1;
  uint32_t mostDown = 1;
  for (size_t i = 0; i < frame.components; ++i) {
    mostAcross = std::max<uint32_t>(mostAcross, frame.ComponentAt(i).across);
    mostDown = std::max<uint32_t>(mostDown, frame.ComponentAt(i).down);
  }
  uint64_t units = 0;
  for (size_t i = 0; i < frame.components; ++i) {
    const Component component = frame.ComponentAt(i);
    units += uint64_t{frame.width * component.across / (mostAcross * side)} *
             (frame.height * component.down / (mostDown * side));
  }
  return units;
}

/** A process with the bits that it may have. */
struct Process {
  uint8_t marker;
  uint8_t leastBits;
  uint8_t mostBits;
  uint32_t format; /**< 0: by the components */
};

constexpr std::array<Process, 5> kProcesses = {{{kSof0, 8, 8, 0},
                                                {kSof1, 8, 8, 0},
                                                {kSof1, 12, 12, KS_FORMAT_JPEG_12},
                                                {kSof2, 8, 8, KS_FORMAT_JPEG_PROGRESSIVE},
                                                {kSof3, 2, 16, KS_FORMAT_JPEG_LOSSLESS}}};

}  // namespace

Status MarkerWalk::SkipToMarker(uint8_t *marker) {
  // Bytes between segments belong to none; FF is data where a zero follows it.
  for (;;) {
    const auto prefix = std::find(rest.begin(), rest.end(), kMarkerPrefix);
    const auto code = std::find_if(prefix, rest.end(), [](uint8_t byte) { return byte != kMarkerPrefix; });
    if (code == rest.end()) return ERROR_FILE_FORMAT;
    *marker = *code;
    rest = rest.subspan(static_cast<size_t>(code - rest.begin()) + 1);
    if (*marker != 0) return SUCCESS;
  }
}

Status MarkerWalk::Next(Segment *segment) {
  *segment = {};
  const Status status = SkipToMarker(&segment->marker);
  if (status != SUCCESS || StandsAlone(segment->marker)) return status;
  if (rest.size() < kLengthBytes) return ERROR_FILE_FORMAT;
  const size_t length = WordAt(rest, 0);
  if (length < kLengthBytes || length > rest.size()) return ERROR_FILE_FORMAT;
  segment->body = rest.subspan(kLengthBytes, length - kLengthBytes);
  rest = rest.subspan(length);
  return SUCCESS;
}

Component Frame::ComponentAt(size_t index) const {
  const Stream bytes = specifications.subspan(index * kSpecificationBytes, kSpecificationBytes);
  return {bytes[0], static_cast<uint8_t>(bytes[1] >> 4), static_cast<uint8_t>(bytes[1] & 15), bytes[2]};
}

Stream WithoutFill(Stream stream) {
  while (stream.size() >= 2 && stream[0] == kMarkerPrefix && stream[1] == kMarkerPrefix) stream = stream.subspan(1);
  return stream;
}

Status ReadHeader(Stream stream, Header *header) {
  *header = {};
  if (stream.size() < 2 || stream[0] != kMarkerPrefix || stream[1] != kSoi) return ERROR_FILE_FORMAT;
  MarkerWalk walk(stream.subspan(2));
  Segment segment;
  for (;;) {
    Status status = walk.Next(&segment);
    if (status != SUCCESS) return status;
    if (segment.marker == kSos) break;
    status = TakeSegment(segment, header);
    if (status != SUCCESS) return status;
  }
  if (header->frame.marker == 0) return ERROR_FILE_FORMAT;
  header->scan = segment.body;
  header->entropy = walk.Rest();
  return SUCCESS;
}

Stream WithWholeSegments(Stream stream, const Header &header) {
  if (IsInOneScan(header)) return stream;
  MarkerWalk walk(header.entropy);
  Segment segment;
  while (walk.Next(&segment) == SUCCESS) {
    if (segment.marker == kEoi) return stream;
  }
  if (segment.marker == 0) return stream;  // within a scan
  constexpr size_t kMarkerBytes = 2;
  return stream.first(stream.size() - walk.Rest().size() - kMarkerBytes);
}

Status Describe(const Frame &frame, PictureInfo *info) {
  const auto *const process = std::find_if(kProcesses.begin(), kProcesses.end(), [&](const Process &known) {
    return frame.marker == known.marker && frame.bits >= known.leastBits && frame.bits <= known.mostBits;
  });
  if (process == kProcesses.end()) return ERROR_NOT_SUPPORTED;
  const uint32_t format = process->format != 0 ? process->format : FormatOfSequential(frame);
  *info = {format, frame.width, frame.height, frame.components, frame.bits};
  return SUCCESS;
}

bool IsPlausible(const Header &header, uint64_t entropyBytes, const PictureInfo &info) {
  constexpr uint64_t kBytesOfNone = uint64_t{64} << 20;
  const uint64_t bitmapBytes = uint64_t{info.width} * info.height * DepthOfBitmap(info) / 8;
  if (bitmapBytes <= (IsInOneScan(header) ? kBytesOfNone : kBytesOfNone / 2)) return true;
  return CodedUnits(header.frame) <= entropyBytes * 8;
}

bool IsInOneScan(const Header &header) {
  return !header.scan.empty() && header.scan[0] == header.frame.components && header.frame.marker != kSof2;
}

bool IsRgb(const Header &header, bool isWanted) {
  constexpr uint8_t kAdobeNone = 0;
  constexpr uint8_t kAdobeYCbCr = 1;
  if (header.hasAdobe && header.adobeTransform == kAdobeNone) return true;
  if (header.hasAdobe && header.adobeTransform == kAdobeYCbCr) return false;
  const Frame &frame = header.frame;
  if (frame.components != 3) return false;
  if (header.nitfColor == kNitfRgb || header.nitfColor == kNitfYCbCr) return header.nitfColor == kNitfRgb;
  if (header.hasJfif) return false;
  return isWanted || frame.marker == kSof3 ||
         (frame.ComponentAt(0).id == 'R' && frame.ComponentAt(1).id == 'G' && frame.ComponentAt(2).id == 'B');
}

}  // namespace kscodec::jpeg
