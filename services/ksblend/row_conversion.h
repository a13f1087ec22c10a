// How the pixels of a row get from one form into another.
#pragma once

#include "ksblend/nearest_colors.h"

namespace ksblend {

/** What the row functions look up; prepared once for a whole operation. */
struct RowTables {
  kscore::ShownColors colors;                 // what the source's levels show
  std::uint8_t indices[kscore::kLevelCount];  // the same as indices or grays of an 8-bit target
  NearestColors *nearest = nullptr;           // the target's palette, where colours have to be found in it
  std::uint32_t bitsPerPixel = 0;             // of source and target, where they are equal
  bool showGrays = false;                     // each level of a whole byte is the gray of its number

  /** Sets the colours that the levels of a source show, if it has levels. */
  void ShowLevelsOf(const KsBitmap &source);
};

/** Converts `count` pixels from pixel `sourceX` of a row to pixel `targetX` of another. */
using RowFunction = void (*)(const RowTables &tables, const std::uint8_t *source, std::uint64_t sourceX,
                             std::uint8_t *target, std::uint64_t targetX, std::uint64_t count);

/** What the pixels of a target take. */
enum class TargetForm { gray8, index8, bgr24, bgr32 };

/** The conversion of pixels of `sourceBits` bits, or null where there is none. */
RowFunction ConversionOf(std::uint32_t sourceBits, TargetForm target);

/** The conversion between equal depths: the bits as they are. */
RowFunction RawCopyOf(std::uint32_t bits);

}  // namespace ksblend
