// Decodes JPEG of 8 bits, sequential and progressive, into bitmaps, with libjpeg-turbo.
#include "kscodec/codecs.h"
#include "kscodec/jpeg/colors.h"
#include "kscodec/jpeg/turbo_state.h"
#include "kscore/bitmap.h"

#include <algorithm>

namespace kscodec::jpeg {

namespace {

constexpr uint32_t kRowsAtATime = 16;
constexpr uint32_t kBytesOfColor = 3;

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
Status Run(TurboDecoder *decoder, Stream stream, const Plan &plan, const KsBitmap &target) {
  jpeg_decompress_struct *jpeg = &decoder->state;
  jpeg->err = SetErrorHandlers(&decoder->errors);
  if (setjmp(decoder->errors.escape) != 0) return decoder->errors.status;
  decoder->ReadHeader({stream, nullptr, 0}, plan);
  if (jpeg->image_width != target.width || jpeg->image_height != target.height) return ERROR_FILE_FORMAT;
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
  TurboDecoder decoder = {};
  const Status status = Run(&decoder, stream, plan, target);
  jpeg_destroy_decompress(&decoder.state);
  return status;
}

}  // namespace kscodec::jpeg
