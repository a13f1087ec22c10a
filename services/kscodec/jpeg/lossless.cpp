// Lossless JPEG (ITU-T T.81, annex H): each sample is predicted from those beside and above it, and the difference is
// coded.
#include "kscodec/jpeg/picture.h"

#include <array>

namespace kscodec::jpeg {

namespace {

/** A row that differences are added up in. The numbers wrap at 16 bits, as the format asks. */
struct RowPair {
  std::uint16_t *row;         /**< differences, then samples */
  const std::uint16_t *above; /**< samples */
  std::uint32_t width;
};

/** Predicts from the left (a), above (b) and above left (c). */
template <int kPredictor>
std::int32_t Predict(std::int32_t a, std::int32_t b, std::int32_t c) {
  if constexpr (kPredictor == 1) return a;
  if constexpr (kPredictor == 2) return b;
  if constexpr (kPredictor == 3) return c;
  if constexpr (kPredictor == 4) return a + b - c;
  if constexpr (kPredictor == 5) return a + ((b - c) >> 1);
  if constexpr (kPredictor == 6) return b + ((a - c) >> 1);
  return (a + b) >> 1;
}

/** The first sample of a row is predicted from above, whatever the predictor. */
template <int kPredictor>
void AddUp(const RowPair &pair) {
  std::int32_t left = static_cast<std::uint16_t>(pair.row[0] + pair.above[0]);
  pair.row[0] = static_cast<std::uint16_t>(left);
  for (std::uint32_t x = 1; x < pair.width; ++x) {
    left = static_cast<std::uint16_t>(pair.row[x] + Predict<kPredictor>(left, pair.above[x], pair.above[x - 1]));
    pair.row[x] = static_cast<std::uint16_t>(left);
  }
}

/** A first row has none above it: all but its first sample are predicted from the left. */
void AddUpFirst(std::uint16_t *row, std::uint32_t width, std::uint32_t start) {
  std::uint32_t left = start;
  for (std::uint32_t x = 0; x < width; ++x) {
    left = static_cast<std::uint16_t>(left + row[x]);
    row[x] = static_cast<std::uint16_t>(left);
  }
}

constexpr std::array<void (*)(const RowPair &), 8> kAddUp = {nullptr,  AddUp<1>, AddUp<2>, AddUp<3>,
                                                             AddUp<4>, AddUp<5>, AddUp<6>, AddUp<7>};

/** One component of a scan. */
class LosslessPart {
 public:
  LosslessPart(const ScanPart &part, const Scan &scan, const Tables &tables, std::uint32_t bits, std::uint32_t units)
      : plane(*part.plane),
        codes(tables.dc[part.dc]),
        across(scan.IsInterleaved() ? plane.across : 1),
        down(scan.IsInterleaved() ? plane.down : 1),
        width(units * across),
        start(1U << (bits - scan.low - 1)),
        addUp(kAddUp[scan.first]) {
    plane.shift = scan.low;
  }

  /** Takes the differences of one unit. False for bits that are no code. */
  bool TakeUnit(BitReader &bits, std::uint32_t unit) {
    for (std::uint32_t y = 0; y < down; ++y) {
      std::uint16_t *const row = plane.Row(plane.decodedRows + y) + std::size_t{unit} * across;
      for (std::uint32_t x = 0; x < across; ++x) {
        if (!TakeDifference(bits, row + x)) return false;
      }
    }
    return true;
  }

  /** Takes a row of units of one sample each. */
  bool TakeRow(BitReader &bits) {
    std::uint16_t *const row = plane.Row(plane.decodedRows);
    for (std::uint32_t x = 0; x < width; ++x) {
      if (!TakeDifference(bits, row + x)) return false;
    }
    return true;
  }

  /** Makes samples of the differences of a row of units. */
  void EndRow(bool isFirst) {
    for (std::uint32_t y = 0; y < down; ++y, ++plane.decodedRows) {
      std::uint16_t *const row = plane.Row(plane.decodedRows);
      if (isFirst && y == 0) {
        AddUpFirst(row, width, start);
      } else {
        addUp({row, plane.Row(plane.decodedRows + plane.heldRows - 1), width});
      }
    }
  }

 private:
  bool TakeDifference(BitReader &bits, std::uint16_t *difference) const {
    constexpr int kWithoutNumber = 16;
    bits.Fill();
    const int category = codes.Decode(bits);
    if (static_cast<std::uint32_t>(category) >= kWithoutNumber) {
      *difference = 0x8000;
      return category == kWithoutNumber;
    }
    *difference = static_cast<std::uint16_t>(bits.Number(static_cast<std::uint32_t>(category)));
    return true;
  }

  Plane &plane;
  const HuffmanDecoder &codes;
  std::uint32_t across;
  std::uint32_t down;
  std::uint32_t width; /**< samples of a row, those beyond the picture included */
  std::uint32_t start;
  void (*addUp)(const RowPair &);
};

bool TakeRowOfUnits(std::vector<LosslessPart> &parts, std::uint32_t units, BitReader &bits) {
  if (parts.size() == 1) return parts.front().TakeRow(bits);
  for (std::uint32_t unit = 0; unit < units; ++unit) {
    for (LosslessPart &part : parts) {
      if (!part.TakeUnit(bits, unit)) return false;
    }
  }
  return true;
}

}  // namespace

Status DecodeLossless(const Scan &scan, const Tables &tables, Picture &picture, BitReader &bits) {
  if (scan.first == 0 || scan.first >= kAddUp.size() || scan.low >= picture.Bits()) return ERROR_FILE_FORMAT;
  const Units units = picture.UnitsOf(scan);
  // Intervals are whole rows.
  if (tables.restartInterval % units.across != 0) return ERROR_FILE_FORMAT;
  const std::uint32_t rowsOfInterval = tables.restartInterval / units.across;
  std::vector<LosslessPart> parts;
  for (const ScanPart &part : scan.parts) parts.emplace_back(part, scan, tables, picture.Bits(), units.across);
  for (std::uint32_t row = 0; row < units.down; ++row) {
    const bool restarts = rowsOfInterval != 0 && row % rowsOfInterval == 0;
    if (restarts && row != 0 && !bits.Restart()) return SUCCESS;
    const bool isSound = TakeRowOfUnits(parts, units.across, bits);
    if (bits.IsBeyondEnd()) return SUCCESS;
    if (!isSound) return ERROR_FILE_FORMAT;
    for (LosslessPart &part : parts) part.EndRow(row == 0 || restarts);
    if (!picture.EndRow()) return SUCCESS;
  }
  return SUCCESS;
}

}  // namespace kscodec::jpeg
