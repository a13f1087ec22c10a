#include "small_files.h"

#include "bit_writer.h"
#include "cgm_builder.h"
#include "jpeg_builder.h"
#include "vq_builder.h"

#include <iterator>

/** What a mask table says of a block that isn't there. */
static constexpr std::uint32_t kNone = 0xFFFFFFFF;

ImageSpec SmallImage(char mode, std::size_t bands, const char *compression) {
  ImageSpec image{.rows = 4, .columns = 6, .compression = compression, .mode = mode, .blockWidth = 3, .blockHeight = 2};
  image.representation = bands == 3 ? "RGB" : "MONO";
  image.bands = std::vector<BandSpec>(bands, {bands == 3 ? "R" : "M", 0, {}});
  image.data = Bytes(std::size_t{24} * bands, 0x5A);
  return image;
}

ImageSpec SmallMaskedImage(char mode, std::size_t bands) {
  ImageSpec image = SmallImage(mode, bands, "NM");
  const std::uint32_t blockBytes = mode == 'S' ? 6 : static_cast<std::uint32_t>(6 * bands);
  image.mask = MaskSpec{{0, blockBytes, kNone, 2 * blockBytes}, {0, kNone, 0, 0}, Bytes{0}};
  image.mask->blockOffsets.resize(4 * bands);
  image.mask->padOffsets.resize(4 * bands);
  return image;
}

Bytes SmallMetafile() {
  CgmBuilder metafile({}, {0, 60}, {60, 0});
  metafile.Add(5, 22, metafile.New().Enumeration(3));
  metafile.Add(4, 7, metafile.New().Points({{1, 2}, {50, 3}, {30, 50}}));
  metafile.Add(4, 4, metafile.New().Points({{10, 20}}).Enumeration(1).String("some words"));
  metafile.Add(4, 17, metafile.New().Points({{30, 30}, {50, 30}, {30, 40}}));
  return metafile.Finish();
}

namespace {

ImageSpec Bilevel() {
  ImageSpec image{.rows = 5, .columns = 13, .representation = "RGB/LUT", .pixelValueType = "B", .bits = 1};
  image.bands = {{"LU", 3, {1, 2, 3, 4, 5, 6}}};
  image.data = Bytes(9, 0xA5);
  return image;
}

ImageSpec Deep(std::uint32_t bits, std::uint32_t actualBits) {
  ImageSpec image{.rows = 3, .columns = 5, .bits = bits, .actualBits = actualBits};
  image.data = Bytes(std::size_t{3} * ((5 * bits + 7) / 8), 0x77);
  return image;
}

ImageSpec Quantised(const char *compression) {
  ImageSpec image = SmallImage('B', 1, compression);
  const VqSpec data{2, 3, 3, 1, 1, {{7}, {8}, {9}, {10}, {11}, {12}, {13}, {14}}, std::vector<std::uint32_t>(24, 5)};
  image.data = EncodeVq(data);
  if (image.compression == "M4") image.mask = MaskSpec{{0, kNone, 1, 2}, {}, Bytes{0}};
  return image;
}

/** An 8 x 8 picture of one component in two resolutions, as OpenJPEG encodes it. */
constexpr std::uint8_t kJpeg2000Stream[] = {
    0xFF, 0x4F, 0xFF, 0x51, 0x00, 0x29, 0x00, 0x00, 0x00, 0x00, 0x00, 0x08, 0x00, 0x00, 0x00, 0x08, 0x00,
    0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x08, 0x00, 0x00, 0x00, 0x08, 0x00, 0x00,
    0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x01, 0x07, 0x01, 0x01, 0xFF, 0x52, 0x00, 0x0C, 0x00, 0x00,
    0x00, 0x01, 0x00, 0x01, 0x02, 0x02, 0x00, 0x01, 0xFF, 0x5C, 0x00, 0x07, 0x40, 0x40, 0x48, 0x48, 0x50,
    0xFF, 0x90, 0x00, 0x0A, 0x00, 0x00, 0x00, 0x00, 0x00, 0x31, 0x00, 0x01, 0xFF, 0x93, 0xDF, 0x80, 0x88,
    0x12, 0x0B, 0xC9, 0x2D, 0x90, 0x53, 0x2E, 0x62, 0x79, 0x83, 0xEF, 0x9B, 0x24, 0x96, 0x5F, 0xD7, 0xA4,
    0xC1, 0xF3, 0x84, 0x81, 0xF2, 0x04, 0x00, 0x22, 0x19, 0xCA, 0x68, 0x03, 0x7F, 0xDD, 0x5F, 0xFF, 0xD9};

/** Rows of 16 pixels, each an end-of-line code and a run of white. */
Bytes T4Stream() {
  Bytes stream;
  BitWriter bits(stream);
  for (int row = 0; row < 5; ++row) {
    bits.Put(1, 12);
    bits.Put(0b101010, 6);
  }
  return stream;
}

Bytes JpegStream(bool lossless, std::uint32_t bits, std::uint32_t components) {
  JpegSpec spec{.width = 11, .height = 9, .bits = bits, .lossless = lossless, .components = components};
  spec.sample = [bits](std::uint32_t component, std::uint32_t x, std::uint32_t y) {
    return (x * 5 + y * 7 + component * 31) << (bits - 8);
  };
  spec.predictor = 4;
  spec.restartRows = 1;
  return EncodeJpeg(spec);
}

/** An image of one stream. Its headers are like those of others, so that the stream alone is damaged. */
SmallFile Coded(const char *name, const char *compression, std::uint32_t bits, const Bytes &stream) {
  ImageSpec image{.rows = 9, .columns = 11, .compression = compression, .bits = bits, .data = stream};
  if (bits == 1) {
    image.rows = 5;
    image.columns = 16;
    image.pixelValueType = "B";
    image.fields = {{"COMRAT", "1D  "}};
  }
  return {name, NitfBuilder().Image(image).Build(), stream.size()};
}

}  // namespace

