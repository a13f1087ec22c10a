#include "ksvect/cgm/cells.h"

#include <algorithm>

namespace ksvect::cgm {
namespace {

constexpr std::int32_t kLocalPrecisions[] = {0, 1, 2, 4, 8, 16, 24, 32};

std::uint64_t BitsOfRow(const CellLayout &layout, const Coding &coding) {
  return std::uint64_t{layout.columns} * layout.bits * (coding.directColor ? ComponentsOf(coding.colorModel) : 1);
}

/** Reads numbers of 1 to 32 bits, which don't keep to bytes. */
class BitReader {
 public:
  BitReader(std::span<const std::uint8_t> bytes, std::size_t start) : data(bytes), next(start) {}

  std::uint32_t Get(unsigned bits) {
    for (; held < bits; held += 8) {
      if (next >= data.size()) {
        good = false;
        return 0;
      }
      window = window << 8 | data[next++];
    }
    held -= bits;
    return static_cast<std::uint32_t>(window >> held & ((std::uint64_t{1} << bits) - 1));
  }

  void ToWord() {
    held = 0;
    next += next % 2;
  }

  bool Good() const { return good; }

 private:
  std::span<const std::uint8_t> data;
  std::size_t next;
  std::uint64_t window = 0;
  unsigned held = 0;
  bool good = true;
};

class CellReader {
 public:
  CellReader(const Parameters &parameters, const CellLayout &cells, const Coding &valueCoding)
      : bits(parameters.All(), parameters.Position()), layout(cells), coding(valueCoding) {
    // Components of another precision than all colours have an extent of their own.
    extent = layout.bits == 8 * coding.colorBytes ? coding.Extent() : FullExtent(layout.bits);
  }

  bool Row(std::span<std::uint32_t> row) {
    if (layout.alignedRows) bits.ToWord();
    if (layout.runs) return RowOfRuns(row);
    for (std::uint32_t &cell : row) cell = Value();
    return bits.Good();
  }

 private:
  std::uint32_t Value() {
    if (!coding.directColor) return bits.Get(layout.bits);
    Components components = {};
    for (unsigned i = 0; i < ComponentsOf(coding.colorModel); ++i) components[i] = bits.Get(layout.bits);
    return ColorOf(components, extent, coding.colorModel);
  }

  bool RowOfRuns(std::span<std::uint32_t> row) {
    while (!row.empty() && bits.Good()) {
      const std::size_t count = std::min<std::size_t>(bits.Get(8 * coding.integerBytes), row.size());
      std::ranges::fill(row.first(count), Value());
      row = row.subspan(count);
    }
    return bits.Good();
  }

  BitReader bits;
  const CellLayout &layout;
  const Coding &coding;
  ColorExtent extent;
};

}  // namespace

bool ReadLayout(Parameters &parameters, const Coding &coding, CellLayout &layout) {
  const std::int32_t columns = parameters.Integer();
  const std::int32_t rows = parameters.Integer();
  const std::int32_t precision = parameters.Integer();
  const bool known = std::ranges::find(kLocalPrecisions, precision) != std::end(kLocalPrecisions);
  if (columns <= 0 || rows <= 0 || !known) parameters.Fail(SkipReason::BadValue);
  if (!parameters.Good()) return false;
  layout.columns = static_cast<std::uint32_t>(columns);
  layout.rows = static_cast<std::uint32_t>(rows);
  const unsigned usual = 8 * (coding.directColor ? coding.colorBytes : coding.colorIndexBytes);
  layout.bits = precision == 0 ? usual : static_cast<unsigned>(precision);
  return true;
}

std::uint64_t EndOfCells(const CellLayout &layout, const Coding &coding, std::uint64_t position) {
  const std::uint64_t rowBits = BitsOfRow(layout, coding);
  if (!layout.alignedRows) return position + (rowBits * layout.rows + 7) / 8;
  const std::uint64_t rowBytes = (rowBits + 7) / 8;
  // The last row needs no padding.
  return layout.rows == 0 ? position : position + position % 2 + (rowBytes + 1) / 2 * 2 * (layout.rows - 1) + rowBytes;
}

std::vector<std::uint32_t> ReadCells(Parameters &parameters, const CellLayout &layout, const Coding &coding) {
  std::vector<std::uint32_t> cells(layout.Cells());
  CellReader reader(parameters, layout, coding);
  for (std::uint32_t row = 0; row < layout.rows; ++row) {
    if (!reader.Row(std::span(cells).subspan(std::size_t{row} * layout.columns, layout.columns))) {
      parameters.Fail(SkipReason::TooShort);
      return {};
    }
  }
  return cells;
}

}  // namespace ksvect::cgm
