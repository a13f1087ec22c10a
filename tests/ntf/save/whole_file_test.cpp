// A file of each layout, field by field as the standard's tables have them, with a value of its own in each: read, it
// holds those values; saved, it is the same bytes; and texts that have become short are filled up.
#include "field_list.h"
#include "harness.h"
#include "headers/held_data.h"
#include "save/savenitf.h"

#include <map>
#include <string>

#include <gtest/gtest.h>

using namespace ksntfx;

namespace {

std::string Digits(std::size_t value, std::size_t width) {
  const std::string digits = std::to_string(value);
  return std::string(width - digits.size(), '0') + digits;
}

/** A length that counts three bytes more than the data, the overflow segment, and the data. */
Fields Extension(const char *length, const char *overflow, const char *data, const std::string &bytes) {
  return {{length, Digits(bytes.size() + 3, 5)}, {overflow, Digits(10 + bytes.size(), 3), '0'}, {data, bytes}};
}

enum class Event { None, ByDowngrade, Always };

/** The fills are those of the classification, the downgrade field and all others. */
Fields Security(const std::string &prefix, bool nitf20, char classification, const std::string &fills,
                Event event = Event::None) {
  Fields fields = ListOf(nitf20 ? "SCLAS:1 SCODE:40 SCTLH:40 SREL:40 SCAUT:20 SCTLN:20 SDWNG:6 SDEVT:40"
                                : "SCLAS:1 SCLSY:2 SCODE:11 SCTLH:2 SREL:20 SDCTP:2 SDCDT:8 SDCXM:4 SDG:1 SDGDT:8 "
                                  "SCLTX:43 SCATP:1 SCAUT:40 SCRSN:1 SSRDT:8 SCTLN:15");
  for (Field &field : fields) field = {prefix + field.name, field.bytes, fills[2]};
  fields[0] = {prefix + "SCLAS", std::string(1, classification), fills[0]};
  if (!nitf20) return fields;
  if (event == Event::None) fields.pop_back();
  fields[6].fill = fills[1];
  if (event == Event::ByDowngrade) fields[6] = {prefix + "SDWNG", "999998"};
  return fields;
}

/** Bands, the third of which has a table. */
std::string Bands(std::size_t count) {
  constexpr const char *kTags[] = {"R ", "G ", "LU", "B ", "M ", "Y ", "Cb", "Cr", "  ", "R "};
  std::string bands;
  for (std::size_t band = 0; band < count; ++band) {
    bands += kTags[band];
    bands += "SUBCA" + std::to_string(band) + "NF" + std::to_string(band) + "L";
    bands += band == 2 ? "300002\x01\x02\x03\x04\x05\x06" : "0";
  }
  return bands;
}

Fields ImageHead(bool nitf20, char classification) {
  return ListOf("IM=IM|_ IID1:10|_ IDATIM:14|0 TGTID:17|_ IID2:80|_") +
         Security("I", nitf20, classification, "   ", Event::ByDowngrade);
}

/** A masked image of ten bands, two blocks and all that is optional; or one of the 2.0 layout. */
Fields Image(bool nitf20) {
  const std::string bands = nitf20 ? "IC=NC NBANDS=4 bands " : "IC=NM NBANDS=0 XBANDS=00010 bands ";
  return ImageHead(nitf20, 'S') +
         ListOf(
             "ENCRYP=5|0 ISORCE:42|_ NROWS=00000002 NCOLS=00000006 PVTYPE=INT IREP=RGB/LUT~ ICAT:8|_ ABPP=07 "
             "PJUST=L ICORDS=G IGEOLO:60|0 NICOM=2 ICOM1:80 ICOM2:80 " +
                 bands +
                 "ISYNC=8|0 IMODE=R NBPR=0002 NBPC=0001 NPPBH=0003 NPPBV=0002 NBPP=08 IDLVL=011 IALVL=012 "
                 "ILOC=00013-0014|0 IMAG=2.5~",
             {{"bands", Bands(nitf20 ? 4 : 10)}}) +
         Extension("UDIDL", "UDOFL", "UDID", "user data") + Extension("IXSHDL", "IXSOFL", "IXSHD", "extended");
}

/** A table of 2 x 10 entries each for blocks and pads, with a pad code of 12 bits, and the samples. */
std::string ImageData(bool nitf20) {
  if (nitf20) return std::string(48, 'p');
  constexpr char kHead[] = "\0\0\0\xAC\0\4\0\5\0\x0C\x12\x30";
  return std::string(kHead, sizeof kHead - 1) + std::string(80, 'b') + std::string(80, 't') + std::string(120, 'p');
}

/** An image with a rate, and nothing that is optional. */
Fields RatedImage() {
  return ImageHead(false, 'C') +
         ListOf(
             "ENCRYP=6|0 ISORCE:42|_ NROWS=00000003 NCOLS=00000009 PVTYPE=B~~ IREP=MONO~~~~ ICAT:8|_ ABPP=01 "
             "PJUST=R ICORDS=~ NICOM=0 IC=C1 COMRAT=2DS~ NBANDS=1 band=M~SUBCATNFLT0 ISYNC=9|0 IMODE=B NBPR=0001 "
             "NBPC=0001 NPPBH=0009 NPPBV=0003 NBPP=01 IDLVL=015 IALVL=016 ILOC=-001700018|0 IMAG=0.5~ "
             "UDIDL=00000 IXSHDL=00003 IXSOFL=019|0");
}

Fields Graphic(bool nitf20) {
  return ListOf("SY=SY|_ SID:10|_ SNAME:20|_") + Security("S", nitf20, 'T', "0  ") + ListOf("ENCRYP=7|0 SFMT=B|0") +
         ListOf(nitf20 ? "NLIPS=1021|0 NPIXPL=1022|0 NWDTH=1023|0 NBPP=4" : "SSTRUCT:13|0") +
         ListOf("SDLVL=021 SALVL=022 SLOC=10023-0024|0") +
         ListOf(nitf20 ? "SBND2=1002500026|0 SCOLOR=K|_ SNUM=100027|0 SROT=128|0 NELUT=003 lut=rstRSTuvw"
                       : "SBND1=10027-0028|0 SCOLOR=C SBND2=1002500026|0 SRES2=29|0") +
         Extension("SXSHDL", "SXSOFL", "SXSHD", "graphic's");
}

Fields Label() {
  return ListOf("LA=LA|0 LID:10|0") + Security("L", true, 'U', "000") +
         ListOf("ENCRYP=1|0 LFS=f|0 LCW=31|0 LCH=32|0 LDLVL=133|0 LALVL=134|0 LLOC=10035-0036|0 LTC=ABC LBC=DEF") +
         Extension("LXSHDL", "LXSOFL", "LXSHD", "label's");
}

Fields Text(bool nitf20) {
  return ListOf(nitf20 ? "TE=TE|0 TEXTID:10|0" : "TE=TE|0 TEXTID:7|0 TXTALVL=041") + ListOf("TXTDT:14|0 TXTITL:80|_") +
         Security("T", nitf20, '?', "0 0") + ListOf("ENCRYP=2|0 TXTFMT=U8S|0") +
         Extension("TXSHDL", "TXSOFL", "TXSHD", "text's");
}

Fields DataExtension(bool nitf20, bool overflow) {
  return ListOf(overflow ? "DE=DE|0 DESID=TRE_OVERFLOW~~~~~~~~~~~~~ DESVER=51|0" : "DE=DE|0 DESID:25|0 DESVER=52|0") +
         Security("DE", nitf20, nitf20 ? 'X' : 'R', "000", Event::Always) +
         ListOf(overflow ? "DESOFLW:6|0 DESITEM=153|0 DESSHL=0005 DESSHF=users" : "DESSHL=0000");
}

struct Segment {
  SegmentKind kind;
  Fields subheader;
  std::string data;
};

std::vector<Segment> Segments(bool nitf20) {
  std::vector<Segment> segments = {{SegmentKind::Image, Image(nitf20), ImageData(nitf20)}};
  if (!nitf20) segments.push_back({SegmentKind::Image, RatedImage(), "coded"});
  segments.push_back({SegmentKind::Graphic, Graphic(nitf20), "symbol"});
  if (nitf20) segments.push_back({SegmentKind::Label, Label(), "label"});
  segments.push_back({SegmentKind::Text, Text(nitf20), "a text"});
  segments.push_back({SegmentKind::DataExtension, DataExtension(nitf20, true), "overflowed"});
  segments.push_back({SegmentKind::DataExtension, DataExtension(nitf20, false), ""});
  return segments;
}

/** The count of a kind, and the lengths of its segments. */
Fields Lengths(const std::vector<Segment> &segments, SegmentKind kind, const char *count, std::size_t subheaderDigits,
               std::size_t dataDigits) {
  std::string lengths;
  std::size_t found = 0;
  for (const Segment &segment : segments) {
    if (segment.kind != kind) continue;
    ++found;
    lengths += Digits(Joined(segment.subheader).size(), subheaderDigits) + Digits(segment.data.size(), dataDigits);
  }
  return {{count, Digits(found, 3)}, {"", lengths}};
}

Fields FileHeader(bool nitf20, const std::vector<Segment> &segments) {
  const auto lengths = [&](SegmentKind kind, const char *count, std::size_t subheaderDigits, std::size_t dataDigits) {
    return Lengths(segments, kind, count, subheaderDigits, dataDigits);
  };
  // What reserved segments there are is counted, and not carried.
  const Fields tail = lengths(SegmentKind::Image, "NUMI", 6, 10) + lengths(SegmentKind::Graphic, "NUMS", 4, 6) +
                      (nitf20 ? lengths(SegmentKind::Label, "NUML", 4, 3) : ListOf("NUMX=000")) +
                      lengths(SegmentKind::Text, "NUMT", 4, 5) + lengths(SegmentKind::DataExtension, "NUMDES", 4, 9) +
                      ListOf("NUMRES=002 lengths=0061000006200630000064") +
                      Extension("UDHDL", "UDHOFL", "UDHD", std::string("he\0d\0r's", 8)) +
                      Extension("XHDL", "XHDLOFL", "XHD", "extended too");
  const Fields head = ListOf("FHDR=NSIF|0 FVER=02.10|0 CLEVEL=03|0 STYPE:4|0 OSTAID:10|0 FDT:14|0 FTITLE:80|0") +
                      Security("F", nitf20, 'U', "000", Event::ByDowngrade) +
                      ListOf("FSCOP=10071|0 FSCPYS=10072|0 ENCRYP=3|0") +
                      ListOf(nitf20 ? "ONAME:27|0 OPHONE:18|0" : "FBKGC=QRS ONAME:24|0 OPHONE:18|0");
  const std::size_t headerBytes = Joined(head).size() + 12 + 6 + Joined(tail).size();
  std::size_t bytes = headerBytes;
  for (const Segment &segment : segments) bytes += Joined(segment.subheader).size() + segment.data.size();
  return head + Fields{{"FL", Digits(bytes, 12)}, {"HL", Digits(headerBytes, 6)}} + tail;
}

class WholeFiles : public testing::TestWithParam<bool> {
 protected:
  WholeFiles() {
    std::string bytes = Joined(header);
    for (const Segment &segment : segments) bytes += Joined(segment.subheader) + segment.data;
    written.assign(bytes.begin(), bytes.end());
    WriteFile(folder.Path("in.ntf"), written);
    file->nitf20Layout = GetParam() ? 1 : 0;
  }

