#include "vq.h"

#include "blocks.h"
#include "internal/ksclasses_.h"
#include "samples.h"
#include "strips.h"

#include <algorithm>
#include <array>
#include <cstring>

namespace {

constexpr std::uint32_t kDepth = 8;
constexpr std::uint32_t kMostCodeBits = 16;

std::int32_t ReadBytes(KsHandle file, void *buffer, std::uint64_t bytes) {
  return KsRead(file, buffer, bytes) == bytes ? SUCCESS : ERROR_FILE_READ;
}

/** The bytes from the file's position to its end. */
std::uint64_t BytesLeft(KsHandle file) {
  const std::int64_t position = KsSeek(file, 0, KS_SEEK_CURRENT);
  const std::int64_t end = KsSeek(file, 0, KS_SEEK_END);
  KsSeek(file, position, KS_SEEK_START);
  return static_cast<std::uint64_t>(std::max<std::int64_t>(end - position, 0));
}

/** Moves over `count` items of `size` bytes that the file must hold. Their product may pass 64 bits. */
std::int32_t Skip(KsHandle file, std::uint64_t count, std::uint64_t size) {
  if (count == 0 || size == 0) return SUCCESS;
  if (count > BytesLeft(file) / size) return ERROR_FILE_READ;
  return KsSeek(file, static_cast<std::int64_t>(count * size), KS_SEEK_CURRENT) < 0 ? ERROR_FILE_READ : SUCCESS;
}

/** The size of a kernel, and how much of it the lookup tables fill; the values behind that are 0. */
struct Kernel {
  std::uint32_t width;
  std::uint32_t height;
  std::uint32_t filledRows; /**< whole rows with values */
  std::uint32_t filledRest; /**< values of the row behind them */
  std::uint64_t values;     /**< all values that the tables give */
};

std::int32_t MeasureKernel(const VqHeader &header, const BlockGrid &grid, Kernel *kernel) {
  if (header.codeBits == 0 || header.codeBits > kMostCodeBits) return ERROR_FILE_FORMAT;
  if (header.codeRows == 0 || header.codesPerRow == 0 || header.lookupRecords == 0) return ERROR_FILE_FORMAT;
  if (grid.height % header.codeRows != 0 || grid.width % header.codesPerRow != 0) return ERROR_FILE_FORMAT;
  kernel->width = grid.width / header.codesPerRow;
  kernel->height = grid.height / header.codeRows;
  kernel->values = std::uint64_t{header.lookupRecords} * kernel->height;
  // Neither is 0: a block has pixels, and the divisions leave no rest. A table adds a kernel height of values.
  if (header.lookupRecords > kernel->width) return ERROR_FILE_FORMAT;
  kernel->filledRows = static_cast<std::uint32_t>(kernel->values / kernel->width);
  kernel->filledRest = static_cast<std::uint32_t>(kernel->values % kernel->width);
  return SUCCESS;
}

/** The kernels of all codes: what the file gives of each one, row by row, and so no larger than the file. */
class Codebook {
 public:
  /** Reads all lookup tables, which are interleaved here: table t gives each kernel a kernel height of values. */
  std::int32_t Read(KsHandle file, const VqHeader &header, const Kernel &kernel, std::uint32_t entries) {
    if (entries > BytesLeft(file) / kernel.values) return ERROR_FILE_READ;
    named = std::min(entries, 1U << header.codeBits);
    stride = kernel.values;
    KsArray<std::uint8_t> table;
    const std::uint64_t tableBytes = std::uint64_t{named} * kernel.height;
    if (!bytes.Allocate(named * stride) || !table.Allocate(tableBytes)) return ERROR_NO_MEMORY;
    for (std::uint64_t start = 0; start < stride; start += kernel.height) {
      std::int32_t status = ReadBytes(file, table.Get(), tableBytes);
      if (status == SUCCESS) status = Skip(file, entries - named, kernel.height);
      if (status != SUCCESS) return status;
      for (std::uint64_t entry = 0; entry < named; ++entry) {
        std::memcpy(bytes.Get() + entry * stride + start, table.Get() + entry * kernel.height, kernel.height);
      }
    }
    return SUCCESS;
  }

