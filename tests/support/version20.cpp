#include "version20.h"

#include <iterator>

std::string Digits(std::size_t value, std::size_t width) {
  const std::string digits = std::to_string(value);
  return std::string(width - digits.size(), '0') + digits;
}

std::string Joined(const FieldList &fields) {
  std::string bytes;
  for (const auto &field : fields) bytes += field.second;
  return bytes;
}

FieldList With(FieldList fields, const FieldList &others) {
  for (auto &[name, bytes] : fields) {
    for (const auto &[other, changed] : others) {
      if (name == other) bytes = changed;
    }
  }
  return fields;
}

namespace {

std::string Blank(std::string text, std::size_t width) {
  text.resize(width, ' ');
  return text;
}

FieldList operator+(FieldList first, const FieldList &second) {
  first.insert(first.end(), second.begin(), second.end());
  return first;
}

/** Security of version 02.00; an event is written where the date of downgrading says so. */
FieldList Security(const std::string &prefix, const std::string &event = "") {
  FieldList fields = {{prefix + "CLAS", "C"},
                      {prefix + "CODE", Blank("code", 40)},
                      {prefix + "CTLH", Blank("handling", 40)},
                      {prefix + "REL", Blank("release", 40)},
                      {prefix + "CAUT", Blank("authority", 20)},
                      {prefix + "CTLN", Blank("number", 20)},
                      {prefix + "DWNG", event.empty() ? "991231" : "999998"}};
  if (!event.empty()) fields.emplace_back(prefix + "DEVT", Blank(event, 40));
  return fields;
}

/** The lengths of all segments, kind by kind, each behind its count. */
FieldList Lengths20(const std::vector<Segment20> &segments) {
  struct Kind {
    const char *letter;
    const char *count;
    std::size_t headerDigits;
    std::size_t dataDigits;
  };
  constexpr Kind kKinds[] = {
      {"I", "NUMI", 6, 10}, {"S", "NUMS", 4, 6}, {"L", "NUML", 4, 3}, {"T", "NUMT", 4, 5}, {"D", "NUMDES", 4, 9}};
  FieldList fields;
  for (std::uint32_t kind = 0; kind < std::size(kKinds); ++kind) {
    FieldList rows;
    for (const Segment20 &segment : segments) {
      if (segment.kind != kind) continue;
      const std::string number = std::to_string(rows.size() / 2 + 1);
      rows.emplace_back("L" + std::string(kKinds[kind].letter) + "SH" + number,
                        Digits(Joined(segment.fields).size(), kKinds[kind].headerDigits));
      rows.emplace_back("L" + std::string(kKinds[kind].letter) + number,
                        Digits(segment.data.size(), kKinds[kind].dataDigits));
    }
    fields.emplace_back(kKinds[kind].count, Digits(rows.size() / 2, 3));
    fields = fields + rows;
  }
  return fields;
}

}  // namespace

FieldList Image20() {
  return FieldList{{"IM", "IM"},
                   {"IID1", Blank("picture", 10)},
                   {"IDATIM", "02123456ZJAN99"},
                   {"TGTID", Blank("", 17)},
                   {"IID2", Blank("The picture", 80)}} +
         Security("IS", "image event") +
         FieldList{{"ENCRYP", "0"},
                   {"ISORCE", Blank("source", 42)},
                   {"NROWS", "00000002"},
                   {"NCOLS", "00000003"},
                   {"PVTYPE", "INT"},
                   {"IREP", Blank("MONO", 8)},
                   {"ICAT", Blank("VIS", 8)},
                   {"ABPP", "08"},
                   {"PJUST", "R"},
                   {"ICORDS", "N"},
                   {"NICOM", "1"},
                   {"ICOM1", Blank("comment", 80)},
                   {"IC", "NC"},
                   {"NBANDS", "1"},
                   {"IREPBAND1", "M "},
                   {"ISUBCAT1", Blank("", 6)},
                   {"IFC1", "N"},
                   {"IMFLT1", "   "},
                   {"NLUTS1", "0"},
                   {"ISYNC", "0"},
                   {"IMODE", "B"},
                   {"NBPR", "0001"},
                   {"NBPC", "0001"},
                   {"NPPBH", "0003"},
                   {"NPPBV", "0002"},
                   {"NBPP", "08"},
                   {"IDLVL", "001"},
                   {"IALVL", "000"},
                   {"ILOC", "0000000000"},
                   {"IMAG", "1.0 "},
                   {"UDIDL", "00000"},
                   {"IXSHDL", "00000"}};
}

