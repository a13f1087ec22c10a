#include "deflate.h"
#include "picture.h"
#include "png_rows.h"

#include <algorithm>
#include <array>
#include <csetjmp>
#include <cstdio>
#include <deque>
#include <future>
#include <memory>
#include <new>
#include <span>
#include <thread>

#include <png.h>

namespace ntf {
namespace {

// ---- what libpng writes -------------------------------------------------------------------------------------------
// It reports errors by a jump back to the setjmp of the call. Therefore each call goes through one of the functions
// below, which have no objects with destructors.

struct PngFailure {
  std::array<char, 120> words{};
  bool inOutput = false; /* the output failed, and knows the reason */
};

struct PngTarget {
  OutputFile &output;
  PngFailure failure;
};

[[noreturn]] void OnError(png_structp png, png_const_charp message) {
  auto *target = static_cast<PngTarget *>(png_get_error_ptr(png));
  std::snprintf(target->failure.words.data(), target->failure.words.size(), "%s", message);
  png_longjmp(png, 1);
}

void OnWarning(png_structp, png_const_charp) {}

void OnWrite(png_structp png, png_bytep bytes, png_size_t size) {
  auto *target = static_cast<PngTarget *>(png_get_io_ptr(png));
  if (target->output.Write(bytes, size)) return;
  target->failure.inOutput = true;
  png_error(png, "write error");
}

void OnFlush(png_structp) {}

int ColorTypeOf(PixelKind kind) {
  switch (kind) {
    case PixelKind::Color:
      return PNG_COLOR_TYPE_RGB;
    case PixelKind::Palette:
      return PNG_COLOR_TYPE_PALETTE;
    default:
      return PNG_COLOR_TYPE_GRAY;
  }
}

bool WriteHeader(png_structp png, png_infop info, const PictureShape &shape, const png_color *palette) {
  if (setjmp(png_jmpbuf(png)) != 0) return false;  // NOLINT(cert-err52-cpp): the interface of libpng
  png_set_user_limits(png, PNG_UINT_31_MAX, PNG_UINT_31_MAX);
  png_set_IHDR(png, info, shape.width, shape.height, static_cast<int>(shape.bits), ColorTypeOf(shape.kind),
               PNG_INTERLACE_NONE, PNG_COMPRESSION_TYPE_DEFAULT, PNG_FILTER_TYPE_DEFAULT);
  if (shape.kind == PixelKind::Palette) png_set_PLTE(png, info, palette, static_cast<int>(shape.palette.size()));
  png_write_info(png, info);
  return true;
}

bool WriteChunk(png_structp png, const char *name, const std::uint8_t *bytes, std::size_t size) {
  if (setjmp(png_jmpbuf(png)) != 0) return false;
  png_write_chunk(png, reinterpret_cast<png_const_bytep>(name), bytes, size);
  return true;
}

// ---- the pixels ---------------------------------------------------------------------------------------------------

/** A group of rows to compress and write. Its memory is reused for later groups. */
struct RowGroup {
  PngRows rows;
  std::vector<std::uint8_t> filtered;
  DeflatedPart part;

  void Compress(CompressionLevel level, bool isLast) {
    FilterRows(rows, filtered);
    DeflatePart(filtered, level, isLast, part);
  }
};

std::size_t PixelBytesOf(const PictureShape &shape) {
  if (shape.kind == PixelKind::Palette || shape.bits < 8) return 0;
  return (shape.kind == PixelKind::Color ? 3 : 1) * shape.bits / 8;
}

/** Compresses groups of rows in parallel, one on each processor, and writes them in order. */
class PngWriter final : public PictureWriter {
 public:
  PngWriter(OutputFile &output, CompressionLevel compression) : target{output, {}}, level(compression) {}
  ~PngWriter() override { png_destroy_write_struct(&png, &info); }

  Outcome Begin(const PictureShape &shape) override {
    png = png_create_write_struct(PNG_LIBPNG_VER_STRING, &target, OnError, OnWarning);
    if (png != nullptr) info = png_create_info_struct(png);
    if (info == nullptr) return StatusProblem(target.output.Name(), ERROR_NO_MEMORY);
    png_set_write_fn(png, &target, OnWrite, OnFlush);

    std::vector<png_color> palette;
    for (const KsPaletteEntry &entry : shape.palette) palette.push_back({entry.red, entry.green, entry.blue});
    rowBytes = shape.RowBytes();
    pixelBytes = level == kStored ? 0 : PixelBytesOf(shape);
    StartGroup(std::vector<std::uint8_t>(rowBytes));
    return Answer(WriteHeader(png, info, shape, palette.data()));
  }