  const std::uint8_t *Values(std::uint32_t code) const { return bytes.Get() + code * stride; }
  /** The number of codes with a kernel. More than a code can name are not kept. */
  std::uint32_t Named() const { return named; }

 private:
  KsArray<std::uint8_t> bytes;
  std::uint64_t stride = 0;
  std::uint32_t named = 0;
};

/** The codes of an image: one run of bits from the first block to the last. */
class CodeStream {
 public:
  /** The codes begin at the file's position. */
  bool Open(KsHandle source, std::uint32_t codeBits) {
    file = source;
    bits = codeBits;
    start = KsSeek(file, 0, KS_SEEK_CURRENT);
    return piece.Allocate(kPieceBytes);
  }

  /** Goes to code number `first`, of which and those behind it `count` will be read. */
  std::int32_t Seek(std::uint64_t first, std::uint64_t count) {
    const std::uint64_t firstBit = first * bits;
    const auto skipped = static_cast<std::uint32_t>(firstBit % 8);
    if (KsSeek(file, start + static_cast<std::int64_t>(firstBit / 8), KS_SEEK_START) < 0) return ERROR_FILE_READ;
    bytesLeft = (skipped + count * bits + 7) / 8;
    next = pieceEnd = 0;
    held = 0;
    if (skipped == 0) return SUCCESS;
    const std::int32_t status = ReadPiece();
    if (status != SUCCESS) return status;
    window = piece[next++];
    held = 8 - skipped;
    return SUCCESS;
  }

  /** Reads the next `count` codes. */
  std::int32_t Read(std::uint16_t *codes, std::uint32_t count) {
    std::uint32_t at = 0;
    while (at < count) {
      at += bits == kPairBits ? ReadPairs(codes + at, count - at) : 0;
      if (at == count) break;
      const std::int32_t status = ReadOne(codes + at++);
      if (status != SUCCESS) return status;
    }
    return SUCCESS;
  }

 private:
  static constexpr std::uint64_t kPieceBytes = 64 * 1024;
  /** The usual codes, two of which are three bytes. */
  static constexpr std::uint32_t kPairBits = 12;

  /** Reads pairs of codes from the piece in hand, while they begin with a byte: the number of codes. */
  std::uint32_t ReadPairs(std::uint16_t *codes, std::uint32_t count) {
    if (held != 0) return 0;
    const auto pairs = static_cast<std::uint32_t>(std::min<std::uint64_t>(count / 2, (pieceEnd - next) / 3));
    const std::uint8_t *from = piece.Get() + next;
    for (std::uint32_t pair = 0; pair < pairs; ++pair, from += 3) {
      codes[2 * pair] = static_cast<std::uint16_t>(from[0] << 4 | from[1] >> 4);
      codes[2 * pair + 1] = static_cast<std::uint16_t>((from[1] & 0xF) << 8 | from[2]);
    }
    next += std::uint64_t{pairs} * 3;
    return pairs * 2;
  }

  std::int32_t ReadOne(std::uint16_t *code) {
    for (; held < bits; held += 8) {
      if (next == pieceEnd) {
        const std::int32_t status = ReadPiece();
        if (status != SUCCESS) return status;
      }
      window = window << 8 | piece[next++];
    }
    held -= bits;
    *code = static_cast<std::uint16_t>(window >> held & ((1U << bits) - 1));
    return SUCCESS;
  }

  std::int32_t ReadPiece() {
    next = 0;
    pieceEnd = std::min(bytesLeft, kPieceBytes);
    bytesLeft -= pieceEnd;
    return pieceEnd != 0 ? ReadBytes(file, piece.Get(), pieceEnd) : static_cast<std::int32_t>(ERROR_FILE_READ);
  }

