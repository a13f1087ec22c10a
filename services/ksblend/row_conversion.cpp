#include "ksblend/row_conversion.h"

#include "ksblend/bit_copy.h"
#include "ksblend/gray_rows.h"
#include "kscore/pixel_forms.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <iterator>

namespace ksblend {
namespace {

using kscore::Bgr;

void PutBgr24(std::uint8_t *pixel, Bgr color) {
  pixel[0] = static_cast<std::uint8_t>(color);
  pixel[1] = static_cast<std::uint8_t>(color >> 8);
  pixel[2] = static_cast<std::uint8_t>(color >> 16);
}

/**
 * Writes `count` pixels `colorAt(i)` of three bytes. Two pixels go out in one store of eight bytes, whose last two
 * bytes are written again by the pixel behind; so the last pixels of the run, which have none behind, go byte by byte.
 */
template <class ColorAt>
void PutBgr24Run(std::uint8_t *out, std::uint64_t count, const ColorAt &colorAt) {
  std::uint64_t i = 0;
  for (; i + 2 < count; i += 2) {
    const std::uint64_t pair = std::uint64_t{colorAt(i)} | std::uint64_t{colorAt(i + 1)} << 24;
    std::memcpy(out + i * 3, &pair, sizeof pair);
  }
  for (; i < count; ++i) PutBgr24(out + i * 3, colorAt(i));
}

/** Rows of forms whose pixels select one of up to 256 levels. */
template <class Source>
struct FromLevels {
  static void ToByte(const RowTables &tables, const std::uint8_t *source, std::uint64_t sourceX, std::uint8_t *target,
                     std::uint64_t targetX, std::uint64_t count) {
    std::uint8_t *const out = target + targetX;
    for (std::uint64_t i = 0; i < count; ++i) out[i] = tables.indices[Source::Level(source, sourceX + i)];
  }

  static void ToBgr24(const RowTables &tables, const std::uint8_t *source, std::uint64_t sourceX, std::uint8_t *target,
                      std::uint64_t targetX, std::uint64_t count) {
    std::uint64_t done = 0;
    if constexpr (Source::bits % 8 == 0) {
      constexpr unsigned kBytes = Source::bits / 8;
      if (tables.showGrays) done = PutGrays<kBytes>(target + targetX * 3, source + sourceX * kBytes, count);
    }
    PutBgr24Run(target + (targetX + done) * 3, count - done,
                [&](std::uint64_t i) { return tables.colors[Source::Level(source, sourceX + done + i)]; });
  }

  static void ToBgr32(const RowTables &tables, const std::uint8_t *source, std::uint64_t sourceX, std::uint8_t *target,
                      std::uint64_t targetX, std::uint64_t count) {
    std::uint8_t *const out = target + targetX * 4;
    for (std::uint64_t i = 0; i < count; ++i) {
      std::memcpy(out + i * 4, &tables.colors[Source::Level(source, sourceX + i)], sizeof(Bgr));
    }
  }
};

/** For each byte of eight pixels of a bit: FF in the bytes of those that are 1, the leftmost in the lowest byte. */
constexpr std::array<std::uint64_t, 256> kOnesOfByte = [] {
  std::array<std::uint64_t, 256> ones = {};
  for (std::uint32_t byte = 0; byte < ones.size(); ++byte) {
    for (std::uint32_t pixel = 0; pixel < 8; ++pixel) {
      if ((byte >> (7 - pixel) & 1) != 0) ones[byte] |= std::uint64_t{0xFF} << (8 * pixel);
    }
  }
  return ones;
}();

/** Two levels, eight pixels at a time. */
template <>
void FromLevels<kscore::Index1>::ToByte(const RowTables &tables, const std::uint8_t *source, std::uint64_t sourceX,
                                        std::uint8_t *target, std::uint64_t targetX, std::uint64_t count) {
  constexpr std::uint64_t kEach = 0x0101010101010101;
  const std::uint64_t zeros = tables.indices[0] * kEach;
  const std::uint64_t changes = zeros ^ tables.indices[1] * kEach;
  std::uint8_t *const out = target + targetX;
  std::uint64_t i = 0;
  for (; i < count && (sourceX + i) % 8 != 0; ++i) out[i] = tables.indices[kscore::Index1::Level(source, sourceX + i)];
  for (; i + 8 <= count; i += 8) {
    const std::uint64_t pixels = zeros ^ (kOnesOfByte[source[(sourceX + i) / 8]] & changes);
    std::memcpy(out + i, &pixels, sizeof pixels);
  }
  for (; i < count; ++i) out[i] = tables.indices[kscore::Index1::Level(source, sourceX + i)];
}

/** Rows of forms whose pixels are colours. */
template <class Source>
struct FromColors {
  static void ToGray(const RowTables &, const std::uint8_t *source, std::uint64_t sourceX, std::uint8_t *target,
                     std::uint64_t targetX, std::uint64_t count) {
    std::uint8_t *const out = target + targetX;
    for (std::uint64_t i = 0; i < count; ++i) {
      out[i] = static_cast<std::uint8_t>(kscore::BrightnessOf(Source::Value(source, sourceX + i)));
    }
  }

