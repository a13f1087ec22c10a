// Samples of images whose data are streams of codecs: tiles of JPEG, T.4, vector quantisation, JPEG 2000.
#include "bit_writer.h"
#include "jpeg_builder.h"
#include "ksntfx_reader.h"
#include "open_reader.h"
#include "vq_builder.h"

#ifdef KSNTFX_CODEC_JPEG2000
#include "jpeg2000_encoder.h"
#endif

#include <cstring>
#include <functional>
#include <random>

#include <gtest/gtest.h>

namespace {

constexpr std::uint32_t kNotThere = 0xFFFFFFFF;

using Expected = std::function<int(std::uint32_t band, std::uint32_t row, std::uint32_t column)>;

int ValueOf(const std::uint8_t *sample, std::uint32_t type) {
  std::int16_t wide = 0;
  std::memcpy(&wide, sample, type == NITF_SAMPLE_UINT8 ? 1 : 2);
  return wide;
}

/** Reads the whole and some windows, of all bands and of one. */
void ExpectSamples(const ImageSpec &image, std::uint32_t type, const Expected &expected) {
  const OpenReader reader(NitfBuilder().Image(image));
  NitfImageShape shape{};
  ASSERT_EQ(NitfReaderGetImage(reader.Get(), 0, &shape), SUCCESS) << NitfReaderProblem(reader.Get());
  ASSERT_EQ(shape.sampleType, type);
  std::mt19937 random(1);
  for (int question = 0; question < 12; ++question) {
    NitfWindow window = {random() % shape.rows, random() % shape.columns, 0, 0};
    if (question == 0) window = {0, 0, 0, 0};
    window.rows = question == 0 ? shape.rows : 1 + random() % (shape.rows - window.firstRow);
    window.columns = question == 0 ? shape.columns : 1 + random() % (shape.columns - window.firstColumn);
    const std::uint32_t bytes = shape.sampleBytes;
    const std::uint32_t last = shape.bands - 1;
    const std::uint32_t count = question % 3 == 1 ? 1 : shape.bands;
    Bytes samples(window.rows * window.columns * bytes * count, 0xEE);
    const auto rowBytes = static_cast<std::int64_t>(window.columns * bytes);
    const NitfSampleTarget target = {samples.data(), rowBytes, bytes,
                                     rowBytes * static_cast<std::int64_t>(window.rows)};
    ASSERT_EQ(NitfReaderReadSamples(reader.Get(), 0, &window, count == 1 ? &last : nullptr, 1, &target), SUCCESS)
        << NitfReaderProblem(reader.Get());
    const std::uint8_t *sample = samples.data();
    for (std::uint32_t at = 0; at < count; ++at) {
      for (auto row = static_cast<std::uint32_t>(window.firstRow); row < window.firstRow + window.rows; ++row) {
        auto column = static_cast<std::uint32_t>(window.firstColumn);
        for (; column < window.firstColumn + window.columns; ++column, sample += bytes) {
          const std::uint32_t band = count == 1 ? last : at;
          ASSERT_EQ(ValueOf(sample, type), expected(band, row, column)) << band << ": " << row << ", " << column;
        }
      }
    }
  }
}

// ---- tiles of JPEG ------------------------------------------------------------------------------------------------

struct TileCase {
  const char *name;
  char mode;
  bool isMasked;
  std::uint32_t bands;
  std::uint32_t bits = 8;
};

constexpr std::uint32_t kBlockRows = 5;
constexpr std::uint32_t kBlockColumns = 6;
constexpr std::uint32_t kBlocks = 6;
constexpr std::uint8_t kPad = 0x33;

int TileSample(std::uint32_t band, std::uint32_t row, std::uint32_t column) {
  return static_cast<int>((band * 71 + row * 13 + column * 7) % 256);
}

class JpegTiles : public testing::TestWithParam<TileCase> {
 protected:
  bool HasStreams() const { return GetParam().mode == 'S' && GetParam().bands > 1; }
  /** In the masked cases every fourth stream is missing. */
  bool IsAbsent(std::uint32_t tile) const { return GetParam().isMasked && tile % 4 == 1; }

  Bytes Stream(std::uint32_t tile) const {
    const std::uint32_t top = tile % kBlocks / 2 * kBlockRows;
    const std::uint32_t left = tile % 2 * kBlockColumns;
    JpegSpec spec{.width = kBlockColumns, .height = kBlockRows};
    spec.bits = GetParam().bits;
    spec.components = HasStreams() ? 1 : GetParam().bands;
    const std::uint32_t band = HasStreams() ? tile / kBlocks : 0;
    spec.sample = [=](std::uint32_t component, std::uint32_t x, std::uint32_t y) {
      return static_cast<std::uint32_t>(TileSample(band + component, top + y, left + x));
    };
    return EncodeJpeg(spec);
  }

