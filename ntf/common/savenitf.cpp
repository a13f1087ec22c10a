#include "savenitf.h"

#include "fields.h"
#include "headerwriter.h"
#include "internal/ksclasses_.h"
#include "samples.h"
#include "vq.h"

#include <algorithm>

namespace {

/** An entry of a length table, 0 where the table lacks it. */
std::uint32_t Entry(const std::uint32_t *table, std::uint32_t count, std::uint32_t index) {
  return table == nullptr || index >= count ? 0 : table[index];
}

std::int32_t WriteAll(KsHandle out, const void *data, std::uint64_t bytes) {
  return bytes == 0 || KsWrite(out, data, bytes) == bytes ? SUCCESS : ERROR_FILE_WRITE;
}

/** Copies `bytes` bytes of a segment's body to the output's position. */
std::int32_t CopyBody(KsHandle out, const NitfFile *file, SegmentKind kind, std::uint32_t index, std::uint64_t bytes) {
  if (bytes == 0) return SUCCESS;
  SeekSegmentData(file, kind, index);
  return KsCopyBytes(out, file->fileHandle, bytes);
}

std::int32_t WriteSubheader(KNitfSaveFile &save, KsHandle out, NitfFile *file, SegmentKind kind, std::uint32_t index) {
  const void *const record = FindSubheader(file, kind, index);
  if (record == nullptr) return ERROR_INVALID_VALUE;
  KsSeek(out, 0, KS_SEEK_END);
  HeaderWriter writer(save, out, *file, record);
  if (kind == SegmentKind::Label) writer.Use20();
  return writer.Write(SubheaderTable(kind));
}

/** The bytes to write of a body in memory: as many as the header tells, which a caller may have set, or all. */
template <class Record>
std::uint32_t HeldBytes(const Record &record, std::uint32_t told) {
  return std::min(told, record.memoryBytes);
}

/** Writes a body from memory where the record has one there, or copies it. */
template <class Record>
std::int32_t WriteBody(KsHandle out, const NitfFile *file, SegmentKind kind, std::uint32_t index,
                       std::uint32_t bytesInMemory, std::uint32_t bytesInSource) {
  const auto *record = static_cast<const Record *>(FindSubheader(file, kind, index));
  KsSeek(out, 0, KS_SEEK_END);
  if (record != nullptr && record->hasMemoryData != 0) {
    const std::uint32_t held = HeldBytes(*record, bytesInMemory);
    return held == 0 || KsWriteBlock(out, record->memoryData, held) == held ? SUCCESS : ERROR_FILE_WRITE;
  }
  return CopyBody(out, file, kind, index, bytesInSource);
}

// ---- vector-quantised data ----------------------------------------------------------------------------------------

void PutBigEndian(std::uint8_t *&place, std::uint32_t value, unsigned bytes) {
  for (unsigned left = bytes; left > 0; --left) *place++ = static_cast<std::uint8_t>(value >> 8 * (left - 1));
}

std::int32_t WriteVqHeader(KsHandle out, const VqHeader &header) {
  std::uint8_t bytes[kVqHeaderBytes];
  std::uint8_t *place = bytes;
  PutBigEndian(place, header.codeRows, 4);
  PutBigEndian(place, header.codesPerRow, 4);
  PutBigEndian(place, header.codeBits, 1);
  PutBigEndian(place, header.algorithm, 2);
  PutBigEndian(place, header.lookupRecords, 2);
  PutBigEndian(place, header.parameterRecords, 2);
  PutBigEndian(place, header.lookupOffset, 4);
  PutBigEndian(place, header.lookupRecordLength, 2);
  return WriteAll(out, bytes, sizeof bytes);
}

std::int32_t WriteVqLookupRecord(KsHandle out, const VqLookupRecord &record) {
  std::uint8_t bytes[kVqLookupRecordBytes];
  std::uint8_t *place = bytes;
  PutBigEndian(place, record.table, 2);
  PutBigEndian(place, record.entries, 4);
  PutBigEndian(place, record.valuesPerEntry, 2);
  PutBigEndian(place, record.bitsPerValue, 2);
  PutBigEndian(place, record.offset, 4);
  return WriteAll(out, bytes, sizeof bytes);
}

/** Copies the records, which say how long the tables are, and tells the entries of each table. */
std::int32_t CopyVqLookupRecords(KsHandle out, const NitfFile *file, const VqHeader &header, std::uint32_t *entries) {
  KsArray<VqLookupRecord> records;
  if (!records.Allocate(header.lookupRecords)) return ERROR_NO_MEMORY;
  std::int32_t status = ReadVqLookupRecords(file, header, records.Get());
  for (std::uint32_t i = 0; i < header.lookupRecords && status == SUCCESS; ++i) {
    status = WriteVqLookupRecord(out, records[i]);
  }
  *entries = header.lookupRecords == 0 ? 0 : records[0].entries;
  return status;
}

std::uint64_t RecordedBlocks(const ImageSubheader &image) {
  std::uint64_t recorded = 0;
  const std::uint64_t blocks = std::uint64_t{image.blocksPerRow} * image.blocksPerColumn;
  if (image.blockMaskLength == 0 || image.blockMask == nullptr) return blocks;
  for (std::uint64_t block = 0; block < blocks; ++block) {
    if (block >= image.maskEntries || BigEndian32(image.blockMask[block]) != kNotRecorded) ++recorded;
  }
  return recorded;
}

// ---- field widths -------------------------------------------------------------------------------------------------

bool FitsFields(const ImageSubheader &image) {
  constexpr std::uint32_t kEightDigits = 99999999;
  constexpr std::uint32_t kFourDigits = 9999;
  constexpr std::uint32_t kTwoDigits = 99;
  const auto blockFits = [](std::uint32_t size, std::uint32_t whole) { return size <= kFourDigits || size == whole; };
  return image.rows <= kEightDigits && image.columns <= kEightDigits && image.actualBits <= kTwoDigits &&
         image.bitsPerPixel <= kTwoDigits && image.blocksPerRow <= kFourDigits &&
         image.blocksPerColumn <= kFourDigits && blockFits(image.blockWidth, image.columns) &&
         blockFits(image.blockHeight, image.rows);
}

}  // namespace

