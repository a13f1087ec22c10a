#include "picture_input.h"

#include "input_file.h"
#include "status_words.h"

#include <algorithm>
#include <cctype>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <string_view>

#include <png.h>

namespace ntf {
namespace {

Problem NotAPicture(const std::string &name, const std::string &why) {
  return {name, "can't be read as a picture: " + why, ERROR_FILE_FORMAT};
}

Outcome MakeBitmap(const std::string &name, std::uint32_t width, std::uint32_t height, bool gray,
                   KsLocalBitmap &bitmap) {
  const std::int32_t status =
      KsBitmapCreate(bitmap.Get(), sizeof(KsBitmap), KS_BITMAP_OWN, width, height, gray ? 8 : 24,
                     gray ? KS_ORDER_GRAY : KS_ORDER_BGR, nullptr, 1, nullptr, 0);
  return OutcomeOf(name, status);
}

Outcome ReadPng(const std::string &name, const std::vector<std::uint8_t> &bytes, KsLocalBitmap &bitmap) {
  png_image image = {};
  image.version = PNG_IMAGE_VERSION;
  if (png_image_begin_read_from_memory(&image, bytes.data(), bytes.size()) == 0)
    return NotAPicture(name, image.message);
  const bool gray = (image.format & PNG_FORMAT_FLAG_COLOR) == 0;
  if ((image.format & PNG_FORMAT_FLAG_ALPHA) != 0) Warn(name, "transparent pixels are blended onto white");
  if ((image.format & PNG_FORMAT_FLAG_LINEAR) != 0) Warn(name, "samples of 16 bits are reduced to 8");
  image.format = gray ? PNG_FORMAT_GRAY : PNG_FORMAT_BGR;
  if (Outcome failed = MakeBitmap(name, image.width, image.height, gray, bitmap)) {
    png_image_free(&image);
    return failed;
  }
  const png_color white = {255, 255, 255};
  const auto stride = static_cast<png_int_32>(bitmap->bytesPerLine);
  if (png_image_finish_read(&image, &white, bitmap->pixels, stride, nullptr) != 0) return {};
  return NotAPicture(name, image.message);
}

/** The next number in the header of a PPM; blanks and comments before it are skipped. */
std::uint32_t TakeNumber(std::string_view &text) {
  std::uint32_t number = 0;
  while (!text.empty() && (text[0] == '#' || std::isspace(static_cast<unsigned char>(text[0])) != 0)) {
    if (text[0] == '#') text.remove_prefix(std::min(text.find('\n'), text.size() - 1));
    text.remove_prefix(1);
  }
  for (; !text.empty() && text[0] >= '0' && text[0] <= '9' && number < 100000000; text.remove_prefix(1)) {
    number = number * 10 + static_cast<std::uint32_t>(text[0] - '0');
  }
  return number;
}

Outcome ReadPnm(const std::string &name, const std::vector<std::uint8_t> &bytes, KsLocalBitmap &bitmap) {
  std::string_view text(reinterpret_cast<const char *>(bytes.data()), bytes.size());
  const bool gray = text[1] == '5';
  text.remove_prefix(2);
  const std::uint32_t width = TakeNumber(text);
  const std::uint32_t height = TakeNumber(text);
  if (width == 0 || height == 0) return NotAPicture(name, "it has no pixels");
  if (TakeNumber(text) != 255) return NotAPicture(name, "only PPM with a maximum of 255 is supported");
  if (!text.empty()) text.remove_prefix(1);
  const std::uint64_t rowBytes = std::uint64_t{width} * (gray ? 1 : 3);
  if (text.size() / rowBytes < height) return NotAPicture(name, "it is truncated");
  if (Outcome failed = MakeBitmap(name, width, height, gray, bitmap)) return failed;
  for (std::uint32_t y = 0; y < height; ++y) {
    std::uint8_t *row = bitmap->pixels + std::uint64_t{y} * bitmap->bytesPerLine;
    std::memcpy(row, text.data() + y * rowBytes, rowBytes);
    for (std::uint64_t x = 0; !gray && x < rowBytes; x += 3) std::swap(row[x], row[x + 2]);
  }
  return {};
}

/** Whether a JPEG file has an end-of-image marker after its headers; thumbnails in the headers have one, too. */
bool IsWholeJpeg(const std::vector<std::uint8_t> &bytes) {
  constexpr std::uint8_t kStartOfScan = 0xDA;
  constexpr std::uint8_t kEnd[] = {0xFF, 0xD9};
  std::size_t at = 2;  // behind the start-of-image marker, at the first segment: marker, length, data
  while (at + 4 <= bytes.size() && bytes[at + 1] != kStartOfScan) {
    at += 2 + (std::size_t{bytes[at + 2]} << 8 | bytes[at + 3]);
  }
  if (at >= bytes.size()) return false;
  const auto scan = bytes.begin() + static_cast<std::ptrdiff_t>(at);
  return std::search(scan, bytes.end(), std::begin(kEnd), std::end(kEnd)) != bytes.end();
}

Outcome ReadJpeg(const std::string &name, const std::vector<std::uint8_t> &bytes, KsLocalBitmap &bitmap) {
  if (!IsWholeJpeg(bytes)) return NotAPicture(name, "it is truncated");
  const std::int32_t status =
      KsLoadMemory(bytes.data(), bitmap.Get(), sizeof(KsBitmap), 0, KS_ORDER_CODEC, bytes.size(), nullptr, nullptr);
  return status == SUCCESS ? Outcome() : NotAPicture(name, StatusWords(status));
}

}  // namespace

Outcome ReadFileBytes(const std::string &name, std::vector<std::uint8_t> &bytes) {
  if (Outcome unreadable = CheckInput(name)) return unreadable;
  std::FILE *stream = std::fopen(name.c_str(), "rb");
  if (stream == nullptr) return SystemProblem(name, errno, ERROR_FILE_READ);
  std::uint8_t piece[65536];
  for (std::size_t taken = sizeof piece; taken == sizeof piece;) {
    taken = std::fread(piece, 1, sizeof piece, stream);
    bytes.insert(bytes.end(), piece, piece + taken);
  }
  const bool failed = std::ferror(stream) != 0;
  std::fclose(stream);
  return failed ? Outcome(StatusProblem(name, ERROR_FILE_READ)) : Outcome();
}

Outcome ReadPicture(const std::string &name, KsLocalBitmap &bitmap) {
  std::vector<std::uint8_t> bytes;
  if (Outcome unreadable = ReadFileBytes(name, bytes)) return unreadable;
  const std::string_view front(reinterpret_cast<const char *>(bytes.data()), std::min<std::size_t>(bytes.size(), 4));
  if (front.starts_with("\x89PNG")) return ReadPng(name, bytes, bitmap);
  if (front.starts_with("P5") || front.starts_with("P6")) return ReadPnm(name, bytes, bitmap);
  if (front.starts_with("\xFF\xD8")) return ReadJpeg(name, bytes, bitmap);
  const bool isAscii = front.starts_with("P2") || front.starts_with("P3");
  return NotAPicture(name, isAscii ? "only binary PPM and PGM (P6, P5) are supported" : "it is not PNG, PPM or JPEG");
}

}  // namespace ntf
