// Headers as they are read, set and written where numbers, data and locales are unusual.
#include "drawings/handlgfx.h"
#include "drawings/symbols.h"
#include "headers/length_tables.h"
#include "internal/ksclasses_.h"
#include "opened_file.h"
#include "table/fields.h"

#include <algorithm>
#include <clocale>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>

#include <gtest/gtest.h>

namespace {

// ---- locale ---------------------------------------------------------------------------------------------------------

/**
 * The process's numbers with a decimal comma: a category file of the C library's own format, whose strings are the
 * decimal point, the separator and the grouping of thousands, both points as wide characters, and the code set.
 */
class CommaLocale {
 public:
  CommaLocale() {
    constexpr std::uint8_t kCategory[] = {0x14, 0x11, 0x03, 0x20, 6, 0,   0,   0,    0x20, 0,   0,   0,    0x22,
                                          0,    0,    0,    0x23, 0, 0,   0,   0x24, 0,    0,   0,   0x28, 0,
                                          0,    0,    0x2C, 0,    0, 0,   ',', 0,    0,    0,   ',', 0,    0,
                                          0,    0,    0,    0,    0, 'U', 'T', 'F',  '-',  '8', 0};
    std::filesystem::create_directory(folder.Path("comma"));
    WriteFile(folder.Path("comma/LC_NUMERIC"), {std::begin(kCategory), std::end(kCategory)});
    setenv("LOCPATH", folder.Path("").c_str(), 1);
    installed = std::setlocale(LC_NUMERIC, "comma") != nullptr;
  }
  CommaLocale(const CommaLocale &) = delete;
  CommaLocale &operator=(const CommaLocale &) = delete;
  ~CommaLocale() {
    std::setlocale(LC_NUMERIC, "C");
    unsetenv("LOCPATH");
  }

  bool installed = false;