std::int32_t CheckFieldWidths(const NitfFile *file) {
  for (const SegmentNode *node = file->imageList; node != nullptr; node = node->next) {
    const auto *image = static_cast<const ImageSubheader *>(node->subheader);
    if (image != nullptr && !FitsFields(*image)) return ERROR_INVALID_VALUE;
  }
  return SUCCESS;
}

KNitfSaveFile::~KNitfSaveFile() {
  KsFreeAndClear(scratch1);
  KsFreeAndClear(scratch2);
  KsFreeAndClear(scratch3);
}

std::int32_t KNitfSaveFile::WriteFileHeader(KsHandle out, NitfFile *file) {
  fileLengthFieldOffset = 0;
  file->header.fileLengthOut = static_cast<std::uint32_t>(ParseLongNumber(file->header.FL));
  return HeaderWriter(*this, out, *file, &file->header).Write(kFileHeaderTable);
}

std::int32_t KNitfSaveFile::WriteSegments(KsHandle out, NitfFile *file) {
  std::int64_t mark = KsSeek(out, 0, KS_SEEK_CURRENT);
  std::int32_t status = SUCCESS;
  for (std::uint32_t i = 0; i < file->imageCount && status == SUCCESS; ++i) status = WriteImage(out, file, i, &mark);
  for (std::uint32_t i = 0; i < file->graphicCount && status == SUCCESS; ++i) {
    status = WriteGraphicSubheader(out, file, i);
    if (status == SUCCESS) status = WriteGraphicData(out, file, i);
  }
  for (std::uint32_t i = 0; i < file->labelCount && status == SUCCESS; ++i) {
    status = WriteLabelSubheader(out, file, i);
    if (status == SUCCESS) status = WriteLabelData(out, file, i);
  }
  for (std::uint32_t i = 0; i < file->textCount && status == SUCCESS; ++i) {
    status = WriteTextSubheader(out, file, i);
    if (status == SUCCESS) status = WriteTextData(out, file, i);
  }
  for (std::uint32_t i = 0; i < file->dataExtensionCount && status == SUCCESS; ++i) {
    status = WriteDataExtension(out, file, i);
  }
  return status;
}

