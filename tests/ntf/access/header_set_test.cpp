// What a Set of a header record does beyond its members: lengths, tables, bands, data, and where it stops.
#include "access/header_info.h"
#include "opened_file.h"
#include "table/fields.h"

#include <array>
#include <cstring>
#include <limits>

#include <gtest/gtest.h>

using namespace ksntfx;

namespace {

ImageSpec SmallImage(const std::string &compression = "NC", const FieldTexts &fields = {}) {
  ImageSpec image = SixPixels(fields);
  image.compression = compression;
  return image;
}

/** A record that was got, and is freed whatever a test puts into it. */
template <class Info, auto get, auto set, auto free>
class Got {
 public:
  explicit Got(NitfHandle file) : handle(file) {
    EXPECT_EQ(get(handle, 0, &owned), SUCCESS);
    std::memcpy(&info, &owned, sizeof info);
  }
  Got(const Got &) = delete;
  Got &operator=(const Got &) = delete;
  ~Got() { free(&owned); }

  Info *operator->() { return &info; }
  std::int32_t Set() const { return set(handle, 0, &info); }

 private:
  NitfHandle handle;
  Info owned{};
  Info info{};
};

std::int32_t GetHeader(NitfHandle handle, std::uint32_t, NitfHeaderInfo *info) {
  return K_NITFGetNITFHeader(handle, info);
}
std::int32_t SetHeader(NitfHandle handle, std::uint32_t, const NitfHeaderInfo *info) {
  return K_NITFSetNITFHeader(handle, info);
}

using GotHeader = Got<NitfHeaderInfo, GetHeader, SetHeader, K_NITFFreeNITFHeader>;
using GotImage = Got<NitfImageHeaderInfo, K_NITFGetImageHeader, K_NITFSetImageHeader, K_NITFFreeImageHeader>;
using GotGraphic = Got<NitfGraphicHeaderInfo, K_NITFGetGraphicHeader, K_NITFSetGraphicHeader, K_NITFFreeGraphicHeader>;
using GotText = Got<NitfTextHeaderInfo, K_NITFGetTextHeader, K_NITFSetTextHeader, K_NITFFreeTextHeader>;

/** Texts that a test sets: records want pointers to what may be written. */
template <std::size_t size>
struct Chars {
  explicit Chars(const char *text) { std::strncpy(chars, text, size - 1); }
  operator char *() { return chars; }
  char chars[size] = {};
};
using Short = Chars<16>;

/** What a Get or a Set of the segments of a kind tells of a missing handle, record or segment. */
template <class Info>
void ExpectRefusals(std::int32_t (*get)(NitfHandle, std::uint32_t, Info *),
                    std::int32_t (*set)(NitfHandle, std::uint32_t, const Info *), std::int32_t (*free)(Info *),
                    std::int32_t (*count)(NitfHandle), NitfHandle file) {
  Info info{};
  const std::int32_t segments = count(file);
  const auto behind = static_cast<std::uint32_t>(segments);
  const bool isImage = std::is_same_v<Info, NitfImageHeaderInfo>;
  EXPECT_EQ(segments, isImage ? 1 : 0);
  EXPECT_EQ(count(nullptr), 0);
  EXPECT_EQ(get(nullptr, 0, nullptr), NITF_NO_HANDLE);
  EXPECT_EQ(set(nullptr, 0, nullptr), NITF_NO_HANDLE);
  const std::int32_t noRecord = isImage ? std::int32_t{ERROR_INVALID_VALUE} : std::int32_t{NITF_OUT_OF_RANGE};
  EXPECT_EQ(get(file, behind, nullptr), noRecord) << "the record comes first";
  EXPECT_EQ(set(file, 0, nullptr), NITF_OUT_OF_RANGE);
  EXPECT_EQ(get(file, behind, &info), NITF_OUT_OF_RANGE);
  EXPECT_EQ(set(file, behind, &info), NITF_OUT_OF_RANGE);
  EXPECT_EQ(free(nullptr), SUCCESS);
}

TEST(HeaderRecords, TellHandlesIndicesAndRecordsThatAreNotThere) {
  const Opened opened(NitfBuilder().Image(SmallImage()).Build());
  const NitfHandle file = opened.Get();
  NitfHeaderInfo header{};
  EXPECT_EQ(K_NITFGetNITFHeader(nullptr, &header), NITF_NO_HANDLE);
  EXPECT_EQ(K_NITFSetNITFHeader(nullptr, &header), NITF_NO_HANDLE);
  EXPECT_EQ(K_NITFGetNITFHeader(file, nullptr), NITF_OUT_OF_RANGE);
  EXPECT_EQ(K_NITFSetNITFHeader(file, nullptr), NITF_OUT_OF_RANGE);
  EXPECT_EQ(K_NITFFreeNITFHeader(nullptr), SUCCESS);
  ExpectRefusals(K_NITFGetImageHeader, K_NITFSetImageHeader, K_NITFFreeImageHeader, K_NITFGetImageHeaderCount, file);
  ExpectRefusals(K_NITFGetGraphicHeader, K_NITFSetGraphicHeader, K_NITFFreeGraphicHeader, K_NITFGetGraphicHeaderCount,
                 file);
  ExpectRefusals(K_NITFGetTextHeader, K_NITFSetTextHeader, K_NITFFreeTextHeader, K_NITFGetTextHeaderCount, file);
}

// ---- images

struct Refusal {
  const char *name;
  std::size_t offset;
  const char *text; /**< null for a number */
  std::uint32_t number;
  std::uint32_t ImageSubheader::*decoded; /**< stays as it was */
};

class Refusals : public testing::TestWithParam<Refusal> {};

TEST_P(Refusals, EndASetWhereTheyStand) {
  const Opened opened(NitfBuilder().Image(SmallImage()).Build());
  GotImage image(opened.Get());
  const ImageSubheader before = *FindImage(opened.Get(), 0);
  Short earlier("earlier");
  image->IID1 = earlier;
  image->BMRLNTH = 77;
  char *const member = reinterpret_cast<char *>(image.operator->()) + GetParam().offset;
  if (GetParam().text != nullptr) {
    StoreInfo(member, GetParam().text);
  } else {
    StoreInfo(member, GetParam().number);
  }
  EXPECT_EQ(image.Set(), ERROR_INVALID_VALUE);
  const ImageSubheader &after = *FindImage(opened.Get(), 0);
  EXPECT_STREQ(after.IID1, "earlier   ");
  EXPECT_EQ(after.blockMaskLength, before.blockMaskLength) << "behind the refused member";
  EXPECT_EQ(after.*GetParam().decoded, before.*GetParam().decoded);
  const bool isLonger = std::string(GetParam().name) == "NICOM";
  EXPECT_EQ(opened.Save(), isLonger ? ERROR_INVALID_VALUE : SUCCESS) << "comments that LISH doesn't count";
}

#define REFUSED(member) #member, offsetof(NitfImageHeaderInfo, member)

using Image = ImageSubheader;
INSTANTIATE_TEST_SUITE_P(Headers, Refusals,
                         testing::Values(Refusal{REFUSED(PVTYPE), "R", 0, &Image::pixelValueType},
                                         Refusal{REFUSED(IREP), "X", 0, &Image::representation},
                                         Refusal{REFUSED(IREP), "YCbCr601x", 0, &Image::representation},
                                         Refusal{REFUSED(PJUST), "C", 0, &Image::rightJustified},
                                         Refusal{REFUSED(IC), "C7", 0, &Image::compression},
                                         Refusal{REFUSED(IC), "C3 ", 0, &Image::compression},
                                         Refusal{REFUSED(COMRAT), "2DS  ", 0, &Image::rateKind},
                                         Refusal{REFUSED(IMODE), "X", 0, &Image::mode},
                                         Refusal{REFUSED(NPPBH), nullptr, 8193, &Image::blockWidth},
                                         Refusal{REFUSED(NPPBV), nullptr, 8193, &Image::blockHeight},
                                         Refusal{REFUSED(IDLVL), nullptr, 0, &Image::displayLevel},
                                         Refusal{REFUSED(IDLVL), nullptr, 1000, &Image::displayLevel},
                                         Refusal{REFUSED(NBANDS), nullptr, 4000000000, &Image::bandCount},
                                         Refusal{REFUSED(NICOM), nullptr, 2, &Image::commentsHeld},
                                         Refusal{REFUSED(UDID), "data, but UDIDL is 0", 0, &Image::headerRead}),
                         [](const auto &tested) { return tested.param.name + std::to_string(tested.index); });

struct LengthStep {
  const char *coordinates;
  const char *compression;
  std::int32_t bytes;
};

TEST(HeaderRecords, ImageLengthsFollowCoordinatesAndRate) {
  const Opened opened(NitfBuilder().Image(SmallImage()).Build());
  constexpr LengthStep kSteps[] = {{"G", "NC", 60}, {"U", "NC", 0},   {"U", "C3", 4},  {"U", "M3", 0},
                                   {"U", "NM", -4}, {" ", "NM", -60}, {"C", "C3", 64}, {" ", "NC", -64}};
  const NitfHeader &header = opened->header;
  const std::uint32_t asRead = header.imageSubheaderLengths[0];
  std::uint32_t length = header.imageSubheaderLengthsOut[0];
  std::uint32_t fileLength = header.fileLength;
  for (const LengthStep &step : kSteps) {
    GotImage image(opened.Get());
    Short coordinates(step.coordinates);
    Short compression(step.compression);
    image->ICORDS = coordinates;
    image->IC = compression;
    ASSERT_EQ(image.Set(), SUCCESS);
    length += static_cast<std::uint32_t>(step.bytes);
    fileLength += static_cast<std::uint32_t>(step.bytes);
    EXPECT_EQ(header.imageSubheaderLengthsOut[0], length) << step.coordinates << step.compression;
    EXPECT_EQ(std::stoul(header.FL), fileLength);
    EXPECT_EQ(header.fileLength, fileLength);
    EXPECT_EQ(header.fileLengthOut, fileLength);
    EXPECT_EQ(header.imageSubheaderLengths[0], asRead);
    // A mask table in front of the data is not the subheader's.
    if (step.compression != std::string("NM") && step.compression != std::string("M3")) {
      EXPECT_EQ(Opened(opened.Saved())->header.fileLength, opened.Saved().size());
    }
  }
}

TEST(HeaderRecords, LengthsBeyond32BitsStayWhole) {
  const Opened opened(NitfBuilder().Field("FL", "005000000000").Image(SmallImage()).Build());
  GotImage image(opened.Get());
  Short coordinates("G");
  image->ICORDS = coordinates;
  ASSERT_EQ(image.Set(), SUCCESS);
  EXPECT_STREQ(opened->header.FL, "005000000060");
  EXPECT_NE(TextOf(opened.Saved()).find("005000000060"), std::string::npos);
  EXPECT_EQ(opened->header.fileLengthOut, 2147483647U);
}

TEST(HeaderRecords, LocationsChangePlacesAndBoundsDont) {
  ImageSpec spec = SmallImage();
  spec.locationRow = 12;
  spec.locationColumn = -345;
  const Opened opened(NitfBuilder().Image(spec).Graphic({1, 0, 5, -7, 'C', {}, {{"SBND1", "0000100002"}}}).Build());
  GotImage image(opened.Get());
  EXPECT_EQ(+image->locationA, -345);
  EXPECT_EQ(+image->locationB, 12);
  ASSERT_EQ(image.Set(), SUCCESS);
  EXPECT_STREQ(FindImage(opened.Get(), 0)->ILOC, "-034500012");
  EXPECT_EQ(FindImage(opened.Get(), 0)->locationRow, -345);
  image->locationA = 123456;
  image->locationB = -12345;
  ASSERT_EQ(image.Set(), SUCCESS);
  EXPECT_STREQ(FindImage(opened.Get(), 0)->ILOC, "00000-0000");

  GotGraphic graphic(opened.Get());
  EXPECT_EQ(+graphic->bound1First, 1U);
  EXPECT_EQ(+graphic->bound1Second, 2U);
  graphic->bound2First = 99999;
  graphic->bound2Second = 100000;
  ASSERT_EQ(graphic.Set(), SUCCESS);
  const GraphicSubheader &stored = *FindGraphic(opened.Get(), 0);
  EXPECT_STREQ(stored.SLOC, "-000700005");
  EXPECT_STREQ(stored.SBND1, "0000100002");
  EXPECT_STREQ(stored.SBND2, "9999900000");
  EXPECT_EQ(stored.secondBound[1], 100000);
}

TEST(HeaderRecords, BandsAreMadeAnewForTheGreaterCount) {
  ImageSpec spec = SmallImage();
  spec.representation = "RGB/LUT";
  spec.bands = {{"LU", 3, {10, 11, 12, 20, 21, 22, 30, 31, 32}}};
  const Opened opened(NitfBuilder().Image(spec).Build());
  const ImageSubheader &image = *FindImage(opened.Get(), 0);
  GotImage info(opened.Get());
  ASSERT_EQ(info.Set(), SUCCESS);
  EXPECT_EQ(image.bandLutEntries[0], 3U) << "the table stays the segment's";
  info->NBANDS = 0;
  info->XBANDS = 12;
  ASSERT_EQ(info.Set(), SUCCESS);
  EXPECT_EQ(image.bandCount, 0U) << "XBANDS counts from the next time on";
  ASSERT_EQ(info.Set(), SUCCESS);
  EXPECT_EQ(image.bandCount, 12U);
  ASSERT_EQ(image.bandsHeld, 12U);
  EXPECT_STREQ(image.bandFilterConditions[11], "N");
  EXPECT_STREQ(image.bandFilterCodes[11], "   ");
  EXPECT_EQ(opened.Save(), ERROR_INVALID_VALUE) << "bands that LISH doesn't count";
  info->NBANDS = 1;
  info->XBANDS = 0;
  ASSERT_EQ(info.Set(), SUCCESS);
  ASSERT_EQ(info.Set(), SUCCESS);
  EXPECT_EQ(image.bandCount, 1U);
  KsBitmap bitmap{};
  EXPECT_EQ(K_NtfRenderBitmap(&bitmap, opened.Get()), SUCCESS);
  KsBitmapFree(&bitmap);
}

TEST(HeaderRecords, CommentsAreOverwrittenAndNotAdded) {
  const Opened opened(NitfBuilder().Image(SmallImage("NC", {{"ICOM1", "a comment"}})).Build());
  const ImageSubheader &image = *FindImage(opened.Get(), 0);
  GotImage info(opened.Get());
  ASSERT_EQ(+info->NICOM, 1U);
  EXPECT_EQ(std::string(info->ICOM[0]).substr(0, 10), "a comment ");
  Short text("another");
  char *texts[] = {text, text};
  info->ICOM = texts;
  ASSERT_EQ(info.Set(), SUCCESS);
  EXPECT_EQ(std::string(image.comments[0]), "another" + std::string(73, ' '));
  info->NICOM = 2;
  EXPECT_EQ(info.Set(), ERROR_INVALID_VALUE);
  GotImage more(opened.Get());
  ASSERT_EQ(+more->NICOM, 2U);
  EXPECT_STREQ(more->ICOM[1], "");
  EXPECT_EQ(opened.Save(), ERROR_INVALID_VALUE) << "a comment that LISH doesn't count";
}

TEST(HeaderRecords, PadCodesAreAsLongAsTheirBits) {
  ImageSpec spec = SmallImage("NM");
  spec.mask = MaskSpec{{0}, {}, Bytes{1, 2}};
  const Opened opened(NitfBuilder().Image(spec).Build());
  const ImageSubheader &image = *FindImage(opened.Get(), 0);
  GotImage info(opened.Get());
  EXPECT_EQ(+info->IMDATOFF, 16U);
  EXPECT_EQ(+info->BMRLNTH, 4);
  ASSERT_EQ(+info->TPXCDLNTH, 16);
  EXPECT_EQ(Bytes(info->TPXCD, info->TPXCD + 16), (Bytes{1, 2, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0}));
  std::uint8_t code[] = {7, 8, 9};
  info->TPXCDLNTH = 17;
  info->TPXCD = code;
  info->IMDATOFF = 0x01020304;
  info->BMRLNTH = 0x0506;
  info->TMRLNTH = 0x0708;
  ASSERT_EQ(info.Set(), SUCCESS);
  EXPECT_EQ(image.maskDataOffset, 0x01020304U);
  EXPECT_EQ(image.blockMaskLength, 0x0506);
  EXPECT_EQ(image.padMaskLength, 0x0708);
  EXPECT_EQ(image.padCodeBits, 17);
  EXPECT_EQ(Bytes(image.padCode, image.padCode + 3), (Bytes{7, 8, 9}));
  info->TPXCDLNTH = 65535;
  info->TPXCD = nullptr;
  ASSERT_EQ(info.Set(), SUCCESS);
  EXPECT_EQ(image.padCode[2], 9);
  EXPECT_EQ(opened.Save(), ERROR_INVALID_VALUE) << "the table would push the pixels away";
}

// ---- extension data

/** The length at an offset of a record, and the data that it counts. */
template <class GotRecord, std::size_t length, std::size_t data>
struct ExtensionMembers {
  static std::int32_t Set(NitfHandle file, std::uint32_t bytes, const char *content) {
    GotRecord record(file);
    char *const info = reinterpret_cast<char *>(record.operator->());
    StoreInfo(info + length, bytes);
    StoreInfo(info + data, content);
    return record.Set();
  }
  /** As many bytes as the data have. */
  static std::string Get(NitfHandle file) {
    GotRecord record(file);
    const char *const info = reinterpret_cast<const char *>(record.operator->());
    const auto *const content = LoadInfo<const char *>(info + data);
    return content == nullptr ? "null" : std::string(content, LoadInfo<std::uint32_t>(info + length) - 3);
  }
};

struct ExtensionKind {
  const char *name;
  std::int32_t (*set)(NitfHandle, std::uint32_t, const char *);
  std::string (*get)(NitfHandle);
  bool emptyIsNull; /**< what a Get gives where the length leaves no bytes */
  bool ofImage;
};

template <class GotRecord, std::size_t length, std::size_t data>
ExtensionKind Extension(const char *name, bool emptyIsNull) {
  using Access = ExtensionMembers<GotRecord, length, data>;
  return {name, Access::Set, Access::Get, emptyIsNull, std::is_same_v<GotRecord, GotImage>};
}

#define MEMBERS(Info, length, data) offsetof(Info, length), offsetof(Info, data)

class Extensions : public testing::TestWithParam<ExtensionKind> {};

TEST_P(Extensions, AreAsLongAsTheirLengthSays) {
  const ExtensionKind &kind = GetParam();
  const std::string binary("a\0b\0c", 5);
  const Opened opened(NitfBuilder()
                          .Image(SmallImage("NC", {{"UDID", binary}, {"IXSHD", binary}}))
                          .Graphic({1, 0, 0, 0, 'C', {}, {{"SXSHD", binary}}})
                          .Text({"x", {{"TXSHD", binary}}})
                          .Build());
  const NitfHandle file = opened.Get();
  EXPECT_EQ(kind.get(file), binary);
  EXPECT_EQ(kind.set(file, 3 + 7, "new\0abc"), SUCCESS);
  EXPECT_EQ(kind.get(file), std::string("new\0abc", 7));
  EXPECT_EQ(kind.set(file, 3 + 3, nullptr), SUCCESS);
  EXPECT_EQ(kind.get(file), "new");
  EXPECT_NE(TextOf(opened.Saved()).find("00006000new"), std::string::npos);
  EXPECT_EQ(kind.set(file, 99999, nullptr), SUCCESS);
  EXPECT_TRUE(kind.get(file) == std::string("new\0abc", 7) + std::string(99989, '\0')) << "they go on in zeros";
  EXPECT_EQ(opened.Save(), kind.ofImage ? ERROR_INVALID_VALUE : SUCCESS) << "LISH doesn't count them";
  EXPECT_EQ(kind.set(file, 3, "anything"), SUCCESS);
  EXPECT_EQ(kind.get(file), kind.emptyIsNull ? "null" : "");
  EXPECT_EQ(kind.set(file, 0, nullptr), SUCCESS);
  EXPECT_EQ(kind.get(file), "null");
  EXPECT_EQ(kind.set(file, 100000, "wider than the field"), ERROR_INVALID_VALUE);
  EXPECT_EQ(opened.Save(), SUCCESS);
}

INSTANTIATE_TEST_SUITE_P(
    Headers, Extensions,
    testing::Values(Extension<GotImage, MEMBERS(NitfImageHeaderInfo, UDIDL, UDID)>("UDID", false),
                    Extension<GotImage, MEMBERS(NitfImageHeaderInfo, IXSHDL, IXSHD)>("IXSHD", false),
                    Extension<GotGraphic, MEMBERS(NitfGraphicHeaderInfo, SXSHDL, SXSHD)>("SXSHD", false),
                    Extension<GotText, MEMBERS(NitfTextHeaderInfo, TXSHDL, TXSHD)>("TXSHD", true)),
    [](const auto &tested) { return std::string(tested.param.name); });

// ---- the file header

TEST(HeaderRecords, CountsOfTheFileHeaderStayWithinItsTables) {
  const Opened opened(
      NitfBuilder().Image(SmallImage()).Image(SmallImage()).Text({"x", {}}).DataExtension({"D", {}, {1}}).Build());
  const NitfHeader &header = opened->header;
  GotHeader info(opened.Get());
  ASSERT_EQ(+info->NUMI, 2U);
  EXPECT_EQ(+info->LISH[1], header.imageSubheaderLengths[1]);
  EXPECT_EQ(+info->LI[1], 6U);
  std::uint32_t lengths[] = {1000, 4000000000U, 3};
  info->LI = lengths;
  info->NUMI = 1;
  ASSERT_EQ(info.Set(), SUCCESS);
  EXPECT_EQ(header.imageTableCount, 1U);
  EXPECT_EQ(header.dataExtensionTableCount, 0U) << "it was not filled";
  info->NUMI = 3;
  ASSERT_EQ(info.Set(), SUCCESS);
  EXPECT_EQ(header.imageTableCount, 1U);
  EXPECT_STREQ(header.NUMI, "001");
  info->NUMI = 2;
  info->NUMDES = 1;
  info->LD = lengths;
  ASSERT_EQ(info.Set(), SUCCESS);
  EXPECT_EQ(header.imageDataLengths[1], 4000000000U);
  EXPECT_EQ(header.imageDataLengthsOut[1], 4000000000U);
  EXPECT_EQ(header.dataExtensionDataLengths[0], 1000U);
  EXPECT_EQ(GotHeader(opened.Get())->LI[1], 2147483647U);
}

TEST(HeaderRecords, FileHeaderMembersThatAreOnlySet) {
  const Opened opened(NitfBuilder().Field("UDHD", "old").Build());
  const NitfHeader &header = opened->header;
  GotHeader info(opened.Get());
  EXPECT_EQ(+info->FVER, 2.1F);
  EXPECT_EQ(+info->UDHDL, 0U);
  info->FBKGC = 0xFF332211;
  info->UDHDL = 3 + 4;
  info->UDHOFL = 5;
  info->UDHD = const_cast<char *>("data");
  info->XHDL = 3 + 2;
  info->XHD = const_cast<char *>("XY");
  info->HL = 388 + 7 + 5;
  ASSERT_EQ(info.Set(), SUCCESS);
  EXPECT_EQ(header.backgroundColorValue, 0x332211U);
  const Bytes bytes = opened.Saved();
  const std::string saved(bytes.begin(), bytes.end());
  EXPECT_EQ(saved.substr(297, 3), "\x11\x22\x33");
  EXPECT_EQ(saved.substr(354, 6), "000400");
  EXPECT_EQ(saved.substr(378), "00007005data00005000XY");
  info->UDHDL = 2;
  info->CLEVEL = 8;
  info->FVER = std::numeric_limits<float>::infinity();
  ASSERT_EQ(info.Set(), SUCCESS);
  EXPECT_STREQ(header.UDHDL, "00002");
  EXPECT_STREQ(header.userHeaderData, "data") << "no data fit such a length";
  EXPECT_STREQ(header.CLEVEL, "03");
  EXPECT_STREQ(header.FVER, "02.10");
  for (const auto &[level, text] :
       {std::pair{1U, "01"}, {0U, "01"}, {7U, "07"}, {8U, "07"}, {99U, "99"}, {98U, "99"}}) {
    info->CLEVEL = level;
    ASSERT_EQ(info.Set(), SUCCESS);
    EXPECT_STREQ(header.CLEVEL, text) << level;
  }
  info->FVER = 1.5F;
  ASSERT_EQ(info.Set(), SUCCESS);
  EXPECT_STREQ(header.FVER, "01.50");
  EXPECT_EQ(opened.Save(), SUCCESS);
}

TEST(HeaderRecords, ABlankHeaderHasItsLengthInOnePlace) {
  NitfHandle handle = nullptr;
  ASSERT_EQ(K_NITFCreate(&handle, nullptr), SUCCESS);
  {
    GotHeader info(handle);
    EXPECT_EQ(+info->HL, 0U);
    EXPECT_EQ(+info->FL, 388U);
    EXPECT_EQ(std::string(&info->FDT[0][0], 14), "20050101010101");
    EXPECT_EQ(+info->LISH, nullptr);
  }
  K_NITFDestroy(&handle);
}

// ---- texts

TEST(TextSegments, ComeFromTheFileOrFromMemory) {
  const Opened opened(NitfBuilder().Text({"some\nwords", {}}).Text({"", {}}).Text({"end", {}}).Build());
  const NitfHandle file = opened.Get();
  std::uint32_t size = 99;
  char buffer[32];
  EXPECT_EQ(K_NITFGetTextSegment(nullptr, 0, buffer, &size), NITF_NO_HANDLE);
  EXPECT_EQ(K_NITFGetTextSegment(file, 3, buffer, &size), NITF_OUT_OF_RANGE);
  EXPECT_EQ(size, 99U);
  EXPECT_EQ(K_NITFGetTextSegment(file, 0, nullptr, nullptr), SUCCESS);
  const auto text = [&](std::uint32_t index) {
    std::memset(buffer, '#', sizeof buffer);
    EXPECT_EQ(K_NITFGetTextSegment(file, index, buffer, &size), SUCCESS);
    EXPECT_EQ(size, std::strlen(buffer));
    return std::string(buffer);
  };
  EXPECT_EQ(text(0), "some\nwords");
  EXPECT_EQ(text(1), "");
  EXPECT_EQ(text(2), "end");
  // Those in memory are as long as they are, whatever the header says.
  WriteFile(opened.Path("text"), {'t', 'e', 'x', 't'});
  ASSERT_EQ(K_NITFAppendTextSegmentA(file, opened.Path("text").c_str()), SUCCESS);
  for (const std::uint32_t told : {2U, 4U, 6U}) {
    opened->header.textDataLengths[3] = told;
    std::memset(buffer, '#', sizeof buffer);
    EXPECT_EQ(K_NITFGetTextSegment(file, 3, buffer, &size), SUCCESS);
    EXPECT_EQ(size, told);
    EXPECT_STREQ(buffer, "text");
    EXPECT_EQ(buffer[5], '#');
  }

  Bytes cut = NitfBuilder().Text({"end", {}}).Build();
  cut.pop_back();
  EXPECT_EQ(K_NITFGetTextSegment(Opened(cut).Get(), 0, buffer, nullptr), ERROR_FILE_READ);
}

}  // namespace
