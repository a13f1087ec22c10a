#include "picture.h"

#include <array>
#include <csetjmp>
#include <cstdio>

#include <png.h>

namespace ntf {
namespace {

// libpng reports a failure by a jump back to the setjmp of the call that it was in. Therefore each call goes through
// one of the functions below, which hold nothing that would have to be destroyed.

// Half the time of zlib's default, for files that are hardly larger.
constexpr int kCompressionLevel = 4;

struct PngFailure {
  std::array<char, 120> words{};
  bool inOutput = false; /* the file refused the bytes, so it knows the reason better */
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
  png_set_compression_level(png, kCompressionLevel);
  png_write_info(png, info);
  return true;
}

bool WriteOneRow(png_structp png, const std::uint8_t *row) {
  if (setjmp(png_jmpbuf(png)) != 0) return false;
  png_write_row(png, row);
  return true;
}

bool WriteEnd(png_structp png) {
  if (setjmp(png_jmpbuf(png)) != 0) return false;
  png_write_end(png, nullptr);
  return true;
}

class PngWriter final : public PictureWriter {
 public:
  explicit PngWriter(OutputFile &output) : target{output, {}} {}
  ~PngWriter() override { png_destroy_write_struct(&png, &info); }

  Outcome Begin(const PictureShape &shape) override {
    png = png_create_write_struct(PNG_LIBPNG_VER_STRING, &target, OnError, OnWarning);
    if (png != nullptr) info = png_create_info_struct(png);
    if (info == nullptr) return StatusProblem(target.output.Name(), ERROR_NO_MEMORY);
    png_set_write_fn(png, &target, OnWrite, OnFlush);

    std::vector<png_color> palette;
    for (const KsPaletteEntry &entry : shape.palette) palette.push_back({entry.red, entry.green, entry.blue});
    return Answer(WriteHeader(png, info, shape, palette.data()));
  }

  Outcome WriteRow(const std::uint8_t *row) override { return Answer(WriteOneRow(png, row)); }

  Outcome End() override { return Answer(WriteEnd(png)); }

 private:
  Outcome Answer(bool done) const {
    if (done) return {};
    if (target.failure.inOutput) return target.output.Failure();
    return Problem{target.output.Name(), target.failure.words.data(), ERROR_FILE_WRITE};
  }

  PngTarget target;
  png_structp png = nullptr;
  png_infop info = nullptr;
};

}  // namespace

std::unique_ptr<PictureWriter> MakePngWriter(OutputFile &output) {
  return std::make_unique<PngWriter>(output);
}

}  // namespace ntf
