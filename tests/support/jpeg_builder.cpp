#include "jpeg_builder.h"

#include "bit_writer.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <numbers>

namespace {

using Bytes = std::vector<std::uint8_t>;

constexpr std::uint32_t kSide = 8;

JpegSampling SamplingOf(const JpegSpec &spec, std::uint32_t component) {
  return component < spec.sampling.size() ? spec.sampling[component] : JpegSampling{};
}

JpegSampling MostOf(const JpegSpec &spec) {
  JpegSampling most;
  for (const JpegSampling &sampling : spec.sampling) {
    most = {std::max(most.across, sampling.across), std::max(most.down, sampling.down)};
  }
  return most;
}

std::uint32_t DivideUp(std::uint32_t value, std::uint32_t by) {
  return (value + by - 1) / by;
}

void PutSegment(Bytes &stream, std::uint8_t marker, const Bytes &body) {
  stream.insert(stream.end(), {0xFF, marker});
  PutBigEndian(stream, body.size() + 2, 2);
  stream.insert(stream.end(), body.begin(), body.end());
}

/**
 * Codes for categories: of 1 to 16 bits, so that all lengths there are occur, with the last one of 16 bits twice in
 * lossless streams, which have a category more. Codes for AC coefficients: the end of a block in one bit, and all
 * others in ten.
 */
constexpr std::uint32_t kCategories = 17;
constexpr std::uint32_t kLongCode = 10;

void PutTables(Bytes &stream, const JpegSpec &spec) {
  Bytes dc(17, 1);
  dc[0] = 0;
  if (spec.lossless) dc[16] = 2;
  const std::uint32_t symbols = spec.lossless ? kCategories : kCategories - 1;
  for (std::uint32_t symbol = 0; symbol < symbols; ++symbol) dc.push_back(static_cast<std::uint8_t>(symbol));
  PutSegment(stream, 0xC4, dc);
  if (spec.lossless) return;
  Bytes ac(17, 0);
  ac[0] = 0x10;
  ac[1] = 1;
  ac[kLongCode] = 255;
  for (std::uint32_t symbol = 0; symbol < 256; ++symbol) ac.push_back(static_cast<std::uint8_t>(symbol));
  PutSegment(stream, 0xC4, ac);
  Bytes quantisation = {static_cast<std::uint8_t>(spec.wideQuantisation ? 0x10 : 0)};
  for (std::uint32_t i = 0; i < kSide * kSide; ++i) PutBigEndian(quantisation, 1, spec.wideQuantisation ? 2 : 1);
  PutSegment(stream, 0xDB, quantisation);
}

void PutFrame(Bytes &stream, const JpegSpec &spec) {
  Bytes frame = {static_cast<std::uint8_t>(spec.bits)};
  PutBigEndian(frame, spec.height, 2);
  PutBigEndian(frame, spec.width, 2);
  frame.push_back(static_cast<std::uint8_t>(spec.components));
  for (std::uint32_t i = 0; i < spec.components; ++i) {
    const JpegSampling sampling = SamplingOf(spec, i);
    frame.insert(frame.end(), {static_cast<std::uint8_t>(i + 1),
                               static_cast<std::uint8_t>(sampling.across << 4 | sampling.down), 0});
  }
  PutSegment(stream, spec.lossless ? 0xC3 : 0xC1, frame);
}

/** One component of a scan. */
class Coder {
 public:
  Coder(const JpegSpec &source, std::uint32_t number, bool interleaved)
      : spec(source), component(number), size(JpegSizeOf(source, number)) {
    if (interleaved) unit = SamplingOf(source, number);
  }

  void Restart(std::uint32_t unitRow) {
    firstRow = unitRow * unit.down;
    constant = 0;
  }

  void PutUnit(BitWriter &bits, std::uint32_t column, std::uint32_t row) {
    for (std::uint32_t y = row * unit.down; y < (row + 1) * unit.down; ++y) {
      for (std::uint32_t x = column * unit.across; x < (column + 1) * unit.across; ++x) {
        if (spec.lossless) {
          PutDifference(bits, static_cast<std::int16_t>(SampleAt(x, y) - Prediction(x, y)), true);
        } else {
          PutBlock(bits, x, y);
        }
      }
    }
  }

