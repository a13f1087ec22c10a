// The floor plan of docs/architecture.md: includes go down, never up and never in a circle, and each third-party
// library is used in one folder.
#include "include_graph.h"

#include <algorithm>
#include <fstream>
#include <utility>

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

bool StartsWith(const std::string &text, const std::string &start) {
  return text.compare(0, start.size(), start) == 0;
}

bool EndsWith(const std::string &text, const std::string &end) {
  return text.size() >= end.size() && text.compare(text.size() - end.size(), end.size(), end) == 0;
}

/** The start of a third-party header's name, and the one folder that may include it. */
constexpr std::pair<const char *, const char *> kLibraries[] = {
    {"jpeglib.h", "services/kscodec/jpeg"},
    {"jerror.h", "services/kscodec/jpeg"},
    {"openjpeg.h", "services/kscodec/jpeg2000"},
    {"tiff", "services/kscodec"},
    {"cairo", "services/ksvect/paint"},
    {"ft2build.h", "services/ksvect/paint"},
    {"freetype/", "services/ksvect/paint"},
    {"fontconfig/", "services/ksvect/paint"},
    {"png.h", "tools/ntf"},
    {"zlib.h", "tools/ntf"},
    {"isa-l", "tools/ntf"},
    {"CLI/", "tools/ntf"},
    {"nlohmann/", "tools/ntf"},
};

/** Headers of the language, of the processor, and of the operating system in the files that know it. */
bool IsOfNoLibrary(const ForeignInclude &include) {
  const std::string &header = include.header;
  const bool isStandard = header.find('.') == std::string::npos && header.find('/') == std::string::npos;
  const bool isOfC = StartsWith(header, "std") || header == "uchar.h" || EndsWith(header, "mmintrin.h");
  const bool knowsSystem = EndsWith(include.file, "_posix.cpp") || include.file == "services/kscore/pages.cpp";
  return isStandard || isOfC || header == "windows.h" || knowsSystem;
}

TEST(House, EachThirdPartyLibraryIsUsedInOneFolder) {
  for (const ForeignInclude &include : Includes().foreign) {
    if (IsOfNoLibrary(include)) continue;
    const auto *const library = std::find_if(std::begin(kLibraries), std::end(kLibraries),
                                             [&](const auto &one) { return StartsWith(include.header, one.first); });
    ASSERT_NE(library, std::end(kLibraries)) << include.file << " includes <" << include.header << ">";
    EXPECT_EQ(std::filesystem::path(include.file).parent_path(), library->second)
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
