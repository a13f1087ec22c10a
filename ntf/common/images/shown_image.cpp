#include "images/shown_image.h"

#include "images/band_choice.h"
#include "images/block_starts.h"
#include "images/sample_values.h"

#include <algorithm>
#include <cmath>
#include <cstring>

namespace ksntfx {

namespace {

/** Samples of as many bits have a table of all levels. */
constexpr std::uint32_t kMostTableBits = 16;

bool HasTable(const SampleShape &shape) {
  return shape.type == SampleType::Uint8 || (shape.type == SampleType::Uint16 && shape.bits <= kMostTableBits);
}

/** ITU-R BT.601 in full range, as JPEG has it. */
void ConvertYcc(std::uint8_t *pixel) {
  const double y = pixel[0];
  const double cb = pixel[1] - 128.0;
  const double cr = pixel[2] - 128.0;
  const double colors[] = {y + 1.402 * cr, y - 0.344136 * cb - 0.714136 * cr, y + 1.772 * cb};
  for (int channel = 0; channel < 3; ++channel) {
    pixel[channel] = static_cast<std::uint8_t>(std::clamp(std::lround(colors[channel]), 0L, 255L));
  }
}

/** Collects rectangles, to make them transparent in the end. */
class AbsentParts final : public AbsentPixels {
 public:
  void Add(const PixelWindow &part) override { parts.push_back(part); }

  void Clear(std::uint8_t *pixels, std::uint64_t rowStep) const {
    for (const PixelWindow &part : parts) {
      for (std::uint64_t row = 0; row < part.rows; ++row) {
        std::uint8_t *const from = pixels + (part.firstRow + row) * rowStep + part.firstColumn * kShownBytes;
        std::memset(from, 0, part.columns * kShownBytes);
      }
    }
  }

