// Where objects lie: chains of attachments, and drawings on their bounds.
#include "cgm_builder.h"
#include "harness.h"
#include "internal/ksclasses_.h"

#include <gtest/gtest.h>

namespace {

std::pair<std::uint32_t, std::uint32_t> SizeOf(LoadedFile &file) {
  std::uint32_t width = 0;
  std::uint32_t height = 0;
  EXPECT_EQ(GetActual_Width_Height(file.Get(), &width, &height), SUCCESS);
  return {width, height};
}

using Size = std::pair<std::uint32_t, std::uint32_t>;

GraphicSpec ObjectAt(int level, int attachment, int place) {
  return {level, attachment, place, place, 'O', {}, {{"SBND2", "0000500005"}}};
}

TEST(Attachments, MayPassTheirStartAndEnd) {
  // From the first graphic: the image of level 2, then itself among the graphics, then the second one.
  ImageSpec image{.rows = 4, .columns = 4, .level = 2, .attachment = 1, .data = Bytes(16, 9)};
  image.locationRow = image.locationColumn = 100;
  LoadedFile file(NitfBuilder().Image(image).Graphic(ObjectAt(1, 2, 1)).Graphic(ObjectAt(2, 0, 10)));
  ASSERT_EQ(file.status, SUCCESS);
  EXPECT_EQ(SizeOf(file), Size(100 + 1 + 10 + 5, 100 + 1 + 10 + 5));
}

TEST(Attachments, OfRealCirclesCountEachLocationOnce) {
  ImageSpec image{.rows = 4, .columns = 4, .level = 2, .attachment = 1, .data = Bytes(16, 9)};
  image.locationRow = image.locationColumn = 100;
  LoadedFile file(NitfBuilder().Image(image).Graphic(ObjectAt(1, 2, 1)));
  ASSERT_EQ(file.status, SUCCESS);
  EXPECT_EQ(SizeOf(file), Size(105, 105));
}

TEST(Attachments, HaveLevelsOfAnySize) {
  ImageSpec image{.rows = 4, .columns = 4, .data = Bytes(16, 9)};
  LoadedFile file(NitfBuilder().Image(image).Graphic(ObjectAt(2, 0, 50)).Graphic(ObjectAt(3, 0, 0)));
  ASSERT_EQ(file.status, SUCCESS);
  for (const std::uint32_t level : {1000U, 70'000U, 0xFFFFFFFFU}) {
    FindGraphic(file.Get(), 0)->displayLevel = level;
    FindImage(file.Get(), 0)->attachmentLevel = level;
    EXPECT_EQ(SizeOf(file), Size(54, 54)) << level;
  }
}

// ---- drawings -------------------------------------------------------------------------------------------------------

/** A metafile of red boxes in whole units, y downwards. */
Bytes Boxes(const std::vector<std::array<double, 4>> &boxes, double extent) {
  CgmCoding coding;
  coding.directColor = true;
  CgmBuilder metafile(coding, {0, extent}, {extent, 0});
  metafile.Add(5, 22, metafile.New().Enumeration(1));
  metafile.Add(5, 23, metafile.New().Direct(0x0000FF));
  for (const auto &box : boxes) {
    metafile.Add(4, 11, metafile.New().Points({{box[0], box[1]}, {box[2], box[3]}}));
  }
  return metafile.Finish();
}

GraphicSpec OnBounds(const Bytes &metafile) {
  return {1, 0, 0, 0, 'C', metafile, {{"SBND1", "0000000000"}, {"SBND2", "0010000100"}}};
}

TEST(Drawings, HaveAScaleThatTheirObjectsDoNotChange) {
  // Far objects would fit the bounds better if the extent were laid onto them.
  const std::vector<std::array<double, 4>> near = {{10, 20, 30, 40}};
  const std::vector<std::array<double, 4>> far = {{10, 20, 30, 40}, {0, 0, 1, 1}, {980, 980, 1000, 1000}};
  for (const double extent : {1000.0, 10.0}) {
    const bool isScaled = extent < 100;
    for (const auto &boxes : {near, far}) {
      const Composition picture = Compose(NitfBuilder().Graphic(OnBounds(Boxes(boxes, extent))));
      ASSERT_EQ(picture.status, SUCCESS);
      EXPECT_EQ(picture.At(30, 20) == 0xFF0000, !isScaled);
    }
  }
}

TEST(Drawings, AreNotChangedByPainting) {
  LoadedFile file(NitfBuilder().Graphic(OnBounds(Boxes({{10, 20, 30, 40}}, 1000))));
  ASSERT_EQ(file.status, SUCCESS);
  KsLocalBitmap canvas;
  ASSERT_EQ(K_NtfRenderBitmap(canvas.Get(), file.Get()), SUCCESS);
  KsVectorPoint low;
  KsVectorPoint high;
  ASSERT_EQ(KsVectorWindow(&FindGraphic(file.Get(), 0)->vector, &low, &high), SUCCESS);
  EXPECT_EQ(high.x - low.x, 1000);
  EXPECT_EQ(high.y - low.y, 1000);
}

}  // namespace
