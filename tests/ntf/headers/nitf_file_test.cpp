#include "harness.h"

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

/** A length of a segment in the file header; segments of all kinds follow each other. */
NitfBuilder Length(const char *field, const char *text) {
  return AllKinds().Field(field, text);
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
    // A length that is unknown calls for a stream file header. Nines in another are as many bytes.
    {Length, "LISH2", "999999", ERROR_INVALID_VALUE},
    {Length, "LI2", "9999999999", ERROR_INVALID_VALUE},
    {Length, "LSSH1", "9999", ERROR_INVALID_VALUE},
    {Length, "LS1", "999999", ERROR_FILE_READ},
    {Length, "LTSH1", "9999", ERROR_INVALID_VALUE},
    {Length, "LT1", "99999", ERROR_FILE_READ},
    {Length, "LDSH1", "9999", ERROR_INVALID_VALUE},
    {Length, "LD1", "999999999", ERROR_INVALID_VALUE},
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

}  // namespace