 private:
  std::vector<PixelWindow> parts;
};

}  // namespace

Status WideShown::Open() {
  pad = PadValue(image.Header(), image.Shape());
  Status status = ChooseBands();
  for (Channel &channel : channels) {
    if (status == SUCCESS) status = MakeChannel(&channel);
  }
  if (status == SUCCESS) MakeColors();
  return status;
}

Status WideShown::ChooseBands() {
  const ImageSubheader &header = image.Header();
  const SampleShape &shape = image.Shape();
  const auto show = [&](const BandOrder &order) {
    channels = {{.band = order.first}, {.band = order.second}, {.band = order.third}};
  };
  BandOrder order{0, 1, 2};
  if (choice.bands) {
    const auto [red, green, blue] = *choice.bands;
    if (std::max({red, green, blue}) >= shape.bands) return ERROR_INVALID_VALUE;
    show({red, green, blue});
    if (red == green && green == blue) channels.resize(1);
    return SUCCESS;
  }
  const bool hasThree = shape.bands >= 3;
  const bool isColor = header.representation == kRgb || header.representation == kMulti;
  if (FindTaggedBands(header, {kBandRed, kBandGreen, kBandBlue}, &order) || (hasThree && shape.isRgb)) {
    show(order.third < shape.bands ? order : BandOrder{0, 1, 2});
  } else if (FindTaggedBands(header, {kBandY, kBandCb, kBandCr}, &order)) {
    show(order);
    isYcc = true;
  } else if (FindTaggedBands(header, {kBandLut, kBandLut, kBandLut}, &order) ||
             FindTaggedBands(header, {kBandMono, kBandMono, kBandMono}, &order)) {
    channels = {{.band = order.first}};
  } else if (hasThree && (isColor || shape.isYcc || header.representation == kYCbCr601)) {
    show({0, 1, 2});
    isYcc = !isColor;
  } else {
    channels = {{.band = 0}};
  }
  return SUCCESS;
}

/** Samples of up to 8 bits fill the range of a screen as they are. */
bool WideShown::IsStretched() const {
  return choice.stretchesAll || image.Shape().bits > 8 || image.Shape().type >= SampleType::Float32;
}

Status WideShown::MakeChannel(Channel *channel) {
  const SampleShape &shape = image.Shape();
  StretchChoice stretch = choice.stretch;
  if (!IsStretched()) stretch.kind = StretchKind::None;
  const Status status = MeasureStretch(image, channel->band, stretch, &channel->stretch);
  if (status != SUCCESS || !HasTable(shape)) return status;
  channel->levels.resize(std::size_t{1} << (shape.type == SampleType::Uint8 ? 8 : kMostTableBits));
  for (std::size_t sample = 0; sample < channel->levels.size(); ++sample) {
    channel->levels[sample] = channel->stretch.Map(static_cast<double>(sample));
  }
  // The format's 1 is black in bi-level streams.
  if (KindOf(image.Header()).layout == ImageLayout::BilevelStream) std::swap(channel->levels[0], channel->levels[1]);
  return SUCCESS;
}

/** A band with a lookup table is shown by it. Samples beyond its end are black. */
void WideShown::MakeColors() {
  const ImageSubheader &header = image.Header();
  const std::uint32_t band = channels[0].band;
  const bool hasLut = channels.size() == 1 && header.lut != nullptr && band < header.bandsHeld &&
                      header.bandLutCounts[band] != 0 && HasTable(image.Shape());
  if (!hasLut) return;
  colors.resize(channels[0].levels.size());
  for (std::size_t entry = 0; entry < std::min<std::size_t>(colors.size(), header.lutCount); ++entry) {
    const std::uint32_t color = header.lut[entry];
    colors[entry] = {static_cast<std::uint8_t>(color >> 16), static_cast<std::uint8_t>(color >> 8),
                     static_cast<std::uint8_t>(color)};
  }
}

std::uint64_t WideShown::RowsOfStrip() const {
  const SampleShape &shape = image.Shape();
  if (shape.readsWholeBlocks) return shape.blockHeight;
  const std::uint64_t rowBytes = shape.columns * BytesOf(shape.type) * channels.size();
  return std::max<std::uint64_t>(kStripBytes / std::max<std::uint64_t>(rowBytes, 1), 1);
}

Status WideShown::Draw(const PixelWindow &window, std::uint8_t *pixels, std::uint64_t rowStep) {
  AbsentParts absent;
  const Status status = ReadStrip(window, &absent);
  if (status != SUCCESS) return status;
  for (std::uint64_t row = 0; row < rows; ++row) {
    DrawRow(row, pixels + row * rowStep);
    ClearPads(row, pixels + row * rowStep);
  }
  absent.Clear(pixels, rowStep);
  return SUCCESS;
}

Status WideShown::ReadStrip(const PixelWindow &window, AbsentPixels *absent) {
  const std::uint64_t bytes = BytesOf(image.Shape().type);
  columns = window.columns;
  rows = window.rows;
  samples.resize(rows * columns * bytes * channels.size());
  std::uint32_t bands[3] = {};
  std::transform(channels.begin(), channels.end(), bands, [](const Channel &channel) { return channel.band; });
  const SampleTarget target = {samples.data(), static_cast<std::int64_t>(bytes),
                               static_cast<std::int64_t>(columns * bytes),
                               static_cast<std::int64_t>(rows * columns * bytes)};
  return image.Read(window, {bands, channels.size()}, target, absent);
}

const std::uint8_t *WideShown::SamplesOf(std::size_t channel, std::uint64_t row) const {
  return samples.data() + (channel * rows + row) * columns * BytesOf(image.Shape().type);
}

void WideShown::DrawRow(std::uint64_t row, std::uint8_t *pixels) {
  if (!colors.empty()) {
    DrawColors(SamplesOf(0, row), pixels);
    return;
  }
  const std::uint8_t *const red = LevelsOf(0, row);
  const std::uint8_t *const green = channels.size() == 3 ? LevelsOf(1, row) : red;
  const std::uint8_t *const blue = channels.size() == 3 ? LevelsOf(2, row) : red;
  for (std::uint64_t at = 0; at < columns; ++at, pixels += kShownBytes) {
    pixels[0] = red[at];
    pixels[1] = green[at];
    pixels[2] = blue[at];
    pixels[3] = 255;
    if (isYcc) ConvertYcc(pixels);
  }
}

void WideShown::DrawColors(const std::uint8_t *from, std::uint8_t *pixels) const {
  const bool isWide = image.Shape().type == SampleType::Uint16;
  for (std::uint64_t at = 0; at < columns; ++at, pixels += kShownBytes) {
    std::uint16_t sample = from[at];
    if (isWide) std::memcpy(&sample, from + 2 * at, sizeof sample);
    std::copy(colors[sample].begin(), colors[sample].end(), pixels);
    pixels[3] = 255;
  }
}

/** A row of one channel in 8 bits. */
const std::uint8_t *WideShown::LevelsOf(std::size_t channel, std::uint64_t row) {
  const Channel &shown = channels[channel];
  const std::uint8_t *const from = SamplesOf(channel, row);
  std::vector<std::uint8_t> &levels = buffers[channel];
  levels.resize(columns);
  if (shown.levels.empty()) {
    values.resize(columns);
    ChooseValues(image.Shape().type)(from, columns, values.data());
    std::transform(values.begin(), values.end(), levels.begin(),
                   [&](double value) { return shown.stretch.Map(value); });
  } else if (image.Shape().type == SampleType::Uint8) {
    for (std::uint64_t at = 0; at < columns; ++at) levels[at] = shown.levels[from[at]];
  } else {
    for (std::uint64_t at = 0; at < columns; ++at) {
      std::uint16_t sample = 0;
      std::memcpy(&sample, from + 2 * at, sizeof sample);
      levels[at] = shown.levels[sample];
    }
  }
  return levels.data();
}

/** A pixel is a pad pixel where all of its bands have the pad value. */
void WideShown::ClearPads(std::uint64_t row, std::uint8_t *pixels) const {
  if (!pad.Exists()) return;
  const std::uint64_t bytes = BytesOf(image.Shape().type);
  for (std::uint64_t at = 0; at < columns; ++at, pixels += kShownBytes) {
    bool isPad = true;
    for (std::size_t channel = 0; channel < channels.size() && isPad; ++channel) {
      isPad = pad.Is(SamplesOf(channel, row) + at * bytes);
    }
    if (isPad) std::memset(pixels, 0, kShownBytes);
  }
}

}  // namespace ksntfx
