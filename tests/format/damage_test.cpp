// Files that are cut off or changed anywhere must end in a status or a picture, soon, without a fault.
#include "bit_writer.h"
#include "cgm_builder.h"
#include "handlimg.h"
#include "harness.h"
#include "jpeg_builder.h"
#include "strmfhdr.h"
#include "vq_builder.h"

#include <string>

#include <gtest/gtest.h>

namespace {

struct Shape {
  const char *name;
  NitfBuilder builder;
  std::string tail;
  std::size_t damaged = 0; /**< bytes at the end that are damaged; 0: all */
};

ImageSpec Image(char mode, std::size_t bands, const char *compression) {
  ImageSpec image{.rows = 4, .columns = 6, .compression = compression, .mode = mode, .blockWidth = 3, .blockHeight = 2};
  image.representation = bands == 3 ? "RGB" : "MONO";
  image.bands = std::vector<BandSpec>(bands, {bands == 3 ? "R" : "M", 0, {}});
  image.data = Bytes(std::size_t{24} * bands, 0x5A);
  return image;
}

ImageSpec Masked(char mode, std::size_t bands) {
  ImageSpec image = Image(mode, bands, "NM");
  const std::uint32_t blockBytes = mode == 'S' ? 6 : static_cast<std::uint32_t>(6 * bands);
  image.mask = MaskSpec{{0, blockBytes, kNotRecorded, 2 * blockBytes}, {0, kNotRecorded, 0, 0}, Bytes{0}};
  image.mask->blockOffsets.resize(4 * bands);
  image.mask->padOffsets.resize(4 * bands);
  return image;
}

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
  ImageSpec image = Image('B', 1, compression);
  const VqSpec data{2, 3, 3, 1, 1, {{7}, {8}, {9}, {10}, {11}, {12}, {13}, {14}}, std::vector<std::uint32_t>(24, 5)};
  image.data = EncodeVq(data);
  if (image.compression == "M4") image.mask = MaskSpec{{0, kNotRecorded, 1, 2}, {}, Bytes{0}};
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

Bytes Metafile() {
  CgmBuilder metafile({}, {0, 60}, {60, 0});
  metafile.Add(5, 22, metafile.New().Enumeration(3));
  metafile.Add(4, 7, metafile.New().Points({{1, 2}, {50, 3}, {30, 50}}));
  metafile.Add(4, 4, metafile.New().Points({{10, 20}}).Enumeration(1).String("some words"));
  metafile.Add(4, 17, metafile.New().Points({{30, 30}, {50, 30}, {30, 40}}));
  return metafile.Finish();
}

/** An image of one stream. Its headers are like those of others, so that the stream alone is damaged. */
Shape Coded(const char *name, const char *compression, std::uint32_t bits, const Bytes &stream) {
  ImageSpec image{.rows = 9, .columns = 11, .compression = compression, .bits = bits, .data = stream};
  if (bits == 1) {
    image.rows = 5;
    image.columns = 16;
    image.pixelValueType = "B";
    image.fields = {{"COMRAT", "1D  "}};
  }
  return {name, NitfBuilder().Image(image), {}, stream.size()};
}

std::string StreamTail(const NitfBuilder &builder) {
  const Bytes header = builder.Header();
  char length[8];
  std::snprintf(length, sizeof length, "%07zu", header.size());
  return std::string(length) + "\x0A\x6E\x1D\x97" + std::string(header.begin(), header.end()) + "\x0E\xCA\x14\xBF" +
         length;
}

std::vector<Shape> Shapes() {
  const NitfBuilder plain = NitfBuilder().Image(Image('B', 1, "NC"));
  std::vector<Shape> shapes = {
      {"plain", plain, {}},
      {"mode_b", NitfBuilder().Image(Image('B', 3, "NC")), {}},
      {"mode_p", NitfBuilder().Image(Image('P', 3, "NC")), {}},
      {"mode_r", NitfBuilder().Image(Image('R', 3, "NC")), {}},
      {"mode_s", NitfBuilder().Image(Image('S', 3, "NC")), {}},
      {"two_bands", NitfBuilder().Image(Image('P', 2, "NC")), {}},
      {"masked_plane", NitfBuilder().Image(Masked('B', 1)), {}},
      {"masked_b", NitfBuilder().Image(Masked('B', 3)), {}},
      {"masked_s", NitfBuilder().Image(Masked('S', 3)), {}},
      {"bilevel", NitfBuilder().Image(Bilevel()), {}},
      {"twelve_bits", NitfBuilder().Image(Deep(12, 12)), {}},
      {"sixteen_bits", NitfBuilder().Image(Deep(16, 11)), {}},
      {"thirty_two_bits", NitfBuilder().Image(Deep(32, 24)), {}},
      {"quantised", NitfBuilder().Image(Quantised("C4")), {}},
      {"masked_quantised", NitfBuilder().Image(Quantised("M4")), {}},
      {"all_kinds",
       NitfBuilder()
           .Field("UDHD", "data")
           .Image(Image('B', 1, "NC"))
           .Graphic({.format = 'O', .data = Bytes(4, 1), .fields = {{"SXSHD", "abc"}}})
           .Text({.text = "text", .fields = {{"TXSHD", "abc"}}})
           .DataExtension({"TRE_OVERFLOW", "user", Bytes(4, 1)}),
       {}},
      {"drawing", NitfBuilder().Graphic({.data = Metafile(), .fields = {{"SBND2", "0006000060"}}}), {}},
      Coded("bilevel_stream", "C1", 1, T4Stream()),
      Coded("jpeg", "C3", 8, JpegStream(false, 8, 1)),
      Coded("jpeg_of_12_bits", "C3", 12, JpegStream(false, 12, 1)),
      Coded("jpeg_of_five_components", "C3", 8, JpegStream(false, 8, 5)),
      Coded("lossless_jpeg", "C5", 16, JpegStream(true, 16, 3)),
      Coded("jpeg_2000", "C8", 8, Bytes(std::begin(kJpeg2000Stream), std::end(kJpeg2000Stream))),
      Coded("jpeg_made_smaller", "I1", 8, JpegStream(true, 8, 1)),
      {"stream", NitfBuilder().Image(Image('B', 1, "NC")).Field("FL", "999999999999"), StreamTail(plain)},
  };
  return shapes;
}

void PrintTo(const Shape &shape, std::ostream *out) {
  *out << shape.name;
}

class Damage : public testing::TestWithParam<Shape> {
 protected:
  Damage() {
    file = GetParam().builder.Build();
    file.insert(file.end(), GetParam().tail.begin(), GetParam().tail.end());
    before = LiveBlocks();
  }

