#include "harness.h"
#include "headers/strmfhdr.h"

#include <functional>
#include <string>

#include <gtest/gtest.h>

using namespace ksntfx;

namespace {

ImageSpec Picture(std::uint32_t columns) {
  return {.rows = 1, .columns = columns, .data = Bytes(columns, 1)};
}

/** A file with segments of all kinds of the 2.1 layout. */
NitfBuilder AllKinds() {
  NitfBuilder builder;
  builder.Image(Picture(3)).Image(Picture(5));
  builder.Graphic({.data = Bytes(7, 2), .fields = {{"SXSHD", "tre"}, {"SBND1", "00001-0002"}, {"SLOC", "-000400005"}}});
  builder.Text({.text = "first"}).Text({.text = "second text", .fields = {{"TSCLAS", "?"}, {"TXTALVL", "012"}}});
  builder.DataExtension({.identifier = "TRE_OVERFLOW", .userData = "user", .data = Bytes(11, 3)});
  builder.DataExtension({.identifier = "OTHER", .data = Bytes(2, 4)});
  return builder;
}

TEST(NitfFileObject, EverySegmentHasItsNodeAndPosition) {
  const Bytes bytes = AllKinds().Build();
  LoadedFile file(bytes);
  ASSERT_EQ(file.status, SUCCESS);
  EXPECT_EQ(CountImages(file.Get()), 2U);
  EXPECT_EQ(CountGraphics(file.Get()), 1U);
  EXPECT_EQ(CountLabels(file.Get()), 0U);
  EXPECT_EQ(CountTexts(file.Get()), 2U);
  const auto marker = [&](const std::function<void()> &seek) {
    char text[3] = {};
    seek();
    KsRead(file->fileHandle, text, 2);
    return std::string(text);
  };
  EXPECT_EQ(marker([&] { SeekImage(file.Get(), -1); }), "IM");
  EXPECT_EQ(marker([&] { SeekImage(file.Get(), 1); }), "IM");
  EXPECT_EQ(marker([&] { SeekEndOfImages(file.Get()); }), "SY");
  EXPECT_EQ(marker([&] { SeekGraphic(file.Get(), 0); }), "SY");
  EXPECT_EQ(marker([&] { SeekEndOfLabels(file.Get()); }), "TE");
  EXPECT_EQ(marker([&] { SeekText(file.Get(), 1); }), "TE");
  EXPECT_EQ(marker([&] { SeekEndOfTexts(file.Get()); }), "DE");
  EXPECT_EQ(marker([&] { SeekDataExtension(file.Get(), 1); }), "DE");
  EXPECT_EQ(static_cast<std::uint64_t>(SeekSegmentData(file.Get(), SegmentKind::DataExtension, 1)), bytes.size() - 2);
  EXPECT_EQ(TextDataLength(file.Get(), 1), 11U);
  EXPECT_EQ(TextDataLength(file.Get(), 2), 0U);
  EXPECT_EQ(FindImage(file.Get(), 1)->index, 1U);
  EXPECT_EQ(FindImage(file.Get(), 2), nullptr);
}

TEST(NitfFileObject, GraphicTextAndExtensionFieldsAreDecoded) {
  LoadedFile file(AllKinds());
  ASSERT_EQ(file.status, SUCCESS);
  const GraphicSubheader &graphic = *FindGraphic(file.Get(), 0);
  EXPECT_EQ(graphic.locationRow, -4);
  EXPECT_EQ(graphic.locationColumn, 5);
  EXPECT_EQ(graphic.firstBound[0], 1);
  EXPECT_EQ(graphic.firstBound[1], -2);
  EXPECT_STREQ(graphic.extendedData, "tre");
  EXPECT_EQ(FindText(file.Get(), 1)->attachmentLevel, 12U);
  EXPECT_STREQ(FindText(file.Get(), 1)->security.CLAS, "?");
  EXPECT_STREQ(FindDataExtension(file.Get(), 0)->userData, "user");
  EXPECT_STREQ(FindDataExtension(file.Get(), 0)->DESOFLW, "UDHD  ");
  EXPECT_STREQ(FindDataExtension(file.Get(), 1)->DESOFLW, "");
  EXPECT_EQ(FindDataExtension(file.Get(), 1)->userData, nullptr);
}

// ---- fields that decide whether a file is taken -------------------------------------------------------------------

/** A header with one field changed. */
using HeaderOf = NitfBuilder (*)(const char *field, const char *text);

NitfBuilder File(const char *field, const char *text) {
  return NitfBuilder().Field(field, text);
}
NitfBuilder Image(const char *field, const char *text) {
  return NitfBuilder().Image({.rows = 2, .columns = 2, .data = Bytes(4, 1), .fields = {{field, text}}});
}
NitfBuilder Graphic(const char *field, const char *text) {
  return NitfBuilder().Graphic({.fields = {{field, text}}});
}
NitfBuilder Text(const char *field, const char *text) {
  return NitfBuilder().Text({.text = "x", .fields = {{field, text}}});
}
NitfBuilder Extension(const char *field, const char *text) {
  return NitfBuilder().DataExtension({.identifier = "ANY", .fields = {{field, text}}});
}

struct FieldCase {
  HeaderOf header;
  const char *field;
  const char *text;
  std::int32_t status;
  const char *message = nullptr;
};

class HeaderFields : public testing::TestWithParam<FieldCase> {};

TEST_P(HeaderFields, DecideWhetherTheFileIsTaken) {
  const FieldCase &given = GetParam();
  const auto before = LiveBlocks();
  {
    const PlatformWatch watch;
    EXPECT_EQ(LoadedFile(given.header(given.field, given.text)).status, given.status)
        << given.field << " = " << given.text;
    EXPECT_EQ(watch.messages, given.message ? std::vector<std::string>{given.message} : std::vector<std::string>{});
  }
  EXPECT_EQ(LiveBlocks(), before);
}

const FieldCase kFields[] = {
    {File, "FHDR", "NITF", SUCCESS},
    {File, "FHDR", "NSIF", SUCCESS},
    {File, "FHDR", "NIFT", ERROR_FILE_FORMAT},
    {File, "FVER", "02.00", NITF_UNSUPPORTED_VERSION},
    {File, "FVER", "01.00", NITF_UNSUPPORTED_VERSION},
    {File, "CLEVEL", "05", NITF_UNSUPPORTED_CLEVEL, "Error: Unsupported CLEVEL"},
    {File, "CLEVEL", "3 ", NITF_UNSUPPORTED_CLEVEL, "Error: Unsupported CLEVEL"},
    {File, "FSCLAS", "X", ERROR_FILE_FORMAT},
    {File, "FSCLAS", "T", SUCCESS},
    {File, "NUMX", "001", ERROR_FILE_FORMAT},
    {File, "NUMI", "-01", ERROR_NO_MEMORY},
    {File, "NUMI", "999", ERROR_FILE_READ},
    {File, "NUMRES", "   ", SUCCESS},
    {File, "UDHDL", "00001", ERROR_FILE_FORMAT},
    {File, "XHDL", "00002", ERROR_FILE_READ},
    {File, "XHDL", "-0002", ERROR_FILE_READ},
    {File, "UDHDL", "99999", ERROR_FILE_READ},
    {File, "FL", "999999999999", ERROR_INVALID_VALUE},
    {File, "HL", "999999", ERROR_INVALID_VALUE},
    {File, "FL", "000000000001", SUCCESS},
    {Image, "IM", "SY", ERROR_FILE_FORMAT},
    {Image, "ISCLAS", " ", ERROR_FILE_FORMAT},
    {Image, "ISCLAS", "S", SUCCESS},
    {Image, "IMODE", "Q", ERROR_FILE_FORMAT},
    {Image, "PVTYPE", "R", NITF_UNSUPPORTED_PVTYPE, "Error: Unsupported PVTYPE"},
    {Image, "PVTYPE", "SI", NITF_UNSUPPORTED_PVTYPE, "Error: Unsupported PVTYPE"},
    {Image, "PVTYPE", "I?", SUCCESS},
    {Image, "NICOM", "9", ERROR_FILE_READ},
    {Image, "NBANDS", "0", ERROR_FILE_FORMAT},
    {Image, "UDIDL", "00002", ERROR_FILE_FORMAT},
    {Image, "IXSHDL", "99999", ERROR_FILE_READ},
    {Graphic, "SY", "IM", ERROR_FILE_FORMAT},
    {Graphic, "SSCLAS", "X", ERROR_FILE_FORMAT},
    {Graphic, "SFMT", "D", ERROR_FILE_FORMAT},
    {Graphic, "SFMT", "O", SUCCESS},
    {Graphic, "SXSHDL", "00001", ERROR_FILE_READ},
    {Text, "TE", "XX", ERROR_FILE_FORMAT},
    {Text, "TXTFMT", "U8S", SUCCESS},
    {Text, "TXSHDL", "00900", ERROR_FILE_READ},
    {Extension, "DE", "RE", ERROR_FILE_FORMAT},
    {Extension, "DESVER", "-1", ERROR_FILE_FORMAT},
    {Extension, "DESVER", "99", SUCCESS},
    {Extension, "DESCLAS", " ", ERROR_FILE_FORMAT},
    {Extension, "DESSHL", "9999", ERROR_FILE_READ},
};

INSTANTIATE_TEST_SUITE_P(NitfFileObject, HeaderFields, testing::ValuesIn(kFields));

TEST(NitfFileObject, LoadingAndReleasingLeaveTheirTraceLines) {
  const PlatformWatch watch;
  { LoadedFile file{NitfBuilder()}; }
  EXPECT_EQ(watch.debugLines, (std::vector<std::string>{"\nAllocateObjects\n", "\nFreeObjects\n"}));
}

TEST(NitfFileObject, AnObjectMayBeReleasedTwiceAndUnused) {
  NitfFile file;
  NitfFileInit(&file);
  EXPECT_EQ(file.fileHandle, KS_INVALID_HANDLE);
  EXPECT_EQ(file.backgroundColor, 0xFFFFFFU);
  FreeObjects(&file);
  NitfFileDestroy(&file);
}

// ---- the 2.0 layout -----------------------------------------------------------------------------------------------

/** Fields of a 2.0 subheader, each padded with blanks to its width. */
std::string Fields(std::initializer_list<std::pair<const char *, std::size_t>> fields) {
  std::string bytes;
  for (const auto &[text, width] : fields) bytes.append(text).append(width - std::string(text).size(), ' ');
  return bytes;
}

/** Reads a record of the 2.0 layout from a file that holds nothing else. */
template <class Record, class Init>
Status ReadIn20(const std::string &bytes, SegmentKind kind, Record *record, Init init) {
  const TemporaryFolder folder;
  WriteFile(folder.Path("subheader"), Bytes(bytes.begin(), bytes.end()));
  LocalNitfFile file;
  file->nitf20Layout = 1;
  file->fileHandle = KsOpen(Wide(folder.Path("subheader")).c_str(), KS_OPEN_READ, KS_MODE_READ);
  init(record, file.Get());
  StreamFileHeader stream{};
  const Status status = ReadSubheader(file.Get(), kind, record, &stream);
  EXPECT_TRUE(status != SUCCESS || KsSeek(file->fileHandle, 0, KS_SEEK_CURRENT) == 0);
  return status;
}

constexpr std::size_t kSecurityTail = 40 + 40 + 40 + 20 + 20;

TEST(Layout20, AGraphicHasItsSizeFieldsAndTable) {
  std::string bytes = Fields({{"SY", 2}, {"id", 10}, {"name", 20}, {"U", 1}, {"", kSecurityTail}, {"999998", 6}});
  bytes += Fields({{"event", 40}, {"0", 1}, {"B", 1}, {"0012", 4}, {"0034", 4}, {"0002", 4}, {"1", 1}, {"005", 3}});
  bytes += Fields({{"000", 3}, {"0001000020", 10}, {"0003000040", 10}, {"R", 1}, {"000015", 6}, {"000", 3}});
  bytes += Fields({{"002", 3}, {"\x01\x02\x03\x04\x05\x06", 6}, {"00000", 5}});
  GraphicSubheader graphic;
  ASSERT_EQ(ReadIn20(bytes, SegmentKind::Graphic, &graphic, GraphicSubheaderInit), SUCCESS);
  EXPECT_STREQ(graphic.NPIXPL, "0034");
  EXPECT_EQ(graphic.bitsPerPixel, 1U);
  EXPECT_EQ(graphic.displayLevel, 5U);
  EXPECT_EQ(graphic.firstBound[0], 0);
  EXPECT_EQ(graphic.secondBound[1], 40);
  EXPECT_STREQ(graphic.SCOLOR, "R");
  EXPECT_EQ(std::string(graphic.security.DEVT).substr(0, 6), "event ");
  ASSERT_EQ(graphic.lutEntries, 2U);
  EXPECT_EQ(graphic.lut[1], 0x020406U);
  GraphicSubheaderFree(&graphic);
}

TEST(Layout20, ALabelHasColoursAndASignedPlace) {
  std::string bytes = Fields({{"LA", 2}, {"id", 10}, {"U", 1}, {"", kSecurityTail}, {"      ", 6}, {"0", 1}, {" ", 1}});
  bytes += Fields({{"08", 2}, {"16", 2}, {"003", 3}, {"001", 3}, {"-001200034", 10}});
  bytes += std::string("\x01\x00\x02\x00\x00\x00", 6) + "00000";
  LabelSubheader label;
  ASSERT_EQ(ReadIn20(bytes, SegmentKind::Label, &label, LabelSubheaderInit), SUCCESS);
  EXPECT_EQ(label.cellWidth, 8U);
  EXPECT_EQ(label.displayLevel, 3U);
  EXPECT_EQ(label.locationRow, -12);
  EXPECT_EQ(label.textColor, 0x020001U);
  EXPECT_EQ(label.backgroundColor, 0U);
  LabelSubheaderFree(&label);
}

TEST(Layout20, AnImageNeedsACoordinateSystemOfItsOwnAndOneToNineBands) {
  std::string head = Fields({{"IM", 2}, {"id", 10}, {"", 14}, {"", 17}, {"title", 80}, {"U", 1}, {"", kSecurityTail}});
  head += Fields({{"", 6}, {"0", 1}, {"", 42}, {"00000002", 8}, {"00000002", 8}, {"INT", 3}, {"MONO", 8}, {"VIS", 8}});
  head += Fields({{"08", 2}, {"R", 1}, {"N", 1}, {"0", 1}, {"NC", 2}});
  const std::string tail = Fields({{"M", 2}, {"", 6}, {"N", 1}, {"", 3}, {"0", 1}, {"0", 1}, {"B", 1}}) +
                           "0001000100020002" + "08" + "001000" + "0000000000" + "1.0 " + "0000000000";
  ImageSubheader image;
  ASSERT_EQ(ReadIn20(head + "1" + tail, SegmentKind::Image, &image, ImageSubheaderInit), SUCCESS);
  EXPECT_EQ(image.bandCount, 1U);
  EXPECT_EQ(image.blockHeight, 2U);
  ImageSubheaderFree(&image);
  EXPECT_EQ(ReadIn20(head + "0" + tail, SegmentKind::Image, &image, ImageSubheaderInit), ERROR_FILE_FORMAT);
  ImageSubheaderFree(&image);
}

}  // namespace
