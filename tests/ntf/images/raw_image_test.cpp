// Samples as the wide reader returns them, against an encoder of this file's own: all modes, types and sizes of
// samples, blocks with fill, mask tables, and any window, choice of bands and order in memory.
#include "bit_writer.h"
#include "ksntfx_reader.h"
#include "nitf_builder.h"
#include "open_reader.h"

#include <algorithm>
#include <cstring>
#include <numeric>
#include <random>

#include <gtest/gtest.h>

namespace {

constexpr std::uint8_t kUntouched = 0xEE;
constexpr std::uint32_t kNotThere = 0xFFFFFFFF;

using Random = std::mt19937;

std::uint32_t Below(Random &random, std::uint64_t count) {
  return static_cast<std::uint32_t>(random() % count);
}

/** An image whose samples are patterns of bits. */
struct Model {
  std::uint32_t rows = 7;
  std::uint32_t columns = 11;
  std::uint32_t bands = 3;
  std::uint32_t blockHeight = 3;
  std::uint32_t blockWidth = 4;
  char mode = 'B';
  std::string type = "INT";
  std::uint32_t bits = 8;
  bool isMasked = false;
  std::uint64_t pad = 0;
  std::vector<std::uint64_t> patterns = {}; /**< of whole blocks: band, row, column */
  std::vector<bool> isAbsent = {};          /**< of entries: blocks, in mode S of each band */

  std::uint32_t Across() const { return (columns + blockWidth - 1) / blockWidth; }
  std::uint32_t Down() const { return (rows + blockHeight - 1) / blockHeight; }
  std::uint32_t Blocks() const { return Across() * Down(); }
  std::uint32_t Entries() const { return mode == 'S' ? Blocks() * bands : Blocks(); }

  std::size_t PlaceOf(std::uint32_t band, std::uint32_t row, std::uint32_t column) const {
    return (std::size_t{band} * Down() * blockHeight + row) * Across() * blockWidth + column;
  }

  void Fill(Random &random) {
    const std::uint64_t set = bits == 64 ? ~std::uint64_t{0} : (std::uint64_t{1} << bits) - 1;
    const auto pattern = [&] { return (std::uint64_t{random()} << 32 | random()) & set; };
    patterns.resize(PlaceOf(bands, 0, 0));
    std::generate(patterns.begin(), patterns.end(), pattern);
    pad = pattern();
    isAbsent.assign(Entries(), false);
    if (isMasked) std::generate(isAbsent.begin(), isAbsent.end(), [&] { return Below(random, 3) == 0; });
  }

  std::uint64_t At(std::uint32_t band, std::uint32_t row, std::uint32_t column) const {
    const std::uint32_t block = row / blockHeight * Across() + column / blockWidth;
    return isAbsent[mode == 'S' ? band * Blocks() + block : block] ? pad : patterns[PlaceOf(band, row, column)];
  }

  NitfSampleType Type() const {
    if (type == "C") return NITF_SAMPLE_COMPLEX64;
    if (type == "R") return bits == 32 ? NITF_SAMPLE_FLOAT32 : NITF_SAMPLE_FLOAT64;
    const int size = bits <= 8 ? 0 : bits <= 16 ? 1 : bits <= 32 ? 2 : 3;
    return static_cast<NitfSampleType>((type == "SI" ? NITF_SAMPLE_INT8 : NITF_SAMPLE_UINT8) + size);
  }
  std::uint32_t SampleBytes() const { return bits <= 8 ? 1 : bits <= 16 ? 2 : bits <= 32 ? 4 : 8; }

  /** A sample in the memory of this machine. */
  Bytes InMemory(std::uint64_t pattern) const {
    if (type == "SI" && bits < 64 && (pattern >> (bits - 1) & 1) != 0) pattern |= ~std::uint64_t{0} << bits;
    Bytes bytes;
    PutBigEndian(bytes, pattern, static_cast<int>(SampleBytes()));
    if (std::endian::native == std::endian::big) return bytes;
    const std::ptrdiff_t word = type == "C" ? 4 : static_cast<std::ptrdiff_t>(bytes.size());
    for (auto at = bytes.begin(); at != bytes.end(); at += word) std::reverse(at, at + word);
    return bytes;
  }
};

/** Writes samples as MIL-STD-2500C, 5.4.2 has them: blocks begin on whole bytes, nothing else does. */
class Encoder {
 public:
  explicit Encoder(const Model &encoded) : model(encoded) {}

  ImageSpec Image() {
    std::vector<std::uint32_t> offsets(model.Entries(), kNotThere);
    std::vector<std::uint32_t> order(model.Entries());
    std::iota(order.begin(), order.end(), 0U);
    // A mask table may list blocks in any order.
    if (model.isMasked) std::reverse(order.begin(), order.end());
    for (const std::uint32_t entry : order) {
      if (model.isAbsent[entry]) continue;
      offsets[entry] = static_cast<std::uint32_t>(data.size());
      PutEntry(entry);
      if (model.isMasked) data.push_back(kUntouched);
    }
    ImageSpec image{.rows = model.rows, .columns = model.columns, .pixelValueType = model.type, .mode = model.mode};
    image.bands = std::vector<BandSpec>(model.bands);
    image.representation = model.bands == 1 ? "MONO" : "MULTI";
    image.bits = model.bits;
    image.blockWidth = model.blockWidth;
    image.blockHeight = model.blockHeight;
    if (model.isMasked) {
      image.compression = "NM";
      image.data = MaskTable(offsets);
    }
    image.data.insert(image.data.end(), data.begin(), data.end());
    return image;
  }

