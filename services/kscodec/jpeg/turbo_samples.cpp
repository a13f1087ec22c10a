// Decodes windows of JPEG of 8 bits, sequential and progressive, with libjpeg-turbo.
#include "kscodec/codecs.h"
#include "kscodec/jpeg/turbo_state.h"
#include "kscodec/sample_writer.h"
#include "kscodec/samples.h"

#include <algorithm>
#include <cstring>

namespace kscodec::jpeg {

namespace {

constexpr uint32_t kRowsAtATime = 16;

/** Along one axis: what the library decodes, and where the window is in it. */
struct Stretch {
  uint32_t first;
  uint32_t count;
};

/** What is decoded for a window: interpolated chroma depends on its neighbours, which must not be cut off. */
Stretch WithMargin(uint32_t first, uint32_t count, uint32_t margin, uint32_t size) {
  const uint32_t before = std::min(first, margin);
  const uint32_t after = std::min(size - first - count, margin);
  return {first - before, before + count + after};
}

/** Pixels of a unit of coding at the level, where its components have different numbers of samples. */
uint32_t MarginOf(const jpeg_decompress_struct &jpeg, int mostSamples) {
  return mostSamples > 1 ? static_cast<uint32_t>(mostSamples * jpeg.min_DCT_scaled_size) : 0;
}

bool IsAllInOrder(const SampleOrder &order, uint32_t components) {
  if (order.components.size() != components) return false;
  for (uint32_t i = 0; i < components; ++i) {
    if (order.components[i] != i) return false;
  }
  return true;
}

/** Rows as the library makes them: bytes of all components of a pixel next to each other. */
class RowWriter {
 public:
  RowWriter(const SampleOrder &wanted, uint32_t ofPixel)
      : order(wanted),
        writer(wanted.target),
        components(ofPixel),
        isSame(IsAllInOrder(wanted, ofPixel) && wanted.target.container == KS_SAMPLES_U8 &&
               wanted.target.columnStep == ofPixel && (ofPixel == 1 || wanted.target.componentStep == 1)) {}

  /** Whether rows are the target's, too. */
  bool IsSame() const { return isSame; }

  uint8_t *RowOf(uint32_t row) const { return writer.PlaceOf({0, row, 0, 0}); }

  void Put(uint32_t row, const uint8_t *pixels) const {
    const uint32_t columns = order.window.columns;
    if (isSame) {
      std::memcpy(RowOf(row), pixels, uint64_t{columns} * components);
      return;
    }
    for (size_t place = 0; place < order.components.size(); ++place) {
      const uint8_t *const first = pixels + order.components[place];
      const uint64_t step = components;
      writer.Put({place, row, 0, columns}, [=](uint32_t x) { return first[x * step]; });
    }
  }

 private:
  const SampleOrder &order;
  SampleWriter writer;
  uint32_t components;
  bool isSame;
};

void ReadInPlace(jpeg_decompress_struct *jpeg, const RowWriter &writer, uint32_t rows) {
  for (uint32_t row = 0; row < rows;) {
    JSAMPROW places[kRowsAtATime];
    const uint32_t count = std::min(kRowsAtATime, rows - row);
    for (uint32_t i = 0; i < count; ++i) places[i] = writer.RowOf(row + i);
    row += jpeg_read_scanlines(jpeg, places, count);
  }
}

/** Reads `rows` rows after `above` others that are needed for them only. */
void ReadThrough(jpeg_decompress_struct *jpeg, const RowWriter &writer, uint32_t above, uint32_t rows,
                 uint64_t skipped) {
  auto *const state = reinterpret_cast<j_common_ptr>(jpeg);
  const JDIMENSION bytes = jpeg->output_width * static_cast<JDIMENSION>(jpeg->output_components);
  JSAMPARRAY buffer = jpeg->mem->alloc_sarray(state, JPOOL_IMAGE, bytes, 1);
  for (uint32_t row = 0; row < above + rows; ++row) {
    jpeg_read_scanlines(jpeg, buffer, 1);
    if (row >= above) writer.Put(row - above, buffer[0] + skipped);
  }
}

void ReadWindow(jpeg_decompress_struct *jpeg, const SampleOrder &order) {
  const KsSamplesWindow &window = order.window;
  const auto components = static_cast<uint32_t>(jpeg->output_components);
  const RowWriter writer(order, components);
  const bool isWide = window.columns == jpeg->output_width;
  JDIMENSION left = 0;
  if (!isWide) {
    const uint32_t margin = MarginOf(*jpeg, jpeg->max_h_samp_factor);
    const Stretch columns = WithMargin(window.firstColumn, window.columns, margin, jpeg->output_width);
    left = columns.first;
    JDIMENSION width = columns.count;
    jpeg_crop_scanline(jpeg, &left, &width);
  }
  const uint32_t margin = MarginOf(*jpeg, jpeg->max_v_samp_factor);
  const uint32_t above = std::min(window.firstRow, margin);
  if (window.firstRow != above) jpeg_skip_scanlines(jpeg, window.firstRow - above);
  if (isWide && above == 0 && writer.IsSame()) {
    ReadInPlace(jpeg, writer, window.rows);
  } else {
    ReadThrough(jpeg, writer, above, window.rows, uint64_t{window.firstColumn - left} * components);
  }
}

/** Nothing in here may have a destructor. */
Status Run(TurboDecoder *decoder, const JpegInput &input, const Plan &plan, const SampleOrder &order) {
  jpeg_decompress_struct *jpeg = &decoder->state;
  jpeg->err = SetErrorHandlers(&decoder->errors);
  if (setjmp(decoder->errors.escape) != 0) return decoder->errors.status;
  decoder->ReadHeader(input, plan);
  const bool converts = plan.route == Route::kColorFromYCbCr;
  jpeg->jpeg_color_space = converts ? JCS_YCbCr : JCS_UNKNOWN;
  jpeg->out_color_space = converts ? JCS_RGB : JCS_UNKNOWN;
  jpeg->scale_num = 1;
  jpeg->scale_denom = 1U << order.window.level;
  jpeg_start_decompress(jpeg);
  const KsSamplesWindow &window = order.window;
  const bool fits =
      window.firstColumn + window.columns <= jpeg->output_width && window.firstRow + window.rows <= jpeg->output_height;
  if (!fits) return ERROR_FILE_FORMAT;
  ReadWindow(jpeg, order);
  return SUCCESS;
}

}  // namespace

Status ReadSamples(const JpegInput &input, const Plan &plan, const SampleOrder &order) {
  TurboDecoder decoder = {};
  const Status status = Run(&decoder, input, plan, order);
  jpeg_destroy_decompress(&decoder.state);
  return status;
}

}  // namespace kscodec::jpeg
