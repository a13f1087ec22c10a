// A picture as it is written to a file, and the writers of the picture formats.
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
 * The form of a picture. Rows have no padding but to a full byte: grays of 1, 8 or 16 bits, palette indices of 1 or 8
 * bits, colours as three bytes red, green, blue. One bit: the leftmost pixel in the top bit. 16 bits: high byte first.
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

/** Writes one picture, row by row from the top, to a file that is open. The caller commits the file. */
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

/** A PPM holds colours only: grays and palettes are written as the colours that they show. Nothing is compressed. */
std::unique_ptr<PictureWriter> MakePpmWriter(OutputFile &output, CompressionLevel level);

/** True for a name whose suffix tells a format that can be written, and for "-". */
bool IsPictureName(const std::string &name);

/** True for a name of a format that is compressed, and for "-". */
bool IsCompressedPicture(const std::string &name);

/** The writer for the format that the suffix of the output's name tells, PNG for the standard output. */
std::unique_ptr<PictureWriter> MakePictureWriter(OutputFile &output, CompressionLevel level);

}  // namespace ntf
