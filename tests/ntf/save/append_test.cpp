// Segments that are added in memory: what the headers say of them, what is saved and read again, and that a failure
// leaves all as it was.
#include "internal/ksclasses_.h"
#include "opened_file.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <memory>
#include <random>

#include <gtest/gtest.h>

namespace {

constexpr std::uint32_t kWidth = 40;
constexpr std::uint32_t kHeight = 24;

/** A handle on an opened or a blank file, with what is added to it. */
class Authored : public Opened {
 public:
  using Opened::Opened;

  std::int32_t Image(std::uint32_t format = KS_FORMAT_JPEG, std::uint32_t bits = 24, std::uint32_t width = kWidth,
                     std::uint32_t height = kHeight) {
    KsLocalBitmap bitmap;
    EXPECT_EQ(Picture(bitmap, width, height), SUCCESS);
    return K_NITFAppendImageSegment(Get(), bitmap.Get(), format, bits, 2);
  }
  std::int32_t Graphic(KsRect rectangle = {5, 6, 30, 20}) {
    KsLocalVector drawing;
    Draw(drawing.Get());
    return K_NITFAppendGraphicSegment(Get(), drawing.Get(), &rectangle);
  }
  std::int32_t Text(const std::string &text = "some words\n") {
    WriteFile(Path("note.txt"), Bytes(text.begin(), text.end()));
    return K_NITFAppendTextSegmentA(Get(), Path("note.txt").c_str());
  }
  /** The file that a save writes, whose length must be what it says. */
  Bytes Saved() {
    Bytes saved = Opened::Saved();
    const NitfHeader &header = Get()->header;
    EXPECT_EQ(std::to_string(saved.size()), std::to_string(std::atoll(header.FL)));
    EXPECT_EQ(header.fileLength, saved.size());
    EXPECT_EQ(header.fileLengthOut, saved.size());
    return saved;
  }

