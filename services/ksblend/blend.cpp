#include "ksblend/blend.h"

#include "ksblend/row_conversion.h"
#include "ksblend/transparency.h"
#include "kscore/bitmap.h"
#include "kscore/pixel_forms.h"

#include <algorithm>
#include <iterator>

namespace ksblend {
namespace {

using kscore::Bgr;
using kscore::ShownColors;

/** Cuts one axis so that `position` and `extent` behind it stay within `low` and `high`; `other` goes along. */
void ClipAxis(std::int64_t &position, std::int64_t &other, std::int64_t &extent, std::int64_t low, std::int64_t high) {
  const std::int64_t cut = std::max<std::int64_t>(low - position, 0);
  position += cut;
  other += cut;
  extent = std::min(extent - cut, high - position);
}

/** The part of a bitmap in 64 bits; KsRect can't say the size of the widest ones. */
void ClipToBitmaps(Placement &at, const KsBitmap &target, const KsBitmap &source) {
  ClipAxis(at.left, at.sourceLeft, at.width, 0, target.width);
  ClipAxis(at.top, at.sourceTop, at.height, 0, target.height);
  ClipAxis(at.sourceLeft, at.left, at.width, 0, source.width);
  ClipAxis(at.sourceTop, at.top, at.height, 0, source.height);
}

/** One operation, prepared: everything that is the same for all rows. */
class Operation {
 public:
  Operation(KsBitmap &onto, const KsBitmap &from) : target(onto), source(from) {}

  Status Prepare(const std::uint32_t *transparentColor);
  void Run(const Placement &at) const;

 private:
  Status PrepareConversion();
  Status PrepareByteTarget();
  bool IsRaw() const;
  bool IsOneRun(const Placement &at) const;
  void RunRow(const std::uint8_t *from, std::uint64_t sourceX, std::uint8_t *to, std::uint64_t targetX,
              std::uint64_t count) const;

