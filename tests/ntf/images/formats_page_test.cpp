// What docs/formats.md tells of images is what becomes of them.
#include "bit_writer.h"
#include "harness.h"
#include "jpeg_builder.h"
#include "nitf_builder.h"
#include "vq_builder.h"

#include <algorithm>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace {

using Cells = std::vector<std::string>;

/** The rows of the page on images: IC, PVTYPE and IREP, bands, NBPP, IMODE, what becomes of it, and the bitmap. */
std::vector<Cells> RowsOfPage() {
  std::ifstream page(FORMATS_PAGE);
  std::vector<Cells> rows;
  bool areImages = false;
  for (std::string line; std::getline(page, line);) {
    if (line.starts_with("## ")) areImages = line == "## Images";
    if (!areImages || !line.starts_with("| ") || line.starts_with("| `")) continue;
    std::istringstream cells(line.substr(1));
    rows.emplace_back();
    for (std::string cell; std::getline(cells, cell, '|');) rows.back().push_back(cell);
  }
  return rows;
}

/** Whether a cell names a value, or all values in its own words. */
bool Names(const std::string &cell, const std::string &value) {
  std::istringstream words(cell);
  for (std::string word; words >> word;) {
    while (!word.empty() && (word.back() == ',' || word.back() == ':')) word.pop_back();
    if (word == value || word == "any" || word == "likewise") return true;
  }
  return false;
}

bool BandsFit(const std::string &cell, std::size_t bands, char mode) {
  if (cell.find("or more in") != std::string::npos) return bands == 1 || mode != 'S';
  if (cell.find("and more") != std::string::npos) return bands >= std::stoul(cell);
  return Names(cell, std::to_string(bands));
}

bool BlocksFit(const std::string &cell, const ImageSpec &image) {
  const bool isSingle = image.BlocksPerRow() * image.BlocksPerColumn() == 1;
  if (cell.find("in one block") != std::string::npos) return isSingle;
  return cell.find("in several blocks") == std::string::npos || !isSingle;
}

bool Fits(const Cells &row, const ImageSpec &image) {
  const bool isMono = image.representation == "MONO";
  const bool codeFits = Names(row[0], image.compression) || row[0].find("all others") != std::string::npos;
  return codeFits && Names(row[1], image.pixelValueType) && (isMono || row[1].find("MONO") == std::string::npos) &&
         BandsFit(row[2], image.bands.size(), image.mode) && Names(row[3], std::to_string(image.bits)) &&
         Names(row[4], {image.mode}) && BlocksFit(row[4], image);
}

/** The status that the page tells of an image. */
std::int32_t ToldOf(const ImageSpec &image) {
  static const std::vector<Cells> rows = RowsOfPage();
  const auto row = std::find_if(rows.begin(), rows.end(), [&](const Cells &cells) { return Fits(cells, image); });
  if (row == rows.end()) return 0;
  return row->at(5).starts_with(" -") ? std::stoi(row->at(5)) : std::int32_t{SUCCESS};
}

class FormatsPage : public testing::TestWithParam<std::tuple<const char *, std::uint32_t, std::uint32_t>> {};

TEST_P(FormatsPage, TellsWhatBecomesOfUncompressedImages) {
  const auto [type, bands, bits] = GetParam();
  for (const char mode : {'B', 'P', 'R', 'S'}) {
    for (const std::uint32_t blockWidth : {0U, 4U}) {
      for (const char *const representation : {"MONO", "MULTI"}) {
        ImageSpec image{.rows = 4, .columns = 8, .representation = representation, .mode = mode, .bits = bits};
        image.pixelValueType = type;
        image.bands.resize(bands);
        image.blockWidth = blockWidth;
        image.data = Bytes(2048, 1);
        EXPECT_EQ(Compose(NitfBuilder().Image(image)).status, ToldOf(image))
            << mode << ' ' << blockWidth << representation;
      }
    }
  }
}

