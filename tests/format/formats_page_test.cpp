// What docs/formats.md tells of uncompressed images is what becomes of them.
#include "harness.h"
#include "nitf_builder.h"

#include <algorithm>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace {

using Cells = std::vector<std::string>;

/** The rows of the page for IC NC: PVTYPE and IREP, bands, NBPP, IMODE, what becomes of it, and the bitmap. */
std::vector<Cells> RowsOfPage() {
  std::ifstream page(FORMATS_PAGE);
  std::vector<Cells> rows;
  for (std::string line; std::getline(page, line);) {
    constexpr std::string_view kBegin = "| NC, NM | ";
    if (!line.starts_with(kBegin)) continue;
    std::istringstream rest(line.substr(kBegin.size()));
    rows.emplace_back();
    for (std::string cell; std::getline(rest, cell, '|');) rows.back().push_back(cell);
  }
  return rows;
}

bool Names(const std::string &cell, const std::string &value) {
  std::istringstream words(cell);
  for (std::string word; words >> word;) {
    if (word == value || word == value + "," || word.starts_with("any")) return true;
  }
  return false;
}

bool Fits(const Cells &row, const ImageSpec &image) {
  const std::size_t bands = image.bands.size();
  const bool isMono = image.representation == "MONO";
  const bool isSingle = image.BlocksPerRow() * image.BlocksPerColumn() == 1;
  const bool bandsFit =
      row[1].find("and more") != std::string::npos ? bands >= std::stoul(row[1]) : Names(row[1], std::to_string(bands));
  return Names(row[0], image.pixelValueType) && (isMono || row[0].find("MONO") == std::string::npos) && bandsFit &&
         Names(row[2], std::to_string(image.bits)) && Names(row[3], {image.mode}) &&
         (isSingle || row[3].find("in one block") == std::string::npos);
}

class FormatsPage : public testing::TestWithParam<std::tuple<const char *, std::uint32_t, std::uint32_t>> {};

TEST_P(FormatsPage, TellsWhatBecomesOfUncompressedImages) {
  const std::vector<Cells> rows = RowsOfPage();
  const auto [type, bands, bits] = GetParam();
  for (const char mode : {'B', 'P', 'R', 'S'}) {
    for (const std::uint32_t blockWidth : {0U, 4U}) {
      for (const char *const representation : {"MONO", "MULTI"}) {
        ImageSpec image{.rows = 4, .columns = 8, .representation = representation, .mode = mode, .bits = bits};
        image.pixelValueType = type;
        image.bands.resize(bands);
        image.blockWidth = blockWidth;
        image.data = Bytes(2048, 1);
        const auto row = std::find_if(rows.begin(), rows.end(), [&](const Cells &cells) { return Fits(cells, image); });
        ASSERT_NE(row, rows.end());
        const std::int32_t told = row->at(4).starts_with(" -") ? std::stoi(row->at(4)) : std::int32_t{SUCCESS};
        EXPECT_EQ(Compose(NitfBuilder().Image(image)).status, told) << mode << ' ' << blockWidth << representation;
      }
    }
  }
}

INSTANTIATE_TEST_SUITE_P(Int, FormatsPage,
                         testing::Combine(testing::Values("INT"), testing::Values(1U, 2U, 3U, 5U),
                                          testing::Values(1U, 8U, 12U, 16U, 24U, 32U, 64U)));
INSTANTIATE_TEST_SUITE_P(Bilevel, FormatsPage,
                         testing::Combine(testing::Values("B"), testing::Values(1U, 2U, 3U), testing::Values(1U)));

}  // namespace