  KsHandle file = KS_INVALID_HANDLE;
  std::uint32_t bits = 0;
  std::int64_t start = 0;
  std::uint64_t bytesLeft = 0; /**< to be read behind the piece in hand */
  KsArray<std::uint8_t> piece;
  std::uint64_t next = 0;
  std::uint64_t pieceEnd = 0;
  std::uint32_t window = 0; /**< the bytes taken from the piece, the last one lowest */
  std::uint32_t held = 0;   /**< bits of the window that no code has taken */
};

/** Puts kernels side by side, from `out` on, the upper left corner of the first. */
using PlaceKernels = void (*)(const Codebook &book, const Kernel &kernel, const std::uint16_t *codes,
                              std::uint32_t count, std::uint8_t *out, std::uint64_t rowStep);

void PlaceAnyKernels(const Codebook &book, const Kernel &kernel, const std::uint16_t *codes, std::uint32_t count,
                     std::uint8_t *out, std::uint64_t rowStep) {
  for (std::uint32_t code = 0; code < count; ++code, out += kernel.width) {
    const std::uint8_t *values = book.Values(codes[code]);
    std::uint8_t *row = out;
    for (std::uint32_t filled = 0; filled < kernel.filledRows; ++filled, row += rowStep, values += kernel.width) {
      std::memcpy(row, values, kernel.width);
    }
    if (kernel.filledRest != 0) std::memcpy(row, values, kernel.filledRest);
  }
}

/** The usual kernel of 4 x 4 pixels: each row of it is one word. */
constexpr std::uint32_t kUsualSide = 4;
using UsualKernel = std::array<std::uint32_t, kUsualSide>;

UsualKernel LoadUsual(const std::uint8_t *values, std::uint16_t code) {
  UsualKernel rows;
  std::memcpy(rows.data(), values + code * sizeof rows, sizeof rows);
  return rows;
}

/** Four kernels at a time, whose rows are four words side by side. */
void PlaceUsualKernels(const Codebook &book, const Kernel &kernel, const std::uint16_t *codes, std::uint32_t count,
                       std::uint8_t *out, std::uint64_t rowStep) {
  const std::uint8_t *values = book.Values(0);
  const std::uint32_t fours = count / 4;
  for (std::uint32_t four = 0; four < fours; ++four, codes += 4, out += sizeof(UsualKernel)) {
    const UsualKernel a = LoadUsual(values, codes[0]);
    const UsualKernel b = LoadUsual(values, codes[1]);
    const UsualKernel c = LoadUsual(values, codes[2]);
    const UsualKernel d = LoadUsual(values, codes[3]);
    for (std::uint32_t row = 0; row < kUsualSide; ++row) {
      const UsualKernel words = {a[row], b[row], c[row], d[row]};
      std::memcpy(out + row * rowStep, words.data(), sizeof words);
    }
  }
  PlaceAnyKernels(book, kernel, codes, count % 4, out, rowStep);
}

PlaceKernels ChoosePlacing(const Kernel &kernel) {
  const bool usual = kernel.width == kUsualSide && kernel.height == kUsualSide && kernel.filledRows == kUsualSide;
  return usual ? PlaceUsualKernels : PlaceAnyKernels;
}

class VqDecoder {
 public:
  explicit VqDecoder(const ImageSource &data)
      : source(data), image(*data.image), file(data.file->fileHandle), grid(image), mask(data) {}

  /** Reads what stands in front of the codes, and checks that they are all there and have entries. */
  std::int32_t Open() {
    if (image.bitsPerPixel != kDepth || TargetDepth(image) != kDepth) return ERROR_NOT_SUPPORTED;
    std::int32_t status = CheckTargetSize(image);
    if (status == SUCCESS) status = ReadTables();
    if (status != SUCCESS) return status;
    MeasureBlocks();
    if (!HoldsCodes()) return ERROR_FILE_READ;
    if (!stream.Open(file, header.codeBits)) return ERROR_NO_MEMORY;
    place = ChoosePlacing(kernel);
    return CheckCodes();
  }

