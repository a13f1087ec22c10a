#include "headers/mask_table.h"

#include "internal/ksclasses_.h"
#include "table/file_bytes.h"
#include "table/header_reader.h"
#include "table/header_writer.h"

#include <algorithm>

namespace ksntfx {

namespace {

constexpr std::uint32_t kEntryBytes = 4;

using MaskEntries = KsArray<std::uint8_t[kEntryBytes]>;

template <class Number>
Status TakeBigEndian(HeaderReader &reader, Number *number) {
  std::uint8_t bytes[sizeof(Number)];
  const Status status = reader.Take(bytes, sizeof bytes);
  if (status != SUCCESS) return status;
  *number = sizeof(Number) == 2 ? static_cast<Number>(BigEndian16(bytes)) : static_cast<Number>(BigEndian32(bytes));
  return SUCCESS;
}

/** The pad value takes the place of the one before once it is whole. */
Status ReadPadCode(HeaderReader &reader) {
  auto &image = reader.As<ImageSubheader>();
  std::uint16_t bits = 0;
  Status status = TakeBigEndian(reader, &bits);
  if (status != SUCCESS) return status;
  char *code = nullptr;
  if (bits != 0) status = reader.TakeNew(&code, (bits + 7U) / 8U);
  if (status != SUCCESS) return status;
  KsFreeAndClear(image.padCode);
  image.padCode = reinterpret_cast<std::uint8_t *>(code);
  image.padCodeBits = bits;
  image.padCodeHeld = PadCodeBytes(image);
  return SUCCESS;
}

Status ReadMaskHeader(HeaderReader &reader) {
  auto &image = reader.As<ImageSubheader>();
  Status status = TakeBigEndian(reader, &image.maskDataOffset);
  if (status == SUCCESS) status = TakeBigEndian(reader, &image.blockMaskLength);
  if (status == SUCCESS) status = TakeBigEndian(reader, &image.padMaskLength);
  return status == SUCCESS ? ReadPadCode(reader) : status;
}

/** One entry of zeros stands behind those of the file. */
Status ReadMask(HeaderReader &reader, MaskEntries &mask, std::uint64_t entries) {
  if (!reader.Holds(entries, kEntryBytes)) return ERROR_FILE_READ;
  if (!mask.Allocate(entries + 1)) return ERROR_NO_MEMORY;
  return entries == 0 ? SUCCESS : reader.Take(mask.Get(), entries * kEntryBytes);
}

/** Both masks take the place of those before once they are whole. */
Status ReadMasks(HeaderReader &reader, std::uint64_t entries) {
  auto &image = reader.As<ImageSubheader>();
  MaskEntries blockMask;
  MaskEntries padMask;
  Status status = SUCCESS;
  if (image.blockMaskLength != 0) status = ReadMask(reader, blockMask, entries);
  if (status == SUCCESS && image.padMaskLength != 0) status = ReadMask(reader, padMask, entries);
  if (status != SUCCESS) return status;
  KsFreeAndClear(image.blockMask);
  KsFreeAndClear(image.padMask);
  image.blockMask = blockMask.Release();
  image.padMask = padMask.Release();
  image.maskEntries = static_cast<std::uint32_t>(entries);
  return SUCCESS;
}

Status ReadMaskParts(HeaderReader &reader) {
  const auto &image = reader.As<ImageSubheader>();
  const Status status = KindOf(image).hasMaskTable ? ReadMaskHeader(reader) : SUCCESS;
  if (status != SUCCESS || (image.blockMaskLength == 0 && image.padMaskLength == 0)) return status;
  // The counts are up to 9999, 9999 and 99999, or anything where the file writes a minus sign: the product is checked
  // factor by factor, so that it can't pass the file's own size.
  const std::uint64_t blocks = std::uint64_t{image.blocksPerRow} * image.blocksPerColumn;
  // The strict interfaces expect an entry for each band of a block, where the format has one for all but in mode S.
  const bool entryForEachBand = reader.Notes() == nullptr || image.mode == kBandSequential;
  const std::uint32_t entries = entryForEachBand ? image.bandCount : 1;
  if (entries != 0 && !reader.Holds(blocks, std::uint64_t{entries} * kEntryBytes)) return ERROR_FILE_READ;
  return ReadMasks(reader, blocks * entries);
}

Status WriteMaskHeader(HeaderWriter &writer) {
  const auto &image = writer.As<ImageSubheader>();
  Status status = writer.BigEndian(image.maskDataOffset, 4);
  if (status == SUCCESS) status = writer.BigEndian(image.blockMaskLength, 2);
  if (status == SUCCESS) status = writer.BigEndian(image.padMaskLength, 2);
  if (status == SUCCESS) status = writer.BigEndian(image.padCodeBits, 2);
  const std::uint32_t held = image.padCode != nullptr ? std::min(image.padCodeHeld, PadCodeBytes(image)) : 0;
  if (status == SUCCESS) status = writer.Bytes(image.padCode, held);
  return status == SUCCESS ? writer.Bytes(nullptr, PadCodeBytes(image) - held) : status;
}

}  // namespace

std::uint64_t MaskTableBytes(const ImageSubheader &image) {
  const std::uint64_t entries = std::uint64_t{image.maskEntries} * kEntryBytes;
  const std::uint64_t tables = (image.blockMaskLength != 0 ? entries : 0) + (image.padMaskLength != 0 ? entries : 0);
  return KindOf(image).hasMaskTable ? kMaskHeaderBytes + PadCodeBytes(image) + tables : 0;
}

std::uint64_t RecordedBlocks(const ImageSubheader &image) {
  const std::uint64_t blocks = std::uint64_t{image.blocksPerRow} * image.blocksPerColumn;
  if (image.blockMaskLength == 0 || image.blockMask == nullptr) return blocks;
  std::uint64_t recorded = 0;
  for (std::uint64_t block = 0; block < blocks; ++block) {
    if (block >= image.maskEntries || BigEndian32(image.blockMask[block]) != kNotRecorded) ++recorded;
  }
  return recorded;
}

Status ReadMaskTable(HeaderReader &reader) {
  auto &image = reader.As<ImageSubheader>();
  const std::uint64_t start = reader.Taken();
  const Status status = ReadMaskParts(reader);
  if (status != SUCCESS) return status;
  image.subheaderBytesRead = static_cast<std::uint32_t>(start);
  image.maskBytesRead = static_cast<std::uint32_t>(reader.Taken() - start);
  return SUCCESS;
}

Status WriteMaskTable(HeaderWriter &writer) {
  const auto &image = writer.As<ImageSubheader>();
  const std::uint64_t before = writer.Written();
  const std::uint64_t bytes = std::uint64_t{image.maskEntries} * kEntryBytes;
  Status status = KindOf(image).hasMaskTable ? WriteMaskHeader(writer) : SUCCESS;
  if (status == SUCCESS && image.blockMaskLength != 0) status = writer.Bytes(image.blockMask, bytes);
  if (status == SUCCESS && image.padMaskLength != 0) status = writer.Bytes(image.padMask, bytes);
  writer.Sink().marks.maskBytes = static_cast<std::uint32_t>(writer.Written() - before);
  return status;
}

Status SkipMaskTable(KsHandle file, const ImageSubheader &image) {
  if (!KindOf(image).hasMaskTable) return SUCCESS;
  std::uint8_t bytes[kMaskHeaderBytes];
  if (KsRead(file, bytes, sizeof bytes) != sizeof bytes) return ERROR_FILE_READ;
  const std::uint64_t blocks = std::uint64_t{image.blocksPerRow} * image.blocksPerColumn;
  const std::uint64_t blockBytes = std::uint64_t{image.bandField} * kEntryBytes;
  const std::uint64_t blockMasks = BigEndian16(bytes + 4) != 0 ? blocks : 0;
  const std::uint64_t padMasks = BigEndian16(bytes + 6) != 0 ? blocks : 0;
  const std::uint32_t padCodeBytes = (BigEndian16(bytes + 8) + 7U) / 8;
  const bool skipped = SkipBytes(file, padCodeBytes, 1) && SkipBytes(file, blockMasks, blockBytes) &&
                       SkipBytes(file, padMasks, blockBytes);
  return skipped ? SUCCESS : ERROR_FILE_READ;
}

}  // namespace ksntfx
