// Pictures to write, and the writers of the picture formats.
#pragma once

#include "deflate.h"
#include "kskernel.h"
#include "output_file.h"
#include "problem.h"

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace ntf {

enum class PixelKind { Gray, Color, Palette };

/**
 * The format of a picture's pixels: grays of 1, 8 or 16 bits, palette indices of 1 or 8 bits, or colours as three bytes
 * red, green, blue. Rows are padded to whole bytes. One bit: the leftmost pixel in the most significant bit. 16 bits:
 * high byte first.
 */
struct PictureShape {
  std::uint32_t width = 0;
  std::uint32_t height = 0;
  PixelKind kind = PixelKind::Gray;
  unsigned bits = 8; /* of a gray, an index, or one of the three parts of a colour */
  std::vector<KsPaletteEntry> palette;

  std::size_t RowBytes() const {
    const std::size_t samples = kind == PixelKind::Color ? 3 : 1;
    return (samples * bits * width + 7) / 8;
  }
};

/** Writes one picture to an open file, row by row from the top. The caller commits the file. */
class PictureWriter {
 public:
  PictureWriter() = default;
  PictureWriter(const PictureWriter &) = delete;
  PictureWriter &operator=(const PictureWriter &) = delete;
  virtual ~PictureWriter() = default;

  /** `shape` has at least one pixel. */
  virtual Outcome Begin(const PictureShape &shape) = 0;
  /** `row` has RowBytes bytes. */
  virtual Outcome WriteRow(const std::uint8_t *row) = 0;
  /** After the last row. */
  virtual Outcome End() = 0;
};

std::unique_ptr<PictureWriter> MakePngWriter(OutputFile &output, CompressionLevel level);

/** PPM has colours only: grays and palette indices are written as the colours that they show. It isn't compressed. */
std::unique_ptr<PictureWriter> MakePpmWriter(OutputFile &output, CompressionLevel level);

/** True for a name with the suffix of a format that can be written, and for "-". */
bool IsPictureName(const std::string &name);

/** True for a name of a format that is compressed, and for "-". */
bool IsCompressedPicture(const std::string &name);

/** The writer for the format of the output's suffix; PNG for standard output. */
std::unique_ptr<PictureWriter> MakePictureWriter(OutputFile &output, CompressionLevel level);

}  // namespace ntf
