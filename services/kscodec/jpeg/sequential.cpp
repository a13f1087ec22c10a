// Sequential JPEG with a cosine transform (ITU-T T.81, annexes A and F), of 8 and of 12 bits.
#include "kscodec/jpeg/picture.h"
#include "kscodec/jpeg/quantisation.h"

#include <algorithm>
#include <array>

namespace kscodec::jpeg {

namespace {

using Block = std::array<float, kCoefficients>;

/** Half the cosines of the multiples of pi / 16; the first one is that of pi / 4, for the constant part. */
constexpr std::array<float, kSide> kHalfCosines = {0.35355339059F, 0.49039264020F, 0.46193976626F, 0.41573480615F,
                                                   0.35355339059F, 0.27778511651F, 0.19134171618F, 0.09754516101F};

/** Half the cosine of (2 * place + 1) * frequency * pi / 16. */
constexpr float Weight(std::uint32_t place, std::uint32_t frequency) {
  if (frequency == 0) return kHalfCosines[0];
  const std::uint32_t angle = (2 * place + 1) * frequency % 32;
  const std::uint32_t folded = angle > 16 ? 32 - angle : angle;
  if (folded == 8) return 0;
  return folded < 8 ? kHalfCosines[folded] : -kHalfCosines[16 - folded];
}

using Weights = std::array<std::array<float, kSide>, kSide / 2>;

/** By place, in the upper half of a column, and frequency. */
constexpr Weights kWeights = [] {
  Weights weights = {};
  for (std::uint32_t place = 0; place < kSide / 2; ++place) {
    for (std::uint32_t frequency = 0; frequency < kSide; ++frequency) {
      weights[place][frequency] = Weight(place, frequency);
    }
  }
  return weights;
}();

/** Transforms each column. Frequencies of even number are alike in both halves of it, and odd ones opposite. */
void TransformColumns(const Block &from, Block &to) {
  for (std::uint32_t place = 0; place < kSide / 2; ++place) {
    float *const near = to.data() + std::size_t{place} * kSide;
    float *const far = to.data() + std::size_t{kSide - 1 - place} * kSide;
    for (std::uint32_t x = 0; x < kSide; ++x) {
      float even = 0;
      float odd = 0;
      for (std::uint32_t frequency = 0; frequency < kSide; frequency += 2) {
        even += kWeights[place][frequency] * from[frequency * kSide + x];
        odd += kWeights[place][frequency + 1] * from[(frequency + 1) * kSide + x];
      }
      near[x] = even + odd;
      far[x] = even - odd;
    }
  }
}

void Transpose(const Block &from, Block &to) {
  for (std::uint32_t y = 0; y < kSide; ++y) {
    for (std::uint32_t x = 0; x < kSide; ++x) to[x * kSide + y] = from[y * kSide + x];
  }
}

/** One component of a scan. */
class SequentialPart {
 public:
  SequentialPart(const ScanPart &part, const Scan &scan, const Tables &tables, std::uint32_t bits)
      : plane(*part.plane),
        dc(tables.dc[part.dc]),
        ac(tables.ac[part.ac]),
        quantisation(tables.quantisation[plane.quantisation]),
        across(scan.IsInterleaved() ? plane.across : 1),
        down(scan.IsInterleaved() ? plane.down : 1),
        middle(static_cast<float>(1U << (bits - 1)) + kHalf),
        greatest(static_cast<float>((1U << bits) - 1) + kHalf) {}

  /** Takes the blocks of one unit. False for bits that are no code, or coefficients beyond the last. */
  bool TakeUnit(BitReader &bits, std::uint32_t unit) {
    for (std::uint32_t y = 0; y < down; ++y) {
      std::uint16_t *const samples = plane.Row(plane.decodedRows + std::uint64_t{y} * kSide);
      for (std::uint32_t x = 0; x < across; ++x) {
        if (!TakeBlock(bits, samples + (std::size_t{unit} * across + x) * kSide)) return false;
      }
    }
    return true;
  }

  void EndRow() { plane.decodedRows += down * kSide; }

  /** The next constant part is coded by itself. */
  void Restart() { constant = 0; }

 private:
  /** Added before the fraction is cut off, so that the result is rounded. */
  static constexpr float kHalf = 0.5F;

