#include "png_rows.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>

namespace ntf {
namespace {

/** The filters to try, by their numbers in the file. */
enum PngFilter : std::uint8_t { kNone, kLeft, kAbove };

/** Subtracts eight bytes at once, each from its counterpart, without borrows between them. */
std::uint64_t Differences(std::uint64_t bytes, std::uint64_t others) {
  constexpr std::uint64_t kTopBits = 0x8080808080808080;
  return ((bytes | kTopBits) - (others & ~kTopBits)) ^ ((bytes ^ ~others) & kTopBits);
}

void PutDifferences(const std::uint8_t *bytes, const std::uint8_t *others, std::size_t count, std::uint8_t *to) {
  std::size_t at = 0;
  for (; at + sizeof(std::uint64_t) <= count; at += sizeof(std::uint64_t)) {
    std::uint64_t eight = 0;
    std::uint64_t eightOthers = 0;
    std::memcpy(&eight, bytes + at, sizeof eight);
    std::memcpy(&eightOthers, others + at, sizeof eightOthers);
    eight = Differences(eight, eightOthers);
    std::memcpy(to + at, &eight, sizeof eight);
  }
  for (; at < count; ++at) to[at] = static_cast<std::uint8_t>(bytes[at] - others[at]);
}

void FilterRow(const PngRows &rows, std::size_t row, PngFilter filter, std::uint8_t *to) {
  const std::uint8_t *const above = rows.bytes.data() + row * rows.rowBytes;
  const std::uint8_t *const pixels = above + rows.rowBytes;
  *to++ = filter;
  switch (filter) {
    case kNone:
      std::memcpy(to, pixels, rows.rowBytes);
      break;
    case kLeft:
      std::memcpy(to, pixels, rows.pixelBytes);
      PutDifferences(pixels + rows.pixelBytes, pixels, rows.rowBytes - rows.pixelBytes, to + rows.pixelBytes);
      break;
    case kAbove:
      PutDifferences(pixels, above, rows.rowBytes, to);
      break;
  }
}

/** The size in bits of the best code for single bytes: their entropy. */
double BitsOf(const std::vector<std::uint8_t> &bytes) {
  std::array<std::uint32_t, 256> counts{};
  for (const std::uint8_t byte : bytes) ++counts[byte];
  const auto all = static_cast<double>(bytes.size());
  double bits = 0;
  for (const std::uint32_t count : counts) {
    if (count != 0) bits += count * std::log2(all / count);
  }
  return bits;
}

/** The best filter for the row in the middle is good for its neighbours. */
PngFilter ChooseFilter(const PngRows &rows) {
  if (rows.pixelBytes == 0) return kNone;
  std::vector<std::uint8_t> filtered(rows.rowBytes + 1);
  PngFilter best = kNone;
  double least = 0;
  for (const PngFilter filter : {kNone, kLeft, kAbove}) {
    FilterRow(rows, rows.Count() / 2, filter, filtered.data());
    const double bits = BitsOf(filtered);
    if (filter == kNone || bits < least) {
      best = filter;
      least = bits;
    }
  }
  return best;
}

}  // namespace

void FilterRows(const PngRows &rows, std::vector<std::uint8_t> &filtered) {
  const PngFilter filter = ChooseFilter(rows);
  filtered.resize((rows.rowBytes + 1) * rows.Count());
  for (std::size_t row = 0; row < rows.Count(); ++row) {
    FilterRow(rows, row, filter, filtered.data() + row * (rows.rowBytes + 1));
  }
}

}  // namespace ntf