/** Writes one image. `mark` is where the segment before it ended, and then where this one does. */
std::int32_t KNitfSaveFile::WriteImage(KsHandle out, NitfFile *file, std::uint32_t index, std::int64_t *mark) {
  std::int32_t status = WriteImageSubheader(out, file, index);
  if (status != SUCCESS) return status;
  const ImageSubheader &image = *FindImage(file, index);
  const bool measured = image.maskDataOffset != 0 && image.compression == kM4;
  const std::int64_t subheaderEnd = KsSeek(out, 0, KS_SEEK_CURRENT);
  if (measured) {
    const auto length = static_cast<std::uint32_t>(subheaderEnd - *mark - maskBytes);
    if (length != SubheaderLength(file, SegmentKind::Image, index)) {
      lengthsPatched = 1;
      status = PatchImageSubheaderLength(file, out, index, length);
    }
  }
  if (status == SUCCESS) status = WriteImageBody(out, file, image, index);
  *mark = KsSeek(out, 0, KS_SEEK_CURRENT);
  if (status != SUCCESS || !measured) return status;
  lengthsPatched = 1;
  const auto length = static_cast<std::uint32_t>(*mark - subheaderEnd + maskBytes);
  if (length == DataLength(file, SegmentKind::Image, index)) return SUCCESS;
  return PatchImageDataLength(file, out, index, length);
}

std::int32_t KNitfSaveFile::WriteImageBody(KsHandle out, NitfFile *file, const ImageSubheader &image,
                                           std::uint32_t index) {
  if (image.hasMemoryData != 0) {
    const NitfHeader &header = file->header;
    const std::uint32_t told = Entry(header.imageDataLengthsOut, header.imageTableCount, index);
    return WriteAll(out, image.memoryData, HeldBytes(image, told));
  }
  return IsVectorQuantised(image) ? WriteVqImageData(out, file, image, index) : WriteImageData(out, file, index);
}

std::int32_t KNitfSaveFile::WriteDataExtension(KsHandle out, NitfFile *file, std::uint32_t index) {
  const std::int32_t status = WriteDataExtensionSubheader(out, file, index);
  if (status != SUCCESS) return status;
  KsSeek(out, 0, KS_SEEK_END);
  return CopyBody(out, file, SegmentKind::DataExtension, index, DataLength(file, SegmentKind::DataExtension, index));
}

std::int32_t KNitfSaveFile::WriteImageSubheader(KsHandle out, NitfFile *file, std::uint32_t index) {
  maskBytes = 0;
  return WriteSubheader(*this, out, file, SegmentKind::Image, index);
}

std::int32_t KNitfSaveFile::WriteGraphicSubheader(KsHandle out, NitfFile *file, std::uint32_t index) {
  return WriteSubheader(*this, out, file, SegmentKind::Graphic, index);
}

std::int32_t KNitfSaveFile::WriteLabelSubheader(KsHandle out, NitfFile *file, std::uint32_t index) {
  return WriteSubheader(*this, out, file, SegmentKind::Label, index);
}

std::int32_t KNitfSaveFile::WriteTextSubheader(KsHandle out, NitfFile *file, std::uint32_t index) {
  return WriteSubheader(*this, out, file, SegmentKind::Text, index);
}

std::int32_t KNitfSaveFile::WriteDataExtensionSubheader(KsHandle out, NitfFile *file, std::uint32_t index) {
  return WriteSubheader(*this, out, file, SegmentKind::DataExtension, index);
}

/** Overwrites one length of image `index`, whose column of the table begins at `offset`. */
std::int32_t KNitfSaveFile::Patch(NitfFile *file, KsHandle out, const LengthColumn &column, std::uint32_t offset,
                                  std::uint32_t index, std::uint32_t length) {
  constexpr std::uint32_t kRowBytes = kImageLengths.subheader.width + kImageLengths.data.width;
  char digits[12];
  FormatBounded(digits, sizeof digits, "%d", static_cast<std::int32_t>(length));
  KsSeek(out, std::int64_t{imageTableOffset} + offset + kRowBytes * index, KS_SEEK_START);
  const std::int32_t status = WriteField(nullptr, out, digits, column.width, "0");
  KsSeek(out, 0, KS_SEEK_END);
  std::uint32_t *const table = file->header.*column.outTable;
  if (status == SUCCESS && table != nullptr && index < file->header.imageTableCount) table[index] = length;
  return status;
}

