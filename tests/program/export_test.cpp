// The TIFF files that ntf export writes, compared byte by byte with the samples that went into the NITF file.
#include "program_test.h"

#include <algorithm>
#include <filesystem>
#include <map>
#include <stdexcept>

namespace {

constexpr unsigned kBits = 258;
constexpr unsigned kPhotometric = 262;
constexpr unsigned kDescription = 270;
constexpr unsigned kStripOffsets = 273;
constexpr unsigned kStripByteCounts = 279;
constexpr unsigned kPlanarConfiguration = 284;
constexpr unsigned kColorMap = 320;
constexpr unsigned kExtraSamples = 338;
constexpr unsigned kSampleFormat = 339;

/** A TIFF file of this machine's kind (little-endian, not BigTIFF), without compression. */
class TiffFile {
 public:
  explicit TiffFile(Bytes file) : bytes(std::move(file)) {
    if (Number(0, 4) != 0x002A4949) throw std::runtime_error("no little-endian TIFF");
    const std::uint64_t directory = Number(4, 4);
    const std::uint64_t entries = Number(directory, 2);
    for (std::uint64_t entry = 0; entry < entries; ++entry) ReadEntry(directory + 2 + 12 * entry);
    EXPECT_EQ(Number(directory + 2 + 12 * entries, 4), 0U) << "one image";
  }

  std::vector<std::uint64_t> Values(unsigned tag) const {
    const auto found = tags.find(tag);
    return found == tags.end() ? std::vector<std::uint64_t>() : found->second;
  }
  std::uint64_t Value(unsigned tag) const { return Values(tag).at(0); }
  std::string Text(unsigned tag) const {
    const std::vector<std::uint64_t> characters = Values(tag);
    return {characters.begin(), characters.end()};
  }

  /** The bytes of all strips, one after the other. */
  Bytes Strips() const {
    Bytes all;
    const auto offsets = Values(kStripOffsets);
    const auto counts = Values(kStripByteCounts);
    for (std::size_t strip = 0; strip < offsets.size(); ++strip) {
      const auto from = bytes.begin() + static_cast<std::ptrdiff_t>(offsets[strip]);
      all.insert(all.end(), from, from + static_cast<std::ptrdiff_t>(counts.at(strip)));
    }
    return all;
  }

 private:
  std::uint64_t Number(std::uint64_t at, unsigned size) const {
    std::uint64_t number = 0;
    for (unsigned byte = size; byte-- > 0;) number = number << 8 | bytes.at(at + byte);
    return number;
  }

  void ReadEntry(std::uint64_t at) {
    const std::map<std::uint64_t, unsigned> sizes = {{1, 1}, {2, 1}, {3, 2}, {4, 4}};
    const unsigned size = sizes.at(Number(at + 2, 2));
    const std::uint64_t count = Number(at + 4, 4);
    const std::uint64_t values = count * size <= 4 ? at + 8 : Number(at + 8, 4);
    auto &tag = tags[static_cast<unsigned>(Number(at, 2))];
    for (std::uint64_t index = 0; index < count; ++index) tag.push_back(Number(values + index * size, size));
  }