FieldList Symbol20(char kind, int level) {
  const bool isBitmap = kind == 'B';
  return FieldList{{"SY", "SY"}, {"SID", Blank("symbol", 10)}, {"SNAME", Blank("name", 20)}} + Security("SS") +
         FieldList{{"ENCRYP", "0"},
                   {"SFMT", std::string(1, kind)},
                   {"NLIPS", isBitmap ? "0002" : "0000"},
                   {"NPIXPL", isBitmap ? "0008" : "0000"},
                   {"NWDTH", isBitmap ? "0001" : "0000"},
                   {"NBPP", isBitmap ? "1" : "0"},
                   {"SDLVL", Digits(static_cast<std::size_t>(level), 3)},
                   {"SALVL", "001"},
                   {"SLOC", "0000100002"},
                   {"SBND2", "0000300004"},
                   {"SCOLOR", "K"},
                   {"SNUM", "000000"},
                   {"SROT", "000"},
                   {"NELUT", "000"},
                   {"SXSHDL", "00000"}};
}

FieldList Label20() {
  return FieldList{{"LA", "LA"}, {"LID", Blank("label", 10)}} + Security("LS", "label event") +
         FieldList{{"ENCRYP", "0"},         {"LFS", " "},       {"LCW", "08"},          {"LCH", "12"},
                   {"LDLVL", "005"},        {"LALVL", "001"},   {"LLOC", "0000000001"}, {"LTC", "\x01\x02\x03"},
                   {"LBC", "\x04\x05\x06"}, {"LXSHDL", "00000"}};
}

FieldList Text20() {
  return FieldList{
             {"TE", "TE"}, {"TEXTID", Blank("text", 10)}, {"TXTDT", "02123456ZJAN99"}, {"TXTITL", Blank("title", 80)}} +
         Security("TS") + FieldList{{"ENCRYP", "0"}, {"TXTFMT", "STA"}, {"TXSHDL", "00000"}};
}

FieldList Plain20() {
  return FieldList{{"DE", "DE"}, {"DESID", Blank("Plain", 25)}, {"DESVER", "01"}} + Security("DES") +
         FieldList{{"DESSHL", "0000"}};
}

FieldList Overflow20() {
  return FieldList{{"DE", "DE"}, {"DESID", Blank("Registered Extensions", 25)}, {"DESVER", "01"}} +
         Security("DES", "data event") +
         FieldList{{"DESOFLW", Blank("UDHD", 6)}, {"DESITEM", "000"}, {"DESSHL", "0003"}, {"DESSHF", "abc"}};
}

FieldList Header20(const std::vector<Segment20> &segments) {
  FieldList fields = FieldList{{"FHDR", "NITF"},
                               {"FVER", "02.00"},
                               {"CLEVEL", "06"},
                               {"STYPE", "    "},
                               {"OSTAID", Blank("station", 10)},
                               {"FDT", "02123456ZJAN99"},
                               {"FTITLE", Blank("title", 80)}} +
                     Security("FS", "file event") +
                     FieldList{{"FSCOP", "00001"},
                               {"FSCPYS", "00002"},
                               {"ENCRYP", "0"},
                               {"ONAME", Blank("name", 27)},
                               {"OPHONE", Blank("phone", 18)}};
  const FieldList tail = Lengths20(segments) + FieldList{{"NUMRES", "000"}, {"UDHDL", "00000"}, {"XHDL", "00000"}};
  const std::size_t headerBytes = Joined(fields).size() + 12 + 6 + Joined(tail).size();
  std::size_t bytes = headerBytes;
  for (const Segment20 &segment : segments) bytes += Joined(segment.fields).size() + segment.data.size();
  return fields + FieldList{{"FL", Digits(bytes, 12)}, {"HL", Digits(headerBytes, 6)}} + tail;
}

Bytes File20(const std::vector<Segment20> &segments) {
  std::string bytes = Joined(Header20(segments));
  for (const Segment20 &segment : segments) bytes += Joined(segment.fields) + segment.data;
  return {bytes.begin(), bytes.end()};
}