std::int32_t KNitfSaveFile::PatchImageSubheaderLength(NitfFile *file, KsHandle out, std::uint32_t index,
                                                      std::uint32_t length) {
  return Patch(file, out, kImageLengths.subheader, 0, index, length);
}

std::int32_t KNitfSaveFile::PatchImageDataLength(NitfFile *file, KsHandle out, std::uint32_t index,
                                                 std::uint32_t length) {
  return Patch(file, out, kImageLengths.data, kImageLengths.subheader.width, index, length);
}

std::int32_t KNitfSaveFile::WriteImageData(KsHandle out, NitfFile *file, std::uint32_t index) {
  const NitfHeader &header = file->header;
  const std::uint32_t count = header.imageTableCount;
  // The source's data begin with their own mask table, which takes the place of the one behind the subheader.
  if (lengthsPatched != 0) {
    KsSeek(out, -std::int64_t{FindImage(file, index)->maskDataOffset}, KS_SEEK_END);
  } else {
    std::int64_t place = header.headerLengthOut;
    for (std::uint32_t before = 0; before < index; ++before) {
      place += Entry(header.imageSubheaderLengthsOut, count, before);
      place += Entry(header.imageDataLengthsOut, count, before);
    }
    KsSeek(out, place + Entry(header.imageSubheaderLengthsOut, count, index), KS_SEEK_START);
  }
  return CopyBody(out, file, SegmentKind::Image, index, DataLength(file, SegmentKind::Image, index));
}

std::int32_t KNitfSaveFile::WriteVqImageData(KsHandle out, NitfFile *file, const ImageSubheader &image,
                                             std::uint32_t index) {
  SeekSegmentData(file, SegmentKind::Image, index);
  if (image.compression == kM4) SkipMaskTable(file, image);
  VqHeader header;
  std::int32_t status = ReadVqHeader(file, &header);
  if (status != SUCCESS) return status;
  const std::uint32_t height = BlockHeight(image);
  const std::uint32_t kernelHeight = header.codeRows == 0 ? 0 : height / header.codeRows;
  if (kernelHeight == 0) return ERROR_FILE_FORMAT;
  status = WriteVqHeader(out, header);
  std::uint32_t entries = 0;
  if (status == SUCCESS) status = CopyVqLookupRecords(out, file, header, &entries);
  const std::uint64_t tableBytes = std::uint64_t{entries} * kernelHeight;
  for (std::uint32_t table = 0; table < header.lookupRecords && status == SUCCESS; ++table) {
    status = KsCopyBytes(out, file->fileHandle, tableBytes);
  }
  const std::uint64_t rowBytes = (std::uint64_t{header.codeBits} * header.codesPerRow) >> 3;
  const std::uint64_t blockBytes = (height + kernelHeight - 1) / kernelHeight * rowBytes;
  const std::uint64_t blocks = RecordedBlocks(image);
  for (std::uint64_t block = 0; block < blocks && status == SUCCESS && blockBytes != 0; ++block) {
    status = KsCopyBytes(out, file->fileHandle, blockBytes);
  }
  return status;
}

std::int32_t KNitfSaveFile::WriteGraphicData(KsHandle out, NitfFile *file, std::uint32_t index) {
  const NitfHeader &header = file->header;
  return WriteBody<GraphicSubheader>(out, file, SegmentKind::Graphic, index,
                                     Entry(header.graphicDataLengthsOut, header.graphicTableCount, index),
                                     DataLength(file, SegmentKind::Graphic, index));
}

std::int32_t KNitfSaveFile::WriteLabelData(KsHandle out, NitfFile *file, std::uint32_t index) {
  const std::uint32_t bytes = Entry(file->header.labelDataLengthsOut, file->header.labelTableCount, index);
  return WriteBody<LabelSubheader>(out, file, SegmentKind::Label, index, bytes, bytes);
}

std::int32_t KNitfSaveFile::WriteTextData(KsHandle out, NitfFile *file, std::uint32_t index) {
  const std::uint32_t bytes = Entry(file->header.textDataLengthsOut, file->header.textTableCount, index);
  return WriteBody<TextSubheader>(out, file, SegmentKind::Text, index, bytes, bytes);
}
