// Sample files against the pictures that an independent reader shows of them.
#include "corpus.h"
#include "harness.h"
#include "images/block_grid.h"
#include "images/handlimg.h"
#include "internal/ksclasses_.h"
#include "png_file.h"
#include "sample_files.h"

#include <functional>
#include <stdexcept>
#include <string>
#include <vector>

#include <gtest/gtest.h>

using namespace ksntfx;

namespace {

/** Red, green and blue as 0xRRGGBB. */
using Color = std::uint32_t;

Color ColorOf(const KsPaletteEntry &entry) {
  return Color{entry.red} << 16 | Color{entry.green} << 8 | entry.blue;
}

Color GrayOf(std::uint32_t level) {
  return level * 0x010101;
}

/** A pixel of a decoded image, read by the rules of the bitmap's depth. */
Color PixelOf(const KsBitmap &bitmap, std::uint32_t y, std::uint32_t x) {
  const std::uint8_t *row = bitmap.pixels + std::size_t{y} * bitmap.bytesPerLine;
  const auto indexed = [&](std::uint32_t index) {
    return bitmap.palette == nullptr ? GrayOf(index) : ColorOf(bitmap.palette[index]);
  };
  switch (bitmap.bitsPerPixel) {
    case 1:
      return indexed(row[x / 8] >> (7 - x % 8) & 1);
    case 8:
      return indexed(row[x]);
    case 16:
      return GrayOf(reinterpret_cast<const std::uint16_t *>(row)[x] >> 8);
    case 24:
      return Color{row[3 * x + 2]} << 16 | Color{row[3 * x + 1]} << 8 | row[3 * x];
    default:
      throw std::invalid_argument("a depth that no sample file has");
  }
}

struct ReferencePixel {
  Color color;
  bool transparent;
};

ReferencePixel ReferenceAt(const PngFile &png, std::uint32_t y, std::uint32_t x) {
  const std::vector<std::uint8_t> &row = png.rows.at(y);
  if (row.size() == png.width) {
    const std::array<int, 3> &color = png.palette.at(row.at(x));
    return {static_cast<Color>(color[0] << 16 | color[1] << 8 | color[2]), false};
  }
  const std::size_t at = std::size_t{x} * 4;
  return {Color{row.at(at)} << 16 | Color{row.at(at + 1)} << 8 | row.at(at + 2), row.at(at + 3) == 0};
}

/** The row of the reference that a row must equal: in mode P the last row of a block repeats the one before it. */
std::uint32_t RowInReference(const ImageSubheader &image, std::uint32_t row) {
  return image.mode == kPixelInterleaved && (row + 1) % BlockHeight(image) == 0 ? row - 1 : row;
}

/** Gives the colour of a pixel of image segment 0. */
using PixelFunction = std::function<Color(std::uint32_t row, std::uint32_t column)>;

class References : public testing::TestWithParam<const char *> {
 protected:
  void SetUp() override {
    const auto samplePath = CorpusFile(GetParam());
    auto referencePath = CorpusFile(std::string(GetParam()) + "_0.ref.png");
    if (!referencePath) referencePath = CorpusFile(std::string(GetParam()) + ".ref.png");
    if (!samplePath || !referencePath) GTEST_SKIP() << GetParam() << " or its reference" << kNotAtHand;
    path = *samplePath;
    reference = DecodePng(TextOf(ReadFile(*referencePath)));
    ASSERT_EQ(reference.bits, 8);
    const std::size_t channels = reference.rows.at(0).size() / reference.width;
    ASSERT_TRUE(channels == 1 || channels == 4) << "indices, or red, green, blue and opacity";
    ASSERT_EQ(Load(file.Get(), Wide(path).c_str()), SUCCESS);
    image = FindImage(file.Get(), 0);
    ASSERT_LE(image->rows, reference.height);
    ASSERT_LE(image->columns, reference.width);
  }

  void ExpectReference(const PixelFunction &pixel) const {
    std::uint64_t compared = 0, different = 0;
    for (std::uint32_t row = 0; row < image->rows; ++row) {
      for (std::uint32_t column = 0; column < image->columns; ++column) {
        const ReferencePixel expected = ReferenceAt(reference, RowInReference(*image, row), column);
        if (expected.transparent) continue;
        ++compared;
        const Color color = pixel(row, column);
        if (color == expected.color || different++ != 0) continue;
        ADD_FAILURE() << "row " << row << ", column " << column << ": " << std::hex << color << " for "
                      << expected.color;
      }
    }
    EXPECT_EQ(different, 0U) << "of " << compared << " pixels";
    EXPECT_GT(compared, 0U);
  }

  std::string path;
  PngFile reference;
  LocalNitfFile file;
  const ImageSubheader *image = nullptr;
};

TEST_P(References, AgreeWithTheDecodedImage) {
  KsLocalBitmap bitmap;
  ASSERT_EQ(DecodeImageSegment(nullptr, file.Get(), 0, bitmap.Get()), SUCCESS);
  ExpectReference([&](std::uint32_t row, std::uint32_t column) { return PixelOf(*bitmap.Get(), row, column); });
}

TEST_P(References, AgreeWithTheCompositionAtTheImagesPlace) {
  const Composition picture = Compose(path);
  ASSERT_EQ(picture.status, SUCCESS);
  ExpectReference([&](std::uint32_t row, std::uint32_t column) {
    return picture.At(static_cast<std::uint32_t>(image->locationRow) + row,
                      static_cast<std::uint32_t>(image->locationColumn) + column);
  });
}

INSTANTIATE_TEST_SUITE_P(Corpus, References,
                         testing::Values("i_3001a.ntf", "i_3034c.ntf", "LUinBand2.ntf", "i_3301a.ntf", "i_3301h.ntf",
                                         "v_3301f.ntf", "i_3405a.ntf", "blank_irepbands.ntf", "i_3025b.ntf",
                                         "i_3309a.ntf", "i_3041a.ntf", "wide/file9_jp2_1place.ntf"),
                         [](const auto &tested) { return TestName(tested.param); });

}  // namespace