INSTANTIATE_TEST_SUITE_P(Int, FormatsPage,
                         testing::Combine(testing::Values("INT"), testing::Values(1U, 2U, 3U, 5U),
                                          testing::Values(1U, 8U, 12U, 16U, 24U, 32U, 64U)));
INSTANTIATE_TEST_SUITE_P(Bilevel, FormatsPage,
                         testing::Combine(testing::Values("B"), testing::Values(1U, 2U, 3U), testing::Values(1U)));

constexpr std::uint32_t kTile = 40;

/** White rows, each behind its mark. */
Bytes BilevelData(const ImageSpec &image) {
  constexpr std::uint32_t kEndOfLine = 1;
  constexpr std::uint32_t kWhite64 = 0b11011;
  constexpr std::uint32_t kWhite16 = 0b101010;
  Bytes data;
  BitWriter bits(data);
  for (std::uint32_t row = 0; row < image.rows; ++row) {
    bits.Put(kEndOfLine, 12);
    bits.Put(kWhite64, 5);
    bits.Put(kWhite16, 6);
  }
  return data;
}

Bytes QuantisedData(const ImageSpec &image) {
  VqSpec data;
  data.codeRows = image.BlockHeight() / 4;
  data.codesPerRow = image.BlockWidth() / 4;
  data.kernels = {Bytes(16, 1)};
  data.codes.assign(std::size_t{image.rows} * image.columns / 16, 0);
  return EncodeVq(data);
}

/** A JPEG stream a block; where bands are apart, of each band. */
Bytes StreamData(const ImageSpec &image) {
  const std::uint32_t blocks = image.BlocksPerRow() * image.BlocksPerColumn();
  const auto bands = static_cast<std::uint32_t>(image.bands.size());
  const bool areApart = image.mode == 'S' && blocks > 1;
  JpegSpec spec{.width = image.BlockWidth(), .height = image.BlockHeight()};
  spec.components = areApart ? 1 : bands;
  // Noise makes streams long enough for the search for their marks.
  spec.sample = [](std::uint32_t, std::uint32_t x, std::uint32_t y) { return (x * 37 ^ y * 101) * 73 % 256; };
  const Bytes stream = EncodeJpeg(spec);
  Bytes data;
  for (std::uint32_t i = 0; i < (areApart ? blocks * bands : blocks); ++i) {
    data.insert(data.end(), stream.begin(), stream.end());
  }
  return data;
}

Bytes DataOf(const ImageSpec &image) {
  if (image.compression == "C1" || image.compression == "M1") return BilevelData(image);
  if (image.compression == "C4" || image.compression == "M4") return QuantisedData(image);
  return StreamData(image);
}

class CompressedFormats : public testing::TestWithParam<const char *> {};

TEST_P(CompressedFormats, AreWhatThePageTells) {
  const std::string code = GetParam();
  for (const std::uint32_t bands : {1U, 2U, 3U, 4U, 5U}) {
    for (const std::uint32_t bits : {1U, 8U, 12U}) {
      for (const char mode : {'B', 'P', 'R', 'S'}) {
        for (const std::uint32_t blockWidth : {0U, kTile}) {
          ImageSpec image{.rows = kTile, .columns = 2 * kTile, .compression = code, .mode = mode, .bits = bits};
          image.bands.resize(bands);
          image.blockWidth = blockWidth;
          if (code[0] == 'M' && code < "M6") image.mask = MaskSpec{};
          image.data = DataOf(image);
          EXPECT_EQ(Compose(NitfBuilder().Image(image)).status, ToldOf(image))
              << bands << " of " << bits << ' ' << mode << ' ' << blockWidth;
        }
      }
    }
  }
}

INSTANTIATE_TEST_SUITE_P(Codes, CompressedFormats,
                         testing::Values("C0", "C1", "C2", "C3", "C4", "C5", "C6", "C7", "C8", "I1", "M0", "M1", "M2",
                                         "M3", "M4", "M5", "M6", "M8", "XX"),
                         [](const auto &given) { return std::string(given.param); });

}  // namespace
