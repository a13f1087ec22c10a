#include "images/vq.h"

#include "headers/mask_table.h"
#include "images/block_starts.h"
#include "images/image_target.h"
#include "images/vq_tables.h"
#include "internal/ksclasses_.h"
#include "table/file_bytes.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <new>

namespace ksntfx {

namespace {

constexpr std::uint32_t kMostCodeBits = 16;

Status ReadBytes(KsHandle file, void *buffer, std::uint64_t bytes) {
  return KsRead(file, buffer, bytes) == bytes ? SUCCESS : ERROR_FILE_READ;
}

/** The size of a kernel, and how much of it the lookup tables fill; the values behind that are 0. */
struct Kernel {
  std::uint32_t width;
  std::uint32_t height;
  std::uint32_t filledRows; /**< whole rows with values */
  std::uint32_t filledRest; /**< values of the row behind them */
  std::uint64_t values;     /**< all values of a kernel that the tables give */

  /** The kernel without its rows from `rows` on. */
  Kernel CutTo(std::uint32_t rows) const {
    Kernel cut = *this;
    if (rows <= filledRows) cut.filledRest = 0;
    cut.filledRows = std::min(filledRows, rows);
    return cut;
  }
};

Status MeasureKernel(const VqHeader &header, const BlockGrid &grid, Kernel *kernel) {
  if (header.codeBits > kMostCodeBits) return ERROR_FILE_FORMAT;
  if (header.codeRows == 0 || header.codesPerRow == 0 || header.lookupRecords == 0) return ERROR_FILE_FORMAT;
  kernel->width = grid.width / header.codesPerRow;
  kernel->height = grid.height / header.codeRows;
  if (kernel->width == 0 || kernel->height == 0) return ERROR_FILE_FORMAT;
  // A table adds a kernel height of values; those of more tables than fit a kernel fall to the kernels behind it.
  kernel->values = std::uint64_t{std::min<std::uint32_t>(header.lookupRecords, kernel->width)} * kernel->height;
  kernel->filledRows = static_cast<std::uint32_t>(kernel->values / kernel->width);
  kernel->filledRest = static_cast<std::uint32_t>(kernel->values % kernel->width);
  return SUCCESS;
}

/** The kernels of all codes: what the file gives of each one, row by row, and so no larger than the file. */
class Codebook {
 public:
  /** Reads all lookup tables, which are interleaved here: table t gives each kernel a kernel height of values. */
  Status Read(KsHandle file, const VqHeader &header, const Kernel &kernel, std::uint32_t entries) {
    const std::uint64_t entryBytes = std::uint64_t{header.lookupRecords} * kernel.height;
    if (entryBytes == 0) return ERROR_FILE_FORMAT;
    if (entries > BytesLeft(file) / entryBytes) return ERROR_FILE_READ;
    named = std::min(entries, 1U << header.codeBits);
    stride = kernel.values;
    KsArray<std::uint8_t> table;
    const std::uint64_t tableBytes = std::uint64_t{named} * kernel.height;
    if (!bytes.Allocate(named * stride) || !table.Allocate(tableBytes)) return ERROR_NO_MEMORY;
    for (std::uint32_t number = 0; number < header.lookupRecords; ++number) {
      Status status = ReadBytes(file, table.Get(), tableBytes);
      if (status != SUCCESS) return status;
      if (!SkipBytes(file, entries - named, kernel.height)) return ERROR_FILE_READ;
      Interleave(table.Get(), kernel.height, std::uint64_t{number} * kernel.height);
    }
    return SUCCESS;
  }

  const std::uint8_t *Values(std::uint32_t code) const { return bytes.Get() + code * stride; }
  /** The number of codes with a kernel. More than a code can name are not kept. */
  std::uint32_t Named() const { return named; }

