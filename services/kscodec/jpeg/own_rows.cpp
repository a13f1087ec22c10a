#include "kscodec/jpeg/own_rows.h"

#include "kscodec/sample_writer.h"
#include "kscodec/ycc.h"
#include "kscore/bitmap.h"
#include "kscore/pixel_forms.h"

#include <algorithm>

namespace kscodec::jpeg {

BitmapRows::BitmapRows(const Frame &frame, const Plan &wanted, const KsBitmap &bitmap) : plan(wanted), target(bitmap) {
  const std::uint32_t greatest = (1U << frame.bits) - 1;
  std::uint32_t full = 0xFF;
  if (plan.route == Route::kGray) {
    // Levels of up to 8 bits may be indices.
    if (target.bitsPerPixel == kscore::Index8::bits) full = greatest;
    if (target.bitsPerPixel == kscore::Gray12::bits) full = 0xFFF;
    if (target.bitsPerPixel == kscore::Gray16::bits) full = 0xFFFF;
  }
  scale.resize(std::size_t{greatest} + 1);
  for (std::uint64_t value = 0; value <= greatest; ++value) {
    scale[value] = static_cast<std::uint16_t>((value * full + greatest / 2) / greatest);
  }
}

void BitmapRows::TakeRow(const Picture &picture, std::uint32_t row) {
  std::uint8_t *const out = kscore::RowOf(target, row);
  if (plan.route == Route::kGray) {
    WriteGrayRow(picture.RowOf(0, row), out);
  } else {
    WriteColorRow(picture, row, out);
  }
}

void BitmapRows::WriteGrayRow(const PlaneRow &plane, std::uint8_t *out) const {
  const auto level = [&](std::uint32_t x) { return scale[plane.Level(x)]; };
  if (target.bitsPerPixel == kscore::Index8::bits) {
    for (std::uint32_t x = 0; x < target.width; ++x) out[x] = static_cast<std::uint8_t>(level(x));
    return;
  }
  if (target.bitsPerPixel == kscore::Gray16::bits) {
    for (std::uint32_t x = 0; x < target.width; ++x) kscore::Gray16::Put(out, x, level(x));
    return;
  }
  std::uint32_t x = 0;
  for (; x + 1 < target.width; x += 2, out += 3) {
    const std::uint32_t first = level(x);
    const std::uint32_t second = level(x + 1);
    out[0] = static_cast<std::uint8_t>(first);
    out[1] = static_cast<std::uint8_t>(first >> 8 | (second & 0x0F) << 4);
    out[2] = static_cast<std::uint8_t>(second >> 4);
  }
  if (x < target.width) kscore::Gray12::Put(out, 0, level(x));
}

void BitmapRows::WriteColorRow(const Picture &picture, std::uint32_t row, std::uint8_t *out) const {
  for (std::size_t channel = 0; channel < plan.picked.size(); ++channel) {
    const PlaneRow plane = picture.RowOf(plan.picked[channel], row);
    const auto level = [&](std::uint32_t sample) { return static_cast<std::uint8_t>(scale[plane.Level(sample)]); };
    std::uint8_t *pixel = out + channel;
    if (plane.across == plane.mostAcross) {
      for (std::uint32_t x = 0; x < target.width; ++x, pixel += 3) *pixel = level(x);
    } else {
      for (std::uint32_t x = 0; x < target.width; ++x, pixel += 3) *pixel = level(plane.SampleOf(x));
    }
  }
  if (plan.route == Route::kColorFromYCbCr) ConvertYccRow(out, target.width);
}

SampleRows::SampleRows(const Frame &frame, bool convertsToRgb, const SampleOrder &wanted)
    : order(wanted), converts(convertsToRgb), bits(frame.bits), nextRow(wanted.window.firstRow) {
  if (converts) {
    components = {0, 1, 2};
    converted.resize(std::size_t{order.window.columns} * 3);
  } else {
    components.assign(order.components.begin(), order.components.end());
  }
}

void SampleRows::TakeRow(const Picture &picture, std::uint32_t row) {
  const KsSamplesWindow &window = order.window;
  if (row < window.firstRow) return;
  nextRow = row + 1;
  if (converts) ConvertRow(picture, row);
  const SampleWriter writer(order.target);
  for (std::size_t place = 0; place < order.components.size(); ++place) {
    const SampleRun run = {place, row - window.firstRow, 0, window.columns};
    if (converts) {
      const std::uint16_t *const first = converted.data() + order.components[place];
      writer.Put(run, [first](std::uint32_t x) { return first[std::size_t{x} * 3]; });
      continue;
    }
    const PlaneRow plane = picture.RowOf(order.components[place], row);
    if (plane.across == plane.mostAcross) {
      writer.Put(run, [&](std::uint32_t x) { return plane.Level(window.firstColumn + x); });
    } else {
      writer.Put(run, [&](std::uint32_t x) { return plane.Level(plane.SampleOf(window.firstColumn + x)); });
    }
  }
}

void SampleRows::ConvertRow(const Picture &picture, std::uint32_t row) {
  const PlaneRow luma = picture.RowOf(0, row);
  const PlaneRow blueness = picture.RowOf(1, row);
  const PlaneRow redness = picture.RowOf(2, row);
  std::uint16_t *pixel = converted.data();
  const std::uint32_t end = order.window.firstColumn + order.window.columns;
  for (std::uint32_t x = order.window.firstColumn; x < end; ++x, pixel += 3) {
    const auto levelOf = [x](const PlaneRow &plane) { return plane.Level(plane.SampleOf(x)); };
    ConvertYcc(levelOf(luma), levelOf(blueness), levelOf(redness), bits, pixel);
  }
}

void SampleRows::WriteMissing() const {
  const SampleWriter writer(order.target);
  for (std::uint32_t row = nextRow; row < NeededRows(); ++row) {
    for (std::size_t place = 0; place < order.components.size(); ++place) {
      writer.Put({place, row - order.window.firstRow, 0, order.window.columns}, [](std::uint32_t) { return 0; });
    }
  }
}

}  // namespace kscodec::jpeg
