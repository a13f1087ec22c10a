#include "kscodec/jpeg/entropy.h"

#include "kscodec/jpeg/markers.h"

#include <algorithm>
#include <cstring>

namespace kscodec::jpeg {

namespace {

constexpr std::uint8_t kMarkerPrefix = 0xFF;

/** Whether none of four bytes may begin a marker. */
bool AreData(const std::uint8_t *bytes) {
  std::uint32_t four = 0;
  std::memcpy(&four, bytes, sizeof four);
  // A byte of FF is one of 00 in the inverse, whose borrow shows in its top bit.
  return (((~four) - 0x01010101U) & four & 0x80808080U) == 0;
}

}  // namespace

void BitReader::FillMore() {
  if (end - at >= 4 && AreData(at)) {
    const std::uint32_t four =
        std::uint32_t{at[0]} << 24 | std::uint32_t{at[1]} << 16 | std::uint32_t{at[2]} << 8 | at[3];
    window |= std::uint64_t{four} << (kWindow - 32 - count);
    count += 32;
    at += 4;
    return;
  }
  while (count <= kWindow - 8) {
    const bool isMarker = at == end || (*at == kMarkerPrefix && (end - at < 2 || at[1] != 0));
    if (isMarker) {
      padding += 8;
      count += 8;
      continue;
    }
    window |= std::uint64_t{*at} << (kWindow - 8 - count);
    count += 8;
    at += *at == kMarkerPrefix ? 2 : 1;
  }
}

bool BitReader::Restart() {
  while (end - at >= 2) {
    if (at[0] != kMarkerPrefix || at[1] == 0 || at[1] == kMarkerPrefix) {
      ++at;
      continue;
    }
    if (at[1] < kRst0 || at[1] > kRst7) return false;
    *this = BitReader({at + 2, end});
    return true;
  }
  return false;
}

bool HuffmanDecoder::Build(const HuffmanTable &table) {
  lookup = {};
  std::uint32_t code = 0;  // the next one, of the length that is looked at
  std::uint32_t place = 0;
  for (std::uint32_t length = 1; length <= kLongest; ++length) {
    const std::uint32_t codes = table.counts[length - 1];
    if (place + codes > table.symbols.size() || code + codes > 1U << length) return false;
    firstSymbols[length] = static_cast<std::int32_t>(place) - static_cast<std::int32_t>(code);
    for (std::uint32_t i = 0; i < codes; ++i, ++code, ++place) {
      symbols[place] = table.symbols[place];
      if (length > kLookahead) continue;
      const std::uint32_t spread = kLookahead - length;
      const Entry entry = {static_cast<std::uint8_t>(length), symbols[place]};
      std::fill_n(lookup.begin() + (code << spread), 1U << spread, entry);
    }
    ends[length] = code << (kLongest - length);
    code <<= 1;
  }
  return true;
}

int HuffmanDecoder::DecodeLong(BitReader &bits) const {
  const std::uint32_t next = bits.Peek(kLongest);
  for (std::uint32_t length = kLookahead + 1; length <= kLongest; ++length) {
    if (next >= ends[length]) continue;
    bits.Skip(length);
    const auto code = static_cast<std::int32_t>(next >> (kLongest - length));
    return symbols[static_cast<std::uint32_t>(firstSymbols[length] + code)];
  }
  return -1;
}

}  // namespace kscodec::jpeg
