#include "save/savenitf.h"

#include "headers/mask_table.h"
#include "images/block_grid.h"
#include "images/vq_tables.h"
#include "internal/ksclasses_.h"
#include "table/fields.h"
#include "table/header_writer.h"

#include <algorithm>

namespace ksntfx {

namespace {

Status WriteAll(KsHandle out, const void *data, std::uint64_t bytes) {
  return bytes == 0 || KsWrite(out, data, bytes) == bytes ? SUCCESS : ERROR_FILE_WRITE;
}

/** Copies `bytes` bytes of a segment's body to the output's position. */
Status CopyBody(KsHandle out, const NitfFile *file, SegmentKind kind, std::uint32_t index, std::uint64_t bytes) {
  if (bytes == 0) return SUCCESS;
  SeekSegmentData(file, kind, index);
  return KsCopyBytes(out, file->fileHandle, bytes);
}

Status WriteSubheader(KNitfSaveFile &save, KsHandle out, NitfFile *file, SegmentKind kind, std::uint32_t index) {
  const void *const record = FindSubheader(file, kind, index);
  if (record == nullptr) return ERROR_INVALID_VALUE;
  KsSeek(out, 0, KS_SEEK_END);
  HeaderSink sink{.out = out, .nitf20 = file->nitf20Layout != 0 || kind == SegmentKind::Label};
  const Status status = HeaderWriter(sink, record).Write(SubheaderTable(file, kind));
  save.marks.maskBytes = sink.marks.maskBytes;
  return status;
}

/** The bytes to write of a body in memory: as many as the header counts, which a caller may have set, or all. */
template <class Record>
std::uint32_t HeldBytes(const Record &record, std::uint32_t counted) {
  return std::min(counted, record.memoryBytes);
}

/** Writes a body from memory where the record has one there, or copies it. */
template <class Record>
Status WriteBody(KsHandle out, const NitfFile *file, SegmentKind kind, std::uint32_t index, std::uint32_t bytesInMemory,
                 std::uint32_t bytesInSource) {
  const auto *record = static_cast<const Record *>(FindSubheader(file, kind, index));
  KsSeek(out, 0, KS_SEEK_END);
  if (record != nullptr && record->hasMemoryData != 0) {
    const std::uint32_t held = HeldBytes(*record, bytesInMemory);
    return held == 0 || KsWriteBlock(out, record->memoryData, held) == held ? SUCCESS : ERROR_FILE_WRITE;
  }
  return CopyBody(out, file, kind, index, bytesInSource);
}

/** Copies the records of all lookup tables, and finds how many entries each table has. */
Status CopyVqLookupRecords(KsHandle out, const NitfFile *file, const VqHeader &header, std::uint32_t *entries) {
  *entries = 0;
  Status status = SUCCESS;
  for (std::uint32_t table = 0; table < header.lookupRecords && status == SUCCESS; ++table) {
    VqLookupRecord record{};
    status = ReadBinary(file->fileHandle, kVqLookupRows, &record);
    if (status == SUCCESS) status = WriteBinary(out, kVqLookupRows, &record);
    if (table == 0) *entries = record.entries;
  }
  return status;
}

// ---- field widths -------------------------------------------------------------------------------------------------

/** Whether a number is written whole. It may have come with a minus sign. */
bool FitsDigits(std::uint32_t number, int digits) {
  char text[12];
  return FormatBounded(text, sizeof text, "%d", static_cast<std::int32_t>(number)) <= digits;
}

bool FitsFields(const ImageSubheader &image) {
  const auto blockFits = [](std::uint32_t size, std::uint32_t whole) { return FitsDigits(size, 4) || size == whole; };
  return FitsDigits(image.rows, 8) && FitsDigits(image.columns, 8) && FitsDigits(image.actualBits, 2) &&
         FitsDigits(image.bitsPerPixel, 2) && FitsDigits(image.blocksPerRow, 4) &&
         FitsDigits(image.blocksPerColumn, 4) && blockFits(image.blockWidth, image.columns) &&
         blockFits(image.blockHeight, image.rows);
}

// ---- what would not arrive whole ----------------------------------------------------------------------------------

/** Whether the positions of a kind's segments can be told in the format's 32 bits. */
bool HasPlaces(const NitfFile *file, SegmentKind kind) {
  std::uint64_t bytes = 0;
  for (std::uint32_t index = 0; index < CountInFile(file, kind); ++index) {
    bytes += std::uint64_t{SubheaderLength(file, kind, index)} + DataLength(file, kind, index);
  }
  return bytes <= UINT32_MAX;
}

/**
 * Whether a mask table whose pad value has grown leaves room for the data that are copied over it: within their length,
 * and within IMDATOFF where the data are placed by that, which a measured image before them brings about.
 */
bool HasRoomForMask(const NitfFile *file, const ImageSubheader &image, bool isMeasuredBefore) {
  const std::uint64_t bytes = MaskTableBytes(image);
  if (image.hasMemoryData != 0 || image.maskBytesRead == 0 || bytes <= image.maskBytesRead) return true;
  return bytes <= (isMeasuredBefore ? image.maskDataOffset : DataLength(file, SegmentKind::Image, image.index));
}

/** Masked vector-quantised data are written behind the table that the subheader came with. */
bool IsMeasured(const ImageSubheader &image) {
  return image.maskDataOffset != 0 && image.compression == kM4;
}

/** Whether a subheader that has grown fits its LISH, behind which the data are placed. */
bool FitsItsLength(const NitfFile *file, const ImageSubheader &image) {
  const std::uint64_t maskBytes = MaskTableBytes(image);
  if (image.pixelValueType > 1) return true;  // which is refused where it is written
  HeaderSink sink{.nitf20 = file->nitf20Layout != 0};
  const std::uint64_t written = VisitFields(kImageTable, &image, sink, [](auto &&, auto) {});
  const std::uint32_t told = EntryOf(file->header, kImageLengths, kImageLengths.subheader.outTable, image.index);
  return told == 0 || written - maskBytes <= std::max(told, image.subheaderBytesRead);
}

}  // namespace

Status CheckBeforeSave(const NitfFile *file) {
  if (file->header.imageLengthsCut != 0) return ERROR_INVALID_VALUE;
  for (const SegmentKind kind : kSegmentKinds) {
    if (!HasPlaces(file, kind)) return ERROR_INVALID_VALUE;
  }
  bool isMeasuredBefore = false;
  for (const SegmentNode *node = file->imageList; node != nullptr; node = node->next) {
    const auto *image = static_cast<const ImageSubheader *>(node->subheader);
    if (image == nullptr) continue;
    if (!FitsFields(*image)) return ERROR_INVALID_VALUE;
    if (IsMeasured(*image)) {
      isMeasuredBefore = true;
    } else if (!FitsItsLength(file, *image) || !HasRoomForMask(file, *image, isMeasuredBefore)) {
      return ERROR_INVALID_VALUE;
    }
  }
  return SUCCESS;
}

KNitfSaveFile::~KNitfSaveFile() {
  KsFreeAndClear(scratch1);
  KsFreeAndClear(scratch2);
  KsFreeAndClear(scratch3);
}

Status KNitfSaveFile::WriteFileHeader(KsHandle out, NitfFile *file) {
  file->header.fileLengthOut = static_cast<std::uint32_t>(ParseNumber(BufferText(file->header.FL, 12)));
  HeaderSink sink = SinkFor(file, out);
  WriteAsRead(&file->header, kImageLengths, sink.listed[SegmentKind::Image]);
  const Status status = HeaderWriter(sink, &file->header).Write(kFileHeaderTable);
  marks = sink.marks;
  return status;
}

Status KNitfSaveFile::WriteSegments(KsHandle out, NitfFile *file) {
  std::int64_t mark = KsSeek(out, 0, KS_SEEK_CURRENT);
  Status status = SUCCESS;
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
Status KNitfSaveFile::WriteImage(KsHandle out, NitfFile *file, std::uint32_t index, std::int64_t *mark) {
  Status status = WriteImageSubheader(out, file, index);
  if (status != SUCCESS) return status;
  const ImageSubheader &image = *FindImage(file, index);
  const bool measured = IsMeasured(image);
  const std::int64_t subheaderEnd = KsSeek(out, 0, KS_SEEK_CURRENT);
  if (measured) {
    const auto length = static_cast<std::uint32_t>(subheaderEnd - *mark - marks.maskBytes);
    if (length != SubheaderLength(file, SegmentKind::Image, index)) {
      lengthsPatched = 1;
      status = PatchImageSubheaderLength(file, out, index, length);
    }
  }
  if (status == SUCCESS) status = WriteImageBody(out, file, image, index);
  *mark = KsSeek(out, 0, KS_SEEK_CURRENT);
  if (status != SUCCESS || !measured) return status;
  lengthsPatched = 1;
  const auto length = static_cast<std::uint32_t>(*mark - subheaderEnd + marks.maskBytes);
  if (length == DataLength(file, SegmentKind::Image, index)) return SUCCESS;
  return PatchImageDataLength(file, out, index, length);
}

Status KNitfSaveFile::WriteImageBody(KsHandle out, NitfFile *file, const ImageSubheader &image, std::uint32_t index) {
  if (image.hasMemoryData != 0) {
    const std::uint32_t counted = EntryOf(file->header, kImageLengths, kImageLengths.data.outTable, index);
    return WriteAll(out, image.memoryData, HeldBytes(image, counted));
  }
  // All bodies are copied as they are but those whose mask table may have changed.
  return image.compression == kM4 ? WriteVqImageData(out, file, image, index) : WriteImageData(out, file, index);
}

Status KNitfSaveFile::WriteDataExtension(KsHandle out, NitfFile *file, std::uint32_t index) {
  const Status status = WriteDataExtensionSubheader(out, file, index);
  if (status != SUCCESS) return status;
  KsSeek(out, 0, KS_SEEK_END);
  return CopyBody(out, file, SegmentKind::DataExtension, index, DataLength(file, SegmentKind::DataExtension, index));
}

Status KNitfSaveFile::WriteImageSubheader(KsHandle out, NitfFile *file, std::uint32_t index) {
  return WriteSubheader(*this, out, file, SegmentKind::Image, index);
}

Status KNitfSaveFile::WriteGraphicSubheader(KsHandle out, NitfFile *file, std::uint32_t index) {
  return WriteSubheader(*this, out, file, SegmentKind::Graphic, index);
}

Status KNitfSaveFile::WriteLabelSubheader(KsHandle out, NitfFile *file, std::uint32_t index) {
  return WriteSubheader(*this, out, file, SegmentKind::Label, index);
}

Status KNitfSaveFile::WriteTextSubheader(KsHandle out, NitfFile *file, std::uint32_t index) {
  return WriteSubheader(*this, out, file, SegmentKind::Text, index);
}

Status KNitfSaveFile::WriteDataExtensionSubheader(KsHandle out, NitfFile *file, std::uint32_t index) {
  return WriteSubheader(*this, out, file, SegmentKind::DataExtension, index);
}

/** Overwrites one length of image `index`, whose column of the table begins at `offset`. */
Status KNitfSaveFile::Patch(NitfFile *file, KsHandle out, const LengthColumn &column, std::uint32_t offset,
                            std::uint32_t index, std::uint32_t length) {
  constexpr std::uint32_t kRowBytes = kImageLengths.subheader.width + kImageLengths.data.width;
  char digits[12];
  FormatBounded(digits, sizeof digits, "%d", static_cast<std::int32_t>(length));
  KsSeek(out, std::int64_t{marks.imageLengths} + offset + kRowBytes * index, KS_SEEK_START);
  const Status status = WriteField(nullptr, out, digits, column.width, "0");
  KsSeek(out, 0, KS_SEEK_END);
  std::uint32_t *const table = file->header.*column.outTable;
  if (status == SUCCESS && table != nullptr && index < file->header.imageTableCount) table[index] = length;
  return status;
}

Status KNitfSaveFile::PatchImageSubheaderLength(NitfFile *file, KsHandle out, std::uint32_t index,
                                                std::uint32_t length) {
  return Patch(file, out, kImageLengths.subheader, 0, index, length);
}

Status KNitfSaveFile::PatchImageDataLength(NitfFile *file, KsHandle out, std::uint32_t index, std::uint32_t length) {
  return Patch(file, out, kImageLengths.data, kImageLengths.subheader.width, index, length);
}

Status KNitfSaveFile::WriteImageData(KsHandle out, NitfFile *file, std::uint32_t index) {
  const NitfHeader &header = file->header;
  // The source's data begin with their own mask table, which takes the place of the one behind the subheader.
  if (lengthsPatched != 0) {
    KsSeek(out, -std::int64_t{FindImage(file, index)->maskDataOffset}, KS_SEEK_END);
  } else {
    const auto entry = [&](const LengthColumn &column, std::uint32_t at) {
      return EntryOf(header, kImageLengths, column.outTable, at);
    };
    std::int64_t place = header.headerLengthOut;
    for (std::uint32_t before = 0; before < index; ++before) {
      place += entry(kImageLengths.subheader, before);
      place += entry(kImageLengths.data, before);
    }
    KsSeek(out, place + entry(kImageLengths.subheader, index), KS_SEEK_START);
  }
  return CopyBody(out, file, SegmentKind::Image, index, DataLength(file, SegmentKind::Image, index));
}

Status KNitfSaveFile::WriteVqImageData(KsHandle out, NitfFile *file, const ImageSubheader &image, std::uint32_t index) {
  SeekSegmentData(file, SegmentKind::Image, index);
  // Where the file ends inside the table, the next read fails.
  if (image.compression == kM4) static_cast<void>(SkipMaskTable(file->fileHandle, image));
  VqHeader header{};
  Status status = ReadBinary(file->fileHandle, kVqHeaderRows, &header);
  if (status != SUCCESS) return status;
  const std::uint32_t height = BlockHeight(image);
  const std::uint32_t kernelHeight = header.codeRows == 0 ? 0 : height / header.codeRows;
  if (kernelHeight == 0) return ERROR_FILE_FORMAT;
  status = WriteBinary(out, kVqHeaderRows, &header);
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

Status KNitfSaveFile::WriteGraphicData(KsHandle out, NitfFile *file, std::uint32_t index) {
  return WriteBody<GraphicSubheader>(out, file, SegmentKind::Graphic, index,
                                     EntryOf(file->header, kGraphicLengths, kGraphicLengths.data.outTable, index),
                                     DataLength(file, SegmentKind::Graphic, index));
}

Status KNitfSaveFile::WriteLabelData(KsHandle out, NitfFile *file, std::uint32_t index) {
  const std::uint32_t bytes = EntryOf(file->header, kLabelLengths, kLabelLengths.data.outTable, index);
  return WriteBody<LabelSubheader>(out, file, SegmentKind::Label, index, bytes, bytes);
}

Status KNitfSaveFile::WriteTextData(KsHandle out, NitfFile *file, std::uint32_t index) {
  const std::uint32_t bytes = EntryOf(file->header, kTextLengths, kTextLengths.data.outTable, index);
  return WriteBody<TextSubheader>(out, file, SegmentKind::Text, index, bytes, bytes);
}

}  // namespace ksntfx
