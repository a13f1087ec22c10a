// A file of each layout, field by field as the standard's tables have them, with a value of its own in each: read, it
// holds those values; saved, it is the same bytes; and texts that have become short are filled up.
#include "harness.h"
#include "save/savenitf.h"

#include <algorithm>
#include <map>
#include <string>

#include <gtest/gtest.h>

using namespace ksntfx;

namespace {

/** How a text that is shorter than its field is written; Kept for what isn't written from the text. */
enum class Fill : char { Kept = '=', Zeros = '0', Blanks = ' ' };

struct Field {
  std::string name;
  std::string bytes;
  Fill fill = Fill::Kept;
};
using Fields = std::vector<Field>;

/** A text of its own: the name, or the end of it, and dots. */
Field Named(const std::string &name, std::size_t width, Fill fill) {
  std::string text = name.size() > width ? name.substr(name.size() - width) : name;
  text.resize(width, '.');
  return {name, text, fill};
}

std::string Digits(std::size_t value, std::size_t width) {
  const std::string digits = std::to_string(value);
  return std::string(width - digits.size(), '0') + digits;
}

void Append(Fields &fields, const Fields &more) {
  fields.insert(fields.end(), more.begin(), more.end());
}

/** What follows a length that counts three bytes more: the overflow segment and the data. */
Fields Extension(const std::string &length, const std::string &overflow, const std::string &data,
                 const std::string &bytes, Fill fill) {
  return {
      {length, Digits(bytes.size() + 3, 5)}, {overflow, "0" + std::to_string(10 + bytes.size()), fill}, {data, bytes}};
}

struct GroupFills {
  Fill classification;
  Fill downgrade;
  Fill others;
};
constexpr GroupFills kZeros = {Fill::Zeros, Fill::Zeros, Fill::Zeros};
constexpr GroupFills kBlanks = {Fill::Blanks, Fill::Blanks, Fill::Blanks};

enum class Event { None, ByDowngrade, Always };

Fields Security(const std::string &prefix, bool nitf20, const std::string &classification, GroupFills fills,
                Event event = Event::None) {
  Fields fields = {{prefix + "SCLAS", classification, fills.classification}};
  const auto add = [&](const char *name, std::size_t width) {
    fields.push_back(Named(prefix + name, width, fills.others));
  };
  if (nitf20) {
    for (const char *name : {"SCODE", "SCTLH", "SREL"}) add(name, 40);
    for (const char *name : {"SCAUT", "SCTLN"}) add(name, 20);
    if (event == Event::ByDowngrade) {
      fields.push_back({prefix + "SDWNG", "999998"});
    } else {
      fields.push_back(Named(prefix + "SDWNG", 6, fills.downgrade));
    }
    if (event != Event::None) add("SDEVT", 40);
    return fields;
  }
  for (const auto &[name, width] : std::initializer_list<std::pair<const char *, std::size_t>>{{"SCLSY", 2},
                                                                                               {"SCODE", 11},
                                                                                               {"SCTLH", 2},
                                                                                               {"SREL", 20},
                                                                                               {"SDCTP", 2},
                                                                                               {"SDCDT", 8},
                                                                                               {"SDCXM", 4},
                                                                                               {"SDG", 1},
                                                                                               {"SDGDT", 8},
                                                                                               {"SCLTX", 43},
                                                                                               {"SCATP", 1},
                                                                                               {"SCAUT", 40},
                                                                                               {"SCRSN", 1},
                                                                                               {"SSRDT", 8},
                                                                                               {"SCTLN", 15}}) {
    add(name, width);
  }
  return fields;
}

/** Ten bands of which the third has a table. */
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

/** A masked image of many bands, two blocks and all that is optional; or one of the 2.0 layout. */
Fields Image(bool nitf20) {
  Fields fields = {{"IM", "IM", Fill::Blanks}, Named("IID1", 10, Fill::Blanks), Named("IDATIM", 14, Fill::Zeros)};
  Append(fields, {Named("TGTID", 17, Fill::Blanks), Named("IID2", 80, Fill::Blanks)});
  Append(fields, Security("I", nitf20, "S", kBlanks, Event::ByDowngrade));
  Append(fields, {{"ENCRYP", "5", Fill::Zeros},
                  Named("ISORCE", 42, Fill::Blanks),
                  {"NROWS", "00000002"},
                  {"NCOLS", "00000006"},
                  {"PVTYPE", "INT"},
                  {"IREP", "RGB/LUT "},
                  Named("ICAT", 8, Fill::Blanks),
                  {"ABPP", "07"},
                  {"PJUST", "L"},
                  {"ICORDS", "G"},
                  Named("IGEOLO", 60, Fill::Zeros),
                  {"NICOM", "2"},
                  {"", std::string(80, 'c') + std::string(80, 'd')},
                  {"IC", nitf20 ? "NC" : "NM"}});
  if (nitf20) Append(fields, {{"NBANDS", "4"}, {"", Bands(4)}});
  if (!nitf20) Append(fields, {{"NBANDS", "0"}, {"XBANDS", "00010"}, {"", Bands(10)}});
  Append(fields, {{"ISYNC", "8", Fill::Zeros},
                  {"IMODE", "R"},
                  {"NBPR", "0002"},
                  {"NBPC", "0001"},
                  {"NPPBH", "0003"},
                  {"NPPBV", "0002"},
                  {"NBPP", "08"},
                  {"IDLVL", "011"},
                  {"IALVL", "012"},
                  {"ILOC", "00013-0014", Fill::Zeros},
                  {"IMAG", "2.5 "}});
  Append(fields, Extension("UDIDL", "UDOFL", "UDID", "user data", Fill::Zeros));
  Append(fields, Extension("IXSHDL", "IXSOFL", "IXSHD", "extended", Fill::Zeros));
  return fields;
}

/** A table of 2 x 10 entries each for blocks and pads, with a pad code of 12 bits, and the samples. */
std::string ImageData(bool nitf20) {
  if (nitf20) return std::string(48, 'p');
  constexpr char kHead[] = "\0\0\0\xAC\0\4\0\5\0\x0C\x12\x30";
  return std::string(kHead, sizeof kHead - 1) + std::string(80, 'b') + std::string(80, 't') + std::string(120, 'p');
}

/** An image with a rate, and nothing that is optional. */
Fields RatedImage() {
  Fields fields = {{"IM", "IM", Fill::Blanks}, Named("IID1", 10, Fill::Blanks), Named("IDATIM", 14, Fill::Zeros)};
  Append(fields, {Named("TGTID", 17, Fill::Blanks), Named("IID2", 80, Fill::Blanks)});
  Append(fields, Security("I", false, "C", kBlanks));
  Append(fields, {{"ENCRYP", "6", Fill::Zeros},
                  Named("ISORCE", 42, Fill::Blanks),
                  {"NROWS", "00000003"},
                  {"NCOLS", "00000009"},
                  {"PVTYPE", "B  "},
                  {"IREP", "MONO    "},
                  Named("ICAT", 8, Fill::Blanks),
                  {"ABPP", "01"},
                  {"PJUST", "R"},
                  {"ICORDS", " "},
                  {"NICOM", "0"},
                  {"IC", "C1"},
                  {"COMRAT", "2DS "},
                  {"NBANDS", "1"},
                  {"", "M SUBCATNFLT0"},
                  {"ISYNC", "9", Fill::Zeros},
                  {"IMODE", "B"},
                  {"NBPR", "0001"},
                  {"NBPC", "0001"},
                  {"NPPBH", "0009"},
                  {"NPPBV", "0003"},
                  {"NBPP", "01"},
                  {"IDLVL", "015"},
                  {"IALVL", "016"},
                  {"ILOC", "-001700018", Fill::Zeros},
                  {"IMAG", "0.5 "},
                  {"UDIDL", "00000"},
                  {"IXSHDL", "00000"}});
  return fields;
}

Fields Graphic(bool nitf20) {
  Fields fields = {{"SY", "SY", Fill::Blanks}, Named("SID", 10, Fill::Blanks), Named("SNAME", 20, Fill::Blanks)};
  Append(fields, Security("S", nitf20, "T", {Fill::Zeros, Fill::Blanks, Fill::Blanks}));
  Append(fields, {{"ENCRYP", "7", Fill::Zeros}, {"SFMT", "B", Fill::Zeros}});
  if (nitf20) {
    Append(fields, {{"NLIPS", "1021", Fill::Zeros},
                    {"NPIXPL", "1022", Fill::Zeros},
                    {"NWDTH", "1023", Fill::Zeros},
                    {"NBPP", "4"}});
  } else {
    fields.push_back(Named("SSTRUCT", 13, Fill::Zeros));
  }
  Append(fields, {{"SDLVL", "021"}, {"SALVL", "022"}, {"SLOC", "10023-0024", Fill::Zeros}});
  if (nitf20) {
    Append(fields, {{"SBND2", "1002500026", Fill::Zeros},
                    {"SCOLOR", "K", Fill::Blanks},
                    {"SNUM", "100027", Fill::Zeros},
                    {"SROT", "128", Fill::Zeros},
                    {"NELUT", "003"},
                    {"", "rstRSTuvw"}});
  } else {
    Append(fields, {{"SBND1", "10027-0028", Fill::Zeros},
                    {"SCOLOR", "C"},
                    {"SBND2", "1002500026", Fill::Zeros},
                    {"SRES2", "29", Fill::Zeros}});
  }
  Append(fields, Extension("SXSHDL", "SXSOFL", "SXSHD", "graphic's", Fill::Zeros));
  return fields;
}

Fields Label() {
  Fields fields = {{"LA", "LA", Fill::Zeros}, Named("LID", 10, Fill::Zeros)};
  Append(fields, Security("L", true, "U", kZeros));
  Append(fields, {{"ENCRYP", "1", Fill::Zeros},
                  {"LFS", "f", Fill::Zeros},
                  {"LCW", "31", Fill::Zeros},
                  {"LCH", "32", Fill::Zeros},
                  {"LDLVL", "133", Fill::Zeros},
                  {"LALVL", "134", Fill::Zeros},
                  {"LLOC", "10035-0036", Fill::Zeros},
                  {"LTC", "\x41\x42\x43"},
                  {"LBC", "\x44\x45\x46"}});
  Append(fields, Extension("LXSHDL", "LXSOFL", "LXSHD", "label's", Fill::Zeros));
  return fields;
}

Fields Text(bool nitf20) {
  Fields fields = {{"TE", "TE", Fill::Zeros}, Named("TEXTID", nitf20 ? 10 : 7, Fill::Zeros)};
  if (!nitf20) fields.push_back({"TXTALVL", "041"});
  Append(fields, {Named("TXTDT", 14, Fill::Zeros), Named("TXTITL", 80, Fill::Blanks)});
  Append(fields, Security("T", nitf20, "?", {Fill::Zeros, Fill::Blanks, Fill::Zeros}));
  Append(fields, {{"ENCRYP", "2", Fill::Zeros}, {"TXTFMT", "U8S", Fill::Zeros}});
  Append(fields, Extension("TXSHDL", "TXSOFL", "TXSHD", "text's", Fill::Zeros));
  return fields;
}

Fields DataExtension(bool nitf20, bool overflow) {
  Fields fields = {{"DE", "DE", Fill::Zeros}};
  if (overflow) {
    fields.push_back({"DESID", "TRE_OVERFLOW             "});
  } else {
    fields.push_back(Named("DESID", 25, Fill::Zeros));
  }
  fields.push_back({"DESVER", overflow ? "51" : "52", Fill::Zeros});
  Append(fields, Security("DE", nitf20, "R", kZeros, Event::Always));
  if (overflow) Append(fields, {Named("DESOFLW", 6, Fill::Zeros), {"DESITEM", "153", Fill::Zeros}});
  Append(fields, {{"DESSHL", overflow ? "0005" : "0000"}});
  if (overflow) fields.push_back({"DESSHF", "users"});
  return fields;
}

struct Segment {
  SegmentKind kind;
  Fields subheader;
  std::string data;
};

std::string Joined(const Fields &fields) {
  std::string bytes;
  for (const Field &field : fields) bytes += field.bytes;
  return bytes;
}

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
void AddLengths(Fields &fields, const std::vector<Segment> &segments, SegmentKind kind, const char *count,
                std::size_t subheaderDigits, std::size_t dataDigits) {
  std::string lengths;
  std::size_t found = 0;
  for (const Segment &segment : segments) {
    if (segment.kind != kind) continue;
    ++found;
    lengths += Digits(Joined(segment.subheader).size(), subheaderDigits) + Digits(segment.data.size(), dataDigits);
  }
  Append(fields, {{count, Digits(found, 3)}, {"", lengths}});
}

Fields FileHeader(bool nitf20, const std::vector<Segment> &segments) {
  Fields tail;
  AddLengths(tail, segments, SegmentKind::Image, "NUMI", 6, 10);
  AddLengths(tail, segments, SegmentKind::Graphic, "NUMS", 4, 6);
  if (!nitf20) tail.push_back({"NUMX", "000"});
  if (nitf20) AddLengths(tail, segments, SegmentKind::Label, "NUML", 4, 3);
  AddLengths(tail, segments, SegmentKind::Text, "NUMT", 4, 5);
  AddLengths(tail, segments, SegmentKind::DataExtension, "NUMDES", 4, 9);
  // What reserved segments there are is counted, and not carried.
  Append(tail, {{"NUMRES", "002"}, {"", "0061000006200630000064"}});
  Append(tail, Extension("UDHDL", "UDHOFL", "UDHD", std::string("he\0d\0r's", 8), Fill::Zeros));
  Append(tail, Extension("XHDL", "XHDLOFL", "XHD", "extended too", Fill::Zeros));
  Fields fields = {{"FHDR", "NSIF", Fill::Zeros},   {"FVER", "02.10", Fill::Zeros},   {"CLEVEL", "03", Fill::Zeros},
                   {"STYPE", "TYPE", Fill::Zeros},  Named("OSTAID", 10, Fill::Zeros), Named("FDT", 14, Fill::Zeros),
                   Named("FTITLE", 80, Fill::Zeros)};
  Append(fields, Security("F", nitf20, "U", kZeros, Event::ByDowngrade));
  Append(fields, {{"FSCOP", "10071", Fill::Zeros}, {"FSCPYS", "10072", Fill::Zeros}, {"ENCRYP", "3", Fill::Zeros}});
  if (!nitf20) fields.push_back({"FBKGC", "\x51\x52\x53"});
  Append(fields, {Named("ONAME", nitf20 ? 27 : 24, Fill::Zeros), Named("OPHONE", 18, Fill::Zeros)});
  std::size_t bytes = Joined(fields).size() + 12 + 6 + Joined(tail).size();
  const std::string headerBytes = Digits(bytes, 6);
  for (const Segment &segment : segments) bytes += Joined(segment.subheader).size() + segment.data.size();
  Append(fields, {{"FL", Digits(bytes, 12)}, {"HL", headerBytes}});
  Append(fields, tail);
  return fields;
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
      visit(segment.subheader, SubheaderTable(segment.kind), static_cast<char *>(record));
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
    ListFields(table, record, nitf20,
               [&](const FieldView &field) { EXPECT_EQ(field.text, expected[field.name]) << field.name; });
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

TEST_P(WholeFiles, OfTheOldLayoutHaveNoMoreThanNineBands) {
  std::string bytes = TextOf(written);
  bytes.replace(bytes.find(nitf20 ? "NC4" : "NM0") + 2, 1, "0");
  WriteFile(folder.Path("in.ntf"), Bytes(bytes.begin(), bytes.end()));
  EXPECT_EQ(Load(file.Get(), Wide(folder.Path("in.ntf")).c_str()), nitf20 ? ERROR_FILE_FORMAT : SUCCESS);
}

/** Leaves the first character of a text, in the record and in what is expected of it. */
void Shorten(char *text, Field &field) {
  text[1] = '\0';
  const std::string rest(field.bytes.size() - 1, static_cast<char>(field.fill));
  field.bytes = field.fill == Fill::Zeros ? rest + field.bytes[0] : field.bytes[0] + rest;
}

TEST_P(WholeFiles, FillShortTextsUp) {
  ASSERT_EQ(Load(file.Get(), Wide(folder.Path("in.ntf")).c_str()), SUCCESS);
  std::string expected;
  EachHeader([&](Fields &fields, const HeaderTable &table, char *record) {
    const auto shorten = [&](const HeaderRow &row, const std::string &prefix, char *base) {
      for (Field &field : fields) {
        const bool isIn = WidthOf(row, nitf20) == field.bytes.size() && prefix + std::string(row.name) == field.name;
        if (isIn && field.fill != Fill::Kept) Shorten(base + row.place, field);
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