 private:
  TemporaryFolder folder;
};

TEST(Decimals, AreWrittenWithAPointInEveryLocale) {
  const Opened opened(NitfBuilder().Image(SixPixels({{"IMAG", "/2  "}})).Build());
  ASSERT_EQ(opened.status, SUCCESS);
  const Bytes before = opened.Saved();
  const CommaLocale locale;
  ASSERT_TRUE(locale.installed);
  char half[8];
  std::snprintf(half, sizeof half, "%.1f", 0.5);
  ASSERT_STREQ(half, "0,5") << "the locale must be in force";
  NitfHeaderInfo info{};
  ASSERT_EQ(K_NITFGetNITFHeader(opened.Get(), &info), SUCCESS);
  EXPECT_FLOAT_EQ(info.FVER, 2.1F);
  ASSERT_EQ(K_NITFSetNITFHeader(opened.Get(), &info), SUCCESS);
  K_NITFFreeNITFHeader(&info);
  EXPECT_EQ(std::string(opened->header.FVER, 5), "02.10");
  const Bytes saved = opened.Saved();
  EXPECT_NE(TextOf(saved).find("0.5 "), std::string::npos);
  EXPECT_TRUE(std::equal(before.begin() + 342, before.end(), saved.begin() + 342, saved.end())) << "all behind OPHONE";
}

// ---- replays and counts ---------------------------------------------------------------------------------------------

TEST(StreamFile, LengthsThatAReplayDoesNotReachStay) {
  NitfBuilder builder;
  builder.Image(SixPixels()).Image(SixPixels());
  Bytes header = builder.Header();
  constexpr std::size_t kFirstLengths = 363;
  constexpr std::size_t kRow = 16;
  std::memcpy(header.data() + kFirstLengths + kRow + 6, "0000000004", 10);
  const Bytes file = builder.Field("FL", "999999999999").Build();
  for (const std::size_t read : {std::size_t{0}, std::size_t{6}, kRow, kRow + 6, 2 * kRow}) {
    const std::size_t bytes = kFirstLengths + read;
    const Bytes cut(header.begin(), header.begin() + static_cast<std::ptrdiff_t>(bytes));
    LoadedFile loaded(WithStreamHeader(file, cut));
    ASSERT_EQ(loaded.status, SUCCESS) << bytes;
    ASSERT_EQ(loaded->header.imageTableCount, 2U);
    EXPECT_EQ(loaded->header.imageDataLengths[0], 6U) << bytes;
    EXPECT_EQ(loaded->header.imageDataLengths[1], read < 2 * kRow ? 6U : 4U) << bytes;
    EXPECT_EQ(loaded->header.imageDataLengthsOut[1], read < 2 * kRow ? 6U : 4U) << bytes;
    EXPECT_GT(loaded->header.imageSubheaderLengths[1], 400U) << bytes;
  }
}

TEST(StreamFile, DataThatAReplayDoesNotReachStay) {
  NitfBuilder builder;
  builder.Field("UDHDL", "00009").Field("UDHOFL", "000").Field("UDHD", "abcdef");
  Bytes header = builder.Header();
  std::memcpy(header.data() + 378, "00007", 5);
  header.resize(386);
  LoadedFile loaded(WithStreamHeader(builder.Field("FL", "999999999999").Build(), header));
  ASSERT_EQ(loaded.status, SUCCESS);
  EXPECT_EQ(std::string(loaded->header.UDHDL, 5), "00007");
  EXPECT_STREQ(loaded->header.userHeaderData, "abcdef");
}

// ---- data that a Set leaves alone -----------------------------------------------------------------------------------

TEST(HeaderRecords, ANullPointerLeavesDataAloneWhateverTheirLength) {
  const Opened opened(
      NitfBuilder().Image(SixPixels({{"IXSHDL", "00009"}, {"IXSOFL", "000"}, {"IXSHD", "abcdef"}})).Build());
  ASSERT_EQ(opened.status, SUCCESS);
  const ImageSubheader &image = *FindImage(opened.Get(), 0);
  const auto setLength = [&](std::uint32_t length) {
    NitfImageHeaderInfo info{};
    EXPECT_EQ(K_NITFGetImageHeader(opened.Get(), 0, &info), SUCCESS);
    NitfImageHeaderInfo changed = info;
    changed.IXSHDL = length;
    changed.IXSHD = nullptr;
    EXPECT_EQ(K_NITFSetImageHeader(opened.Get(), 0, &changed), SUCCESS);
    K_NITFFreeImageHeader(&info);
  };
  const auto written = [&] { return TextOf(opened.Saved()); };
  setLength(6);
  EXPECT_STREQ(image.extendedData, "abcdef");
  EXPECT_NE(written().find("00006000abc"), std::string::npos);
  EXPECT_EQ(written().find("abcd"), std::string::npos) << "the length says how much is written";
  setLength(9);
  EXPECT_NE(written().find("00009000abcdef"), std::string::npos);
  // Longer than the data are: zeros, of which a Get gives a block too. There is no room for them in a save.
  setLength(12);
  NitfImageHeaderInfo info{};
  ASSERT_EQ(K_NITFGetImageHeader(opened.Get(), 0, &info), SUCCESS);
  EXPECT_EQ(std::memcmp(info.IXSHD, "abcdef\0\0\0\0\0\0", 12), 0);
  K_NITFFreeImageHeader(&info);
  EXPECT_EQ(opened.Save(), ERROR_INVALID_VALUE);
}

TEST(TextSegments, InMemoryAreAsLongAsTheyAre) {
  const Opened blank;
  WriteFile(blank.Path("text"), {'t', 'e', 'x', 't'});
  ASSERT_EQ(K_NITFAppendTextSegmentA(blank.Get(), blank.Path("text").c_str()), SUCCESS);
  for (const std::uint32_t told : {2U, 4U, 6U}) {
    blank->header.textDataLengths[0] = told;
    char buffer[8] = "#######";
    std::uint32_t size = 0;
    EXPECT_EQ(K_NITFGetTextSegment(blank.Get(), 0, buffer, &size), SUCCESS);
    EXPECT_EQ(size, told);
    EXPECT_STREQ(buffer, "text");
    EXPECT_EQ(buffer[5], '#');
  }
}

// ---- handles and numbers --------------------------------------------------------------------------------------------

TEST(Handles, AreNullAfterANameThatIsNoText) {
  const Opened other;
  NitfHandle handle = other.Get();
  EXPECT_EQ(K_NITFCreateA(&handle, "\xFF\xFE"), ERROR_NO_MEMORY);
  EXPECT_EQ(handle, nullptr);
  EXPECT_EQ(K_NITFCreateA(nullptr, "\xFF\xFE"), ERROR_NO_MEMORY);
}

TEST(Handles, AFileLengthBeyond32BitsStaysAtTheirLimit) {
  const Opened opened(NitfBuilder().Field("FL", "005000000000").Build());
  EXPECT_NE(TextOf(opened.Saved()).find("005000000000"), std::string::npos);
  EXPECT_EQ(opened->header.fileLengthOut, 2147483647U);
}

struct SignedNumber {
  const char *field;
  const char *text;
};

class SignedNumbers : public testing::TestWithParam<SignedNumber> {};

TEST_P(SignedNumbers, ThatLoadAreSaved) {
  const Bytes file = NitfBuilder().Image(SixPixels({{GetParam().field, GetParam().text}})).Build();
  const Opened opened(file);
  ASSERT_EQ(opened.status, SUCCESS);
  EXPECT_EQ(opened.Saved().size(), file.size());
}

INSTANTIATE_TEST_SUITE_P(Headers, SignedNumbers,
                         testing::Values(SignedNumber{"NROWS", "-0000005"}, SignedNumber{"NBPR", "-001"},
                                         SignedNumber{"NBPC", "-999"}, SignedNumber{"NBPP", "-8"}));

// ---- the 2.0 layout -------------------------------------------------------------------------------------------------

/** A data extension subheader of the 2.0 layout. */
Bytes ExtensionOf20(char classification) {
  std::string text = "DE" + std::string("ANY").append(22, ' ') + "01" + classification + std::string(160, 's') +
                     "nodown" + std::string(40, 'e') + "0003abc";
  return {text.begin(), text.end()};
}

TEST(DataExtensionsOf20, HaveAnyClassificationAndListTheirEvent) {
  LoadedFile file((NitfBuilder()));
  file->nitf20Layout = 1;
  const TemporaryFolder folder;
  WriteFile(folder.Path("extension"), ExtensionOf20('X'));
  const KsHandle before = file->fileHandle;
  file->fileHandle = KsOpen(Wide(folder.Path("extension")).c_str(), KS_OPEN_READ, KS_MODE_READ);
  DataExtensionSubheader record;
  DataExtensionSubheaderInit(&record);
  StreamFileHeader stream{};
  EXPECT_EQ(ReadSubheader(file.Get(), SegmentKind::DataExtension, &record, &stream), SUCCESS);
  EXPECT_STREQ(record.userData, "abc");
  std::string event;
  ListFields(kDataExtensionTable, &record, true, [&](const FieldView &field) {
    if (field.name == "DESDEVT") event = field.text;
  });
  EXPECT_EQ(event, std::string(40, 'e'));
  file->nitf20Layout = 0;
  DataExtensionSubheaderFree(&record);
  KsClose(file->fileHandle);
  file->fileHandle = before;
}

/** Rows of five pixels, which begin on the bytes behind each other. */
TEST(SymbolsOf20, HaveTheRowsOfTheirSegment) {
  GraphicSubheader graphic;
  GraphicSubheaderInit(&graphic, nullptr);
  graphic.bitsPerPixel = 8;
  std::strcpy(graphic.NPIXPL, "0005");
  std::strcpy(graphic.NLIPS, "0003");
  graphic.SCOLOR[0] = 'N';
  KsLocalBitmap canvas;
  ASSERT_EQ(
      KsBitmapCreate(canvas.Get(), sizeof(KsBitmap), KS_BITMAP_OWN, 5, 3, 24, KS_ORDER_BGR, nullptr, 1, nullptr, 0),
      SUCCESS);
  const KsLocalContext context(canvas.Get());
  char data[15];
  for (char &pixel : data) pixel = static_cast<char>(10 + (&pixel - data));
  ASSERT_EQ(DrawBitmapSymbol(graphic, data, context.Get(), {0, 0}), SUCCESS);
  for (std::size_t pixel = 0; pixel < 15; ++pixel) {
    EXPECT_EQ(canvas->pixels[pixel / 5 * canvas->bytesPerLine + pixel % 5 * 3], 10 + pixel) << pixel;
  }
  EXPECT_EQ(DrawBitmapSymbol(graphic, std::span(data, 14), context.Get(), {0, 0}), ERROR_INVALID_VALUE);
}

// ---- services -------------------------------------------------------------------------------------------------------

TEST(FilterSave, MakesItsFileAndDeclines) {
  const PlatformWatch watch;
  EXPECT_EQ(fltSave(), ERROR_NOT_SUPPORTED);
  EXPECT_EQ(watch.debugLines, std::vector<std::string>{"\nFreeObjects\n"});
}

TEST(CopiedBytes, CountWhatTheSourceHoldsBack) {
  const TemporaryFolder folder;
  const KsHandle source = KsOpen(Wide(folder.Path("a")).c_str(), KS_OPEN_CREATE, KS_MODE_CREATE);
  const KsHandle target = KsOpen(Wide(folder.Path("b")).c_str(), KS_OPEN_CREATE, KS_MODE_CREATE);
  Bytes bytes(1 << 20);
  for (std::size_t at = 0; at < bytes.size(); ++at) bytes[at] = static_cast<std::uint8_t>(at * 7 >> 3);
  for (std::size_t at = 0; at < bytes.size(); at += 1024) ASSERT_EQ(KsWrite(source, bytes.data() + at, 1024), 1024U);
  // What is written over earlier bytes is held back too.
  std::fill_n(bytes.begin() + 5000, 100, std::uint8_t{0xEE});
  KsSeek(source, 5000, KS_SEEK_START);
  ASSERT_EQ(KsWrite(source, bytes.data() + 5000, 100), 100U);
  KsSeek(source, 0, KS_SEEK_START);
  ASSERT_EQ(KsCopyBytes(target, source, bytes.size()), SUCCESS);
  KsClose(source);
  KsClose(target);
  EXPECT_EQ(ReadFile(folder.Path("b")), bytes);
}

}  // namespace