std::vector<SmallFile> SmallFiles() {
  const auto image = [](const ImageSpec &spec) { return NitfBuilder().Image(spec).Build(); };
  const NitfBuilder plain = NitfBuilder().Image(SmallImage('B', 1, "NC"));
  NitfBuilder allKinds = plain;
  allKinds.Field("UDHD", "data")
      .Graphic({.format = 'O', .data = Bytes(4, 1), .fields = {{"SXSHD", "abc"}}})
      .Text({.text = "text", .fields = {{"TXSHD", "abc"}}})
      .DataExtension({"TRE_OVERFLOW", "user", Bytes(4, 1)});
  return {
      {"plain", plain.Build()},
      {"mode_b", image(SmallImage('B', 3, "NC"))},
      {"mode_p", image(SmallImage('P', 3, "NC"))},
      {"mode_r", image(SmallImage('R', 3, "NC"))},
      {"mode_s", image(SmallImage('S', 3, "NC"))},
      {"two_bands", image(SmallImage('P', 2, "NC"))},
      {"masked_plane", image(SmallMaskedImage('B', 1))},
      {"masked_b", image(SmallMaskedImage('B', 3))},
      {"masked_s", image(SmallMaskedImage('S', 3))},
      {"bilevel", image(Bilevel())},
      {"twelve_bits", image(Deep(12, 12))},
      {"sixteen_bits", image(Deep(16, 11))},
      {"thirty_two_bits", image(Deep(32, 24))},
      {"quantised", image(Quantised("C4"))},
      {"masked_quantised", image(Quantised("M4"))},
      {"all_kinds", allKinds.Build()},
      {"drawing", NitfBuilder().Graphic({.data = SmallMetafile(), .fields = {{"SBND2", "0006000060"}}}).Build()},
      Coded("bilevel_stream", "C1", 1, T4Stream()),
      Coded("jpeg", "C3", 8, JpegStream(false, 8, 1)),
      Coded("jpeg_of_12_bits", "C3", 12, JpegStream(false, 12, 1)),
      Coded("jpeg_of_five_components", "C3", 8, JpegStream(false, 8, 5)),
      Coded("lossless_jpeg", "C5", 16, JpegStream(true, 16, 3)),
      Coded("jpeg_2000", "C8", 8, Bytes(std::begin(kJpeg2000Stream), std::end(kJpeg2000Stream))),
      Coded("jpeg_made_smaller", "I1", 8, JpegStream(true, 8, 1)),
      // Begun before its lengths were known: its headers come once more, complete, behind the data.
      {"stream", WithStreamHeader(NitfBuilder(plain).Field("FL", "999999999999").Build(), plain.Header())},
  };
}