  /** Composes the bytes; whatever comes out must be a status or a whole picture. */
  void Try(const Bytes &bytes) {
    const PlatformWatch watch;
    WriteFile(folder.Path("damaged"), bytes);
    const Composition picture = Compose(folder.Path("damaged"));
    ASSERT_TRUE(picture.status == SUCCESS || picture.status < 0) << picture.status;
    if (picture.status == SUCCESS) {
      ASSERT_EQ(picture.rows.size(), picture.height);
    }
    ASSERT_EQ(LiveBlocks(), before);
  }

  std::size_t First() const { return GetParam().damaged == 0 ? 0 : file.size() - GetParam().damaged; }

  TemporaryFolder folder;
  Bytes file;
  std::array<std::int64_t, KS_MEMORY_KINDS> before{};
};

TEST_P(Damage, EveryTruncationEndsInAStatusOrAPicture) {
  for (std::size_t length = First(); length < file.size(); ++length) {
    ASSERT_NO_FATAL_FAILURE(Try(Bytes(file.begin(), file.begin() + static_cast<std::ptrdiff_t>(length)))) << length;
  }
}

TEST_P(Damage, EveryChangedByteEndsInAStatusOrAPicture) {
  for (std::size_t at = First(); at < file.size(); ++at) {
    for (const std::uint8_t value : {0x00, 0x20, 0x2D, 0x30, 0x39, 0xFF}) {
      Bytes changed = file;
      if (changed[at] == value) continue;
      changed[at] = value;
      ASSERT_NO_FATAL_FAILURE(Try(changed)) << at << " to " << int{value};
    }
  }
}

INSTANTIATE_TEST_SUITE_P(Files, Damage, testing::ValuesIn(Shapes()),
                         [](const auto &given) { return std::string(given.param.name); });

TEST(Limits, ASmallFileCanNotAskForALargeCanvas) {
  ImageSpec image = Image('B', 1, "NC");
  image.fields = {{"NBPR", "9000"}, {"NBPC", "9000"}, {"NPPBH", "9000"}, {"NPPBV", "9000"}};
  EXPECT_EQ(Compose(NitfBuilder().Image(image)).status, ERROR_NO_MEMORY);
}

TEST(Limits, AnImageWithoutItsDataTakesNoTime) {
  // 4 GiB of blocks, none of which is in the file: refused at the first one.
  ImageSpec image = Image('B', 1, "NC");
  image.fields = {{"NBPR", "6400"}, {"NBPC", "6400"}, {"NPPBH", "0010"}, {"NPPBV", "0010"}};
  LoadedFile file(NitfBuilder().Image(image));
  KsBitmap bitmap;
  KsBitmapInit(&bitmap, sizeof bitmap, 0, 0, 0);
  EXPECT_EQ(DecodeImageSegment(nullptr, file.Get(), 0, &bitmap), ERROR_FILE_READ);
  EXPECT_EQ(bitmap.flags & KS_BITMAP_ALLOCATED, 0U);
}

TEST(Limits, AnImageWithoutBlocksIsRefusedInEveryMode) {
  for (const char mode : {'B', 'P', 'R', 'S'}) {
    for (const char *field : {"NBPR", "NBPC", "NCOLS", "NROWS"}) {
      for (const bool masked : {false, true}) {
        ImageSpec image = masked ? Masked(mode, 3) : Image(mode, 3, "NC");
        // A block size of 0 stands for the size of the image.
        image.fields = {{field, "00000000"}, {"NPPBH", "0000"}, {"NPPBV", "0000"}};
        if (field[0] == 'N' && field[1] == 'B') image.fields[field] = "0000";
        const NitfBuilder builder = NitfBuilder().Image(Image('B', 1, "NC")).Image(image);
        EXPECT_LT(Compose(builder).status, 0) << mode << ' ' << field << ' ' << masked;
      }
    }
  }
}

TEST(Limits, ALongChainOfAttachmentsIsFollowed) {
  NitfBuilder builder;
  for (int level = 1; level <= 998; ++level) {
    ImageSpec image{.rows = 1, .columns = 1, .level = level, .attachment = level - 1, .data = {9}};
    image.locationColumn = 1;
    builder.Image(image);
  }
  EXPECT_EQ(Inform(builder).info.width, 999U);
}

}  // namespace
