// Files that are opened and saved: what comes back byte for byte, what the writer renders anew, and what it refuses.
#include "harness.h"
#include "opened_file.h"
#include "table/header_writer.h"
#include "vq_builder.h"

#include <cmath>
#include <csignal>
#include <cstring>
#include <filesystem>
#include <sys/resource.h>

#include <gtest/gtest.h>

using namespace ksntfx;

namespace {

ImageSpec MaskedImage() {
  ImageSpec image = SixPixels();
  image.compression = "NM";
  image.blockWidth = 1;
  image.mask = MaskSpec{{0, 0xFFFFFFFF}, {0xFFFFFFFF, 0}, Bytes{1, 2, 3}};
  image.data = {1, 2, 3};
  return image;
}

VqSpec Quantised() {
  VqSpec vq;
  vq.codeRows = vq.codesPerRow = 2;
  for (std::uint8_t kernel = 0; kernel < 4; ++kernel) vq.kernels.push_back(Bytes(16, kernel));
  vq.codes = {0, 1, 2, 3, 3, 2, 1, 0};
  return vq;
}

/** Two blocks side by side of which the writer keeps all but what stands behind the codes. */
ImageSpec QuantisedImage(const std::string &compression, const Bytes &behind = {}) {
  ImageSpec image;
  image.rows = 8;
  image.columns = 16;
  image.blockWidth = 8;
  image.compression = compression;
  if (compression == "M4") image.mask = MaskSpec{{0, 12}, {}, {}};
  image.data = EncodeVq(Quantised());
  image.data.insert(image.data.end(), behind.begin(), behind.end());
  return image;
}

/** The same with any mask table, and codes of the blocks that are recorded. */
ImageSpec QuantisedWith(const MaskSpec &mask, const std::vector<std::uint32_t> &codes) {
  ImageSpec image = QuantisedImage("M4");
  image.mask = mask;
  VqSpec data = Quantised();
  if (!codes.empty()) data.codes = codes;
  image.data = EncodeVq(data);
  return image;
}

/** Codes of a row that don't fill whole bytes, and bytes behind the last one. */
ImageSpec QuantisedOfHalfBytes() {
  VqSpec spec{.codeRows = 2, .codesPerRow = 3, .codeBits = 12, .kernelHeight = 1, .tables = 1};
  spec.kernels = {{1}, {2}};
  spec.codes = {0, 1, 0, 1, 1, 0};
  ImageSpec image{.rows = 2, .columns = 3, .compression = "C4", .data = EncodeVq(spec)};
  image.data.insert(image.data.end(), {0xAA, 0xBB, 0xCC});
  return image;
}

ImageSpec OfUnknownKind() {
  ImageSpec image = SixPixels({{"COMRAT", "01.5"}});
  image.compression = "C7";
  return image;
}

/** Kernels of four rows, and codes for a third row of them. */
ImageSpec QuantisedOfNineRows() {
  ImageSpec image = QuantisedWith(MaskSpec{{0, 18}, {}, {}}, {0, 1, 2, 3, 3, 2, 1, 0, 1, 1, 2, 2});
  image.rows = 9;
  return image;
}

// ---- byte for byte ------------------------------------------------------------------------------------------------

struct Kept {
  const char *name;
  NitfBuilder file;
};

class KeptFiles : public testing::TestWithParam<Kept> {};

TEST_P(KeptFiles, ComeBackByteForByteAndAgain) {
  const Bytes file = GetParam().file.Build();
  const auto blocksBefore = LiveBlocks();
  {
    const Opened opened(file);
    ASSERT_EQ(opened.status, SUCCESS);
    EXPECT_EQ(opened.Saved(), file);
    EXPECT_EQ(opened.Saved(), file) << "a handle may be saved again";
  }
  EXPECT_EQ(LiveBlocks(), blocksBefore);
}

INSTANTIATE_TEST_SUITE_P(
    Save, KeptFiles,
    testing::Values(
        Kept{"Quantised", NitfBuilder().Image(QuantisedImage("C4")).Image(SixPixels())},
        Kept{"MaskedQuantised", NitfBuilder().Image(QuantisedImage("M4")).Image(SixPixels()).Image(MaskedImage())},
        Kept{"AllMasksOfQuantised", NitfBuilder().Image(QuantisedWith({{0, 12}, {12, 0}, Bytes{7, 8, 9}}, {}))},
        Kept{"PadMaskOfQuantised", NitfBuilder().Image(QuantisedWith({{}, {12, 0}, {}}, {}))},
        Kept{"RowsBesideKernels", NitfBuilder().Image(QuantisedOfNineRows()).Image(SixPixels())},
        Kept{"AbsentBlockOfQuantised",
             NitfBuilder().Image(QuantisedWith({{0xFFFFFFFF, 0}, {}, Bytes{7}}, {0, 1, 2, 3})).Image(SixPixels())},
        Kept{"HalfBytesOfQuantised", NitfBuilder().Image(QuantisedOfHalfBytes()).Image(SixPixels())},
        Kept{"UnknownCompression", NitfBuilder().Image(OfUnknownKind())},
        Kept{"Others", NitfBuilder()
                           .Graphic({1, 0, 5, -7, 'C', Bytes(2000, 7), {{"SXSHD", "tags"}}})
                           .Graphic({2, 1, 0, 0, 'B', {}, {}})
                           .Text({"some\nwords", {{"TXTITL", "A note"}, {"TXSHD", "tags"}}})
                           .Text({"", {}})
                           .DataExtension({"SAMPLE_DES", "user data", {1, 2, 3}})
                           .DataExtension({"EMPTY", {}, {}})},
        Kept{"LargeBody",
             NitfBuilder().Text({std::string(99999, 'x'), {}}).DataExtension({"BIG", {}, Bytes(3000000, 5)})}),
    [](const auto &tested) { return tested.param.name; });

TEST(Save, BlankHandleIsAHeaderOfItsDefaults) {
  const TemporaryFolder folder;
  NitfHandle handle = nullptr;
  ASSERT_EQ(K_NITFCreate(&handle, nullptr), SUCCESS);
  EXPECT_EQ(K_NITFGetStatus(handle), NITF_STATUS_EMPTY | NITF_STATUS_HEADER);
  ASSERT_EQ(K_NITFSaveFileA(handle, folder.Path("blank.ntf").c_str()), SUCCESS);
  K_NITFDestroy(&handle);
  const Bytes bytes = ReadFile(folder.Path("blank.ntf"));
  const std::string file(bytes.begin(), bytes.end());
  const std::string expected = "NITF02.1003BF01" + std::string(10, '0') + "20050101010101" + std::string(80, ' ') +
                               "U" + std::string(166, ' ') + std::string(11, '0') + std::string(3, '\0') +
                               std::string(42, ' ') + "000000000388" + "000388" + std::string(28, '0');
  EXPECT_EQ(file, expected);
  EXPECT_EQ(file.size(), 388U);
}

// ---- rendered anew ------------------------------------------------------------------------------------------------

/** Fields of a segment that the writer turns into others. */
struct Rendered {
  const char *name;
  FieldTexts read;
  FieldTexts written;
  std::string compression = "NC";
};

class RenderedFields : public testing::TestWithParam<Rendered> {
 protected:
  static ImageSpec With(const FieldTexts &fields) {
    ImageSpec image = SixPixels(fields);
    image.compression = GetParam().compression;
    return image;
  }
};

TEST_P(RenderedFields, AreWrittenFromWhatWasUnderstood) {
  const Opened opened(NitfBuilder().Image(With(GetParam().read)).Build());
  ASSERT_EQ(opened.status, SUCCESS);
  EXPECT_EQ(opened.Saved(), NitfBuilder().Image(With(GetParam().written)).Build());
}

INSTANTIATE_TEST_SUITE_P(Save, RenderedFields,
                         testing::Values(Rendered{"Rate", {{"COMRAT", "01.5"}}, {{"COMRAT", "00.0"}}, "C3"},
                                         Rendered{"BilevelRate", {{"COMRAT", "2DS"}}, {{"COMRAT", "2DS "}}, "C1"},
                                         Rendered{"Representation", {{"IREP", "STRANGE"}}, {{"IREP", "RGB"}}},
                                         Rendered{"ReducedByTwo", {{"IMAG", "/2  "}}, {{"IMAG", "0.5 "}}},
                                         Rendered{"Magnified", {{"IMAG", "12.5"}}, {{"IMAG", "12. "}}},
                                         Rendered{"BlockSize",
                                                  {{"NPPBH", "0000"}, {"NPPBV", "0000"}},
                                                  {{"NPPBH", "0002"}, {"NPPBV", "0003"}}},
                                         // What loads with a minus sign is saved.
                                         Rendered{"Rows", {{"NROWS", "-0000005"}}, {{"NROWS", "000000-5"}}},
                                         Rendered{"BlocksPerRow", {{"NBPR", "-001"}}, {{"NBPR", "00-1"}}},
                                         Rendered{"BlocksPerColumn", {{"NBPC", "-999"}}, {{"NBPC", "-999"}}},
                                         Rendered{"Bits", {{"NBPP", "-8"}}, {{"NBPP", "-8"}}},
                                         Rendered{"Level", {{"IDLVL", "  7"}}, {{"IDLVL", "007"}}},
                                         Rendered{"Justification", {{"PJUST", "x"}}, {{"PJUST", "R"}}}),
                         [](const auto &tested) { return tested.param.name; });

TEST(Save, BlocksAsWideAsAnImageAreWrittenAsZeroWhereTheirFieldIsTooNarrow) {
  ImageSpec image;
  image.rows = 1;
  image.columns = 10000;
  image.fields = {{"NPPBH", "0000"}};
  image.data.assign(10000, 3);
  const Bytes file = NitfBuilder().Image(image).Build();
  EXPECT_EQ(Opened(file).Saved(), file);
}

TEST(Save, MaskedQuantisedDataAreMeasuredAndTheImagesBehindStayWhole) {
  const auto file = [](const Bytes &behind) {
    return NitfBuilder().Image(QuantisedImage("M4", behind)).Image(MaskedImage()).Image(SixPixels()).Build();
  };
  const Bytes whole = file({});
  Bytes saved = Opened(file({9, 9, 9, 9, 9})).Saved();
  ASSERT_EQ(saved.size(), whole.size());
  // FL stays as it was.
  constexpr std::size_t kFileLength = 342;
  std::copy_n(whole.begin() + kFileLength, 12, saved.begin() + kFileLength);
  EXPECT_EQ(saved, whole);
}

/** Rows of three codes of 12 bits end within a byte, which is where the rows of masked data are cut. */
TEST(Save, MaskedQuantisedRowsOfHalfBytesAreCut) {
  VqSpec spec{.codeRows = 2, .codesPerRow = 3, .codeBits = 12, .kernelHeight = 1, .tables = 1};
  spec.kernels = {{1}, {2}};
  spec.codes = {0, 1, 0, 1, 1, 0};
  const auto file = [](Bytes data, std::size_t bytes) {
    data.resize(bytes);
    ImageSpec image{.rows = 2, .columns = 3, .compression = "M4", .mask = MaskSpec{{0}, {}, Bytes{7}}, .data = data};
    return NitfBuilder().Image(image).Image(SixPixels()).Build();
  };
  const Bytes data = EncodeVq(spec);
  const std::size_t codeBytes = 9;
  const Bytes expected = file(data, data.size() - codeBytes + 2 * 4);
  Bytes saved = Opened(file(data, data.size())).Saved();
  ASSERT_EQ(saved.size(), expected.size());
  std::copy_n(expected.begin() + 342, 12, saved.begin() + 342);
  EXPECT_EQ(saved, expected) << "but for FL";
}

TEST(Save, LengthOfASubheaderBeforeMaskedQuantisedDataIsMeasured) {
  const auto file = [](const FieldTexts &fields) {
    ImageSpec quantised = QuantisedImage("M4");
    quantised.fields = fields;
    return NitfBuilder().Image(SixPixels()).Image(quantised).Image(MaskedImage()).Build();
  };
  const Opened opened(file({}));
  // A change that nobody has carried into the header.
  std::strcpy(FindImage(opened.operator->(), 1)->ICORDS, "G");
  Bytes saved = opened.Saved();
  const Bytes expected = file({{"ICORDS", "G"}, {"IGEOLO", std::string(60, ' ')}});
  ASSERT_EQ(saved.size(), expected.size());
  std::copy_n(expected.begin() + 342, 12, saved.begin() + 342);
  EXPECT_EQ(saved, expected) << "but for FL";
}

TEST(Save, EntriesThatAreNotThereAreBlank) {
  ImageSpec spec = SixPixels();
  const Opened opened(NitfBuilder().Image(spec).Build());
  ImageSubheader &image = *FindImage(opened.operator->(), 0);
  image.NICOM[0] = '2';
  image.bandField = 2;
  const std::uint64_t bytes =
      VisitFields(kImageTable, &image, SinkFor(opened.operator->(), KS_INVALID_HANDLE), [](const auto &, auto) {});
  EXPECT_EQ(bytes, NitfBuilder().Image(spec).ImageSubheader(0).size() + 2 * 80 + 13);
  EXPECT_EQ(opened.Save(), ERROR_INVALID_VALUE) << "LISH doesn't count them";
}

// ---- refusals -----------------------------------------------------------------------------------------------------

TEST(Handle, TellsItsStates) {
  NitfHandle none = nullptr;
  EXPECT_EQ(K_NITFCreate(nullptr, nullptr), ERROR_NO_MEMORY);
  EXPECT_EQ(K_NITFDestroy(&none), NITF_NULL_HANDLE);
  EXPECT_EQ(K_NITFGetStatus(nullptr), NITF_NULL_HANDLE);
  EXPECT_EQ(K_NITFSaveFileA(nullptr, "anything"), NITF_NULL_HANDLE);
  EXPECT_EQ(K_NITFSaveFileA(nullptr, "\xff"), ERROR_NO_MEMORY) << "the name comes first";
  none = Opened().Get();
  EXPECT_EQ(K_NITFCreateA(&none, "\xff"), ERROR_NO_MEMORY);
  EXPECT_EQ(none, nullptr);
  EXPECT_EQ(K_NITFCreateA(&none, "/no/such/file"), ERROR_NO_FILE);
  EXPECT_EQ(none, nullptr);
  EXPECT_EQ(Opened(NitfBuilder().Field("FVER", "02.00").Build()).status, NITF_UNSUPPORTED_VERSION);
  const Opened loaded(NitfBuilder().Image(SixPixels()).Build());
  EXPECT_EQ(K_NITFGetStatus(loaded.operator->()), NITF_STATUS_HEADER);
  EXPECT_EQ(K_NITFGetStatus(Opened(NitfBuilder().Graphic({}).Build()).Get()), NITF_STATUS_HEADER);
  EXPECT_EQ(K_NITFGetStatus(Opened(NitfBuilder().Text({"x", {}}).Build()).Get()), NITF_STATUS_HEADER);
  EXPECT_EQ(K_NITFGetStatus(Opened(NitfBuilder().DataExtension({"ANY", {}, {}}).Build()).Get()),
            NITF_STATUS_EMPTY | NITF_STATUS_HEADER);
}

TEST(Save, OntoItsOwnSourceIsRefused) {
  const Bytes file = NitfBuilder().Image(SixPixels()).Build();
  const Opened opened(file);
  std::filesystem::create_symlink(opened.Path("in.ntf"), opened.Path("link.ntf"));
  std::filesystem::create_hard_link(opened.Path("in.ntf"), opened.Path("other.ntf"));
  for (const char *name : {"in.ntf", "./in.ntf", "link.ntf", "other.ntf"}) {
    EXPECT_EQ(opened.Save(name), ERROR_FILE_WRITE) << name;
    EXPECT_EQ(ReadFile(opened.Path("in.ntf")), file) << name;
  }
  EXPECT_EQ(opened.Saved(), file);
}

TEST(Save, NumbersWiderThanTheirFieldAreRefusedBeforeAnythingIsWritten) {
  const Opened opened(NitfBuilder().Image(SixPixels()).Build());
  WriteFile(opened.Path("out.ntf"), {1, 2, 3});
  ImageSubheader &image = *FindImage(opened.operator->(), 0);
  const ImageSubheader before = image;
  const auto refused = [&](std::uint32_t ImageSubheader::*member, std::uint32_t value) {
    image.*member = value;
    EXPECT_EQ(opened.Save(), ERROR_INVALID_VALUE);
    image = before;
  };
  for (const auto &[member, digits] : {std::pair{&ImageSubheader::rows, 8},
                                       {&ImageSubheader::columns, 8},
                                       {&ImageSubheader::actualBits, 2},
                                       {&ImageSubheader::bitsPerPixel, 2},
                                       {&ImageSubheader::blocksPerRow, 4},
                                       {&ImageSubheader::blocksPerColumn, 4},
                                       {&ImageSubheader::blockWidth, 4},
                                       {&ImageSubheader::blockHeight, 4}}) {
    refused(member, static_cast<std::uint32_t>(std::lround(std::pow(10, digits))));
  }
  EXPECT_EQ(ReadFile(opened.Path("out.ntf")), (Bytes{1, 2, 3}));
}

TEST(Save, DataBeyondTheNumbersOfALengthAreRefusedBeforeAByteIsWritten) {
  for (const std::vector<std::string> &lengths :
       {std::vector<std::string>{"2147483648"}, {"1900000000", "1900000000", "1900000000"}}) {
    NitfBuilder builder;
    for (std::size_t image = 0; image < lengths.size(); ++image) builder.Image(SixPixels());
    Bytes file = builder.Build();
    constexpr std::ptrdiff_t kFirstLength = 369;
    for (std::size_t at = 0; at < lengths.size(); ++at) {
      std::copy(lengths[at].begin(), lengths[at].end(),
                file.begin() + kFirstLength + static_cast<std::ptrdiff_t>(16 * at));
    }
    const Opened blank;
    WriteFile(blank.Path("large.ntf"), file);
    // Its subheaders would stand gigabytes further on, so the header alone is read.
    NitfFile *const opened = blank.Get();
    opened->fileHandle = KsOpen(Wide(blank.Path("large.ntf")).c_str(), KS_OPEN_READ, KS_MODE_READ);
    StreamFileHeader stream{};
    ASSERT_EQ(ReadFileHeader(opened, &stream), SUCCESS);
    opened->imageCountInFile = opened->header.imageTableCount;
    EXPECT_EQ(blank.Save(), ERROR_INVALID_VALUE);
    EXPECT_TRUE(ReadFile(blank.Path("out.ntf")).empty());
  }
}

TEST(Save, SourcesThatAreCutOffAreTold) {
  NitfBuilder builder;
  builder.Image(SixPixels()).Text({"some words", {}}).DataExtension({"D", {}, Bytes(100, 1)});
  const Opened opened(builder.Build());
  ASSERT_EQ(opened.status, SUCCESS);
  std::filesystem::resize_file(opened.Path("in.ntf"), builder.Build().size() - 1);
  EXPECT_EQ(opened.Save(), ERROR_FILE_READ);
}

TEST(Save, QuantisedDataWithoutRowsAreRefused) {
  for (const std::uint32_t codeRows : {0U, 9U}) {
    VqSpec vq = Quantised();
    vq.codeRows = codeRows;
    ImageSpec image = QuantisedImage("M4");
    image.data = EncodeVq(vq);
    EXPECT_EQ(Opened(NitfBuilder().Image(image).Build()).Save(), ERROR_FILE_FORMAT) << codeRows;
  }
}

/** Lets files grow up to a number of bytes and no further. */
class FileSizeLimit {
 public:
  explicit FileSizeLimit(std::size_t bytes) : previousHandler(std::signal(SIGXFSZ, SIG_IGN)) {
    getrlimit(RLIMIT_FSIZE, &before);
    const rlimit limit = {bytes, before.rlim_max};
    setrlimit(RLIMIT_FSIZE, &limit);
  }
  FileSizeLimit(const FileSizeLimit &) = delete;
  FileSizeLimit &operator=(const FileSizeLimit &) = delete;
  ~FileSizeLimit() {
    setrlimit(RLIMIT_FSIZE, &before);
    std::signal(SIGXFSZ, previousHandler);
  }

 private:
  rlimit before = {};
  void (*previousHandler)(int);
};

TEST(Save, FullDisksAreToldWhereverTheyAreMet) {
  NitfBuilder builder;
  builder.Image(MaskedImage()).Image(QuantisedImage("M4")).Graphic({1, 0, 0, 0, 'C', Bytes(300000, 7), {}});
  builder.Text({"some words", {}}).DataExtension({"D", "u", Bytes(400000, 1)});
  const Bytes file = builder.Build();
  const Opened opened(file);
  const std::size_t step = 31;
  for (std::size_t room = 0; room < file.size(); room += room < 3000 ? step : 100003) {
    const FileSizeLimit limit(room);
    EXPECT_EQ(opened.Save(), ERROR_FILE_WRITE) << room;
  }
  EXPECT_EQ(opened.Saved(), file) << "the handle is as it was";
}

}  // namespace
