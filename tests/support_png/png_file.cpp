#include "png_file.h"

#include <cstring>
#include <stdexcept>

#include <png.h>

namespace {

struct Source {
  const std::string &bytes;
  std::size_t position = 0;
};

void Read(png_structp png, png_bytep target, png_size_t size) {
  auto *source = static_cast<Source *>(png_get_io_ptr(png));
  if (size > source->bytes.size() - source->position) png_error(png, "ends too early");
  std::memcpy(target, source->bytes.data() + source->position, size);
  source->position += size;
}

void ReadHeader(png_structp png, png_infop info, PngFile &file) {
  png_read_info(png, info);
  file.width = png_get_image_width(png, info);
  file.height = png_get_image_height(png, info);
  file.bits = png_get_bit_depth(png, info);
  file.colorType = png_get_color_type(png, info);
  png_colorp colors = nullptr;
  int count = 0;
  png_get_PLTE(png, info, &colors, &count);
  for (int i = 0; i < count; ++i) file.palette.push_back({colors[i].red, colors[i].green, colors[i].blue});
}

/** False where libpng gave up. The objects that it fills belong to the caller, so that its jump passes over none. */
bool ReadAll(png_structp png, png_infop info, PngFile &file) {
  if (setjmp(png_jmpbuf(png)) != 0) return false;
  ReadHeader(png, info, file);
  file.rows.assign(file.height, std::vector<std::uint8_t>(png_get_rowbytes(png, info)));
  for (auto &row : file.rows) png_read_row(png, row.data(), nullptr);
  png_read_end(png, nullptr);
  return true;
}

}  // namespace

int PngFile::Sample(std::uint32_t y, std::uint32_t x) const {
  const std::vector<std::uint8_t> &row = rows[y];
  if (bits == 1) return row[x / 8] >> (7 - x % 8) & 1;
  return bits == 16 ? row[2 * x] << 8 | row[2 * x + 1] : row[x];
}

PngFile DecodePng(const std::string &bytes) {
  Source source{bytes};
  PngFile file;
  png_structp png = png_create_read_struct(PNG_LIBPNG_VER_STRING, nullptr, nullptr, nullptr);
  png_infop info = png_create_info_struct(png);
  png_set_read_fn(png, &source, Read);
  const bool sound = ReadAll(png, info, file);
  png_destroy_read_struct(&png, &info, nullptr);
  if (!sound || source.position != bytes.size()) throw std::runtime_error("not a sound PNG file");
  return file;
}