  /** The extent of the recorded blocks. */
  std::uint64_t Width() const { return (std::uint64_t{lastColumn} + 1) * grid.width; }
  std::uint64_t Height() const { return (std::uint64_t{lastRow} + 1) * grid.height; }

  /** The rows of codes that a strip of the whole width takes. */
  std::uint32_t CodeRowsPerStrip() const {
    const std::uint64_t rows = std::max<std::uint64_t>(kStripBytes / (Width() * kernel.height), 1);
    return static_cast<std::uint32_t>(std::min<std::uint64_t>(rows, header.codeRows));
  }
  std::uint32_t RowsPerStrip() const { return CodeRowsPerStrip() * kernel.height; }

  /** Whether not all pixels of the extent have a value in the file. */
  bool HasGaps() const { return mask.HasBlockMask() || kernel.filledRows < kernel.height; }

  /** Does `work` for each strip: its top and its rows. The strip is then to be filled by ReadStrip. */
  template <class Work>
  std::int32_t ForEachStrip(Work work) {
    const std::uint32_t step = CodeRowsPerStrip();
    std::uint64_t before = 0;
    for (std::uint32_t blockRow = 0; blockRow <= lastRow; ++blockRow) {
      for (std::uint32_t first = 0; first < header.codeRows; first += step) {
        strip = {blockRow, first, std::min(step, header.codeRows - first), before};
        const std::int32_t status = work(blockRow * grid.height + first * kernel.height, strip.rows * kernel.height);
        if (status != SUCCESS) return status;
      }
      before += RecordedInRow(blockRow);
    }
    return SUCCESS;
  }

  /** Fills the rows of the strip in hand where blocks are recorded. */
  std::int32_t ReadStrip(KsBitmap *rows) {
    std::uint64_t ordinal = strip.recordedBefore;
    for (std::uint32_t column = 0; column <= lastColumn; ++column) {
      if (!IsPresent(std::uint64_t{strip.blockRow} * grid.across + column)) continue;
      const std::int32_t status =
          ReadPart(ordinal++, rows->pixels + std::uint64_t{column} * grid.width, rows->bytesPerLine);
      if (status != SUCCESS) return status;
    }
    return SUCCESS;
  }

  std::int32_t MakeBitmap(KsBitmap *bitmap, std::uint64_t rows) const {
    const std::int32_t status = CreateTarget(bitmap, image, Width(), rows);
    return status == SUCCESS ? KsBitmapAccess(bitmap, 0) : status;
  }

 private:
  /** Some rows of codes of one row of blocks. */
  struct Strip {
    std::uint32_t blockRow;
    std::uint32_t first;
    std::uint32_t rows;
    std::uint64_t recordedBefore; /**< blocks in the rows of blocks above */
  };

  /** Only the word for it makes a block absent here: the codes of all others follow each other. */
  bool IsPresent(std::uint64_t block) const { return !mask.HasBlockMask() || mask.BlockWord(block) != kNotRecorded; }

  std::uint64_t RecordedInRow(std::uint32_t blockRow) const {
    if (!mask.HasBlockMask()) return grid.across;
    std::uint64_t count = 0;
    for (std::uint32_t column = 0; column <= lastColumn; ++column) {
      count += IsPresent(std::uint64_t{blockRow} * grid.across + column) ? 1 : 0;
    }
    return count;
  }

  std::int32_t ReadTables() {
    if (KsSeek(file, source.dataStart, KS_SEEK_START) < 0) return ERROR_FILE_READ;
    std::int32_t status = SkipMaskTable(source.file, image);
    if (status == SUCCESS) status = ReadVqHeader(source.file, &header);
    if (status == SUCCESS) status = MeasureKernel(header, grid, &kernel);
    if (status != SUCCESS) return status;
    if (header.lookupRecords > BytesLeft(file) / kVqLookupRecordBytes) return ERROR_FILE_READ;
    KsArray<VqLookupRecord> records;
    if (!records.Allocate(header.lookupRecords)) return ERROR_NO_MEMORY;
    status = ReadVqLookupRecords(source.file, header, records.Get());
    return status == SUCCESS ? book.Read(file, header, kernel, records[0].entries) : status;
  }