  static void ToIndex(const RowTables &tables, const std::uint8_t *source, std::uint64_t sourceX, std::uint8_t *target,
                      std::uint64_t targetX, std::uint64_t count) {
    std::uint8_t *const out = target + targetX;
    for (std::uint64_t i = 0; i < count; ++i) out[i] = tables.nearest->IndexOf(Source::Value(source, sourceX + i));
  }

  static void ToBgr24(const RowTables &, const std::uint8_t *source, std::uint64_t sourceX, std::uint8_t *target,
                      std::uint64_t targetX, std::uint64_t count) {
    PutBgr24Run(target + targetX * 3, count, [&](std::uint64_t i) { return Source::Value(source, sourceX + i); });
  }

  static void ToBgr32(const RowTables &, const std::uint8_t *source, std::uint64_t sourceX, std::uint8_t *target,
                      std::uint64_t targetX, std::uint64_t count) {
    std::uint8_t *const out = target + targetX * 4;
    for (std::uint64_t i = 0; i < count; ++i) {
      const Bgr color = Source::Value(source, sourceX + i);
      std::memcpy(out + i * 4, &color, sizeof color);
    }
  }
};

/** The row functions of one source form, in the order of TargetForm. */
template <class From>
constexpr RowFunction kRowsFromLevels[] = {From::ToByte, From::ToByte, From::ToBgr24, From::ToBgr32};

template <class From>
constexpr RowFunction kRowsFromColors[] = {From::ToGray, From::ToIndex, From::ToBgr24, From::ToBgr32};

void CopyBytes(const RowTables &tables, const std::uint8_t *source, std::uint64_t sourceX, std::uint8_t *target,
               std::uint64_t targetX, std::uint64_t count) {
  const std::uint64_t bytes = tables.bitsPerPixel / 8;
  std::memmove(target + targetX * bytes, source + sourceX * bytes, count * bytes);
}

void CopyTopFirst(const RowTables &tables, const std::uint8_t *source, std::uint64_t sourceX, std::uint8_t *target,
                  std::uint64_t targetX, std::uint64_t count) {
  const std::uint64_t bits = tables.bitsPerPixel;
  CopyBitsTopFirst(source, sourceX * bits, target, targetX * bits, count * bits);
}

void CopyLowFirst(const RowTables &tables, const std::uint8_t *source, std::uint64_t sourceX, std::uint8_t *target,
                  std::uint64_t targetX, std::uint64_t count) {
  const std::uint64_t bits = tables.bitsPerPixel;
  CopyBitsLowFirst(source, sourceX * bits, target, targetX * bits, count * bits);
}

}  // namespace

void RowTables::ShowLevelsOf(const KsBitmap &source) {
  bitsPerPixel = source.bitsPerPixel;
  if (source.bitsPerPixel > kscore::kDeepestLut) return;
  kscore::FillShownColors(source, colors);
  Bgr gray = 0;
  showGrays =
      source.bitsPerPixel >= kscore::Index8::bits &&
      std::all_of(std::begin(colors), std::end(colors), [&](Bgr color) { return color == kscore::BgrOfGray(gray++); });
}

RowFunction ConversionOf(std::uint32_t sourceBits, TargetForm target) {
  const auto rowsOf = [](auto form) -> const RowFunction * {
    using Form = decltype(form);
    if constexpr (kscore::kHasLevels<Form>) {
      return kRowsFromLevels<FromLevels<Form>>;
    } else {
      return kRowsFromColors<FromColors<Form>>;
    }
  };
  const RowFunction *const none = nullptr;
  const RowFunction *const rows = kscore::WithForm(sourceBits, rowsOf, none);
  return rows == nullptr ? nullptr : rows[static_cast<int>(target)];
}

RowFunction RawCopyOf(std::uint32_t bits) {
  if (bits % 8 == 0) return CopyBytes;
  return bits == kscore::Gray12::bits ? CopyLowFirst : CopyTopFirst;
}

}  // namespace ksblend