 private:
  /** The sample, or beyond the picture the nearest one. */
  std::int32_t SampleAt(std::uint32_t x, std::uint32_t y) const {
    const std::uint32_t value = spec.sample(component, std::min(x, size.across - 1), std::min(y, size.down - 1));
    return static_cast<std::int32_t>(value >> spec.pointTransform);
  }

  std::int32_t Prediction(std::uint32_t x, std::uint32_t y) const {
    if (x == 0 && y == firstRow) return 1 << (spec.bits - spec.pointTransform - 1);
    if (y == firstRow) return SampleAt(x - 1, y);
    const std::int32_t above = SampleAt(x, y - 1);
    if (x == 0) return above;
    const std::int32_t left = SampleAt(x - 1, y);
    const std::int32_t corner = SampleAt(x - 1, y - 1);
    const std::array<std::int32_t, 8> predictions = {0,
                                                     left,
                                                     above,
                                                     corner,
                                                     left + above - corner,
                                                     left + ((above - corner) >> 1),
                                                     above + ((left - corner) >> 1),
                                                     (left + above) >> 1};
    return predictions[spec.predictor];
  }

  static std::uint32_t CategoryOf(std::int32_t value) {
    return static_cast<std::uint32_t>(std::bit_width(static_cast<std::uint32_t>(std::abs(value))));
  }

  static void PutNumber(BitWriter &bits, std::int32_t value, std::uint32_t category) {
    bits.Put(static_cast<std::uint32_t>(value > 0 ? value : value + (1 << category) - 1), category);
  }

  static void PutDifference(BitWriter &bits, std::int32_t value, bool wraps) {
    const std::uint32_t category = CategoryOf(value);
    // Ones and a zero, but for the last code.
    const std::uint32_t ones = std::min(category, kCategories - 1);
    bits.Put((1U << ones) - 1, ones);
    if (category < kCategories - 1) bits.Put(0, 1);
    if (!(wraps && category == kCategories - 1)) PutNumber(bits, value, category);
  }

  void PutBlock(BitWriter &bits, std::uint32_t blockX, std::uint32_t blockY) {
    std::array<std::int32_t, 64> values = {};
    for (std::uint32_t i = 0; i < values.size(); ++i) values[i] = Coefficient(blockX, blockY, i);
    PutDifference(bits, values[0] - constant, false);
    constant = values[0];
    std::uint32_t run = 0;
    for (std::uint32_t i = 1; i < values.size(); ++i, ++run) {
      if (values[i] == 0) continue;
      for (; run >= 16; run -= 16) PutSymbol(bits, 0xF0);
      const std::uint32_t category = CategoryOf(values[i]);
      PutSymbol(bits, run << 4 | category);
      PutNumber(bits, values[i], category);
      run = static_cast<std::uint32_t>(-1);
    }
    if (values[63] == 0) PutSymbol(bits, 0);
  }

  static void PutSymbol(BitWriter &bits, std::uint32_t symbol) {
    if (symbol == 0) {
      bits.Put(0, 1);
    } else {
      bits.Put((1U << (kLongCode - 1)) + symbol - 1, kLongCode);
    }
  }

  /** The coefficient at a place of the zigzag order, by the sum that defines it. */
  std::int32_t Coefficient(std::uint32_t blockX, std::uint32_t blockY, std::uint32_t index) const {
    static constexpr std::array<std::uint8_t, 64> kPlaces = {
        0,  1,  8,  16, 9,  2,  3,  10, 17, 24, 32, 25, 18, 11, 4,  5,  12, 19, 26, 33, 40, 48,
        41, 34, 27, 20, 13, 6,  7,  14, 21, 28, 35, 42, 49, 56, 57, 50, 43, 36, 29, 22, 15, 23,
        30, 37, 44, 51, 58, 59, 52, 45, 38, 31, 39, 46, 53, 60, 61, 54, 47, 55, 62, 63};
    const std::uint32_t u = kPlaces[index] % kSide;
    const std::uint32_t v = kPlaces[index] / kSide;
    const auto wave = [](std::uint32_t place, std::uint32_t frequency) {
      const double scale = frequency == 0 ? std::numbers::sqrt2 / 4 : 0.5;
      return scale * std::cos((2 * place + 1) * frequency * std::numbers::pi / 16);
    };
    double sum = 0;
    for (std::uint32_t y = 0; y < kSide; ++y) {
      for (std::uint32_t x = 0; x < kSide; ++x) {
        const std::int32_t sample = SampleAt(blockX * kSide + x, blockY * kSide + y) - (1 << (spec.bits - 1));
        sum += sample * wave(x, u) * wave(y, v);
      }
    }
    return static_cast<std::int32_t>(std::lround(sum));
  }

