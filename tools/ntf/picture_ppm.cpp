#include "picture.h"

#include <string>

namespace ntf {
namespace {

class PpmWriter final : public PictureWriter {
 public:
  explicit PpmWriter(OutputFile &file) : output(file) {}

  Outcome Begin(const PictureShape &pictureShape) override {
    shape = pictureShape;
    const bool wide = shape.bits == 16;
    expanded.resize(std::size_t{shape.width} * (wide ? 6 : 3));
    const std::string header = "P6\n" + std::to_string(shape.width) + " " + std::to_string(shape.height) + "\n" +
                               (wide ? "65535" : "255") + "\n";
    return Put(header.data(), header.size());
  }

  Outcome WriteRow(const std::uint8_t *row) override {
    if (shape.kind == PixelKind::Color) return Put(row, shape.RowBytes());
    if (shape.bits == 16) {
      ExpandWideGrays(row);
    } else {
      ExpandIndices(row);
    }
    return Put(expanded.data(), expanded.size());
  }

  Outcome End() override { return {}; }

 private:
  Outcome Put(const void *bytes, std::size_t size) {
    return output.Write(bytes, size) ? Outcome() : Outcome(output.Failure());
  }

  void ExpandWideGrays(const std::uint8_t *row) {
    std::uint8_t *to = expanded.data();
    for (std::uint32_t x = 0; x < shape.width; ++x, row += 2) {
      for (int part = 0; part < 3; ++part) {
        *to++ = row[0];
        *to++ = row[1];
      }
    }
  }

  void ExpandIndices(const std::uint8_t *row) {
    std::uint8_t *to = expanded.data();
    for (std::uint32_t x = 0; x < shape.width; ++x) {
      const KsPaletteEntry color = ColorOf(shape.bits == 1 ? (row[x / 8] >> (7 - x % 8)) & 1 : row[x]);
      *to++ = color.red;
      *to++ = color.green;
      *to++ = color.blue;
    }
  }

  KsPaletteEntry ColorOf(unsigned value) const {
    if (shape.kind == PixelKind::Palette) return shape.palette[value];
    const auto gray = static_cast<std::uint8_t>(shape.bits == 1 ? value * 255 : value);
    return {gray, gray, gray, 0};
  }

  OutputFile &output;
  PictureShape shape;
  std::vector<std::uint8_t> expanded;
};

}  // namespace

std::unique_ptr<PictureWriter> MakePpmWriter(OutputFile &output, CompressionLevel) {
  return std::make_unique<PpmWriter>(output);
}

}  // namespace ntf