 private:
  void PutEntry(std::uint32_t entry) {
    const std::uint32_t block = entry % model.Blocks();
    top = block / model.Across() * model.blockHeight;
    left = block % model.Across() * model.blockWidth;
    const std::uint32_t own = entry / model.Blocks();
    if (model.mode == 'S') PutBand(own);
    if (model.mode == 'B') EachBand([&](std::uint32_t band) { PutBand(band); });
    for (std::uint32_t row = 0; row < model.blockHeight; ++row) {
      if (model.mode == 'R') EachBand([&](std::uint32_t band) { PutRow(band, row); });
      for (std::uint32_t column = 0; column < model.blockWidth && model.mode == 'P'; ++column) {
        EachBand([&](std::uint32_t band) { Put(band, row, column); });
      }
    }
    writer.FillByte();
  }
  template <class Action>
  void EachBand(Action &&action) {
    for (std::uint32_t band = 0; band < model.bands; ++band) action(band);
  }
  void PutBand(std::uint32_t band) {
    for (std::uint32_t row = 0; row < model.blockHeight; ++row) PutRow(band, row);
  }
  void PutRow(std::uint32_t band, std::uint32_t row) {
    for (std::uint32_t column = 0; column < model.blockWidth; ++column) Put(band, row, column);
  }
  void Put(std::uint32_t band, std::uint32_t row, std::uint32_t column) {
    const std::uint64_t pattern = model.patterns[model.PlaceOf(band, top + row, left + column)];
    if (model.bits > 32) writer.Put(static_cast<std::uint32_t>(pattern >> 32), model.bits - 32);
    writer.Put(static_cast<std::uint32_t>(pattern), std::min(model.bits, 32U));
  }

  /** Block and pad masks, a pad value of as many bits as a sample, and a gap in front of the blocks. */
  Bytes MaskTable(const std::vector<std::uint32_t> &offsets) const {
    constexpr std::size_t kGap = 5;
    const auto padBytes = static_cast<int>((model.bits + 7) / 8);
    Bytes table;
    PutBigEndian(table, 10 + static_cast<std::size_t>(padBytes) + 8 * offsets.size() + kGap, 4);
    for (const std::uint32_t field : {4U, 4U, model.bits}) PutBigEndian(table, field, 2);
    PutBigEndian(table, model.pad, padBytes);
    for (int mask = 0; mask < 2; ++mask) {
      for (const std::uint32_t offset : offsets) PutBigEndian(table, offset, 4);
    }
    table.resize(table.size() + kGap, kUntouched);
    return table;
  }

  const Model &model;
  Bytes data;
  BitWriter writer{data};
  std::uint32_t top = 0;
  std::uint32_t left = 0;
};

/** A window, bands and an order in memory by chance; some bytes between samples belong to nobody. */
class Question {
 public:
  Question(const Model &asked, Random &random) : model(asked) {
    window.firstRow = Below(random, model.rows);
    window.firstColumn = Below(random, model.columns);
    window.rows = 1 + Below(random, model.rows - window.firstRow);
    window.columns = 1 + Below(random, model.columns - window.firstColumn);
    if (Below(random, 4) == 0) window = {0, 0, model.rows, model.columns};
    bands.resize(1 + Below(random, model.bands));
    std::generate(bands.begin(), bands.end(), [&] { return Below(random, model.bands); });
    if (Below(random, 2) == 0) {
      bands.resize(model.bands);
      std::iota(bands.begin(), bands.end(), 0U);
    }
    ChooseSteps(random);
  }

  void Check(NitfReader *reader) {
    const NitfSampleTarget target = {memory.data() + first, steps[0], steps[1], steps[2]};
    ASSERT_EQ(
        NitfReaderReadSamples(reader, 0, &window, bands.data(), static_cast<std::uint32_t>(bands.size()), &target),
        SUCCESS)
        << NitfReaderProblem(reader);
    Bytes expected(memory.size(), kUntouched);
    for (std::uint32_t row = 0; row < window.rows; ++row) {
      for (std::uint32_t column = 0; column < window.columns; ++column) {
        for (std::uint32_t at = 0; at < bands.size(); ++at) {
          const Bytes sample = model.InMemory(model.At(bands[at], static_cast<std::uint32_t>(window.firstRow) + row,
                                                       static_cast<std::uint32_t>(window.firstColumn) + column));
          std::copy(sample.begin(), sample.end(),
                    expected.begin() + first + row * steps[0] + column * steps[1] + at * steps[2]);
        }
      }
    }
    EXPECT_EQ(memory, expected) << window.rows << " rows from " << window.firstRow << ", " << window.columns
                                << " columns from " << window.firstColumn << ", bands " << testing::PrintToString(bands)
                                << ", steps " << testing::PrintToString(steps);
  }

