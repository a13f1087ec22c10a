#include "ksblend/enlarge.h"

#include "internal/ksclasses_.h"
#include "ksblend/row_conversion.h"
#include "kscore/bitmap.h"
#include "kscore/pixel_forms.h"

#include <algorithm>

namespace ksblend {
namespace {

constexpr std::uint32_t kChannels = 3;
constexpr std::uint32_t kFractionBits = 8;
constexpr std::uint32_t kWhole = 1U << kFractionBits;

/** Two neighbours along an axis, and how much the second one counts of kWhole. */
struct Neighbours {
  std::uint32_t first;
  std::uint32_t second;
  std::uint32_t weight;
};

/** One axis: `count` pixels from `start` on, spread over `extent` places. */
struct Axis {
  std::int64_t start;
  std::int64_t count;
  std::int64_t extent;

  /** The pixels whose centres lie around the centre of a place. */
  Neighbours At(std::int64_t place) const {
    // Counted in halves of a place. With extents of 31 bits and counts of 32 the product fits 64 bits.
    const auto halves = 2 * static_cast<std::uint64_t>(extent);
    const std::uint64_t product = (2 * static_cast<std::uint64_t>(place) + 1) * static_cast<std::uint64_t>(count);
    const std::uint64_t scaled = product / halves * kWhole + product % halves * kWhole / halves;
    const std::int64_t centre = static_cast<std::int64_t>(scaled) - kWhole / 2;
    const std::int64_t position = std::clamp<std::int64_t>(centre, 0, (count - 1) * kWhole);
    const std::int64_t first = position >> kFractionBits;
    const std::int64_t second = std::min(first + 1, count - 1);
    return {static_cast<std::uint32_t>(start + first), static_cast<std::uint32_t>(start + second),
            static_cast<std::uint32_t>(position % kWhole)};
  }
};

/** Makes rows of the enlarged picture. */
class Enlarger {
 public:
  Enlarger(const KsBitmap &bitmap, const Axis &horizontal, const Axis &vertical)
      : source(bitmap), across(horizontal), down(vertical), tables{} {}

  /** Prepares `count` places of each row from `firstPlace` on. */
  Status Prepare(std::int64_t firstPlace, std::uint32_t count) {
    convert = ConversionOf(source.bitsPerPixel, TargetForm::bgr24);
    if (convert == nullptr) return ERROR_NOT_SUPPORTED;
    tables.ShowLevelsOf(source);
    places = count;
    const std::uint64_t line = std::uint64_t{source.width} * kChannels;
    if (!columns.Allocate(count) || !upper.Allocate(line) || !lower.Allocate(line) || !mixed.Allocate(line)) {
      return ERROR_NO_MEMORY;
    }
    for (std::uint32_t i = 0; i < count; ++i) columns[i] = across.At(firstPlace + i);
    return SUCCESS;
  }

  void MakeRow(std::int64_t place, std::uint8_t *out) const {
    const Neighbours rows = down.At(place);
    Convert(rows.first, upper.Get());
    Convert(rows.second, lower.Get());
    const std::uint64_t line = std::uint64_t{source.width} * kChannels;
    for (std::uint64_t i = 0; i < line; ++i) {
      mixed[i] = static_cast<std::uint16_t>(upper[i] * (kWhole - rows.weight) + lower[i] * rows.weight);
    }
    for (std::uint32_t x = 0; x < places; ++x, out += kChannels) {
      const Neighbours &column = columns[x];
      const std::uint16_t *const first = mixed.Get() + std::uint64_t{column.first} * kChannels;
      const std::uint16_t *const second = mixed.Get() + std::uint64_t{column.second} * kChannels;
      constexpr std::uint32_t kHalf = kWhole * kWhole / 2;
      for (std::uint32_t i = 0; i < kChannels; ++i) {
        const std::uint32_t sum = first[i] * (kWhole - column.weight) + second[i] * column.weight;
        out[i] = static_cast<std::uint8_t>((sum + kHalf) >> (2 * kFractionBits));
      }
    }
  }