  /** Counts the recorded blocks, and finds the last row and column of blocks with one. */
  void MeasureBlocks() {
    if (!mask.HasBlockMask()) {
      recorded = grid.count;
      lastColumn = grid.across - 1;
      lastRow = grid.down - 1;
      return;
    }
    for (std::uint64_t block = 0; block < mask.Visited(grid.count); ++block) {
      if (!IsPresent(block)) continue;
      ++recorded;
      lastColumn = std::max(lastColumn, static_cast<std::uint32_t>(block % grid.across));
      lastRow = std::max(lastRow, static_cast<std::uint32_t>(block / grid.across));
    }
  }

  std::uint64_t CodesPerBlock() const { return std::uint64_t{header.codeRows} * header.codesPerRow; }

  bool HoldsCodes() const {
    const std::uint64_t held = BytesLeft(file) * 8 / header.codeBits;
    return recorded <= held / CodesPerBlock();
  }

  /** Looks for codes without an entry before anything is shown, unless every code has one. */
  std::int32_t CheckCodes() {
    if (book.Named() == 1U << header.codeBits) return SUCCESS;
    std::uint64_t left = recorded * CodesPerBlock();
    std::int32_t status = stream.Seek(0, left);
    while (left != 0 && status == SUCCESS) {
      const auto count = static_cast<std::uint32_t>(std::min<std::uint64_t>(left, codes.size()));
      status = ReadCodes(count);
      left -= count;
    }
    return status;
  }

  /** Reads codes that have entries. */
  std::int32_t ReadCodes(std::uint32_t count) {
    const std::int32_t status = stream.Read(codes.data(), count);
    if (status != SUCCESS) return status;
    std::uint16_t largest = 0;
    for (std::uint32_t code = 0; code < count; ++code) largest = std::max(largest, codes[code]);
    return largest < book.Named() ? SUCCESS : ERROR_FILE_FORMAT;
  }

  /** The part of one block that lies in the strip. `ordinal` counts the recorded blocks. */
  std::int32_t ReadPart(std::uint64_t ordinal, std::uint8_t *out, std::uint64_t rowStep) {
    const std::uint64_t first = ordinal * CodesPerBlock() + std::uint64_t{strip.first} * header.codesPerRow;
    std::int32_t status = stream.Seek(first, std::uint64_t{strip.rows} * header.codesPerRow);
    for (std::uint32_t row = 0; row < strip.rows && status == SUCCESS; ++row) {
      status = ReadRow(out + std::uint64_t{row} * kernel.height * rowStep, rowStep);
    }
    return status;
  }

  std::int32_t ReadRow(std::uint8_t *out, std::uint64_t rowStep) {
    for (std::uint32_t left = header.codesPerRow; left != 0;) {
      const std::uint32_t count = std::min(left, static_cast<std::uint32_t>(codes.size()));
      const std::int32_t status = ReadCodes(count);
      if (status != SUCCESS) return status;
      place(book, kernel, codes.data(), count, out, rowStep);
      out += std::uint64_t{count} * kernel.width;
      left -= count;
    }
    return SUCCESS;
  }

  const ImageSource &source;
  const ImageSubheader &image;
  KsHandle file;
  BlockGrid grid;
  BlockMask mask;
  VqHeader header{};
  Kernel kernel{};
  Codebook book;
  CodeStream stream;
  PlaceKernels place = nullptr;
  std::uint64_t recorded = 0; /**< blocks that are in the file */
  std::uint32_t lastColumn = 0;
  std::uint32_t lastRow = 0;
  Strip strip{};
  std::array<std::uint16_t, 2048> codes{};
};

/** Fills the strips of the whole picture. */
std::int32_t ReadWholeVq(VqDecoder &decoder, KsBitmap *target) {
  return decoder.ForEachStrip([&](std::uint32_t top, std::uint32_t rows) {
    KsLocalBitmap view;
    const std::int32_t status = KsBitmapView(view.Get(), sizeof(KsBitmap), target, 0, top, target->width, rows);
    return status == SUCCESS ? decoder.ReadStrip(view.Get()) : status;
  });
}

}  // namespace

