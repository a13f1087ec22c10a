// The copy of an image subheader in a stream file header, cut off behind every number of bytes (MIL-STD-2500C, 5.4.3):
// what the copy holds whole is in force, and all else is as the first pass read it.
#include "harness.h"
#include "headers/mask_table.h"

#include <algorithm>
#include <map>
#include <string>

#include <gtest/gtest.h>

using namespace ksntfx;

namespace {

/** A field of a subheader with its bytes, or fields that come into force together. */
struct Part {
  std::string name;
  std::string bytes;
};
using Parts = std::vector<Part>;

std::string Blanks(std::string text, std::size_t width) {
  text.resize(width, ' ');
  return text;
}

/** Bytes of a text with zeros in it. */
template <std::size_t size>
std::string Raw(const char (&text)[size]) {
  return {text, size - 1};
}

/** A masked image with a palette, comments and user data, in which every text has this letter. */
Parts Subheader(char letter, const std::string &rows, const std::string &userData) {
  const bool isFirst = letter == 'a';
  const auto text = [&](const char *name, std::size_t width) { return Part{name, std::string(width, letter)}; };
  const auto either = [&](const char *name, const std::string &first, const std::string &second) {
    return Part{name, isFirst ? first : second};
  };
  Parts parts = {{"IM", "IM"}, text("IID1", 10), text("IDATIM", 14), text("TGTID", 17), text("IID2", 80)};
  parts.push_back(either("ISCLAS", "R", "S"));
  for (const auto &[name, width] : std::initializer_list<std::pair<const char *, std::size_t>>{{"ISCLSY", 2},
                                                                                               {"ISCODE", 11},
                                                                                               {"ISCTLH", 2},
                                                                                               {"ISREL", 20},
                                                                                               {"ISDCTP", 2},
                                                                                               {"ISDCDT", 8},
                                                                                               {"ISDCXM", 4},
                                                                                               {"ISDG", 1},
                                                                                               {"ISDGDT", 8},
                                                                                               {"ISCLTX", 43},
                                                                                               {"ISCATP", 1},
                                                                                               {"ISCAUT", 40},
                                                                                               {"ISCRSN", 1},
                                                                                               {"ISSRDT", 8},
                                                                                               {"ISCTLN", 15},
                                                                                               {"ENCRYP", 1},
                                                                                               {"ISORCE", 42}}) {
    parts.push_back(text(name, width));
  }
  const std::string length = std::to_string(userData.size() + 3);
  for (const Part &part : {Part{"NROWS", rows},
                           either("NCOLS", "00000004", "00000006"),
                           either("PVTYPE", "INT", "B  "),
                           either("IREP", "MONO    ", "RGB/LUT "),
                           text("ICAT", 8),
                           either("ABPP", "08", "07"),
                           either("PJUST", "L", "R"),
                           either("ICORDS", "U", "G"),
                           text("IGEOLO", 60),
                           either("NICOM", "1", "2"),
                           Part{"comments", std::string(isFirst ? 80 : 160, letter)},
                           Part{"IC", "NM"},
                           Part{"NBANDS", "1"},
                           either("bands",
                                  "LU"
                                  "aaaaaa"
                                  "N"
                                  "aaa"
                                  "3"
                                  "00002"
                                  "\x01\x02\x03\x04\x05\x06",
                                  "M "
                                  "bbbbbb"
                                  "b"
                                  "bbb"
                                  "1"
                                  "00003"
                                  "\x07\x08\x09"),
                           either("ISYNC", "0", "4"),
                           either("IMODE", "B", "S"),
                           either("NBPR", "0002", "0003"),
                           Part{"NBPC", "0001"},
                           either("NPPBH", "0002", "0003"),
                           either("NPPBV", "0002", "0001"),
                           either("NBPP", "08", "16"),
                           either("IDLVL", "007", "009"),
                           either("IALVL", "001", "002"),
                           either("ILOC", "00010-0002", "-000300004"),
                           either("IMAG", "1.0 ", "0.5 "),
                           Part{"UDIDL", std::string(5 - length.size(), '0') + length},
                           either("UDOFL", "001", "002"),
                           Part{"UDID", userData},
                           either("IXSHDL", "00007", "00009"),
                           either("IXSOFL", "003", "004"),
                           either("IXSHD", "tags", "others"),
                           either("IMDATOFF", Raw("\0\0\0\x13"), Raw("\0\0\0\x25")),
                           either("BMRLNTH", Raw("\0\4"), Raw("\0\5")),
                           either("TMRLNTH", Raw("\0\0"), Raw("\0\6")),
                           either("pad code", Raw("\0\x08\x11"), Raw("\0\x0C\x22\x33")),
                           either("masks", Raw("\0\0\0\0\0\0\0\4"), std::string(12, 'B') + std::string(12, 'T'))}) {
    parts.push_back(part);
  }
  return parts;
}

std::string Joined(const Parts &parts) {
  std::string all;
  for (const Part &part : parts) all += part.bytes;
  return all;
}

std::string BigEndian(std::uint32_t value, int bytes) {
  std::string text;
  for (int shift = 8 * (bytes - 1); shift >= 0; shift -= 8) text += static_cast<char>(value >> shift);
  return text;
}

std::string BandsOf(const ImageSubheader &image) {
  std::string text;
  for (std::uint32_t band = 0; band < image.bandsHeld; ++band) {
    const std::uint32_t tables = image.bandLutCounts[band];
    text += Blanks(std::string(BandRepresentationText(image.bandRepresentation[band])), 2);
    text += image.bandSubcategories[band] + std::string(image.bandFilterConditions[band]) +
            image.bandFilterCodes[band] + std::to_string(tables) + "0000" + std::to_string(image.bandLutEntries[band]);
    for (int shift = 16; shift >= (tables == 1 ? 16 : 0); shift -= 8) {
      for (std::uint32_t at = 0; at < image.lutCount; ++at) text += static_cast<char>(image.lut[at] >> shift);
    }
  }
  return text;
}

/** The parts of a record as the file has them. */
std::map<std::string, std::string> PartsOf(const ImageSubheader &image) {
  std::map<std::string, std::string> parts;
  ListFields(kImageTable, &image, false, [&](const FieldView &field) { parts[field.name] = field.text; });
  for (std::uint32_t at = 0; at < image.commentsHeld; ++at) parts["comments"] += image.comments[at];
  parts["bands"] = BandsOf(image);
  parts["IMDATOFF"] = BigEndian(image.maskDataOffset, 4);
  parts["BMRLNTH"] = BigEndian(image.blockMaskLength, 2);
  parts["TMRLNTH"] = BigEndian(image.padMaskLength, 2);
  const auto *const code = reinterpret_cast<const char *>(image.padCode);
  parts["pad code"] = BigEndian(image.padCodeBits, 2) + std::string(code, PadCodeBytes(image));
  for (const auto *const mask : {image.blockMask, image.padMask}) {
    if (mask != nullptr)
      parts["masks"].append(reinterpret_cast<const char *>(mask), std::size_t{image.maskEntries} * 4);
  }
  return parts;
}

class Replays : public testing::TestWithParam<const char *> {};

TEST_P(Replays, ChangeWhatTheyHoldWhole) {
  const Parts first = Subheader('a', "99999999", "data of a");
  const Parts second = Subheader('b', "00000002", GetParam());
  const std::string before = Joined(first);
  const std::string copy = Joined(second);
  ImageSpec place{.rows = 1, .columns = 1, .data = Bytes(40, 1)};
  const std::size_t tableBytes = 19;
  char digits[16];
  std::snprintf(digits, sizeof digits, "%06zu", before.size() - tableBytes);
  Bytes file = NitfBuilder().Image(place).Field("LISH1", digits).Field("LI1", "0000000059").Header();
  file.insert(file.end(), before.begin(), before.end());
  file.resize(file.size() + 40, 1);

  for (std::size_t bytes = 0; bytes <= copy.size(); ++bytes) {
    const Bytes replacement(copy.begin(), copy.begin() + static_cast<std::ptrdiff_t>(bytes));
    LoadedFile loaded(WithStreamHeader(file, replacement));
    ASSERT_EQ(loaded.status, SUCCESS) << bytes;
    std::map<std::string, std::string> expected;
    std::size_t end = 0;
    for (std::size_t at = 0; at < second.size(); ++at) {
      end += second[at].bytes.size();
      expected[first[at].name] = end <= bytes ? second[at].bytes : first[at].bytes;
    }
    // Data that were not reached don't stand beside the length of others.
    for (const auto &[length, data] : {std::pair{"UDIDL", "UDID"}, std::pair{"IXSHDL", "IXSHD"}}) {
      if (std::stoul(expected[length]) != expected[data].size() + 3) expected.erase(data);
    }
    const ImageSubheader &image = loaded.Image(0);
    ASSERT_EQ(PartsOf(image), expected) << bytes;
    const auto number = [&](const char *name) { return static_cast<std::uint32_t>(std::stoul(expected[name])); };
    ASSERT_EQ(image.rows, number("NROWS"));
    ASSERT_EQ(image.columns, number("NCOLS"));
    ASSERT_EQ(image.commentCount, number("NICOM"));
    ASSERT_EQ(image.blocksPerRow, number("NBPR"));
    ASSERT_EQ(image.blockHeight, number("NPPBV"));
    ASSERT_EQ(image.locationColumn, std::stoi(expected["ILOC"].substr(5)));
    ASSERT_EQ(image.rightJustified, expected["PJUST"] == "R" ? 1U : 0U);
    ASSERT_EQ(image.representation, expected["IREP"] == "MONO    " ? kMono : kRgbLut);
    ASSERT_EQ(loaded->streamBytesConsumed, bytes == copy.size() ? bytes : 0);
  }
}

/** Of the length that the first pass read, and of another one. */
INSTANTIATE_TEST_SUITE_P(StreamFile, Replays, testing::Values("data of b", "more data of b"));

}  // namespace