  KsBitmap &target;
  const KsBitmap &source;
  bool raw = false;
  RowFunction convert = nullptr;
  RowTables tables;
  ShownColors targetColors;
  NearestColors nearest;
  bool hasTransparency = false;
  Transparency transparency;
};

Status Operation::Prepare(const std::uint32_t *transparentColor) {
  tables.ShowLevelsOf(source);
  if (target.bitsPerPixel == kscore::Index8::bits) kscore::FillShownColors(target, targetColors);
  if (transparentColor != nullptr) {
    hasTransparency = true;
    if (!transparency.Prepare(source, kscore::BgrOfColor(*transparentColor))) return ERROR_NOT_SUPPORTED;
  }
  raw = IsRaw();
  if (raw) {
    convert = RawCopyOf(source.bitsPerPixel);
    return SUCCESS;
  }
  return PrepareConversion();
}

/** Equal depths are copied as they are, except indices that mean other colours in the target. */
bool Operation::IsRaw() const {
  if (source.bitsPerPixel != target.bitsPerPixel) return false;
  if (source.bitsPerPixel != kscore::Index8::bits || !kscore::HasPalette(source)) return true;
  return std::equal(std::begin(tables.colors), std::end(tables.colors), std::begin(targetColors));
}

Status Operation::PrepareConversion() {
  TargetForm form = TargetForm::gray8;
  switch (target.bitsPerPixel) {
    case kscore::Index8::bits:
      form = kscore::HasPalette(target) ? TargetForm::index8 : TargetForm::gray8;
      break;
    case kscore::Bgr24::bits:
      form = TargetForm::bgr24;
      break;
    case kscore::Bgr32::bits:
      form = TargetForm::bgr32;
      break;
    default:
      return ERROR_NOT_SUPPORTED;
  }
  convert = ConversionOf(source.bitsPerPixel, form);
  if (convert == nullptr) return ERROR_NOT_SUPPORTED;
  return target.bitsPerPixel == kscore::Index8::bits ? PrepareByteTarget() : SUCCESS;
}

/** Prepares what 8-bit targets look up: a byte for each level, or the cube for colours and a palette. */
Status Operation::PrepareByteTarget() {
  const bool indexed = kscore::HasPalette(target);
  const std::uint32_t count = indexed ? kscore::SelectableColors(target) : 0;
  if (source.bitsPerPixel <= kscore::kDeepestLut) {
    const std::uint32_t levels = source.bitsPerPixel == kscore::Index1::bits ? 2 : kscore::kLevelCount;
    for (std::uint32_t i = 0; i < levels; ++i) {
      const Bgr color = tables.colors[i];
      tables.indices[i] = indexed ? kscore::NearestIndex(targetColors, count, color)
                                  : static_cast<std::uint8_t>(kscore::BrightnessOf(color));
    }
    return SUCCESS;
  }
  tables.nearest = &nearest;
  return indexed && !nearest.Prepare(targetColors, count) ? ERROR_NO_MEMORY : SUCCESS;
}

/** True where the piece is whole rows of whole bytes in both bitmaps, without a gap, and copied as it is. */
bool Operation::IsOneRun(const Placement &at) const {
  const std::uint64_t rowBits = static_cast<std::uint64_t>(at.width) * source.bitsPerPixel;
  return !hasTransparency && raw && source.bitsPerPixel % 8 == 0 && at.left == 0 && at.sourceLeft == 0 &&
         rowBits == std::uint64_t{source.bytesPerLine} * 8 && source.bytesPerLine == target.bytesPerLine;
}

void Operation::Run(const Placement &at) const {
  kscore::MarkWritten(target);
  const auto sourceX = static_cast<std::uint64_t>(at.sourceLeft);
  const auto targetX = static_cast<std::uint64_t>(at.left);
  auto rows = static_cast<std::uint64_t>(at.height);
  auto count = static_cast<std::uint64_t>(at.width);
  if (IsOneRun(at)) {
    count *= rows;
    rows = 1;
  }
  for (std::uint64_t row = 0; row < rows; ++row) {
    const std::uint8_t *const from = kscore::RowOf(source, static_cast<std::uint64_t>(at.sourceTop) + row);
    std::uint8_t *const to = kscore::RowOf(target, static_cast<std::uint64_t>(at.top) + row);
    if (hasTransparency) {
      RunRow(from, sourceX, to, targetX, count);
    } else {
      convert(tables, from, sourceX, to, targetX, count);
    }
  }
}

/** Converts the runs of a row that are not transparent. */
void Operation::RunRow(const std::uint8_t *from, std::uint64_t sourceX, std::uint8_t *to, std::uint64_t targetX,
                       std::uint64_t count) const {
  const std::uint64_t end = sourceX + count;
  std::uint64_t x = transparency.RunEnd(from, sourceX, end, true);
  while (x < end) {
    const std::uint64_t runEnd = transparency.RunEnd(from, x, end, false);
    convert(tables, from, x, to, targetX + (x - sourceX), runEnd - x);
    x = transparency.RunEnd(from, runEnd, end, true);
  }
}

}  // namespace

void ClipToTarget(Placement &placement, const KsRect &rectangle) {
  ClipAxis(placement.left, placement.sourceLeft, placement.width, rectangle.left, rectangle.right);
  ClipAxis(placement.top, placement.sourceTop, placement.height, rectangle.top, rectangle.bottom);
}

void ClipToSource(Placement &placement, const KsRect &rectangle) {
  ClipAxis(placement.sourceLeft, placement.left, placement.width, rectangle.left, rectangle.right);
  ClipAxis(placement.sourceTop, placement.top, placement.height, rectangle.top, rectangle.bottom);
}

Status Blend(KsBitmap *target, const KsBitmap *source, const Placement &placement,
             const std::uint32_t *transparentColor) {
  Status status = kscore::CheckPixels(target);
  if (status == SUCCESS) status = kscore::CheckPixels(source);
  if (status != SUCCESS) return status;
  Operation operation(*target, *source);
  status = operation.Prepare(transparentColor);
  if (status != SUCCESS) return status;
  Placement at = placement;
  ClipToBitmaps(at, *target, *source);
  if (at.width > 0 && at.height > 0) operation.Run(at);
  return SUCCESS;
}

}  // namespace ksblend
