// ntf text, extract, copy and check.
#include "cgm_builder.h"
#include "program_test.h"

#include <filesystem>

#include <nlohmann/json.hpp>

namespace {

using Json = nlohmann::json;

NitfBuilder FullFile() {
  return NitfBuilder()
      .Image(SmallImage())
      .Graphic({2, 1, 0, 0, 'C', {'d', 'r', 'a', 'w'}, {}})
      .Text({"some words", {{"TXTITL", "A note"}}})
      .Text({"caf\xe9\x1b[2J\n", {}})
      .DataExtension({"SAMPLE_DES", "user data", {7, 8, 9}});
}

class Segments : public ProgramTest {
 protected:
  void SetUp() override { FullFile().Write(PathOf("a.ntf")); }
};

TEST_F(Segments, TextIsPrintedAsItsBytes) {
  EXPECT_EQ(Run({"text", "a.ntf", "1"}).output, "caf\xe9\x1b[2J\n");
  EXPECT_EQ(Run({"text", "a.ntf"}).output,
            "== text 0: A note (STA, 10 bytes)\nsome words\n== text 1: Test text (STA, 9 bytes)\ncaf\xe9\x1b[2J\n");
  const ProgramRun missing = Run({"text", "a.ntf", "2"});
  EXPECT_EQ(missing.exitCode, 2);
  EXPECT_EQ(missing.errors, "ntf: a.ntf: there is no text 2: the file has 2 texts (status 87)\n");
}

TEST_F(Segments, ExtractWritesBodiesAndAManifest) {
  ASSERT_EQ(Run({"extract", "a.ntf", "-o", "out/deep"}).exitCode, 0);
  EXPECT_EQ(ReadText("out/deep/image-000.raw"), TextOf({1, 2, 3, 4, 5, 6}));
  EXPECT_EQ(ReadText("out/deep/graphic-000.cgm"), "draw");
  EXPECT_EQ(ReadText("out/deep/text-000.txt"), "some words");
  EXPECT_EQ(ReadText("out/deep/des-000.bin"), TextOf({7, 8, 9}));
  const Json manifest = Json::parse(ReadText("out/deep/manifest.json"));
  ASSERT_EQ(manifest["segments"].size(), 5U);
  const Json &text = manifest["segments"][2];
  EXPECT_EQ(text["kind"], "text");
  EXPECT_EQ(text["file"], "text-000.txt");
  EXPECT_EQ(text["subheader"]["TXTITL"], "A note");
  const std::string file = TextOf(FullFile().Build());
  EXPECT_EQ(file.substr(text["offset"], text["bytes"]), "some words");
}

TEST_F(Segments, ExtractWritesWhatWasChosenUnderANameOfItsData) {
  ImageSpec jpeg = SmallImage();
  jpeg.compression = "C3";
  jpeg.data = {0xFF, 0xD8, 0xFF, 0xE0};
  ImageSpec masked = jpeg;
  masked.compression = "M3";
  masked.mask = MaskSpec{{0}, {}, {}};
  ImageSpec jp2 = jpeg;
  jp2.compression = "C8";
  jp2.data = {0xFF, 0x4F, 0xFF, 0x51};
  ImageSpec tiled = jpeg;
  tiled.blockWidth = 2;
  NitfBuilder().Image(jpeg).Image(masked).Image(jp2).Image(tiled).Write(PathOf("b.ntf"));
  ASSERT_EQ(Run({"extract", "b.ntf", "-o", "out", "--image", "0", "--image", "1", "--image", "3"}).exitCode, 0);
  // What is extracted later joins the manifest.
  ASSERT_EQ(Run({"extract", "b.ntf", "-o", "out", "--force", "--image", "2"}).exitCode, 0);
  for (const char *name : {"image-000.jpg", "image-001.raw", "image-002.j2k", "image-003.jpg-blocks"}) {
    EXPECT_TRUE(std::filesystem::exists(PathOf(std::string("out/") + name))) << name;
    EXPECT_NE(ReadText("out/manifest.json").find(name), std::string::npos) << name;
  }
  EXPECT_NE(ReadText("out/manifest.json").find("blocks of 2 x 2 pixels, 2 across and 1 down"), std::string::npos);
}

TEST_F(Segments, ExtractOverwritesNothingAndFollowsNoLink) {
  std::filesystem::create_directory(PathOf("out"));
  WriteText("out/text-000.txt", "older");
  EXPECT_EQ(Run({"extract", "a.ntf", "-o", "out"}).exitCode, 1);
  EXPECT_EQ(ReadText("out/text-000.txt"), "older");
  EXPECT_EQ(std::distance(std::filesystem::directory_iterator(PathOf("out")), {}), 1) << "nothing else is written";
  EXPECT_EQ(Run({"extract", "a.ntf", "-o", "out", "--force"}).exitCode, 0);
  EXPECT_EQ(ReadText("out/text-000.txt"), "some words");

  WriteText("outside.txt", "mine");
  std::filesystem::remove(PathOf("out/text-000.txt"));
  std::filesystem::create_symlink(PathOf("outside.txt"), PathOf("out/text-000.txt"));
  EXPECT_EQ(Run({"extract", "a.ntf", "-o", "out", "--force"}).exitCode, 1);
  EXPECT_EQ(ReadText("outside.txt"), "mine");
}

TEST_F(Segments, CopyReplacesAFileOnlyWithForce) {
  ASSERT_EQ(Run({"copy", "a.ntf", "b.ntf"}).exitCode, 0);
  EXPECT_EQ(ReadText("b.ntf"), TextOf(FullFile().Build()));
  WriteText("c.ntf", "older");
  const ProgramRun taken = Run({"copy", "a.ntf", "c.ntf"});
  EXPECT_EQ(taken.exitCode, 1);
  EXPECT_EQ(taken.errors, "ntf: c.ntf: already exists (use --force to overwrite) (status -5)\n");
  EXPECT_EQ(ReadText("c.ntf"), "older");
  for (const char *target : {"c.ntf", "a.ntf"}) {
    EXPECT_EQ(Run({"copy", "a.ntf", target, "--force"}).exitCode, 0);
    EXPECT_EQ(ReadText(target), TextOf(FullFile().Build()));
  }
  EXPECT_EQ(FilesInFolder(), (std::vector<std::string>{"a.ntf", "b.ntf", "c.ntf"}));
}

TEST_F(Segments, NamesNeedNotBeUtf8) {
  const std::string name = "n\xff\xc3.ntf";
  ASSERT_EQ(Run({"copy", "a.ntf", name}).exitCode, 0);
  EXPECT_EQ(ReadText(name), TextOf(FullFile().Build()));
  EXPECT_EQ(Json::parse(Run({"info", "--json", name}).output)["name"], "n\uFFFD\uFFFD.ntf");
  EXPECT_EQ(Run({"text", name, "0"}).output, "some words");
  ASSERT_EQ(Run({"render", name, "--image", "0", "-o", "p\xff.png"}).exitCode, 0);
  ASSERT_EQ(Run({"append", name, "-o", "b\xff.ntf", "--text", "p\xff.png"}).exitCode, 0);
  EXPECT_EQ(Run({"text", "b\xff.ntf", "2"}).output, ReadText("p\xff.png"));
}

// ---- check --------------------------------------------------------------------------------------------------------

/** A file with one fault, and the words about it that follow the file's name. */
struct Faulty {
  const char *name;
  NitfBuilder file;
  std::string finding;
};

class FaultyFile : public ProgramTest, public testing::WithParamInterface<Faulty> {};

TEST_P(FaultyFile, IsReportedInOneLine) {
  GetParam().file.Write(PathOf("a.ntf"));
  const ProgramRun run = Run({"check", "a.ntf"});
  EXPECT_EQ(run.exitCode, 1);
  EXPECT_EQ(run.output, "a.ntf: " + GetParam().finding + "\n");
  const Json result = Json::parse(Run({"check", "--json", "a.ntf"}).output);
  EXPECT_EQ(result["ok"], false);
  EXPECT_FALSE(result.contains("status")) << "the file was read";
  const Json &findings = result["findings"];
  ASSERT_EQ(findings.size(), 1U);
  EXPECT_NE(GetParam().finding.find(findings[0]["field"].get<std::string>() + " at byte "), std::string::npos);
}

ImageSpec Masked(const MaskSpec &mask) {
  ImageSpec image = SmallImage();
  image.compression = "NM";
  image.mask = mask;
  return image;
}

ImageSpec TwoBlocks() {
  ImageSpec image = SmallImage({{"NBPR", "0002"}});
  image.data.assign(12, 1);
  return image;
}

NitfBuilder OneImage(const FieldTexts &fields) {
  return NitfBuilder().Image(SmallImage(fields));
}

// The header of a file of one image has 404 bytes, and its subheader 439.
INSTANTIATE_TEST_SUITE_P(
    Check, FaultyFile,
    testing::Values(Faulty{"FileLength", NitfBuilder().Field("FL", "000000000399"),
                           "FL at byte 342: is 399, but the file has 388 bytes"},
                    Faulty{"Date", NitfBuilder().Field("FDT", "20261340000000"),
                           "FDT at byte 25: is not a date: '20261340000000'"},
                    Faulty{"Characters", NitfBuilder().Field("FTITLE", "a\x07"),
                           "FTITLE at byte 39: has the byte 0x07, which is no character of the format"},
                    Faulty{"Digits", NitfBuilder().Field("FSCOP", "x"), "FSCOP at byte 286: is not a number: 'x    '"},
                    Faulty{"Blocks", NitfBuilder().Image(TwoBlocks()),
                           "image 0 NBPR at byte 795: 2 blocks of 3 pixels, but 3 pixels need 1"},
                    Faulty{"DataLength", OneImage({{"NBPP", "04"}, {"ABPP", "04"}}),
                           "image 0 IC at byte 777: the uncompressed data needs 3 bytes, but LI is 6"},
                    Faulty{"ActualBits", OneImage({{"ABPP", "09"}}), "image 0 ABPP at byte 772: 9 bits of 8"},
                    Faulty{"MaskRecords", NitfBuilder().Image(Masked({{0, 0}, {}, {}})),
                           "image 0 IMDATOFF at byte 843: is 18, but the mask table has 14 bytes"},
                    Faulty{"MaskEntry", NitfBuilder().Image(Masked({{6}, {}, {}})),
                           "image 0 BMR at byte 853: block 0 is beyond the data, at 6 of 6"},
                    Faulty{"LevelTwice", NitfBuilder().Image(SmallImage()).Graphic({1, 0, 0, 0, 'C', {}, {}}),
                           "graphic 0 SDLVL at byte 1073: display level 1 is used twice"},
                    Faulty{"LevelZero", NitfBuilder().Graphic({0, 0, 0, 0, 'C', {}, {}}),
                           "graphic 0 SDLVL at byte 612: is 0, but display levels start at 1"},
                    Faulty{"OwnLevel", NitfBuilder().Graphic({3, 3, 0, 0, 'C', {}, {}}),
                           "graphic 0 SALVL at byte 615: is attached to its own level 3"},
                    Faulty{"Attachment", NitfBuilder().Graphic({3, 2, 0, 0, 'C', {}, {}}),
                           "graphic 0 SALVL at byte 615: is attached to level 2, which no segment has"}),
    [](const auto &tested) { return tested.param.name; });

TEST_F(Segments, CheckNamesElementsOfADrawingThatAreSkipped) {
  constexpr std::size_t kData = 398 + 258;  // the headers of a file with one graphic
  CgmBuilder drawing;
  const std::size_t lineWidth = kData + drawing.bytes.size();
  drawing.Add(5, 3, drawing.New());
  drawing.Add(4, 1, drawing.New().Points({{0, 0}, {50, 50}}));
  NitfBuilder().Graphic({1, 0, 0, 0, 'C', drawing.Finish(), {}}).Write(PathOf("a.ntf"));
  EXPECT_EQ(Run({"check", "a.ntf"}).output, "a.ntf: graphic 0 data at byte " + std::to_string(lineWidth) +
                                                ": CGM element 5.3 is skipped: parameters are missing\n");
  EXPECT_EQ(Run({"render", "a.ntf", "-o", "a.png"}).exitCode, 0) << "the rest is drawn";
}

TEST_F(Segments, CheckFindsNothingInASoundFile) {
  const ProgramRun sound = Run({"check", "a.ntf"});
  EXPECT_EQ(sound.output, "");
  EXPECT_EQ(sound.exitCode, 0);
}

}  // namespace
