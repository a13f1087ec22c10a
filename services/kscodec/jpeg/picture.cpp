#include "kscodec/jpeg/picture.h"

#include "kscodec/ycc.h"
#include "kscore/bitmap.h"
#include "kscore/pixel_forms.h"

#include <algorithm>

namespace kscodec::jpeg {

namespace {

constexpr std::uint64_t kMostSampleBytes = std::uint64_t{4} << 30;

std::uint32_t DivideUp(std::uint32_t value, std::uint32_t by) {
  return (value + by - 1) / by;
}

}  // namespace

Picture::Picture(const Frame &source, std::uint32_t unit, const Plan &wanted, const KsBitmap &bitmap)
    : frame(source), unitSide(unit), plan(wanted), target(bitmap), planes(source.components) {
  for (std::size_t i = 0; i < planes.size(); ++i) {
    const Component component = frame.ComponentAt(i);
    Plane &plane = planes[i];
    plane.id = component.id;
    plane.across = component.across;
    plane.down = component.down;
    plane.quantisation = component.quantisation;
    plane.isWanted = std::find(plan.picked.begin(), plan.picked.end(), i) != plan.picked.end();
    mostAcross = std::max(mostAcross, plane.across);
    mostDown = std::max(mostDown, plane.down);
  }
  // One component is coded as if it had one sample for each pixel, whatever its factors.
  if (planes.size() == 1) planes[0].across = planes[0].down = mostAcross = mostDown = 1;
}

Status Picture::MakePlanes(bool inOneScan) {
  isInOneScan = inOneScan;
  const std::uint32_t unitsAcross = DivideUp(frame.width, unitSide * mostAcross);
  const std::uint32_t unitsDown = DivideUp(frame.height, unitSide * mostDown);
  std::uint64_t bytes = 0;
  for (Plane &plane : planes) {
    plane.width = DivideUp(frame.width * plane.across, mostAcross);
    plane.height = DivideUp(frame.height * plane.down, mostDown);
    plane.stride = unitsAcross * plane.across * unitSide;
    // A row of units, and the one before it, which samples are predicted from.
    const std::uint32_t rowsOfUnits = inOneScan || !plane.isWanted ? 2 : unitsDown;
    plane.heldRows = rowsOfUnits * plane.down * unitSide;
    const std::uint64_t samples = std::uint64_t{plane.stride} * plane.heldRows;
    bytes += samples * sizeof(std::uint16_t);
    if (bytes > kMostSampleBytes || !plane.samples.Allocate(samples)) return ERROR_NO_MEMORY;
  }
  MakeScale();
  return SUCCESS;
}

void Picture::MakeScale() {
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
  neutral.assign(frame.width, static_cast<std::uint16_t>(1U << (frame.bits - 1)));
}

Units Picture::UnitsOf(const Scan &scan) const {
  if (scan.IsInterleaved()) {
    return {DivideUp(frame.width, unitSide * mostAcross), DivideUp(frame.height, unitSide * mostDown)};
  }
  const Plane &plane = *scan.parts.front().plane;
  return {DivideUp(plane.width, unitSide), DivideUp(plane.height, unitSide)};
}

std::uint32_t Picture::DecodedRows() const {
  std::uint32_t least = frame.height;
  std::uint32_t most = 0;
  for (const Plane &plane : planes) {
    if (!plane.isWanted) continue;
    const std::uint32_t rows = std::min<std::uint32_t>(plane.decodedRows * mostDown / plane.down, frame.height);
    least = std::min(least, rows);
    most = std::max(most, rows);
  }
  return isInOneScan ? least : most;
}

void Picture::WriteRows() {
  const std::uint32_t rows = DecodedRows();
  for (; writtenRows < rows; ++writtenRows) {
    std::uint8_t *const out = kscore::RowOf(target, writtenRows);
    if (plan.route == Route::kGray) {
      WriteGrayRow(writtenRows, out);
    } else {
      WriteColorRow(writtenRows, out);
    }
  }
}

const std::uint16_t *Picture::SamplesOf(const Plane &plane, std::uint32_t row) const {
  const std::uint32_t sampleRow = row * plane.down / mostDown;
  return sampleRow < plane.decodedRows ? plane.Row(sampleRow) : nullptr;
}

void Picture::WriteGrayRow(std::uint32_t row, std::uint8_t *out) const {
  const Plane &plane = planes.front();
  const std::uint16_t *const samples = plane.Row(row);
  const auto greatest = static_cast<std::uint32_t>(scale.size() - 1);
  const auto level = [&](std::uint32_t x) {
    return scale[std::min(std::uint32_t{samples[x]} << plane.shift, greatest)];
  };
  if (target.bitsPerPixel == kscore::Index8::bits) {
    for (std::uint32_t x = 0; x < frame.width; ++x) out[x] = static_cast<std::uint8_t>(level(x));
    return;
  }
  if (target.bitsPerPixel == kscore::Gray16::bits) {
    for (std::uint32_t x = 0; x < frame.width; ++x) kscore::Gray16::Put(out, x, level(x));
    return;
  }
  std::uint32_t x = 0;
  for (; x + 1 < frame.width; x += 2, out += 3) {
    const std::uint32_t first = level(x);
    const std::uint32_t second = level(x + 1);
    out[0] = static_cast<std::uint8_t>(first);
    out[1] = static_cast<std::uint8_t>(first >> 8 | (second & 0x0F) << 4);
    out[2] = static_cast<std::uint8_t>(second >> 4);
  }
  if (x < frame.width) kscore::Gray12::Put(out, 0, level(x));
}

void Picture::WriteColorRow(std::uint32_t row, std::uint8_t *out) const {
  const auto greatest = static_cast<std::uint32_t>(scale.size() - 1);
  for (std::size_t channel = 0; channel < plan.picked.size(); ++channel) {
    const Plane &plane = planes[plan.picked[channel]];
    const std::uint16_t *const decoded = SamplesOf(plane, row);
    const std::uint16_t *const samples = decoded != nullptr ? decoded : neutral.data();
    const std::uint32_t shift = decoded != nullptr ? plane.shift : 0;
    const auto level = [&](std::uint32_t column) {
      return static_cast<std::uint8_t>(scale[std::min(std::uint32_t{samples[column]} << shift, greatest)]);
    };
    std::uint8_t *pixel = out + channel;
    if (plane.across == mostAcross) {
      for (std::uint32_t x = 0; x < frame.width; ++x, pixel += 3) *pixel = level(x);
    } else {
      for (std::uint32_t x = 0; x < frame.width; ++x, pixel += 3) *pixel = level(x * plane.across / mostAcross);
    }
  }
  if (plan.route == Route::kColorFromYCbCr) ConvertYccRow(out, frame.width);
}

}  // namespace kscodec::jpeg