 private:
  /** Rows, columns and bands in any order of nesting, each forwards or backwards. */
  void ChooseSteps(Random &random) {
    const std::size_t counts[] = {window.rows, window.columns, bands.size()};
    int order[] = {0, 1, 2};
    std::shuffle(std::begin(order), std::end(order), random);
    if (Below(random, 3) == 0) std::copy_n(std::begin({0, 1, 2}), 3, order);
    const bool isDense = Below(random, 2) == 0;
    auto size = static_cast<std::int64_t>(model.SampleBytes());
    for (int at = 2; at >= 0; --at) {
      const int axis = order[at];
      if (!isDense) size += Below(random, 3);
      const bool isBackwards = Below(random, 3) == 0;
      steps[axis] = isBackwards ? -size : size;
      const auto count = static_cast<std::int64_t>(counts[axis]);
      if (isBackwards) first += size * (count - 1);
      size *= count;
    }
    memory.assign(static_cast<std::size_t>(size), kUntouched);
  }

  const Model &model;
  NitfWindow window{};
  std::vector<std::uint32_t> bands;
  std::vector<std::int64_t> steps = {0, 0, 0};
  std::int64_t first = 0;
  Bytes memory;
};

void CheckModel(Model model, Random &random) {
  constexpr int kQuestions = 12;
  SCOPED_TRACE(std::string(1, model.mode) + " " + model.type + " of " + std::to_string(model.bits) + " bits, " +
               std::to_string(model.bands) + (model.isMasked ? " masked bands" : " bands"));
  model.Fill(random);
  const OpenReader reader(NitfBuilder().Image(Encoder(model).Image()));
  NitfImageShape shape{};
  ASSERT_EQ(NitfReaderGetImage(reader.Get(), 0, &shape), SUCCESS) << NitfReaderProblem(reader.Get());
  EXPECT_EQ(shape.rows, model.rows);
  EXPECT_EQ(shape.columns, model.columns);
  EXPECT_EQ(shape.bands, model.bands);
  EXPECT_EQ(shape.bits, model.bits);
  EXPECT_EQ(shape.sampleType, static_cast<std::uint32_t>(model.Type()));
  EXPECT_EQ(shape.sampleBytes, model.SampleBytes());
  EXPECT_EQ(shape.blockRows, model.blockHeight);
  EXPECT_EQ(shape.blockColumns, model.blockWidth);
  for (int question = 0; question < kQuestions; ++question) Question(model, random).Check(reader.Get());
}

class RawSamples : public testing::TestWithParam<char> {};

TEST_P(RawSamples, OfEverySizeAreThoseOfTheFile) {
  Random random(static_cast<unsigned>(GetParam()));
  for (std::uint32_t bits = 1; bits <= 64; ++bits) {
    for (const bool isMasked : {false, true}) {
      CheckModel({.mode = GetParam(), .bits = bits, .isMasked = isMasked}, random);
      CheckModel({.mode = GetParam(), .type = "SI", .bits = bits, .isMasked = isMasked}, random);
    }
  }
}

TEST_P(RawSamples, OfRealAndComplexNumbersAreThoseOfTheFile) {
  Random random(static_cast<unsigned>(GetParam()) + 1);
  for (const bool isMasked : {false, true}) {
    CheckModel({.mode = GetParam(), .type = "R", .bits = 32, .isMasked = isMasked}, random);
    CheckModel({.mode = GetParam(), .type = "R", .bits = 64, .isMasked = isMasked}, random);
    CheckModel({.mode = GetParam(), .type = "C", .bits = 64, .isMasked = isMasked}, random);
  }
}

TEST_P(RawSamples, OfManyBandsAndOfOneBlockAreThoseOfTheFile) {
  Random random(static_cast<unsigned>(GetParam()) + 2);
  for (const std::uint32_t bits : {1U, 8U, 12U, 16U}) {
    CheckModel({.bands = 23, .mode = GetParam(), .bits = bits, .isMasked = true}, random);
    CheckModel({.blockHeight = 7, .blockWidth = 11, .mode = GetParam(), .bits = bits}, random);
    CheckModel({.rows = 1, .columns = 1, .bands = 1, .mode = GetParam(), .bits = bits}, random);
    // Rows that are read several at a time, in more than one go.
    CheckModel({.rows = 700, .columns = 301, .blockHeight = 600, .blockWidth = 301, .mode = GetParam(), .bits = bits},
               random);
  }
}

INSTANTIATE_TEST_SUITE_P(Modes, RawSamples, testing::Values('B', 'P', 'R', 'S'),
                         [](const auto &mode) { return std::string(1, mode.param); });

TEST(RawSamplesOfBits, OfPixelValueTypeBAreZeroAndOne) {
  Random random(3);
  CheckModel({.bands = 1, .type = "B", .bits = 1}, random);
  CheckModel({.bands = 1, .type = "B", .bits = 1, .isMasked = true}, random);
}

}  // namespace