  const JpegSpec &spec;
  std::uint32_t component;
  JpegSampling size;
  JpegSampling unit;
  std::uint32_t firstRow = 0;
  std::int32_t constant = 0;
};

/** Closes the data of an interval: a zero behind each byte that looks like a marker. */
void PutEntropy(Bytes &stream, const Bytes &data) {
  for (const std::uint8_t byte : data) {
    stream.push_back(byte);
    if (byte == 0xFF) stream.push_back(0);
  }
}

void PutScan(Bytes &stream, const JpegSpec &spec, std::uint32_t first, std::uint32_t count) {
  Bytes header = {static_cast<std::uint8_t>(count)};
  for (std::uint32_t i = first; i < first + count; ++i)
    header.insert(header.end(), {static_cast<std::uint8_t>(i + 1), 0});
  header.push_back(static_cast<std::uint8_t>(spec.lossless ? spec.predictor : 0));
  header.push_back(spec.lossless ? 0 : 63);
  header.push_back(static_cast<std::uint8_t>(spec.pointTransform));
  const std::uint32_t side = spec.lossless ? 1 : kSide;
  const JpegSampling most = MostOf(spec);
  const JpegSampling one = JpegSizeOf(spec, first);
  const std::uint32_t unitsAcross = DivideUp(count > 1 ? spec.width : one.across, side * (count > 1 ? most.across : 1));
  const std::uint32_t unitsDown = DivideUp(count > 1 ? spec.height : one.down, side * (count > 1 ? most.down : 1));
  if (spec.restartRows != 0) {
    Bytes interval;
    PutBigEndian(interval, std::uint64_t{spec.restartRows} * unitsAcross, 2);
    PutSegment(stream, 0xDD, interval);
  }
  PutSegment(stream, 0xDA, header);
  std::vector<Coder> coders;
  for (std::uint32_t i = first; i < first + count; ++i) coders.emplace_back(spec, i, count > 1);
  Bytes data;
  BitWriter bits(data);
  for (std::uint32_t row = 0; row < unitsDown; ++row) {
    if (spec.restartRows != 0 && row != 0 && row % spec.restartRows == 0) {
      PutEntropy(stream, data);
      data.clear();
      bits.FillByte();
      stream.insert(stream.end(), {0xFF, static_cast<std::uint8_t>(0xD0 + (row / spec.restartRows - 1) % 8)});
      for (Coder &coder : coders) coder.Restart(row);
    }
    for (std::uint32_t column = 0; column < unitsAcross; ++column) {
      for (Coder &coder : coders) coder.PutUnit(bits, column, row);
    }
  }
  PutEntropy(stream, data);
}

}  // namespace

JpegSampling JpegSizeOf(const JpegSpec &spec, std::uint32_t component) {
  const JpegSampling most = MostOf(spec);
  const JpegSampling own = SamplingOf(spec, component);
  return {DivideUp(spec.width * own.across, most.across), DivideUp(spec.height * own.down, most.down)};
}

std::vector<std::uint8_t> EncodeJpeg(const JpegSpec &spec) {
  Bytes stream = {0xFF, 0xD8};
  PutTables(stream, spec);
  PutFrame(stream, spec);
  if (spec.eachAlone || spec.components > 4) {
    for (std::uint32_t i = 0; i < spec.components; ++i) PutScan(stream, spec, i, 1);
  } else {
    PutScan(stream, spec, 0, spec.components);
  }
  stream.insert(stream.end(), {0xFF, 0xD9});
  return stream;
}
