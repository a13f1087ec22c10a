#include "images/stretch.h"

#include "images/pad_value.h"
#include "images/sample_values.h"

#include <algorithm>
#include <cmath>
#include <vector>

namespace ksntfx {

namespace {

constexpr std::uint64_t kMostParts = 64;
constexpr std::uint64_t kMostValues = 1 << 18;

/** A radar image may have a few echoes thousands of times as strong as the rest. */
constexpr double kRangeForDecibels = 100;

/** Notes which samples of a row aren't recorded. */
class AbsentColumns final : public AbsentPixels {
 public:
  explicit AbsentColumns(std::uint64_t count) : absent(count, false) {}
  void Add(const PixelWindow &part) override {
    const auto first = absent.begin() + static_cast<std::ptrdiff_t>(part.firstColumn);
    std::fill(first, first + static_cast<std::ptrdiff_t>(part.columns), true);
  }
  bool IsAbsent(std::uint64_t column) const { return absent[column]; }

 private:
  std::vector<bool> absent;
};

/** Collects values of one band from rows that are spread over the image. */
class Sampling {
 public:
  Sampling(RawImage &source, std::uint32_t sampledBand)
      : image(source),
        shape(source.Shape()),
        band(sampledBand),
        pad(source.Header(), shape),
        read(ChooseValues(shape.type)),
        bytes(BytesOf(shape.type)) {}

  /** Rows of blocks that can be read in parts are sampled row by row; of others all rows of some are. */
  Status Run() {
    const std::uint64_t unit = shape.readsWholeBlocks ? shape.blockHeight : 1;
    const std::uint64_t units = (shape.rows + unit - 1) / unit;
    const std::uint64_t parts = std::min(units, shape.readsWholeBlocks ? kMostParts / 8 : kMostParts);
    for (std::uint64_t part = 0; part < parts; ++part) {
      // From the middle of each part, so that a blank border isn't all that is seen.
      const std::uint64_t first = (2 * part + 1) * units / (2 * parts) * unit;
      const Status status = Take(first, std::min(unit, shape.rows - first), kMostValues / parts);
      if (status != SUCCESS) return status;
    }
    return SUCCESS;
  }

  std::vector<double> values;

 private:
  Status Take(std::uint64_t first, std::uint64_t rows, std::uint64_t most) {
    const std::uint64_t step = std::max<std::uint64_t>(rows * shape.columns / std::max<std::uint64_t>(most, 1), 1);
    std::vector<std::uint8_t> samples(rows * shape.columns * bytes);
    const auto rowBytes = static_cast<std::int64_t>(shape.columns * bytes);
    AbsentColumns absent(shape.columns);
    const Status status =
        image.Read({first, 0, rows, shape.columns}, {&band, 1}, {samples.data(), bytes, rowBytes, 0}, &absent);
    if (status != SUCCESS) return status;
    for (std::uint64_t at = 0; at < rows * shape.columns; at += step) {
      const std::uint8_t *const sample = samples.data() + at * bytes;
      double value = 0;
      read(sample, 1, &value);
      if (std::isfinite(value) && !pad.Is(sample) && !absent.IsAbsent(at % shape.columns)) values.push_back(value);
    }
    return SUCCESS;
  }

  RawImage &image;
  const SampleShape &shape;
  std::uint32_t band;
  PadValue pad;
  ReadValues read;
  std::uint32_t bytes;
};

double Percentile(std::vector<double> &values, double percent) {
  const auto place = static_cast<std::ptrdiff_t>(percent / 100 * static_cast<double>(values.size() - 1));
  std::nth_element(values.begin(), values.begin() + place, values.end());
  return values[static_cast<std::size_t>(place)];
}

/** Without a stretch, of more than 8 bits the high ones of those that count are shown. */
Stretch FixedRange(const ImageSubheader &image, const SampleShape &shape) {
  if (shape.type >= SampleType::Float32) return {};
  const bool counts =
      shape.bits > 8 && image.actualBits >= 1 && image.actualBits <= shape.bits && image.rightJustified != 0;
  const double levels = std::ldexp(1.0, static_cast<int>(counts ? image.actualBits : shape.bits));
  const double low = IsSigned(shape.type) ? -levels / 2 : 0;
  return {low, low + levels - 1};
}

}  // namespace

std::uint8_t Stretch::Map(double value) const {
  if (isDecibels) value = value > 0 ? std::log10(value) : low;
  if (!(value > low)) return 0;  // nor what is no number
  return value >= high ? 255 : static_cast<std::uint8_t>(std::lround((value - low) / (high - low) * 255));
}

Status MeasureStretch(RawImage &image, std::uint32_t band, const StretchChoice &choice, Stretch *stretch) {
  *stretch = FixedRange(image.Header(), image.Shape());
  if (choice.kind == StretchKind::None) return SUCCESS;
  Sampling sampling(image, band);
  const Status status = sampling.Run();
  if (status != SUCCESS || sampling.values.empty()) return status;
  const bool isWhole = choice.kind == StretchKind::MinMax;
  stretch->low = Percentile(sampling.values, isWhole ? 0 : choice.low);
  stretch->high = Percentile(sampling.values, isWhole ? 100 : choice.high);
  const bool isMagnitude = image.Shape().type == SampleType::Complex64;
  if (isMagnitude && stretch->low > 0 && stretch->high / stretch->low > kRangeForDecibels) {
    *stretch = {std::log10(stretch->low), std::log10(stretch->high), true};
  }
  // One value alone is shown black.
  if (stretch->high <= stretch->low) stretch->high = stretch->low + 1;
  return SUCCESS;
}

}  // namespace ksntfx