  /** 14 x 11 pixels in 3 x 2 blocks. A mask table lists the streams from the last to the first. */
  ImageSpec Image() const {
    ImageSpec image{.rows = 14, .columns = 11, .compression = GetParam().isMasked ? "M3" : "C3"};
    image.blockHeight = kBlockRows;
    image.blockWidth = kBlockColumns;
    image.mode = GetParam().mode;
    image.bits = GetParam().bits;
    image.bands = std::vector<BandSpec>(GetParam().bands);
    image.representation = GetParam().bands == 1 ? "MONO" : "MULTI";
    const std::uint32_t tiles = kBlocks * (HasStreams() ? GetParam().bands : 1);
    std::vector<std::uint32_t> offsets(tiles, kNotThere);
    for (std::uint32_t at = 0; at < tiles; ++at) {
      const std::uint32_t tile = GetParam().isMasked ? tiles - 1 - at : at;
      if (IsAbsent(tile)) continue;
      offsets[tile] = static_cast<std::uint32_t>(image.data.size());
      const Bytes stream = Stream(tile);
      image.data.insert(image.data.end(), stream.begin(), stream.end());
    }
    if (GetParam().isMasked) image.mask = MaskSpec{offsets, {}, Bytes{kPad}};
    return image;
  }
};

TEST_P(JpegTiles, HaveTheSamplesOfTheirStreams) {
  ExpectSamples(Image(), GetParam().bits == 8 ? NITF_SAMPLE_UINT8 : NITF_SAMPLE_UINT16,
                [&](std::uint32_t band, std::uint32_t row, std::uint32_t column) {
                  const std::uint32_t block = row / kBlockRows * 2 + column / kBlockColumns;
                  return IsAbsent(HasStreams() ? band * kBlocks + block : block) ? kPad : TileSample(band, row, column);
                });
}

constexpr TileCase kTileCases[] = {
    {"Searched", 'B', false, 1},       {"Masked", 'B', true, 1},       {"SearchedInTwelveBits", 'B', false, 1, 12},
    {"SearchedColors", 'P', false, 3}, {"MaskedColors", 'P', true, 3}, {"SearchedPlanes", 'S', false, 3},
    {"MaskedPlanes", 'S', true, 3}};

INSTANTIATE_TEST_SUITE_P(Kinds, JpegTiles, testing::ValuesIn(kTileCases),
                         [](const auto &tiles) { return tiles.param.name; });

/** Marks of streams are found wherever pieces of the search begin and end. */
TEST(JpegTilesFarApart, AreFound) {
  constexpr std::size_t kPiece = 256 * 1024;
  const Bytes stream = EncodeJpeg({.width = 4, .height = 4, .sample = TileSample});
  for (std::size_t start = kPiece - 4; start <= kPiece + 1; ++start) {
    ImageSpec image{.rows = 4, .columns = 8, .compression = "C3", .blockWidth = 4};
    image.data = stream;
    image.data.resize(start);
    image.data.insert(image.data.end(), stream.begin(), stream.end());
    const OpenReader reader(NitfBuilder().Image(image));
    const NitfWindow last = {3, 7, 1, 1};
    std::uint8_t sample = 0;
    const NitfSampleTarget target = {&sample, 1, 1, 0};
    ASSERT_EQ(NitfReaderReadSamples(reader.Get(), 0, &last, nullptr, 0, &target), SUCCESS) << start;
    EXPECT_EQ(sample, TileSample(0, 3, 3)) << start;
  }
}

TEST(JpegTilesOfDamagedImages, EndInAnErrorOrAreZero) {
  ImageSpec image{.rows = 4, .columns = 8, .compression = "C3", .blockWidth = 4};
  image.data = EncodeJpeg({.width = 4, .height = 4, .sample = TileSample});
  const OpenReader reader(NitfBuilder().Image(image));
  Bytes samples(32, 0xEE);
  const NitfSampleTarget target = {samples.data(), 8, 1, 0};
  EXPECT_EQ(NitfReaderReadSamples(reader.Get(), 0, nullptr, nullptr, 0, &target), ERROR_FILE_FORMAT);
  NitfReaderSetOptions(reader.Get(), NITF_READER_KEEP_GOING);
  ASSERT_EQ(NitfReaderReadSamples(reader.Get(), 0, nullptr, nullptr, 0, &target), SUCCESS);
  // The encoder asks for column and row.
  EXPECT_EQ(samples[3], TileSample(0, 3, 0));
  EXPECT_EQ(samples[4], 0);
}

// ---- others -------------------------------------------------------------------------------------------------------

#ifdef KSNTFX_CODEC_T4
TEST(BilevelSamples, AreOneWhereTheStreamIsBlack) {
  ImageSpec image{.rows = 2, .columns = 8, .pixelValueType = "B", .compression = "C1", .bits = 1};
  image.fields["COMRAT"] = "1D";
  // Each row begins with an end of line: 4 white, 3 black, 1 white; no white, 8 black.
  BitWriter bits(image.data);
  bits.Put(1, 12);
  bits.Put(0b1011, 4);
  bits.Put(0b10, 2);
  bits.Put(0b000111, 6);
  bits.Put(1, 12);
  bits.Put(0b00110101, 8);
  bits.Put(0b000101, 6);
  for (int end = 0; end < 6; ++end) bits.Put(1, 12);
  const auto isBlack = [](std::uint32_t, std::uint32_t row, std::uint32_t column) {
    return row == 1 || (column >= 4 && column < 7) ? 1 : 0;
  };
  ExpectSamples(image, NITF_SAMPLE_UINT8, isBlack);
  const OpenReader reader(NitfBuilder().Image(image));
  Bytes pixels(64, 0x77);
  ASSERT_EQ(NitfReaderShowImage(reader.Get(), 0, nullptr, nullptr, pixels.data(), 32), SUCCESS);
  for (std::uint32_t at = 0; at < 16; ++at) EXPECT_EQ(pixels[at * 4], isBlack(0, at / 8, at % 8) == 1 ? 0 : 255) << at;
}
#endif

/** Blocks of 2 x 3 codes, each a kernel of 4 x 4 values; of four blocks the second isn't recorded. */
TEST(QuantisedSamples, AreTheValuesOfTheirKernels) {
  const auto code = [](std::uint32_t block, std::uint32_t row, std::uint32_t column) {
    return (block * 5 + row * 3 + column) % 7;
  };
  VqSpec data{2, 3, 12, 4, 4};
  for (std::uint32_t kernel = 0; kernel < 7; ++kernel) {
    Bytes &values = data.kernels.emplace_back();
    for (std::uint32_t place = 0; place < 16; ++place)
      values.push_back(static_cast<std::uint8_t>(kernel * 16 + place + 1));
  }
  for (const std::uint32_t block : {0U, 2U, 3U}) {
    for (std::uint32_t at = 0; at < 6; ++at) data.codes.push_back(code(block, at / 3, at % 3));
  }
  ImageSpec image{.rows = 15, .columns = 23, .compression = "M4", .blockWidth = 12, .blockHeight = 8};
  image.data = EncodeVq(data);
  image.mask = MaskSpec{{0, kNotThere, 9, 18}, {}, {}};
  ExpectSamples(image, NITF_SAMPLE_UINT8, [&](std::uint32_t, std::uint32_t row, std::uint32_t column) {
    const std::uint32_t block = row / 8 * 2 + column / 12;
    if (block == 1) return 0;
    return static_cast<int>(code(block, row % 8 / 4, column % 12 / 4) * 16 + row % 4 * 4 + column % 4 + 1);
  });
}

#ifdef KSNTFX_CODEC_JPEG2000
/** Three bands of 12 bits with a sign, in tiles; blocks of the subheader don't matter. */
TEST(Jpeg2000Samples, AreThoseOfTheStream) {
  Jpeg2000Spec spec;
  spec.components = {{12, true}, {12, true}, {12, true}};
  spec.tile = 16;
  const auto sample = [](std::uint32_t band, std::uint32_t row, std::uint32_t column) {
    return static_cast<int>((band * 700 + row * 97 + column * 31) % 4096) - 2048;
  };
  Jpeg2000Samples samples(3);
  for (std::uint32_t at = 0; at < 3 * spec.width * spec.height; ++at) {
    const std::uint32_t pixel = at % (spec.width * spec.height);
    samples[at / (spec.width * spec.height)].push_back(
        sample(at / (spec.width * spec.height), pixel / spec.width, pixel % spec.width));
  }
  ImageSpec image{.rows = spec.height, .columns = spec.width, .pixelValueType = "SI", .compression = "C8", .bits = 12};
  image.bands = std::vector<BandSpec>(3);
  image.representation = "MULTI";
  const Bytes stream = EncodeJpeg2000(spec, samples);
  // In front of masked images there may be a mask table: IMDATOFF and three lengths of 0.
  Bytes withTable = {0, 0, 0, 10, 0, 0, 0, 0, 0, 0};
  withTable.insert(withTable.end(), stream.begin(), stream.end());
  const std::pair<const char *, Bytes> forms[] = {
      {"C8", stream}, {"M8", stream}, {"M8", withTable}, {"CD", stream}, {"MD", withTable}};
  for (const auto &[compression, data] : forms) {
    SCOPED_TRACE(compression);
    image.compression = compression;
    image.data = data;
    for (const char mode : {'B', 'S'}) {
      image.mode = mode;
      ExpectSamples(image, NITF_SAMPLE_INT16, sample);
    }
  }
}
#endif

}  // namespace
