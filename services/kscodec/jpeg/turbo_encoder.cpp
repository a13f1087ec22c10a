// Encodes JPEG of 8 bits as NITF files have it (MIL-STD-188-198A): baseline, components of one size, with
// libjpeg-turbo.
#include "internal/ksclasses_.h"
#include "kscodec/codecs.h"
#include "kscodec/jpeg/turbo_errors.h"
#include "kscore/allocation.h"
#include "kscore/bitmap.h"

#include <algorithm>
#include <cstring>

namespace kscodec::jpeg {

namespace {

constexpr uint32_t kRowsAtATime = 16;

/** Huffman tables are fitted to a picture whose coefficients may be held meanwhile, two bytes a sample. */
constexpr uint64_t kMostHeldCoefficientBytes = uint64_t{1} << 30;

/** What the library's calls work on. */
struct Encoder {
  jpeg_compress_struct state;
  ErrorExit errors;
  jpeg_destination_mgr destination;
  uint8_t *bytes;     /**< the stream so far */
  uint64_t roomBytes; /**< what `bytes` has room for */
};

/** Doubles the room for the stream; the new half is what the library fills next. */
boolean Grow(j_compress_ptr jpeg) {
  constexpr uint64_t kFirstRoom = uint64_t{1} << 16;
  auto &encoder = *static_cast<Encoder *>(jpeg->client_data);
  const uint64_t filled = encoder.roomBytes;
  const uint64_t room = filled == 0 ? kFirstRoom : 2 * filled;
  void *const grown = kscore::Reallocate(KS_MEMORY_BLOCK, encoder.bytes, room);
  if (grown == nullptr) Leave(reinterpret_cast<j_common_ptr>(jpeg), ERROR_NO_MEMORY);
  encoder.bytes = static_cast<uint8_t *>(grown);
  encoder.roomBytes = room;
  encoder.destination.next_output_byte = encoder.bytes + filled;
  encoder.destination.free_in_buffer = room - filled;
  return TRUE;
}

void Begin(j_compress_ptr jpeg) {
  Grow(jpeg);
}

void End(j_compress_ptr) {}

void Prepare(Encoder *encoder) {
  encoder->state.err = SetErrorHandlers(&encoder->errors);
  encoder->state.client_data = encoder;
  encoder->destination.init_destination = Begin;
  encoder->destination.empty_output_buffer = Grow;
  encoder->destination.term_destination = End;
}

/** The framework's quality, from 2 for the best, on the library's scale, whose best is 100 and whose least is 1. */
int LibraryQuality(uint32_t quality) {
  constexpr uint32_t kSteps = kSmallestQuality - kBestQuality;
  constexpr uint32_t kLibrarySteps = 99;
  const uint32_t worse = (quality - kBestQuality) * kLibrarySteps + kSteps / 2;
  return static_cast<int>(kLibrarySteps + 1 - worse / kSteps);
}

/** Colour spaces in the segment below. */
enum SegmentColor : uint8_t { kMonochrome = 0, kRgb = 1, kYCbCr = 2 };

/** The application data segment of NITF files, after its length. Numbers have the high byte first. */
struct NitfSegment {
  uint8_t identifier[5] = {'N', 'I', 'T', 'F', '\0'};
  uint8_t version[2] = {2, 0};
  uint8_t mode;
  uint8_t blocksPerRow[2] = {0, 1};
  uint8_t blocksPerColumn[2] = {0, 1};
  uint8_t imageColor;
  uint8_t imageBits = 8;
  uint8_t imageClass = 0; /**< the only one that is defined */
  uint8_t process = 1;    /**< baseline */
  uint8_t quality = 0;    /**< all tables are in the stream */
  uint8_t streamColor;
  uint8_t streamBits = 8;
  uint8_t filterAcross = 1; /**< of samples centered on those that they stand for: the only one that is defined */
  uint8_t filterDown = 1;
  uint8_t flags[2] = {0, 0};
};
static_assert(sizeof(NitfSegment) == 25 - 2);

/**
 * Describes the stream to readers of NITF files (MIL-STD-188-198A). The segment must be the first, so there can be no
 * JFIF segment; an Adobe segment would only repeat what the identifiers of the components say.
 */
void WriteNitfSegment(jpeg_compress_struct *jpeg, const SaveOrder &order) {
  NitfSegment segment = {.mode = 'P', .imageColor = kRgb, .streamColor = order.isRgb ? kRgb : kYCbCr};
  if (order.isGray) segment = {.mode = 'B', .imageColor = kMonochrome, .streamColor = kMonochrome};
  jpeg_write_marker(jpeg, JPEG_APP0 + 6, reinterpret_cast<const JOCTET *>(&segment), sizeof segment);
}

void ChooseForm(jpeg_compress_struct *jpeg, const SaveOrder &order, const KsBitmap &bitmap) {
  jpeg->image_width = bitmap.width;
  jpeg->image_height = bitmap.height;
  jpeg->input_components = order.isGray ? 1 : 3;
  jpeg->in_color_space = order.isGray ? JCS_GRAYSCALE : JCS_EXT_BGR;
  jpeg_set_defaults(jpeg);
  if (!order.isGray) jpeg_set_colorspace(jpeg, order.isRgb ? JCS_RGB : JCS_YCbCr);
  for (int component = 0; component < jpeg->num_components; ++component) {
    jpeg->comp_info[component].h_samp_factor = jpeg->comp_info[component].v_samp_factor = 1;
  }
  jpeg_set_quality(jpeg, LibraryQuality(order.quality), TRUE);
  jpeg->write_JFIF_header = FALSE;
  jpeg->write_Adobe_marker = FALSE;
  jpeg->restart_in_rows = 1;
  const auto components = static_cast<uint64_t>(jpeg->num_components);
  const uint64_t coefficientBytes = uint64_t{bitmap.width} * bitmap.height * components * sizeof(JCOEF);
  jpeg->optimize_coding = coefficientBytes <= kMostHeldCoefficientBytes ? TRUE : FALSE;
}

/** Converts and writes the rows, a strip at a time. */
void WriteRows(Encoder *encoder, const KsBitmap &bitmap, KsBitmap *strip) {
  jpeg_compress_struct *const jpeg = &encoder->state;
  while (jpeg->next_scanline < jpeg->image_height) {
    const uint32_t count = std::min<uint32_t>(kRowsAtATime, jpeg->image_height - jpeg->next_scanline);
    const int32_t status = KsCombine(strip, 0, 0, static_cast<int32_t>(strip->width), static_cast<int32_t>(count),
                                     &bitmap, 0, static_cast<int32_t>(jpeg->next_scanline), KS_COMBINE_COPY, 0);
    if (status != SUCCESS) Leave(reinterpret_cast<j_common_ptr>(jpeg), status);
    JSAMPROW rows[kRowsAtATime];
    for (uint32_t i = 0; i < count; ++i) rows[i] = kscore::RowOf(*strip, i);
    jpeg_write_scanlines(jpeg, rows, count);
  }
}

/** Nothing in here may have a destructor. */
Status Run(Encoder *encoder, const KsBitmap &bitmap, const SaveOrder &order, KsBitmap *strip) {
  jpeg_compress_struct *const jpeg = &encoder->state;
  Prepare(encoder);
  if (setjmp(encoder->errors.escape) != 0) return encoder->errors.status;
  jpeg_create_compress(jpeg);
  jpeg->dest = &encoder->destination;
  ChooseForm(jpeg, order, bitmap);
  jpeg_start_compress(jpeg, TRUE);
  WriteNitfSegment(jpeg, order);
  WriteRows(encoder, bitmap, strip);
  jpeg_finish_compress(jpeg);
  return SUCCESS;
}

Status HandOver(const Encoder &encoder, void **handle, uint64_t *size) {
  const uint64_t bytes = encoder.roomBytes - encoder.destination.free_in_buffer;
  void *const block = kscore::AllocateGlobal(bytes);
  if (block == nullptr) return ERROR_NO_MEMORY;
  std::memcpy(block, encoder.bytes, bytes);
  *handle = block;
  *size = bytes;
  return SUCCESS;
}

}  // namespace

Status Encode(const KsBitmap &bitmap, const SaveOrder &order, void **handle, uint64_t *size) {
  constexpr uint32_t kMost = JPEG_MAX_DIMENSION;
  if (bitmap.width == 0 || bitmap.height == 0 || bitmap.width > kMost || bitmap.height > kMost) {
    return ERROR_BITMAP_SIZE;
  }
  KsLocalBitmap strip;
  Status status = KsBitmapCreate(strip.Get(), sizeof(KsBitmap), KS_BITMAP_OWN, bitmap.width, kRowsAtATime,
                                 order.isGray ? 8 : 24, KS_ORDER_BGR, nullptr, 1, nullptr, 0);
  if (status != SUCCESS) return status;
  // A picture that was made smaller is saved as it is.
  KsBitmap unscaled = bitmap;
  unscaled.flags &= ~KS_BITMAP_ENLARGED;
  Encoder encoder = {};
  status = Run(&encoder, unscaled, order, strip.Get());
  jpeg_destroy_compress(&encoder.state);
  if (status == SUCCESS) status = HandOver(encoder, handle, size);
  kscore::Release(KS_MEMORY_BLOCK, encoder.bytes);
  return status;
}

}  // namespace kscodec::jpeg