  Bytes bytes;
  std::map<unsigned, std::vector<std::uint64_t>> tags;
};

/** A byte of a sample, the most significant one first. */
std::uint8_t ByteOf(std::uint32_t band, std::uint32_t row, std::uint32_t column, std::uint32_t byte) {
  std::uint32_t mixed = band * 0x9E3779B1 + row * 0x85EBCA77 + column * 0xC2B2AE3D + byte * 0x27D4EB2F;
  mixed = (mixed ^ mixed >> 15) * 0x2C1B3C6D;
  return static_cast<std::uint8_t>(mixed >> 24);
}

/** The samples of `image` in mode B, as the file has them. */
Bytes Blocks(const ImageSpec &image) {
  Bytes bytes;
  for (std::uint32_t block = 0; block < image.BlocksPerRow() * image.BlocksPerColumn(); ++block) {
    const std::uint32_t top = block / image.BlocksPerRow() * image.BlockHeight();
    const std::uint32_t left = block % image.BlocksPerRow() * image.BlockWidth();
    for (std::uint32_t band = 0; band < image.bands.size(); ++band) {
      for (std::uint32_t pixel = 0; pixel < image.BlockHeight() * image.BlockWidth(); ++pixel) {
        const std::uint32_t row = top + pixel / image.BlockWidth();
        const std::uint32_t column = left + pixel % image.BlockWidth();
        for (std::uint32_t byte = 0; byte < image.bits / 8; ++byte) bytes.push_back(ByteOf(band, row, column, byte));
      }
    }
  }
  return bytes;
}

/** One sample in the machine's order: a complex number is two numbers. */
void PutSample(const ImageSpec &image, std::uint32_t band, std::uint32_t row, std::uint32_t column, Bytes &bytes) {
  const std::uint32_t number = image.pixelValueType == "C" ? image.bits / 16 : image.bits / 8;
  for (std::uint32_t first = 0; first < image.bits / 8; first += number) {
    for (std::uint32_t byte = number; byte-- > 0;) bytes.push_back(ByteOf(band, row, column, first + byte));
  }
}

/** The samples of `bands` as a TIFF has them. */
Bytes Expected(const ImageSpec &image, const std::vector<std::uint32_t> &bands) {
  const bool isSeparate = bands.size() > 4;
  Bytes bytes;
  for (std::size_t plane = 0; plane < (isSeparate ? bands.size() : 1); ++plane) {
    for (std::uint32_t row = 0; row < image.rows; ++row) {
      for (std::uint32_t column = 0; column < image.columns; ++column) {
        if (isSeparate) {
          PutSample(image, bands[plane], row, column, bytes);
        } else {
          for (const std::uint32_t band : bands) PutSample(image, band, row, column, bytes);
        }
      }
    }
  }
  return bytes;
}

/** An image of 7 x 5 pixels in 2 x 2 blocks. */
ImageSpec BlockedImage(const std::string &type, std::uint32_t bits, std::size_t bands) {
  ImageSpec image;
  image.rows = 5;
  image.columns = 7;
  image.blockHeight = 3;
  image.blockWidth = 4;
  image.pixelValueType = type;
  image.bits = bits;
  image.bands.assign(bands, {"M", 0, {}});
  image.representation = bands == 1 ? "MONO" : "MULTI";
  image.data = Blocks(image);
  return image;
}

struct TypeCase {
  std::string type; /**< PVTYPE */
  std::uint32_t bits;
  std::size_t bands;
  unsigned format; /**< SampleFormat: 1 unsigned, 2 signed, 3 real, 6 complex */
};

class ExportedType : public ProgramTest, public testing::WithParamInterface<TypeCase> {};

TEST_P(ExportedType, HasTheSamplesOfTheImage) {
  const ImageSpec image = BlockedImage(GetParam().type, GetParam().bits, GetParam().bands);
  NitfBuilder().Image(image).Write(PathOf("a.ntf"));
  const ProgramRun run = Run({"export", "a.ntf", "-o", "a.tif"});
  ASSERT_EQ(run.exitCode, 0) << run.errors;
  const TiffFile tiff(ReadFile(PathOf("a.tif")));
  std::vector<std::uint32_t> bands;
  for (std::uint32_t band = 0; band < image.bands.size(); ++band) bands.push_back(band);
  EXPECT_EQ(tiff.Values(kBits), std::vector<std::uint64_t>(bands.size(), image.bits));
  EXPECT_EQ(tiff.Value(kSampleFormat), GetParam().format);
  EXPECT_EQ(tiff.Value(kPlanarConfiguration), bands.size() > 4 ? 2U : 1U);
  EXPECT_EQ(tiff.Values(kExtraSamples), std::vector<std::uint64_t>(bands.size() - 1, 0));
  EXPECT_EQ(tiff.Strips(), Expected(image, bands));
}

INSTANTIATE_TEST_SUITE_P(Program, ExportedType,
                         testing::Values(TypeCase{"INT", 8, 1, 1}, TypeCase{"INT", 16, 3, 1}, TypeCase{"INT", 32, 2, 1},
                                         TypeCase{"INT", 64, 1, 1}, TypeCase{"SI", 8, 4, 2}, TypeCase{"SI", 16, 5, 2},
                                         TypeCase{"SI", 32, 1, 2}, TypeCase{"SI", 64, 1, 2}, TypeCase{"R", 32, 6, 3},
                                         TypeCase{"R", 64, 1, 3}, TypeCase{"C", 64, 2, 6}),
                         [](const auto &test) { return test.param.type + std::to_string(test.param.bits); });

using Export = ProgramTest;

TEST_F(Export, ChosenBandsInTheirOrderWithTheirNames) {
  ImageSpec image = BlockedImage("INT", 16, 6);
  image.bands[2].representation = "R";
  image.fields["ISUBCAT"] = "\xB5m"; /* Latin-1, which the text of a TIFF isn't */
  NitfBuilder().Image(SmallImage()).Image(image).Write(PathOf("a.ntf"));
  const ProgramRun run = Run({"export", "a.ntf", "-o", "a.tiff", "--image", "1", "--bands", "5,2"});
  ASSERT_EQ(run.exitCode, 0) << run.errors;
  const TiffFile tiff(ReadFile(PathOf("a.tiff")));
  EXPECT_EQ(tiff.Strips(), Expected(image, {5, 2}));
  const std::string names = "band 5: IREPBAND=M ISUBCAT=?m\nband 2: IREPBAND=R ISUBCAT=?m";
  EXPECT_EQ(tiff.Text(kDescription), names + '\0');
}

TEST_F(Export, ColorsAreThoseOfTheImage) {
  ImageSpec rgb = BlockedImage("INT", 8, 3);
  rgb.representation = "RGB";
  ImageSpec indexed = SmallImage();
  indexed.representation = "RGB/LUT";
  indexed.bands = {{"LU", 3, {1, 2, 3, 4, 5, 6, 7, 8, 9}}}; /* three colours: red 1 2 3, green 4 5 6, blue 7 8 9 */
  ImageSpec bits = SmallImage();
  bits.pixelValueType = "B";
  bits.bits = 1;
  bits.data = {0b10110100};
  NitfBuilder().Image(rgb).Image(indexed).Image(bits).Write(PathOf("a.ntf"));
  const auto exported = [&](const std::vector<std::string> &options) {
    std::vector<std::string> command = {"export", "a.ntf", "-o", "a.tif", "--force"};
    command.insert(command.end(), options.begin(), options.end());
    const ProgramRun run = Run(command);
    EXPECT_EQ(run.exitCode, 0) << run.errors;
    return TiffFile(ReadFile(PathOf("a.tif")));
  };
  constexpr unsigned kGray = 1;
  constexpr unsigned kRgb = 2;
  constexpr unsigned kPalette = 3;
  const TiffFile colors = exported({});
  EXPECT_EQ(colors.Value(kPhotometric), kRgb);
  EXPECT_EQ(colors.Values(kExtraSamples), std::vector<std::uint64_t>());
  EXPECT_EQ(exported({"--bands", "2,1,0"}).Value(kPhotometric), kGray);

  const TiffFile table = exported({"--image", "1"});
  EXPECT_EQ(table.Value(kPhotometric), kPalette);
  std::vector<std::uint64_t> map(768, 0);
  for (std::size_t part = 0; part < 3; ++part) {
    for (std::size_t color = 0; color < 3; ++color) map[256 * part + color] = 257 * (3 * part + color + 1);
  }
  EXPECT_EQ(table.Values(kColorMap), map);
  EXPECT_EQ(table.Strips(), indexed.data);

  const TiffFile bilevel = exported({"--image", "2"});
  EXPECT_EQ(bilevel.Values(kBits), std::vector<std::uint64_t>{8});
  EXPECT_EQ(bilevel.Strips(), (Bytes{1, 0, 1, 1, 0, 1}));
}

struct LargeCase {
  const char *name;
  std::uint32_t rows;
  std::uint32_t columns;
  std::uint32_t blockRows;
  std::size_t strips;
};

class LargeExport : public ProgramTest, public testing::WithParamInterface<LargeCase> {};

/** Five bands of bytes, in as many planes. */
TEST_P(LargeExport, HasTheSamplesInSeveralStrips) {
  ImageSpec image = BlockedImage("INT", 8, 5);
  image.rows = GetParam().rows;
  image.columns = image.blockWidth = GetParam().columns;
  image.blockHeight = GetParam().blockRows;
  image.fields["NPPBH"] = "0000";
  image.data = Blocks(image);
  NitfBuilder().Image(image).Write(PathOf("a.ntf"));
  const ProgramRun run = Run({"export", "a.ntf", "-o", "a.tif"});
  ASSERT_EQ(run.exitCode, 0) << run.errors;
  const TiffFile tiff(ReadFile(PathOf("a.tif")));
  EXPECT_EQ(tiff.Values(kStripOffsets).size(), GetParam().strips);
  EXPECT_TRUE(tiff.Strips() == Expected(image, {0, 1, 2, 3, 4}));
}

INSTANTIATE_TEST_SUITE_P(Program, LargeExport,
                         testing::Values(LargeCase{"StripsAcrossReads", 4000, 1000, 1500, 15},
                                         LargeCase{"PlanesInTwoGroups", 1, 14000000, 1, 5}),
                         [](const auto &test) { return std::string(test.param.name); });

struct Refusal {
  std::vector<std::string> options;
  int exitCode;
  std::string words;
};

class RefusedExport : public ProgramTest, public testing::WithParamInterface<Refusal> {};

TEST_P(RefusedExport, IsExplainedAndLeavesNothing) {
  NitfBuilder().Image(SmallImage()).Write(PathOf("a.ntf"));
  std::filesystem::create_symlink("a.ntf", PathOf("link.tif"));
  std::filesystem::create_symlink("/dev/full", PathOf("full.tif"));
  const std::string cut = ReadText("a.ntf");
  WriteText("cut.ntf", cut.substr(0, cut.size() - 2));
  NitfBuilder().Image(SmallImage({{"NROWS", "00000000"}})).Write(PathOf("flat.ntf"));
  NitfBuilder().Image(SmallImage({{"NCOLS", "00000000"}})).Write(PathOf("thin.ntf"));
  const std::vector<std::string> before = FilesInFolder();
  std::vector<std::string> command = {"export"};
  command.insert(command.end(), GetParam().options.begin(), GetParam().options.end());
  const ProgramRun run = Run(command);
  EXPECT_EQ(run.exitCode, GetParam().exitCode);
  EXPECT_NE(run.errors.find(GetParam().words), std::string::npos) << run.errors;
  EXPECT_EQ(FilesInFolder(), before);
  EXPECT_EQ(ReadText("a.ntf"), cut);
}

INSTANTIATE_TEST_SUITE_P(
    Program, RefusedExport,
    testing::Values(Refusal{{"a.ntf", "-o", "a.png"}, 2, "'a.png' doesn't end in .tif or .tiff"},
                    Refusal{{"a.ntf", "-o", "b.tif", "--image", "1"}, 2, "no image 1: the file has 1 image"},
                    Refusal{{"a.ntf", "-o", "b.tif", "--bands", "0,1"}, 2, "no band 1"},
                    Refusal{{"a.ntf", "-o", "b.tif", "--bands", "0,"}, 2, "'0,' is not a list of band numbers"},
                    Refusal{{"a.ntf", "-o", "b.tif", "--compress", "lzw"}, 2, "lzw"},
                    Refusal{{"a.ntf", "-o", "link.tif", "--force"}, 2, "is an input of the command"},
                    Refusal{{"a.ntf", "-o", "full.tif"}, 1, "full.tif: already exists"},
                    Refusal{{"a.ntf", "-o", "full.tif", "--force"}, 1, "full.tif: no space left on device (status -5)"},
                    Refusal{{"none.ntf", "-o", "b.tif"}, 1, "none.ntf: no such file"},
                    Refusal{{"flat.ntf", "-o", "b.tif"}, 1, "flat.ntf: "},
                    Refusal{{"thin.ntf", "-o", "b.tif"}, 1, "thin.ntf: "},
                    Refusal{{"cut.ntf", "-o", "b.tif"}, 1, "cut.ntf: "}));

}  // namespace
