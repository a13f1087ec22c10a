// The floor plan of docs/architecture.md: includes go down, never up and never in a circle, and each third-party
// library is used in one folder.
#include "include_graph.h"

#include <fstream>
#include <regex>

#include <gtest/gtest.h>

namespace {

const IncludeGraph &Includes() {
  static const IncludeGraph graph = ReadIncludes(PROJECT_FOLDER);
  return graph;
}

std::string Join(const std::vector<std::string> &names) {
  std::string text;
  for (const std::string &name : names) text += "\n  " + name;
  return text;
}

/** The rooms of the library, from the top floor down. What stands together is on one floor. */
const std::vector<std::set<std::string>> kFloors = {
    {"ntf/common/exports"},
    {"ntf/common/compose", "ntf/common/save"},
    {"ntf/common/access"},
    {"ntf/common/images", "ntf/common/drawings", "ntf/common/extensions"},
    {"ntf/common/headers"},
    {"ntf/common/table"},
    {"include", "include/internal", "services/platform"},
};

/** The floor of a room, counted from the top; none for folders that aren't the library's. */
std::size_t FloorOf(const std::string &folder) {
  std::size_t floor = 0;
  while (floor < kFloors.size() && kFloors[floor].count(folder) == 0) ++floor;
  return floor;
}

TEST(House, EveryIncludeInQuotesIsAFileOfTheProject) {
  EXPECT_TRUE(Includes().unresolved.empty()) << Join(Includes().unresolved);
  EXPECT_GT(Includes().units.size(), 150U);
}

TEST(House, NoCircle) {
  EXPECT_TRUE(FindCircle(Includes().units).empty()) << "files:" << Join(FindCircle(Includes().units));
  EXPECT_TRUE(FindCircle(Includes().folders).empty()) << "folders:" << Join(FindCircle(Includes().folders));
}

TEST(House, IncludesOfTheLibraryGoDown) {
  for (const auto &[folder, targets] : Includes().folders) {
    if (folder.rfind("ntf/common", 0) != 0) continue;
    ASSERT_LT(FloorOf(folder), kFloors.size()) << folder << " is no room of the plan";
    for (const std::string &target : targets) {
      EXPECT_LT(FloorOf(target), kFloors.size()) << folder << " -> " << target;
      EXPECT_LT(FloorOf(folder), FloorOf(target)) << folder << " -> " << target;
    }
  }
}

TEST(House, TheFrameworkKnowsNoFormatAndTheProgramOneDoor) {
  for (const auto &[unit, targets] : Includes().units) {
    for (const std::string &target : targets) {
      const bool isCore = target.rfind("ntf/", 0) == 0;
      const bool maySee = unit.rfind("ntf/", 0) == 0 || unit == "tools/ntf/core";
      EXPECT_TRUE(!isCore || maySee) << unit << " -> " << target;
    }
  }
}

struct ForeignLibrary {
  const char *headers; /**< a regular expression */
  const char *folder;
};

TEST(House, EachThirdPartyLibraryIsUsedInOneFolder) {
  const ForeignLibrary libraries[] = {
      {"jpeglib\\.h|jerror\\.h", "services/kscodec/jpeg"},
      {"openjpeg\\.h", "services/kscodec/jpeg2000"},
      {"tiff.*\\.h", "services/kscodec"},
      {"cairo.*|ft2build\\.h|freetype/.*|fontconfig/.*", "services/ksvect/paint"},
      {"png\\.h|zlib\\.h|isa-l.*|CLI/.*|nlohmann/.*", "tools/ntf"},
  };
  // Of the language, of the processor, and of the operating system in the files that know it.
  const std::regex language("[a-z_0-9]+|std[a-z]+\\.h|uchar\\.h|[a-z]mmintrin\\.h|windows\\.h");
  const std::regex system("[a-z_]+\\.h|sys/[a-z]+\\.h");
  for (const ForeignInclude &include : Includes().foreign) {
    if (std::regex_match(include.header, language)) continue;
    const bool knowsSystem = std::regex_match(include.file, std::regex(".*_posix\\.cpp|services/kscore/pages\\.cpp"));
    if (knowsSystem && std::regex_match(include.header, system)) continue;
    const auto *const library = std::find_if(
        std::begin(libraries), std::end(libraries),
        [&](const ForeignLibrary &one) { return std::regex_match(include.header, std::regex(one.headers)); });
    ASSERT_NE(library, std::end(libraries)) << include.file << " includes <" << include.header << ">";
    EXPECT_EQ(std::filesystem::path(include.file).parent_path(), library->folder)
        << include.file << ": " << include.header;
  }
}

/** The tests above can fail. */
TEST(House, CirclesAreFound) {
  EXPECT_EQ(FindCircle({{"a", {"b"}}, {"b", {"c"}}, {"c", {"b"}}}), (std::vector<std::string>{"b", "c"}));
  EXPECT_TRUE(FindCircle({{"a", {"b", "c"}}, {"b", {"c"}}, {"c", {}}}).empty());
}

TEST(House, IsDrawn) {
  std::ofstream("house.dot") << Draw(Includes().folders);
  EXPECT_NE(Draw(Includes().folders).find("\"ntf/common/images\" -> \"ntf/common/headers\""), std::string::npos);
}

}  // namespace