  /** Calls `visit` with the fields, the table and the record of each header. */
  template <class Visit>
  void EachHeader(Visit visit) {
    visit(header, kFileHeaderTable, reinterpret_cast<char *>(&file->header));
    std::map<SegmentKind, std::uint32_t> index;
    for (Segment &segment : segments) {
      void *const record = FindSubheader(file.Get(), segment.kind, index[segment.kind]++);
      ASSERT_NE(record, nullptr);
      visit(segment.subheader, SubheaderTable(file.Get(), segment.kind), static_cast<char *>(record));
    }
  }

  std::string Saved() {
    const KsHandle out = KsOpen(Wide(folder.Path("out.ntf")).c_str(), KS_OPEN_CREATE, KS_MODE_CREATE);
    KNitfSaveFile save;
    EXPECT_EQ(save.WriteFileHeader(out, file.Get()), SUCCESS);
    EXPECT_EQ(save.WriteSegments(out, file.Get()), SUCCESS);
    EXPECT_EQ(KsClose(out), SUCCESS);
    return TextOf(ReadFile(folder.Path("out.ntf")));
  }

  const bool nitf20 = GetParam();
  std::vector<Segment> segments = Segments(nitf20);
  Fields header = FileHeader(nitf20, segments);
  Bytes written;
  TemporaryFolder folder;
  LocalNitfFile file;
};

TEST_P(WholeFiles, AreReadAndSavedAsTheyAre) {
  ASSERT_EQ(Load(file.Get(), Wide(folder.Path("in.ntf")).c_str()), SUCCESS);
  EachHeader([&](const Fields &fields, const HeaderTable &table, const char *record) {
    std::map<std::string, std::string> expected;
    for (const Field &field : fields) expected[field.name] = field.bytes;
    ListFields(table, record, nitf20, [&](const FieldView &field) {
      EXPECT_EQ(field.text, expected[field.name]) << field.name;
      expected.erase(field.name);
    });
    // What isn't a field of its own is left.
    for (const char *const part : {"", "ICOM1", "ICOM2", "bands", "band", "lut", "lengths"}) expected.erase(part);
    for (const auto &[name, bytes] : expected) ADD_FAILURE() << name << " is not listed";
  });
  EXPECT_EQ(Saved(), TextOf(written));
}

TEST_P(WholeFiles, AreUnderstood) {
  ASSERT_EQ(Load(file.Get(), Wide(folder.Path("in.ntf")).c_str()), SUCCESS);
  const ImageSubheader &image = *FindImage(file.Get(), 0);
  EXPECT_EQ(image.bandCount, nitf20 ? 4U : 10U);
  EXPECT_EQ(image.locationColumn, -14);
  EXPECT_EQ(image.magnification, 2.5);
  const GraphicSubheader &graphic = *FindGraphic(file.Get(), 0);
  EXPECT_STREQ(graphic.NPIXPL, nitf20 ? "1022" : "");
  EXPECT_EQ(graphic.bitsPerPixel, nitf20 ? 4U : 0U);
  EXPECT_EQ(graphic.displayLevel, 21U);
  EXPECT_EQ(graphic.locationRow, 10023);
  EXPECT_EQ(graphic.locationColumn, -24);
  EXPECT_EQ(graphic.firstBound[1], nitf20 ? 0 : -28);
  EXPECT_EQ(graphic.secondBound[0], 10025);
  EXPECT_EQ(FindText(file.Get(), 0)->attachmentLevel, nitf20 ? 0U : 41U);
  EXPECT_STREQ(FindText(file.Get(), 0)->security.CLAS, "?") << "any letter is accepted";
  EXPECT_EQ(FindDataExtension(file.Get(), 1)->userData, nullptr);
  if (!nitf20) {
    EXPECT_EQ(FindImage(file.Get(), 1)->extendedData, nullptr) << "a length that leaves no bytes";
    EXPECT_EQ(file->backgroundColor, 0x535251U);
    return;
  }
  ASSERT_EQ(graphic.lutEntries, 3U);
  EXPECT_EQ(graphic.lut[1], 0x735376U) << "s, S and v";
  const LabelSubheader &label = *FindLabel(file.Get(), 0);
  EXPECT_EQ(label.cellWidth, 31U);
  EXPECT_EQ(label.cellHeight, 32U);
  EXPECT_EQ(label.displayLevel, 133U);
  EXPECT_EQ(label.locationColumn, -36);
  EXPECT_EQ(label.textColor, 0x434241U);
  EXPECT_EQ(label.backgroundColor, 0x464544U);
}

TEST_P(WholeFiles, CarryDataThatAreInMemoryAsFarAsTheyAreCounted) {
  ASSERT_EQ(Load(file.Get(), Wide(folder.Path("in.ntf")).c_str()), SUCCESS);
  std::string expected = Joined(header);
  for (Segment &segment : segments) {
    const std::string held = "data of " + segment.data;
    const auto hold = [&](auto *record) {
      EXPECT_EQ(HoldInMemory(record, held.data(), static_cast<std::uint32_t>(held.size())), SUCCESS);
      segment.data = held.substr(0, segment.data.size());
    };
    if (segment.kind == SegmentKind::Graphic) hold(FindGraphic(file.Get(), 0));
    if (segment.kind == SegmentKind::Label) hold(FindLabel(file.Get(), 0));
    if (segment.kind == SegmentKind::Text) hold(FindText(file.Get(), 0));
    expected += Joined(segment.subheader) + segment.data;
  }
  EXPECT_EQ(Saved(), expected);
}

TEST_P(WholeFiles, AreAShortReadWhereverTheyAreCut) {
  for (std::size_t bytes = 0; bytes < written.size(); ++bytes) {
    WriteFile(folder.Path("cut.ntf"), Bytes(written.begin(), written.begin() + static_cast<std::ptrdiff_t>(bytes)));
    LocalNitfFile cut;
    cut->nitf20Layout = file->nitf20Layout;
    ASSERT_EQ(Load(cut.Get(), Wide(folder.Path("cut.ntf")).c_str()), ERROR_FILE_READ) << bytes;
  }
}

TEST_P(WholeFiles, OfTheOldLayoutHaveNoMoreThanNineBands) {
  std::string bytes = TextOf(written);
  bytes.replace(bytes.find(nitf20 ? "NC4" : "NM0") + 2, 1, "0");
  WriteFile(folder.Path("in.ntf"), Bytes(bytes.begin(), bytes.end()));
  EXPECT_EQ(Load(file.Get(), Wide(folder.Path("in.ntf")).c_str()), nitf20 ? ERROR_FILE_FORMAT : SUCCESS);
}

/** Leaves the first character of a text, in the record and in what is expected of it. */
void Shorten(char *text, Field &field) {
  text[1] = '\0';
  const std::string rest(field.bytes.size() - 1, field.fill);
  field.bytes = field.fill == '0' ? rest + field.bytes[0] : field.bytes[0] + rest;
}

TEST_P(WholeFiles, FillShortTextsUp) {
  ASSERT_EQ(Load(file.Get(), Wide(folder.Path("in.ntf")).c_str()), SUCCESS);
  std::string expected;
  EachHeader([&](Fields &fields, const HeaderTable &table, char *record) {
    const auto shorten = [&](const HeaderRow &row, const std::string &prefix, char *base) {
      for (Field &field : fields) {
        const bool isIn = WidthOf(row, nitf20) == field.bytes.size() && prefix + std::string(row.name) == field.name;
        if (isIn && field.fill != '\0') Shorten(base + row.place, field);
      }
    };
    for (const HeaderRow &row : table.rows) {
      if (row.kind == HeaderRow::Kind::Text) shorten(row, "", record);
      if (row.kind != HeaderRow::Kind::Security) continue;
      for (const HeaderRow &field : row.fields->rows) shorten(field, std::string(row.name), record + row.place);
    }
  });
  expected = Joined(header);
  for (const Segment &segment : segments) expected += Joined(segment.subheader) + segment.data;
  EXPECT_EQ(Saved(), expected);
}

INSTANTIATE_TEST_SUITE_P(Save, WholeFiles, testing::Bool(),
                         [](const auto &given) { return given.param ? "Layout20" : "Layout21"; });

}  // namespace
