// JPEG of 8 bits, sequential and progressive, by libjpeg-turbo.
#include "kscodec/codec.h"
#include "kscodec/jpeg_colors.h"
#include "kscodec/jpeg_errors.h"
#include "kscodec/jpeg_huffman.h"
#include "kscodec/jpeg_markers.h"
#include "kscodec/jpeg_picture.h"
#include "kscore/bitmap.h"

#include <algorithm>
#include <array>
#include <csetjmp>
#include <cstdio>
#include <cstring>
#include <jerror.h>
#include <limits>

#include <jpeglib.h>

namespace {

using kscodec::PictureInfo;
using kscodec::Stream;
using kscodec::jpeg::Plan;
using kscodec::jpeg::Route;

/** A stream of some kilobytes can name any number of scans, each of which passes over the whole picture. */
constexpr int kMostScans = 500;
constexpr uint64_t kMostScannedPixels = uint64_t{1} << 34;

/** The coefficients of a picture in several scans are held until the last of them: two bytes a sample. */
constexpr uint64_t kMostCoefficientBytes = uint64_t{4} << 30;

constexpr uint32_t kRowsAtATime = 16;
constexpr uint32_t kBytesOfColor = 3;

struct Decoder {
  jpeg_decompress_struct state;
  jpeg_error_mgr errors;
  jpeg_progress_mgr progress;
  std::jmp_buf escape;
};

Decoder *DecoderOf(j_common_ptr state) {
  return static_cast<Decoder *>(state->client_data);
}

[[noreturn]] void Escape(j_common_ptr state) {
  std::longjmp(DecoderOf(state)->escape, 1);
}

/** Called for each row of blocks. */
void BoundScans(j_common_ptr state) {
  const jpeg_decompress_struct &jpeg = DecoderOf(state)->state;
  const int scans = jpeg.input_scan_number;
  const uint64_t pixels = uint64_t{jpeg.image_width} * jpeg.image_height;
  const bool tooMuch = scans > 1 && static_cast<uint64_t>(scans) * pixels > kMostScannedPixels;
  if (scans > kMostScans || tooMuch) Escape(state);
}

int32_t StatusOf(int message) {
  switch (message) {
    case JERR_OUT_OF_MEMORY:
    case JERR_NO_BACKING_STORE:
      return ERROR_NO_MEMORY;
    case JERR_COMPONENT_COUNT:
    case JERR_FRACT_SAMPLE_NOTIMPL:
    case JERR_IMAGE_TOO_BIG:
    case JERR_NOTIMPL:
      return ERROR_NOT_SUPPORTED;
    default:
      return ERROR_FILE_FORMAT;
  }
}

void InstallTable(j_common_ptr state, JHUFF_TBL **slot, const kscodec::jpeg::HuffmanTable &table) {
  if (*slot != nullptr) return;
  *slot = jpeg_alloc_huff_table(state);
  std::copy(table.counts.begin(), table.counts.end(), (*slot)->bits + 1);
  std::copy(table.symbols.begin(), table.symbols.end(), (*slot)->huffval);
}

/** A stream without tables means the standard ones. */
void InstallMissingTables(jpeg_decompress_struct *jpeg) {
  if (jpeg->progressive_mode) return;
  auto *const state = reinterpret_cast<j_common_ptr>(jpeg);
  for (size_t i = 0; i < kscodec::jpeg::kStandardDc.size(); ++i) {
    InstallTable(state, &jpeg->dc_huff_tbl_ptrs[i], kscodec::jpeg::kStandardDc[i]);
    InstallTable(state, &jpeg->ac_huff_tbl_ptrs[i], kscodec::jpeg::kStandardAc[i]);
  }
}

void ChooseColors(jpeg_decompress_struct *jpeg, Route route) {
  switch (route) {
    case Route::kGray:
      jpeg->jpeg_color_space = JCS_GRAYSCALE;
      jpeg->out_color_space = JCS_GRAYSCALE;
      break;
    case Route::kColorFromYCbCr:
      jpeg->jpeg_color_space = JCS_YCbCr;
      jpeg->out_color_space = JCS_EXT_BGR;
      break;
    case Route::kColorFromRgb:
      jpeg->jpeg_color_space = JCS_RGB;
      jpeg->out_color_space = JCS_EXT_BGR;
      break;
    case Route::kPicked:
      jpeg->jpeg_color_space = JCS_UNKNOWN;
      jpeg->out_color_space = JCS_UNKNOWN;
      break;
  }
}

void ReadRowsInPlace(jpeg_decompress_struct *jpeg, const KsBitmap &target) {
  while (jpeg->output_scanline < jpeg->output_height) {
    JSAMPROW rows[kRowsAtATime];
    const uint32_t count = std::min<uint32_t>(kRowsAtATime, jpeg->output_height - jpeg->output_scanline);
    for (uint32_t i = 0; i < count; ++i) rows[i] = kscore::RowOf(target, jpeg->output_scanline + i);
    jpeg_read_scanlines(jpeg, rows, count);
  }
}

void ReadRowsPicked(jpeg_decompress_struct *jpeg, const Plan &plan, const KsBitmap &target) {
  const auto step = static_cast<uint32_t>(jpeg->output_components);
  auto *const state = reinterpret_cast<j_common_ptr>(jpeg);
  JSAMPARRAY all = jpeg->mem->alloc_sarray(state, JPOOL_IMAGE, jpeg->output_width * step, 1);
  while (jpeg->output_scanline < jpeg->output_height) {
    uint8_t *pixel = kscore::RowOf(target, jpeg->output_scanline);
    jpeg_read_scanlines(jpeg, all, 1);
    const uint8_t *const end = all[0] + uint64_t{jpeg->output_width} * step;
    for (const uint8_t *samples = all[0]; samples != end; samples += step, pixel += kBytesOfColor) {
      pixel[0] = samples[plan.picked[0]];
      pixel[1] = samples[plan.picked[1]];
      pixel[2] = samples[plan.picked[2]];
    }
  }
}

/** Decodes into a bitmap of the right size. libjpeg leaves by a jump, so nothing here may need a destructor. */
int32_t Decode(Decoder *decoder, Stream stream, const Plan &plan, const KsBitmap &target) {
  jpeg_decompress_struct *jpeg = &decoder->state;
  jpeg->err = kscodec::jpeg::SetErrorHandlers(&decoder->errors, Escape);
  jpeg->client_data = decoder;
  if (setjmp(decoder->escape) != 0) return StatusOf(decoder->errors.msg_code);
  jpeg_create_decompress(jpeg);
  constexpr auto kMostLong = static_cast<uint64_t>(std::numeric_limits<long>::max());
  jpeg->mem->max_memory_to_use = static_cast<long>(std::min(kMostCoefficientBytes, kMostLong));
  decoder->progress.progress_monitor = BoundScans;
  jpeg->progress = &decoder->progress;
  jpeg_mem_src(jpeg, stream.data(), static_cast<unsigned long>(stream.size()));
  jpeg_read_header(jpeg, TRUE);
  if (jpeg->image_width != target.width || jpeg->image_height != target.height) return ERROR_FILE_FORMAT;
  InstallMissingTables(jpeg);
  ChooseColors(jpeg, plan.route);
  jpeg_start_decompress(jpeg);
  if (plan.route == Route::kPicked) {
    ReadRowsPicked(jpeg, plan, target);
  } else {
    ReadRowsInPlace(jpeg, target);
  }
  return SUCCESS;
}

/** Whether libjpeg has the process, and enough components: it finds those beyond the fourth in no scan. */
bool IsOfLibrary(const PictureInfo &info) {
  return info.format != KS_FORMAT_JPEG_12 && info.format != KS_FORMAT_JPEG_LOSSLESS &&
         info.components <= MAX_COMPS_IN_SCAN;
}

int32_t DecodeByLibrary(Stream stream, const Plan &plan, const KsBitmap &target) {
  Decoder decoder = {};
  const int32_t status = Decode(&decoder, stream, plan, target);
  jpeg_destroy_decompress(&decoder.state);
  return status;
}

bool Recognises(Stream padded) {
  const Stream stream = kscodec::jpeg::WithoutFill(padded);
  return stream.size() >= 3 && stream[0] == 0xFF && stream[1] == kscodec::jpeg::kSoi && stream[2] == 0xFF;
}

int32_t Inform(Stream stream, PictureInfo *info) {
  kscodec::jpeg::Header header;
  const int32_t status = ReadHeader(kscodec::jpeg::WithoutFill(stream), &header);
  return status == SUCCESS ? Describe(header.frame, info) : status;
}

int32_t CreateBitmap(const PictureInfo &info, KsBitmap *target) {
  const uint32_t bits = kscodec::DepthOfBitmap(info);
  uint32_t order = KS_ORDER_BGR;
  if (info.components == 1) order = bits > 8 ? KS_ORDER_GRAY : KS_ORDER_PALETTE;
  const int32_t status = KsBitmapCreate(target, sizeof(KsBitmap), KS_BITMAP_OWN, info.width, info.height, bits, order,
                                        nullptr, 1, nullptr, 0);
  if (status == SUCCESS) kscore::MarkWritten(*target);
  return status;
}

/** A stream with what its header says. */
struct Source {
  Stream stream;
  kscodec::jpeg::Header header;
  PictureInfo info;
};

/** Reads the header and holds it against what there is to decode it with, and how long the stream is. */
int32_t Open(Stream padded, Source *source) {
  source->stream = kscodec::jpeg::WithoutFill(padded);
  int32_t status = ReadHeader(source->stream, &source->header);
  if (status == SUCCESS) status = Describe(source->header.frame, &source->info);
  if (status != SUCCESS) return status;
  if (!IsPlausible(source->header, source->info)) return ERROR_FILE_FORMAT;
  const bool isProgressive = source->info.format == KS_FORMAT_JPEG_PROGRESSIVE;
  return isProgressive && !IsOfLibrary(source->info) ? ERROR_NOT_SUPPORTED : SUCCESS;
}

/** Decodes into a bitmap, which is all of 0 where the library doesn't know the process. */
int32_t DecodeInto(const Source &source, const KsLoadOptions &options, const KsBitmap &target) {
  const Plan plan = PlanOf(source.header, options);
  return IsOfLibrary(source.info) ? DecodeByLibrary(WithWholeSegments(source.stream, source.header), plan, target)
                                  : DecodeOwn(source.stream, source.header, plan, target);
}

int32_t Load(Stream stream, const KsLoadOptions &options, KsBitmap *target) {
  Source source;
  int32_t status = Open(stream, &source);
  if (status == SUCCESS) status = CreateBitmap(source.info, target);
  if (status == SUCCESS) status = DecodeInto(source, options, *target);
  if (status != SUCCESS) KsBitmapFree(target);
  return status;
}

int32_t LoadInPlace(Stream stream, const KsLoadOptions &options, const KsBitmap &place) {
  Source source;
  const int32_t status = Open(stream, &source);
  if (status != SUCCESS) return status;
  const uint64_t rowBytes = (uint64_t{place.width} * place.bitsPerPixel + 7) / 8;
  for (uint32_t row = 0; row < place.height && !IsOfLibrary(source.info); ++row) {
    std::memset(kscore::RowOf(place, row), 0, rowBytes);
  }
  return DecodeInto(source, options, place);
}

}  // namespace

const kscodec::Codec kscodec::kJpegCodec = {Recognises, Inform, Load, LoadInPlace};
