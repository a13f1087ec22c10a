// The image data mask table (MIL-STD-2500C, table A-3(A)), which stands between the subheader of a masked image and its
// data: read, written, asked and measured here.
#pragma once

#include "headers/image_record.h"
#include "internal/status.h"
#include "table/big_endian.h"

#include <algorithm>
#include <optional>

namespace ksntfx {

class HeaderReader;
class HeaderWriter;

/** Bytes of the mask table in front of TPXCD: IMDATOFF, BMRLNTH, TMRLNTH, TPXCDLNTH. */
constexpr std::uint32_t kMaskHeaderBytes = 4 + 2 + 2 + 2;

/** An entry of BMR or TMR that says: not recorded. */
constexpr std::uint32_t kNotRecorded = 0xFFFFFFFF;

/** Bytes of TPXCD. */
inline std::uint32_t PadCodeBytes(const ImageSubheader &image) {
  return (image.padCodeBits + 7U) / 8U;
}

/** Bytes of the mask table in front of the image data, 0 for an IC without one. */
std::uint64_t MaskTableBytes(const ImageSubheader &image);

/** Blocks that are in the data: all that BMR doesn't call absent. */
std::uint64_t RecordedBlocks(const ImageSubheader &image);

/** The rows of the subheader's format that read and write the table behind it. */
Status ReadMaskTable(HeaderReader &reader);
Status WriteMaskTable(HeaderWriter &writer);

/** Moves a file from the table's first byte behind it. SUCCESS, or ERROR_FILE_READ where the file ends before it. */
Status SkipMaskTable(KsHandle file, const ImageSubheader &image);

/** The image data mask: BMR and TMR, of which the first entry of each block is used. */
class BlockMask {
 public:
  /** `dataLength` is LI. */
  BlockMask(const ImageSubheader &header, std::uint64_t dataBytes) : image(header), dataLength(dataBytes) {}

  bool HasBlockMask() const { return image.blockMaskLength != 0 && image.blockMask != nullptr; }
  bool HasPadMask() const { return image.padMaskLength != 0 && image.padMask != nullptr; }

  /** The blocks to visit of `count`: those behind a BMR's end are not there. */
  std::uint64_t Visited(std::uint64_t count) const {
    return HasBlockMask() ? std::min<std::uint64_t>(count, image.maskEntries) : count;
  }

  /** The block's entry of BMR, kNotRecorded where the table is too short. */
  std::uint32_t BlockWord(std::uint64_t block) const { return Word(image.blockMask, block); }

  /** BMR says that the block isn't there: no offset, or one behind the data. */
  bool IsAbsent(std::uint64_t block) const {
    return HasBlockMask() && (BlockWord(block) == kNotRecorded || BlockWord(block) > dataLength);
  }

  /** The block's offset in the tables: BMR's, or without a BMR that of TMR where it has one. */
  std::optional<std::uint32_t> Offset(std::uint64_t block) const {
    if (HasBlockMask()) return BlockWord(block);
    const std::uint32_t word = HasPadMask() ? Word(image.padMask, block) : kNotRecorded;
    return word == kNotRecorded ? std::nullopt : std::optional(word);
  }

 private:
  std::uint32_t Word(const std::uint8_t (*table)[4], std::uint64_t block) const {
    if (block >= image.maskEntries) return kNotRecorded;
    return BigEndian32(table[block]);
  }

  const ImageSubheader &image;
  std::uint64_t dataLength;
};

}  // namespace ksntfx