 private:
  /** Puts the values of a table `start` bytes behind the beginning of their kernels, as far as the book goes. */
  void Interleave(const std::uint8_t *table, std::uint32_t height, std::uint64_t start) {
    const std::uint64_t end = named * stride;
    for (std::uint64_t at = start; at < end; at += stride, table += height) {
      std::memcpy(bytes.Get() + at, table, std::min<std::uint64_t>(height, end - at));
    }
  }

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
  Status Seek(std::uint64_t first, std::uint64_t count) {
    const std::uint64_t firstBit = first * bits;
    const auto skipped = static_cast<std::uint32_t>(firstBit % 8);
    if (KsSeek(file, start + static_cast<std::int64_t>(firstBit / 8), KS_SEEK_START) < 0) return ERROR_FILE_READ;
    bytesLeft = (skipped + count * bits + 7) / 8;
    next = pieceEnd = 0;
    held = 0;
    if (skipped == 0) return SUCCESS;
    const Status status = ReadPiece();
    if (status != SUCCESS) return status;
    window = piece[next++];
    held = 8 - skipped;
    return SUCCESS;
  }

  /** Reads the next `count` codes. */
  Status Read(std::uint16_t *codes, std::uint32_t count) {
    std::uint32_t at = 0;
    while (at < count) {
      at += bits == kPairBits ? ReadPairs(codes + at, count - at) : 0;
      if (at == count) break;
      const Status status = ReadOne(codes + at++);
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

  Status ReadOne(std::uint16_t *code) {
    for (; held < bits; held += 8) {
      if (next == pieceEnd) {
        const Status status = ReadPiece();
        if (status != SUCCESS) return status;
      }
      window = window << 8 | piece[next++];
    }
    held -= bits;
    *code = static_cast<std::uint16_t>(window >> held & ((1U << bits) - 1));
    return SUCCESS;
  }

  Status ReadPiece() {
    next = 0;
    pieceEnd = std::min(bytesLeft, kPieceBytes);
    bytesLeft -= pieceEnd;
    return pieceEnd != 0 ? ReadBytes(file, piece.Get(), pieceEnd) : ERROR_FILE_READ;
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

class VqReader final : public ImageReader {
 public:
  explicit VqReader(const ImageSource &data)
      : source(data), image(*data.image), file(data.file), grid(image), mask(image, data.dataLength) {}

  /** Reads what stands in front of the codes, and checks that they are all there and have entries. */
  Status Open() override {
    if (image.bitsPerPixel != kVqDepth || TargetDepth(image) != kVqDepth) return ERROR_NOT_SUPPORTED;
    Status status = CheckTargetSize(image);
    if (status == SUCCESS) status = ReadTables();
    if (status != SUCCESS) return status;
    MeasureBlocks();
    if (!HoldsCodes()) return ERROR_FILE_READ;
    if (!stream.Open(file, header.codeBits)) return ERROR_NO_MEMORY;
    place = ChoosePlacing(kernel);
    shape = ShapeOf(grid, kVqDepth);
    shape.across = lastColumn + 1;
    shape.down = lastRow + 1;
    shape.rowUnit = kernel.height;
    shape.stripBytes = kStripBytes;
    shape.hasHoles = kernel.filledRows < kernel.height || std::uint64_t{kernel.width} * header.codesPerRow < grid.width;
    return CheckCodes();
  }

  Status MakeBitmap(KsBitmap *bitmap, std::uint64_t rows) override {
    return CreateTarget(bitmap, image, shape.Width(), rows);
  }

  /** Rows of whole kernels, right into their place. */
  Status Read(const BlockRows &which, const StripPlace &at, StoredRows *stored) override {
    *stored = {};
    CountBefore(which.block);
    if (!IsPresent(which.block)) return SUCCESS;
    const std::uint32_t codeRows = RowsOfKernels(which.rows);
    const std::uint64_t first =
        ordinal * CodesPerBlock() + std::uint64_t{which.first / kernel.height} * header.codesPerRow;
    Status status = stream.Seek(first, std::uint64_t{codeRows} * header.codesPerRow);
    for (std::uint32_t row = 0; row < codeRows && status == SUCCESS; ++row) {
      const std::uint32_t top = row * kernel.height;
      status = ReadRow(at.bytes + std::uint64_t{top} * at.step, at.step, which.rows - top);
    }
    stored->form = StoredRows::Form::Placed;
    return status;
  }

 private:
  /** Only the word for it makes a block absent here: the codes of all others follow each other. */
  bool IsPresent(std::uint64_t block) const { return !mask.HasBlockMask() || mask.BlockWord(block) != kNotRecorded; }

  /** Counts the recorded blocks before a block: from the row that was counted last, or from the first one. */
  void CountBefore(std::uint64_t block) {
    if (!mask.HasBlockMask()) {
      ordinal = block;
      return;
    }
    const std::uint64_t row = block - block % grid.across;
    if (row < rowStart) rowStart = recordedBeforeRow = 0;
    for (; rowStart < row; ++rowStart) recordedBeforeRow += IsPresent(rowStart) ? 1 : 0;
    if (counted < row || counted > block) {
      counted = row;
      ordinal = recordedBeforeRow;
    }
    for (; counted < block; ++counted) ordinal += IsPresent(counted) ? 1 : 0;
  }

  Status ReadTables() {
    if (KsSeek(file, source.dataStart, KS_SEEK_START) < 0) return ERROR_FILE_READ;
    Status status = SkipMaskTable(file, image);
    if (status == SUCCESS) status = ReadBinary(file, kVqHeaderRows, &header);
    if (status == SUCCESS) status = MeasureKernel(header, grid, &kernel);
    if (status != SUCCESS) return status;
    VqLookupRecord first{};
    for (std::uint32_t table = 0; table < header.lookupRecords; ++table) {
      VqLookupRecord record{};
      status = ReadBinary(file, kVqLookupRows, &record);
      if (status != SUCCESS) return status;
      if (table == 0) first = record;
    }
    return book.Read(file, header, kernel, first.entries);
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

  /** The last kernels of a block may have rows below it. */
  std::uint32_t RowsOfKernels(std::uint32_t rows) const {
    return rows / kernel.height + (rows % kernel.height != 0 ? 1 : 0);
  }

  std::uint64_t CodesPerBlock() const { return std::uint64_t{RowsOfKernels(grid.height)} * header.codesPerRow; }

  /** Codes of no bits are all 0, and in every file. */
  bool HoldsCodes() const {
    if (header.codeBits == 0) return true;
    const std::uint64_t held = BytesLeft(file) * 8 / header.codeBits;
    return recorded <= held / CodesPerBlock();
  }

  /** Looks for codes without an entry before anything is shown, unless every code has one. */
  Status CheckCodes() {
    if (book.Named() == 1U << header.codeBits) return SUCCESS;
    std::uint64_t left = recorded * CodesPerBlock();
    Status status = stream.Seek(0, left);
    while (left != 0 && status == SUCCESS) {
      const auto count = static_cast<std::uint32_t>(std::min<std::uint64_t>(left, codes.size()));
      status = ReadCodes(count);
      left -= count;
    }
    return status;
  }

  /** Reads codes that have entries. */
  Status ReadCodes(std::uint32_t count) {
    const Status status = stream.Read(codes.data(), count);
    if (status != SUCCESS) return status;
    std::uint16_t largest = 0;
    for (std::uint32_t code = 0; code < count; ++code) largest = std::max(largest, codes[code]);
    return largest < book.Named() ? SUCCESS : ERROR_FILE_FORMAT;
  }

  /** Reads a row of kernels, of which `rows` rows are in the block. */
  Status ReadRow(std::uint8_t *out, std::uint64_t rowStep, std::uint32_t rows) {
    const Kernel shown = rows < kernel.height ? kernel.CutTo(rows) : kernel;
    const PlaceKernels placeShown = rows < kernel.height ? PlaceAnyKernels : place;
    for (std::uint32_t left = header.codesPerRow; left != 0;) {
      const std::uint32_t count = std::min(left, static_cast<std::uint32_t>(codes.size()));
      const Status status = ReadCodes(count);
      if (status != SUCCESS) return status;
      placeShown(book, shown, codes.data(), count, out, rowStep);
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
  std::uint64_t rowStart = 0; /**< the first block of the row of blocks in hand, and the recorded ones before it */
  std::uint64_t recordedBeforeRow = 0;
  std::uint64_t counted = 0; /**< the block that was read last, and the recorded ones before it */
  std::uint64_t ordinal = 0;
  std::array<std::uint16_t, 2048> codes{};
};

}  // namespace

std::unique_ptr<ImageReader> MakeVqReader(const ImageSource &source) {
  return std::unique_ptr<ImageReader>(new (std::nothrow) VqReader(source));
}

}  // namespace ksntfx
