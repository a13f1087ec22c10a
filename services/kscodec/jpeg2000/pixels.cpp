#include "kscodec/jpeg2000/pixels.h"

#include "kscodec/ycc.h"
#include "kscore/bitmap.h"
#include "kscore/pixel_forms.h"

#include <algorithm>
#include <vector>

namespace kscodec::jpeg2000 {

namespace {

/** Samples of one component at the pixels of the picture, scaled to `Sample`. */
template <class Sample>
class ComponentRows {
 public:
  /** `full` is what the greatest value of the component becomes. */
  ComponentRows(const opj_image_t &image, const opj_image_comp_t &source, std::uint32_t full)
      : component(source), shift(source.sgnd != 0 ? 1 << (source.prec - 1) : 0) {
    const std::uint64_t greatest = (std::uint64_t{1} << component.prec) - 1;
    scaled.resize(greatest + 1);
    for (std::uint64_t value = 0; value <= greatest; ++value) {
      scaled[value] = static_cast<Sample>((value * full + greatest / 2) / greatest);
    }
    columns = Positions(image.x0, image.x1, component.dx, component.w);
    rows = Positions(image.y0, image.y1, component.dy, component.h);
  }

  /** Calls `put` with x and the sample of each pixel of a row. */
  template <class Put>
  void ForRow(std::uint32_t y, const Put &put) const {
    const OPJ_INT32 *const samples = component.data + std::uint64_t{rows[y]} * component.w;
    const std::uint64_t levels = scaled.size();
    const auto sampleOf = [&](OPJ_INT32 stored) {
      // What is below 0 is beyond all levels as well, so that sound samples are compared once.
      const auto level = static_cast<std::uint64_t>(stored + shift);
      if (level < levels) [[likely]]
        return scaled[level];
      return stored < 0 ? scaled.front() : scaled.back();
    };
    const std::uint64_t width = columns.size();
    if (component.dx == 1 && component.w >= width) {
      for (std::uint64_t x = 0; x < width; ++x) put(x, sampleOf(samples[x]));
    } else {
      for (std::uint64_t x = 0; x < width; ++x) put(x, sampleOf(samples[columns[x]]));
    }
  }

 private:
  /**
   * The sample that stands for each pixel from `start` to `end` along one axis. Samples lie at the multiples of
   * `distance` on the reference grid and are repeated up to the next one; pixels before the first sample get that one.
   */
  static std::vector<std::uint32_t> Positions(std::uint32_t start, std::uint32_t end, std::uint32_t distance,
                                              std::uint32_t samples) {
    const std::uint64_t first = (std::uint64_t{start} + distance - 1) / distance;
    std::vector<std::uint32_t> positions(end - start);
    for (std::uint64_t i = 0; i < positions.size(); ++i) {
      const std::uint64_t sample = std::max((start + i) / distance, first) - first;
      positions[i] = static_cast<std::uint32_t>(std::min<std::uint64_t>(sample, samples - 1));
    }
    return positions;
  }

  const opj_image_comp_t &component;
  std::int64_t shift;
  std::vector<Sample> scaled;
  std::vector<std::uint32_t> columns;
  std::vector<std::uint32_t> rows;
};

}  // namespace

void WriteGray(const opj_image_t &image, KsBitmap &bitmap) {
  const opj_image_comp_t &component = image.comps[0];
  if (bitmap.bitsPerPixel == kscore::Gray16::bits) {
    const ComponentRows<std::uint16_t> rows(image, component, 0xFFFF);
    for (std::uint32_t y = 0; y < bitmap.height; ++y) {
      std::uint8_t *const row = kscore::RowOf(bitmap, y);
      rows.ForRow(y, [row](std::uint64_t x, std::uint16_t value) { kscore::Gray16::Put(row, x, value); });
    }
    return;
  }
  const ComponentRows<std::uint8_t> rows(image, component, (1u << component.prec) - 1);
  for (std::uint32_t y = 0; y < bitmap.height; ++y) {
    std::uint8_t *const row = kscore::RowOf(bitmap, y);
    rows.ForRow(y, [row](std::uint64_t x, std::uint8_t value) { row[x] = value; });
  }
}

void WriteColors(const opj_image_t &image, const Channels &components, bool isSycc, KsBitmap &bitmap) {
  using Rows = ComponentRows<std::uint8_t>;
  const std::array<Rows, 3> channels = {Rows(image, image.comps[components[0]], 0xFF),
                                        Rows(image, image.comps[components[1]], 0xFF),
                                        Rows(image, image.comps[components[2]], 0xFF)};
  for (std::uint32_t y = 0; y < bitmap.height; ++y) {
    std::uint8_t *const row = kscore::RowOf(bitmap, y);
    for (std::uint32_t channel = 0; channel < 3; ++channel) {
      std::uint8_t *const first = row + 2 - channel;
      channels[channel].ForRow(y, [first](std::uint64_t x, std::uint8_t value) { first[x * 3] = value; });
    }
    if (isSycc) ConvertYccRow(row, bitmap.width);
  }
}

}  // namespace kscodec::jpeg2000
