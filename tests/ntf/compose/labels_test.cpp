// Labels on a composition: the margin that they add, and chains of attachment that lead through them.
#include "harness.h"
#include "internal/ksclasses_.h"

#include <utility>

#include <gtest/gtest.h>

using namespace ksntfx;

namespace {

constexpr std::uint32_t kSide = 40;
constexpr std::uint32_t kGray = 0x404040;

/** A file of the 2.0 layout with one gray image, at row 5 and column 7, and two labels; no subheader is in it. */
class Labels : public testing::Test {
 protected:
  void SetUp() override {
    Bytes data(std::size_t{kSide} * kSide, 0x40);
    data.insert(data.end(), {'I', 'I', 'I', 'I'});
    WriteFile(folder.Path("data"), data);
    file->fileHandle = KsOpen(Wide(folder.Path("data")).c_str(), KS_OPEN_READ, KS_MODE_READ);
    file->nitf20Layout = 1;
    file->imageCount = file->imageCountInFile = 1;
    file->labelCount = file->labelCountInFile = 2;
    ASSERT_EQ(AllocateObjects(file.Get()), SUCCESS);
    for (const auto &[lengths, bytes] : {std::pair{kImageLengths, kSide * kSide}, std::pair{kLabelLengths, 2U}}) {
      for (std::uint32_t entry = 0; entry < 2; ++entry) {
        ASSERT_EQ(GrowLengths(&file->header, lengths), SUCCESS);
        AddLengths(&file->header, lengths, 0, bytes);
      }
    }
    file->header.headerLength = 0;
    file->header.imageTableCount = 1;
    ImageSubheader &image = *FindImage(file.Get(), 0);
    image.rows = image.columns = image.blockWidth = image.blockHeight = kSide;
    image.blocksPerRow = image.blocksPerColumn = image.bandCount = 1;
    image.bitsPerPixel = image.actualBits = 8;
    image.representation = kMono;
    image.compression = kNC;
    image.mode = kBlockInterleaved;
    image.locationRow = 5;
    image.locationColumn = 7;
    Label(0, {2, 1, 10, 20, 0x0000FF});
    Label(1, {3, 2, 3, 4, 0xFF0000});
  }

  struct Place {
    std::uint32_t level;
    std::uint32_t attachment;
    std::int32_t row;
    std::int32_t column;
    std::uint32_t background;
  };
  void Label(std::uint32_t index, const Place &place) {
    LabelSubheader &label = *FindLabel(file.Get(), index);
    label.displayLevel = place.level;
    label.attachmentLevel = place.attachment;
    label.locationRow = place.row;
    label.locationColumn = place.column;
    label.textColor = label.backgroundColor = place.background;
  }
  void Render() { ASSERT_EQ(K_NtfRenderBitmap(canvas.Get(), file.Get()), SUCCESS); }
  std::uint32_t At(std::uint32_t row, std::uint32_t column) const {
    const std::uint8_t *pixel = canvas->pixels + std::size_t{row} * canvas->bytesPerLine + std::size_t{column} * 3;
    return std::uint32_t{pixel[2]} << 16 | std::uint32_t{pixel[1]} << 8 | pixel[0];
  }

  TemporaryFolder folder;
  LocalNitfFile file;
  KsLocalBitmap canvas;
};

TEST_F(Labels, AddAMarginAndStandWhereTheirChainsLead) {
  Render();
  EXPECT_EQ(+canvas->width, 7 + kSide + 10);
  EXPECT_EQ(+canvas->height, 5 + kSide + 10);
  EXPECT_EQ(At(17, 28), 0xFF0000U) << "from the image";
  EXPECT_EQ(At(17, 25), kGray);
  EXPECT_EQ(At(14, 28), kGray);
  EXPECT_EQ(At(20, 32), 0x0000FFU) << "from the other label";
  EXPECT_EQ(At(17, 32), 0xFF0000U) << "the first one reaches here";
  // Attached to each other, each goes through the other once: both come to the same place.
  Label(0, {2, 3, 2, 1, 0x0000FF});
  Render();
  EXPECT_EQ(At(2 + 3 + 1, 1 + 4 + 1), 0x0000FFU);
}

TEST_F(Labels, AloneHaveACanvasOfOnePixel) {
  SegmentNode *const images = std::exchange(file->imageList, nullptr);
  std::uint32_t width = 0;
  std::uint32_t height = 0;
  EXPECT_EQ(GetActual_Width_Height(file.Get(), &width, &height), SUCCESS);
  EXPECT_EQ(width, 1U);
  EXPECT_EQ(height, 1U);
  file->imageList = images;
}

}  // namespace
