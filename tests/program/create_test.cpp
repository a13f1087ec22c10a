// Files that the program builds and changes.
#include "cgm_builder.h"
#include "png_file.h"
#include "program_test.h"

#include <filesystem>

#include <nlohmann/json.hpp>
#include <png.h>

namespace {

using Json = nlohmann::json;

class Create : public ProgramTest {
 protected:
  void SetUp() override {
    std::string gray = "P5\n# made by hand\n40 30\n255\n";
    gray.append(40 * 30, '\x80');
    WriteText("gray.pgm", gray);
    std::string color = "P6 20 10 255\n";
    for (int i = 0; i < 200; ++i) color += std::string("\xF0\x20\x10", 3);
    WriteText("color.ppm", color);
    WriteText("notes.txt", "some words\n");
    CgmCoding coding;
    coding.directColor = true;
    CgmBuilder drawing(coding, {0, 30}, {40, 0});
    drawing.Add(5, 22, drawing.New().Enumeration(1));
    drawing.Add(5, 23, drawing.New().Direct(0x00FF00));
    drawing.Add(4, 11, drawing.New().Points({{22, 12}, {38, 28}}));
    const Bytes bytes = drawing.Finish();
    WriteText("box.cgm", std::string(bytes.begin(), bytes.end()));
  }
  Json Describe(const std::string &name) const { return Json::parse(Run({"info", "--json", name}).output); }
  static std::uint32_t At(const PngFile &picture, std::uint32_t row, std::uint32_t column) {
    const auto part = [&](std::uint32_t index) {
      return static_cast<std::uint32_t>(picture.Sample(row, 3 * column + index));
    };
    return part(0) << 16 | part(1) << 8 | part(2);
  }
};

TEST_F(Create, BuildsWhatAllCommandsTake) {
  const ProgramRun run = Run({"create",     "-o",        "a.ntf",     "--title", "Gr\u00fc\u00dfe",
                              "--security", "R",         "--origin",  "HERE",    "--background",
                              "102030",     "--image",   "gray.pgm",  "--image", "color.ppm",
                              "--at",       "3,5",       "--quality", "100",     "--attach",
                              "1",          "--graphic", "box.cgm",   "--text",  "notes.txt"});
  ASSERT_EQ(run.exitCode, 0) << run.errors;
  const ProgramRun check = Run({"check", "a.ntf"});
  EXPECT_EQ(check.exitCode, 0);
  EXPECT_EQ(check.output, "");
  const Json file = Describe("a.ntf");
  EXPECT_EQ(file["file"]["FTITLE"], "Gr\u00fc\u00dfe");
  EXPECT_NE(ReadText("a.ntf").find("Gr\xfc\xdf"
                                   "e"),
            std::string::npos)
      << "header texts are Latin-1";
  EXPECT_EQ(file["file"]["FSCLAS"], "R");
  EXPECT_EQ(file["file"]["OSTAID"], "HERE");
  EXPECT_EQ(file["file"]["FBKGC"], Json({0x10, 0x20, 0x30}));
  EXPECT_EQ(file["file"]["FL"], std::filesystem::file_size(PathOf("a.ntf")));
  ASSERT_EQ(file["images"].size(), 2U);
  EXPECT_EQ(file["images"][0]["IREP"], "MONO");
  EXPECT_EQ(file["images"][1]["IREP"], "YCbCr601");
  EXPECT_EQ(file["images"][1]["ILOC"], "0000300005");
  EXPECT_EQ(file["images"][1]["IALVL"], 1);
  EXPECT_EQ(file["graphics"][0]["SDLVL"], 3);
  EXPECT_EQ(Run({"text", "a.ntf", "0"}).output, "some words\n");
  ASSERT_EQ(Run({"extract", "a.ntf", "-o", "out"}).exitCode, 0);
  EXPECT_TRUE(std::filesystem::exists(PathOf("out/image-001.jpg")));
  EXPECT_TRUE(std::filesystem::exists(PathOf("out/graphic-000.cgm")));

  ASSERT_EQ(Run({"render", "a.ntf", "-o", "a.png"}).exitCode, 0);
  const PngFile picture = DecodePng(ReadText("a.png"));
  EXPECT_EQ(picture.width, 40U);
  EXPECT_EQ(picture.height, 30U);
  EXPECT_EQ(At(picture, 1, 1), 0x808080U);
  EXPECT_EQ(At(picture, 20, 30), 0x00FF00U);
  const std::uint32_t color = At(picture, 8, 15);
  EXPECT_NEAR(static_cast<int>(color >> 16), 0xF0, 3);
  EXPECT_NEAR(static_cast<int>(color >> 8 & 0xFF), 0x20, 3);
  EXPECT_NEAR(static_cast<int>(color & 0xFF), 0x10, 3);
}

TEST_F(Create, AppendsAndChangesAndKeepsTheRest) {
  ASSERT_EQ(Run({"create", "-o", "a.ntf", "--image", "gray.pgm"}).exitCode, 0);
  ASSERT_EQ(
      Run({"append", "a.ntf", "-o", "b.ntf", "--text", "notes.txt", "--image", "gray.pgm", "--level", "9"}).exitCode,
      0);
  const ProgramRun set = Run({"set", "b.ntf", "-o", "c.ntf", "TXTITL=A note", "TSCLAS=C", "--text", "0"});
  ASSERT_EQ(set.exitCode, 0) << set.errors;
  ASSERT_EQ(Run({"set", "c.ntf", "-o", "c.ntf", "--force", "ILOC=-7,12", "IID1=Terrain", "--image", "1"}).exitCode, 0);
  const Json file = Describe("c.ntf");
  EXPECT_EQ(file["texts"][0]["TXTITL"], "A note");
  EXPECT_EQ(file["texts"][0]["TSCLAS"], "C");
  EXPECT_EQ(file["images"][1]["ILOC"], "-000700012");
  EXPECT_EQ(file["images"][1]["IID1"], "Terrain");
  EXPECT_EQ(file["images"][1]["IDLVL"], 9);
  EXPECT_EQ(Run({"check", "c.ntf"}).output, "");
}

TEST_F(Create, QualityIsThatOfTheQuantisation) {
  // The table of a gray picture, in one byte each: all 1 at the best quality, all 255 at the worst.
  const auto table = [&](const std::vector<std::string> &quality) {
    std::vector<std::string> command = {"create", "-o", "a.ntf", "--force", "--image", "gray.pgm"};
    command.insert(command.end(), quality.begin(), quality.end());
    EXPECT_EQ(Run(command).exitCode, 0);
    const std::string file = ReadText("a.ntf");
    return file.substr(file.find("\xFF\xDB") + 5, 64);
  };
  EXPECT_EQ(table({"--quality", "100"}), std::string(64, '\x01'));
  EXPECT_EQ(table({"--quality", "1"}), std::string(64, '\xff'));
  EXPECT_EQ(table({}), table({"--quality", "97"}));
  EXPECT_NE(table({}), table({"--quality", "96"}));
}

TEST_F(Create, WarnsOfWhatAPictureLoses) {
  // 1 x 1 pixels of 16 bits, with alpha.
  png_image image = {};
  image.version = PNG_IMAGE_VERSION;
  image.width = image.height = 1;
  image.format = PNG_FORMAT_LINEAR_RGB_ALPHA;
  const std::uint16_t pixel[] = {0, 0, 0, 0};
  ASSERT_NE(png_image_write_to_file(&image, PathOf("deep.png").c_str(), 0, pixel, 0, nullptr), 0);
  const ProgramRun run = Run({"create", "-o", "a.ntf", "--image", "deep.png"});
  EXPECT_EQ(run.exitCode, 0);
  EXPECT_NE(run.errors.find("deep.png: warning: transparent pixels"), std::string::npos) << run.errors;
  EXPECT_NE(run.errors.find("deep.png: warning: samples of 16 bits"), std::string::npos) << run.errors;
}

}  // namespace
