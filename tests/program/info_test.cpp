// ntf info.
#include "program_test.h"

#include <nlohmann/json.hpp>

namespace {

using Json = nlohmann::json;

ImageSpec MaskedImage() {
  ImageSpec image;
  image.rows = 2;
  image.columns = 4;
  image.blockWidth = 2;
  image.compression = "NM";
  image.level = 3;
  image.locationRow = 10;
  image.locationColumn = 20;
  image.mask = MaskSpec{{0, 0xFFFFFFFF}, {}, Bytes{7}};
  image.data = {1, 2, 3, 4};
  image.fields = {{"ICOM1", "seen from above"}, {"UDID", "ABCDEF00003xyz"}};
  return image;
}

ImageSpec ColorImage() {
  ImageSpec image;
  image.rows = 1;
  image.columns = 2;
  image.representation = "RGB";
  image.mode = 'P';
  image.bands = {{"R", 0, {}}, {"G", 0, {}}, {"B", 0, {}}};
  image.level = 4;
  image.data = {1, 2, 3, 4, 5, 6};
  return image;
}

NitfBuilder FullFile() {
  return NitfBuilder()
      .Field("FTITLE", "  caf\xe9 \x80\xff")
      .Field("FBKGC", std::string("\0\x80\xff", 3))
      .Field("FSCOP", "")
      .Image(MaskedImage())
      .Image(ColorImage())
      .Text({"some words", {{"TXTITL", "A note"}}})
      .DataExtension({"SAMPLE_DES", "user data", {1, 2, 3}});
}

class Info : public ProgramTest {
 protected:
  Json Describe(const NitfBuilder &builder) const {
    builder.Write(PathOf("a.ntf"));
    const ProgramRun run = Run({"info", "--json", "a.ntf"});
    EXPECT_EQ(run.exitCode, 0) << run.errors;
    return Json::parse(run.output);
  }
  /** Every member of `expected` is in `description`. */
  static void ExpectHas(const Json &description, const Json &expected) {
    Json merged = description;
    merged.merge_patch(expected);
    EXPECT_EQ(merged, description);
  }
};

TEST_F(Info, JsonHasTheFieldsOfAllHeaders) {
  const Json description = Describe(FullFile());
  ExpectHas(description["file"], {{"FHDR", "NITF"},
                                  {"FVER", "02.10"},
                                  {"CLEVEL", 3},
                                  {"FTITLE", "caf\u00e9 \u0080\u00ff"},
                                  {"FSCLAS", "U"},
                                  {"FBKGC", {0, 128, 255}},
                                  {"FSCOP", ""}, /* a blank number is a text */
                                  {"FL", FullFile().Build().size()},
                                  {"HL", FullFile().Header().size()},
                                  {"NUMI", 2}});
  EXPECT_EQ(description["canvas"], Json({{"width", 24}, {"height", 12}}));

  ASSERT_EQ(description["images"].size(), 2U);
  ExpectHas(description["images"][0], {{"index", 0},
                                       {"subheaderLength", FullFile().ImageSubheader(0).size()},
                                       {"dataLength", 4 + 6 + 1 + 2 * 4 + 4},
                                       {"NROWS", 2},
                                       {"NCOLS", 4},
                                       {"IC", "NM"},
                                       {"ILOC", "0001000020"},
                                       {"ICOM", Json::array({"seen from above"})},
                                       {"UDIDL", 17},
                                       {"UDID", "ABCDEF00003xyz"},
                                       {"mask", {{"IMDATOFF", 19}, {"BMRLNTH", 4}, {"TMRLNTH", 0}}}});
  EXPECT_EQ(description["images"][0]["mask"]["TPXCD"], Json::array({7}));
  const Json &color = description["images"][1];
  ExpectHas(color, {{"index", 1}, {"IDLVL", 4}});
  EXPECT_TRUE(color["mask"].is_null());
  ASSERT_EQ(color["bands"].size(), 3U);
  EXPECT_EQ(color["bands"][2]["IREPBAND"], "B");

  ASSERT_EQ(description["texts"].size(), 1U);
  ExpectHas(description["texts"][0], {{"TXTITL", "A note"}, {"dataLength", 10}});
  ASSERT_EQ(description["dataExtensions"].size(), 1U);
  ExpectHas(description["dataExtensions"][0], {{"DESID", "SAMPLE_DES"}, {"DESSHF", "user data"}});
  EXPECT_EQ(description["graphics"], Json::array());
  EXPECT_EQ(description["labels"], Json::array());

  ImageSpec tabled = ColorImage();
  tabled.representation = "RGB/LUT";
  tabled.mode = 'B';
  tabled.bands = {{"LU", 3, {1, 2, 3, 4, 5, 6}}};
  tabled.data = {0, 1};
  ExpectHas(Describe(NitfBuilder().Image(tabled))["images"][0]["bands"][0], {{"NLUTS", 3}, {"NELUT", 2}});
}

TEST_F(Info, AnyBytesInTextsGiveValidJson) {
  // 80 characters at a time through all values; U+0001 to U+00FF have their byte's value.
  for (int first = 1; first < 256; first += 80) {
    std::string title;
    for (int byte = first; byte < first + 80; ++byte)
      title += byte < 256 && byte != ' ' ? static_cast<char>(byte) : 'x';
    const auto text = Describe(NitfBuilder().Field("FTITLE", title))["file"]["FTITLE"].get<std::string>();
    const std::u16string wide = Wide(text);
    ASSERT_EQ(wide.size(), title.size());
    for (std::size_t at = 0; at < wide.size(); ++at) EXPECT_EQ(wide[at], static_cast<unsigned char>(title[at]));
  }
}

TEST_F(Info, CanvasThatCanNotBeMeasuredIsNull) {
  GraphicSpec graphic;
  graphic.fields = {{"SBND2", "0000000000"}}; /* its objects are its bounds */
  graphic.data = {'n', 'o', ' ', 'd', 'r', 'a', 'w', 'i', 'n', 'g'};
  const Json description = Describe(NitfBuilder().Graphic(graphic));
  EXPECT_TRUE(description["canvas"].is_null());
  EXPECT_LT(description["canvasStatus"], 0);
  ASSERT_EQ(description["graphics"].size(), 1U);
  EXPECT_EQ(description["graphics"][0]["SFMT"], "C");
}

TEST_F(Info, SeveralFilesAreAnArrayAndABadOneIsReported) {
  FullFile().Write(PathOf("a.ntf"));
  NitfBuilder().Write(PathOf("b \u00e4.ntf"));
  const ProgramRun run = Run({"info", "a.ntf", "none.ntf", "b \u00e4.ntf", "--json"});
  EXPECT_EQ(run.exitCode, 1);
  EXPECT_EQ(run.errors, "ntf: none.ntf: no such file (status -10)\n");
  const Json descriptions = Json::parse(run.output);
  ASSERT_EQ(descriptions.size(), 3U);
  EXPECT_EQ(descriptions[0]["name"], "a.ntf");
  EXPECT_EQ(descriptions[1], Json({{"name", "none.ntf"}, {"status", -10}, {"error", "no such file"}}));
  EXPECT_EQ(descriptions[2]["name"], "b \u00e4.ntf");
  EXPECT_TRUE(descriptions[2]["canvas"].is_null()) << "there is nothing to draw";
  EXPECT_NE(Run({"info", "b \u00e4.ntf"}).output.find("  canvas      nothing to draw\n"), std::string::npos);
}

TEST_F(Info, SummaryHasALineForEachSegment) {
  FullFile().Write(PathOf("a.ntf"));
  const ProgramRun run = Run({"info", "a.ntf"});
  EXPECT_EQ(run.exitCode, 0);
  for (const char *line : {"a.ntf\n", "  format      NITF 02.10, compliance level 3, ", "  canvas      24 x 12\n",
                           "  image 0     4 x 2, MONO, 1 band of 8 bits, IC NM, mode B, display level 3, ",
                           ", attached to nothing, at row 10 column 20, Sample\n",
                           "  image 1     2 x 1, RGB, 3 bands of 8 bits, IC NC, mode P, display level 4, ",
                           "  text 0      10 bytes, format STA, A note\n", "  extension 0 3 bytes, SAMPLE_DES\n"}) {
    EXPECT_NE(run.output.find(line), std::string::npos) << line << "\nis not in\n" << run.output;
  }
}

}  // namespace