  /** A picture of smooth colours. */
  static std::int32_t Picture(KsLocalBitmap &bitmap, std::uint32_t width, std::uint32_t height) {
    const std::int32_t status = KsBitmapCreate(bitmap.Get(), sizeof(KsBitmap), KS_BITMAP_OWN, width, height, 24,
                                               KS_ORDER_BGR, nullptr, 1, nullptr, 0);
    for (std::uint32_t y = 0; status == SUCCESS && y < height; ++y) {
      std::uint8_t *pixel = bitmap->pixels + std::size_t{y} * bitmap->bytesPerLine;
      for (std::uint32_t x = 0; x < width; ++x) {
        *pixel++ = static_cast<std::uint8_t>(20 + x % 200);
        *pixel++ = static_cast<std::uint8_t>(220 - y % 200);
        *pixel++ = 90;
      }
    }
    return status;
  }
  /** A red box above the x axis. */
  static void Draw(KsVector *drawing, double width = 8, double bottom = 3) {
    KsVectorObject box;
    KsVectorObjectInit(&box);
    box.box.structureSize = sizeof box.box;
    box.box.kind = KS_VECTOR_BOX;
    box.box.corner = {2, bottom, 0, 0};
    box.box.width = width;
    box.box.height = 4;
    box.box.brush = {sizeof box.box.brush, 1, 0x0000FF, {}};
    EXPECT_EQ(KsVectorAddObject(drawing, 0, KS_VECTOR_BOX, &box, 0), SUCCESS);
  }
};

NitfBuilder SourceFile() {
  ImageSpec image;
  image.rows = image.columns = 3;
  image.data.assign(9, 77);
  image.level = 5;
  NitfBuilder builder;
  builder.Image(image).Graphic({7, 5, 1, 2, 'C', Bytes(50, 7), {}}).Text({"old words", {}});
  return builder.DataExtension({"SAMPLE", "user", {1, 2, 3}});
}

// ---- what is told -------------------------------------------------------------------------------------------------

struct Layout {
  std::uint32_t format;
  std::uint32_t bits;
  std::uint32_t subheaderBytes;
  const char *representation;
  std::vector<std::uint32_t> bands;
  char mode;
};

TEST(Append, ImageHasTheHeaderOfItsStream) {
  for (const Layout &layout :
       {Layout{10, 24, 469, "YCbCr601", {kBandY, kBandCb, kBandCr}, 'P'},
        Layout{182, 24, 469, "RGB     ", {kBandRed, kBandGreen, kBandBlue}, 'P'},
        Layout{10, 8, 443, "MONO    ", {kBandMono}, 'B'}, Layout{182, 8, 443, "MONO    ", {kBandMono}, 'B'}}) {
    Authored file;
    ASSERT_EQ(file.Image(layout.format, layout.bits), SUCCESS);
    const NitfHeader &header = file->header;
    EXPECT_EQ(header.imageSubheaderLengths[0], layout.subheaderBytes);
    EXPECT_EQ(header.headerLengthOut, 388U + 16);
    EXPECT_EQ(file.Saved().size(), 388 + 16 + layout.subheaderBytes + header.imageDataLengths[0]);
    LoadedFile read(ReadFile(file.Path("out.ntf")));
    ASSERT_EQ(read.status, SUCCESS);
    const ImageSubheader &image = read.Image(0);
    EXPECT_STREQ(image.IREP, layout.representation);
    ASSERT_EQ(image.bandCount, layout.bands.size());
    EXPECT_TRUE(std::equal(layout.bands.begin(), layout.bands.end(), image.bandRepresentation));
    EXPECT_EQ(image.IMODE[0], layout.mode);
    const std::string told = std::string(image.IC) + image.COMRAT + image.PVTYPE + image.PJUST + image.ABPP +
                             image.NBPP + image.NBPR + image.NBPC + image.NPPBH + image.NPPBV + image.NROWS +
                             image.NCOLS + image.IDLVL + image.IDATIM;
    EXPECT_EQ(told,
              "C300.0INTR0808000100010040002400000024000000400"
              "0120040101010101");
  }
}

TEST(Append, LevelsRiseAndOthersAttachToTheLowest) {
  Authored file;
  ASSERT_EQ(file.Graphic(), SUCCESS);
  EXPECT_EQ(FindGraphic(file.Get(), 0)->attachmentLevel, 0U) << "nothing to be attached to";
  ASSERT_EQ(file.Image(), SUCCESS);
  ASSERT_EQ(file.Graphic(), SUCCESS);
  ASSERT_EQ(file.Text(), SUCCESS);
  EXPECT_STREQ(FindGraphic(file.Get(), 0)->SDLVL, "001");
  EXPECT_STREQ(FindImage(file.Get(), 0)->IDLVL, "002");
  EXPECT_STREQ(FindGraphic(file.Get(), 1)->SDLVL, "003");
  EXPECT_STREQ(FindGraphic(file.Get(), 1)->SALVL, "001");
  EXPECT_STREQ(FindGraphic(file.Get(), 1)->SBND1, "0000500006");
  EXPECT_STREQ(FindGraphic(file.Get(), 1)->SBND2, "0003000020");
  EXPECT_STREQ(FindText(file.Get(), 0)->TXTALVL, "001");
  EXPECT_EQ(file->header.graphicSubheaderLengths[1], 258U);
  EXPECT_EQ(file->header.textSubheaderLengths[0], 282U);
  EXPECT_EQ(file->header.headerLengthOut, 388U + 16 + 2 * 10 + 9);
  EXPECT_EQ(K_NITFGetGraphicHeaderCount(file.Get()), 2);
  EXPECT_STREQ(file->header.NUMS, "") << "the text is the writer's to make";
  file.Saved();

  FindImage(file.Get(), 0)->displayLevel = 999;
  ASSERT_EQ(file.Image(), SUCCESS);
  EXPECT_EQ(FindImage(file.Get(), 1)->displayLevel, 1U) << "no level is left: its default";
}

TEST(Append, DatesLieBeforeThatOfTheFile) {
  for (const auto &[date, image, text] : {std::array{"20050101010101", "20040101010101", "20040101010101"},
                                          std::array{"20240315105959", "20240315105958", "20240315105859"},
                                          std::array{"20240101000000", "20230101000000", "20230101000000"},
                                          std::array{"20260102000101", "20260101000101", "20260101000101"},
                                          std::array{"01000101000100", "01000101000100", "01000101000100"},
                                          std::array{"", "50020530010101", "50020530010101"}}) {
    Authored file;
    std::copy_n(date, std::char_traits<char>::length(date) + 1, file->header.FDT);
    ASSERT_EQ(file.Image(), SUCCESS);
    ASSERT_EQ(file.Text(), SUCCESS);
    EXPECT_STREQ(FindImage(file.Get(), 0)->IDATIM, image);
    EXPECT_STREQ(FindText(file.Get(), 0)->TXTDT, text);
  }
}

TEST(Append, BlocksTooWideForTheirFieldAreTheWholeImage) {
  Authored file;
  ASSERT_EQ(file.Image(KS_FORMAT_JPEG, 8, 8191, 1), SUCCESS);
  ASSERT_EQ(file.Image(KS_FORMAT_JPEG, 8, 1, 8192), SUCCESS);
  EXPECT_STREQ(FindImage(file.Get(), 0)->NPPBH, "8191");
  EXPECT_STREQ(FindImage(file.Get(), 1)->NPPBV, "0000");
  const Composition picture = (file.Saved(), Compose(file.Path("out.ntf")));
  EXPECT_EQ(picture.status, SUCCESS);
  EXPECT_EQ(picture.width, 8191U);
  EXPECT_EQ(picture.height, 8192U);
}

// ---- what comes back ----------------------------------------------------------------------------------------------

TEST(Append, PictureDrawingAndTextComeBack) {
  for (const std::uint32_t format : {KS_FORMAT_JPEG, KS_FORMAT_JPEG_RGB}) {
    Authored file;
    ASSERT_EQ(file.Image(format), SUCCESS);
    ASSERT_EQ(file.Graphic(), SUCCESS);
    ASSERT_EQ(file.Text("some words\n"), SUCCESS);
    ASSERT_EQ(file.Text(""), SUCCESS);
    file.Saved();
    const Composition picture = Compose(file.Path("out.ntf"));
    ASSERT_EQ(picture.status, SUCCESS);
    for (std::uint32_t y = 0; y < kHeight; ++y) {
      for (std::uint32_t x = 0; x < kWidth; ++x) {
        const std::uint32_t got = picture.At(y, x);
        if (x >= 7 && x < 28 && y >= 8 && y < 18) {
          EXPECT_EQ(got, 0xFF0000U) << "the drawing fills its rectangle";
        } else if (x < 4 || x > 31 || y < 5 || y > 21) {
          EXPECT_NEAR(got >> 16, 90, 5);
          EXPECT_NEAR(got >> 8 & 0xFF, 220 - y, 5);
          EXPECT_NEAR(got & 0xFF, 20 + x, 5);
        }
      }
    }
    const Authored again(ReadFile(file.Path("out.ntf")));
    char words[20] = "?";
    std::uint32_t length = 99;
    EXPECT_EQ(K_NITFGetTextSegment(again.Get(), 0, words, &length), SUCCESS);
    EXPECT_STREQ(words, "some words\n");
    EXPECT_EQ(K_NITFGetTextSegment(again.Get(), 1, words, &length), SUCCESS);
    EXPECT_EQ(length, 0U);
  }
}

TEST(Append, OpenedFileKeepsItsBodies) {
  Authored file(SourceFile().Build());
  const std::int64_t graphics = SeekEndOfImages(file.Get());
  ASSERT_EQ(file.Image(), SUCCESS);
  ASSERT_EQ(file.Graphic(), SUCCESS);
  ASSERT_EQ(file.Text(), SUCCESS);
  EXPECT_EQ(SeekEndOfImages(file.Get()), graphics);
  EXPECT_EQ(FindImage(file.Get(), 1)->displayLevel, 8U);
  EXPECT_EQ(FindGraphic(file.Get(), 1)->attachmentLevel, 5U);
  const Bytes saved = file.Saved();
  LoadedFile read(saved);
  ASSERT_EQ(read.status, SUCCESS);
  const auto body = [&](SegmentKind kind, std::uint32_t index) {
    const auto start = static_cast<std::ptrdiff_t>(SeekSegmentData(read.Get(), kind, index));
    return Bytes(saved.begin() + start, saved.begin() + start + DataLength(read.Get(), kind, index));
  };
  EXPECT_EQ(body(SegmentKind::Image, 0), Bytes(9, 77));
  EXPECT_EQ(body(SegmentKind::Image, 1)[3], 0xE6);
  EXPECT_EQ(body(SegmentKind::Graphic, 0), Bytes(50, 7));
  EXPECT_EQ(body(SegmentKind::Text, 0), (Bytes{'o', 'l', 'd', ' ', 'w', 'o', 'r', 'd', 's'}));
  EXPECT_EQ(body(SegmentKind::Text, 1).size(), 11U);
  EXPECT_EQ(body(SegmentKind::DataExtension, 0), (Bytes{1, 2, 3}));
}

// ---- refusals -----------------------------------------------------------------------------------------------------

TEST(Append, NineHundredNinetyNineOfAKindAndNoMore) {
  Authored file;
  for (int index = 0; index < 999; ++index) {
    ASSERT_EQ(file.Image(KS_FORMAT_JPEG, 8, 1, 1), SUCCESS) << index;
    ASSERT_EQ(file.Graphic(), SUCCESS) << index;
    ASSERT_EQ(file.Text(), SUCCESS) << index;
  }
  EXPECT_EQ(file.Image(), 0);
  EXPECT_EQ(file.Image(KS_FORMAT_JPEG, 7), 0) << "asked before the bits";
  EXPECT_EQ(file.Graphic(), 0);
  EXPECT_EQ(file.Text(), 0);
  LoadedFile read(file.Saved());
  EXPECT_EQ(read->imageCount + read->graphicCount + read->textCount, 3 * 999U);
}

TEST(Append, RefusalsComeInTheirOrderAndChangeNothing) {
  Authored file(SourceFile().Build());
  const Bytes before = file.Saved();
  KsLocalBitmap good;
  KsLocalBitmap wide;
  KsLocalBitmap none;
  ASSERT_EQ(Authored::Picture(good, 4, 4), SUCCESS);
  ASSERT_EQ(Authored::Picture(wide, 65536, 1), SUCCESS);
  const auto image = [&](KsBitmap *bitmap, std::uint32_t format, std::uint32_t bits, std::uint32_t quality) {
    return K_NITFAppendImageSegment(file.Get(), bitmap, format, bits, quality);
  };
  EXPECT_EQ(K_NITFAppendImageSegment(nullptr, good.Get(), 10, 24, 2), NITF_NULL_HANDLE);
  EXPECT_EQ(image(nullptr, 9, 7, 1), ERROR_NO_STORAGE);
  EXPECT_EQ(image(none.Get(), 9, 7, 1), ERROR_NO_STORAGE);
  EXPECT_EQ(image(wide.Get(), 9, 7, 1), ERROR_BITS_PER_PIXEL);
  EXPECT_EQ(image(wide.Get(), 9, 8, 1), ERROR_QUALITY);
  EXPECT_EQ(image(wide.Get(), 9, 24, 256), ERROR_QUALITY);
  EXPECT_EQ(image(wide.Get(), 9, 24, 255), ERROR_FILE_FORMAT);
  EXPECT_EQ(image(wide.Get(), 10, 24, 255), ERROR_BITMAP_SIZE);

  const KsRect rectangle = {0, 0, 10, 10};
  KsLocalVector drawing;
  KsLocalVector far;
  KsLocalVector deep;
  KsLocalVector empty;
  Authored::Draw(drawing.Get());
  Authored::Draw(far.Get(), 99998);
  Authored::Draw(deep.Get(), 8, -100000);
  const auto graphic = [&](KsVector *vector) { return K_NITFAppendGraphicSegment(file.Get(), vector, &rectangle); };
  EXPECT_EQ(K_NITFAppendGraphicSegment(nullptr, nullptr, &rectangle), NITF_NULL_HANDLE);
  EXPECT_EQ(K_NITFAppendGraphicSegment(file.Get(), nullptr, nullptr), NITF_NULL_HANDLE);
  EXPECT_EQ(graphic(nullptr), NITF_NULL_DATA);
  EXPECT_EQ(graphic(empty.Get()), NITF_EMPTY_DRAWING);
  EXPECT_EQ(graphic(far.Get()), ERROR_INVALID_VALUE);
  EXPECT_EQ(graphic(deep.Get()), ERROR_INVALID_VALUE);
  EXPECT_EQ(K_NITFSetVectorHandle(nullptr, 0, drawing.Get()), NITF_NULL_HANDLE);
  EXPECT_EQ(K_NITFSetVectorHandle(file.Get(), 1, nullptr), ERROR_INVALID_VALUE);
  EXPECT_EQ(K_NITFSetVectorHandle(file.Get(), 0, nullptr), NITF_NULL_DATA);
  EXPECT_EQ(K_NITFSetVectorHandle(file.Get(), 0, empty.Get()), NITF_EMPTY_DRAWING);

  EXPECT_EQ(K_NITFAppendTextSegmentA(nullptr, "x"), NITF_NULL_HANDLE);
  EXPECT_EQ(K_NITFAppendTextSegmentA(nullptr, "\xff"), ERROR_NO_MEMORY);
  EXPECT_EQ(K_NITFAppendTextSegmentA(file.Get(), nullptr), NITF_NO_TEXT_FILE);
  EXPECT_EQ(K_NITFAppendTextSegmentA(file.Get(), file.Path("none").c_str()), NITF_NO_TEXT_FILE);
  EXPECT_EQ(file.Text(std::string(100000, 'x')), ERROR_INVALID_VALUE);
  EXPECT_EQ(file.Saved(), before);
  EXPECT_EQ(file.Text(std::string(99999, 'x')), SUCCESS);
  Authored::Draw(drawing.Get(), 99997, -99999);
  EXPECT_EQ(graphic(drawing.Get()), SUCCESS);
}

/** Lets every allocation of a call fail in turn, and then none. */
template <class Call>
void FailEachAllocation(Authored &file, Call call) {
  const Bytes before = file.Saved();
  const auto blocks = LiveBlocks();
  std::int64_t allowed = 0;
  for (std::int32_t status = ERROR_NO_MEMORY; status != SUCCESS; ++allowed) {
    KsFailAllocationsAfter(allowed);
    status = call();
    KsFailAllocationsAfter(-1);
    if (status == SUCCESS) break;
    EXPECT_EQ(status, ERROR_NO_MEMORY) << allowed;
    EXPECT_EQ(LiveBlocks(), blocks) << allowed;
    ASSERT_EQ(file.Saved(), before) << allowed;
  }
#ifdef KS_TRACE_MEMORY
  EXPECT_GT(allowed, 4);
#endif
  EXPECT_NE(file.Saved(), before);
}

TEST(Append, RunsOutOfMemoryAnywhereWithoutATrace) {
  const auto blocks = LiveBlocks();
  {
    for (const bool isBlank : {true, false}) {
      Authored file = isBlank ? Authored() : Authored(SourceFile().Build());
      KsLocalBitmap bitmap;
      ASSERT_EQ(Authored::Picture(bitmap, 9, 9), SUCCESS);
      KsLocalVector drawing;
      Authored::Draw(drawing.Get());
      const KsRect rectangle = {0, 0, 10, 10};
      const std::u16string path = Wide(file.Path("note.txt"));
      WriteFile(file.Path("note.txt"), {'x'});
      for (int round = 0; round < 2; ++round) {
        FailEachAllocation(file, [&] { return K_NITFAppendImageSegment(file.Get(), bitmap.Get(), 10, 24, 2); });
        FailEachAllocation(file, [&] { return K_NITFAppendGraphicSegment(file.Get(), drawing.Get(), &rectangle); });
      }
      KsLocalVector other;
      Authored::Draw(other.Get(), 300);
      EXPECT_EQ(K_NITFSetVectorHandle(file.Get(), 0, other.Get()), SUCCESS);
      // The file layer takes memory too: a text that can't be opened for want of it is one that isn't there.
      const Bytes before = file.Saved();
      std::int64_t allowed = 0;
      for (; KsFailAllocationsAfter(allowed), K_NITFAppendTextSegment(file.Get(), path.c_str()) != SUCCESS; ++allowed) {
        KsFailAllocationsAfter(-1);
        ASSERT_EQ(file.Saved(), before) << allowed;
      }
      KsFailAllocationsAfter(-1);
    }
  }
  EXPECT_EQ(LiveBlocks(), blocks);
}

TEST(Append, AnySequenceKeepsTheLengths) {
  std::mt19937 random(11);
  for (int run = 0; run < 12; ++run) {
    auto file = std::make_unique<Authored>();
    std::uint32_t counts[3] = {};
    for (int step = 0; step < 25; ++step) {
      const auto size = static_cast<std::uint32_t>(1 + random() % 60);
      switch (random() % 6) {
        case 0:
          ASSERT_EQ(file->Image(random() % 2 != 0 ? 10 : 182, random() % 2 != 0 ? 8 : 24, size, 9), SUCCESS);
          ++counts[0];
          break;
        case 1:
          ASSERT_EQ(file->Graphic({0, 0, static_cast<std::int32_t>(size), 9}), SUCCESS);
          ++counts[1];
          break;
        case 2:
          ASSERT_EQ(file->Text(std::string(size * 20, 'a')), SUCCESS);
          ++counts[2];
          break;
        case 3:
          file = std::make_unique<Authored>(file->Saved());
          break;
        case 4: {
          KsLocalVector drawing;
          for (std::uint32_t box = 0; box < size % 5 + 1; ++box) Authored::Draw(drawing.Get(), size);
          EXPECT_EQ(K_NITFSetVectorHandle(file->Get(), 0, drawing.Get()),
                    counts[1] != 0 ? SUCCESS : ERROR_INVALID_VALUE);
          break;
        }
        default:
          file->Saved();
      }
      const NitfHeader &header = (*file)->header;
      ASSERT_EQ(CountImages(file->Get()), counts[0]);
      ASSERT_EQ(header.imageTableCount, counts[0]);
      ASSERT_EQ(header.graphicTableCount, counts[1]);
      ASSERT_EQ(header.textTableCount, counts[2]);
    }
    file->Saved();
    EXPECT_EQ(Compose(file->Path("out.ntf")).status, SUCCESS);
  }
}

// ---- drawings -----------------------------------------------------------------------------------------------------

double Width(const KsVector *vector) {
  KsVectorPoint low = {};
  KsVectorPoint high = {};
  EXPECT_EQ(KsVectorExtents(vector, &low, &high), SUCCESS);
  return high.x - low.x;
}

TEST(VectorHandle, GivesTheFilesDrawingAndSavesTheOneThatWasSet) {
  Authored made;
  ASSERT_EQ(made.Graphic({0, 0, 50, 20}), SUCCESS);
  ASSERT_EQ(made.Graphic({0, 0, 80, 20}), SUCCESS);
  EXPECT_EQ(K_NITFGetVectorHandle(made.Get(), 0), nullptr) << "it isn't in a file yet";
  EXPECT_NE(KsVectorIsEmpty(&FindGraphic(made.Get(), 0)->vector), 0);
  EXPECT_EQ(K_NITFGetVectorHandle(nullptr, 0), nullptr);

  Authored file(made.Saved());
  EXPECT_EQ(K_NITFGetVectorHandle(file.Get(), 2), nullptr);
  KsVector *const second = K_NITFGetVectorHandle(file.Get(), 1);
  ASSERT_EQ(second, &FindGraphic(file.Get(), 1)->vector);
  EXPECT_EQ(Width(second), 80);
  EXPECT_NE(KsVectorIsEmpty(&FindGraphic(file.Get(), 0)->vector), 0) << "the other one is left alone";
  Authored::Draw(second, 300);
  ASSERT_EQ(K_NITFSetVectorHandle(file.Get(), 1, second), SUCCESS) << "the handle's own drawing, changed";
  const std::uint32_t length = file->header.graphicDataLengthsOut[1];
  ASSERT_EQ(K_NITFSetVectorHandle(file.Get(), 1, second), SUCCESS);
  EXPECT_EQ(file->header.graphicDataLengthsOut[1], length);
  EXPECT_EQ(Width(second), 302);

  const Authored again(file.Saved());
  EXPECT_EQ(Width(K_NITFGetVectorHandle(again.Get(), 1)), 302);
  EXPECT_EQ(Width(K_NITFGetVectorHandle(again.Get(), 0)), 50);
  EXPECT_EQ(Width(K_NITFGetVectorHandle(file.Get(), 1)), 80) << "what the file holds";
}

/** A drawing that isn't in the file yet has no bytes there, though a metafile stands where they would be. */
TEST(VectorHandle, ReadsNoOtherSegment) {
  Authored made;
  ASSERT_EQ(made.Graphic(), SUCCESS);
  const GraphicSubheader &graphic = *FindGraphic(made.Get(), 0);
  const Bytes metafile(graphic.memoryData, graphic.memoryData + graphic.memoryBytes);
  constexpr std::size_t kGraphicHeader = 258;
  constexpr std::size_t kExtensionHeader = 200;
  Bytes other(kGraphicHeader - kExtensionHeader, 0);
  other.insert(other.end(), metafile.begin(), metafile.end());
  const GraphicSpec first{1, 0, 0, 0, 'C', metafile, {}};
  Authored file(NitfBuilder().Graphic(first).DataExtension({"D", {}, other}).Build());
  ASSERT_EQ(file.Graphic(), SUCCESS);
  EXPECT_NE(K_NITFGetVectorHandle(file.Get(), 0), nullptr);
  EXPECT_EQ(K_NITFGetVectorHandle(file.Get(), 1), nullptr);
}

}  // namespace
