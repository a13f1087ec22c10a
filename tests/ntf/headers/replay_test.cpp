// The copy of an image subheader in a stream file header, cut off at the ends of its fields and beside them
// (MIL-STD-2500C, 5.4.3): what the copy holds whole is in force, and all else is as the first pass read it.
#include "field_list.h"
#include "harness.h"
#include "headers/mask_table.h"

#include <map>
#include <set>
#include <string>

#include <gtest/gtest.h>

using namespace ksntfx;

namespace {

/** Bytes of a text with zeros in it. */
template <std::size_t size>
std::string Raw(const char (&text)[size]) {
  return {text, size - 1};
}

const std::string kHead =
    "IM=IM IID1:10 IDATIM:14 TGTID:17 IID2:80 ISCLAS=S ISCLSY:2 ISCODE:11 ISCTLH:2 ISREL:20 ISDCTP:2 ISDCDT:8 "
    "ISDCXM:4 ISDG:1 ISDGDT:8 ISCLTX:43 ISCATP:1 ISCAUT:40 ISCRSN:1 ISSRDT:8 ISCTLN:15 ENCRYP:1 ISORCE:42 ";

/** A masked image of unknown rows, with a palette, a comment and user data. */
Fields FirstPass() {
  return ListOf(kHead +
                    "NROWS=99999999 NCOLS=00000004 PVTYPE=INT IREP=MONO~~~~ ICAT:8 ABPP=08 PJUST=L ICORDS=U "
                    "IGEOLO:60 NICOM=1 comments:80 IC=NM NBANDS=1 bands ISYNC=0 IMODE=B NBPR=0002 NBPC=0001 "
                    "NPPBH=0002 NPPBV=0002 NBPP=08 IDLVL=007 IALVL=001 ILOC=00010-0002 IMAG=1.0~ UDIDL=00012 "
                    "UDOFL=001 UDID=data-of-a IXSHDL=00007 IXSOFL=003 IXSHD=tags IMDATOFF BMRLNTH TMRLNTH "
                    "pad_code masks",
                {{"bands", "LUaaaaaaNaaa300002\x01\x02\x03\x04\x05\x06"},
                 {"IMDATOFF", Raw("\0\0\0\x13")},
                 {"BMRLNTH", Raw("\0\4")},
                 {"TMRLNTH", Raw("\0\0")},
                 {"pad_code", Raw("\0\x08\x11")},
                 {"masks", Raw("\0\0\0\0\0\0\0\4")}},
                'a');
}

/** Its copy, in which everything is another. */
Fields Copy(const std::string &userData) {
  return ListOf(kHead +
                    "NROWS=00000002 NCOLS=00000006 PVTYPE=B~~ IREP=RGB/LUT~ ICAT:8 ABPP=07 PJUST=R ICORDS=G "
                    "IGEOLO:60 NICOM=2 comments:160 IC=NM NBANDS=1 bands ISYNC=4 IMODE=S NBPR=0003 NBPC=0001 "
                    "NPPBH=0003 NPPBV=0001 NBPP=16 IDLVL=009 IALVL=002 ILOC=-000300004 IMAG=0.5~ UDIDL=000" +
                    std::to_string(userData.size() + 3) + " UDOFL=002 UDID=" + userData +
                    " IXSHDL=00009 IXSOFL=004 IXSHD=others IMDATOFF BMRLNTH TMRLNTH pad_code masks",
                {{"bands", "M bbbbbbbbbb100003\x07\x08\x09"},
                 {"IMDATOFF", Raw("\0\0\0\x25")},
                 {"BMRLNTH", Raw("\0\5")},
                 {"TMRLNTH", Raw("\0\6")},
                 {"pad_code", Raw("\0\x0C\x22\x33")},
                 {"masks", std::string(12, 'B') + std::string(12, 'T')}},
                'b');
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
    const std::string tag(BandRepresentationText(image.bandRepresentation[band]));
    text += tag + std::string(2 - tag.size(), ' ') + image.bandSubcategories[band] +
            std::string(image.bandFilterConditions[band]) + image.bandFilterCodes[band] + std::to_string(tables) +
            "0000" + std::to_string(image.bandLutEntries[band]);
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
  parts["pad_code"] = BigEndian(image.padCodeBits, 2) + std::string(code, PadCodeBytes(image));
  for (const auto *const mask : {image.blockMask, image.padMask}) {
    if (mask != nullptr)
      parts["masks"].append(reinterpret_cast<const char *>(mask), std::size_t{image.maskEntries} * 4);
  }
  return parts;
}

class Replays : public testing::TestWithParam<const char *> {};

TEST_P(Replays, ChangeWhatTheyHoldWhole) {
  const Fields first = FirstPass();
  const Fields second = Copy(GetParam());
  const std::string before = Joined(first);
  const std::string copy = Joined(second);
  ImageSpec place{.rows = 1, .columns = 1, .data = Bytes(40, 1)};
  const std::size_t tableBytes = 19;
  char digits[16];
  std::snprintf(digits, sizeof digits, "%06zu", before.size() - tableBytes);
  Bytes file = NitfBuilder().Image(place).Field("LISH1", digits).Field("LI1", "0000000059").Header();
  file.insert(file.end(), before.begin(), before.end());
  file.resize(file.size() + 40, 1);

  std::set<std::size_t> cuts = {0};
  std::size_t boundary = 0;
  for (const Field &field : second) {
    boundary += field.bytes.size();
    cuts.insert({boundary - 1, boundary, std::min(boundary + 1, copy.size())});
  }
  for (const std::size_t bytes : cuts) {
    const Bytes replacement(copy.begin(), copy.begin() + static_cast<std::ptrdiff_t>(bytes));
    LoadedFile loaded(WithStreamHeader(file, replacement));
    ASSERT_EQ(loaded.status, SUCCESS) << bytes;
    std::map<std::string, std::string> expected;
    std::size_t end = 0;
    for (std::size_t at = 0; at < second.size(); ++at) {
      end += second[at].bytes.size();
      expected[first[at].name] = end <= bytes ? second[at].bytes : first[at].bytes;
    }
    // Data that were not reached stay, as far as a new length counts them.
    for (const auto &[length, data] : {std::pair{"UDIDL", "UDID"}, std::pair{"IXSHDL", "IXSHD"}}) {
      const std::size_t counted = std::stoul(expected[length]);
      expected[data].resize(std::min(expected[data].size(), counted < 3 ? 0 : counted - 3));
      if (counted == 0) expected.erase(data);
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
INSTANTIATE_TEST_SUITE_P(StreamFile, Replays, testing::Values("data-of-b", "more-data-of-b"));

}  // namespace