 private:
  void Convert(std::uint32_t row, std::uint8_t *out) const {
    convert(tables, kscore::RowOf(source, row), 0, out, 0, source.width);
  }

  const KsBitmap &source;
  Axis across;
  Axis down;
  RowTables tables;
  RowFunction convert = nullptr;
  std::uint32_t places = 0;
  KsArray<Neighbours> columns;
  KsArray<std::uint8_t> upper;
  KsArray<std::uint8_t> lower;
  KsArray<std::uint16_t> mixed;
};

/** The part of the rectangle that can be seen. */
Placement VisibleOf(const KsBitmap &target, const Placement &placement, const KsRect *clip) {
  Placement visible = {placement.left, placement.top, placement.width, placement.height, 0, 0};
  constexpr std::int64_t kFarthest = INT32_MAX;
  ClipToTarget(visible, {0, 0, static_cast<std::int32_t>(std::min<std::int64_t>(target.width, kFarthest)),
                         static_cast<std::int32_t>(std::min<std::int64_t>(target.height, kFarthest))});
  if (clip != nullptr) ClipToTarget(visible, *clip);
  return visible;
}

}  // namespace

bool IsEnlarged(const KsBitmap *source, const Placement &placement) {
  if (!kscore::IsBitmap(source) || (source->flags & KS_BITMAP_ENLARGED) == 0) return false;
  return placement.width != source->width - placement.sourceLeft ||
         placement.height != source->height - placement.sourceTop;
}

Status BlendEnlarged(KsBitmap *target, const KsBitmap *source, const Placement &placement, const KsRect *clip,
                     const std::uint32_t *transparentColor) {
  Status status = kscore::CheckPixels(target);
  if (status == SUCCESS) status = kscore::CheckPixels(source);
  if (status != SUCCESS) return status;
  if (placement.width > INT32_MAX || placement.height > INT32_MAX) return ERROR_INVALID_VALUE;
  const Axis across = {placement.sourceLeft, source->width - placement.sourceLeft, placement.width};
  const Axis down = {placement.sourceTop, source->height - placement.sourceTop, placement.height};
  const Placement visible = VisibleOf(*target, placement, clip);
  const bool startsInside = placement.sourceLeft >= 0 && placement.sourceTop >= 0;
  if (!startsInside || across.count <= 0 || down.count <= 0 || visible.width <= 0 || visible.height <= 0)
    return SUCCESS;

  const auto width = static_cast<std::uint32_t>(visible.width);
  Enlarger enlarger(*source, across, down);
  status = enlarger.Prepare(visible.sourceLeft, width);
  if (status != SUCCESS) return status;
  constexpr std::int64_t kStripBytes = 1 << 20;
  const std::int64_t most = std::clamp<std::int64_t>(kStripBytes / (visible.width * kChannels), 1, visible.height);
  KsLocalBitmap strip;
  status = KsBitmapCreate(strip.Get(), sizeof(KsBitmap), KS_BITMAP_OWN, width, static_cast<std::uint32_t>(most),
                          kscore::Bgr24::bits, KS_ORDER_BGR, nullptr, 1, nullptr, 0);
  for (std::int64_t done = 0; done < visible.height && status == SUCCESS; done += most) {
    const std::int64_t rows = std::min(most, visible.height - done);
    kscore::MarkWritten(*strip.Get());
    for (std::int64_t row = 0; row < rows; ++row) {
      enlarger.MakeRow(visible.sourceTop + done + row, kscore::RowOf(*strip.Get(), static_cast<std::uint64_t>(row)));
    }
    const Placement place = {visible.left, visible.top + done, visible.width, rows, 0, 0};
    status = Blend(target, strip.Get(), place, transparentColor);
  }
  return status;
}

}  // namespace ksblend