  bool TakeBlock(BitReader &bits, std::uint16_t *samples) {
    coefficients.fill(0);
    if (!TakeConstant(bits)) return false;
    std::uint32_t last = 0;
    for (std::uint32_t i = 1; i < kCoefficients; ++i) {
      bits.Fill();
      const int symbol = ac.Decode(bits);
      if (symbol < 0) return false;
      const std::uint32_t run = static_cast<std::uint32_t>(symbol) >> 4;
      const std::uint32_t category = static_cast<std::uint32_t>(symbol) & 0xF;
      constexpr std::uint32_t kSixteenZeros = 15;
      if (category == 0 && run != kSixteenZeros) break;  // the end of the block
      i += run;
      if (i >= kCoefficients) return false;
      if (category == 0) continue;
      coefficients[kZigzag[i]] = static_cast<float>(bits.Number(category) * std::int32_t{quantisation[i]});
      last = i;
    }
    if (plane.isWanted) Put(last == 0, samples);
    return true;
  }

  bool TakeConstant(BitReader &bits) {
    constexpr int kMostBits = 15;
    bits.Fill();
    const int category = dc.Decode(bits);
    if (category < 0 || category > kMostBits) return false;
    const std::int32_t sum = constant + bits.Number(static_cast<std::uint32_t>(category));
    constant = static_cast<std::int16_t>(sum);
    coefficients[0] = static_cast<float>(constant * std::int32_t{quantisation[0]});
    return true;
  }

  std::uint16_t Sample(float value) const {
    return static_cast<std::uint16_t>(std::clamp(value + middle, 0.0F, greatest));
  }

  void Put(bool isConstant, std::uint16_t *samples) {
    if (isConstant) {
      const std::uint16_t sample = Sample(coefficients[0] / kSide);
      for (std::uint32_t y = 0; y < kSide; ++y, samples += plane.stride) std::fill_n(samples, kSide, sample);
      return;
    }
    Block columns;
    Block turned;
    TransformColumns(coefficients, columns);
    Transpose(columns, turned);
    TransformColumns(turned, columns);
    Transpose(columns, turned);
    for (std::uint32_t y = 0; y < kSide; ++y, samples += plane.stride) {
      for (std::uint32_t x = 0; x < kSide; ++x) samples[x] = Sample(turned[y * kSide + x]);
    }
  }

  Plane &plane;
  const HuffmanDecoder &dc;
  const HuffmanDecoder &ac;
  const std::array<std::uint16_t, kCoefficients> &quantisation;
  std::uint32_t across;
  std::uint32_t down;
  float middle;
  float greatest;
  std::int16_t constant = 0;
  Block coefficients;
};

/** Walks over the units of a scan. */
class SequentialScan {
 public:
  SequentialScan(const Tables &scanTables, BitReader &reader) : tables(scanTables), bits(reader) {}

  std::vector<SequentialPart> parts;

  /** False where the data end, or go wrong, before the row does. */
  bool TakeRow(std::uint32_t units) {
    for (std::uint32_t unit = 0; unit < units; ++unit) {
      if (tables.restartInterval != 0 && taken == tables.restartInterval && !Restart()) return false;
      ++taken;
      for (SequentialPart &part : parts) {
        if (!part.TakeUnit(bits, unit)) return false;
      }
    }
    return !bits.IsBeyondEnd();
  }

  bool IsBroken() const { return isBroken || bits.IsBeyondEnd(); }

 private:
  bool Restart() {
    isBroken = bits.IsBeyondEnd() || !bits.Restart();
    for (SequentialPart &part : parts) part.Restart();
    taken = 0;
    return !isBroken;
  }

  const Tables &tables;
  BitReader &bits;
  std::uint32_t taken = 0; /**< units since the last restart */
  bool isBroken = false;
};

}  // namespace

Status DecodeSequential(const Scan &scan, const Tables &tables, Picture &picture, BitReader &bits) {
  SequentialScan walk(tables, bits);
  for (const ScanPart &part : scan.parts) {
    const std::uint32_t number = part.plane->quantisation;
    if (number >= tables.quantisation.size() || !tables.hasQuantisation[number]) return ERROR_FILE_FORMAT;
    walk.parts.emplace_back(part, scan, tables, picture.Bits());
  }
  const Units units = picture.UnitsOf(scan);
  for (std::uint32_t row = 0; row < units.down; ++row) {
    if (!walk.TakeRow(units.across)) return walk.IsBroken() ? SUCCESS : ERROR_FILE_FORMAT;
    for (SequentialPart &part : walk.parts) part.EndRow();
    if (!picture.EndRow()) return SUCCESS;
  }
  return SUCCESS;
}

}  // namespace kscodec::jpeg
