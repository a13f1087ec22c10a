// Decodes JPEG of 8 bits, sequential and progressive, with libjpeg-turbo.
#include "kscodec/codecs.h"
#include "kscodec/jpeg/colors.h"
#include "kscodec/jpeg/huffman.h"
#include "kscodec/jpeg/turbo_errors.h"
#include "kscore/bitmap.h"

#include <algorithm>
#include <limits>

namespace kscodec::jpeg {

namespace {

/** A stream of a few kilobytes can have any number of scans, each of which covers the whole picture. */
constexpr int kMostScans = 500;
constexpr uint64_t kMostScannedPixels = uint64_t{1} << 34;

/** The coefficients of a picture in several scans are held until the last of them: two bytes a sample. */
constexpr uint64_t kMostCoefficientBytes = uint64_t{4} << 30;

constexpr uint32_t kRowsAtATime = 16;
constexpr uint32_t kBytesOfColor = 3;

/** What the library's calls work on. */
struct Decoder {
  jpeg_decompress_struct state;
  ErrorExit errors;
  jpeg_progress_mgr progress;
};

/** Called for each row of blocks. */
void BoundScans(j_common_ptr state) {
  const auto &jpeg = *reinterpret_cast<j_decompress_ptr>(state);
  const int scans = jpeg.input_scan_number;
  const uint64_t pixels = uint64_t{jpeg.image_width} * jpeg.image_height;
  const bool tooMuch = scans > 1 && static_cast<uint64_t>(scans) * pixels > kMostScannedPixels;
  if (scans > kMostScans || tooMuch) Leave(state, ERROR_FILE_FORMAT);
}

void InstallTable(j_common_ptr state, JHUFF_TBL **slot, const HuffmanTable &table) {
  if (*slot != nullptr) return;
  *slot = jpeg_alloc_huff_table(state);
  std::copy(table.counts.begin(), table.counts.end(), (*slot)->bits + 1);
  std::copy(table.symbols.begin(), table.symbols.end(), (*slot)->huffval);
}

void InstallQuantisation(jpeg_decompress_struct *jpeg, const QuantisationTable &table) {
  for (JQUANT_TBL *&slot : jpeg->quant_tbl_ptrs) {
    if (slot != nullptr) continue;
    slot = jpeg_alloc_quant_table(reinterpret_cast<j_common_ptr>(jpeg));
    for (size_t i = 0; i < table.size(); ++i) slot->quantval[kZigzag[i]] = table[i];
  }
}

/** A stream without Huffman tables has the standard ones. */
void InstallMissingTables(jpeg_decompress_struct *jpeg, const Plan &plan) {
  if (plan.quantisation != nullptr) InstallQuantisation(jpeg, *plan.quantisation);
  if (jpeg->progressive_mode) return;
  auto *const state = reinterpret_cast<j_common_ptr>(jpeg);
  for (size_t i = 0; i < kStandardDc.size(); ++i) {
    InstallTable(state, &jpeg->dc_huff_tbl_ptrs[i], kStandardDc[i]);
    InstallTable(state, &jpeg->ac_huff_tbl_ptrs[i], kStandardAc[i]);
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

/** Nothing in here may have a destructor. */
Status Run(Decoder *decoder, Stream stream, const Plan &plan, const KsBitmap &target) {
  jpeg_decompress_struct *jpeg = &decoder->state;
  jpeg->err = SetErrorHandlers(&decoder->errors);
  if (setjmp(decoder->errors.escape) != 0) return decoder->errors.status;
  jpeg_create_decompress(jpeg);
  constexpr auto kMostLong = static_cast<uint64_t>(std::numeric_limits<long>::max());
  jpeg->mem->max_memory_to_use = static_cast<long>(std::min(kMostCoefficientBytes, kMostLong));
  decoder->progress.progress_monitor = BoundScans;
  jpeg->progress = &decoder->progress;
  jpeg_mem_src(jpeg, stream.data(), static_cast<unsigned long>(stream.size()));
  jpeg_read_header(jpeg, TRUE);
  if (jpeg->image_width != target.width || jpeg->image_height != target.height) return ERROR_FILE_FORMAT;
  InstallMissingTables(jpeg, plan);
  ChooseColors(jpeg, plan.route);
  jpeg_start_decompress(jpeg);
  if (plan.route == Route::kPicked) {
    ReadRowsPicked(jpeg, plan, target);
  } else {
    ReadRowsInPlace(jpeg, target);
  }
  return SUCCESS;
}

}  // namespace

Status Decode(Stream stream, const Plan &plan, const KsBitmap &target) {
  Decoder decoder = {};
  const Status status = Run(&decoder, stream, plan, target);
  jpeg_destroy_decompress(&decoder.state);
  return status;
}

}  // namespace kscodec::jpeg