  Outcome WriteRow(const std::uint8_t *row) override {
    std::vector<std::uint8_t> &bytes = group->rows.bytes;
    if (group->rows.Count() != 0 && bytes.size() >= kGroupBytes) {
      const std::vector<std::uint8_t> lastRow(bytes.end() - static_cast<std::ptrdiff_t>(rowBytes), bytes.end());
      if (Outcome failed = Compress(false)) return failed;
      StartGroup(lastRow);
    }
    group->rows.bytes.insert(group->rows.bytes.end(), row, row + rowBytes);
    return {};
  }

  Outcome End() override {
    if (Outcome failed = Compress(true)) return failed;
    while (!compressing.empty()) {
      if (Outcome failed = WriteFirst()) return failed;
    }
    if (Outcome failed = WriteData(stream.Trailer())) return failed;
    return Answer(WriteChunk(png, "IEND", nullptr, 0));
  }

 private:
  /** Large enough that compressing groups independently costs little, and small enough for the cache. */
  static constexpr std::size_t kGroupBytes = 1 << 20;

  void StartGroup(const std::vector<std::uint8_t> &above) {
    if (spare.empty()) {
      group = std::make_unique<RowGroup>();
      group->rows.bytes.reserve(kGroupBytes + 2 * rowBytes);
    } else {
      group = std::move(spare.back());
      spare.pop_back();
    }
    group->rows.rowBytes = rowBytes;
    group->rows.pixelBytes = pixelBytes;
    group->rows.bytes.assign(above.begin(), above.end());
  }

  Outcome Compress(bool isLast) {
    if (compressing.size() >= processors) {
      if (Outcome failed = WriteFirst()) return failed;
    }
    // If no thread can be started, the work is done when its result is needed.
    compressing.push_back(std::async([rows = std::move(group), compression = level, isLast]() mutable {
      rows->Compress(compression, isLast);
      return std::move(rows);
    }));
    return {};
  }

  /** Writes the next group of the file. */
  Outcome WriteFirst() {
    std::unique_ptr<RowGroup> done;
    try {
      done = compressing.front().get();
    } catch (const std::bad_alloc &) {
      return StatusProblem(target.output.Name(), ERROR_NO_MEMORY);
    }
    compressing.pop_front();
    stream.Add(done->part);
    Outcome failed = WriteData(done->part.Bytes());
    spare.push_back(std::move(done));
    return failed;
  }

  Outcome WriteData(std::span<const std::uint8_t> bytes) const {
    constexpr std::size_t kMostOfAChunk = 1 << 30;
    while (!bytes.empty()) {
      const std::span<const std::uint8_t> piece = bytes.first(std::min(bytes.size(), kMostOfAChunk));
      if (!WriteChunk(png, "IDAT", piece.data(), piece.size())) return Answer(false);
      bytes = bytes.subspan(piece.size());
    }
    return {};
  }

  Outcome Answer(bool done) const {
    if (done) return {};
    if (target.failure.inOutput) return target.output.Failure();
    return Problem{target.output.Name(), target.failure.words.data(), ERROR_FILE_WRITE};
  }

  PngTarget target;
  CompressionLevel level;
  ZlibStream stream;
  std::size_t rowBytes = 0;
  std::size_t pixelBytes = 0; /* as in PngRows */
  std::unique_ptr<RowGroup> group;
  std::deque<std::future<std::unique_ptr<RowGroup>>> compressing; /* in the order of the file */
  std::vector<std::unique_ptr<RowGroup>> spare;
  const std::size_t processors = std::max(1U, std::thread::hardware_concurrency());
  png_structp png = nullptr;
  png_infop info = nullptr;
};

}  // namespace

std::unique_ptr<PictureWriter> MakePngWriter(OutputFile &output, CompressionLevel level) {
  return std::make_unique<PngWriter>(output, level);
}

}  // namespace ntf