std::int32_t SkipMaskTable(const NitfFile *file, const ImageSubheader &image) {
  if (!HasMaskTable(image.compression)) return SUCCESS;
  const KsHandle handle = file->fileHandle;
  std::uint8_t bytes[kMaskHeaderBytes];
  std::int32_t status = ReadBytes(handle, bytes, sizeof bytes);
  if (status == SUCCESS) status = Skip(handle, (BigEndian16(bytes + 8) + 7U) / 8, 1);
  const std::uint64_t blocks = std::uint64_t{image.blocksPerRow} * image.blocksPerColumn;
  const std::uint64_t blockBytes = std::uint64_t{image.bandField} * 4;
  if (status == SUCCESS && BigEndian16(bytes + 4) != 0) status = Skip(handle, blocks, blockBytes);
  if (status == SUCCESS && BigEndian16(bytes + 6) != 0) status = Skip(handle, blocks, blockBytes);
  return status;
}

std::int32_t ReadVqHeader(const NitfFile *file, VqHeader *header) {
  *header = VqHeader{};
  std::uint8_t bytes[kVqHeaderBytes];
  const std::int32_t status = ReadBytes(file->fileHandle, bytes, sizeof bytes);
  if (status != SUCCESS) return status;
  header->codeRows = BigEndian32(bytes);
  header->codesPerRow = BigEndian32(bytes + 4);
  header->codeBits = bytes[8];
  header->algorithm = BigEndian16(bytes + 9);
  header->lookupRecords = BigEndian16(bytes + 11);
  header->parameterRecords = BigEndian16(bytes + 13);
  header->lookupOffset = BigEndian32(bytes + 15);
  header->lookupRecordLength = BigEndian16(bytes + 19);
  return SUCCESS;
}

std::int32_t ReadVqLookupRecords(const NitfFile *file, const VqHeader &header, VqLookupRecord *records) {
  for (std::uint32_t record = 0; record < header.lookupRecords; ++record) {
    std::uint8_t bytes[kVqLookupRecordBytes];
    const std::int32_t status = ReadBytes(file->fileHandle, bytes, sizeof bytes);
    if (status != SUCCESS) return status;
    records[record] = {BigEndian16(bytes), BigEndian32(bytes + 2), BigEndian16(bytes + 6), BigEndian16(bytes + 8),
                       BigEndian32(bytes + 10)};
  }
  return SUCCESS;
}

std::int32_t DecodeVqImage(const ImageSource &source, KsBitmap *target) {
  VqDecoder decoder(source);
  std::int32_t status = decoder.Open();
  if (status == SUCCESS) status = decoder.MakeBitmap(target, decoder.Height());
  if (status != SUCCESS) return status;
  status = ReadWholeVq(decoder, target);
  KsBitmapRelease(target, 1, 1);
  if (status != SUCCESS) KsBitmapFree(target);
  return status;
}

std::int32_t DecodeVqInParts(const ImageSource &source, ImagePartSink &sink) {
  VqDecoder decoder(source);
  KsLocalBitmap strip;
  std::int32_t status = decoder.Open();
  if (status == SUCCESS) status = decoder.MakeBitmap(strip.Get(), decoder.RowsPerStrip());
  if (status != SUCCESS) return status;
  return decoder.ForEachStrip([&](std::uint32_t top, std::uint32_t rows) {
    if (decoder.HasGaps()) KsBitmapClear(strip.Get());
    const std::int32_t read = decoder.ReadStrip(strip.Get());
    return read == SUCCESS ? sink.Place(strip.Get(), top, rows) : read;
  });
}
